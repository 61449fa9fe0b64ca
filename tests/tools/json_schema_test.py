"""Holds real answers of tv2 --json against docs/json.schema.json.

Usage: json_schema_test.py COMMAND SCHEMA SAMPLES_FOLDER
"""

import glob
import json
import os
import struct
import subprocess
import sys
import tempfile
import unittest

import jsonschema

COMMAND, SCHEMA, SAMPLES = sys.argv[1:4]


def strict(schema):
    """The schema without members that it does not name; readers get a lenient one."""
    if isinstance(schema, list):
        return [strict(part) for part in schema]
    if not isinstance(schema, dict):
        return schema
    made = {key: strict(value) for key, value in schema.items()}
    if made.get("type") == "object" and "properties" in made:
        made.setdefault("additionalProperties", False)
        made["patternProperties"] = {"Bytes$": {"type": "string"}}
    return made


def u32(*numbers):
    return struct.pack("<%dI" % len(numbers), *numbers)


def text(string):
    return struct.pack("<H", len(string)) + string.encode("utf-16-le")


def chunk(kind, *parts):
    body = b"".join(parts)
    return u32(len(body) + 8, kind) + body


LAYOUT, NONE = u32(0x4C590001), 0xFFFFFFFF


def scene_of_objects():
    """A file with a light, a mesh, a material, references, and a helper of another layout."""

    def placed(name, node):
        return text(name) + text("") * 2 + u32(node) + u32(0) * 6  # no properties, no bounds

    triangle = struct.pack("<9f", 0, 0, 0, 1, 0, 0, 0, 1, 0)
    return b"".join([
        u32(0x54563201),
        chunk(0, struct.pack("<f", 1.16), text(""), text("")),
        chunk(5, u32(0), placed("Key", NONE), LAYOUT, u32(0) * 6),
        chunk(7, placed("Box", 3), u32(0), LAYOUT, u32(0, 1, 1), u32(1, 0, 1, 0, 1, 2), u32(3, 0, 0), triangle,
              u32(0, 0)),
        chunk(13, u32(1), text("Metal"), LAYOUT, u32(0), text("glow"), text(""), u32(0) * 7),
        chunk(15, LAYOUT, text("hall.tv2"), u32(NONE, 0)),
        chunk(20, LAYOUT, text("props.tv2"), u32(NONE, 0)),
        chunk(21, placed("Chair 1", 0), u32(0), LAYOUT, u32(0, 7), text("Chair")),
        chunk(17, placed("Old", 0), u32(7)),
        chunk(13, u32(9)),
    ])


class JsonSchemaTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        with open(SCHEMA, encoding="utf-8") as file:
            cls.schema = json.load(file)
        jsonschema.Draft202012Validator.check_schema(cls.schema)

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def path(self, name, content=None):
        path = os.path.join(self.folder, name)
        if content is not None:
            with open(path, "wb") as file:
                file.write(content)
        return path

    def answer(self, definition, exit_code, *arguments):
        """Runs the command; its answer must be as the definition says."""
        run = subprocess.run([COMMAND, *arguments, "--json"], capture_output=True, check=False)
        self.assertEqual(run.returncode, exit_code, run.stderr)
        return self.valid(definition, json.loads(run.stdout), arguments)

    def valid(self, definition, answer, arguments):
        rules = {"$ref": "#/$defs/" + definition, "$defs": strict(self.schema["$defs"])}
        error = jsonschema.exceptions.best_match(jsonschema.Draft202012Validator(rules).iter_errors(answer))
        self.assertIsNone(error, "%s: %s" % (arguments, error))
        jsonschema.validate(answer, self.schema)
        return answer

    def exported(self):
        scene = os.path.join(SAMPLES, "mocap_walk_cameras.fbx")
        return self.answer("export", 0, "export", scene, self.path("walk.tv2"))["files"][0]["output"]

    def test_export(self):
        walk = self.exported()
        robot = os.path.join(SAMPLES, "robot_14_takes.glb")
        self.answer("export", 0, "export", "--all-takes", robot, self.path(".tv2"))
        reported = self.answer("export", 0, "export", "--report", robot, self.path("a.tv2"))["files"][0]
        self.assertEqual(len(reported["keyReduction"]["nodes"]), 75)
        self.assertTrue(self.answer("export", 0, "export", "--no-clobber", robot, walk)["files"][0]["kept"])
        takeless = self.answer("export", 2, "export", "--take", "x*", robot, walk)
        self.assertEqual(takeless["code"], "no-such-take")
        os.chmod(walk, 0o444)
        missed = self.answer("export", 1, "export", robot, walk)
        self.assertTrue(missed["files"][0]["skipped"])
        self.assertIn("error", self.answer("export", 2, "export", self.path("gone.bvh"), self.path("a.tv2")))
        steps = self.path("steps.txt", b'click "CANCEL_BUTTON_REGION_NAME"\n')
        arguments = ["export", "--dialog-script", steps, robot, self.path("b.tv2")]
        self.assertTrue(self.answer("export", 1, *arguments)["cancelled"])

    def test_batch(self):
        scenes = [os.path.join(SAMPLES, "extras_property.glb"), self.path("gone.bvh")]
        arguments = ["export", "--json", *scenes, "-o", self.path("out")]
        for more in (["--dry-run"], [], ["--newer"]):
            run = subprocess.run([COMMAND, *arguments, *more], capture_output=True, check=False)
            self.assertEqual(run.returncode, 1, run.stderr)
            *lines, last = [json.loads(line) for line in run.stdout.splitlines()]
            states = {self.valid("batchScene", line, arguments)["file"]: line["state"] for line in lines}
            done = {"--dry-run": "wouldExport", "--newer": "upToDate"}.get("".join(more), "exported")
            self.assertEqual(states, dict(zip(scenes, (done, "failed"))))
            summary = self.valid("batchSummary", last, arguments)["summary"]
            self.assertEqual([summary[done], summary["failed"], summary["failures"][0]["file"]], [1, 1, scenes[1]])
        self.answer("failure", 2, "export", SAMPLES + "/none*", "-o", self.path("out"))

    def test_scene(self):
        kinds = set()
        for scene in glob.glob(os.path.join(SAMPLES, "*.[gdf][lab][bex]")):
            models = self.answer("scene", 0, "scene", scene)["models"]
            kinds.update(prop["kind"] for model in models for prop in model["properties"])
        self.assertLess(5, len(kinds), "the samples have properties of these kinds: %s" % kinds)
        self.answer("failure", 2, "scene", self.path("gone.bvh"))

    def test_menu(self):
        self.assertEqual(len(self.answer("menu", 0, "menu")["entries"]), 1)
        self.answer("menu", 2, "menu", "--plugin", self.path("gone.so"))

    def test_files(self):
        walk = self.exported()
        bare = self.path("bare.tv2", b"\x01\x32\x56\x54")
        damaged = self.path("damaged.tv2", b"damaged")
        gone = self.path("gone\udcff.tv2")
        for verb in ("info", "check"):
            self.assertEqual(len(self.answer(verb, 2, verb, walk, bare, damaged, gone)["files"]), 4)
        for arguments in ([], ["--at", "0.5"], ["--node", "Hips", "--depth", "1"]):
            self.answer("tree", 0, "tree", walk, *arguments)
        self.assertEqual(len(self.answer("hash", 2, "hash", walk, bare, damaged, gone)["files"]), 4)
        self.answer("checkCodes", 0, "check", "--codes")
        self.assertTrue(self.answer("diff", 0, "diff", walk, walk)["identical"])
        different = self.answer("diff", 1, "diff", walk, bare)
        self.assertFalse(different["equal"])
        span = next(one for one in different["differences"] if one["part"] == "time range")
        [info] = self.answer("info", 0, "info", walk)["files"]
        self.assertEqual(span["leftNumbers"], [info["timeRange"]["start"], info["timeRange"]["end"]])
        self.answer("diff", 1, "diff", "--structure", walk, bare)
        self.answer("failure", 2, "diff", walk, damaged)
        self.answer("check", 1, "check", "--like", bare, walk)
        for file in (walk, bare):
            self.answer("dump", 0, "dump", file)
        self.answer("picture", 0, "picture", walk, self.path("walk.svg"))
        converted = self.answer("convert", 0, "convert", walk, self.path("walk.glb"))
        self.assertEqual(converted["worlds"], ["z-up-turned"])
        nodes = self.answer("dump", 0, "dump", walk)["matrixHierarchy"]["nodes"]
        self.assertEqual(converted["files"][0]["nodes"], len(nodes))
        lossy = self.path("lossy.gltf", b'{"asset": {"version": "2.0"}, "extras": {}}')
        refused = self.answer("failure", 2, "convert", "--strict", lossy, self.path("lossy.tv2"))
        self.assertEqual([entry["code"] for entry in refused["report"]], ["extras-lost"])
        self.answer("convertCodes", 0, "convert", "--codes")
        self.answer("view", 0, "view", "--no-open", walk, walk, "-o", self.path("walk.html"))
        for verb in (["dump"], ["tree"], ["picture", self.path("a.svg")], ["view", "-o", self.path("a.html")]):
            self.answer("failure", 1, verb[0], damaged, *verb[1:])
            self.answer("failure", 2, verb[0], gone, *verb[1:])

    def test_objects(self):
        path = self.path("objects.tv2", scene_of_objects())
        info = self.answer("info", 0, "info", path)["files"][0]
        self.answer("tree", 0, "tree", path, "--at", "0")
        lists = ("lights", "meshes", "materials", "references", "kept")
        self.assertEqual([len(info[kind]) for kind in lists], [1, 1, 1, 3, 2])
        self.assertEqual(info["meshes"][0]["triangles"], 1)
        dump = self.answer("dump", 0, "dump", path)
        self.assertEqual(dump["rigids"][0]["vertices"]["positions"][1], [1, 0, 0])
        findings = self.answer("check", 1, "check", path)["files"][0]["findings"]
        self.assertLessEqual({"body-kept", "object-node-outside"}, {finding["code"] for finding in findings})

    def test_bad_usage(self):
        self.answer("failure", 2, "explode")
        self.answer("failure", 2, "info")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
