"""Recipe of Conan 2: `conan create packaging/conan` packages the checkout that it lies in."""

import os
import re

from conan import ConanFile
from conan.errors import ConanInvalidConfiguration
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load, rmdir

SOURCES = ("CMakeLists.txt", "LICENSE", "bayer/*", "cmake/*", "include/*", "io/*", "python/*", "sdk/*", "src/*",
           "tools/*")


class Korvex2Recipe(ConanFile):
    name = "korvex2"
    description = "Exact and fast pixel-format conversion of machine-vision frames"
    license = "Apache-2.0"
    topics = ("bayer", "demosaicing", "machine-vision", "pixel-format", "yuv")
    package_type = "library"
    settings = "os", "arch", "compiler", "build_type"
    options = {
        "shared": [True, False],
        "fPIC": [True, False],
        "simd": [True, False],
        "tools": [True, False],
        "python": [True, False],
    }
    default_options = {
        "shared": False,
        "fPIC": True,
        "simd": True,
        "tools": False,
        "python": False,
        "libraw/*:shared": True,  # the tool names LibRaw, not what a static LibRaw needs
    }
    implements = ["auto_shared_fpic"]

    def _checkout(self):
        return os.path.join(self.recipe_folder, os.pardir, os.pardir)

    def set_version(self):
        project = load(self, os.path.join(self._checkout(), "CMakeLists.txt"))
        self.version = re.search(r"VERSION (\d+\.\d+\.\d+)", project).group(1)

    def export_sources(self):
        for pattern in SOURCES:
            copy(self, pattern, src=self._checkout(), dst=self.export_sources_folder, excludes="*/__pycache__/*")

    def layout(self):
        cmake_layout(self)

    def requirements(self):
        # For SingletonDefinitions.h; nothing of it is linked.
        self.requires("boost/[>=1.74 <2]", transitive_headers=True)
        if self.options.simd:
            self.requires("highway/[>=1.0.3 <2]")
        if self.options.tools:
            self.requires("cli11/[>=2.3 <3]")
            self.requires("fmt/[>=9 <12]")
            self.requires("libpng/[>=1.6 <2]")
            self.requires("libraw/[>=0.20 <1]")
            self.requires("libtiff/[>=4.5 <5]")
            self.requires("onetbb/[>=2021.8]")
        if self.options.python:
            self.requires("pybind11/[>=2.10 <3]")

    def validate(self):
        check_min_cppstd(self, 20)
        if self.settings.os != "Linux" or self.settings.arch not in ("x86_64", "armv8"):
            raise ConanInvalidConfiguration("Korvex2 is for Linux on x86-64 and 64-bit Arm")

    def generate(self):
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["KORVEX2_WITH_HIGHWAY"] = bool(self.options.simd)
        toolchain.cache_variables["KORVEX2_BUILD_TOOL"] = bool(self.options.tools)
        toolchain.cache_variables["KORVEX2_BUILD_PYTHON"] = bool(self.options.python)
        toolchain.cache_variables["KORVEX2_BUILD_TESTS"] = False
        toolchain.generate()
        dependencies = CMakeDeps(self)
        if self.options.simd:
            dependencies.set_property("highway", "cmake_file_name", "hwy")
            dependencies.set_property("highway::hwy", "cmake_target_name", "hwy::hwy")
        dependencies.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        copy(self, "LICENSE", src=self.source_folder, dst=os.path.join(self.package_folder, "licenses"))
        # Conan's generators make these for each consumer.
        for directory in ("lib/cmake", "lib/pkgconfig", "share/doc"):
            rmdir(self, os.path.join(self.package_folder, directory))

    def _component(self, name, target, headers, system_libraries, requires):
        """A library; its pkg-config module has its name."""
        component = self.cpp_info.components[name]
        component.set_property("cmake_target_name", target)
        component.set_property("pkg_config_name", name)
        component.includedirs = [headers]
        component.libs = [name]
        component.system_libs = system_libraries
        component.requires = requires

    def package_info(self):
        self.cpp_info.set_property("cmake_file_name", "Korvex2")
        simd = ["highway::hwy"] if self.options.simd else []
        self._component("vorbayer", "vorbayer::vorbayer", "include", ["m", "stdc++"], simd)
        self._component("korvex2", "Korvex2::Korvex2", "include/korvex2", ["m", "pthread"],
                        ["vorbayer", "boost::headers", *simd])
        # Programs and modules, which no client links.
        if self.options.tools:
            self.cpp_info.components["tools"].requires = ["cli11::cli11", "fmt::fmt", "libpng::libpng",
                                                          "libraw::libraw", "libtiff::libtiff", "onetbb::onetbb"]
        if self.options.python:
            self.cpp_info.components["python"].requires = ["pybind11::pybind11"]
            self.runenv_info.prepend_path("PYTHONPATH", os.path.join(self.package_folder, "lib/python3/dist-packages"))
