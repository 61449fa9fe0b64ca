"""What a loaded scene holds: the numbers of tv2 dump and tv2 tree, and of bytes made by hand."""

import collections.abc
import pathlib
import unittest

import numpy as np

import scene_files as files
import tev2

PROPERTY_LISTS = ("stringArrays", "intValues", "floatValues", "vector3Values", "vector4Values")
EXPORTS = ("mocap_walk_cameras.fbx", "user_property_kinds.fbx", "robot_14_takes.glb")


class Exports(unittest.TestCase):
    def check_track(self, track, dumped):
        if dumped is None:
            return self.assertIsNone(track)
        dtype = np.int32 if dumped["class"].endswith("INT32_RLE") else np.float32
        self.assertEqual((track.times.dtype, track.values.dtype), (np.float32, dtype))
        np.testing.assert_array_equal(track.times, np.array(dumped["m_times"], np.float32))
        np.testing.assert_array_equal(track.values, np.array(dumped["m_values"], dtype))
        self.assertEqual(len(track), len(dumped["m_times"]))

    def check_properties(self, properties, dumped):
        entries = [entry for name in PROPERTY_LISTS for entry in dumped[name]]
        self.assertEqual(properties.keys(), [entry["name"] for entry in entries])
        self.assertEqual(len(properties), len(entries))
        for value, entry in zip(properties.values(), entries):
            if "strings" in entry:
                self.assertEqual(value, entry["strings"])
            else:
                self.check_track(value, entry["track"])

    def check_nodes(self, scene, dumped):
        self.assertEqual([node.name for node in scene.nodes], [node["name"] for node in dumped])
        for index, (node, entry) in enumerate(zip(scene.nodes, dumped)):
            self.assertEqual((node.index, node.user_text), (index, entry["userText"]))
            self.assertEqual(node.parent.index if node.parent else -1, entry["parentIndex"])
            self.assertEqual([child.index for child in node.children],
                             [child for child, other in enumerate(dumped) if other["parentIndex"] == index])
            for name in ("translation", "rotation", "scale"):
                self.check_track(getattr(node, name), entry[name])
            self.check_properties(node.properties, entry["properties"])

    def check_cameras(self, scene, dumped):
        self.assertEqual([camera.name for camera in scene.cameras], [camera["name"] for camera in dumped])
        for camera, entry in zip(scene.cameras, dumped):
            self.assertEqual(camera.node.index, entry["value"])
            self.assertEqual(np.float32(camera.inverse_aspect), np.float32(entry["inverseAspect"]))
            for name, field in (("field_of_view", "fieldOfView"), ("distance", "distance"), ("bounds", "bounds"),
                                ("clip_range", "clipRange"), ("secondary_range", "secondaryRange")):
                self.check_track(getattr(camera, name), entry[field])
            self.check_properties(camera.properties, entry["properties"])

    def test_hold_what_the_command_dumps(self):
        for sample in EXPORTS:
            with self.subTest(sample):
                path = files.exported(sample)
                scene, dumped = tev2.load(path), files.answer("dump", path)
                self.check_nodes(scene, dumped["matrixHierarchy"]["nodes"])
                self.check_cameras(scene, dumped["cameras"])
                self.check_track(scene.switcher, dumped["cameraMan"]["cameraIndex"])
                information, time_range = dumped["information"], dumped["environment"]["timeRange"]
                self.assertEqual((scene.creator, scene.information_text),
                                 (information["creatorText"], information["infoText"]))
                np.testing.assert_array_equal(np.float32([scene.version, *scene.time_range]),
                                              np.float32([information["version"], *time_range.values()]))
                self.assertEqual(scene.up_axis, files.answer("info", path)["files"][0]["upAxis"])
                self.assertEqual(scene.information["FBX_FILE"], str(files.SAMPLES / sample))
                self.assertEqual(scene.information["TEV_NAME"], path)

    def test_move_as_the_command_evaluates_them(self):
        for sample in EXPORTS:
            scene = tev2.load(files.exported(sample))
            start = scene.time_range[0]
            self.assertEqual(scene.time, start)
            for time in (start, 0.73, 99.0):
                with self.subTest(sample, time=time):
                    if time != start:  # where a loaded scene is
                        scene.set_time(time)
                    tree = files.answer("tree", "--at", time, files.exported(sample))["nodes"]
                    expected = np.tile(np.eye(4, dtype=np.float32), (len(tree), 1, 1))
                    expected[:, :3] = np.array([node["world"] for node in tree], np.float32).reshape(-1, 3, 4)
                    np.testing.assert_array_equal(scene.world_matrices, expected)
                    np.testing.assert_array_equal(scene.nodes[-1].world_matrix, expected[-1])

    def test_have_the_cuts_of_the_switcher(self):
        scene = tev2.load(files.exported("mocap_walk_cameras.fbx"))
        dumped = files.answer("dump", files.exported("mocap_walk_cameras.fbx"))["cameraMan"]["cameraIndex"]
        expected = [(np.float32(time), scene.cameras[camera] if camera >= 0 else None)
                    for time, camera in zip(dumped["m_times"], dumped["m_values"])]
        self.assertEqual(scene.cuts, expected)

    def test_are_saved_as_they_were_loaded(self):
        copy = files.FOLDER / "copy.tv2"
        for path in map(files.exported, EXPORTS):
            with self.subTest(path):
                scene = tev2.load(path)
                self.assertEqual(scene.save(copy), [])
                self.assertEqual(copy.read_bytes(), pathlib.Path(path).read_bytes())
                # Put every part into its place again, and have it evaluated.
                for part in (*scene.nodes, *scene.cameras):
                    part.name = part.name
                    for name, value in part.properties.items():
                        part.properties[name] = value
                for node in scene.nodes:
                    node.translation, node.rotation, node.scale = node.translation, node.rotation, node.scale
                    node.parent = node.parent
                scene.switcher, scene.time_range = scene.switcher, scene.time_range
                self.assertEqual(len(scene.world_matrices), len(scene.nodes))
                scene.save(copy)
                self.assertEqual(copy.read_bytes(), pathlib.Path(path).read_bytes())


class Names(unittest.TestCase):
    # UTF-16 units of the file, and the str. Eight-bit exporters store a unit for each byte of UTF-8.
    TEXTS = (
        ([], ""),
        (list(b"Hips"), "Hips"),
        (list("Fuß".encode()), "Fuß"),
        ([0xE9], "é"),  # no UTF-8
        (list("骨😀".encode()), "骨😀"),
        ([0x9AA8, 0xD83D, 0xDE00], "骨😀"),
        ([0x41, 0xD800, 0x42], "A\ud800B"),  # an unpaired surrogate
        ([0xDC00, 0xD83D, 0xDE00, 0xD800], "\udc00😀\ud800"),
        ([0x41, 0, 0x42], "A\0B"),
    )

    def test_are_str_and_come_back_as_they_were(self):
        data = files.scene_file(*(files.node(units) for units, _ in self.TEXTS))
        scene = tev2.loads(data)
        self.assertEqual([node.name for node in scene.nodes], [text for _, text in self.TEXTS])
        path = files.FOLDER / "names.tv2"
        for node in scene.nodes:
            node.name = node.name
        scene.save(path)
        hierarchy = data[len(files.scene_file()) - 12:]
        self.assertTrue(path.read_bytes().endswith(hierarchy))
        self.assertEqual([repr(node) for node in scene.nodes], [f"<tev2.Node {text!r}>" for _, text in self.TEXTS])

    def test_that_are_set_read_back(self):
        scene = tev2.Scene()
        path = files.FOLDER / "set_names.tv2"
        for _, text in self.TEXTS:
            scene.add_node(text).properties[text] = text
        scene.save(path)
        loaded = tev2.load(path)
        self.assertEqual([(node.name, node.properties.items()) for node in loaded.nodes],
                         [(text, [(text, [text])]) for _, text in self.TEXTS])
        for name, node in zip((text for _, text in self.TEXTS), loaded.nodes):
            self.assertEqual(loaded.find(name).name, name)
            self.assertEqual(loaded.nodes[name], loaded.find(name))

    def test_fit_a_file(self):
        node = tev2.Scene().add_node("ß" * 32767)
        with self.assertRaisesRegex(ValueError, "the name is longer than 65535 bytes"):
            node.name = "ß" * 32768
        for wrong in (b"Hips", 7, None):
            with self.subTest(wrong), self.assertRaises(TypeError):
                node.name = wrong
        self.assertEqual(node.name, "ß" * 32767)


class Sequences(unittest.TestCase):
    def test_of_nodes(self):
        scene = tev2.loads(files.scene_file(*(files.node(name) for name in ("a", "b", "a"))))
        nodes = scene.nodes
        self.assertEqual([node.index for node in nodes], [0, 1, 2])
        self.assertEqual((nodes[-1].index, nodes["a"].index, len(nodes[1:]), scene.find("x")), (2, 0, 2, None))
        self.assertEqual(("b" in nodes, "x" in nodes, nodes[1] in nodes, None in nodes), (True, False, True, False))
        self.assertEqual(len({nodes[0], scene.nodes[0], nodes["b"]}), 2)
        for key, error in ((3, IndexError), (-4, IndexError), ("x", KeyError), (1.5, TypeError), (None, TypeError)):
            with self.subTest(key), self.assertRaises(error):
                nodes[key]

    def test_of_properties_with_a_name_twice(self):
        keys = files.track(files.INTEGER, [0], [4])
        own = files.properties([("A", ["x"]), ("B", []), ("A", ["y"])], [("A", keys), ("C", files.NO_TRACK)])
        properties = tev2.loads(files.scene_file(files.node("Hips", own=own))).nodes[0].properties
        self.assertEqual(properties.keys(), ["A", "B", "A", "A", "C"])
        self.assertEqual((properties["A"], properties["C"], properties.get("D", 7)), (["x"], None, 7))
        properties["A"] = ["z"]
        self.assertEqual(properties.items(), [("A", ["z"]), ("B", []), ("C", None)])
        del properties["A"]
        self.assertNotIn("A", properties)
        self.assertNotIn(7, properties)
        self.assertEqual(properties, {"B": [], "C": None})
        for name in ("A", "D"):
            with self.assertRaises(KeyError):
                del properties[name]
            with self.assertRaises(KeyError):
                properties[name]
        self.assertIsInstance(properties, collections.abc.MutableMapping)


if __name__ == "__main__":
    unittest.main()
