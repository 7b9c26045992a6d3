# Which JDK is used, decided once for jni.h, javac and the JVM of the tests: JAVA_HOME when it is
# set, else the system's default, else the first complete JDK by name. FindJNI is not used because
# it wants AWT and libjvm as well; the library needs nothing but the header.
#
#   KVN_JAVA_HOME     the JDK's folder
#   JNI_INCLUDE_DIRS  jni.h and jni_md.h
#   kvn_jni           interface target with those folders
if(NOT KVN_JAVA_HOME)
  file(GLOB jdks LIST_DIRECTORIES true /usr/lib/jvm/*)
  list(SORT jdks)
  foreach(candidate IN ITEMS "$ENV{JAVA_HOME}" /usr/lib/jvm/default-java ${jdks})
    if(candidate AND EXISTS ${candidate}/include/jni.h AND EXISTS ${candidate}/bin/javac)
      file(REAL_PATH ${candidate} home)
      set(KVN_JAVA_HOME ${home} CACHE PATH "The JDK that gives jni.h, javac and java")
      break()
    endif()
  endforeach()
endif()
find_path(KVN_JNI_INCLUDE_DIR jni.h HINTS ${KVN_JAVA_HOME}/include
          PATHS ENV JAVA_HOME PATH_SUFFIXES include REQUIRED)
set(JNI_INCLUDE_DIRS ${KVN_JNI_INCLUDE_DIR} ${KVN_JNI_INCLUDE_DIR}/linux)

add_library(kvn_jni INTERFACE)
target_include_directories(kvn_jni SYSTEM INTERFACE ${JNI_INCLUDE_DIRS})

# FindJava, if the Java host asks it, looks here first.
set(ENV{JAVA_HOME} ${KVN_JAVA_HOME})
