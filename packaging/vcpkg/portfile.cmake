# Builds the checkout that this port lies in. A port of a registry takes an archive in place of this line.
set(SOURCE_PATH "${CURRENT_PORT_DIR}/../..")

vcpkg_check_features(OUT_FEATURE_OPTIONS FEATURE_OPTIONS
  FEATURES
    simd  KORVEX2_WITH_HIGHWAY
    tools KORVEX2_BUILD_TOOL)

vcpkg_cmake_configure(
  SOURCE_PATH "${SOURCE_PATH}"
  OPTIONS
    ${FEATURE_OPTIONS}
    -DKORVEX2_BUILD_PYTHON=OFF
    -DKORVEX2_BUILD_TESTS=OFF
    -DKORVEX2_PRIVATE_LIBDIR=lib  # where vcpkg lets the tools that it moves look
  OPTIONS_DEBUG
    -DKORVEX2_BUILD_TOOL=OFF)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME vorbayer CONFIG_PATH lib/cmake/vorbayer DO_NOT_DELETE_PARENT_CONFIG_PATH)
vcpkg_cmake_config_fixup(CONFIG_PATH lib/cmake/Korvex2)
vcpkg_fixup_pkgconfig()
if("tools" IN_LIST FEATURES)
  vcpkg_copy_tools(TOOL_NAMES korvex2 AUTO_CLEAN)
endif()

file(REMOVE_RECURSE
  "${CURRENT_PACKAGES_DIR}/debug/include"
  "${CURRENT_PACKAGES_DIR}/debug/share"
  "${CURRENT_PACKAGES_DIR}/share/doc")
file(INSTALL "${CMAKE_CURRENT_LIST_DIR}/usage" DESTINATION "${CURRENT_PACKAGES_DIR}/share/${PORT}")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/LICENSE")
