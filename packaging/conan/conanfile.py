"""Conan 2 recipe that packs the tree it lies in: conan create packaging/conan"""

import os
import re

from conan import ConanFile
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load, rm, rmdir

required_conan_version = ">=2.0"


class QelGridwork(ConanFile):
    name = "qel-gridwork"
    description = "Finite-element mesh utilities: plain matrices in, plain matrices out"
    license = "Apache-2.0"
    topics = ("mesh", "finite-elements", "geometry")
    package_type = "library"
    settings = "os", "arch", "compiler", "build_type"
    options = {"shared": [True, False], "fPIC": [True, False]}
    default_options = {"shared": True, "fPIC": True}
    implements = ["auto_shared_fpic"]

    @property
    def _tree(self):
        return os.path.join(self.recipe_folder, "..", "..")

    def set_version(self):
        header = load(self, os.path.join(self._tree, "include", "qel", "gridwork", "version.h"))
        self.version = ".".join(re.findall(r"#define QEL_GRIDWORK_VERSION_[A-Z]+ ([0-9]+)", header))

    def export_sources(self):
        for pattern in ("CMakeLists.txt", "LICENSE", "README.md", "*.h", "*.cpp", "cmake/*", "examples/*"):
            copy(self, pattern, src=self._tree, dst=self.export_sources_folder,
                 excludes=("build/*", "tests/*", "benchmarks/*", "fuzz/*", "packaging/*"))

    def layout(self):
        cmake_layout(self)

    def validate(self):
        check_min_cppstd(self, 20)

    def generate(self):
        toolchain = CMakeToolchain(self)
        for part in ("TESTS", "EXAMPLES", "BENCHMARKS"):
            toolchain.cache_variables[f"QEL_GRIDWORK_BUILD_{part}"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        copy(self, "LICENSE", src=self.source_folder, dst=os.path.join(self.package_folder, "licenses"))
        for folder in ("lib/cmake", "lib/pkgconfig", "share"):
            rmdir(self, os.path.join(self.package_folder, folder))
        rm(self, "*.pdb", self.package_folder, recursive=True)

    def package_info(self):
        self.cpp_info.set_property("cmake_file_name", "qel_gridwork")
        self.cpp_info.set_property("cmake_target_name", "qel::gridwork")
        self.cpp_info.set_property("pkg_config_name", "qel_gridwork")
        self.cpp_info.libs = ["qel_gridwork"]
        if not self.options.shared:
            self.cpp_info.defines = ["QEL_GRIDWORK_STATIC"]
            if self.settings.os in ("Linux", "FreeBSD"):
                self.cpp_info.system_libs = ["m"]
