"""Typed records, checks and conversions, beside the glTF file that they come from and the command."""

import gc
import json
import os
import struct
import subprocess
import sys
import types
import unittest

import numpy as np

import tev2
from scene_files import FOLDER, SAMPLES, answer, exported, node, scene_file, track, written

ROBOT = SAMPLES / "robot_14_takes.glb"


class Glb:
    """The JSON and the arrays of a .glb file."""

    def __init__(self, path):
        data = path.read_bytes()
        size = struct.unpack_from("<I", data, 12)[0]
        self.json = json.loads(data[20:20 + size])
        self.binary = data[28 + size:]

    def array(self, index):
        accessor = self.json["accessors"][index]
        view = self.json["bufferViews"][accessor["bufferView"]]
        kind = {5126: np.float32, 5123: np.uint16, 5121: np.uint8, 5125: np.uint32}[accessor["componentType"]]
        width = {"SCALAR": 1, "VEC3": 3, "VEC4": 4}[accessor["type"]]
        start = view.get("byteOffset", 0) + accessor.get("byteOffset", 0)
        return np.frombuffer(self.binary, kind, accessor["count"] * width, start).reshape(-1, width)


def entries(report):
    return [(entry.code, entry.severity, entry.where, entry.message, entry.count) for entry in report]


def answered(report):
    return [(entry["code"], entry["severity"], entry["where"], entry["text"], entry["count"]) for entry in report]


class Records(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scene = next(iter(tev2.from_glb(ROBOT).values()))
        cls.glb = Glb(ROBOT)

    def test_meshes_have_the_arrays_of_their_source(self):
        primitives = [primitive for mesh in self.glb.json["meshes"] for primitive in mesh["primitives"]]
        sources = [self.glb.array(primitive["attributes"]["POSITION"]) for primitive in primitives]
        meshes = self.scene.meshes
        self.assertEqual(sum(len(mesh.vertices.positions) for mesh in meshes), sum(map(len, sources)))
        sums = lambda arrays: np.sort(np.concatenate([np.square(array, dtype=float).sum(1) for array in arrays]))
        np.testing.assert_allclose(sums([mesh.vertices.positions for mesh in meshes]), sums(sources), rtol=1e-5)
        triangles = [part.triangles for mesh in meshes for part in mesh.sub_objects]
        self.assertEqual(sum(map(len, triangles)),
                         sum(len(self.glb.array(primitive["indices"])) // 3 for primitive in primitives))
        for mesh in meshes:
            for part in mesh.sub_objects:
                self.assertEqual((part.triangles.dtype, part.triangles.shape[1]), (np.uint32, 3))
                self.assertLess(part.triangles.max(), len(mesh.vertices.positions))
                self.assertLess(part.material, len(self.scene.materials))

    def test_weights_are_rows_of_vertices(self):
        skinned = [mesh for mesh in self.scene.meshes if hasattr(mesh, "skin")]
        self.assertTrue(skinned)
        for mesh in skinned:
            shape = (len(mesh.vertices.positions), mesh.skin.influences)
            self.assertEqual((mesh.skin.weights.shape, mesh.skin.bone_indices.shape), (shape, shape))
            np.testing.assert_allclose(mesh.skin.weights.sum(1), 1, atol=1e-5)
            self.assertLess(mesh.skin.bone_indices.max(), len(mesh.skin.bones))
            self.assertEqual(mesh.skin.bind_matrices.shape, (len(mesh.skin.bones), 3, 4))

    def test_materials_have_their_names(self):
        self.assertEqual([material.name for material in self.scene.materials],
                         [material["name"] for material in self.glb.json["materials"]])

    def test_arrays_are_views_that_keep_the_scene(self):
        scene = next(iter(tev2.from_glb(ROBOT).values()))
        positions = scene.meshes[0].vertices.positions
        self.assertEqual(positions.ctypes.data, scene.meshes[0].vertices.positions.ctypes.data)
        self.assertFalse(positions.flags.writeable)
        expected = positions.tobytes()
        del scene
        gc.collect()
        tev2.from_glb(ROBOT)
        self.assertEqual(positions.tobytes(), expected)

    def test_every_list_has_its_records(self):
        for name in tev2.Scene.record_names():
            self.assertIsInstance(self.scene.records(name), (list, tev2.Record, type(None)))
        self.assertEqual(self.scene.records("environment").time_range, self.scene.time_range)
        self.assertEqual(self.scene.records("lights"), [])
        self.assertRaises(KeyError, self.scene.records, "none")
        self.assertRaises(AttributeError, lambda: self.scene.meshes[0].none)


class Checks(unittest.TestCase):
    def test_finds_what_the_command_finds(self):
        keys = track(3, [0, 2, 1], [(0, 0, 0), (1, 0, 0), (2, 0, float("nan"))])
        spoiled = written("spoiled.tv2", scene_file(node("Hip", -1, keys), node("Hip", 0, keys)))
        rig = written("rig.tv2", scene_file(node("Hips")))
        for path, like in ((spoiled, None), (spoiled, rig), (written("no.tv2", b"no scene"), None)):
            findings = tev2.check(path, like)
            expected = answer("check", path, *(["--like", like] if like else []))["files"][0]["findings"]
            self.assertEqual([(f.code, f.severity, f.offset, f.chunk, f.path, f.name, f.message) for f in findings],
                             [(f["code"], f["severity"], f["offset"], f["chunkId"], f["path"], f["name"],
                               f["message"]) for f in expected])
            self.assertTrue(findings)
            self.assertLessEqual({finding.code for finding in findings}, tev2.check_codes().keys())

    def test_checks_scenes_as_they_would_be_saved(self):
        scene = tev2.load(exported("robot_14_takes.glb"))
        self.assertEqual([str(finding) for finding in tev2.check(scene)], [])
        scene.nodes["Head"].translation = tev2.Track("vector3", [0, 500], [[0, 0, 0], [0, 0, 1]])
        codes = {finding.code for finding in tev2.check(scene)}
        path = FOLDER / "changed.tv2"
        scene.save(path)
        self.assertTrue(codes)
        self.assertEqual(codes, {finding.code for finding in tev2.check(path)})
        self.assertRaises(ValueError, tev2.check, scene, files=True)
        self.assertRaises(tev2.LoadError, tev2.check, FOLDER / "missing.tv2")


class Conversions(unittest.TestCase):
    def test_there_and_back(self):
        path = exported("robot_14_takes.glb")
        scene = tev2.load(path)
        out = FOLDER / "robot.glb"
        by_command = answer("convert", path, FOLDER / "c.glb")
        self.assertEqual(entries(tev2.to_glb(scene, out)), answered(by_command["report"]))
        self.assertEqual(Glb(out).json["animations"][0]["name"], "robot")
        report = []
        [(name, back)] = tev2.from_glb(out, report=report).items()
        self.assertEqual(name, "robot")
        self.assertEqual([node.name for node in back.nodes][:len(scene.nodes)], [node.name for node in scene.nodes])
        self.assertEqual(entries(report), answered(answer("convert", out, FOLDER / "c.tv2")["report"]))

    def test_several_scenes_are_animations(self):
        scene = tev2.load(exported("robot_14_takes.glb"))
        out = FOLDER / "both.glb"
        tev2.to_glb(types.MappingProxyType({"walk": scene, "run": scene}), out)
        self.assertEqual([animation["name"] for animation in Glb(out).json["animations"]], ["walk", "run"])
        self.assertEqual(list(tev2.from_glb(ROBOT)), [animation["name"] for animation in Glb(ROBOT).json["animations"]])

    def test_names_are_those_of_the_file_in_any_locale(self):
        out = FOLDER / "names.glb"
        tev2.to_glb({"Gang \u00e9\u4e00": tev2.load(exported("robot_14_takes.glb"))}, out)
        done = subprocess.run([sys.executable, "-c", f"import tev2; print(ascii(list(tev2.from_glb({str(out)!r}))))"],
                              env={**os.environ, "LC_ALL": "C", "PYTHONCOERCECLOCALE": "0", "PYTHONUTF8": "0"},
                              capture_output=True, text=True, check=False)
        self.assertEqual((done.stdout, done.stderr), ("['Gang \\xe9\\u4e00']\n", ""))

    def test_strict_refuses_losses_with_the_words_of_the_command(self):
        scene = tev2.Scene()
        scene.add_node("Hips", translation=tev2.Track("vector3", [0, 0, 1], [[0, 0, 0], [0, 1, 0], [1, 0, 0]]))
        source, out = FOLDER / "lossy.tv2", FOLDER / "lossy.glb"
        scene.save(source)
        refused = answer("convert", source, out, "--strict")
        with self.assertRaises(tev2.ConversionError) as caught:
            tev2.to_glb(scene, out, strict=True)
        self.assertEqual(str(caught.exception), refused["error"])
        self.assertEqual(entries(caught.exception.report), answered(refused["report"]))
        self.assertFalse(out.exists())

    def test_says_what_is_wrong(self):
        bad = written("bad.glb", b"glTF")
        with self.assertRaises(tev2.ConversionError) as caught:
            tev2.from_glb(bad)
        self.assertEqual(str(caught.exception), answer("convert", bad, FOLDER / "bad.tv2")["error"])
        self.assertRaises(ValueError, tev2.to_glb, tev2.Scene(), FOLDER / "scene.tv2")
        self.assertRaises(ValueError, tev2.to_glb, [], FOLDER / "scene.glb")
        for scenes in (None, [None], {"walk": None}, [7], {7: tev2.Scene()}, "walk"):
            with self.subTest(scenes), self.assertRaises(TypeError):
                tev2.to_glb(scenes, FOLDER / "scene.glb")
        self.assertRaises(tev2.LoadError, tev2.from_glb, FOLDER / "missing.glb")


if __name__ == "__main__":
    unittest.main()
