"""The names by which packaging/ is held to the build are themselves those of the build."""

import re

import pytest
from project import PACKAGING, PARTS, PORTS, RECIPES, ROOT, cache, needs, options, version, BUILD


def test_the_build_under_test_has_the_version():
    assert cache(BUILD)["CMAKE_PROJECT_VERSION"] == version()


@pytest.mark.parametrize("part", PARTS)
def test_each_part_asks_for_something_and_everything_has_a_name(part):
    assert needs(part)
    assert needs(part) <= set(RECIPES)
    if part != "python":
        assert needs(part) <= set(PORTS)


def test_no_other_part_of_an_installed_build_asks_for_anything():
    for folder in ("sdk", "bayer", "src/simd"):
        assert "find_package" not in (ROOT / folder / "CMakeLists.txt").read_text()


def test_options_are_those_of_the_cache():
    assert {"KORVEX2_WITH_HIGHWAY", "KORVEX2_BUILD_TOOL", "KORVEX2_PYTHON_DIR"} <= options()
    assert {name for name in options() if name.startswith("KORVEX2_BUILD_")} <= set(cache(BUILD))


def test_the_library_is_packaged_under_its_soversion():
    text = (ROOT / "cmake/Korvex2Packages.cmake").read_text()
    for file in re.findall(r"\$\{KORVEX2_DEBIAN_FILES\}/([\w/.]+)[\s)]", text):
        assert (PACKAGING / "debian" / file).is_file(), file
    assert re.search(r"SOVERSION +\$\{PROJECT_VERSION_MAJOR\}", (ROOT / "cmake/Korvex2Libraries.cmake").read_text())
    packages = re.findall(r"^korvex2_shared_library_package\(\w+ (\S+) (\w+)\)", text, re.M)
    assert [library for _, library in packages] == ["libvorbayer", "libkorvex2"]
    for package, library in packages:
        assert re.fullmatch(library + r"-?\$\{PROJECT_VERSION_MAJOR\}", package)
        assert (PACKAGING / f"debian/library/{library}.symbols.in").is_file()


def test_debian_packages_name_every_component_that_is_installed():
    text = (ROOT / "cmake/Korvex2Packages.cmake").read_text()
    packaged = set(re.search(r"CPACK_COMPONENTS_ALL ([\w ]+)\)", text).group(1).split())
    installed = set()
    for path in ("cmake/Korvex2Install.cmake", "io/CMakeLists.txt", "tools/korvex2/CMakeLists.txt",
                 "python/CMakeLists.txt"):
        text = (ROOT / path).read_text()
        for command in re.findall(r"^ *(?:korvex2_)?install\(([^)]*)\)", text, re.M):
            components = re.findall(r"\b(?:NAMELINK_)?COMPONENT (\w+|\$\{\w+\})", command)
            assert components, f"{path}: install({command}) belongs to no component"
            installed |= {name for name in components if name.isidentifier()}
        for arguments in re.findall(r"^korvex2_install_library\(([\w ]+)\)", text, re.M):
            installed |= set(arguments.split()[3:])
    assert installed - {"license"} == packaged  # Debian has the licence already
