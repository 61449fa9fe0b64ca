"""Options in a file: `tv2 export --config`, `--print-config`. What a file says comes from Python's own TOML reader.

    config_test.py TV2 SCENE EXPORTING.md
"""

import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile
import tomllib
import unittest

TV2, SCENE, DOCUMENT = sys.argv[1:]

# Texts of models that a reader might split, end or unescape where it should not.
HOSTILE = ["a#b", "a=b", "a,b", "a b", "[a, b]", '"', "'", "\\", r"C:\new\table", r"C:\Users\ä", "ä", "日本", "true", "5",
           "-5", "--take", "a\tb", "a\nb", "\x7f", " a ", "]", "''", "%s", "#", "a\\"]


def run(*arguments, folder=None):
    done = subprocess.run([TV2, "export", *arguments], capture_output=True, cwd=folder,
                          env={**os.environ, "SOURCE_DATE_EPOCH": "0"})
    return done.returncode, done.stdout.decode(), done.stderr.decode()


class ConfigTest(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)

    def write(self, content, name="night.toml"):
        (self.folder / name).write_bytes(content if isinstance(content, bytes) else content.encode())
        return name

    def tv2(self, *arguments):
        return run(*arguments, folder=self.folder)

    def printed(self, *arguments):
        status, out, err = self.tv2(*arguments, "--print-config")
        self.assertEqual((status, err), (0, ""), arguments)
        return tomllib.loads(out)

    def test_files_say_what_toml_says(self):
        files = [
            'fps = "60"\nselect = ["a#b", \'C:\\new\\x\'] # "c"\n',
            'select=[ # one\n  "a", # two\n\n  "b",\n]\n',
            r'select = ["\"\\\t\u00e4\U0001F600\b\f\r\n"]',
            "\t select\t=\t['a']\t",
            "# only a comment",
            "",
            "start-frame = -5\nend-frame = +7\nkeep-positive-z = false\nall-takes = true",
            'select = ["[a, b]", "ä", "日本"]\nselect-not = 1'.split("\nselect-not")[0],
        ]
        for text in files:
            for content in (text, text.replace("\n", "\r\n")):
                with self.subTest(content):
                    self.assertEqual(self.printed("--config", self.write(content)), tomllib.loads(content))
        bom = b"\xef\xbb\xbf" + files[0].encode()
        self.assertEqual(self.printed("--config", self.write(bom)), tomllib.loads(files[0]))

    def test_numbers_are_texts_where_the_option_takes_texts(self):
        self.assertEqual(self.printed("--config", self.write('fps = 29.97\nselect = "one"\nscene-rate = 24')),
                         {"fps": "29.97", "select": ["one"], "scene-rate": "24"})

    def test_what_is_printed_reads_back(self):
        arguments = ["--fps", "60", "--no-keep-positive-z", "--quiet", "--start-frame", "3"]
        for text in HOSTILE:
            arguments += ["--select", text]
        expected = {"fps": "60", "keep-positive-z": False, "quiet": True, "start-frame": 3, "select": HOSTILE}
        self.assertEqual(self.printed(*arguments), expected)
        self.write(self.tv2(*arguments, "--print-config")[1])
        self.assertEqual(self.printed("--config", "night.toml"), expected)

    def test_all_options_are_printed_with_their_help(self):
        lines = self.tv2("--print-config")[1].splitlines()
        help_text = self.tv2("--help")[1]
        names = set(re.findall(r"^  --?(?:\[no-\])?([\w-]+)", help_text, re.M)) | set(
            re.findall(r"^  -\w,--([\w-]+)", help_text, re.M))
        names -= {"json", "config", "print-config", "help", "h"} | set(re.findall(r"^  -(\w),--", help_text, re.M))
        keys = [match.group(1) for match in map(re.compile(r"#([\w-]+) = ").match, lines) if match]
        self.assertEqual(sorted(keys), sorted(names))
        for number, line in enumerate(lines):
            self.assertTrue(not line or line.startswith("#"), line)
            self.assertLessEqual(len(line), 120)
            if re.match(r"#[\w-]+ = ", line):
                self.assertTrue(lines[number - 1].startswith("# "), line)

    def test_the_command_line_overrides(self):
        name = self.write('fps = 60\nselect = ["a", "b"]\ntake = "Dance"\nquiet = true\nkeep-positive-z = false')
        self.assertEqual(self.printed("--config", name, "--fps=24", "--select", "c", "--all-takes", "--quiet=false",
                                      "--keep-positive-z"),
                         {"fps": "24", "select": ["c"], "all-takes": True, "quiet": False, "keep-positive-z": True})

    def test_what_is_wrong_is_named(self):
        cases = [
            ("fsp = 60", 'line 1: there is no option "fsp" (did you mean "fps"?)'),
            ("\n\nstart_frame = 1", '3: there is no option "start_frame" (did you mean "start-frame"?)'),
            ("--fps = 60", '1: there is no option "--fps" (did you mean "fps"?)'),
            ("no-keep-positive-z = true", "1: there is no option"),
            ("SCENE = 'a.bvh'", '1: there is no option "SCENE"'),
            ("json = true", "1: json can only be given on the command line"),
            ("config = 'b.toml'", "1: config can only be given on the command line"),
            ("print-config = true", "1: print-config can only be given on the command line"),
            ("help = true", "1: help can only be given on the command line"),
            ("[export]\nfps = 60", "1: a table"),
            ("fps", '1: fps: needs "="'),
            ("fps =", "1: fps: needs a value"),
            ("fps = 30000/1001", "1: fps: 30000/1001 is not a number"),
            ("settings = stored", "1: settings: stored is not a number, true or false: put texts in quotes"),
            ("fps = [60]", "1: fps: takes one value, not a list"),
            ("fps = true", "1: fps: needs a value, not true or false"),
            ("quiet = 'yes'", "1: quiet: needs true or false"),
            ("quiet = 1", "1: quiet: needs true or false"),
            ("start-frame = '1'", "1: start-frame: needs a number"),
            ("start-frame = 1.5", "1: "),
            ("start-frame = 010", "1: start-frame: 010 is not a number"),
            ("start-frame = 99999999999999999999", "1: "),
            ("fps = 60\n# a\nfps = 24", "3: fps has a value already, in line 1"),
            ("fps = 'fast'", '1: --fps: "fast" is not a rate'),
            ("take = ''", "1: --take: is empty"),
            ("quiet = true\nsettings = 'x'", "2: --settings: x not in"),
            ("take = 'a'\nall-takes = true", "2: --all-takes excludes --take"),
            ('take = "C:\\Users"', "1: take: unknown escape"),
            ('take = "\\ud800"', "1: take: unknown escape"),
            ('take = "\\u0000"', "1: take: unknown escape"),
            ('take = "a', '1: take: the text has no "'),
            ("take = 'a\n'", "1: take: the text has no '"),
            ("take = 'a' 'b'", "1: take: more follows"),
            ("select = ['a' 'b']", '1: select: needs ","'),
            ("select = ['a',\n\n'b'", '3: select: needs ","'),
            ("select = [,]", "1: select: needs a value"),
            ("select = [['a']]", "1: select: "),
            ("fps = 60 quiet = true", "1: fps: more follows"),
            ("fps = 60 # a\rb", "1: a control character"),
            ("fps = 60\rquiet = true", "1: fps: "),
            ("take = 'a\0'", "byte 0"),
            ('fps = 60'.encode("utf-16"), "byte 0"),
            ("ä = 1", "1: needs the name of an option"),
        ]
        for content, expected in cases:
            with self.subTest(content):
                status, out, err = self.tv2("--config", self.write(content), SCENE, "a.tv2")
                self.assertEqual((status, out), (2, ""))
                self.assertRegex(err, r"^tv2 export: night\.toml: line \d+: ")
                self.assertIn(expected, err)
        status, out, err = self.tv2("--config", self.write("fps = 'fast'"), "--fps", "60", "--json", SCENE, "a.tv2")
        self.assertEqual(status, 2)  # checked although it is overridden
        self.assertIn("night.toml: line 1: --fps", out)
        for path, why in (("none.toml", "No such file"), (".", "directory"), ("/dev/zero", "")):
            status, _, err = self.tv2("--config", path, SCENE, "a.tv2")
            self.assertEqual(status, 2)
            self.assertTrue(err.startswith(f"tv2 export: {path}: ") and why in err, err)
        self.assertEqual(sorted(os.listdir(self.folder)), ["night.toml"])

    def test_damaged_files_are_refused_or_read_as_toml_is(self):
        sound = 'fps = "60"\nselect = ["a#b", \'c\', "\\u00e4\\n"] # x\nstart-frame = 5\nquiet = true\r\n'
        rows = random.Random(14)
        accepted = 0
        for _ in range(200):
            text = sound
            for _ in range(rows.randint(1, 2)):
                at = rows.randrange(len(text))
                new = rows.choice(["", *"\"'#=[],\\\n\r 5ua", text[at] * 2])
                text = text[:at] + new + text[at + rows.randint(0, 2):]
            status, out, err = self.tv2("--config", self.write(text), "--print-config")
            self.assertIn(status, (0, 2), text)
            if status == 0:
                accepted += 1
                said = tomllib.loads(text)
                as_texts = {key: str(value) if key == "fps" else
                            ([str(v) for v in value] if isinstance(value, list) else [str(value)])
                            if key == "select" else value for key, value in said.items()}
                as_texts = {key: value for key, value in as_texts.items() if value not in ([], False)}
                self.assertEqual(tomllib.loads(out), as_texts, text)
        self.assertGreater(accepted, 10)

    def test_a_run_from_a_file_is_the_run_of_its_options(self):
        (toml,) = re.findall(r"^```toml\n(.*?)^```", pathlib.Path(DOCUMENT).read_text(), re.M | re.S)
        self.write(toml)
        expected = {"fps": "60", "select": ["Head", "Torso"], "keep-positive-z": False, "scene-rate": "30000/1001"}
        self.assertEqual(self.printed("--config", "night.toml"), expected)
        (self.folder / "robot.glb").write_bytes(pathlib.Path(SCENE).read_bytes())
        calls = re.findall(r"^tv2 export (--.*(?:night|all)\.toml.*)$", pathlib.Path(DOCUMENT).read_text(), re.M)
        self.assertEqual(len(calls), 4)
        for call in calls:
            done = subprocess.run(f'"{TV2}" export {call}', shell=True, cwd=self.folder, capture_output=True,
                                  env={**os.environ, "SOURCE_DATE_EPOCH": "0"})
            self.assertEqual((done.returncode, done.stderr), (0, b""), call)
        self.assertEqual(tomllib.loads((self.folder / "day.toml").read_text()), {**expected, "fps": "24"})
        written = (self.folder / "robot.tv2").read_bytes()  # of the second call
        status, _, _ = self.tv2("--fps", "24", "--select", "Head", "--select", "Torso", "--no-keep-positive-z",
                                "--scene-rate", "30000/1001", "robot.glb", "robot.tv2")
        self.assertEqual(status, 0)
        self.assertEqual((self.folder / "robot.tv2").read_bytes(), written)
        self.tv2("--fps", "60", "--no-keep-positive-z", "robot.glb", "robot.tv2")
        self.assertNotEqual((self.folder / "robot.tv2").read_bytes(), written)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
