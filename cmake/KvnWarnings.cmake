# Warnings of our own code, all of them errors. Both compilers must be free of them.
set(KVN_WARNINGS -Wall -Wextra -Werror -Wnon-virtual-dtor -Woverloaded-virtual -Wsuggest-override)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # -Wshadow of gcc also reports a parameter named like a member function; `local` does not.
  list(APPEND KVN_WARNINGS -Wshadow=local)
  # -Wrestrict of g++ 12 fires inside std::string itself at -O3 (GCC bug 105651).
  list(APPEND KVN_WARNINGS -Wno-restrict)
else()
  list(APPEND KVN_WARNINGS -Wshadow)
endif()
