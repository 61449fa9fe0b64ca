"""Manual pages and bash completion, as the build makes them, against the help of the command.

    manual_test.py TV2 SHARE SOURCE
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

TV2, SHARE, SOURCE = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
BASH_COMPLETION = pathlib.Path("/usr/share/bash-completion/bash_completion")


def output(*command, **options):
    return subprocess.run(command, check=True, capture_output=True, text=True, **options).stdout


def help_rows(*command):
    """(names, description) of each row of a help."""
    rows = []
    for line in output(TV2, *command, "--help").splitlines():
        if re.match(r"  [-\w]", line) and not line.startswith("  tv2 "):
            name, _, text = line[2:].partition("  ")
            rows.append([name, text])
        elif line.startswith(" " * 20) and rows:
            rows[-1][1] += " " + line
        elif rows and line:
            rows.append(["", ""])
    return [(name, " ".join(text.split())) for name, text in rows if name]


def option_names(row):
    """--a and --no-a of "--[no-]a", -h and --help of "-h,--help"."""
    for name in row.split(" ")[0].split(","):
        yield from ([name.replace("[no-]", ""), name.replace("[no-]", "no-")] if "[no-]" in name else [name])


VERBS = [name for name, _ in help_rows() if re.fullmatch(r"\w+", name)]


class Pages(unittest.TestCase):
    def rendered(self, page):
        """A page as man shows it, all blanks as one; man has nothing to warn of."""
        if not shutil.which("man"):
            self.skipTest("man-db is not installed")
        shown = subprocess.run(["man", "--warnings=w", "-E", "UTF-8", "-l", "-Tutf8", SHARE / "man" / page],
                               capture_output=True, text=True, check=True,
                               env={**os.environ, "MANWIDTH": "5000" if page.endswith(".1") else "80",
                                    "LC_ALL": "C.UTF-8", "MANROFFOPT": "-c"})
        self.assertEqual(shown.stderr, "", page)
        return " ".join(re.sub(r".\x08", "", shown.stdout).split())

    def test_each_verb_has_a_page_with_all_that_its_help_says(self):
        self.assertEqual(sorted(p.name for p in (SHARE / "man/man1").iterdir()),
                         sorted(["tv2.1", *(f"tv2-{verb}.1" for verb in VERBS)]))
        for verb in VERBS:
            text = self.rendered(f"man1/tv2-{verb}.1")
            self.assertIn(f"NAME tv2-{verb} - ", text)
            self.assertIn(f"tv2 {verb} [OPTION]...", text)
            for row, description in help_rows(verb):
                for name in option_names(row):
                    self.assertTrue(f"{name} " in text or f"{name}," in text, (verb, name))
                if row.startswith("-") and "--help" not in row:
                    self.assertIn(re.sub(r"\W", "", description), re.sub(r"\W", "", text), (verb, row))
            for line in re.findall(r"^  (tv2 .*)", output(TV2, verb, "--help"), re.M):
                self.assertIn(" ".join(line.split()), text)

    def test_texts_keep_their_characters(self):
        text = self.rendered("man1/tv2-export.1")
        for part in ("--no-keep-positive-z", "out_<take>.tv2", '"REGION"', "30000/1001"):
            self.assertIn(part, text)

    def test_the_overview_names_verbs_and_what_the_sources_read_from_the_environment(self):
        text = self.rendered("man1/tv2.1")
        for verb in VERBS:
            self.assertIn(f"tv2-{verb}(1)", text)
        names = set()
        for folder in ("tools", "exporter", "host", "tev2_loader", "check"):
            for path in (SOURCE / folder).rglob("*.cpp"):
                names.update(re.findall(r'(?:getenv|is_set)\("(\w+)"\)', path.read_text(encoding="utf-8")))
        self.assertGreaterEqual(names, {"SOURCE_DATE_EPOCH", "WAYLAND_DISPLAY"})
        for name in names:
            self.assertIn(f"{name} ", text)

    def test_the_format_has_a_page_with_every_kind_of_record(self):
        text = self.rendered("man5/tv2.5")
        kinds = re.findall(r'TEV2_KIND k\w+\{\d+, "([^"]+)"', (SOURCE / "tev2_loader/format.h").read_text())
        self.assertGreater(len(kinds), 20)
        source = (SHARE / "man/man5/tv2.5").read_text().replace("\\:", "")
        for kind in kinds:
            self.assertIn(f"{kind}\\fR", source)
        self.assertIn('café.tv2', text)

    def test_indexers_find_the_name_and_the_sentence(self):
        if not shutil.which("lexgrog"):
            self.skipTest("man-db is not installed")
        for page in SHARE.glob("man/man*/*"):
            self.assertRegex(output("lexgrog", page), rf': "{page.stem} - \w')

    def test_pages_are_the_same_wherever_they_are_made(self):
        with tempfile.TemporaryDirectory() as temporary:
            folder = pathlib.Path(temporary)
            output(TV2, "manual", folder, env={**os.environ, "SOURCE_DATE_EPOCH": "951868799"})  # end of a leap day
            self.assertIn('"1" "2000-02-29"', (folder / "man/man1/tv2-export.1").read_text())
            output(TV2, "manual", folder)
            for page in ("man/man1/tv2-export.1", "man/man1/tv2.1", "bash-completion/completions/tv2"):
                made, built = (path.read_text().split("\n", 1)[1] for path in (folder / page, SHARE / page))
                self.assertEqual(made, built)  # but for the line with the date
                self.assertNotIn(str(SOURCE), (SHARE / page).read_text())


class Completion(unittest.TestCase):
    def setUp(self):
        if not BASH_COMPLETION.exists():
            self.skipTest("bash-completion is not installed")
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)
        for name in ("walk.bvh", "robot.GLB", "rig.tv2", "my rig.tv2", "notes.txt", "page.html", "drawing.svg"):
            (self.folder / name).touch()
        (self.folder / "out").mkdir()

    def completed(self, *words):
        """What the last word of a line is completed to."""
        script = f'source {BASH_COMPLETION}\nsource "$1"\nshift\nCOMP_WORDS=("$@")\nCOMP_CWORD=$(($# - 1))\n' \
                 'COMP_LINE="$*"\nCOMP_LINE=${COMP_LINE/ = /=}\nCOMP_POINT=${#COMP_LINE}\ncompopt() { :; }\n' \
                 '_tv2 tv2 "${@: -1}" "${@: -2:1}"\nprintf "%s\\n" "${COMPREPLY[@]}"'
        lines = output("bash", "--norc", "-c", script, "bash", SHARE / "bash-completion/completions/tv2", "tv2", *words,
                       cwd=self.folder, env={"PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8"}).splitlines()
        return sorted(line for line in lines if line)

    def test_lines_are_completed(self):
        cases = [
            (["ex"], ["export"]),
            (["--v"], ["--version"]),
            (["manu"], []),
            ([""], sorted([*VERBS, "--help", "--version"])),
            (["export", "--se"], ["--select", "--settings"]),
            (["export", "--no-k"], ["--no-keep-positive-z"]),
            (["export", "--settings", ""], ["none", "stored"]),
            (["export", "--settings", "=", "s"], ["stored"]),
            (["export", "--fps", ""], []),
            (["export", "--take", "w"], []),
            (["export", ""], ["my rig.tv2", "out", "rig.tv2", "robot.GLB", "walk.bvh"]),
            (["export", "--fps", "60", "w"], ["walk.bvh"]),
            (["export", "--dialog-script", "n"], ["notes.txt"]),
            (["info", ""], ["my rig.tv2", "out", "rig.tv2"]),
            (["check", "--like", "r"], ["rig.tv2"]),
            (["check", "--co"], ["--codes"]),
            (["view", "-o", ""], ["out", "page.html"]),
            (["picture", "--view", ""], ["front", "side", "top"]),
            (["menu", ""], []),
            (["wrong", ""], []),
        ]
        for words, expected in cases:
            self.assertEqual(self.completed(*words), expected, words)

    def test_every_option_of_every_verb_is_completed(self):
        for verb in VERBS:
            expected = sorted(name for row, _ in help_rows(verb) for name in option_names(row) if name.startswith("--"))
            self.assertEqual(self.completed(verb, "--"), expected)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
