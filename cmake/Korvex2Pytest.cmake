# Tests that pytest runs.

# The system's Python has the modules that they import; one of the user's own seldom does.
find_program(KORVEX2_TEST_PYTHON NAMES python3 DOC "A Python with pytest, numpy and PIL"
  PATHS /usr/bin NO_DEFAULT_PATH)
find_program(KORVEX2_TEST_PYTHON NAMES python3)

# Whether a Python has the modules that follow; a warning says which tests are left out where not.
function(korvex2_has_modules result python what)
  list(JOIN ARGN ", " modules)
  execute_process(COMMAND ${python} -c "import ${modules}" RESULT_VARIABLE missing ERROR_QUIET)
  if(missing)
    message(WARNING
      "The tests of ${what} are left out: ${python} lacks one of ${modules}. "
      "Configure with a Python that has them.")
    set(${result} OFF PARENT_SCOPE)
  else()
    set(${result} ON PARENT_SCOPE)
  endif()
endfunction()

function(korvex2_add_pytest name python script)
  add_test(NAME ${name}
    COMMAND ${python} -B -m pytest -p no:cacheprovider -rs ${CMAKE_CURRENT_SOURCE_DIR}/${script})
endfunction()
