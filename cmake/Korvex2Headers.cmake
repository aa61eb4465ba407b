# The headers that a client includes. All lie in include/ but for the version's numbers, which come from project(), and
# two headers that lie beside the converter's source. Those three have a folder of the build tree, so that a client of
# the build tree finds what a client of the installed library finds, and none of the rest of src/.
set(KORVEX2_HEADERS ${PROJECT_SOURCE_DIR}/include)
set(KORVEX2_BUILT_HEADERS ${PROJECT_BINARY_DIR}/include)
set(KORVEX2_HEADERS_OF_SRC ImageConverterARMStub.h Singleton.h)

configure_file(include/Korvex2Version.h.in ${KORVEX2_BUILT_HEADERS}/Korvex2Version.h @ONLY)
foreach(header IN LISTS KORVEX2_HEADERS_OF_SRC)
  file(CREATE_LINK ${PROJECT_SOURCE_DIR}/src/${header} ${KORVEX2_BUILT_HEADERS}/${header} SYMBOLIC COPY_ON_ERROR)
endforeach()
