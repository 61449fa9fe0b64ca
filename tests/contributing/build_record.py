"""Follows CONTRIBUTING.md with its example record: copies the format library, makes every change that the text asks
for, builds the result and runs marker_test.cpp against it.

    build_record.py SOURCE CXX
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile

STEP = re.compile(r"^(?:New file `(?P<new>[^`]+)`|"
                  r"In `(?P<file>[^`]+)`, (?P<where>before|after) `(?P<anchor>[^`]+)`):\n\n"
                  r"```cpp\n(?P<code>.*?)```$", re.MULTILINE | re.DOTALL)


def edit(path, where, anchor, code):
    with open(path, encoding="utf-8") as file:
        lines = file.read().splitlines(keepends=True)
    found = [number for number, line in enumerate(lines) if line.startswith(anchor)]
    if len(found) != 1:
        sys.exit(f"{path}: {len(found)} lines begin with {anchor!r}")
    lines.insert(found[0] + (where == "after"), code)
    with open(path, "w", encoding="utf-8") as file:
        file.writelines(lines)


def main(source, compiler):
    with open(os.path.join(source, "CONTRIBUTING.md"), encoding="utf-8") as file:
        steps = list(STEP.finditer(file.read()))
    if len(steps) != 5:
        sys.exit(f"CONTRIBUTING.md has {len(steps)} steps instead of 5")
    with tempfile.TemporaryDirectory() as folder:
        shutil.copy(os.path.join(source, "CMakeLists.txt"), folder)
        for name in ("cmake", "tev2_loader", "tev2_playback"):
            shutil.copytree(os.path.join(source, name), os.path.join(folder, name))
        for step in steps:
            if step["new"]:
                with open(os.path.join(folder, step["new"]), "x", encoding="utf-8") as file:
                    file.write(step["code"])
            else:
                edit(os.path.join(folder, step["file"]), step["where"], step["anchor"], step["code"])
        build = os.path.join(folder, "build")
        test = os.path.join(source, "tests", "contributing", "marker_test.cpp")
        for command in (["cmake", "-S", folder, "-B", build, "-DTV2_LIBRARY_ONLY=ON", "-DCMAKE_BUILD_TYPE=None",
                         "-DCMAKE_UNITY_BUILD=ON", "-DCMAKE_UNITY_BUILD_BATCH_SIZE=0",
                         f"-DCMAKE_CXX_COMPILER={compiler}"],
                        ["cmake", "--build", build, "--parallel", "2", "--target", "tev2"],
                        [compiler, "-std=c++20", "-I", folder, test, os.path.join(build, "lib", "libtev2.a"),
                         "-o", os.path.join(build, "marker_test")],
                        [os.path.join(build, "marker_test"), os.path.join(build, "markers.tv2")]):
            done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
            if done.returncode != 0:
                sys.exit(f"{' '.join(command)}\n{done.stdout}")


if __name__ == "__main__":
    main(*sys.argv[1:])
