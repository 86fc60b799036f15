"""Builds the wheel for pip, with CMake and nothing else: the hooks that pip calls."""
import base64
import hashlib
import os
import pathlib
import subprocess
import sys
import sysconfig
import tempfile
import tomllib
import zipfile

SOURCE = pathlib.Path(__file__).resolve().parents[2]
LIBRARIES = ["libAVEffect.so", "libAVBaseTools.so", "libAVBaseMedia.so"]


def _project():
    return tomllib.loads((SOURCE / "pyproject.toml").read_text())["project"]


def _tag():
    version = f"cp{sys.version_info.major}{sys.version_info.minor}"
    return f"{version}-{version}-{sysconfig.get_platform().replace('-', '_').replace('.', '_')}"


def _files(build):
    """What goes into the wheel: name -> file."""
    python = build / "python" / "aveffect"
    yield from ((f"aveffect/{file.name}", file) for file in sorted(python.iterdir()) if file.suffix in (".py", ".pyi", ".typed", ".so"))
    yield from ((f"aveffect/lib/{name}", build / "bin" / name) for name in LIBRARIES)


def _build(build):
    options = ["-DCMAKE_BUILD_TYPE=Release", "-DAVEFFECT_BUILD_TESTS=OFF", f"-DPython3_EXECUTABLE={sys.executable}"]
    generator = ["-G", "Ninja"]
    subprocess.run(["cmake", "-S", SOURCE, "-B", build, *generator, *options], check=True)
    if "aveffect_python" not in subprocess.run(["cmake", "--build", build, "--target", "help"], check=True, capture_output=True, text=True).stdout:
        sys.exit(f"aveffect: what the package for Python is built with is missing; {SOURCE / 'scripts/dependencies.sh'} installs it")
    subprocess.run(["cmake", "--build", build, "--target", "aveffect_python"], check=True)


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    project = _project()
    name = f"{project['name']}-{project['version']}"
    wheel = pathlib.Path(wheel_directory) / f"{name}-{_tag()}.whl"
    about = f"{name}.dist-info"
    metadata = (f"Metadata-Version: 2.1\nName: {project['name']}\nVersion: {project['version']}\nSummary: {project['description']}\n"
                f"Requires-Python: {project['requires-python']}\n" + "".join(f"Requires-Dist: {each}\n" for each in project["dependencies"]))
    texts = {"METADATA": metadata, "WHEEL": f"Wheel-Version: 1.0\nGenerator: aveffect\nRoot-Is-Purelib: false\nTag: {_tag()}\n"}
    with tempfile.TemporaryDirectory() as folder, zipfile.ZipFile(wheel, "w", zipfile.ZIP_DEFLATED) as archive:
        # A release build that is there already, for the same interpreter, is taken as it is.
        build = pathlib.Path(os.environ.get("AVEFFECT_BUILD_DIR", folder))
        if build == pathlib.Path(folder):
            _build(build)
        contents = {name: file.read_bytes() for name, file in _files(build)}
        contents |= {f"{about}/{name}": text.encode() for name, text in texts.items()}
        record = ""
        for path, content in contents.items():
            archive.writestr(path, content)
            digest = base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=").decode()
            record += f"{path},sha256={digest},{len(content)}\n"
        archive.writestr(f"{about}/RECORD", record + f"{about}/RECORD,,\n")
    return wheel.name


def build_sdist(sdist_directory, config_settings=None):
    sys.exit("aveffect: the source is the repository itself: pip install .")
