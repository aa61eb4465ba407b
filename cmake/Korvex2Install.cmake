# What `cmake --install` lays down: library, headers, CMake package and pkg-config file. The components are those
# of the Debian packages (Korvex2Packages.cmake); `tools` and `python` are installed where they are built.
include(CMakePackageConfigHelpers)

set(KORVEX2_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/korvex2)
# A static library leaves linking Highway to its client.
set(KORVEX2_NEEDS_HIGHWAY OFF)
set(KORVEX2_PC_HIGHWAY "")
if(NOT BUILD_SHARED_LIBS AND TARGET hwy::hwy)
  set(KORVEX2_NEEDS_HIGHWAY ON)
  set(KORVEX2_PC_HIGHWAY "-lhwy")
endif()

set(KORVEX2_CMAKE_DIR   ${CMAKE_INSTALL_LIBDIR}/cmake/Korvex2)

install(TARGETS Korvex2 EXPORT Korvex2Targets
  LIBRARY COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development)
install(DIRECTORY include/ DESTINATION ${KORVEX2_INCLUDE_DIR} COMPONENT development PATTERN *.in EXCLUDE)
list(TRANSFORM KORVEX2_HEADERS_OF_SRC PREPEND src/ OUTPUT_VARIABLE headers)
install(FILES ${headers} ${KORVEX2_BUILT_HEADERS}/Korvex2Version.h
  DESTINATION ${KORVEX2_INCLUDE_DIR} COMPONENT development)

install(EXPORT Korvex2Targets NAMESPACE Korvex2:: DESTINATION ${KORVEX2_CMAKE_DIR} COMPONENT development)
configure_package_config_file(cmake/Korvex2Config.cmake.in Korvex2Config.cmake
  INSTALL_DESTINATION ${KORVEX2_CMAKE_DIR})
write_basic_package_version_file(Korvex2ConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/Korvex2Config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/Korvex2ConfigVersion.cmake
  DESTINATION ${KORVEX2_CMAKE_DIR} COMPONENT development)

# The prefix as seen from the .pc file, so that an installed tree can be moved.
file(RELATIVE_PATH KORVEX2_PC_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/korvex2.pc.in korvex2.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/korvex2.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT license)
