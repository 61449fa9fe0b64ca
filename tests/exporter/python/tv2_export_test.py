"""The wrapper for Python: what it writes is what the command writes, and what goes wrong raises."""

import ast
import ctypes
import fractions
import importlib
import os
import pathlib
import resource
import shutil
import signal
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

# That of the tests in C++.
with open(os.environ["TV2_SCENE_TEXTS"], encoding="utf-8") as texts:
    WALK = texts.read().split("kTwoJoints =", 1)[1].split('R"(', 1)[1].split(')"', 1)[0]

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
        cases = [  # scene, open_scene's, export's and the command's options
            (self.walk, {}, {}, []),
            (self.walk, {}, {"fps": 24}, ["--fps", "24"]),
            (self.walk, {}, {"fps": 29.97, "end_frame": 1}, ["--fps", "29.97", "--end-frame", "1"]),
            (self.walk, {}, {"fps": fractions.Fraction(30000, 1001), "keep_positive_z": False, "all_takes": True},
             ["--fps", "30000/1001", "--no-keep-positive-z", "--all-takes"]),
            (self.walk, {}, {"fps": "ntsc"}, ["--fps", "ntsc"]),
            (self.walk, {}, {"start_frame": 1}, ["--start-frame", "1"]),
            (self.walk, {}, {"start_frame": -7, "end_frame": 1}, ["--start-frame", "-7", "--end-frame", "1"]),
            (self.walk, {}, {"keep_positive_z": False}, ["--no-keep-positive-z"]),
            (self.walk, {}, {"remove_namespace": False}, ["--no-remove-namespace"]),
            (self.walk, {}, {"disable_constraints": True}, ["--disable-constraints"]),
            (self.walk, {"select": ["ns:Leg"]}, {}, ["--select", "ns:Leg"]),
            (self.walk, {"select": "ns:Leg"}, {}, ["--select", "ns:Leg"]),
            (self.takes, {"take": "\u00e9"}, {}, ["--take", "\u00e9"]),
            (self.takes, {}, {"all_takes": True, "spaces_to_underscores": False},
             ["--all-takes", "--no-spaces-to-underscores"]),
            (ROBOT, {}, {"all_takes": True}, ["--all-takes"]),
            (WALK_CAMERAS, {}, {}, []),
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
        """In MotionBuilder, where the script entry takes them."""
        path = self.path("out.tv2")
        default = [path.encode(), -2**31, 2**31 - 1, 25, True, True, True, False, True, False]
        cases = [
            ({}, {}),
            ({"start_frame": 1}, {1: 1, 8: False}),
            ({"end_frame": 2}, {2: 2, 8: False}),
            ({"fps": 60}, {3: 60}),
            ({"fps": "pal"}, {3: 50}),
            ({"spaces_to_underscores": False}, {4: False}),
            ({"keep_positive_z": False}, {5: False}),
            ({"remove_namespace": False}, {6: False}),
            ({"disable_constraints": True}, {7: True}),
            ({"all_takes": True}, {9: True}),
        ]
        for options, changes in cases:
            entry = mock.Mock(return_value=0)
            with self.subTest(options=options), in_motionbuilder(["Motion"], 0), \
                    mock.patch.object(tv2_export, "_load_entry", return_value=entry):
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
        for _ in range(20):
            self.assertEqual(export(self.path("a.tv2")), [self.path("a.tv2")])

    def test_paths_of_any_kind_and_encoding(self):
        longest = "a" * (260 - len(self.path(".tv2"))) + ".tv2"
        for name in ("h\u00e9.tv2", "h\u00e9.tv2".encode("utf-8"), b"\xff.tv2", "a\nb.tv2", longest):
            folder = self.folder if isinstance(name, str) else os.fsencode(self.folder)
            path = os.path.join(folder, name)
            self.assertEqual(export(path), [os.fsdecode(path)])
            self.assertTrue(os.path.exists(path))
            self.assertEqual(export(pathlib.Path(os.fsdecode(path))), [os.fsdecode(path)])


class FolderTest(ScratchTest):
    def setUp(self):
        ScratchTest.setUp(self)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(self.folder)

    def test_files_tell_the_folder_they_are_from_unless_the_path_gets_too_long(self):
        room = 260 - len("/_Motion") - len(os.path.realpath(self.folder).encode())
        for name, told in [("a.tv2", True), ("n" * (room - 4) + ".tv2", True), ("n" * (room - 3) + ".tv2", False)]:
            with self.subTest(length=len(name)):
                self.assertEqual(export(name, plugin=FIXED_CLOCK), [name])
                line = "TEV_NAME:\t%s\r\n" % (os.path.join(os.path.realpath(self.folder), name) if told else name)
                self.assertIn(line.encode("utf-16-le"), self.read(name))
                by_wrapper = self.read(name)
                self.assertEqual(tv2("export", "--quiet", "--plugin", FIXED_CLOCK, self.walk, name), 0)
                self.assertEqual(self.read(name), by_wrapper)


class RefusedTest(ScratchTest):
    def refused(self, reason, function, *arguments, **options):
        with self.assertRaises(ExportError, msg=reason) as caught:
            function(*arguments, **options)
        self.assertIn(reason, "%s: %s" % (caught.exception.code, caught.exception))
        self.assertEqual(caught.exception.written, [])

    def test_before_anything_is_written(self):
        out = self.path("out.tv2")
        no_module = self.write("text.so", "no module")
        shutil.copy(self.walk, self.path("self.tv2"))
        open_scene(self.path("self.tv2"))
        before = self.written()
        cases = [  # the code of a rule, or what the wrapper itself says
            ("no-tv2-name", self.path("out.fbx"), {}),
            ("is not text", 7, {}),
            ("is not text", None, {}),
            ("zero byte", self.path("a\0.tv2"), {}),
            ("characters that", self.path("\ud800.tv2"), {}),
            ("no-folder", self.path("gone/out.tv2"), {}),
            ("is-the-scene", self.path("self.tv2"), {}),
            ("fps is not a rate", out, {"fps": True}),
            ("fps is not a rate", out, {"fps": [50]}),
            ("rate-unreadable", out, {"fps": "fast"}),
            ("rate-out-of-range", out, {"fps": -30}),
            ("rate-out-of-range", out, {"fps": float("nan")}),
            ("start_frame is not a 32-bit integer", out, {"start_frame": 0.5}),
            ("end_frame is not a 32-bit integer", out, {"end_frame": -2**31 - 1}),
            ("range-reversed", out, {"start_frame": 2, "end_frame": 1}),
            ("range-outside", out, {"end_frame": -1}),
            ("neither True nor False", out, {"all_takes": 1}),
            ("neither True nor False", out, {"spaces_to_underscores": None}),
            ("neither True nor False", out, {"keep_positive_z": "no"}),
            ("not loaded: there is no " + self.path("gone.so"), out, {"plugin": self.path("gone.so")}),
            ("cannot be loaded", out, {"plugin": no_module}),
            ("cannot be loaded", out, {"plugin": os.environ["TV2_HOST"]}),
        ]
        for reason, path, options in cases:
            with self.subTest(reason=reason, options=options):
                self.refused(reason, export, path, **options)
                self.assertEqual(self.written(), before)
        self.assertEqual(self.read(self.path("self.tv2")), self.read(self.walk))
        ctypes.CDLL(os.environ["TV2_HOST"]).mobu_host_new_scene()
        self.refused("no scene is open", export, out)

    def test_takes_that_give_no_files(self):
        with in_motionbuilder(["a/b"], 0):
            self.refused('after take "a/b"', export, self.path(".tv2"))
        with in_motionbuilder(["a"], None):
            self.refused("no take is current", export, self.path("out.tv2"))

    def test_scenes(self):
        cases = [
            ("there is no such file", self.path("gone.bvh"), {}),
            ("is not text", None, {}),
            ('there is no take "Dance"; the scene has "Motion"', self.walk, {"take": "Dance"}),
            ('there is no take "motion" (did you mean "Motion"?)', self.walk, {"take": "motion"}),
            ('there is no model "Leg"', self.walk, {"select": ["Hips", "Leg"]}),
            ('there is no model "hip" (did you mean "Hips"?)', self.walk, {"select": "hip"}),
            ("scene_rate is not a rate", self.walk, {"scene_rate": 0}),
            ("scene_rate is not a rate", self.walk, {"scene_rate": "24"}),
        ]
        for reason, path, options in cases:
            with self.subTest(reason=reason):
                self.refused(reason, open_scene, path, **options)

    def test_a_wrapper_that_stands_alone(self):
        shutil.copy(tv2_export.__file__, self.path("alone.py"))
        with mock.patch.object(sys, "path", [self.folder] + sys.path):
            alone = importlib.import_module("alone")
        self.assertIsNone(alone.take_names())

        def refused(reason, function, **arguments):
            with self.assertRaises(alone.ExportError) as caught:
                function(**arguments)
            self.assertIn(reason, str(caught.exception))

        out = self.path("out.tv2")
        refused("there is no " + self.path("tv2_export_rules.so"), alone.export, path=out, plugin=FIXED_CLOCK)
        refused("is not installed", alone.open_scene, path=self.walk)
        shutil.copy(os.path.join(os.environ["TV2_EXPORT_DIR"], "tv2_export_rules.so"), self.folder)
        refused("to ask about the scene", alone.export, path=out, plugin=FIXED_CLOCK)
        self.assertFalse(os.path.exists(out))


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

    def test_a_failed_export_keeps_the_old_file(self):
        soft, hard = resource.getrlimit(resource.RLIMIT_FSIZE)
        out = self.path("cut.tv2")
        for old, reason in ((None, "cut.tv2 was not written"), (b"good", "the old file was kept")):
            if old:
                self.write("cut.tv2", "good")
            before = os.listdir(self.path(""))
            resource.setrlimit(resource.RLIMIT_FSIZE, (700, hard))
            try:
                self.assertEqual(self.failed(reason, out), [])
            finally:
                resource.setrlimit(resource.RLIMIT_FSIZE, (soft, hard))
            self.assertEqual(os.listdir(self.path("")), before)
            self.assertEqual(self.read(out) if old else None, old)

    def test_an_exporter_that_claims_success_is_not_believed(self):
        out = self.path("out.tv2")
        self.addCleanup(os.environ.pop, "LIE_SOURCE")
        garbage = self.write("garbage", "\x01\x32\x56\x54" + "\0" * 30)
        for source, reason in ((self.path("gone"), "was not written"), (self.walk, "is incomplete"),
                               (garbage, "cannot be read back"), (self.path("gone"), "the old file was kept")):
            os.environ["LIE_SOURCE"] = source
            self.failed(reason, out, plugin=LYING_EXPORTER)

    def test_an_exporter_that_gave_up(self):
        with in_motionbuilder(["Motion"], 0), \
                mock.patch.object(tv2_export, "_load_entry", return_value=lambda *arguments: 0):
            self.failed("the exporter gave up; ", self.path("out.tv2"))

    def test_an_export_that_is_stopped_leaves_files_and_scene_as_they_were(self):
        open_scene(ROBOT, take="Idle")
        before = tv2_export.takes()
        self.write("robot.tv2", "precious")

        class Enough(Exception):
            pass

        def stop(name, part):
            raise Enough(name)

        with self.assertRaises(Enough) as caught:
            export(self.path("robot.tv2"), progress=stop)
        self.assertEqual(str(caught.exception), self.path("robot.tv2"))

        def interrupt(name, part):
            os.kill(os.getpid(), signal.SIGINT)

        with self.assertRaises(KeyboardInterrupt):
            export(self.path("robot.tv2"), fps=1000, progress=interrupt)
        self.assertEqual(self.read(self.path("robot.tv2")), b"precious")
        self.assertEqual(tv2_export.takes(), before)
        self.assertEqual(export(self.path("robot.tv2")), [self.path("robot.tv2")])


class ReadableTest(ScratchTest):
    """What a script can ask about the scene and about an export."""

    def test_takes_models_and_rate(self):
        self.assertEqual(tv2_export.scene_rate(), 25.0)
        self.assertEqual(tv2_export.takes(), [("Motion", 0.0, 0.08, 0, 2, True)])
        open_scene(self.walk, select="ns:Leg")
        self.assertEqual(tv2_export.models(), [("Scene", -1, False, False), ("Hips", 0, False, False),
                                               ("ns:Leg", 1, True, False), ("EndSite_ns:Leg", 2, False, False)])
        open_scene(WALK_CAMERAS)
        cameras = [model.name for model in tv2_export.models() if model.camera]
        self.assertEqual(cameras, ["Camera01", "Camera02", "Camera03"])

    def test_plan_and_notes(self):
        open_scene(self.takes, take="A_b")
        notes = ["the rate 30000/1001 is rounded to single precision: 29.970029830932617 samples a second",
                 'the range is cut to the take: "A_b" has frames 0 to 0 (0 to 0 s)',
                 '2 other takes are not exported: "A b", "\u00e9" (all_takes)']
        arguments = {"fps": "30000/1001", "start_frame": -1}
        plan = tv2_export.plan(self.path("x.tv2"), **arguments)
        self.assertEqual(plan, ([self.path("x.tv2")], 30000 / 1001.0, notes))
        self.assertEqual(self.written(), [])
        files = export(self.path("x.tv2"), **arguments)
        self.assertEqual((files, files.rate, files.notes), plan)

    def test_options_and_their_names(self):
        self.assertIn(("disable_constraints", False),
                      [(option.name, option.default) for option in tv2_export.options()])
        with self.assertRaisesRegex(TypeError, "unexpected keyword argument 'all_take'"):
            export(self.path("x.tv2"), all_take=True)

    def test_progress(self):
        open_scene(ROBOT)
        parts = []
        export(self.path(".tv2"), fps=1000, progress=lambda name, part: parts.append((name, part)))
        self.assertEqual({name for name, _ in parts}, {self.path("Dance.tv2")})
        self.assertEqual(parts, sorted(parts))
        self.assertTrue(0.0 <= parts[0][1] <= parts[-1][1] <= 1.0)


def in_motionbuilder(names, current, encode=str, models=("Hips",)):
    """An application with takes of these names of 0 to 0.08 s at 25 frames a second, and models below the root."""
    seconds = lambda value: types.SimpleNamespace(GetSecondDouble=lambda: value)
    span = types.SimpleNamespace(GetStart=lambda: seconds(0.0), GetStop=lambda: seconds(0.08))
    takes = [types.SimpleNamespace(Name=encode(name), LocalTimeSpan=span) for name in names]
    model = lambda name, *children: types.SimpleNamespace(LongName=encode(name), Selected=False, Children=children)
    scene = types.SimpleNamespace(Takes=takes, RootModel=model("Scene", *[model(name) for name in models]))
    system = types.SimpleNamespace(Scene=scene, CurrentTake=None if current is None else takes[current])
    application = types.SimpleNamespace(
        FBSystem=lambda: system, FBCamera=ExportError, FBApplication=lambda: types.SimpleNamespace(FBXFileName="a.fbx"),
        FBPlayerControl=lambda: types.SimpleNamespace(GetTransportFpsValue=lambda: 25.0))
    return mock.patch.dict(sys.modules, pyfbsdk=application)


class InMotionBuilderTest(ScratchTest):
    """There the takes come from pyfbsdk, in text or in bytes."""

    def test_names_come_from_the_application(self):
        open_scene(self.takes, take="A_b")
        names = ("A b", "A_b", "\u00e9")
        for encode in (str, lambda name: name.encode("utf-8")):
            with in_motionbuilder(names, 1, encode), \
                    mock.patch.object(tv2_export, "_load_host", side_effect=AssertionError):
                self.assertEqual(export(self.path(".tv2")), [self.path("A_b.tv2")])
                self.assertEqual(export(self.path("x.tv2"), all_takes=True, spaces_to_underscores=False),
                                 [self.path("x_%s.tv2" % name) for name in names])
                self.assertEqual([take.name for take in tv2_export.takes() if take.current], ["A_b"])
                self.assertEqual([model.name for model in tv2_export.models()], ["Scene", "Hips"])

    def test_twice_the_takes_and_models_are_twice_the_work(self):
        def calls(size):
            made = []
            names = ["%d" % number for number in range(size)]
            with in_motionbuilder(names, size - 1, models=names):
                sys.setprofile(lambda frame, event, argument: made.append(1) if event in ("call", "c_call") else None)
                try:
                    tv2_export.plan(self.path("x.tv2"), all_takes=True)
                finally:
                    sys.setprofile(None)
            return len(made)

        counts = [calls(size) for size in (250, 500, 1000, 2000)]
        for smaller, larger in zip(counts, counts[1:]):
            self.assertLessEqual(larger, 2.3 * smaller, counts)

    def test_rates_are_whole_there_and_nobody_watches(self):
        for reason, options in (('"Custom FPS"', {"fps": 29.97}), ("headless host", {"progress": print})):
            with in_motionbuilder(["A"], 0), self.assertRaises(ExportError) as caught:
                export(self.path("out.tv2"), **options)
            self.assertIn(reason, str(caught.exception))


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
