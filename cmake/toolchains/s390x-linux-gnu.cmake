# IBM Z, 64-bit: the big-endian machine that results are tested on.
set(CMAKE_SYSTEM_PROCESSOR s390x)
include(${CMAKE_CURRENT_LIST_DIR}/DebianCross.cmake)
