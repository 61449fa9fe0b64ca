"""Arrays, tracks, nodes and cameras outlive everything that may happen to their scene."""

import copy
import functools
import gc
import os
import pickle
import random
import resource
import unittest

import numpy as np

import scene_files as files
import tev2


def keys(seed, count=50):
    """A translation whose numbers nobody else has."""
    return tev2.Track("vector3", np.arange(count), np.full((count, 3), seed, np.float32))


def scribble():
    """Uses memory that may have been freed."""
    gc.collect()
    return [np.full(600, np.nan, np.float32) for _ in range(200)]


class Objects(unittest.TestCase):
    def test_come_from_calls_alone(self):
        scene = tev2.Scene()
        node = scene.add_node("a", translation=keys(1))
        camera = scene.add_camera("c", node=node)
        for thing in (scene, node, camera, node.translation, node.properties, scene.nodes, tev2.Clip(scene)):
            kind = type(thing)
            with self.subTest(kind.__name__):
                self.assertRaisesRegex(TypeError, "call the class", kind.__new__, kind)
                for take in (copy.copy, copy.deepcopy, *(functools.partial(pickle.dumps, protocol=protocol)
                                                         for protocol in range(pickle.HIGHEST_PROTOCOL + 1))):
                    self.assertRaisesRegex(TypeError, "save the scene", take, thing)

    def test_may_be_of_classes_of_users(self):
        class Shot(tev2.Scene):
            def __new__(cls, name):
                tev2.Scene()  # another, before this one
                return super().__new__(cls)

            def __init__(self, name):
                super().__init__()
                self.name = name

        class Forgetful(tev2.Scene):
            def __init__(self):
                pass

        shot = Shot("walk")
        shot.add_node("a")
        self.assertEqual((shot.name, len(shot.nodes)), ("walk", 1))
        self.assertRaisesRegex(TypeError, "__init__", Forgetful)
        self.assertRaisesRegex(TypeError, "call the class", tev2.Scene.__new__, Shot)
        self.assertRaises(TypeError, tev2.Node)


class Views(unittest.TestCase):
    def test_are_no_copies_and_read_only(self):
        scene = tev2.Scene()
        node = scene.add_node("a", translation=keys(1))
        track, again = node.translation, node.translation
        for name in ("times", "values"):
            with self.subTest(name):
                array = getattr(track, name)
                self.assertEqual(array.__array_interface__["data"], getattr(again, name).__array_interface__["data"])
                self.assertTrue(np.shares_memory(array, getattr(scene.nodes["a"].translation, name)))
                with self.assertRaises(ValueError):
                    array[0] = 7
                with self.assertRaises(ValueError):
                    array.flags.writeable = True
        ranges = tev2.Track("range", [0, 1], [[1, 2], [3, 4]]).values  # their class has more than its numbers
        self.assertEqual(ranges.strides[1], 4)
        self.assertGreater(ranges.strides[0], 8)
        self.assertEqual(ranges.tolist(), [[1, 2], [3, 4]])

    def test_keep_their_scene(self):
        values = tev2.load(files.exported("robot_14_takes.glb")).nodes[3].rotation.values
        expected = np.array(files.answer("dump", files.exported("robot_14_takes.glb"))
                            ["matrixHierarchy"]["nodes"][3]["rotation"]["m_values"], np.float32)
        node = tev2.load(files.exported("robot_14_takes.glb")).nodes["Head"]
        camera = tev2.load(files.exported("mocap_walk_cameras.fbx")).cameras[0]
        scribble()
        np.testing.assert_array_equal(values, expected)
        self.assertEqual((node.name, node.scene.nodes[node.index], camera.scene.cameras[0]), ("Head", node, camera))

    # Each edit takes something out of the scene that views show.
    EDITS = (
        ("other keys", lambda scene, node, camera: setattr(node, "translation", keys(9))),
        ("no keys", lambda scene, node, camera: setattr(node, "translation", None)),
        ("the same keys", lambda scene, node, camera: setattr(node, "translation", node.translation)),
        ("the node", lambda scene, node, camera: scene.remove_node(node)),
        ("its parent", lambda scene, node, camera: scene.remove_node(node.parent)),
        ("other values", lambda scene, node, camera: node.properties.update(p=3.0)),
        ("the property", lambda scene, node, camera: node.properties.__delitem__("p")),
        ("a lens", lambda scene, node, camera: setattr(camera, "distance", 2)),
        ("the camera", lambda scene, node, camera: scene.remove_camera(camera)),
        ("more nodes", lambda scene, node, camera: [scene.add_node(str(number)) for number in range(100)]),
        ("the cuts", lambda scene, node, camera: setattr(scene, "cuts", [])),
    )

    def test_outlive_edits(self):
        for name, edit in self.EDITS:
            for in_scene in (True, False):
                with self.subTest(name, in_scene=in_scene):
                    scene = tev2.Scene()
                    node = scene.add_node("b", scene.add_node("a"), translation=keys(1))
                    node.properties["p"] = keys(2)
                    camera = scene.add_camera("c", distance=tev2.Track("float", np.arange(300), np.full(300, 3)))
                    scene.cuts = [(time, camera) for time in range(300)]
                    views = [node.translation.values, node.properties["p"].values, camera.distance.values,
                             scene.switcher.values, node.translation.times]
                    expected = [view.copy() for view in views]
                    edit(scene, node, camera)
                    if not in_scene:
                        del scene
                        del node, camera
                    used = scribble()
                    for view, values in zip(views, expected):
                        np.testing.assert_array_equal(view, values)
                    del used

    def test_outlive_thousands_of_edits(self):
        random.seed(14)
        scene, views, seed = tev2.Scene(), [], 0
        scene.add_node("root")
        for _ in range(3000):
            seed += 1
            nodes = scene.nodes
            node = nodes[random.randrange(len(nodes))]
            edit = random.randrange(8)
            if edit < 3:
                node = scene.add_node(str(seed), node, translation=keys(seed, 8))
                views.append((node.translation.values, seed, node))
            elif edit < 5:
                node.scale = keys(seed, 8)
                views.append((node.scale.values, seed, None))
            elif edit == 5:
                node.properties[f"p{seed % 3}"] = keys(seed, 8)
                views.append((node.properties[f"p{seed % 3}"].values, seed, node))
            elif edit == 6 and node.index > 0:
                scene.remove_node(node)
            else:
                scene.set_time(random.random())
            if len(views) > 200:
                del views[random.randrange(len(views))]
        scribble()
        for values, number, node in views:
            self.assertTrue((values == number).all())
            if node is not None and node in scene.nodes:
                self.assertEqual(scene.nodes[node.index], node)
        scene.save(files.FOLDER / "edited.tv2")
        self.assertEqual([node.name for node in tev2.load(files.FOLDER / "edited.tv2").nodes],
                         [node.name for node in scene.nodes])

    def test_do_not_keep_what_nobody_sees(self):
        scene = tev2.Scene()
        node = scene.add_node("a")
        long = keys(1, 100_000)  # 1.6 MB
        before = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
        for _ in range(400):
            node.translation = long
            self.assertEqual(node.translation.values[-1, 0], 1)
        grown = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss - before  # KB
        self.assertLess(grown, 450_000)  # the sanitizer keeps some of what was freed

    def test_outlive_edits_by_what_is_being_put_in(self):
        scene = tev2.Scene()
        node = scene.add_node("a")

        class Busy:
            def __array__(self, dtype=None):
                for number in range(100):
                    scene.add_node(str(number))
                node.properties["q"] = 1
                return np.array([1, 2, 3], np.float32)

            def __len__(self):
                return 3

            def __getitem__(self, index):
                return np.array([1, 2, 3])[index]

        node.translation = Busy()
        node.properties["p"] = Busy()
        added = scene.add_node("z", node, scale=Busy())
        self.assertEqual((node.translation.values.tolist(), node.properties["p"].values.tolist()), ([[1, 2, 3]],) * 2)
        self.assertEqual((added.parent, added.index), (node, len(scene.nodes) - 1))


if __name__ == "__main__":
    unittest.main()
