# Plays SCRIPT on HOST and fails if the answers differ from those of EXPECTED.
execute_process(COMMAND ${HOST} replay ${SCRIPT} OUTPUT_FILE ${ACTUAL} RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "survhost replay ${SCRIPT}: exit status ${status}")
endif()
execute_process(COMMAND diff -u ${EXPECTED} ${ACTUAL} RESULT_VARIABLE differs)
if(differs)
    message(FATAL_ERROR "other answers than expected; if they are wanted: cp ${ACTUAL} ${EXPECTED}")
endif()
