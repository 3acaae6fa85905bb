# An error ends a batch with its place and exit status 1.
execute_process(COMMAND ${PROGRAM} -e "print 1\n1 / 0\nprint 2"
    RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE errors)
if(NOT status EQUAL 1)
    message(FATAL_ERROR "exit status ${status}, not 1: ${errors}")
endif()
if(NOT errors MATCHES "kilnbatch: -e:2:3: division by zero" OR NOT output MATCHES "^1[\r\n]+$")
    message(FATAL_ERROR "printed \"${output}\" and \"${errors}\"")
endif()
