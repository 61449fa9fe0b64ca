"""Every public name has a docstring and a stub; every example in docs/python.md and in docstrings runs."""

import ast
import doctest
import inspect
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

import tev2
from scene_files import SAMPLES, exported

PACKAGE = pathlib.Path(tev2.__file__).parent
DOCUMENT = SAMPLES.parent / "docs" / "python.md"

QUICK_STUBS = {
    "numpy/__init__.pyi": "float32: Any\nint32: Any\ndef linspace(*args: Any) -> Any: ...\n",
    "numpy/typing.pyi": "ArrayLike = Any\nT = TypeVar('T')\nclass NDArray(Generic[T]):\n"
                        "    def __getattr__(self, name: str) -> Any: ...\n"
                        "    def __getitem__(self, index: Any) -> Any: ...\n",
    "matplotlib/__init__.pyi": "",
    "matplotlib/pyplot.pyi": "def subplots(**more: Any) -> Any: ...\n",
}


def public_members(value):
    return {name: getattr(value, name) for name in vars(value) if not name.startswith("_")}


def defined(nodes):
    """Names in a body of a stub, those of classes with their members."""
    found = {}
    for entry in nodes:
        if isinstance(entry, ast.ClassDef):
            found[entry.name] = defined(entry.body)
        elif isinstance(entry, ast.FunctionDef):
            found[entry.name] = entry
        elif isinstance(entry, ast.AnnAssign):
            found[entry.target.id] = entry
        elif isinstance(entry, ast.ImportFrom):
            found.update({name.name: name for name in entry.names})
    return found


class Documentation(unittest.TestCase):
    def test_all_public_names_have_docstrings(self):
        for name in tev2.__all__:
            value = getattr(tev2, name)
            if name.startswith("__"):
                continue
            self.assertTrue(inspect.getdoc(value), name)
            for member, of_member in public_members(value).items() if inspect.isclass(value) else ():
                self.assertTrue(inspect.getdoc(of_member), f"{name}.{member}")

    def test_all_public_names_have_stubs(self):
        stubs = defined(ast.parse((PACKAGE / "_tev2.pyi").read_text(encoding="utf-8")).body)
        inherited = {"clear", "pop", "popitem", "setdefault", "update", "count", "index"}
        for name in set(tev2.__all__) & {name for name in vars(tev2._tev2)}:
            self.assertIn(name, stubs)
            value = getattr(tev2, name)
            if inspect.isclass(value):
                missing = public_members(value).keys() - stubs[name].keys() - inherited
                self.assertEqual(missing, set(), name)
                self.assertEqual(stubs[name].keys() - set(dir(value)), set(), name)

    def run_examples(self, *tests):
        runner = doctest.DocTestRunner(optionflags=doctest.ELLIPSIS | doctest.NORMALIZE_WHITESPACE)
        before = os.getcwd()
        with tempfile.TemporaryDirectory() as folder:
            shutil.copy(exported("robot_14_takes.glb"), os.path.join(folder, "dance.tv2"))
            shutil.copy(SAMPLES / "robot_14_takes.glb", os.path.join(folder, "robot.glb"))
            os.chdir(folder)
            try:
                for test in tests:
                    runner.run(test)
            finally:
                os.chdir(before)
        self.assertEqual(runner.failures, 0)
        self.assertGreater(runner.tries, 0)

    def test_examples_of_the_document_run(self):
        text = DOCUMENT.read_text(encoding="utf-8")
        code = "\n".join(re.findall(r"^```pycon\n(.*?)^```", text, re.DOTALL | re.MULTILINE))
        self.run_examples(doctest.DocTestParser().get_doctest(code, {}, "python.md", str(DOCUMENT), 0))

    def test_examples_of_docstrings_run(self):
        finder = doctest.DocTestFinder(exclude_empty=True)
        tests = [test for name in tev2.__all__ for test in finder.find(getattr(tev2, name), name, module=False)]
        self.run_examples(*(test for test in tests if test.examples))

    def test_types_of_the_document_and_the_example_fit(self):
        if not os.path.exists("/usr/bin/mypy"):
            self.skipTest("mypy is not installed")
        text = DOCUMENT.read_text(encoding="utf-8")
        code = "\n".join(re.findall(r"^```pycon\n(.*?)^```", text, re.DOTALL | re.MULTILINE))
        examples = doctest.DocTestParser().get_examples(code)
        with tempfile.TemporaryDirectory() as folder:
            script = pathlib.Path(folder) / "document.py"
            for module, stub in QUICK_STUBS.items():  # reading NumPy's own takes long
                file = pathlib.Path(folder) / module
                file.parent.mkdir(exist_ok=True)
                file.write_text("from typing import Any, Generic, TypeVar\n" + stub, encoding="utf-8")
            script.write_text("".join(example.source for example in examples), encoding="utf-8")
            done = subprocess.run(["/usr/bin/mypy", "--cache-dir", folder, "--ignore-missing-imports", str(script),
                                   str(SAMPLES.parent / "examples" / "plot_foot_height.py")],
                                  capture_output=True, text=True,
                                  env={**os.environ, "MYPYPATH": f"{folder}:{PACKAGE.parent}"})
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)


class Example(unittest.TestCase):
    SCRIPT = SAMPLES.parent / "examples" / "plot_foot_height.py"

    def plot(self, *arguments):
        return subprocess.run([sys.executable, "-B", str(self.SCRIPT), *map(str, arguments)], capture_output=True,
                              text=True, env={**os.environ, "MPLBACKEND": "Agg"})

    def test_plots_the_height_of_a_foot(self):
        try:
            import matplotlib  # noqa: F401
        except ImportError:
            self.skipTest("python3-matplotlib is not installed")
        with tempfile.TemporaryDirectory() as folder:
            picture = pathlib.Path(folder) / "foot.svg"
            done = self.plot(exported("robot_14_takes.glb"), picture)
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertIn("height (m)", picture.read_text(encoding="utf-8"))
            done = self.plot(exported("robot_14_takes.glb"), picture, "Foot.X")
            self.assertIn("Foot.X", done.stderr)
            sys.path.insert(0, str(self.SCRIPT.parent))
            from plot_foot_height import heights
        times, curves = heights(exported("robot_14_takes.glb"))
        scene = tev2.load(exported("robot_14_takes.glb"))
        self.assertEqual(sorted(curves), sorted(node.name for node in scene.nodes if node.name.startswith("Foot")))
        scene.set_time(times[50])
        for name, curve in curves.items():  # its world has -Z up
            self.assertAlmostEqual(curve[50], -scene.nodes[name].world_matrix[2, 3], places=5)


if __name__ == "__main__":
    unittest.main()
