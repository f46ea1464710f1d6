"""Builds the module and makes a wheel of it: what pip asks of pyproject.toml.

It needs a C++ compiler, CMake and pybind11, and nothing of Python's besides the interpreter. By
hand: python3 bindings/python/build_wheel.py FOLDER
"""

import base64
import hashlib
import os
import pathlib
import re
import subprocess
import sys
import sysconfig
import zipfile

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent


def version():
    """The version of the library, of which the wheel says three numbers."""
    text = (ROOT / "include/vekdb/support/version.h").read_text()
    return ".".join(re.search(r'"([\d.]+)"', text).group(1).split(".")[:3])


def tag():
    """Interpreter, binary interface and system that a compiled module is for."""
    python = f"cp{sys.version_info[0]}{sys.version_info[1]}"
    system = re.sub(r"[-.]", "_", sysconfig.get_platform())
    return f"{python}-{python}-{system}"


def metadata():
    return (
        "Metadata-Version: 2.1\n"
        "Name: vekdb\n"
        f"Version: {version()}\n"
        "Summary: Clip logs of film and video: opened, asked, edited and saved\n"
        "Requires-Python: >=3.8\n"
    )


def make_wheel(package, folder):
    """Packs the files of a package that was built; the name of the wheel."""
    name = f"vekdb-{version()}-{tag()}.whl"
    info = f"vekdb-{version()}.dist-info"
    files = {
        f"vekdb/{file.name}": file.read_bytes()
        for file in sorted(pathlib.Path(package).iterdir())
        if file.suffix in (".py", ".pyi", ".so", ".typed") or file.name == "py.typed"
    }
    files[f"{info}/METADATA"] = metadata().encode()
    wheel = f"Wheel-Version: 1.0\nGenerator: vekdb\nRoot-Is-Purelib: false\nTag: {tag()}\n"
    files[f"{info}/WHEEL"] = wheel.encode()
    lines = []
    for path, content in files.items():
        digest = base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=")
        lines.append(f"{path},sha256={digest.decode()},{len(content)}\n")
    files[f"{info}/RECORD"] = "".join([*lines, f"{info}/RECORD,,\n"]).encode()
    with zipfile.ZipFile(os.path.join(folder, name), "w", zipfile.ZIP_DEFLATED) as out:
        for path, content in files.items():
            out.writestr(zipfile.ZipInfo(path, (1980, 1, 1, 0, 0, 0)), content)
    return name


def build():
    """Builds the module for this interpreter; the folder of the package."""
    folder = ROOT / "build" / f"wheel-{tag()}"
    options = {
        "CMAKE_BUILD_TYPE": "Release",
        "Python_EXECUTABLE": sys.executable,
        "VEKDB_PYTHON": "ON",
        "VEKDB_BUILD_FORMATS": "ON",
        "VEKDB_BUILD_TOOLS": "OFF",
        "VEKDB_BUILD_TESTS": "OFF",
        "VEKDB_INSTALL": "OFF",
    }
    words = [f"-D{name}={value}" for name, value in options.items()]
    subprocess.run(["cmake", "-S", ROOT, "-B", folder, *words], check=True, stdout=sys.stderr)
    jobs = str(os.cpu_count() or 1)
    subprocess.run(
        ["cmake", "--build", folder, "--target", "vekdb_python", "-j", jobs],
        check=True,
        stdout=sys.stderr,
    )
    return folder / "python" / "vekdb"


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    """The hook that pip calls."""
    return make_wheel(build(), wheel_directory)


def build_sdist(sdist_directory, config_settings=None):
    """The other one; the module is built in the tree of the library alone."""
    raise RuntimeError("vekdb is built from its source tree: pip install ./bindings/python")


if __name__ == "__main__":
    target = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".")
    target.mkdir(parents=True, exist_ok=True)
    print(target / build_wheel(target))
