# Run by CPack on the packages that it has built, for what it has no words for. Packed anew by dpkg-deb, they have the
# same bytes for the same SOURCE_DATE_EPOCH.

foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(tree ${package}.tree)
  file(REMOVE_RECURSE ${tree})
  execute_process(COMMAND dpkg-deb --raw-extract ${package} ${tree} COMMAND_ERROR_IS_FATAL ANY)

  # Library and headers of several architectures may be installed beside each other.
  file(READ ${tree}/DEBIAN/control control)
  if(control MATCHES "\nPackage: lib")
    string(REPLACE "\nPackage:" "\nMulti-Arch: same\nPackage:" control "${control}")
    file(WRITE ${tree}/DEBIAN/control "${control}")
  endif()

  # A symbol that the list does not foresee, or that it foresees in vain, fails.
  string(REGEX REPLACE ".*\nPackage: ([^\n]+)\n.*" "\\1" name "\n${control}")
  if(EXISTS ${CPACK_KORVEX2_SYMBOLS}/${name})
    string(REGEX REPLACE ".*\nArchitecture: ([^\n]+)\n.*" "\\1" architecture "\n${control}")
    execute_process(
      COMMAND dpkg-gensymbols -c4 -q -a${architecture} -p${name} -v${CPACK_PACKAGE_VERSION}
        -P${tree} -I${CPACK_KORVEX2_SYMBOLS}/${name} -O${tree}/DEBIAN/symbols
      COMMAND_ERROR_IS_FATAL ANY)
  endif()

  # The trigger renews the cache of libraries, once for all packages; CPack's scripts would do so again.
  if(EXISTS ${tree}/DEBIAN/triggers)
    file(REMOVE ${tree}/DEBIAN/postinst ${tree}/DEBIAN/postrm)
  endif()

  execute_process(COMMAND dpkg-deb --root-owner-group -Zxz --build ${tree} ${package}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE ${tree})
endforeach()
