# One OBJECT target per source folder, one test program per test folder. Sources are listed, never
# globbed, so that a forgotten file is a link error and not a silent gap.

# kvn_component(<folder> MAY_INCLUDE <folders...> SOURCES <files...>)
#   Declares src/<folder> as target kvn_<folder, '/' as '_'>. MAY_INCLUDE names the folders whose
#   headers it may include; the test `layers` holds every #include against that list.
function(kvn_component folder)
  cmake_parse_arguments(A "" "" "MAY_INCLUDE;SOURCES" ${ARGN})
  string(REPLACE "/" "_" target "kvn_${folder}")
  add_library(${target} OBJECT ${A_SOURCES})
  target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_compile_options(${target} PRIVATE ${KVN_WARNINGS})
  list(JOIN A_MAY_INCLUDE " " below)
  set_property(GLOBAL APPEND_STRING PROPERTY KVN_LAYERS "${folder}: ${below}\n")
  set_property(GLOBAL APPEND PROPERTY KVN_COMPONENTS ${target})
endfunction()

# kvn_test(<folder> <files...>)
#   One GoogleTest program `test_<folder>` against the shared library, which is also the ctest of
#   that name.
function(kvn_test folder)
  string(REPLACE "/" "_" target "test_${folder}")
  add_executable(${target} ${ARGN})
  kvn_use_sanitizer_defaults(${target})
  target_compile_options(${target} PRIVATE ${KVN_WARNINGS} ${KVN_QUICK_COMPILE})
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${target} PRIVATE kvn_test_support callormel GTest::gmock GTest::gtest_main)
  add_test(NAME ${target} COMMAND ${target} WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
  set_tests_properties(${target} PROPERTIES TIMEOUT 900)
endfunction()

# kvn_bench(<name> <files...>)
#   One Google Benchmark program `bench_<name>` with its own main() from the library.
function(kvn_bench name)
  find_package(benchmark REQUIRED)
  add_executable(bench_${name} ${ARGN})
  target_compile_options(bench_${name} PRIVATE ${KVN_WARNINGS})
  target_include_directories(bench_${name} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(bench_${name} PRIVATE callormel benchmark::benchmark benchmark::benchmark_main)
endfunction()

# Gives an executable the sanitizer settings that our tests rely on, whoever starts it.
function(kvn_use_sanitizer_defaults target)
  if(KVN_SANITIZE MATCHES "address")
    target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/sanitizerDefaults.cpp)
  endif()
endfunction()
