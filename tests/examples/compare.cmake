# Runs PROGRAM and fails unless it ends well and writes exactly the text of the file EXPECTED.
execute_process(COMMAND "${PROGRAM}" RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE error)
if(NOT result EQUAL 0 OR NOT error STREQUAL "")
  message(FATAL_ERROR "${PROGRAM} ended with ${result}:\n${output}${error}")
endif()
file(READ "${EXPECTED}" expected)
if(NOT output STREQUAL expected)
  message(FATAL_ERROR "${PROGRAM} wrote\n${output}\nand not, as ${EXPECTED} says,\n${expected}")
endif()
