# Debian packages, made by CPack from the components that Korvex2Install.cmake names: `./run packages` builds them
# with the presets `packages-…`. What CPack has no words for is done in packaging/debian/.

if(NOT KORVEX2_SHARED OR NOT KORVEX2_INSTALL)
  message(FATAL_ERROR "Packages hold shared libraries: KORVEX2_PACKAGES needs KORVEX2_SHARED and KORVEX2_INSTALL")
endif()

set(KORVEX2_DEBIAN_FILES ${PROJECT_SOURCE_DIR}/packaging/debian)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "Korvex2 maintainers <korvex2@example.org>")
if(DEFINED ENV{DEBFULLNAME} AND DEFINED ENV{DEBEMAIL})
  set(CPACK_PACKAGE_CONTACT "$ENV{DEBFULLNAME} <$ENV{DEBEMAIL}>")
endif()
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_COMPONENTS_ALL engine engine_development library development tools python)
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
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ${PROJECT_BINARY_DIR}/src ${PROJECT_BINARY_DIR}/bayer ${PROJECT_BINARY_DIR}/io)
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

# What a package of a shared library has beyond others: component, name of the package, name of the library. Its list of
# symbols is made when it is packed (FinishPackages.cmake), from the one that is written here.
set(CPACK_KORVEX2_SYMBOLS ${CMAKE_CURRENT_BINARY_DIR}/symbols)
function(korvex2_shared_library_package component package library)
  configure_file(${KORVEX2_DEBIAN_FILES}/library/shlibs.in ${component}/shlibs @ONLY)
  configure_file(${KORVEX2_DEBIAN_FILES}/library/${library}.symbols.in ${CPACK_KORVEX2_SYMBOLS}/${package})
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION libs PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA
    ${CMAKE_CURRENT_BINARY_DIR}/${component}/shlibs ${KORVEX2_DEBIAN_FILES}/library/triggers PARENT_SCOPE)
endfunction()

set(about_engine
"The engine turns the Bayer mosaic of a camera's sensor into a colour picture, by
six methods from nearest neighbour to residual interpolation, at 8 and 16 bits:
one function in plain C. It is part of the pixel-format converter Korvex2.

")

korvex2_shared_library_package(engine libvorbayer${PROJECT_VERSION_MAJOR} libvorbayer)
set(CPACK_DEBIAN_ENGINE_DESCRIPTION
"demosaic engine for Bayer mosaics (shared library)
${about_engine}This package contains the shared library.")

set(CPACK_DEBIAN_ENGINE_DEVELOPMENT_PACKAGE_NAME libvorbayer-dev)
set(CPACK_DEBIAN_ENGINE_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_ENGINE_DEVELOPMENT_DEPENDS engine)
set(CPACK_DEBIAN_ENGINE_DEVELOPMENT_DESCRIPTION
"demosaic engine for Bayer mosaics (development files)
${about_engine}This package contains the header, the CMake package vorbayer and the
pkg-config module vorbayer.")

korvex2_shared_library_package(library libkorvex2-${PROJECT_VERSION_MAJOR} libkorvex2)
set(CPACK_COMPONENT_LIBRARY_DEPENDS engine)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION
"exact and fast pixel-format conversion (shared library)
${about}This package contains the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkorvex2-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS libboost-dev)  # for SingletonDefinitions.h, which no other header includes
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS library engine_development)
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
