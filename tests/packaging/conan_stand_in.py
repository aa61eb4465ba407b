"""As much of Conan 2 as the recipes use, so that they can be run where Conan is not installed. What they ask of it
is recorded; an argument that Conan does not document is a TypeError."""

import collections
import fnmatch
import shutil
import subprocess
import sys
import types
from pathlib import Path
from types import SimpleNamespace


class ConanInvalidConfiguration(Exception):
    pass


class Component(SimpleNamespace):
    def __init__(self):
        super().__init__(properties={}, includedirs=["include"], libs=[], system_libs=[], requires=[])

    def set_property(self, name, value):
        self.properties[name] = value


class CppInfo:
    """Of a package whose components say everything but the name of its CMake file."""

    def __init__(self):
        self.components = collections.defaultdict(Component)
        self.properties = {}

    def set_property(self, name, value):
        self.properties[name] = value


class ConanFile:
    tested_reference_str = "korvex2/0.0.0"

    def __init__(self, folder, os="Linux", arch="x86_64", cppstd="20", **options):
        self.recipe_folder = str(folder)
        own = {name: value for name, value in getattr(self, "default_options", {}).items() if "/" not in name}
        self.options = SimpleNamespace(**{**own, **options})
        self.settings = SimpleNamespace(os=os, arch=arch, cppstd=cppstd)
        self.cpp_info = CppInfo()
        self.cpp = SimpleNamespace(build=SimpleNamespace(bindir="."))
        self.environment = {}
        self.runenv_info = SimpleNamespace(prepend_path=self.environment.__setitem__)
        self.required = {}
        self.commands = []

    def requires(self, reference, transitive_headers=False, transitive_libs=False):
        name, version = reference.split("/")
        self.required[name] = version

    def run(self, command, env=None):
        self.commands.append(command)


class CMakeToolchain:
    made = []

    def __init__(self, conanfile):
        self.cache_variables = {}

    def generate(self):
        self.made.append(self.cache_variables)


class CMakeDeps:
    properties = {}

    def __init__(self, conanfile):
        pass

    def set_property(self, dependency, name, value):
        self.properties[dependency, name] = value

    def generate(self):
        pass


class CMake:
    """Configures nothing; installs the build that is under test."""

    build_under_test = None
    configured = []

    def __init__(self, conanfile):
        self.conanfile = conanfile

    def configure(self, build_script_folder=None):
        self.configured.append(build_script_folder)

    def build(self):
        pass

    def install(self):
        subprocess.run(["cmake", "--install", self.build_under_test, "--prefix", self.conanfile.package_folder],
                       check=True, stdout=subprocess.DEVNULL)


def copy(conanfile, pattern, src, dst, keep_path=True, excludes=None):
    source = Path(src).resolve()
    copied = []
    for path in source.rglob("*"):
        relative = str(path.relative_to(source))
        if path.is_file() and fnmatch.fnmatch(relative, pattern) and not fnmatch.fnmatch(relative, excludes or ""):
            (Path(dst) / relative).parent.mkdir(parents=True, exist_ok=True)
            copied.append(shutil.copy(path, Path(dst) / relative))
    assert copied, f"{pattern} matches nothing in {source}"
    return copied


def check_min_cppstd(conanfile, cppstd):
    if int(conanfile.settings.cppstd) < int(cppstd):
        raise ConanInvalidConfiguration(f"needs C++{cppstd}")


def install():
    modules = {
        "conan": {"ConanFile": ConanFile},
        "conan.errors": {"ConanInvalidConfiguration": ConanInvalidConfiguration},
        "conan.tools": {},
        "conan.tools.build": {"check_min_cppstd": check_min_cppstd, "can_run": lambda conanfile: True},
        "conan.tools.cmake": {"CMake": CMake, "CMakeDeps": CMakeDeps, "CMakeToolchain": CMakeToolchain,
                              "cmake_layout": lambda conanfile: None},
        "conan.tools.files": {"copy": copy, "load": lambda conanfile, path: Path(path).read_text(),
                              "rmdir": lambda conanfile, path: shutil.rmtree(path, ignore_errors=True)},
    }
    for name, members in modules.items():
        sys.modules[name] = types.ModuleType(name)
        sys.modules[name].__dict__.update(members)
