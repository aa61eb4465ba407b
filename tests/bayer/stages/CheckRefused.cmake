# Compiles SOURCE with FLAGS. With MISTAKE the compiler must refuse it and name that mistake,
# without it the compiler must take it.
execute_process(
  COMMAND ${COMPILER} -std=c++20 -fsyntax-only ${FLAGS} ${SOURCE}
  RESULT_VARIABLE result
  ERROR_VARIABLE errors)

if(NOT MISTAKE)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "The compiler refuses what is right:\n${errors}")
  endif()
elseif(result EQUAL 0)
  message(FATAL_ERROR "The compiler takes what should be ${MISTAKE}")
elseif(NOT errors MATCHES "${MISTAKE}" AND NOT errors MATCHES "error: call to immediate function")
  # Inside a loop's lambda compilers that follow P2564 name the stage instead, as Stages.h says.
  message(FATAL_ERROR "The compiler does not name ${MISTAKE}:\n${errors}")
endif()
