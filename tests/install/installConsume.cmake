# Run by the test `install_consume`; fails with the output of the first step that fails.

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result
                  OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "${command}\nended with ${result}:\n${output}")
  endif()
endfunction()

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/staged)

# Used from another place than the one it was installed to: nothing may point back.
file(RENAME ${WORK}/staged ${WORK}/prefix)

run(${CMAKE_COMMAND} -S ${CONSUMER} -B ${WORK}/package -G Ninja -DCMAKE_BUILD_TYPE=Debug
    -DCMAKE_CXX_COMPILER=${COMPILER} -DCMAKE_CXX_FLAGS=${FLAGS}
    -DCMAKE_PREFIX_PATH=${WORK}/prefix)
run(${CMAKE_COMMAND} --build ${WORK}/package)
run(${WORK}/package/consumer)

set(ENV{PKG_CONFIG_PATH} ${WORK}/prefix/${LIBDIR}/pkgconfig)
execute_process(COMMAND ${PKG_CONFIG} --cflags --libs callormel OUTPUT_VARIABLE options
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(options UNIX_COMMAND "${options}")
separate_arguments(flags UNIX_COMMAND "${FLAGS}")
run(${COMPILER} -std=c++20 ${flags} ${CONSUMER}/main.cpp -o ${WORK}/consumer ${options}
    -Wl,-rpath,${WORK}/prefix/${LIBDIR})
run(${WORK}/consumer)

# The tool finds its library by its own place, too.
if(EXISTS ${WORK}/prefix/bin/ormel)
  run(${WORK}/prefix/bin/ormel --version)
endif()
