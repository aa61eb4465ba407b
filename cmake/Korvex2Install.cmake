# What `cmake --install` lays down: of each library itself, headers, CMake package and pkg-config file. The components
# are those of the Debian packages (Korvex2Packages.cmake); `tools` and `python` are installed where they are built.
include(CMakePackageConfigHelpers)

# A static library leaves linking Highway to its client, and a client in C the C++ library too.
set(KORVEX2_NEEDS_HIGHWAY OFF)
set(KORVEX2_PC_HIGHWAY "")
set(VORBAYER_PC_STATIC "")
if(NOT KORVEX2_SHARED)
  if(TARGET hwy::hwy)
    set(KORVEX2_NEEDS_HIGHWAY ON)
    set(KORVEX2_PC_HIGHWAY "-lhwy")
  endif()
  set(VORBAYER_PC_STATIC "${KORVEX2_PC_HIGHWAY} -lstdc++ -lm")
endif()

# The prefix as seen from a .pc file, so that an installed tree can be moved.
file(RELATIVE_PATH KORVEX2_PC_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)

# A library with its CMake package and its pkg-config module: target, name of the package and of its namespace, name of
# the module, component of the library, component of what one develops with.
function(korvex2_install_library target package module component development)
  set(folder ${CMAKE_INSTALL_LIBDIR}/cmake/${package})
  install(TARGETS ${target} EXPORT ${package}Targets
    LIBRARY COMPONENT ${component} NAMELINK_COMPONENT ${development}
    ARCHIVE COMPONENT ${development})
  install(EXPORT ${package}Targets NAMESPACE ${package}:: DESTINATION ${folder} COMPONENT ${development})
  configure_package_config_file(cmake/${package}Config.cmake.in ${package}Config.cmake INSTALL_DESTINATION ${folder})
  write_basic_package_version_file(${package}ConfigVersion.cmake COMPATIBILITY SameMajorVersion)
  install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/${package}Config.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/${package}ConfigVersion.cmake
    DESTINATION ${folder} COMPONENT ${development})
  configure_file(cmake/${module}.pc.in ${module}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${module}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT ${development})
endfunction()

korvex2_install_library(vorbayer vorbayer vorbayer engine engine_development)
install(FILES include/vorbayer.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT engine_development)

korvex2_install_library(Korvex2 Korvex2 korvex2 library development)
set(KORVEX2_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/korvex2)
install(DIRECTORY include/ DESTINATION ${KORVEX2_INCLUDE_DIR} COMPONENT development
  PATTERN vorbayer.h EXCLUDE PATTERN *.in EXCLUDE)
list(TRANSFORM KORVEX2_HEADERS_OF_SRC PREPEND src/ OUTPUT_VARIABLE headers)
install(FILES ${headers} ${KORVEX2_BUILT_HEADERS}/Korvex2Version.h
  DESTINATION ${KORVEX2_INCLUDE_DIR} COMPONENT development)

install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT license)
