"""Builds the module with CMake; see scripts/python-test.sh for what the machine must have."""

import pathlib
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

HERE = pathlib.Path(__file__).parent.resolve()


class CMakeBuild(build_ext):
    def build_extension(self, extension):
        package = pathlib.Path(self.get_ext_fullpath(extension.name)).parent.resolve()
        build = pathlib.Path(self.build_temp).resolve()
        configure = [
            "cmake", "-S", HERE, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
            "-DIMGTUNE_BUILD_PYTHON=ON", "-DIMGTUNE_PYTHON_WHEEL=ON", "-DIMGTUNE_BUILD_TESTS=OFF",
            "-DIMGTUNE_BUILD_BENCH=OFF", f"-DPython_EXECUTABLE={sys.executable}",
            f"-DIMGTUNE_PYTHON_INSTALL_DIR={package.parent}",
        ]
        subprocess.run(configure, check=True)
        targets = ["imgtune_python", "ispfeature", "cutils", "log"]
        subprocess.run(["cmake", "--build", build, "--target", *targets], check=True)
        subprocess.run(["cmake", "--install", build, "--component", "python"], check=True)


setup(
    packages=["imgtune"],
    package_dir={"imgtune": "python/imgtune"},
    package_data={"imgtune": ["*.pyi", "py.typed"]},
    ext_modules=[Extension("imgtune._core", sources=[])],
    cmdclass={"build_ext": CMakeBuild},
)
