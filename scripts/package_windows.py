#!/usr/bin/python3
"""Makes the package for Windows: scripts/package_windows.py BUILD OUTPUT

BUILD is the folder of a build with MinGW-w64, OUTPUT the folder for tv2-VERSION-windows.zip. The same build gives the
same bytes at any time, for any user.
"""
import os
import subprocess
import sys
import tempfile
import time
import zipfile

TREE = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))

README = """\
This archive holds no plug-in that MotionBuilder can load.

The plug-in for MotionBuilder 2017 has to be built with Visual Studio against MotionBuilder's own SDK. Its sources are
in the folder motionbuilder; motionbuilder/README.md says how to build and install it.

What is here, version {version}, for 64-bit Windows 10 (1903) or later:

  bin/tv2.exe            the command: "tv2 --help"; put this folder on the PATH, or start it from anywhere
  bin/*.dll              the headless host, which opens scenes without MotionBuilder
  lib/tv2/*.dll          the exporter for that host, and the rules of exports
  lib/tv2/tv2_export.py  exports from Python: put lib/tv2 on sys.path, then "import tv2_export"
  docs/                  the manual: begin with docs/exporting.md
  samples/               scenes to try, with their licences in samples/README.md
  motionbuilder/         the sources of MotionBuilder's plug-in, with a CMake preset
  licences/              tv2.txt: of this archive; the others: of what is compiled into the programs

Try it:

  bin\\tv2.exe export samples\\robot_14_takes.glb dance.tv2
  bin\\tv2.exe check dance.tv2

FBX, BVH and glTF scenes are read; Collada scenes are refused here. Nothing is installed and nothing else is needed:
to remove it, delete the folder.
"""

# What the plug-in for MotionBuilder is built from.
SOURCES = ["CMakeLists.txt", "CMakePresets.json", "cmake", "exporter", "numerics", "text", "tev2_loader",
           "tev2_playback"]

# Debian packages that parts of the programs come from: their notices go along.
PARTS = ["g++-mingw-w64-x86-64-posix", "libcli11-dev", "libjs-three", "libz-mingw-w64-dev", "mingw-w64-x86-64-dev",
         "nlohmann-json3-dev"]


def output_of(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, cwd=TREE).stdout


def install(build, component, prefix):
    # Stripping would write the present time.
    environment = {**os.environ, "SOURCE_DATE_EPOCH": changelog("Timestamp")}
    subprocess.run(["cmake", "--install", build, "--prefix", prefix, "--component", component, "--strip"], check=True,
                   stdout=subprocess.DEVNULL, env=environment)


def changelog(field):
    return output_of("dpkg-parsechangelog", "--show-field", field).strip()


def content(path):
    with open(path, "rb") as file:
        return file.read()


def files_below(folder):
    return sorted(os.path.relpath(os.path.join(place, name), folder)
                  for place, _, names in os.walk(folder) for name in names if not name.endswith(".pyc"))


def collect(build):
    """{name in the archive: bytes}."""
    files = {"README.txt": README.format(version=changelog("Version")).replace("\n", "\r\n").encode()}
    with tempfile.TemporaryDirectory() as prefix:
        for component in ("command", "exporter"):
            install(build, component, prefix)
        files.update((name, content(os.path.join(prefix, name))) for name in files_below(prefix))
    for source in SOURCES:
        path = os.path.join(TREE, source)
        for name in files_below(path) if os.path.isdir(path) else [""]:
            member = os.path.join(source, name).rstrip("/")
            files["motionbuilder/" + member] = content(os.path.join(TREE, member))
    files["motionbuilder/README.md"] = content(os.path.join(TREE, "docs/motionbuilder.md"))
    for name in content(os.path.join(TREE, "debian/tv2.docs")).decode().split():  # the same as for Debian
        files["docs/" + os.path.basename(name)] = content(os.path.join(TREE, name))
    samples = os.path.join(TREE, "samples")
    files.update(("samples/" + name, content(os.path.join(samples, name))) for name in files_below(samples))
    files["licences/tv2.txt"] = content(os.path.join(TREE, "debian/copyright"))
    for package in PARTS:
        files[f"licences/{package}.txt"] = content(f"/usr/share/doc/{package}/copyright")
    return files


def main():
    build, output = sys.argv[1:]
    name = f"tv2-{changelog('Version')}-windows"
    stamp = time.gmtime(int(changelog("Timestamp")))[:6]
    files = collect(build)
    os.makedirs(output, exist_ok=True)
    path = os.path.join(output, name + ".zip")
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as archive:
        # README.txt first, which says first what this is not.
        for member in sorted(files, key=lambda member: (member != "README.txt", member)):
            entry = zipfile.ZipInfo(f"{name}/{member}", stamp)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 0  # of Windows: no permissions
            archive.writestr(entry, files[member])
    print(path)


if __name__ == "__main__":
    main()
