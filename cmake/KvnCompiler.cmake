# What holds for every target: the compiler cache, floating point, sanitizers, coverage.

find_program(KVN_CCACHE ccache)
if(KVN_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${KVN_CCACHE})
endif()

# Floating-point contraction is off so that the same numbers come out of every build: a fused
# multiply-add changes last bits between machines.
add_compile_options(-ffp-contract=off)

# For the tool and the tests, whose speed is that of the library and whose compile time is that of
# the templates of others: it halves the time of an optimised build of them.
set(KVN_QUICK_COMPILE $<$<CONFIG:Release>:-O1>)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # At this level g++ 12 takes moves within std::string for moves beyond it.
  list(APPEND KVN_QUICK_COMPILE
       $<$<CONFIG:Release>:-Wno-array-bounds> $<$<CONFIG:Release>:-Wno-stringop-overread>)
endif()

if(KVN_SANITIZE)
  add_compile_options(-fsanitize=${KVN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KVN_SANITIZE})
endif()
if(KVN_COVERAGE)
  add_compile_options(--coverage -fprofile-abs-path)
  add_link_options(--coverage)
endif()

# kvn_preload_environment(<variable>)
#   Environment entries for a process that we do not link ourselves (a JVM) and that loads the
#   library: an instrumented library needs its runtime preloaded. The JVM handles its own faults
#   and never frees its heap, so those reports are off. Empty in a plain build.
function(kvn_preload_environment variable)
  set(entries "")
  if(KVN_SANITIZE MATCHES "address")
    set(names libasan.so)
    if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
      set(names libclang_rt.asan-${CMAKE_SYSTEM_PROCESSOR}.so)
    endif()
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${names}
                    OUTPUT_VARIABLE runtime OUTPUT_STRIP_TRAILING_WHITESPACE)
    list(APPEND entries "LD_PRELOAD=${runtime}"
         "ASAN_OPTIONS=detect_leaks=0:handle_segv=0:handle_sigbus=0:handle_sigfpe=0:allocator_may_return_null=1")
  endif()
  set(${variable} ${entries} PARENT_SCOPE)
endfunction()
