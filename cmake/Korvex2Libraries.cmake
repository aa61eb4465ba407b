# What the two libraries, korvex2 and vorbayer, have in common.

# A library of ours: target, name of its file, version script, sources. Shared, it shows what the script names and
# nothing else.
function(korvex2_add_library target name script)
  if(KORVEX2_SHARED)
    add_library(${target} SHARED ${ARGN})
    configure_file(${script} ${name}.map @ONLY)
    target_link_options(${target} PRIVATE LINKER:--version-script=${CMAKE_CURRENT_BINARY_DIR}/${name}.map)
    set_property(TARGET ${target} PROPERTY LINK_DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/${name}.map)
  else()
    add_library(${target} STATIC ${ARGN})
    if(TARGET hwy::hwy)
      target_link_libraries(${target} PRIVATE $<INSTALL_INTERFACE:hwy::hwy>)
    endif()
  endif()
  set_target_properties(${target} PROPERTIES
    OUTPUT_NAME   ${name}
    VERSION       ${PROJECT_VERSION}
    SOVERSION     ${PROJECT_VERSION_MAJOR}
    LINKER_LANGUAGE CXX
    INSTALL_RPATH "$ORIGIN")
  # Of GNU's unique symbols a process keeps the first copy for ever: the library could not be unloaded.
  target_compile_options(${target} PRIVATE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fno-gnu-unique>)
  korvex2_target_options(${target})
endfunction()

# install(), unless this project is part of another one that does not want it.
macro(korvex2_install)
  if(KORVEX2_INSTALL)
    install(${ARGN})
  endif()
endmacro()
