"""The project as a part of another one: it changes nothing of that one's, is installed on demand, and its static
libraries serve programs in C++ and in C."""

import os
import subprocess

import pytest
from project import CMAKE, ROOT, cache

CONSUMERS = ROOT / "tests/install"

PARENT = """
cmake_minimum_required(VERSION 3.25)
project(Parent LANGUAGES C CXX)
set(watched BUILD_SHARED_LIBS BUILD_TESTING CMAKE_BUILD_TYPE CMAKE_CXX_STANDARD CMAKE_CXX_EXTENSIONS
  CMAKE_CXX_VISIBILITY_PRESET CMAKE_C_VISIBILITY_PRESET CMAKE_VISIBILITY_INLINES_HIDDEN
  CMAKE_POSITION_INDEPENDENT_CODE CMAKE_MODULE_PATH CPACK_GENERATOR CCACHE_PROGRAM CMAKE_CXX_COMPILER_LAUNCHER)
function(report file)
  set(text "")
  foreach(name IN LISTS watched)
    string(APPEND text "${name}=${${name}}\\n")
  endforeach()
  file(WRITE ${CMAKE_BINARY_DIR}/${file} "${text}")
endfunction()
report(before)
include(FetchContent)
FetchContent_Declare(Korvex2 SOURCE_DIR ${KORVEX2_ROOT})
FetchContent_MakeAvailable(Korvex2)
report(after)

add_library(own own.c)
get_target_property(type own TYPE)
get_target_property(theirs Korvex2 TYPE)
file(WRITE ${CMAKE_BINARY_DIR}/types "${type} ${theirs}")
add_executable(seam seam.cpp)
target_link_libraries(seam PRIVATE own Korvex2::Korvex2)
add_executable(c_program ${CONSUMERS}/c_consumer/main.c)
target_link_libraries(c_program PRIVATE vorbayer::vorbayer)
"""

# Its own engine takes the place of the library's.
SEAM = """
#include <Korvex2.h>
#include <vorbayer.h>
static int calls = 0;
extern "C" int own(void);
extern "C" BayerError bayerToColor(BayerPixelFormat, const unsigned char*, int, int, BayerPixelFormat, unsigned char*,
                                   BayerMethod, BayerPattern) {
  ++calls;
  return beOK;
}
int main() {
  using namespace Korvex2;
  Image mosaic;
  mosaic.SetDimensions(2, 2, 2, PIXEL_FORMAT_RAW8, RGGB);
  Image picture;
  const Error error = ImageConverter::getInstance()->Convert(&mosaic, PIXEL_FORMAT_BGR, &picture);
  ImageConverter::releaseInstance();
  return error == VORERROR_OK && calls == own() ? 0 : 1;
}
"""


def run(*command):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=280)
    assert done.returncode == 0, done.stdout
    return done.stdout


def configure(folder, **variables):
    """The parent's tree, configured without a build type."""
    source, build = folder / "parent", folder / "build"
    source.mkdir()
    (source / "CMakeLists.txt").write_text(PARENT)
    (source / "seam.cpp").write_text(SEAM)
    (source / "own.c").write_text("int own(void) { return 1; }\n")
    given = {"KORVEX2_ROOT": ROOT, "CONSUMERS": CONSUMERS, "CMAKE_CXX_COMPILER": os.environ.get("CXX", "c++"),
             "KORVEX2_WITH_HIGHWAY": "OFF", **variables}
    run(CMAKE, "-S", source, "-B", build, *(f"-D{name}={value}" for name, value in given.items()))
    return build


def test_the_parent_keeps_what_is_its_own(tmp_path):
    build = configure(tmp_path)
    assert (build / "after").read_text() == (build / "before").read_text()
    assert (build / "types").read_text() == "STATIC_LIBRARY SHARED_LIBRARY"
    entries = cache(build)
    assert not {"BUILD_SHARED_LIBS", "CCACHE_PROGRAM"} & set(entries)
    assert entries["KORVEX2_INSTALL"] == entries["KORVEX2_BUILD_TESTS"] == entries["KORVEX2_BUILD_TOOL"] == "OFF"


def test_what_the_parent_says_of_all_libraries_holds_here_too(tmp_path):
    build = configure(tmp_path, BUILD_SHARED_LIBS="OFF")
    assert (build / "types").read_text() == "STATIC_LIBRARY STATIC_LIBRARY"


def test_nothing_is_installed_unless_asked_for(tmp_path):
    build = configure(tmp_path)
    scripts = list(build.rglob("cmake_install.cmake"))
    assert scripts and not [path for path in scripts if "file(INSTALL" in path.read_text()]


@pytest.fixture(scope="module")
def installed(tmp_path_factory):
    """Build and prefix of static libraries, without a build type."""
    folder = tmp_path_factory.mktemp("static")
    launcher = {}
    if subprocess.run(["which", "ccache"], capture_output=True).returncode == 0:
        launcher = {f"CMAKE_{language}_COMPILER_LAUNCHER": "ccache" for language in ("C", "CXX")}
    build = configure(folder, KORVEX2_SHARED="OFF", KORVEX2_INSTALL="ON", **launcher)
    run(CMAKE, "--build", build, "--parallel", str(os.cpu_count()))
    run(CMAKE, "--install", build, "--prefix", folder / "prefix")
    return build, folder / "prefix"


def test_a_programs_own_engine_takes_the_place_of_a_static_one(installed):
    run(installed[0] / "seam")


def test_a_program_in_c_links_the_static_engine(installed):
    run(installed[0] / "c_program")


@pytest.mark.parametrize("name,options", [("consumer", []), ("c_consumer", ["-DLANGUAGES=C;CXX"])])
def test_libraries_installed_without_a_build_type_have_their_locations(installed, tmp_path, name, options):
    run(CMAKE, "-S", CONSUMERS / name, "-B", tmp_path, f"-DCMAKE_PREFIX_PATH={installed[1]}",
        f"-DCMAKE_CXX_COMPILER={os.environ.get('CXX', 'c++')}", *options)
    run(CMAKE, "--build", tmp_path)
    run(tmp_path / name)
