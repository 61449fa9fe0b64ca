"""Which scenes, takes and files of a batch are exported, from the command line.

Usage: batch_choice_test.py COMMAND
"""

import hashlib
import json
import os
import struct
import subprocess
import sys
import tempfile
import unittest

COMMAND = sys.argv[1]
os.environ["SOURCE_DATE_EPOCH"] = "1000000000"
BVH = ("HIERARCHY ROOT Hips { OFFSET 0 0 0 CHANNELS 3 Xposition Yposition Zposition End Site { OFFSET 0 1 0 } }\n"
       "MOTION Frames: 2 Frame Time: 0.04\n0 0 0\n1 2 3\n")


def gltf(*takes, keys=None):
    """A scene with a node and takes of no length; `keys` names a file with the keys of the first."""
    scene = {"asset": {"version": "2.0"}, "scenes": [{"nodes": [0]}], "nodes": [{"name": "Box"}],
             "animations": [{"name": take, "channels": [], "samplers": []} for take in takes]}
    if keys:
        scene["buffers"] = [{"uri": keys, "byteLength": 16}]
        scene["bufferViews"] = [{"buffer": 0, "byteLength": 4}, {"buffer": 0, "byteOffset": 4, "byteLength": 12}]
        scene["accessors"] = [
            {"bufferView": 0, "componentType": 5126, "count": 1, "type": "SCALAR", "min": [0], "max": [0]},
            {"bufferView": 1, "componentType": 5126, "count": 1, "type": "VEC3"}]
        scene["animations"][0]["samplers"] = [{"input": 0, "output": 1}]
        scene["animations"][0]["channels"] = [{"sampler": 0, "target": {"node": 0, "path": "translation"}}]
    return json.dumps(scene)


class BatchChoiceTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def write(self, name, content):
        path = os.path.join(self.folder, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(content if isinstance(content, bytes) else content.encode())

    def files(self, folder="out"):
        return sorted(os.path.relpath(os.path.join(path, name), os.path.join(self.folder, folder))
                      for path, _, names in os.walk(os.path.join(self.folder, folder)) for name in names
                      if name != ".tv2-stamps")

    def export(self, *arguments):
        """Exit code, state by scene, all answers, what was said."""
        run = subprocess.run([COMMAND, "export", "-o", "out", "--json", *arguments], cwd=self.folder,
                             capture_output=True, text=True, check=False)
        lines = [json.loads(line) for line in run.stdout.splitlines()]
        return run.returncode, {line["file"]: line["state"] for line in lines if "file" in line}, lines, run.stderr

    def test_a_scene_without_the_take_is_skipped(self):
        self.write("in/a.gltf", gltf("walk", "walk_fast", "run"))
        self.write("in/b.gltf", gltf("jump"))
        code, states, lines, _ = self.export("in", "--take", "walk*")
        self.assertEqual((code, states), (0, {"in/a.gltf": "exported", "in/b.gltf": "skipped"}))
        [skipped] = [line for line in lines if line.get("state") == "skipped"]
        self.assertIn('there is no take "walk*"', skipped["reason"])
        self.assertEqual(self.files(), ["a_walk.tv2", "a_walk_fast.tv2"])
        self.assertEqual(self.export("in", "--take", "run")[:2],
                         (0, {"in/a.gltf": "exported", "in/b.gltf": "skipped"}))
        self.assertIn("a.tv2", self.files())
        code, _, _, said = self.export("in", "--take", "swim")
        self.assertEqual((code, said), (1, "tv2 export: no scene has a take that --take asks for\n"))
        self.assertEqual(self.export("in", "--take", "swim", "--shard", "1/2")[0], 0)

    def test_takes_of_two_scenes_never_share_a_file(self):
        self.write("in/walk.gltf", gltf("a", "b"))
        self.write("in/walk_a.gltf", gltf("c"))
        self.write("in/walk_b.gltf", gltf("c_d"))
        self.write("in/walk_b_c.gltf", gltf("d"))
        for options in (["--dry-run"], [], ["--newer"]):
            code, states, _, said = self.export("in", "--all-takes", *options)
            done = {"--dry-run": "wouldExport", "--newer": "upToDate"}.get(" ".join(options), "exported")
            self.assertEqual((code, states), (1, {"in/walk.gltf": done, "in/walk_a.gltf": done,
                                                  "in/walk_b.gltf": done, "in/walk_b_c.gltf": "failed"}), said)
            self.assertIn('in/walk_b_c.gltf: "out/walk_b_c_d.tv2" would also be written by "in/walk_b.gltf"', said)
        self.assertEqual(self.files(), ["walk_a.tv2", "walk_a_c.tv2", "walk_b.tv2", "walk_b_c_d.tv2"])

    def test_what_is_up_to_date_is_skipped(self):
        keys = struct.pack("<4f", 0, 1, 2, 3)
        self.write("in/a.gltf", gltf("walk", keys="a.bin"))
        self.write("in/a.bin", keys + b"more")
        self.write("in/b.bvh", BVH)
        _, _, lines, _ = self.export("in", "--newer")
        sources = [line["sources"] for line in lines if line.get("file") == "in/a.gltf"][0]
        self.assertEqual([(one["file"], one["bytes"]) for one in sources],
                         [("in/a.gltf", len(gltf("walk", keys="a.bin"))), ("in/a.bin", 16)])
        self.assertEqual(sources[1]["sha256"], hashlib.sha256(keys).hexdigest())

        def exported(*options):
            return [name for name, state in self.export("in", "--newer", *options)[1].items() if state == "exported"]

        self.assertEqual(exported(), [])
        os.utime(os.path.join(self.folder, "in/a.gltf"))
        self.assertEqual(exported("-j", "1", "--report"), [])
        self.write("in/a.bin", struct.pack("<4f", 0, 1, 2, 4))
        self.assertEqual(exported(), ["in/a.gltf"])
        os.remove(os.path.join(self.folder, "out/b.tv2"))
        why = '"out/b.tv2" is not there'
        plan = subprocess.run([COMMAND, "export", "--dry-run", "--newer", "in", "-o", "out"], cwd=self.folder,
                              capture_output=True, text=True, check=False)
        self.assertIn("in/a.gltf: is up to date\nout/b.tv2: would be written, since %s\n" % why, plan.stdout)
        _, states, lines, _ = self.export("in", "--newer")
        self.assertEqual(states, {"in/a.gltf": "upToDate", "in/b.bvh": "exported"})
        self.assertEqual([line.get("reason") for line in lines if line.get("file") == "in/b.bvh"], [why])
        self.assertEqual(sorted(exported("--fps", "50")), ["in/a.gltf", "in/b.bvh"])
        self.assertEqual(exported("--fps", "50"), [])
        self.write("out/.tv2-stamps", "damaged")
        code, states, lines, _ = self.export("in", "--newer", "--fps", "50")
        self.assertEqual((code, set(states.values())), (0, {"exported"}))
        self.assertIn("cannot be used", lines[-1]["summary"]["notes"][0])

    def test_a_dry_run_makes_nothing(self):
        self.write("in/sub/a.bvh", BVH)
        self.write("in/b.bvh", BVH)
        self.write("in/bad.bvh", "HIERARCHY")
        code, states, _, _ = self.export("in", "--recursive", "--dry-run")
        self.assertEqual((code, states), (1, {"in/sub/a.bvh": "wouldExport", "in/b.bvh": "wouldExport",
                                              "in/bad.bvh": "failed"}))
        self.assertEqual(os.listdir(self.folder), ["in"])
        self.export("in", "--recursive")
        self.write("out/b.tv2", "old")
        plan = subprocess.run([COMMAND, "export", "--dry-run", "--newer", "--no-clobber", "--recursive", "in", "-o",
                               "out"], cwd=self.folder, capture_output=True, text=True, check=False)
        self.assertIn("in/sub/a.bvh: is up to date\n", plan.stdout)
        self.assertIn("out/b.tv2: would be kept, it exists (--no-clobber)\n", plan.stdout)
        self.assertEqual(self.export("in", "--no-clobber", "--recursive")[1]["in/b.bvh"], "skipped")
        os.chmod(os.path.join(self.folder, "out/b.tv2"), 0o444)
        plan = subprocess.run([COMMAND, "export", "--dry-run", "in", "-o", "out"], cwd=self.folder,
                              capture_output=True, text=True, check=False)
        self.assertIn("out/b.tv2: would be skipped: it is read-only", plan.stdout)
        with open(os.path.join(self.folder, "out/b.tv2"), encoding="utf-8") as file:
            self.assertEqual(file.read(), "old")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
