"""Runs the examples of docs/batch.md.

Usage: batch_document_test.py COMMAND DOCUMENT KIND

KIND is "console", "make" or "sh", the language of the examples; "sh" needs GNU parallel.
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile

COMMAND, DOCUMENT, KIND = sys.argv[1:]
SKIPPED = 77  # what CTest is told to count as skipped
SCENES = ("walk.bvh", "more/walk_2.bvh", "more/deep/run.bvh")
BVH = ("HIERARCHY ROOT a { OFFSET 0 0 0 CHANNELS 3 Xposition Yposition Zposition End Site { OFFSET 0 1 0 } }\n"
       "MOTION Frames: 2 Frame Time: 0.04\n0 0 0\n1 2 3\n")


def examples(language):
    """The blocks of a language; for "console" those without one, a line each."""
    with open(DOCUMENT, encoding="utf-8") as file:
        blocks = re.findall(r"^```(\w*)\n(.*?)^```$", file.read(), re.MULTILINE | re.DOTALL)
    if language != "console":
        return [text for found, text in blocks if found == language]
    return [line for found, text in blocks if not found for line in text.splitlines() if line.startswith("tv2 ")]


def run(example, folder):
    """Runs an example in a folder with scenes; the names of the files that it made."""
    for name in SCENES:
        path = os.path.join(folder, "scenes", name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(BVH)
    shutil.copy(os.path.join(folder, "scenes", "walk.bvh"), os.path.join(folder, "extra.bvh"))
    command = ["sh", "-ec", example]
    if KIND == "make":
        with open(os.path.join(folder, "Makefile"), "w", encoding="utf-8") as file:
            file.write(example)
        command = ["make", "-j", "2"]
    path = os.path.dirname(COMMAND) + os.pathsep + os.environ["PATH"]
    done = subprocess.run(command, cwd=folder, env={**os.environ, "PATH": path}, capture_output=True, text=True,
                          check=False)
    if done.returncode != 0:
        sys.exit("%s\nended with %d: %s%s" % (example, done.returncode, done.stdout, done.stderr))
    out = os.path.join(folder, "out")
    return {os.path.relpath(os.path.join(at, name), out)
            for at, _, names in os.walk(out) for name in names if name.endswith(".tv2")}


def main():
    if KIND == "sh" and shutil.which("parallel") is None:
        print("%s: GNU parallel is not installed" % ("failed" if os.environ.get("TV2_NO_SKIPS") else "skipped"))
        sys.exit(1 if os.environ.get("TV2_NO_SKIPS") else SKIPPED)
    everything = {name.replace(".bvh", ".tv2") for name in SCENES}
    expected = {"console": [{"walk.tv2"}, {name.replace(".tv2", "_Motion.tv2") for name in everything},
                            {"more/walk_2.tv2", "extra.tv2"}, everything, set()],
                "make": [everything], "sh": [everything, everything]}[KIND]
    found = examples(KIND)
    if len(found) != len(expected):
        sys.exit("%d examples instead of %d" % (len(found), len(expected)))
    for example, files in zip(found, expected):
        with tempfile.TemporaryDirectory() as folder:
            made = run(example, folder)
        if made != files:
            sys.exit("%s\nmade %s instead of %s" % (example, sorted(made), sorted(files)))


main()
