# One OBJECT target per source folder, one test program per test folder. Sources are listed, never
# globbed, so that a forgotten file is a link error and not a silent gap.

# kvn_component(<folder> MAY_INCLUDE <folders...> SOURCES <files...>)
#   Declares src/<folder>. MAY_INCLUDE names the folders whose headers it may include; the test
#   `layers` holds every #include against that list.
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
#   One GoogleTest program `test_<folder>` against the shared library.
function(kvn_test folder)
  string(REPLACE "/" "_" target "test_${folder}")
  add_executable(${target} ${ARGN})
  target_compile_options(${target} PRIVATE ${KVN_WARNINGS})
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${target} PRIVATE callormel GTest::gmock GTest::gtest_main)
  add_test(NAME ${target} COMMAND ${target})
endfunction()
