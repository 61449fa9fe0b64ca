"""Exports batches of scenes with tv2 export -o, and stops them in every way.

Usage: batch_test.py COMMAND EXPORTER DYING_EXPORTER SLURM_SCRIPT SAMPLES_FOLDER [SCENES_FOLDER]

EXPORTER is the command's own module, DYING_EXPORTER one that fails as names of files say.
"""

import glob
import hashlib
import json
import os
import pty
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

COMMAND, EXPORTER, DYING_EXPORTER, SLURM_SCRIPT, SAMPLES = sys.argv[1:6]
SCENES = sys.argv[6] if len(sys.argv) > 6 else ""
os.environ["SOURCE_DATE_EPOCH"] = "1000000000"
os.environ["TRUE_EXPORTER"] = EXPORTER
STAMPS = ".tv2-stamps"


def bvh(frames, seed=0):
    """A scene of two joints that move."""
    numbers = random.Random(seed)
    lines = "".join(" ".join("%.3f" % numbers.uniform(-90, 90) for _ in range(9)) + "\n" for _ in range(frames))
    return ("HIERARCHY\nROOT Hips\n{\nOFFSET 0 0 0\nCHANNELS 6 Xposition Yposition Zposition Zrotation Xrotation "
            "Yrotation\nJOINT Leg\n{\nOFFSET 0 -9 0\nCHANNELS 3 Zrotation Xrotation Yrotation\nEnd Site\n{\n"
            "OFFSET 0 -5 0\n}\n}\n}\nMOTION\nFrames: %d\nFrame Time: 0.04\n%s" % (frames, lines))


def contents(folder):
    """SHA-256 by name, of all files below a folder but the stamps."""
    found = {}
    for path, _, names in os.walk(folder):
        for name in names:
            file = os.path.join(path, name)
            if name != STAMPS:
                with open(file, "rb") as opened:
                    found[os.path.relpath(file, folder)] = hashlib.sha256(opened.read()).hexdigest()
    return found


def is_running(process):
    """Whether a process exists and is no zombie."""
    try:
        with open("/proc/%d/stat" % process, encoding="utf-8") as file:
            return file.read().rsplit(")", 1)[1].split()[0] != "Z"
    except OSError:
        return False


def children(process):
    """The processes that a process started and that still run; none where it has ended."""
    try:
        with open("/proc/%d/task/%d/children" % (process, process), encoding="utf-8") as file:
            return [int(child) for child in file.read().split()]
    except OSError:
        return []


class BatchTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.out = self.path("out")

    def path(self, *parts):
        return os.path.join(self.folder, *parts)

    def scene(self, name, content=None):
        path = self.path("scenes", name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(bvh(5, name) if content is None else content)
        return path

    def export(self, *arguments):
        run = subprocess.run([COMMAND, "export", *arguments], capture_output=True, text=True, check=False)
        self.assertNotIn("Sanitizer", run.stderr)
        return run

    def batch(self, *arguments):
        """Exports the scenes of this test to self.out: exit code, answers by scene, summary."""
        run = self.export(self.path("scenes"), "--recursive", "-o", self.out, "--json", *arguments)
        lines = [json.loads(line) for line in run.stdout.splitlines()]
        answers = {os.path.relpath(line["file"], self.path("scenes")): line for line in lines[:-1]}
        self.assertEqual(len(answers), len(lines) - 1, "one line for each scene")
        return run.returncode, answers, lines[-1]["summary"]

    def start(self, *arguments):
        return subprocess.Popen([COMMAND, "export", self.path("scenes"), "--recursive", "-o", self.out, *arguments],
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    # Names of scenes and of their files, from the test's own list.
    def hundred_scenes(self):
        expected = {}
        samples = sorted(glob.glob(os.path.join(SAMPLES, "*.[gdf][lab][bex]")))
        if SCENES:
            samples += [path for path in sorted(glob.glob(os.path.join(SCENES, "*")))
                        if path.endswith((".fbx", ".bvh", ".glb", ".dae"))]
        copies = 2 if len(samples) < 40 else 1
        for sample in samples:
            for copy in range(copies):
                stem, extension = os.path.splitext(os.path.basename(sample))
                name = "%s/%s_%s_%d" % ("ab"[copy], stem, extension[1:], copy)
                os.makedirs(self.path("scenes", os.path.dirname(name)), exist_ok=True)
                shutil.copy(sample, self.path("scenes", name + extension))
                expected[name + extension] = name + ".tv2"
        for number in range(max(100 - len(expected), 10)):
            name = "%smade/walk %d.x" % ("deep/er/" * (number % 3), number)
            self.scene(name + ".bvh", bvh(3 + number % 7, number))
            expected[name + ".bvh"] = name.replace("walk ", "walk_") + ".tv2"
        return expected

    def test_a_hundred_scenes_are_exported_as_one_by_one(self):
        expected = self.hundred_scenes()
        self.assertGreaterEqual(len(expected), 100)
        code, answers, summary = self.batch("-j", "2")
        self.assertEqual((code, summary["scenes"], summary["exported"]), (0, len(expected), len(expected)))
        self.assertEqual(set(answers), set(expected))
        together = contents(self.out)
        self.assertEqual(set(together), set(expected.values()))
        files = [file for answer in answers.values() for file in answer["files"]]
        for total, member in (("bytes", "bytes"), ("keysSampled", "keysSampled"), ("keysKept", "keysKept")):
            self.assertEqual(summary[total], sum(file[member] for file in files))
        self.assertEqual(summary["bytes"], sum(os.path.getsize(self.path("out", name)) for name in together))
        shutil.rmtree(self.out)
        for scene, output in expected.items():
            os.makedirs(os.path.dirname(self.path("out", output)), exist_ok=True)
            run = self.export(self.path("scenes", scene), self.path("out", output))
            self.assertEqual(run.returncode, 0, run.stderr)
        self.assertEqual(contents(self.out), together)

    def test_failures_are_those_of_their_scenes(self):
        for number in range(3):
            self.scene("good%d.bvh" % number)
        self.scene("broken.bvh", "HIERARCHY")
        for name in ("abort", "kill", "memory", "loud"):
            self.scene(name + ".bvh")
        for arguments in (["-j", "1"], ["-j", "8"]):
            shutil.rmtree(self.out, ignore_errors=True)
            code, answers, summary = self.batch("--plugin", DYING_EXPORTER, *arguments)
            self.assertEqual(code, 1)
            states = {name: answer["state"] for name, answer in answers.items()}
            failed = {"abort.bvh", "kill.bvh", "memory.bvh", "broken.bvh"}
            self.assertEqual({name for name in states if states[name] == "failed"}, failed)
            self.assertEqual((summary["exported"], summary["failed"]), (4, 4))
            listed = {os.path.basename(one["file"]): one["error"] for one in summary["failures"]}
            self.assertEqual(set(listed), failed)
            self.assertIn("Aborted", listed["abort.bvh"])
            self.assertIn("Killed", listed["kill.bvh"])
            self.assertIn("bad_alloc", listed["memory.bvh"])
            self.assertEqual(set(contents(self.out)), {"good0.tv2", "good1.tv2", "good2.tv2", "loud.tv2"})
        said = self.export("--plugin", DYING_EXPORTER, "--quiet", self.path("scenes"), "-o", self.out)
        self.assertEqual((said.returncode, said.stdout), (1, ""))
        lines = said.stderr.splitlines()
        self.assertEqual([sum(name in line for line in lines) for name in sorted(failed)], [1] * 4, said.stderr)

    def test_fewer_run_at_a_time_where_the_system_has_no_more(self):
        for number in range(12):
            self.scene("%d.bvh" % number)
        run = subprocess.run(["sh", "-c", 'ulimit -n 20; exec "$@"', "sh", COMMAND, "export", self.path("scenes"), "-o",
                              self.out, "-j", "12"], capture_output=True, text=True, check=False)
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        self.assertEqual(len(contents(self.out)), 12)

    def test_files_that_were_never_there_are_not_kept(self):
        self.scene("a.bvh")
        run = subprocess.run(["sh", "-c", 'ulimit -f 0; exec "$@"', "sh", COMMAND, "export", self.path("scenes"), "-o",
                              self.out, "--json"], capture_output=True, text=True, check=False)
        scene, summary = [json.loads(line) for line in run.stdout.splitlines()]
        self.assertFalse(scene["files"][0]["kept"])
        summary = summary["summary"]
        self.assertEqual((summary["failed"], summary["files"], summary["filesKept"]), (1, 0, 0))

    @unittest.skipUnless(hasattr(os, "mkfifo"), "no pipes with names")
    def test_stamps_that_are_no_file_are_left_alone(self):
        self.scene("a.bvh")
        os.mkdir(self.out)
        os.mkfifo(self.path("out", ".tv2-stamps"))
        run = subprocess.run([COMMAND, "export", self.path("scenes"), "-o", self.out], capture_output=True, text=True,
                             check=False, timeout=60)
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertEqual(run.stdout.count("the stamps for --newer"), 1)
        self.assertNotIn("more scene", run.stdout)

    def test_interrupted_before_the_first_export_it_ends_at_once(self):
        for number in range(1, 40):  # names of takes may meet, so each scene is looked at first
            self.scene("a" + "_b" * number + ".bvh", bvh(3000, number))
        run = self.start("--all-takes")
        time.sleep(0.2)
        run.send_signal(signal.SIGINT)
        most = 0
        while run.poll() is None:
            try:
                with open("/proc/%d/task/%d/children" % (run.pid, run.pid), encoding="ascii") as children:
                    most = max(most, len(children.read().split()))
            except OSError:
                break
        run.communicate(timeout=60)
        self.assertLessEqual(most, 2)

    def test_nothing_starts_without_scenes(self):
        walk = self.scene("walk.bvh")
        os.mkdir(self.path("empty"))
        for arguments, part in (
                ([self.path("empty"), "-o", self.out], "scene"),
                (["-o", self.out], "SCENE is required"),
                ([walk, "-o", self.path("a.tv2")], "names a folder"),
                ([walk, "-o", self.out, "--dialog"], "--dialog is for one scene"),
                ([walk, "-o", self.out, "-j", "0"], "-j"),
                ([walk, "-o", self.out, "--fps", "fast"], "fast"),
                ([walk, self.path("a.tv2"), "--newer"], "--newer is for batches"),
                ([walk, self.path("a.tv2"), "-j", "2"], "--jobs is for batches"),
                ([walk, walk, self.path("a.tv2")], "-o FOLDER")):
            run = self.export(*arguments)
            self.assertEqual(run.returncode, 2, (arguments, run.stderr))
            self.assertIn(part, run.stderr)
            self.assertFalse(os.path.exists(self.out), arguments)

    def test_steps_of_the_dialog_are_played_to_each_scene(self):
        self.scene("walk.bvh")
        self.scene("deep/run.bvh")
        steps = self.path("steps.txt")
        with open(steps, "w", encoding="utf-8") as file:
            file.write('click "EXPORT_BUTTON_REGION_NAME"\n')
        code, _, summary = self.batch("--dialog-script", steps)
        self.assertEqual((code, summary["exported"]), (0, 2))
        self.assertEqual(set(contents(self.out)), {"walk.tv2", "deep/run.tv2"})

    def test_notes_of_many_scenes_are_printed_once(self):
        for number in range(3):
            os.makedirs(self.path("scenes"), exist_ok=True)
            shutil.copy(os.path.join(SAMPLES, "robot_14_takes.glb"), self.path("scenes", "r%d.glb" % number))
        self.scene("walk.bvh")
        scenes = self.path("scenes")
        run = self.export("-j", "2", scenes, "-o", self.out)
        self.assertEqual(run.returncode, 0)
        notes = [line for line in run.stdout.splitlines() if line.startswith("note: ")]
        [takes] = [line for line in notes if "13 other takes" in line]
        self.assertTrue(takes.startswith("note: %s/r0.glb: " % scenes), takes)
        self.assertTrue(takes.endswith("(the same for 2 more scenes)"), takes)
        self.assertRegex(run.stdout.splitlines()[-1], r"^4 scenes: 4 exported; 4 files, [\d,]+ bytes, [\d,]+ keys")

    def test_a_terminal_shows_one_line(self):
        for number in range(20):
            self.scene("walk%d.bvh" % number)
        terminal, side = pty.openpty()
        run = subprocess.Popen([COMMAND, "export", "-j", "1", self.path("scenes"), "-o", self.out],
                               stdout=subprocess.PIPE, stderr=side)
        os.close(side)
        summary = run.communicate()[0]
        shown = os.read(terminal, 1 << 16).decode()
        os.close(terminal)
        self.assertIn(b"20 scenes: 20 exported", summary)
        self.assertRegex(shown, r"^(\r\x1b\[Kwalk\d+\.tv2 \(\d+/20\) [^\n]*)+\r\x1b\[K$")

    def await_parts(self):
        """The part files of two exports that hang, by process."""
        for _ in range(600):
            parts = {int(name.split(".")[-2].split("-")[0]): name
                     for name in glob.glob(os.path.join(self.out, ".hang*.part"))}
            if len(parts) == 2:
                return parts
            time.sleep(0.05)
        self.fail("the exports did not begin")

    def test_an_interruption_leaves_whole_files_alone(self):
        for name in ("a.bvh", "hang1.bvh", "hang2.bvh", "z.bvh"):
            self.scene(name)
        os.mkdir(self.out)
        with open(self.path("out", "hang1.tv2"), "w", encoding="utf-8") as file:
            file.write("old")
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGKILL):
            run = self.start("--plugin", DYING_EXPORTER, "-j", "2", "--json")
            parts = self.await_parts()
            run.send_signal(number)
            out, err = run.communicate(timeout=60)
            self.assertEqual(run.returncode, -number)
            for _ in range(600):
                if not any(is_running(process) for process in parts):
                    break
                time.sleep(0.05)
            self.assertFalse([process for process in parts if is_running(process)], "exports go on")
            left = set(contents(self.out))
            if number == signal.SIGKILL:
                self.assertEqual(len(left), 4)
                continue
            self.assertEqual(left, {"a.tv2", "hang1.tv2"})
            self.assertIn("interrupted", err)
            summary = json.loads(out.splitlines()[-1])["summary"]
            self.assertEqual((summary["interrupted"], summary["exported"], summary["scenes"]), (True, 1, 4))
        with open(self.path("out", "hang1.tv2"), encoding="utf-8") as file:
            self.assertEqual(file.read(), "old")

    def test_killed_at_any_moment_it_ends_in_the_same_state(self):
        numbers = random.Random(14)
        for number in range(12):
            self.scene("%d/walk.bvh" % number, bvh(40, number))
        os.makedirs(self.path("scenes", "takes"))
        shutil.copy(os.path.join(SAMPLES, "robot_14_takes.glb"), self.path("scenes", "takes", "robot.glb"))
        options = ["--all-takes", "-j", "2"]
        self.assertEqual(self.batch(*options)[0], 0)
        whole = contents(self.out)
        self.assertEqual(len(whole), 12 + 14)
        shutil.rmtree(self.out)
        partial = 0
        for kill in range(8):
            run = self.start("--newer", "--json", *options)
            for _ in range(numbers.randrange(4)):
                run.stdout.readline()
            time.sleep(numbers.uniform(0, 0.03))
            exports = children(run.pid)
            run.send_signal(signal.SIGKILL if kill % 2 else signal.SIGINT)
            run.communicate(timeout=60)
            while any(os.path.exists("/proc/%d" % export) for export in exports):
                time.sleep(0.01)  # the part file of a process that still ends is not abandoned yet
            found = {name: value for name, value in contents(self.out).items() if not name.endswith(".part")}
            self.assertEqual(found, {name: whole.get(name) for name in found}, "only whole files")
            partial += 0 < len(found) < len(whole)
        self.assertGreater(partial, 0, "no kill came in the middle")
        code, answers, _ = self.batch("--newer", *options)
        self.assertEqual((code, len(answers)), (0, 13))
        self.assertEqual(contents(self.out), whole)
        self.assertEqual(self.batch("--newer", *options)[2]["upToDate"], 13)

    def test_slurm_tasks_export_every_scene_once(self):
        for number in range(7):
            self.scene("walk%d.bvh" % number)
        environment = {**os.environ, "SLURM_ARRAY_TASK_COUNT": "3", "SLURM_CPUS_PER_TASK": "1",
                       "PATH": os.path.dirname(COMMAND) + os.pathsep + os.environ["PATH"]}
        exported = []
        for task in ("0", "1", "2"):
            run = subprocess.run([SLURM_SCRIPT, self.path("scenes"), self.out], capture_output=True, text=True,
                                 env={**environment, "SLURM_ARRAY_TASK_ID": task}, check=False)
            self.assertEqual(run.returncode, 0, run.stderr)
            exported += [json.loads(line).get("file") for line in run.stdout.splitlines()][:-1]
        self.assertEqual(len(set(exported)), 7)
        self.assertEqual(len(exported), 7)
        tasks = contents(self.out)
        shutil.rmtree(self.out)
        self.assertEqual(self.batch()[0], 0)
        self.assertEqual(contents(self.out), tasks)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
