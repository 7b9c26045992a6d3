# Checks of the tree itself, each of them a test. They need no built target except `headers`.

get_property(layers GLOBAL PROPERTY KVN_LAYERS)
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/layers.txt CONTENT "${layers}")

# Every header of src as the only include of a source of its own, and once more to try its guard.
# Not part of `all`: the test builds it. The list is made when CMake runs.
if(KVN_CHECK_HEADERS)
  file(GLOB_RECURSE headers RELATIVE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/src/*.h)
  set(sources "")
  foreach(header IN LISTS headers)
    set(source ${PROJECT_BINARY_DIR}/headers/${header}.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "#include \"${header}\"\n#include \"${header}\"\n")
    list(APPEND sources ${source})
  endforeach()
  if(sources)
    add_library(header_check OBJECT EXCLUDE_FROM_ALL ${sources})
    target_include_directories(header_check PRIVATE ${PROJECT_SOURCE_DIR}/src)
    target_compile_options(header_check PRIVATE ${KVN_WARNINGS})
    target_link_libraries(header_check PRIVATE kvn_jni EXPAT::EXPAT)
    add_test(NAME headers
             COMMAND ${CMAKE_COMMAND} --build ${PROJECT_BINARY_DIR} --target header_check)
    set_tests_properties(headers PROPERTIES TIMEOUT 900)
  endif()
endif()
