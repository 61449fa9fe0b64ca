"""Scenes made in Python: what their files hold, and what is refused."""

import os
import stat
import struct
import unittest

import numpy as np

import scene_files as files
import tev2

TIMES = [0, 0.5, 1]
PLACES = [[0, 1, 0], [0.25, 1, 2], [0, 1, 4]]
QUARTER = [0, 0, 2 ** -0.5, 2 ** -0.5]  # a quarter turn about Z
KINDS = {"float": (), "integer": (), "range": (2,), "vector2": (2,), "vector3": (3,), "vector4": (4,), "colour": (4,),
         "rectangle": (4,), "slerp": (4,), "lerp": (4,), "box": (6,), "binormal_tangent": (6,)}


def saved(scene, name="made.tv2"):
    path = files.FOLDER / name
    scene.save(path)
    return path


class Fickle(list):
    """Numbers that are text when they are looked at one by one."""

    def __iter__(self):
        return iter("ab")


class Tracks(unittest.TestCase):
    def test_hold_what_they_are_made_of(self):
        for kind, width in KINDS.items():
            for dtype in (np.float32, np.float64, np.int16, np.uint8, ">f4", "O"):
                if dtype == "O" or (kind == "integer" and np.dtype(dtype).kind == "f"):
                    continue
                with self.subTest(kind, dtype=dtype):
                    values = np.arange(2 * int(np.prod(width))).reshape(2, *width).astype(dtype)
                    track = tev2.Track(kind, times=np.array([0, 3], dtype if kind != "integer" else float),
                                       values=values)
                    self.assertEqual((track.kind, len(track), track.values.shape), (kind, 2, (2, *width)))
                    np.testing.assert_array_equal(track.values, values)
                    np.testing.assert_array_equal(track.times, np.float32([0, 3]))
        strided = np.arange(24, dtype=np.float32).reshape(4, 6)[::2, 1::2]
        np.testing.assert_array_equal(tev2.Track("vector3", [0, 1], strided).values, strided)

    def test_are_sampled_between_their_keys(self):
        walk = tev2.Track("vector3", TIMES, PLACES)
        times = np.array([-1, 0, 0.1, 0.5, 0.8, 1, 7])
        expected = np.stack([np.interp(times, TIMES, np.array(PLACES)[:, axis]) for axis in range(3)], axis=1)
        np.testing.assert_allclose(walk.sample(times), expected, rtol=0, atol=1e-6)
        np.testing.assert_allclose(walk.sample(0.8), expected[4], rtol=0, atol=1e-6)
        self.assertEqual(walk.sample([]).shape, (0, 3))
        cuts = tev2.Track("integer", [0, 1, 2], [5, -1, 2 ** 31 - 1])
        self.assertEqual(cuts.sample([0, 0.99, 1, 1.5, 2, 3]).tolist(), [5, 5, -1, -1, 2 ** 31 - 1, 2 ** 31 - 1])
        turn = tev2.Track("slerp", [0, 1], [[0, 0, 0, 1], [0, 0, 1, 0]])  # half a turn about Z
        np.testing.assert_allclose(turn.sample(0.25), [0, 0, np.sin(np.pi / 8), np.cos(np.pi / 8)], atol=1e-6)
        self.assertEqual(tev2.Track("float", [4], [2.5]).sample([0, 4, 9]).tolist(), [2.5, 2.5, 2.5])

    def test_refuse_what_is_no_track(self):
        for kind, times, values, error, text in (
                ("vector5", [0], [[1]], ValueError, "no kind of tracks is called 'vector5'; there are float, range,"),
                ("float", [0, 1], [1], ValueError, r"values: expected the shape \(2,\), got \(1,\)"),
                ("vector3", [0], [1, 2, 3], ValueError, r"values: expected the shape \(1, 3\), got \(3,\)"),
                ("float", [[0]], [1], ValueError, r"times: expected the shape \(n,\)"),
                ("float", [], [], ValueError, "at least one key"),
                ("float", [1, 0], [1, 1], ValueError, "times: key 1 is before the one before it"),
                ("float", [0, np.nan], [1, 1], ValueError, r"times\[1\]: nan is not a finite 32-bit number"),
                ("float", [0], [1e39], ValueError, r"values\[0\]: 1e\+39 is not a finite 32-bit number"),
                ("integer", [0], [2 ** 31], ValueError, "is not a 32-bit integer"),
                ("integer", [0], [2 ** 64 - 1], ValueError, "is not a 32-bit integer"),
                ("integer", [0], [1.5], TypeError, "values: expected whole numbers, got float64"),
                ("float", ["a"], [1], TypeError, "times: expected numbers"),
                ("float", [0], [1j], TypeError, "values: expected numbers, got complex128"),
                ("float", [0], [None], TypeError, "values: expected numbers"),
                ("float", [0], [[1], [1, 2]], TypeError, "values: expected numbers"),
                (3, [0], [1], TypeError, "incompatible")):
            with self.subTest(kind, times=times, values=values), self.assertRaisesRegex(error, text):
                tev2.Track(kind, times, values)
        for times in (np.nan, [[0]], "a"):
            with self.subTest(times), self.assertRaises((TypeError, ValueError)):
                tev2.Track("float", [0], [1]).sample(times)

        ends = tev2.Track("float", [0, 4], [1, 3]).sample([-np.inf, 1e300, np.inf])
        self.assertEqual(ends.tolist(), [1, 3, 3])

    def test_are_equal_by_their_keys(self):
        track = tev2.Track("float", [0, 1], [1, 2])
        self.assertEqual(track, tev2.Track("float", [0, 1], [1, 2]))
        for other in (tev2.Track("float", [0, 2], [1, 2]), tev2.Track("integer", [0, 1], [1, 2]), 7):
            self.assertNotEqual(track, other)
        with self.assertRaises(TypeError):
            hash(track)


class Scenes(unittest.TestCase):
    def test_are_saved_byte_for_byte_as_made(self):
        scene = tev2.Scene()
        scene.creator, scene.information_text, scene.time_range = "Hand", "BY:\tme\r\n", (0, 1)
        hips = scene.add_node("Hips", translation=tev2.Track("vector3", TIMES, PLACES), rotation=QUARTER)
        foot = scene.add_node("Fuß", hips, scale=(1, 2, 3))
        foot.properties["Tags"] = ["a", "ß"]
        foot.properties["Mass"] = 4
        scene.cuts = [(0, None)]
        expected = files.scene_file(
            files.node("Hips", translation=files.track(files.VECTOR_3, TIMES, PLACES),
                       rotation=files.track(files.SLERP, [0], [QUARTER])),
            files.node("Fuß", 0, scale=files.track(files.VECTOR_3, [0], [(1, 2, 3)]),
                       own=files.properties([("Tags", ["a", "ß"])], [("Mass", files.track(files.INTEGER, [0], [4]))])),
            switcher=files.track(files.INTEGER, [0], [-1]))
        data = saved(scene).read_bytes()
        lengths = data.index(struct.pack("<II", 104, 1))  # array lengths, which the hand-made file leaves out
        self.assertEqual(data[:lengths] + data[lengths + 104:], expected)

    def test_are_placed_as_the_matrices_say(self):
        scene = tev2.Scene()
        hips = scene.add_node("Hips", translation=tev2.Track("vector3", TIMES, PLACES), rotation=QUARTER)
        scene.add_node("Foot", hips, translation=(1, 0, 0), scale=(2, 2, 2))
        turn = np.array([[0, -1, 0, 0], [1, 0, 0, 0], [0, 0, 1, 0], [0, 0, 0, 1]], float)
        for time in (0, 0.25, 0.8):
            move, step = np.eye(4), np.diag([2.0, 2, 2, 1])
            move[:3, 3] = [np.interp(time, TIMES, np.array(PLACES)[:, axis]) for axis in range(3)]
            step[0, 3] = 1
            scene.set_time(time)
            expected = [move @ turn, move @ turn @ step]
            np.testing.assert_allclose(scene.world_matrices, expected, atol=1e-6)
        hips.rotation = None  # an edit shows at the time that the scene is at
        np.testing.assert_allclose(scene.world_matrices[1], move @ step, atol=1e-6)
        self.assertAlmostEqual(scene.time, 0.8, places=6)

    def test_have_cameras_and_cuts(self):
        scene = tev2.Scene()
        nodes = [scene.add_node(name) for name in "ab"]
        near = scene.add_camera("Near", nodes[1], field_of_view=0.8, clip_range=(0.1, 100), inverse_aspect=0.75)
        far = scene.add_camera("Far", field_of_view=tev2.Track("float", [0, 1], [0.5, 0.6]), distance=12)
        scene.cuts = [(0, near), (1, None), (2.5, far)]
        near.properties["Lens"] = 35.0
        near.bounds = [0, 0, 0, 1, 2, 3]
        path = saved(scene)
        dumped = files.answer("dump", path)
        self.assertEqual(dumped["cameraMan"]["cameraIndex"]["m_values"], [0, -1, 1])
        self.assertEqual([(camera["name"], camera["value"], camera["inverseAspect"]) for camera in dumped["cameras"]],
                         [("Near", 1, 0.75), ("Far", 2 ** 32 - 1, 0.5625)])
        self.assertEqual(dumped["cameras"][0]["bounds"]["m_values"], [[0, 0, 0, 1, 2, 3]])
        loaded = tev2.load(path)
        near, far = loaded.cameras
        self.assertEqual(loaded.cuts, [(0, near), (1, None), (2.5, far)])
        self.assertEqual((near.node, far.node, far.index), (loaded.nodes["b"], None, 1))
        np.testing.assert_array_equal(near.clip_range.values, np.float32([[0.1, 100]]))
        self.assertEqual(near.properties["Lens"].values.tolist(), [35])
        loaded.remove_camera(near)
        self.assertEqual((loaded.cameras, loaded.cuts), ([far], [(0, None), (1, None), (2.5, far)]))
        self.assertEqual((near.name, near.node, far.index), ("Near", None, 0))
        loaded.cuts = ((time, loaded.cameras[0]) for time in range(2))  # nobody else holds these Camera objects
        self.assertEqual(loaded.cuts, [(0, far), (1, far)])
        loaded.cuts = []
        self.assertIsNone(loaded.switcher)

    def test_take_nodes_out_with_what_is_below_them(self):
        scene = tev2.Scene()
        a = scene.add_node("a")
        b = scene.add_node("b", a)
        c, d = scene.add_node("c", b, translation=(1, 2, 3)), scene.add_node("d", a)
        e = scene.add_node("e", d)
        camera = scene.add_camera("Shot", e)
        scene.remove_node(b)
        self.assertEqual([(node.name, node.parent) for node in scene.nodes], [("a", None), ("d", a), ("e", d)])
        self.assertEqual((camera.node, e.index, [node in scene.nodes for node in (a, b, c)]),
                         (e, 2, [True, False, False]))
        self.assertEqual((c.name, c.parent, c.translation.values.tolist()), ("c", None, [[1, 2, 3]]))
        for use in (lambda: b.index, lambda: c.world_matrix, lambda: scene.remove_node(c),
                    lambda: setattr(e, "parent", b)):
            with self.assertRaisesRegex(ReferenceError, "node '[bc]' was removed from its scene"):
                use()
        with self.assertRaisesRegex(ValueError, r"node 'e' is needed by 'Shot' \(cameras\)"):
            scene.remove_node(a)
        self.assertEqual(files.run("check", saved(scene)).returncode, 1)  # warnings alone: nodes without tracks
        self.assertEqual([node["parent"] for node in files.answer("tree", saved(scene))["nodes"]], [-1, 0, 1])

    def test_keep_bones_and_objects_at_their_nodes(self):
        files.run("convert", files.SAMPLES / "robot_14_takes.glb", files.FOLDER / "robot.tv2")
        source, copy = files.FOLDER / "robot_Dance.tv2", files.FOLDER / "thinned.tv2"

        def tree(path):
            nodes = files.answer("tree", "--at", 0.5, path)["nodes"]
            return [(node["name"], nodes[node["parent"]]["name"] if node["parent"] >= 0 else None, node["kinds"],
                     [item["name"] for item in node["objects"]], node["world"])
                    for node in nodes if not node["name"].endswith("_end")]

        scene = tev2.load(source)
        with self.assertRaisesRegex(ValueError, r"node 'Thumb2.R' is needed by 'Hand.R' \(weighted meshes\)"):
            scene.remove_node(scene.nodes["Thumb2.R"])
        for node in scene.nodes:
            if node.name.endswith("_end"):
                scene.remove_node(node)
        scene.save(copy)
        self.assertEqual(len(tev2.load(copy).nodes), len(tree(source)))
        self.assertEqual(tree(copy), tree(source))

    def test_keep_what_they_cannot_read_in_place(self):
        # A helper of another layout may refer to nodes.
        kept = files.chunk(17, files.units("H") + files.units("") * 2 + struct.pack("<I", 0) + files.properties() +
                           files.NO_TRACK + b"other")
        scene = tev2.loads(files.scene_file(files.node("a"), more=kept))
        with self.assertRaisesRegex(ValueError, "objects of another layout"):
            scene.remove_node(scene.nodes[0])
        self.assertEqual(len(scene.nodes), 1)

    def test_take_properties_of_every_kind(self):
        keys = tev2.Track("vector4", TIMES, np.arange(12).reshape(3, 4))
        cases = (("texts", ["a", "b"], ["a", "b"]), ("text", "a", ["a"]), ("none", [], []), ("int", 7, [7]),
                 ("fickle", Fickle([1, 2]), ["a", "b"]),
                 ("bool", True, [1]), ("int32", np.int32(8), [8]), ("float", 0.5, [0.5]),
                 ("float32", np.float32(0.25), [0.25]), ("vector", (1, 2, 3), [[1, 2, 3]]),
                 ("colour", np.arange(4), [[0, 1, 2, 3]]), ("keys", keys, keys.values.tolist()))
        scene = tev2.Scene()
        owners = (scene.add_node("Hips"), scene.add_camera("Shot"))
        for owner in owners:
            for name, value, _ in cases:
                owner.properties[name] = 1.0  # of another kind
                owner.properties[name] = value
        loaded = tev2.load(saved(scene))
        for owner in (loaded.nodes[0], loaded.cameras[0]):
            values = dict(owner.properties.items())
            self.assertEqual(len(owner.properties), len(cases))
            for name, _, expected in cases:
                value = values[name]
                self.assertEqual(value if isinstance(value, list) else value.values.tolist(), expected)
        self.assertEqual(loaded.nodes[0].properties["keys"], keys)

    def test_refuse_what_does_not_belong_there(self):
        scene, other = tev2.Scene(), tev2.Scene()
        node, child = scene.add_node("a"), scene.add_node("b")
        foreign, camera = other.add_node("x"), scene.add_camera("Shot")
        turn = tev2.Track("slerp", [0], [QUARTER])

        def put(owner, name, value):
            return lambda: setattr(owner, name, value)

        for act, error, text in (
                (put(node, "translation", turn), TypeError, "expected a track of kind vector3, got slerp"),
                (put(node, "translation", (1, 2)), ValueError, r"expected the shape \(1, 3\), got \(1, 2\)"),
                (put(node, "rotation", "x"), TypeError, "expected numbers"),
                (put(node, "parent", child), ValueError, "node 'a' is not after its new parent 'b'"),
                (put(node, "parent", node), ValueError, "not after its new parent"),
                (put(child, "parent", foreign), ValueError, "node 'x' is of another scene"),
                (put(camera, "node", foreign), ValueError, "node 'x' is of another scene"),
                (put(camera, "node", camera), TypeError, ""),
                (put(scene, "cuts", [(0, other.add_camera("y"))]), ValueError, "another scene"),
                (put(scene, "cuts", [(1, None), (0, None)]), ValueError, "is before the one before it"),
                (put(scene, "cuts", [(0, node)]), TypeError, "expected a Camera or None, got <class"),
                (put(scene, "cuts", [(0, camera, 1)]), TypeError, "a cut is a time and a Camera or None"),
                (put(scene, "cuts", None), TypeError, ""),
                (put(scene, "switcher", turn), TypeError, "expected a track of kind integer, got slerp"),
                (put(scene, "time_range", (1, 0)), ValueError, "start not after the end"),
                (put(scene, "time_range", (0, np.inf)), ValueError, "finite"),
                (lambda: scene.set_time(np.nan), ValueError, "NaN"),
                (lambda: scene.remove_node(foreign), ValueError, "another scene"),
                (lambda: scene.add_node("c", foreign), ValueError, "node 'x' is of another scene"),
                (lambda: scene.add_node("c", translation=3), ValueError, "expected the shape"),
                (lambda: node.properties.__setitem__("p", None), TypeError, "not None"),
                (lambda: node.properties.__setitem__("p", turn), TypeError, "got slerp"),
                (lambda: node.properties.__setitem__("p", {}), TypeError, "expected numbers"),
                (lambda: node.properties.__setitem__(7, 7), TypeError, "")):
            with self.subTest(text), self.assertRaisesRegex(error, text):
                act()
        self.assertEqual(([node.name for node in scene.nodes], len(node.properties), node.translation, scene.cuts),
                         (["a", "b"], 0, None, []))


class Saving(unittest.TestCase):
    def test_is_whole_or_not_at_all(self):
        path = files.written("whole.tv2", b"old")
        scene = tev2.Scene()
        scene.add_node("a")
        scene.save(path)
        self.assertEqual(tev2.load(path).nodes[0].name, "a")
        for place, reason in ((files.FOLDER / "none" / "a.tv2", "No such file or directory"),
                              (files.FOLDER, "Is a directory")):
            with self.subTest(place), self.assertRaises(tev2.SaveError) as caught:
                scene.save(place)
            self.assertEqual((str(caught.exception), caught.exception.file, caught.exception.reason),
                             (f"{place}: {reason}", str(place), reason))
        if os.path.exists("/dev/full"):
            with self.assertRaisesRegex(tev2.SaveError, "/dev/full: "):
                scene.save("/dev/full")
        self.assertEqual([name for name in os.listdir(files.FOLDER) if name.endswith(".part")], [])
        os.chmod(path, stat.S_IRUSR | stat.S_IWUSR)

    def test_names_what_it_keeps_as_bytes(self):
        head = files.units("H") + files.units("") * 2 + struct.pack("<I", 0) + files.properties() + files.NO_TRACK
        data = files.scene_file(files.node("a"), more=files.chunk(17, head + b"other"))
        path = files.FOLDER / "kept.tv2"
        self.assertEqual(tev2.loads(data).save(path), [])
        self.assertIn(head + b"other", path.read_bytes())


if __name__ == "__main__":
    unittest.main()
