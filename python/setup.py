"""Builds the wheel: the extension module, libvorel32.so and the codec modules, side by side in the package.

VOREL32_BUILT names a folder that has them already, such as build/native/bin. Without it CMake builds them in build/python.
"""
import os
import shutil
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "python"


class BuildWithCMake(build_ext):
    def build_extension(self, extension):
        built = os.environ.get("VOREL32_BUILT")
        folder = Path(built) if built else self.build_all()
        target = Path(self.get_ext_fullpath(extension.name)).parent
        target.mkdir(parents=True, exist_ok=True)
        modules = [path for path in folder.glob("*.so") if path.stem.isupper() and path.stem != "RECORDER"]
        for path in [*modules, *folder.glob("_vorel32.*.so"), folder / "libvorel32.so.5"]:
            shutil.copyfile(path, target / path.name)
            subprocess.run(["strip", "--strip-unneeded", target / path.name], check=False)

    def build_all(self):
        configure = ["-DCMAKE_BUILD_TYPE=Release", "-DVOREL_PYTHON=ON", "-DVOREL_TESTS=OFF", f"-DPython_EXECUTABLE={sys.executable}"]
        subprocess.run(["cmake", "-S", ROOT, "-B", WORK, "-G", "Ninja", *configure], check=True)
        subprocess.run(["cmake", "--build", WORK, "--target", "_vorel32", "codec_modules"], check=True)
        return WORK / "bin"


WORK.mkdir(parents=True, exist_ok=True)
shutil.rmtree(WORK / "wheel", ignore_errors=True)
setup(
    ext_modules=[Extension("vorel32._vorel32", sources=[])],
    cmdclass={"build_ext": BuildWithCMake},
    options={"build": {"build_base": str(WORK / "wheel")}, "egg_info": {"egg_base": str(WORK)}},
)
