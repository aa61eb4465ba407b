# Installs the build into a prefix of its own, moves the prefix, and builds and runs the consumers against it, the one in
# C++ of korvex2 and the one in C of vorbayer: with find_package, then with pkg-config. The Python package finds the
# libraries beside it, the tool these and the private one, of which nothing else is installed.

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "${command}\nfailed (${result}):\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
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

# A program of C that links the engine alone asks for no library but it and those of C.
function(check_needs program)
  if(READELF AND SHARED)
    run(${READELF} --dynamic --wide ${program})
    string(REGEX MATCHALL "Shared library: \\[[^]]*" needed "${output}")
    list(TRANSFORM needed REPLACE "Shared library: \\[" "")
    list(FILTER needed EXCLUDE REGEX "^libc\\.so")
    if(NOT needed MATCHES "^libvorbayer\\.so\\.[0-9]+$")
      message(FATAL_ERROR "${program} needs ${needed}")
    endif()
  endif()
endfunction()

run(${CMAKE_COMMAND} -G ${GENERATOR} -S ${CONSUMERS}/consumer -B ${WORK_DIR}/cmake
  -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_FLAGS=${flags})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake)
run(${WORK_DIR}/cmake/consumer)

# Without Boost, and without a compiler of C++ if the library is shared. Built with sanitizers, the engine would ask
# its programs for libraries that are no longer those of C.
if(NOT SANITIZE)
  set(languages C)
  if(NOT SHARED)
    list(APPEND languages CXX)
  endif()
  run(${CMAKE_COMMAND} -G ${GENERATOR} -S ${CONSUMERS}/c_consumer -B ${WORK_DIR}/c_cmake
    "-DLANGUAGES=${languages}" -DCMAKE_DISABLE_FIND_PACKAGE_Boost=ON
    -DCMAKE_C_COMPILER=${CC} -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_PREFIX_PATH=${prefix})
  run(${CMAKE_COMMAND} --build ${WORK_DIR}/c_cmake)
  run(${WORK_DIR}/c_cmake/c_consumer)
  check_needs(${WORK_DIR}/c_cmake/c_consumer)
endif()

if(PYTHON)
  run(${CMAKE_COMMAND} -E env PYTHONPATH=${prefix}/${PYTHON_DIR} ${PYTHON} -B -c
    "import korvex2; assert korvex2.convert(bytearray(4), 'rgb8', 'mono8', shape=(2, 2)).shape == (2, 2, 3)")
endif()

if(TOOL)
  run(${prefix}/${TOOL} chart ${WORK_DIR}/chart.png --to rgb8)
  file(GLOB_RECURSE private RELATIVE ${prefix} ${prefix}/*korvex2-io* ${prefix}/*Containers.h)
  list(FILTER private EXCLUDE REGEX "^${LIBDIR}/korvex2/libkorvex2-io\\.so\\.[0-9.]+$")
  if(private)
    message(FATAL_ERROR "What is private to the tool is installed where others find it: ${private}")
  endif()
endif()

find_program(PKG_CONFIG NAMES pkg-config pkgconf)
if(NOT PKG_CONFIG)
  message("SKIPPED: there is no pkg-config; find_package was checked")
  return()
endif()
set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)

# A program and its source, the module it asks for, the compiler with its options.
function(build_by_pkg_config program source module)
  execute_process(COMMAND ${PKG_CONFIG} --cflags --libs ${module}
    OUTPUT_VARIABLE options OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(options UNIX_COMMAND "${options}")
  run(${ARGN} ${flags} ${CONSUMERS}/${source} -o ${program} ${options} -Wl,-rpath,${prefix}/${LIBDIR})
  run(${program})
endfunction()

build_by_pkg_config(${WORK_DIR}/consumer consumer/main.cpp korvex2 ${CXX} -std=c++17)
if(NOT SANITIZE)
  build_by_pkg_config(${WORK_DIR}/c_consumer c_consumer/main.c vorbayer
    ${CC} -std=c99 -Wall -Wextra -Wpedantic -Werror)
  check_needs(${WORK_DIR}/c_consumer)
endif()
