"""Builds the Python module with the project's CMake, for pip (see pyproject.toml).

Only the module's target is built: the core library is linked in statically, so the
installed package needs nothing of this project beside it. The CMake build folder is
build/pip (or $MERIDEX_PIP_BUILD_DIR), kept between runs, and a compiler cache is used
when there is one, so a second install rebuilds only what changed.
"""
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = Path(__file__).resolve().parent
BUILD = Path(os.environ.get("MERIDEX_PIP_BUILD_DIR", ROOT / "build" / "pip"))
BUILD.mkdir(parents=True, exist_ok=True)


def version():
    text = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r"project\(meridex VERSION ([0-9.]+)", text).group(1)


class CMakeBuild(build_ext):
    """Configures the project for the module alone, builds it, and takes the package folder it makes."""

    def build_extension(self, ext):
        cmake = BUILD / "cmake"
        subprocess.run(["cmake", "-S", str(ROOT), "-B", str(cmake), "-G", "Ninja",
                        "-DCMAKE_BUILD_TYPE=Release", f"-DPython3_EXECUTABLE={sys.executable}",
                        "-DBUILD_SHARED_LIBS=OFF", "-DMERIDEX_BUILD_PYTHON=ON", "-DMERIDEX_BUILD_TOOLS=OFF",
                        "-DMERIDEX_BUILD_TESTS=OFF", "-DMERIDEX_BUILD_BENCH=OFF", "-DMERIDEX_BUILD_UI=OFF"],
                       check=True)
        jobs = ["-j", str(self.parallel)] if self.parallel else []
        subprocess.run(["cmake", "--build", str(cmake), "--target", "meridex_python_package", *jobs], check=True)
        target = Path(self.get_ext_fullpath(ext.name)).parent
        shutil.rmtree(target, ignore_errors=True)
        shutil.copytree(cmake / "python" / "site" / "meridex", target)


setup(
    version=version(),
    ext_modules=[Extension("meridex.__init__", sources=[])],
    cmdclass={"build_ext": CMakeBuild},
    options={"build": {"build_base": str(BUILD / "setuptools")}, "egg_info": {"egg_base": str(BUILD)}},
)
