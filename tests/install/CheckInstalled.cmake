# Installs the build into a prefix of its own, moves the prefix, and builds and runs the consumer
# against it: with find_package, then with pkg-config. The Python package finds the library beside it.

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "${command}\nfailed (${result}):\n${output}")
  endif()
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/first)
file(RENAME ${WORK_DIR}/first ${WORK_DIR}/prefix)
set(prefix ${WORK_DIR}/prefix)

set(flags)
if(SANITIZE)
  set(flags -fsanitize=${SANITIZE})
endif()

run(${CMAKE_COMMAND} -G ${GENERATOR} -S ${CONSUMER_DIR} -B ${WORK_DIR}/cmake
  -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_FLAGS=${flags})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake)
run(${WORK_DIR}/cmake/consumer)

if(PYTHON)
  run(${CMAKE_COMMAND} -E env PYTHONPATH=${prefix}/${PYTHON_DIR} ${PYTHON} -B -c
    "import korvex2; assert korvex2.convert(bytearray(4), 'rgb8', 'mono8', shape=(2, 2)).shape == (2, 2, 3)")
endif()

find_program(PKG_CONFIG NAMES pkg-config pkgconf)
if(NOT PKG_CONFIG)
  message("SKIPPED: there is no pkg-config; find_package was checked")
  return()
endif()
set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
execute_process(COMMAND ${PKG_CONFIG} --cflags --libs korvex2
  OUTPUT_VARIABLE options OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(options UNIX_COMMAND "${options}")
run(${CXX} -std=c++17 ${flags} ${CONSUMER_DIR}/main.cpp -o ${WORK_DIR}/consumer ${options}
  -Wl,-rpath,${prefix}/${LIBDIR})
run(${WORK_DIR}/consumer)
