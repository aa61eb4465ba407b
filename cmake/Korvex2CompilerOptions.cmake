# Compiler settings shared by every target of the project, and by no target of a project that this one is part of.

option(KORVEX2_WERROR     "Treat warnings as errors"               OFF)
option(KORVEX2_ASSERTIONS "Keep assert() alive in optimised builds" OFF)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# A project that this one is part of decides these; a build type of its own would even install targets without files.
if(PROJECT_IS_TOP_LEVEL)
  if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release)
  endif()
  find_program(CCACHE_PROGRAM ccache)
  if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_C_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
  endif()
endif()

# Warnings and arithmetic rules of one of our own targets. Contraction of a*b+c into one rounding
# is on by default on Arm and would change bytes, so it is off wherever pixels are computed.
function(korvex2_target_options target)
  target_compile_options(${target} PRIVATE
    -ffp-contract=off
    $<$<COMPILE_LANGUAGE:CXX,C>:-Wall -Wextra -Wpedantic -Wconversion>
    $<$<BOOL:${KORVEX2_WERROR}>:-Werror>)
  if(KORVEX2_ASSERTIONS)
    target_compile_options(${target} PRIVATE -UNDEBUG)
  endif()
  if(KORVEX2_SANITIZE_ARITHMETIC)
    target_compile_options(${target} PRIVATE -fsanitize=${KORVEX2_SANITIZE_ARITHMETIC})
  endif()
endfunction()

# For what waits for files and terminals rather than computes: optimised less, and the headers that nearly every source
# of it includes are compiled once. The presets for developers switch the latter off (CMAKE_DISABLE_PRECOMPILE_HEADERS),
# so that a source which forgets an include does not compile there.
function(korvex2_compile_quickly target)
  target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O2>)
  target_precompile_headers(${target} PRIVATE
    <fmt/format.h> <algorithm> <filesystem> <functional> <memory> <optional> <span> <string> <string_view> <variant> <vector>)
endfunction()

if(KORVEX2_SANITIZE)
  add_compile_options(-fsanitize=${KORVEX2_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KORVEX2_SANITIZE})
endif()
