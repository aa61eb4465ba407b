# Runs PROGRAM, behind its emulator if it has one, which must succeed and print exactly what the file EXPECTED says.
execute_process(COMMAND ${PROGRAM}
  RESULT_VARIABLE result OUTPUT_VARIABLE printed ERROR_VARIABLE complaint)
file(READ ${EXPECTED} expected)
if(NOT result EQUAL 0 OR NOT printed STREQUAL expected)
  message(FATAL_ERROR
    "${PROGRAM} answered ${result}\n${complaint}printed:\n${printed}\nexpected:\n${expected}")
endif()
