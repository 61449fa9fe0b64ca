"""Every GLB that we write passes the glTF validator without error and without warning: validator_test.py MADE, where
make_glbs.py has put them."""

import json
import pathlib
import subprocess
import sys

TESTS = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(TESTS / "support"))

import needed  # noqa: E402


def main(made):
    node = needed.program("node", "nodejs")
    if not (TESTS / "js/node_modules/gltf-validator").is_dir():
        needed.skip("tests/js/node_modules has no gltf-validator")
    # It finds what is wrong: the weights of this one do not sum to 1.
    faulty = TESTS.parent / "samples/robot_14_takes.glb"
    found = subprocess.run([node, TESTS / "js/validate.js", faulty], stdout=subprocess.PIPE, encoding="utf-8")
    if found.returncode != 1 or "error ACCESSOR_WEIGHTS_NON_NORMALIZED at /meshes/12" not in found.stdout:
        print(f"the validator finds no fault in {faulty}")
        return 1
    glbs = [entry["glb"] for entry in json.loads((pathlib.Path(made) / "manifest.json").read_text())]
    return subprocess.run([node, TESTS / "js/validate.js", *glbs]).returncode


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
