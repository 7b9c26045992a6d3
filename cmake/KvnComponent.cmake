# One OBJECT target per source folder, one test program per test folder. Sources are listed, never
# globbed, so that a forgotten file is a link error and not a silent gap.

# Drops from the list the files that do not exist, in a partial tree only; elsewhere a listed file
# that is missing stops CMake. The glob makes the next build notice that one has appeared. An empty
# list becomes an empty source, so that the target stands.
function(kvn_keep_existing list)
  if(KVN_PARTIAL)
    file(GLOB present CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
    set(kept "")
    foreach(file IN LISTS ${list})
      if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${file} OR EXISTS ${file})
        list(APPEND kept ${file})
      else()
        message(STATUS "Left out, not there yet: ${CMAKE_CURRENT_SOURCE_DIR}/${file}")
      endif()
    endforeach()
    if(NOT kept)
      set(kept ${PROJECT_BINARY_DIR}/empty.cpp)
      file(CONFIGURE OUTPUT ${kept} CONTENT "")
    endif()
    set(${list} ${kept} PARENT_SCOPE)
  endif()
endfunction()

# kvn_component(<folder> MAY_INCLUDE <folders...> SOURCES <files...>)
#   Declares src/<folder> as target kvn_<folder, '/' as '_'>. MAY_INCLUDE names the folders whose
#   headers it may include; the test `layers` holds every #include against that list.
function(kvn_component folder)
  cmake_parse_arguments(A "" "" "MAY_INCLUDE;SOURCES" ${ARGN})
  string(REPLACE "/" "_" target "kvn_${folder}")
  kvn_keep_existing(A_SOURCES)
  add_library(${target} OBJECT ${A_SOURCES})
  target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_compile_options(${target} PRIVATE ${KVN_WARNINGS})
  list(JOIN A_MAY_INCLUDE " " below)
  set_property(GLOBAL APPEND_STRING PROPERTY KVN_LAYERS "${folder}: ${below}\n")
  set_property(GLOBAL APPEND PROPERTY KVN_COMPONENTS ${target})
endfunction()

# kvn_test(<folder> <files...>)
#   One GoogleTest program `test_<folder>` against the shared library, which is also the ctest of
#   that name. The target kvn_test_support is linked when tests/support declares it.
function(kvn_test folder)
  string(REPLACE "/" "_" target "test_${folder}")
  set(sources ${ARGN})
  kvn_keep_existing(sources)
  add_executable(${target} ${sources})
  kvn_use_sanitizer_defaults(${target})
  target_compile_options(${target} PRIVATE ${KVN_WARNINGS})
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${target} PRIVATE callormel GTest::gmock GTest::gtest_main)
  if(TARGET kvn_test_support)
    target_link_libraries(${target} PRIVATE kvn_test_support)
  endif()
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
