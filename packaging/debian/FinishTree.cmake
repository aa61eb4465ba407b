# Run by CPack on the trees of all packages before they are packed: compresses man pages, adds copyright and
# changelogs, as Debian's policy has them.

set(documents ${CMAKE_CURRENT_LIST_DIR})
set(version ${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)  # of SOURCE_DATE_EPOCH, if that is set

function(compress file)
  execute_process(COMMAND gzip -9nf ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(tree ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}/usr/share)
  set(doc ${tree}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})

  file(GLOB pages ${tree}/man/man*/*.[1-9])
  foreach(page IN LISTS pages)
    compress(${page})
  endforeach()

  file(MAKE_DIRECTORY ${doc})
  file(COPY ${documents}/copyright DESTINATION ${doc})
  file(WRITE ${doc}/changelog.Debian
    "korvex2 (${version}) bookworm; urgency=medium\n\n"
    "  * Korvex2 ${CPACK_PACKAGE_VERSION}, packaged by its own build; changelog.gz says what is new.\n\n"
    " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
  file(COPY_FILE ${documents}/../../CHANGELOG.md ${doc}/changelog)
  compress(${doc}/changelog.Debian)
  compress(${doc}/changelog)
  file(CHMOD_RECURSE ${doc} FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ
    DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
endforeach()
