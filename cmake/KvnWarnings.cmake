# Compiler settings shared by all targets. Floating-point contraction is off so that the same
# numbers come out of every build: a fused multiply-add changes last bits between machines.
set(KVN_WARNINGS -Wall -Wextra -Werror -Wnon-virtual-dtor)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  list(APPEND KVN_WARNINGS -Wsuggest-override -Wshadow=local -Woverloaded-virtual)
else()
  list(APPEND KVN_WARNINGS -Wshadow -Woverloaded-virtual -Wsuggest-override)
endif()
add_compile_options(-ffp-contract=off)
if(KVN_SANITIZE)
  add_compile_options(-fsanitize=${KVN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KVN_SANITIZE})
endif()
