"""Holds real answers of tv2 --json against docs/json.schema.json.

Usage: json_schema_test.py COMMAND SCHEMA SAMPLES_FOLDER
"""

import glob
import json
import os
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
        answer = json.loads(run.stdout)
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
        os.chmod(walk, 0o444)
        missed = self.answer("export", 1, "export", robot, walk)
        self.assertTrue(missed["files"][0]["skipped"])
        self.assertIn("error", self.answer("export", 2, "export", self.path("gone.bvh"), self.path("a.tv2")))
        steps = self.path("steps.txt", b'click "CANCEL_BUTTON_REGION_NAME"\n')
        arguments = ["export", "--dialog-script", steps, robot, self.path("b.tv2")]
        self.assertTrue(self.answer("export", 1, *arguments)["cancelled"])

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
        self.answer("checkCodes", 0, "check", "--codes")
        for file in (walk, bare):
            self.answer("dump", 0, "dump", file)
        self.answer("picture", 0, "picture", walk, self.path("walk.svg"))
        for verb in (["dump"], ["picture", self.path("a.svg")]):
            self.answer("failure", 1, verb[0], damaged, *verb[1:])
            self.answer("failure", 2, verb[0], gone, *verb[1:])

    def test_bad_usage(self):
        self.answer("failure", 2, "explode")
        self.answer("failure", 2, "info")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
