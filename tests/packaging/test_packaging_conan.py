"""The recipe for Conan 2, run with a stand-in for Conan."""

import importlib.util
import itertools
import os
import shutil
import subprocess

import conan_stand_in
import pytest
from project import BUILD, PACKAGING, RECIPES, ROOT, cache, configure, needs, options, version

RECIPE = PACKAGING / "conan"
CHOICES = [dict(zip(("simd", "tools", "python"), chosen)) for chosen in itertools.product((True, False), repeat=3)]

conan_stand_in.install()


def recipe(path):
    """The one class of recipes in a file."""
    found = importlib.util.spec_from_file_location("recipe", path)
    module = importlib.util.module_from_spec(found)
    found.loader.exec_module(module)
    classes = [value for value in vars(module).values()
               if isinstance(value, type) and issubclass(value, conan_stand_in.ConanFile)
               and value is not conan_stand_in.ConanFile]
    assert len(classes) == 1
    return classes[0]


Recipe = recipe(RECIPE / "conanfile.py")


def generated(made):
    conan_stand_in.CMakeToolchain.made.clear()
    made.generate()
    return conan_stand_in.CMakeToolchain.made[-1]


def test_name_version_and_licence_are_the_projects():
    made = Recipe(RECIPE)
    made.set_version()
    assert made.version == version()
    assert f'DESCRIPTION "{made.description}"' in (ROOT / "CMakeLists.txt").read_text()
    assert (made.name, made.license) == ("korvex2", "Apache-2.0")


def test_every_option_has_a_legal_default():
    own = {name: value for name, value in Recipe.default_options.items() if "/" not in name}
    assert set(own) == set(Recipe.options)
    assert all(own[name] in Recipe.options[name] for name in own)


@pytest.mark.parametrize("choice", CHOICES, ids=str)
def test_requirements_are_what_the_build_asks_for(choice):
    made = Recipe(RECIPE, **choice)
    made.requirements()
    parts = ["library"] + [part for part, wanted in choice.items() if wanted]
    assert set(made.required) == {RECIPES[name] for part in parts for name in needs(part)}
    made.package_folder = "/package"
    made.package_info()
    components = made.cpp_info.components
    required = {name for component in components.values() for name in component.requires}
    assert required & set(components) == {"vorbayer"}
    assert {name.split("::")[0] for name in required - set(components)} == set(made.required)
    assert ("PYTHONPATH" in made.environment) == choice["python"]


@pytest.mark.parametrize("choice", CHOICES, ids=str)
def test_options_are_those_of_the_build(choice):
    variables = generated(Recipe(RECIPE, **choice))
    assert set(variables) <= options()
    assert variables["KORVEX2_WITH_HIGHWAY"] is choice["simd"]
    assert variables["KORVEX2_BUILD_TOOL"] is choice["tools"]
    assert variables["KORVEX2_BUILD_PYTHON"] is choice["python"]
    assert variables["KORVEX2_BUILD_TESTS"] is False


def test_highway_is_found_under_the_name_that_the_build_looks_for():
    conan_stand_in.CMakeDeps.properties.clear()
    Recipe(RECIPE, simd=True).generate()
    assert conan_stand_in.CMakeDeps.properties == {("highway", "cmake_file_name"): "hwy",
                                                   ("highway::hwy", "cmake_target_name"): "hwy::hwy"}


@pytest.mark.parametrize("settings,refused", [
    ({}, False), ({"arch": "armv8"}, False), ({"cppstd": "23"}, False),
    ({"os": "Windows"}, True), ({"arch": "s390x"}, True), ({"cppstd": "17"}, True)], ids=str)
def test_other_systems_and_standards_are_refused(settings, refused):
    assert "set(CMAKE_CXX_STANDARD 20)" in (ROOT / "cmake/Korvex2CompilerOptions.cmake").read_text()
    if refused:
        with pytest.raises(conan_stand_in.ConanInvalidConfiguration):
            Recipe(RECIPE, **settings).validate()
    else:
        Recipe(RECIPE, **settings).validate()


@pytest.mark.parametrize("wanted", [True, False], ids=["everything", "nothing"])
def test_the_exported_sources_configure(tmp_path, wanted):
    if wanted and "OFF" in (cache(BUILD)["KORVEX2_BUILD_TOOL"], cache(BUILD)["KORVEX2_BUILD_PYTHON"]):
        pytest.skip("the tool or the Python package is not built, so what they need may be missing")
    made = Recipe(RECIPE, simd=wanted, tools=wanted, python=wanted)
    made.export_sources_folder = str(tmp_path / "source")
    made.export_sources()
    assert not list((tmp_path / "source").rglob("__pycache__"))
    variables = {name: "ON" if value else "OFF" for name, value in generated(made).items()}
    configure(tmp_path / "source", tmp_path / "build", variables)
    entries = cache(tmp_path / "build")
    assert {name: entries[name] for name in variables} == variables
    assert entries["CMAKE_PROJECT_VERSION"] == version()


def test_the_package_holds_what_package_info_names(tmp_path):
    conan_stand_in.CMake.build_under_test = BUILD
    made = Recipe(RECIPE)
    made.source_folder, made.package_folder = str(ROOT), str(tmp_path)
    made.package()
    made.package_info()
    headers = {"korvex2": "Korvex2.h", "vorbayer": "vorbayer.h"}
    assert set(made.cpp_info.components) == set(headers)
    for name, component in made.cpp_info.components.items():
        assert [(tmp_path / folder / headers[name]).is_file() for folder in component.includedirs] == [True]
        assert component.libs == [name] and list(tmp_path.glob(f"lib/lib{name}.*"))
    assert (tmp_path / "licenses/LICENSE").read_bytes() == (ROOT / "LICENSE").read_bytes()
    assert not list(tmp_path.rglob("*.cmake")) and not list(tmp_path.rglob("*.pc"))
    clients = "".join((ROOT / f"tests/install/{name}/CMakeLists.txt").read_text()
                      for name in ("consumer", "c_consumer"))
    for component in made.cpp_info.components.values():
        assert f"PRIVATE {component.properties['cmake_target_name']})" in clients


def test_the_test_package_builds_the_projects_own_client():
    conan_stand_in.CMake.configured.clear()
    folder = RECIPE / "test_package"
    made = recipe(folder / "conanfile.py")(folder)
    made.requirements()
    made.build()
    made.test()
    assert set(made.required) == {"korvex2"}
    client = (folder / conan_stand_in.CMake.configured[-1]).resolve()
    lists = (client / "CMakeLists.txt").read_text()
    assert f"find_package(Korvex2 {version().split('.')[0]} " in lists
    assert [os.path.basename(command) for command in made.commands] == ["consumer"]
    assert "add_executable(consumer " in lists


def test_conan_itself_reads_the_recipe():
    if not shutil.which("conan"):
        pytest.skip("Conan is not installed")
    done = subprocess.run(["conan", "inspect", RECIPE], capture_output=True, text=True, timeout=100)
    assert done.returncode == 0 and f"version: {version()}" in done.stdout, done.stderr
