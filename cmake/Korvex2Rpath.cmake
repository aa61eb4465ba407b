# How what is installed finds the project's libraries, wherever the tree is moved to.

set(KORVEX2_PRIVATE_LIBDIR ${CMAKE_INSTALL_LIBDIR}/korvex2 CACHE STRING
  "Where libraries that nobody else links are installed, below the prefix")

# Lets a target that is installed into `folder` find the library, and the private libraries too where PRIVATE is said.
# The loader knows where a Debian package puts the library itself.
function(korvex2_find_when_installed target folder)
  set(searched)
  if(NOT KORVEX2_PACKAGES)
    list(APPEND searched ${CMAKE_INSTALL_LIBDIR})
  endif()
  if("PRIVATE" IN_LIST ARGN)
    list(APPEND searched ${KORVEX2_PRIVATE_LIBDIR})
  endif()
  cmake_path(ABSOLUTE_PATH folder BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} NORMALIZE)
  set(rpath)
  foreach(library IN LISTS searched)
    cmake_path(ABSOLUTE_PATH library BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} NORMALIZE)
    cmake_path(RELATIVE_PATH library BASE_DIRECTORY ${folder})
    list(APPEND rpath $ORIGIN/${library})
  endforeach()
  set_property(TARGET ${target} PROPERTY INSTALL_RPATH "${rpath}")
endfunction()
