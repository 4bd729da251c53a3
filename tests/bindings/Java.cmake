# The tests of the Java interface, with JUnit 5 as Debian has it.
include(UseJava)

set(jars)
foreach(name IN ITEMS apiguardian-api junit-jupiter-api junit-jupiter-engine junit-platform-commons
                      junit-platform-console junit-platform-engine junit-platform-launcher
                      junit-platform-reporting opentest4j picocli)
  find_jar(ZOR_JAR_${name} ${name} PATHS /usr/share/java)
  if(NOT ZOR_JAR_${name})
    message(FATAL_ERROR "${name}.jar was not found: run scripts/install-packages test")
  endif()
  list(APPEND jars ${ZOR_JAR_${name}})
endforeach()

set(CMAKE_JAVA_COMPILE_FLAGS --release 11 -encoding UTF-8 -Xlint:all,-processing,-classfile,-path -Werror)
add_jar(ZorSuiteJavaTest SOURCES java/ZorSuiteTest.java INCLUDE_JARS ZorSuiteJava ${jars})
get_target_property(interface ZorSuiteJava JAR_FILE)
get_target_property(tests ZorSuiteJavaTest JAR_FILE)
list(JOIN jars ":" class_path)
set(java ${Java_JAVA_EXECUTABLE} -Xcheck:jni -Djava.library.path=$<TARGET_FILE_DIR:ZorSuiteJni>)

# `ARGN` says which tests.
function(zor_add_java_test name)
  add_test(NAME Java.${name}
           COMMAND ${PROJECT_SOURCE_DIR}/scripts/in-namespace ${java} -Dzorctl=$<TARGET_FILE:zorctl>
                   -cp ${tests}:${interface}:${class_path} org.junit.platform.console.ConsoleLauncher
                   --select-class tests.ZorSuiteTest --fail-if-no-tests --disable-banner ${ARGN})
  set_tests_properties(Java.${name} PROPERTIES TIMEOUT 120 FAIL_REGULAR_EXPRESSION "WARNING;FATAL ERROR")
endfunction()

zor_add_java_test(Interface --exclude-tag long)
zor_add_java_test(TenThousandRuns --include-tag long)
zor_add_example(Java ${java} -cp ${interface} ${PROJECT_SOURCE_DIR}/examples/java/Provision.java)
