"""Makes the GLBs that the other programs check, with the command, as a user does:

    make_glbs.py COMMAND SCENE_FILES VIEWER_SCENES SAMPLES OUT [SCENES]

exported from the samples and from larger scenes (SCENES), converted from glTF and back, and from
scenes made by code, hostile and others. OUT/manifest.json lists them: "glb", "takes" (the .tv2 of each animation, in
order; none where poses cannot be compared), "at", the one time that a file without animation shows, and "skins",
whether it is skinned as Blender needs it: with the nodes' pose in the file for bind pose.
"""

import json
import pathlib
import shutil
import subprocess
import sys

SCENE_ENDINGS = (".fbx", ".bvh", ".glb", ".gltf", ".dae")
# Model to select, so that the world of the file is that of a selection.
SELECTED = ("mocap_walk_cameras.fbx", "Scene")
# Scenes made by code whose poses are compared. What the others hold has no place in glTF, or comes out otherwise.
POSED = ("sound", "typed", "deep_chain")


class Maker:
    def __init__(self, command, makers, out):
        self.command, self.makers, self.out = command, makers, pathlib.Path(out)
        self.manifest = []
        shutil.rmtree(self.out, ignore_errors=True)
        self.out.mkdir(parents=True)

    def folder(self, name):
        made = self.out / name
        made.mkdir()
        return made

    def run(self, *arguments, allowed=(0,)):
        done = subprocess.run([self.command, *map(str, arguments)], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              encoding="utf-8", errors="replace", timeout=300)
        if done.returncode not in allowed:
            sys.exit(f"tv2 {' '.join(map(str, arguments))} ended with {done.returncode}:\n{done.stdout}")

    def convert(self, takes, glb, *options, poses=True, at=None):
        """Losses are allowed: the scenes have what glTF has no place for."""
        self.run("convert", *options, *takes, glb, allowed=(0, 1))
        self.manifest.append({"glb": str(glb), "takes": [str(take) for take in takes] if poses else [], "at": at,
                              "skins": takes[0].parent.name != "code"})

    def convert_export(self, scene, name, *options):
        folder = self.folder(name)
        self.run("export", "--quiet", "--all-takes", *options, scene, folder / ".tv2")
        takes = sorted(folder.glob("*.tv2"))
        if not takes:
            sys.exit(f"{scene}: no take was exported")
        self.convert(takes, folder / "all.glb")
        return takes

    def exports(self, samples, scenes):
        found = {path.name: path for folder in filter(None, (scenes, samples))
                 for path in sorted(pathlib.Path(folder).iterdir()) if path.suffix in SCENE_ENDINGS}
        for name, path in sorted(found.items()):
            self.convert_export(path, name)
        robot = self.out / "robot_14_takes.glb"
        self.convert([robot / "Dance.tv2"], robot / "one.gltf")
        self.convert([robot / "Dance.tv2"], robot / "at.glb", "--at", "0.5", at=0.5)
        for turned in ("keep-positive-z", "no-keep-positive-z"):
            self.convert_export(pathlib.Path(samples) / SELECTED[0], turned + "_selected", "--" + turned, "--select",
                                SELECTED[1])
            self.convert_export(pathlib.Path(samples) / SELECTED[0], turned, "--" + turned)

    def round_trips(self, samples):
        for name in ("robot_14_takes", "extras_property"):
            folder = self.folder(name + "_back")
            self.run("convert", pathlib.Path(samples) / (name + ".glb"), folder / "back.tv2", allowed=(0, 1))
            takes = sorted(folder.glob("*.tv2"))
            if not takes:
                sys.exit(f"{name}: nothing came of its conversion")
            self.convert(takes, folder / "back.glb")

    def made_by_code(self):
        folder = self.folder("code")
        for maker in self.makers:
            subprocess.run([maker, "make", folder], check=True)
        for scene in sorted(folder.glob("*.tv2")):
            self.convert([scene], scene.with_suffix(".glb"), poses=scene.stem in POSED)


def main(command, scene_files, viewer_scenes, samples, out, scenes=""):
    maker = Maker(command, (scene_files, viewer_scenes), out)
    maker.made_by_code()
    maker.exports(samples, scenes)
    maker.round_trips(samples)
    (maker.out / "manifest.json").write_text(json.dumps(maker.manifest, indent=1))
    print(f"{len(maker.manifest)} GLBs made" + ("" if scenes else "; larger scenes: TV2_SCENES_DIR is not set"))


if __name__ == "__main__":
    main(*sys.argv[1:])
