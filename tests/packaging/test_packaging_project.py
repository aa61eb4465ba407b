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
    for file in re.findall(r"\$\{KORVEX2_DEBIAN_FILES\}/([\w/.]+)", text):
        assert (PACKAGING / "debian" / file).is_file(), file
    assert "SOVERSION   ${PROJECT_VERSION_MAJOR}" in (ROOT / "src/CMakeLists.txt").read_text()
    assert (PACKAGING / "debian/library/shlibs.in").read_text().split()[:2] == ["libkorvex2", "@PROJECT_VERSION_MAJOR@"]


def test_debian_packages_name_every_component_that_is_installed():
    text = (ROOT / "cmake/Korvex2Packages.cmake").read_text()
    packaged = set(re.search(r"CPACK_COMPONENTS_ALL ([\w ]+)\)", text).group(1).split())
    installed = set()
    lists = (ROOT / part / "CMakeLists.txt" for part in ("io", "tools/korvex2", "python"))
    for path in [*ROOT.glob("cmake/*.cmake"), *lists]:
        for command in re.findall(r"^ *install\(([^)]*)\)", path.read_text(), re.M):
            components = re.findall(r"\b(?:NAMELINK_)?COMPONENT (\w+)", command)
            assert components, f"{path.name}: install({command}) belongs to no component"
            installed |= set(components)
    assert installed - {"license"} == packaged  # Debian has the licence already
