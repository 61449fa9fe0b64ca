"""Blender opens the GLBs that we write, and has every node, camera and light where the format library has it, and the
vertices of every mesh: blender_test.py MADE SCENE_FILES."""

import json
import os
import pathlib
import subprocess
import sys

TESTS = pathlib.Path(__file__).resolve().parent.parent
sys.path[:0] = [str(TESTS / "support"), str(TESTS / "glb")]

import glb_file  # noqa: E402
import needed  # noqa: E402
import poses  # noqa: E402

MOST_TIMES = 40  # of each animation
MOST_VERTEX_TIMES = 5  # of the first and the last animation


def from_blender(point):
    """Blender's Z is up."""
    return (point[0], point[2], -point[1])


def world_in_gltf(thing):
    """World matrix of a Blender object, with the axes that its node has in glTF. Cameras and lights keep theirs; those
    of everything else are turned with the world."""
    m = thing["matrix"]
    rows = [m[0:4], m[8:12], [-number for number in m[4:8]]]
    if thing["kind"] not in ("CAMERA", "LIGHT"):
        rows = [[row[0], row[2], -row[1], row[3]] for row in rows]
    return [number for row in rows for number in row]


class Check:
    """One animation of one GLB."""

    def __init__(self, entry, animation, scene_files, with_vertices, copy):
        self.name = f"{entry['glb']}, animation {animation}" + (", vertices" if with_vertices else "")
        self.with_vertices, self.skins = with_vertices, entry["skins"]
        self.document, self.binary = glb_file.read(entry["glb"])
        most = MOST_VERTEX_TIMES if with_vertices else MOST_TIMES
        self.expected = poses.Expected(scene_files, entry["takes"][animation], most, entry["at"])
        self.copy = copy
        glb_file.write(copy, glb_file.posing_copy(self.document, animation, with_vertices), self.binary)

    def job(self):
        return {"glb": str(self.copy), "vertices": self.with_vertices,
                "times": [time - self.expected.start for time in self.expected.times]}

    def deviation(self, answer):
        if self.with_vertices:
            return self._compare_vertices(answer)
        return poses.compare_nodes(self.expected, self.document,
                                   lambda pose, gltf: world_in_gltf(answer[pose]["objects"][f"n{gltf}"]))

    def _compare_vertices(self, answer):
        worst = poses.Deviation(self.expected.size())
        for pose, time in enumerate(self.expected.times):
            for gltf, points in poses.pair_meshes(self.expected.meshes(pose), self.document):
                if "skin" in self.document["nodes"][gltf] and not self.skins:
                    continue
                name = self.document["nodes"][gltf].get("name", "")
                mesh = self.document["meshes"][self.document["nodes"][gltf]["mesh"]]
                used = [corner for primitive in mesh["primitives"]
                        for corner in glb_file.corners(self.document, self.binary, primitive)]
                actual = answer[pose]["vertices"][f"n{gltf}"]
                if len(actual) != len(used):
                    worst.where = f"{len(actual)} vertices, not {len(used)}, in {name!r}"
                    return worst
                for corner, point in zip(used, actual):
                    worst.add_point(from_blender(point), points[corner], f"vertex {corner} of {name!r}, {time:g} s")
        if worst.count == 0:
            worst.where = "nothing was compared"
        return worst


def checks_of(entry, scene_files, folder):
    animations = range(len(entry["takes"]))
    for animation in animations:
        yield Check(entry, animation, scene_files, False, folder / f"{animation}.glb")
    if "meshes" in glb_file.read(entry["glb"])[0]:
        for animation in sorted({animations[0], animations[-1]}):
            yield Check(entry, animation, scene_files, True, folder / f"{animation}_vertices.glb")


def main(made, scene_files):
    blender = needed.program("blender")
    made = pathlib.Path(made)
    work = made / "blender"
    checks = []
    for number, entry in enumerate(json.loads((made / "manifest.json").read_text())):
        if entry["takes"] and entry["glb"].endswith(".glb"):
            folder = work / str(number)
            folder.mkdir(parents=True, exist_ok=True)
            checks.extend(checks_of(entry, scene_files, folder))
    (work / "jobs.json").write_text(json.dumps([check.job() for check in checks]))
    # Debian's Blender looks for its modules beside the first Python on the path.
    environment = dict(os.environ, PATH="/usr/bin:/bin")
    ran = subprocess.run([blender, "-b", "--factory-startup", "--python-exit-code", "3", "-P",
                          TESTS / "blender/poses.py", "--", work / "jobs.json", work / "answers.json"],
                         stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8", errors="replace",
                         env=environment)
    if ran.returncode != 0:
        if "No module named 'numpy'" in ran.stdout:
            needed.skip("python3-numpy, which Blender's importer needs, is not installed")
        print(ran.stdout[-4000:])
        return 1
    failed = 0
    for check, answer in zip(checks, json.loads((work / "answers.json").read_text())):
        worst = check.deviation(answer)
        print(f"{check.name}: {worst}")
        failed += worst.where is not None
    print(f"{len(checks)} animations compared, {failed} with deviations")
    return 1 if failed or not checks else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
