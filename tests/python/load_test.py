"""Loading: the errors of the command, the report as a list, limits, and hostile files."""

import os
import pathlib
import pickle
import signal
import struct
import subprocess
import sys
import threading
import unittest

import scene_files as files
import tev2

TWO = files.scene_file(files.node("Hips", translation=files.track(files.VECTOR_3, [0, 1], [(0, 1, 0), (0, 1, 2)])),
                       files.node("Foot", 0))
PARENT_OUTSIDE = files.scene_file(files.node("Hips", 7))


class Errors(unittest.TestCase):
    # name, bytes, code, byte
    DAMAGED = (
        ("empty", b"", "empty-image", 0),
        ("other", b"PK\3\4" + bytes(60), "bad-magic", 0),
        ("cut", TWO[:-30], "bad-chunk-size", len(files.scene_file()) - 12),
        ("kind", TWO.replace(struct.pack("<II", 1, files.VECTOR_3), struct.pack("<II", 1, 99)), "unknown-track-kind",
         TWO.index(struct.pack("<II", 1, files.VECTOR_3)) + 4),
    )

    def test_are_those_of_the_command(self):
        for name, data, code, byte in self.DAMAGED:
            with self.subTest(name):
                path = files.written(name + ".tv2", data)
                with self.assertRaises(tev2.LoadError) as caught:
                    tev2.load(path)
                error = caught.exception
                self.assertEqual("tv2 info: " + str(error), files.run("info", path).stderr.rstrip("\n"))
                self.assertEqual((error.file, error.code, error.offset), (path, code, byte))
                self.assertEqual(str(error), f"{path}: not a sound .tv2 file: {error.reason}")
                in_memory = self.failure_of(tev2.loads, data)
                self.assertEqual(str(in_memory), f"<bytes>: not a sound .tv2 file: {error.reason}")

    def failure_of(self, load, what, **options):
        with self.assertRaises(tev2.LoadError) as caught:
            load(what, **options)
        return caught.exception

    def test_of_files_that_cannot_be_read(self):
        for path in (files.FOLDER / "none.tv2", files.FOLDER):
            with self.subTest(path):
                error = self.failure_of(tev2.load, path)
                self.assertEqual("tv2 info: " + str(error), files.run("info", path).stderr.rstrip("\n"))
                self.assertEqual((error.code, error.offset, error.findings), (None, None, []))
        self.assertEqual(self.failure_of(tev2.load, b"/no\xff").file, os.fsdecode(b"/no\xff"))
        for path in (7, None, "a\0b"):
            with self.subTest(path), self.assertRaises((TypeError, ValueError)):
                tev2.load(path)

    def test_any_bytes_and_any_path_may_name_them(self):
        for data in (bytearray(TWO), memoryview(TWO), memoryview(TWO * 2)[:len(TWO)]):
            self.assertEqual(len(tev2.loads(data).nodes), len(tev2.loads(TWO).nodes))
        for data in ("text", [84, 69], 5, None):
            self.assertRaises(TypeError, tev2.loads, data)
        self.assertEqual(self.failure_of(tev2.loads, b"other", file=pathlib.Path("a.tv2")).file, "a.tv2")

    def test_survive_pickling(self):
        error = self.failure_of(tev2.loads, b"other", file="a.tv2")
        copy = pickle.loads(pickle.dumps(error))
        self.assertEqual((str(copy), copy.file, copy.findings), (str(error), "a.tv2", error.findings))
        saving = tev2.SaveError("a: full", "a", "full")
        self.assertEqual(str(pickle.loads(pickle.dumps(saving))), "a: full")

    def test_go_into_a_list_instead(self):
        report = []
        scene = tev2.loads(PARENT_OUTSIDE + TWO[4:-30], report=report)
        self.assertEqual([(finding.code, finding.severity) for finding in report],
                         [("parent-outside", "warning"), ("bad-chunk-size", "error")])
        self.assertEqual(report[0].path, "matrixHierarchy.nodes[0]")
        self.assertEqual((report[0].chunk, report[0].expected, report[0].found), (12, "below 1", "7"))
        self.assertEqual([node.name for node in scene.nodes], ["Hips"])
        self.assertIsNone(scene.nodes[0].parent)
        tev2.loads(PARENT_OUTSIDE)  # a warning is no error

    def test_of_limits(self):
        path = files.written("two.tv2", TWO)
        for limit, least in (("max_nodes", 2), ("max_nesting", 2), ("max_file_bytes", len(TWO))):
            with self.subTest(limit):
                self.assertEqual(len(tev2.load(path, **{limit: least}).nodes), 2)
                self.failure_of(tev2.load, path, **{limit: least - 1})
        self.assertEqual(self.failure_of(tev2.loads, TWO, max_bytes=100).code, "limit-exceeded")


class Waiting(unittest.TestCase):
    def pipe(self):
        path = files.FOLDER / "pipe"
        path.unlink(missing_ok=True)
        os.mkfifo(path)
        return path

    def test_lets_other_threads_run(self):
        path = self.pipe()
        writer = threading.Thread(target=lambda: path.write_bytes(TWO))  # gets no turn unless the load lets it
        writer.start()
        self.assertEqual(len(tev2.load(path).nodes), 2)
        writer.join()

    def test_ends_with_an_interrupt(self):
        path = self.pipe()
        program = f"import tev2\ntry:\n    tev2.load({str(path)!r})\nexcept KeyboardInterrupt:\n    print('ended')"
        child = subprocess.Popen([sys.executable, "-c", program], stdout=subprocess.PIPE, text=True)
        with open(path, "wb") as writer:  # opens once the child has opened its end
            writer.write(TWO[:10])
            writer.flush()
            child.send_signal(signal.SIGINT)
            self.assertEqual(child.communicate(timeout=60)[0], "ended\n")


class HostileFiles(unittest.TestCase):
    SOURCE = files.scene_file(
        files.node("Hips", translation=files.track(files.VECTOR_3, [0, 1], [(0, 1, 0), (0, 1, 2)]),
                   rotation=files.track(files.SLERP, [0], [(0, 0, 0, 1)])),
        files.node("Foot", 0, own=files.properties([("Tags", ["a"])],
                                                   [("Mass", files.track(files.INTEGER, [0], [4]))])),
        switcher=files.track(files.INTEGER, [0, 1], [-1, 5]))

    @staticmethod
    def use(scene):
        """Everything that a scene can be asked."""
        for node in scene.nodes:
            for track in (node.translation, node.rotation, node.scale, *node.properties.values()):
                if isinstance(track, tev2.Track):
                    track.times.tobytes(), track.values.tobytes(), track.sample([0, 0.5, 9]), track == track
            str(node), node.parent, node.children, node.properties.items()
        scene.world_matrices.tobytes(), scene.cuts, scene.information, scene.up_axis
        scene.set_time(0.5)

    def test_are_loaded_or_refused(self):
        loaded = 0
        for byte in range(4, len(self.SOURCE)):
            for damaged in (self.SOURCE[:byte], self.SOURCE[:byte] + b"\xff" + self.SOURCE[byte + 1:]):
                try:
                    scene = tev2.loads(damaged)
                    loaded += 1
                except tev2.LoadError as error:
                    scene = tev2.loads(damaged, report=[])
                    self.assertTrue(error.code)
                self.use(scene)
        self.assertGreater(loaded, 50)


if __name__ == "__main__":
    unittest.main()
