"""The wrapper for Python: what it writes is what the command writes, and what goes wrong raises."""

import ast
import importlib
import os
import pathlib
import resource
import shutil
import subprocess
import sys
import tempfile
import types
import unittest
from unittest import mock

sys.path.insert(0, os.environ["TV2_EXPORT_DIR"])
import tv2_export
from tv2_export import ExportError, export, open_scene

FIXED_CLOCK = os.environ["TV2_FIXED_CLOCK"]
LYING_EXPORTER = os.environ["TV2_LYING_EXPORTER"]
ROBOT = os.path.join(os.environ["TV2_SAMPLES_DIR"], "robot_14_takes.glb")
WALK_CAMERAS = os.path.join(os.environ["TV2_SAMPLES_DIR"], "mocap_walk_cameras.fbx")

WALK = """HIERARCHY
ROOT Hips
{
  OFFSET 0 0 0
  CHANNELS 6 Xposition Yposition Zposition Zrotation Xrotation Yrotation
  JOINT ns:Leg
  {
    OFFSET 1 2 3
    CHANNELS 3 Zrotation Xrotation Yrotation
    End Site
    {
      OFFSET 0 -5 0
    }
  }
}
MOTION
Frames: 3
Frame Time: 0.04
0 0 0 0 0 0 0 0 0
1 2 3 90 0 0 0 0 0
3 2 3 90 0 0 0 90 0
"""

# Takes "A b", "A_b" and one that is not ASCII.
TAKES = """{"asset":{"version":"2.0"},"scenes":[{"nodes":[0]}],"nodes":[{"name":"Eye"}],
"animations":[{"name":"A b","channels":[],"samplers":[]},{"name":"A_b","channels":[],"samplers":[]},
{"name":"\u00e9","channels":[],"samplers":[]}]}"""


def tv2(*arguments):
    return subprocess.run([os.environ["TV2_COMMAND"], *arguments], stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, universal_newlines=True).returncode


class ScratchTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="tv2_export_")
        self.addCleanup(shutil.rmtree, self.folder)
        self.walk = self.write("walk.bvh", WALK)
        self.takes = self.write("takes.gltf", TAKES)
        open_scene(self.walk)

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, content):
        with open(self.path(name), "w", encoding="utf-8") as stream:
            stream.write(content)
        return self.path(name)

    def read(self, path):
        with open(path, "rb") as stream:
            return stream.read()

    def written(self):
        return sorted(name for name in os.listdir(self.folder) if name.endswith(".tv2"))


class WrittenFilesTest(ScratchTest):
    def test_same_bytes_as_the_command(self):
        whole = ["--fps", "50"]
        cases = [  # scene, open_scene's, export's and the command's options
            (self.walk, {}, {}, whole),
            (self.walk, {}, {"fps": 24}, ["--fps", "24"]),
            (self.walk, {}, {"start_frame": 1}, whole + ["--start-frame", "1"]),
            (self.walk, {}, {"start_frame": -7, "end_frame": 1}, whole + ["--start-frame", "-7", "--end-frame", "1"]),
            (self.walk, {}, {"keep_positive_z": False}, whole + ["--no-keep-positive-z"]),
            (self.walk, {}, {"remove_namespace": False}, whole + ["--no-remove-namespace"]),
            (self.walk, {}, {"disable_constraints": True}, whole + ["--disable-constraints"]),
            (self.walk, {"select": ["ns:Leg"]}, {}, whole + ["--select", "ns:Leg"]),
            (self.walk, {"select": "ns:Leg"}, {}, whole + ["--select", "ns:Leg"]),
            (self.takes, {"take": "\u00e9"}, {}, whole + ["--take", "\u00e9"]),
            (self.takes, {}, {"all_takes": True, "spaces_to_underscores": False},
             whole + ["--all-takes", "--no-spaces-to-underscores"]),
            (ROBOT, {}, {"all_takes": True}, whole + ["--all-takes"]),
            (WALK_CAMERAS, {}, {}, whole),
        ]
        distinct = set()
        for scene, opening, options, command in cases:
            for name in ("my out.tv2", ".tv2"):
                with self.subTest(scene=scene, opening=opening, options=options, name=name):
                    output = self.path(name)
                    self.assertEqual(
                        tv2("export", "--quiet", "--plugin", FIXED_CLOCK, *command, scene, output), 0)
                    expected = {self.path(name): self.read(self.path(name)) for name in self.written()}
                    for path in expected:
                        os.remove(path)

                    open_scene(scene, **opening)
                    files = export(output, plugin=FIXED_CLOCK, **options)
                    self.assertEqual({path: self.read(path) for path in files}, expected)
                    self.assertEqual(sorted(files), [self.path(name) for name in self.written()])
                    distinct.add(expected[files[0]])
                    for path in files:
                        os.remove(path)
        self.assertEqual(len(distinct), 2 * (len(cases) - 2))  # constraints: none here; "ns:Leg" stands there twice

    def test_the_plugin_beside_the_wrapper_writes_sound_files_in_the_order_of_the_takes(self):
        open_scene(ROBOT)
        files = export(self.path("robot.tv2"), all_takes=True)
        self.assertEqual(files, [self.path("robot_%s.tv2" % take) for take in tv2_export.take_names()])
        self.assertEqual(len(files), 14)
        self.assertEqual(tv2("check", *files), 0)

    def test_each_argument_arrives_in_its_place(self):
        path = self.path("out.tv2")
        default = [path.encode(), -2**31, 2**31 - 1, 50, True, True, True, False, True, False]
        cases = [
            ({}, {}),
            ({"start_frame": 3}, {1: 3, 8: False}),
            ({"end_frame": 4}, {2: 4, 8: False}),
            ({"fps": 60}, {3: 60}),
            ({"spaces_to_underscores": False}, {4: False}),
            ({"keep_positive_z": False}, {5: False}),
            ({"remove_namespace": False}, {6: False}),
            ({"disable_constraints": True}, {7: True}),
            ({"all_takes": True}, {9: True}),
        ]
        for options, changes in cases:
            entry = mock.Mock(return_value=0)
            with self.subTest(options=options), mock.patch.object(tv2_export, "_load_entry", return_value=entry):
                with self.assertRaises(ExportError):
                    export(path, **options)
                expected = [changes.get(place, value) for place, value in enumerate(default)]
                entry.assert_called_once_with(*expected)

    def test_a_file_of_this_moment_is_not_mistaken_for_one_of_the_next(self):
        for age, sleeps in ((0.0, True), (0.01, True), (1.0, False)):
            clock = mock.Mock()
            clock.now = 1000.0
            clock.time.side_effect = lambda: clock.now
            clock.sleep.side_effect = lambda seconds: setattr(clock, "now", clock.now + seconds)
            stamps = [None, (500.0, 1, 1), (clock.now - age, 1, 1)]
            with mock.patch.object(tv2_export, "time", clock):
                tv2_export._let_the_clock_move_on(stamps)
            self.assertGreaterEqual(clock.now - (1000.0 - age), 0.02)
            self.assertEqual(clock.sleep.called, sleeps)

    def test_a_file_written_twice_at_once_counts_twice(self):
        first = export(self.path("a.tv2"))
        for _ in range(20):
            self.assertEqual(export(self.path("a.tv2")), first)

    def test_paths_of_any_kind_and_encoding(self):
        longest = "a" * (260 - len(self.path(".tv2"))) + ".tv2"
        for name in ("h\u00e9.tv2", "h\u00e9.tv2".encode("utf-8"), b"\xff.tv2", "a\nb.tv2", longest):
            folder = self.folder if isinstance(name, str) else os.fsencode(self.folder)
            path = os.path.join(folder, name)
            self.assertEqual(export(path), [os.fsdecode(path)])
            self.assertTrue(os.path.exists(path))
            self.assertEqual(export(pathlib.Path(os.fsdecode(path))), [os.fsdecode(path)])


class RefusedTest(ScratchTest):
    def refused(self, reason, function, *arguments, **options):
        with self.assertRaises(ExportError, msg=reason) as caught:
            function(*arguments, **options)
        self.assertIn(reason, str(caught.exception))
        self.assertEqual(caught.exception.written, [])

    def test_before_anything_is_written(self):
        out = self.path("out.tv2")
        no_module = self.write("text.so", "no module")
        cases = [
            ("does not end in .tv2", self.path("out.fbx"), {}),
            ("is no text", 7, {}),
            ("is no text", None, {}),
            ("zero byte", self.path("a\0.tv2"), {}),
            ("characters that", self.path("\ud800.tv2"), {}),
            ("there is no folder " + self.path("gone"), self.path("gone/out.tv2"), {}),
            ("there is no folder", self.path("walk.bvh/out.tv2"), {}),
            ("at most 260", self.path("a" * (261 - len(self.path(".tv2"))) + ".tv2"), {}),
            ("fps is no whole number", out, {"fps": 59.94}),
            ("fps is no whole number", out, {"fps": True}),
            ("fps is no whole number", out, {"fps": "50"}),
            ("fps is no whole number", out, {"fps": 2**31}),
            ("fps is no whole number", out, {"fps": None}),
            ("a rate of 0", out, {"fps": 0}),
            ("a rate of -30", out, {"fps": -30}),
            ("start_frame is no whole number", out, {"start_frame": 0.5}),
            ("end_frame is no whole number", out, {"end_frame": -2**31 - 1}),
            ("start frame 2 is after the end frame 1", out, {"start_frame": 2, "end_frame": 1}),
            ("neither True nor False", out, {"all_takes": 1}),
            ("neither True nor False", out, {"spaces_to_underscores": None}),
            ("neither True nor False", out, {"keep_positive_z": "no"}),
            ("neither True nor False", out, {"remove_namespace": 0}),
            ("neither True nor False", out, {"disable_constraints": 0}),
            ("not loaded: there is no " + self.path("gone.so"), out, {"plugin": self.path("gone.so")}),
            ("cannot be loaded", out, {"plugin": no_module}),
            ("is no exporter", out, {"plugin": os.environ["TV2_HOST"]}),
        ]
        for reason, path, options in cases:
            with self.subTest(reason=reason, options=options):
                self.refused(reason, export, path, **options)
                self.assertEqual(self.written(), [])

    def test_takes_that_give_no_files_of_their_own(self):
        open_scene(self.takes)
        self.refused("would both be written to", export, self.path("out.tv2"), all_takes=True)
        open_scene(self.write("slash.gltf", TAKES.replace("A_b", "")))
        with mock.patch.object(tv2_export, "_host_takes", return_value=[b"a/b"]):
            self.refused('after take "a/b"', export, self.path(".tv2"))
            self.assertEqual(export(self.path("out.tv2")), [self.path("out.tv2")])
        with mock.patch.object(tv2_export, "_host_takes", return_value=[]):
            self.refused("no take is current", export, self.path("out.tv2"))

    def test_scenes(self):
        cases = [
            ("there is no such file", self.path("gone.bvh"), {}),
            ("is no text", None, {}),
            ('there is no take "Dance"; the scene has "Motion"', self.walk, {"take": "Dance"}),
            ('there is no model "Leg"', self.walk, {"select": ["Hips", "Leg"]}),
        ]
        for reason, path, options in cases:
            with self.subTest(reason=reason):
                self.refused(reason, open_scene, path, **options)

    def test_a_wrapper_that_stands_alone(self):
        shutil.copy(tv2_export.__file__, self.path("alone.py"))
        with mock.patch.object(sys, "path", [self.folder] + sys.path):
            alone = importlib.import_module("alone")
        self.assertIsNone(alone.take_names())
        out = self.path("out.tv2")
        for reason, function, arguments in (("the plug-in is not loaded", alone.export, {"path": out}),
                                            ("is not installed", alone.open_scene, {"path": self.walk}),
                                            ("to tell the takes", alone.export,
                                             {"path": out, "plugin": FIXED_CLOCK, "all_takes": True})):
            with self.assertRaises(alone.ExportError) as caught:
                function(**arguments)
            self.assertIn(reason, str(caught.exception))
        self.assertEqual(alone.export(out, plugin=FIXED_CLOCK), [out])


class FailedTest(ScratchTest):
    def failed(self, reason, path, **options):
        with self.assertRaises(ExportError, msg=reason) as caught:
            export(path, **options)
        self.assertIn(reason, str(caught.exception))
        return caught.exception.written

    def test_a_read_only_file_is_kept_and_the_others_are_written(self):
        open_scene(self.takes)
        precious = self.write("run_A_b.tv2", "precious")
        os.chmod(precious, 0o444)
        written = self.failed(precious + " is read-only and was kept", self.path("run.tv2"), all_takes=True,
                              spaces_to_underscores=False)
        self.assertEqual(written, [self.path("run_A b.tv2"), self.path("run_\u00e9.tv2")])
        self.assertEqual(self.read(precious), b"precious")

    def test_a_file_that_was_cut_off_is_incomplete(self):
        soft, hard = resource.getrlimit(resource.RLIMIT_FSIZE)
        resource.setrlimit(resource.RLIMIT_FSIZE, (700, hard))
        try:
            written = self.failed("cut.tv2 is incomplete", self.path("cut.tv2"))
        finally:
            resource.setrlimit(resource.RLIMIT_FSIZE, (soft, hard))
        self.assertEqual(written, [])
        self.assertEqual(self.read(self.path("cut.tv2"))[:4], bytes(4))

    def test_what_is_no_file_is_not_written(self):
        os.mkdir(self.path("folder.tv2"))
        self.failed("folder.tv2 was not written", self.path("folder.tv2"))
        if os.path.exists("/dev/full"):
            os.symlink("/dev/full", self.path("full.tv2"))
            self.failed("full.tv2 ", self.path("full.tv2"))

    def test_an_exporter_that_claims_success_is_not_believed(self):
        out = self.path("out.tv2")
        os.environ["LIE_SOURCE"] = self.path("gone")
        self.addCleanup(os.environ.pop, "LIE_SOURCE")
        self.failed("was not written", out, plugin=LYING_EXPORTER)
        export(out)
        self.failed("what stands there is older", out, plugin=LYING_EXPORTER)
        os.environ["LIE_SOURCE"] = self.walk
        self.failed("is incomplete", out, plugin=LYING_EXPORTER)
        os.environ["LIE_SOURCE"] = self.write("garbage", "\x01\x32\x56\x54" + "\0" * 30)
        self.failed("cannot be read back", out, plugin=LYING_EXPORTER)

    def test_frames_outside_the_take(self):
        export(self.path("out.tv2"), start_frame=2)
        self.failed("the frames are outside the take", self.path("out.tv2"), start_frame=3)
        self.failed("the frames are outside the take", self.path("out.tv2"), end_frame=-1)

    def test_an_exporter_that_gave_up(self):
        with mock.patch.object(tv2_export, "_load_entry", return_value=lambda *arguments: 0):
            self.failed("the exporter gave up; ", self.path("out.tv2"))


class InMotionBuilderTest(ScratchTest):
    """There the takes come from pyfbsdk, in text or in bytes."""

    def test_names_come_from_the_application(self):
        open_scene(self.takes, take="A_b")
        for encode in (str, lambda name: name.encode("utf-8")):
            takes = [types.SimpleNamespace(Name=encode(name)) for name in ("A b", "A_b", "\u00e9")]
            system = types.SimpleNamespace(Scene=types.SimpleNamespace(Takes=takes), CurrentTake=takes[1])
            application = types.SimpleNamespace(FBSystem=lambda: system)
            with mock.patch.dict(sys.modules, pyfbsdk=application), \
                    mock.patch.object(tv2_export, "_load_host", side_effect=AssertionError):
                self.assertEqual(export(self.path(".tv2")), [self.path("A_b.tv2")])
                self.assertEqual(export(self.path("x.tv2"), all_takes=True, spaces_to_underscores=False),
                                 [self.path("x_%s.tv2" % name) for name in ("A b", "A_b", "\u00e9")])
                system.CurrentTake = None
                with self.assertRaises(ExportError):
                    export(self.path("x.tv2"))


class LanguageTest(unittest.TestCase):
    """MotionBuilder 2017 has Python 2.7."""

    NEWER = (ast.JoinedStr, ast.AnnAssign, ast.Nonlocal, ast.AsyncFunctionDef, ast.Await, ast.YieldFrom, ast.MatMult,
             ast.Starred)

    def test_nothing_newer_than_two_seven(self):
        with open(tv2_export.__file__, encoding="ascii") as stream:  # without a declaration 2.7 reads ASCII alone
            tree = ast.parse(stream.read())
        for node in ast.walk(tree):
            where = getattr(node, "lineno", None)
            starred_call = isinstance(node, ast.Starred) and any(
                node in call.args for call in ast.walk(tree) if isinstance(call, ast.Call))
            self.assertFalse(isinstance(node, self.NEWER) and not starred_call, where)
            if isinstance(node, ast.arguments):
                self.assertFalse(node.kwonlyargs or getattr(node, "posonlyargs", None), where)
            self.assertIsNone(getattr(node, "annotation", None), where)
            self.assertIsNone(getattr(node, "returns", None), where)
            self.assertFalse(isinstance(node, ast.Raise) and node.cause, where)


if __name__ == "__main__":
    unittest.main()
