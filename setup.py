"""Builds the compiled half of the Python module with CMake; pyproject.toml says the rest."""

import pathlib
import re
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

HERE = pathlib.Path(__file__).parent.resolve()
VERSION = re.search(r"project\(imgtune VERSION ([\d.]+)", (HERE / "CMakeLists.txt").read_text())


class CMakeBuild(build_ext):
    """Puts the module beside its Python files, and beside it the libraries that it loads."""

    def build_extension(self, extension):
        package = pathlib.Path(self.get_ext_fullpath(extension.name)).parent.resolve()
        build = pathlib.Path(self.build_temp).resolve()
        settings = {
            "CMAKE_BUILD_TYPE": "Release",
            "CMAKE_INSTALL_LIBDIR": package,
            "CMAKE_BUILD_WITH_INSTALL_RPATH": "ON",  # what is copied names no folder of this machine
            "IMGTUNE_PYTHON_INSTALL_DIR": package.parent,
            "IMGTUNE_BUILD_PYTHON": "ON",
            "IMGTUNE_BUILD_TESTS": "OFF",
            "IMGTUNE_BUILD_BENCH": "OFF",
            "IMGTUNE_UNITY": "8",
            "Python_EXECUTABLE": sys.executable,
        }
        options = [f"-D{name}={value}" for name, value in settings.items()]
        subprocess.run(["cmake", "-S", HERE, "-B", build, "-G", "Ninja", *options], check=True)
        targets = ["imgtune_python", "ispfeature"]
        subprocess.run(["cmake", "--build", build, "--target", *targets], check=True)
        subprocess.run(["cmake", "--install", build, "--component", "python"], check=True)
        for library in (*build.glob("lib*.so"), *build.glob("platform/lib*.so")):
            self.copy_file(str(library), str(package))


setup(
    version=VERSION[1],
    ext_modules=[Extension("imgtune._core", [])],
    cmdclass={"build_ext": CMakeBuild},
)
