"""The overlay port for vcpkg: its manifest, and its portfile run with stand-ins for vcpkg's functions."""

import json
import re
import subprocess
from pathlib import Path

import pytest
from project import BUILD, CMAKE, PACKAGING, PORTS, ROOT, cache, needs, version

PORT = PACKAGING / "vcpkg"
MANIFEST = json.loads((PORT / "vcpkg.json").read_text())
IDENTIFIER = re.compile(r"[a-z0-9]+(-[a-z0-9]+)*")
TOOL_IS_BUILT = cache(BUILD)["KORVEX2_BUILD_TOOL"] == "ON"


def names(dependencies):
    return {dependency if isinstance(dependency, str) else dependency["name"] for dependency in dependencies}


def test_the_manifest_has_the_shape_of_a_port():
    assert set(MANIFEST) <= {"name", "version", "port-version", "description", "homepage", "license", "supports",
                             "dependencies", "default-features", "features"}
    assert IDENTIFIER.fullmatch(MANIFEST["name"])
    assert all(isinstance(MANIFEST[key], str) for key in ("version", "description", "license", "supports"))
    lists = [MANIFEST["dependencies"]]
    for name, feature in MANIFEST["features"].items():
        assert IDENTIFIER.fullmatch(name)
        assert {"description"} <= set(feature) <= {"description", "supports", "dependencies"}
        lists.append(feature["dependencies"])
    for dependency in sum(lists, []):
        if not isinstance(dependency, str):
            assert {"name"} <= set(dependency) <= {"name", "host", "features", "platform"}
        assert all(IDENTIFIER.fullmatch(name) for name in names([dependency]))
    assert set(MANIFEST["default-features"]) <= set(MANIFEST["features"])


def test_the_manifest_tells_of_this_project():
    project = (ROOT / "CMakeLists.txt").read_text()
    assert MANIFEST["version"] == version()
    assert f'DESCRIPTION "{MANIFEST["description"]}"' in project
    assert MANIFEST["license"] == "Apache-2.0" and "Apache License" in (ROOT / "LICENSE").read_text()


def test_dependencies_are_what_the_build_asks_for():
    helpers = {"vcpkg-cmake", "vcpkg-cmake-config"}
    assert names(MANIFEST["dependencies"]) == {PORTS[name] for name in needs("library")} | helpers
    assert all(dependency["host"] for dependency in MANIFEST["dependencies"] if not isinstance(dependency, str))
    for feature in MANIFEST["features"]:
        assert names(MANIFEST["features"][feature]["dependencies"]) == {PORTS[name] for name in needs(feature)}


def test_the_consumers_are_told_the_names_that_the_projects_own_clients_use():
    clients = "".join((ROOT / f"tests/install/{name}/CMakeLists.txt").read_text()
                      for name in ("consumer", "c_consumer"))
    usage = (PORT / "usage").read_text()
    for pattern in (r"find_package\((\w+)", r"target_link_libraries\(\w+ PRIVATE ([\w:]+)"):
        assert re.findall(pattern, usage) == re.findall(pattern, clients)
    modules = re.findall(r"pkg-config --cflags --libs (\w+)", usage)
    assert modules == ["korvex2", "vorbayer"]
    assert all((ROOT / f"cmake/{module}.pc.in").is_file() for module in modules)


def run_port(folder, features, port=PORT):
    return subprocess.run(
        [CMAKE, f"-DPORT_DIR={port}", f"-DWORK_DIR={folder}", f"-DBUILD_DIR={BUILD}",
         f"-DFEATURES={';'.join(features)}", "-P", Path(__file__).parent / "vcpkg_stand_in.cmake"],
        capture_output=True, text=True, timeout=200)


@pytest.mark.parametrize("features", [[], ["simd"], ["simd", "tools"]], ids=str)
def test_the_portfile_configures_and_leaves_what_vcpkg_wants(tmp_path, features):
    if "tools" in features and not TOOL_IS_BUILT:
        pytest.skip("the tool is not built")
    done = run_port(tmp_path, features)
    assert done.returncode == 0, done.stderr

    release, debug = (cache(tmp_path / "buildtrees" / name) for name in ("Release", "Debug"))
    for entries in (release, debug):
        assert (entries["KORVEX2_WITH_HIGHWAY"] == "ON") == ("simd" in features)
        assert entries["KORVEX2_BUILD_TESTS"] == entries["KORVEX2_BUILD_PYTHON"] == "OFF"
        assert entries["CMAKE_PROJECT_VERSION"] == version()
    assert (release["KORVEX2_BUILD_TOOL"] == "ON") == ("tools" in features)
    assert debug["KORVEX2_BUILD_TOOL"] == "OFF"

    packages = tmp_path / "packages"
    for file in ("include/korvex2/Korvex2.h", "lib/pkgconfig/korvex2.pc", "share/korvex2/Korvex2Config.cmake",
                 "include/vorbayer.h", "lib/pkgconfig/vorbayer.pc", "share/vorbayer/vorbayerConfig.cmake",
                 "share/korvex2/copyright", "share/korvex2/usage"):
        assert (packages / file).is_file(), file
    assert (packages / "tools/korvex2/korvex2").is_file() == ("tools" in features)
    for folder in ("bin", "lib/cmake", "debug/bin", "debug/lib/cmake", "debug/include", "debug/share", "share/doc"):
        assert not (packages / folder).exists(), folder


@pytest.mark.parametrize("right,wrong,complaint", [
    ("KORVEX2_WITH_HIGHWAY", "KORVEX2_WITH_HIGHWEY", "KORVEX2_WITH_HIGHWEY"),
    ("lib/cmake/Korvex2", "lib/cmake/korvex2", "lib/cmake/korvex2 is missing"),
    ("SOURCE_PATH}/LICENSE", "SOURCE_PATH}/COPYING", "COPYING is missing"),
    ("AUTO_CLEAN", "AUTO_CLEEN", "AUTO_CLEEN"),
])
def test_a_portfile_with_a_mistake_is_refused(tmp_path, right, wrong, complaint):
    if "CLEAN" in right and not TOOL_IS_BUILT:
        pytest.skip("the tool is not built")
    port = tmp_path / "packaging" / "vcpkg"
    port.mkdir(parents=True)
    text = (PORT / "portfile.cmake").read_text()
    assert right in text
    (port / "portfile.cmake").write_text(text.replace(right, wrong).replace("${CURRENT_PORT_DIR}/../..", str(ROOT)))
    (port / "usage").write_text("")
    done = run_port(tmp_path, ["simd", "tools"] if TOOL_IS_BUILT else ["simd"], port)
    assert done.returncode != 0
    assert complaint in " ".join(done.stderr.split())  # CMake breaks lines
