"""Builds the extension module by CMake, with the library inside it. All else is in pyproject.toml."""

import os
import re
import shlex
import shutil
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

HERE = Path(__file__).parent.resolve()


def version():
    return re.search(r"VERSION (\d+\.\d+\.\d+)", (HERE / "CMakeLists.txt").read_text()).group(1)


def pybind11_options():
    """The one that pip installed for this build; without it, CMake finds the system's."""
    try:
        import pybind11
    except ImportError:
        return []
    return [f"-Dpybind11_DIR={pybind11.get_cmake_dir()}"]


class CMakeBuild(build_ext):
    """Options for CMake can be added in the environment variable CMAKE_ARGS."""

    def build_extension(self, extension):
        build = Path(self.build_temp).resolve()
        module = Path(self.get_ext_fullpath(extension.name)).resolve()
        generator = ["-GNinja"] if shutil.which("ninja") and "CMAKE_GENERATOR" not in os.environ else []
        subprocess.run(
            ["cmake", "-S", HERE, "-B", build, *generator, "-DCMAKE_BUILD_TYPE=Release", "-DKORVEX2_SHARED=OFF",
             "-DKORVEX2_BUILD_TOOL=OFF", "-DKORVEX2_BUILD_TESTS=OFF", "-DKORVEX2_BUILD_PYTHON=ON",
             f"-DPython3_EXECUTABLE={sys.executable}", *pybind11_options(),
             *shlex.split(os.environ.get("CMAKE_ARGS", ""))], check=True)
        jobs = os.environ.get("CMAKE_BUILD_PARALLEL_LEVEL") or str(self.parallel or os.cpu_count())
        subprocess.run(["cmake", "--build", build, "--target", "korvex2_python", "--parallel", jobs], check=True)
        module.parent.mkdir(parents=True, exist_ok=True)
        for name in (module.name, "_formats.py"):
            shutil.copy(build / "python" / "korvex2" / name, module.parent)


setup(version=version(), ext_modules=[Extension("korvex2._core", [])], cmdclass={"build_ext": CMakeBuild})
