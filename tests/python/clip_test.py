"""Clips: poses over time, and whose bits they are."""

import ctypes
import os
import subprocess
import sys
import textwrap
import threading
import time
import unittest

import numpy as np

import tev2
from scene_files import exported, written

TIMES = np.array([-1, 0, 0.01, 0.5, 1 / 3, 2.75, 9], np.float32)


def played(path, times):
    """World matrices of the library's own player, by its C functions: (times, nodes, 3, 4)."""
    library = ctypes.CDLL(os.environ["TV2_PLAYBACK_LIBRARY"])
    clip, player = ctypes.c_void_p(), ctypes.c_void_p()
    assert library.tev2_clip_load(os.fsencode(path), None, ctypes.byref(clip), None, ctypes.c_size_t(0)) == 0
    assert library.tev2_player_create(clip, ctypes.byref(player)) == 0
    nodes = library.tev2_clip_node_count(clip)
    library.tev2_player_world.restype = ctypes.POINTER(ctypes.c_float)
    library.tev2_player_set_time.argtypes = [ctypes.c_void_p, ctypes.c_float]
    poses = []
    for when in times:
        library.tev2_player_set_time(player, when)
        poses.append(np.ctypeslib.as_array(library.tev2_player_world(player), (nodes, 3, 4)).copy())
    library.tev2_player_destroy(player)
    library.tev2_clip_destroy(clip)
    return np.array(poses)


class Clips(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.path = exported("robot_14_takes.glb")
        cls.clip = tev2.load_clip(cls.path)

    def test_has_the_bits_of_the_player(self):
        poses = self.clip.sample(TIMES)
        expected = played(self.path, TIMES)
        self.assertEqual(poses[:, :, :3].tobytes(), expected.tobytes())
        self.assertTrue((poses[:, :, 3] == (0, 0, 0, 1)).all())
        self.assertEqual((poses.dtype, poses.flags.c_contiguous, poses.flags.writeable), (np.float32, True, True))
        of_scene = tev2.Clip(tev2.load(self.path)).sample(TIMES.tolist())
        self.assertEqual(poses.tobytes(), of_scene.tobytes())
        self.assertEqual(self.clip.sample(0.5).tobytes(), poses[3:4].tobytes())

    def test_local_poses_make_world_poses(self):
        world = self.clip.sample(TIMES).astype(float)
        local = self.clip.sample(TIMES, world=False).astype(float)
        for node, parent in enumerate(self.clip.parents):
            expected = local[:, node] if parent < 0 else world[:, parent] @ local[:, node]
            np.testing.assert_allclose(world[:, node], expected, atol=1e-5)

    def test_local_poses_are_translation_rotation_and_scale(self):
        scene = tev2.Scene()
        scene.time_range = (0, 1)
        half = np.sqrt(0.5)
        scene.add_node("turned", translation=(1, 2, 3), rotation=(0, 0, half, half), scale=(2, 3, 4))
        matrix = tev2.Clip(scene).sample(0.0, world=False)[0, 0]
        np.testing.assert_allclose(matrix @ (1, 0, 0, 1), (1, 4, 3, 1), atol=1e-6)  # a quarter turn about z
        np.testing.assert_allclose(matrix @ (0, 1, 1, 1), (-2, 2, 7, 1), atol=1e-6)

    def test_finds_nodes_and_cameras_by_the_names_of_the_scene(self):
        scene = tev2.Scene()
        names = ["a", "\u00df \U0001f600", "half \ud83d", "\udc00\ude00 two"]
        for name in names:
            scene.add_camera(name, node=scene.add_node(name))
        clip = tev2.Clip(scene)
        self.assertEqual([clip.find_node(name) for name in names], [0, 1, 2, 3])
        self.assertEqual(clip.nodes, names[:2] + ["half \ufffd", "\ufffd\ufffd two"])
        for camera in names:
            self.assertEqual(clip.sample_camera(camera, [0])["world"].shape, (1, 4, 4))
        with self.assertRaisesRegex(KeyError, "no node 'b'"):
            clip.find_node("b")

    def test_writes_into_an_array_that_fits(self):
        shape = (2, len(self.clip.nodes), 4, 4)
        out = np.empty(shape, np.float32)
        self.assertIs(self.clip.sample([0, 1], out=out), out)
        self.assertEqual(out.tobytes(), self.clip.sample([0, 1]).tobytes())
        read_only = np.empty(shape, np.float32)
        read_only.flags.writeable = False
        for bad in (np.empty(shape), np.empty((3, *shape[1:]), np.float32), out[:, ::-1], read_only, [0.0]):
            with self.assertRaisesRegex(ValueError, "writable C-contiguous float32 array of the shape"):
                self.clip.sample([0, 1], out=bad)
        for times, error in (([[0, 1]], ValueError), ([0, np.nan], ValueError), (None, TypeError), ("0.5", TypeError)):
            self.assertRaises(error, self.clip.sample, times)
        self.assertEqual(self.clip.sample([np.inf, -1e300]).tobytes(), self.clip.sample([9, -9]).tobytes())
        self.assertEqual(self.clip.sample([]).shape, (0, *shape[1:]))

    def test_many_threads_sample_one_clip(self):
        times = np.linspace(0, 3, 200, dtype=np.float32)
        expected = self.clip.sample(times).tobytes()
        found = []
        threads = [threading.Thread(target=lambda: found.append(self.clip.sample(times).tobytes()))
                   for _ in range(4)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(found, [expected] * 4)

    def test_other_threads_run_meanwhile(self):
        times = np.linspace(0, 3, 10_000, dtype=np.float32)
        thread = threading.Thread(target=self.clip.sample, args=(times,))
        thread.start()
        turns = 0
        while thread.is_alive():
            turns += 1
            time.sleep(0)
        self.assertGreater(turns, 10)

    def test_threads_of_daemons_do_not_end_the_program(self):
        done = subprocess.run([sys.executable, "-c", textwrap.dedent(f"""
            import numpy as np, tev2, threading, time
            clip = tev2.load_clip({self.path!r})
            def play():
                while True:
                    clip.sample(np.zeros(100))
            for _ in range(4):
                threading.Thread(target=play, daemon=True).start()
            time.sleep(0.2)""")], capture_output=True, text=True, check=False)
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_cameras_and_properties(self):
        scene = tev2.Scene()
        scene.time_range = (0, 1)
        node = scene.add_node("Stand", translation=tev2.Track("vector3", [0, 1], [[0, 0, 0], [2, 4, 6]]))
        node.properties["glow"] = tev2.Track("float", [0, 1], [0, 8])
        camera = scene.add_camera("Wide", node, field_of_view=tev2.Track("float", [0, 1], [1, 2]))
        scene.cuts = [(0, None), (0.5, camera)]
        clip = tev2.Clip(scene)
        view = clip.sample_camera("Wide", [0, 0.25])
        self.assertEqual(view["field_of_view"].tolist(), [1, 1.25])
        self.assertEqual(view["world"][1, :3, 3].tolist(), [0.5, 1, 1.5])
        self.assertEqual(clip.sample_active_camera([0, 0.75]).tolist(), [-1, 0])
        self.assertEqual(clip.sample_property("Stand", "glow", [0, 0.5, 2]).tolist(), [0, 4, 8])
        self.assertEqual((clip.nodes, clip.cameras, clip.time_range), (["Stand"], ["Wide"], (0, 1)))
        for ask in (lambda: clip.sample_camera("none", 0), lambda: clip.find_node("none"),
                    lambda: clip.sample_property("Stand", "none", 0)):
            self.assertRaises(KeyError, ask)
        for error, cameras in ((IndexError, (1, -1, 2 ** 70)), (TypeError, (0.5, None))):
            for camera in cameras:
                self.assertRaises(error, clip.sample_camera, camera, 0)

    def test_refuses_what_is_no_scene(self):
        with self.assertRaises(tev2.LoadError) as caught:
            tev2.load_clip(written("no_clip.tv2", b"no scene"))
        self.assertEqual(caught.exception.code, "bad-magic")


if __name__ == "__main__":
    unittest.main()
