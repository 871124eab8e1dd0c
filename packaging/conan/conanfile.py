"""The C++ library from the tree that this recipe is part of: conan create packaging/conan"""
import os
import re

from conan import ConanFile
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load


class Kavio(ConanFile):
    name = "kavio"
    description = "Pay at unattended vending points from a wallet application"
    package_type = "shared-library"  # the build makes a static library, too, which is another component for CMake
    settings = "os", "arch", "compiler", "build_type"
    requires = (
        "icu/[>=72.1]",
        "libcurl/[>=7.88 <9]",
        "nlohmann_json/[>=3.11 <4]",
        "openssl/[>=3 <4]",
        "simdjson/[>=3 <4]",
        "sqlite3/[>=3.40 <4]",
    )
    default_options = {"libcurl/*:with_ssl": "openssl", "libcurl/*:with_nghttp2": True}

    @property
    def _tree(self):
        return os.path.join(self.recipe_folder, "..", "..")

    def set_version(self):
        text = load(self, os.path.join(self._tree, "CMakeLists.txt"))
        self.version = re.search(r"project\(Kavio VERSION ([0-9.]+)", text)[1]

    def export_sources(self):
        for pattern in "CMakeLists.txt", "cmake/*", "include/*", "packaging/debian/*", "src/*":
            copy(self, pattern, src=self._tree, dst=self.export_sources_folder)

    def validate(self):
        check_min_cppstd(self, 20)

    def layout(self):
        cmake_layout(self)

    def generate(self):
        CMakeDeps(self).generate()
        toolchain = CMakeToolchain(self)
        for part in "APPS", "TESTS", "BENCH", "C", "GTK":
            toolchain.cache_variables[f"KAVIO_{part}"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        copy(self, "copyright", src=os.path.join(self.source_folder, "packaging", "debian"), dst=os.path.join(self.package_folder, "licenses"))

    def package_info(self):
        # CMake finds the package's own KavioConfig.cmake.
        self.cpp_info.set_property("cmake_find_mode", "none")
        self.cpp_info.builddirs = [os.path.join("lib", "cmake", "Kavio")]
        self.cpp_info.set_property("pkg_config_name", "kavio")
        self.cpp_info.libs = ["kavio"]
