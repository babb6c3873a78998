# Not tried: written from Conan's documentation, version 2. From the project's folder:
#   conan create packaging/conan
import os

from conan import ConanFile
from conan.tools.cmake import CMake, CMakeToolchain, cmake_layout
from conan.tools.files import copy


class VelSock(ConanFile):
    name = "velsock"
    version = "1.0.0"
    license = "MIT"
    description = "Sockets and name resolution with one set of answers"
    package_type = "shared-library"
    settings = "os", "compiler", "build_type", "arch"

    def export_sources(self):
        root = os.path.join(self.recipe_folder, "..", "..")
        for pattern in ("CMakeLists.txt", "cmake/*", "Common/*", "companion/*", "logging/*", "packaging/*", "docs/*", "examples/*",
                        "README.md", "CHANGELOG.md", "LICENSE", "SECURITY.md"):
            copy(self, pattern, root, self.export_sources_folder)

    def layout(self):
        cmake_layout(self)

    def generate(self):
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["VELSOCK_TOOLS"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()

    def package_info(self):
        # The library's own package for CMake is the one that is used.
        self.cpp_info.set_property("cmake_find_mode", "none")
        self.cpp_info.builddirs.append(os.path.join("lib", "cmake", "VelSock"))
