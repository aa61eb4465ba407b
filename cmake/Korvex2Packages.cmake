# Debian packages, made by CPack from the components that Korvex2Install.cmake names: `./run packages` builds them
# with the presets `packages-…`. What CPack has no words for is done in packaging/debian/.

set(library libkorvex2-${PROJECT_VERSION_MAJOR})
set(KORVEX2_DEBIAN_FILES ${PROJECT_SOURCE_DIR}/packaging/debian)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "Korvex2 maintainers <korvex2@example.org>")
if(DEFINED ENV{DEBFULLNAME} AND DEFINED ENV{DEBEMAIL})
  set(CPACK_PACKAGE_CONTACT "$ENV{DEBFULLNAME} <$ENV{DEBEMAIL}>")
endif()
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_COMPONENTS_ALL library development tools python)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS  ${KORVEX2_DEBIAN_FILES}/FinishTree.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${KORVEX2_DEBIAN_FILES}/FinishPackages.cmake)

# Built for Debian 12; a package of Debian's own of the same version takes the place of these.
set(CPACK_DEBIAN_PACKAGE_RELEASE 1~bookworm1)
set(CPACK_DEBIAN_PACKAGE_SOURCE korvex2)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src)
if(CMAKE_CROSSCOMPILING AND CMAKE_SYSTEM_PROCESSOR STREQUAL "aarch64")
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE arm64)
  # The target's packages, unpacked with what they say of their libraries.
  file(GLOB target_libraries
    ${KORVEX2_SYSROOT}/packages/*/lib/${CMAKE_LIBRARY_ARCHITECTURE}
    ${KORVEX2_SYSROOT}/packages/*/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE})
  list(APPEND CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${target_libraries})
endif()

set(about
"Korvex2 converts frames of machine-vision cameras between pixel formats: raw
Bayer mosaics, packed 12-bit grey, 16-bit colour, packed YUV. Every byte of
every conversion is defined, and the same on every machine.

")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
configure_file(${KORVEX2_DEBIAN_FILES}/library/shlibs.in shlibs @ONLY)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
  ${CMAKE_CURRENT_BINARY_DIR}/shlibs ${KORVEX2_DEBIAN_FILES}/library/triggers)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION
"exact and fast pixel-format conversion (shared library)
${about}This package contains the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkorvex2-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS libboost-dev)  # for SingletonDefinitions.h, which no other header includes
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS library)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
"exact and fast pixel-format conversion (development files)
${about}This package contains the headers, the CMake package Korvex2 and the
pkg-config module korvex2.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME korvex2-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION graphics)
set(CPACK_COMPONENT_TOOLS_DEPENDS library)
set(CPACK_DEBIAN_TOOLS_DESCRIPTION
"exact and fast pixel-format conversion (command-line tool)
${about}This package contains the tool korvex2: it converts dumps, PNG, TIFF, NPY and
cameras' raw files, whole folders of them on all cores, finds out what a
headerless file is, and measures how far two pictures are apart.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-korvex2)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS "python3-dask, python3-distributed")
set(CPACK_COMPONENT_PYTHON_DEPENDS library)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
  ${KORVEX2_DEBIAN_FILES}/python/postinst ${KORVEX2_DEBIAN_FILES}/python/prerm)
set(CPACK_DEBIAN_PYTHON_DESCRIPTION
"exact and fast pixel-format conversion (Python module)
${about}This package contains the Python module korvex2: NumPy arrays in and out,
without copies, and helpers for frames on a Dask cluster.")
if(KORVEX2_BUILD_PYTHON)
  # An extension module serves the one version that it was built for.
  get_directory_property(minor DIRECTORY python DEFINITION Python3_VERSION_MINOR)
  math(EXPR next "${minor} + 1")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
    "python3 (<< 3.${next}), python3 (>= 3.${minor}~), python3-numpy")
endif()

include(CPack)
