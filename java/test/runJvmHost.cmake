# Runs the Java host in JVMs and looks at exit codes and output.
#
# The JVM's own check of JNI calls (-Xcheck:jni) must stay silent: any line with one of the words
# below is a failure. Nothing that the bridge does by design needs an exception from that. The one
# call that the check would refuse, copying into an int[] that the JVM couldn't make, needs a JVM
# without memory; the tests of the bridge have it in a fake one.
set(complaints "WARNING in native method|WARNING: JNI|FATAL ERROR in native method")

# run(<expected exit code> <regex that the output must match> <java arguments...>)
function(run expected wanted)
  execute_process(COMMAND ${CMAKE_COMMAND} -E env ${ENVIRONMENT} ${JAVA} ${ARGN}
                  RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  list(JOIN ARGN " " arguments)
  message(STATUS "java ${arguments}\n${output}")
  if(NOT result STREQUAL expected)
    message(FATAL_ERROR "exit code ${result}, expected ${expected}")
  endif()
  if(output MATCHES "${complaints}")
    message(FATAL_ERROR "the JVM complains: ${CMAKE_MATCH_0}")
  endif()
  if(NOT output MATCHES "${wanted}")
    message(FATAL_ERROR "the output doesn't match: ${wanted}")
  endif()
endfunction()

set(checked -Xcheck:jni -ea)
set(with_library -Dcallormel.library=${LIBRARY})
set(nowhere -Dcallormel.library=/nowhere/x.so -Djava.library.path=/nowhere)

run(0 "all passed" ${checked} ${with_library} -cp ${JAR}:${HOST_CLASSES}
    org.qorl.belief.io.kvn.JvmHostTest ${EXAMPLE})
run(0 "refused as expected" ${checked} -cp ${DEFECTIVE_CLASSES}
    org.qorl.belief.io.kvn.ORMELReader ${LIBRARY} ${EXAMPLE})

# The demo, with the library from a file, from a folder of java.library.path, from the jar.
get_filename_component(folder ${LIBRARY} DIRECTORY)
run(0 "WaterTank \"Water tank\"  probability table, target, ranked, normally full, faults: empty"
    ${with_library} -jar ${JAR} ${EXAMPLE})
run(0 "Possible causes" -Djava.library.path=${folder} -jar ${JAR} ${EXAMPLE})
run(2 "usage: java -jar" ${with_library} -jar ${JAR})
run(1 "none.kvn: the file can't be read" ${with_library} -jar ${JAR} none.kvn)
if(PACKED)
  run(0 "Possible causes" ${nowhere} -jar ${JAR} ${EXAMPLE})
else()
  run(1 "/nowhere/x.so.*java.library.path .*/nowhere.*jar: no resource /native/" ${nowhere}
      -jar ${JAR} ${EXAMPLE})
endif()
