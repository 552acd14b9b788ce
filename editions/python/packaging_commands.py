"""How pip builds the package: CMake does everything, setuptools packs what it installed."""

import os
import pathlib
import re
import subprocess
import sys

import pybind11
from setuptools.command.build_py import build_py
from setuptools.command.egg_info import egg_info

try:
    from setuptools.command.bdist_wheel import bdist_wheel
except ImportError:  # before version 70
    from wheel.bdist_wheel import bdist_wheel

ROOT = pathlib.Path(__file__).parents[2]


class Version(egg_info):
    """The version stands in the library's header; a distribution of sources holds the library."""

    def finalize_options(self):
        header = ROOT.joinpath("include/qel/gridwork/version.h").read_text()
        self.distribution.metadata.version = ".".join(re.findall(r"#define QEL_GRIDWORK_VERSION_[A-Z]+ (\d+)", header))
        super().finalize_options()

    def find_sources(self):
        super().find_sources()
        for line in ROOT.joinpath("editions/python/MANIFEST.in").read_text().splitlines():
            if not line.startswith("#"):
                self.filelist.process_template_line(line)


class BuildByCMake(build_py):
    """Builds the module, with the library inside, and installs the package into the folder that gets packed."""

    def run(self):
        build = pathlib.Path(self.get_finalized_command("build").build_temp, "cmake").resolve()
        options = {
            "BUILD_SHARED_LIBS": "OFF",
            "CMAKE_POSITION_INDEPENDENT_CODE": "ON",
            "CMAKE_BUILD_TYPE": "Release",
            "Python_EXECUTABLE": sys.executable,
            "QEL_GRIDWORK_BUILD_EXAMPLES": "OFF",
            "QEL_GRIDWORK_BUILD_PYTHON": "ON",
            "QEL_GRIDWORK_BUILD_TESTS": "OFF",
            "QEL_GRIDWORK_BUILD_TOOL": "OFF",
            "QEL_GRIDWORK_PYTHON_FOLDER": ".",
            "pybind11_DIR": pybind11.get_cmake_dir(),
        }
        self._cmake("-S", ROOT, "-B", build, *(f"-D{name}={value}" for name, value in options.items()))
        self._cmake("--build", build, "--parallel", str(os.cpu_count()), "--target", "gridwork_python")
        prefix = pathlib.Path(self.build_lib).resolve()
        self._cmake("--install", build, "--component", "qel_gridwork_python", "--strip", "--prefix", prefix)

    @staticmethod
    def _cmake(*arguments):
        subprocess.run(["cmake", *map(str, arguments)], check=True)


class PlatformWheel(bdist_wheel):
    """A wheel of one Python and one platform: it holds a compiled module."""

    def finalize_options(self):
        super().finalize_options()
        self.root_is_pure = False
