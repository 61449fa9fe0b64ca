"""three.js shows the GLBs that we write: its GLTFLoader, in Chromium, says nothing of them, has every node where the
format library has it, and draws the meshes. three_test.py MADE SCENE_FILES"""

import base64
import json
import os
import pathlib
import sys

TESTS = pathlib.Path(__file__).resolve().parent.parent
sys.path[:0] = [str(TESTS / "support"), str(TESTS / "glb")]

import chromium  # noqa: E402
import glb_file  # noqa: E402
import needed  # noqa: E402
import poses  # noqa: E402

THREE = pathlib.Path("/usr/share/javascript/three")  # of Debian's libjs-three
SCRIPTS = ("three.min.js", "examples/js/loaders/GLTFLoader.js")
MOST_TIMES = 20  # of each animation
LEAST_COVERED = 0.005  # of the picture, by the meshes

PAGE = """<!doctype html><meta charset="utf-8"><title>three.js</title><body>
{scripts}
"""


def load(browser, data, plays):
    browser.call("load", base64.b64encode(data).decode(), plays)


def lacks_images(document, folder):
    return any("uri" in image and not image["uri"].startswith("data:") and not (folder / image["uri"]).exists()
               for image in document.get("images", []))


def compare_poses(browser, entry, animation, scene_files, copy):
    """The worst deviation of one animation."""
    document, binary = glb_file.read(entry["glb"])
    expected = poses.Expected(scene_files, entry["takes"][animation], MOST_TIMES, entry["at"])
    glb_file.write(copy, glb_file.posing_copy(document, animation, False), binary)
    load(browser, copy.read_bytes(), True)
    answer = browser.call("worlds", [time - expected.start for time in expected.times])
    return poses.compare_nodes(expected, document, lambda pose, gltf: answer[pose][gltf])


def faults_of(browser, entry, scene_files, work):
    """What is wrong with a GLB in three.js."""
    path = pathlib.Path(entry["glb"])
    document, binary = glb_file.read(path)
    shown = path
    if lacks_images(document, path.parent):
        shown = work / "shown.glb"
        glb_file.write(shown, glb_file.posing_copy(document, 0, True), binary)
    try:
        load(browser, shown.read_bytes(), False)
        draws = "meshes" in document and entry["takes"]
        covered = max(browser.call("draw", side) for side in (-1, 1)) if draws else None
    except chromium.PageError as error:
        return [str(error)]
    faults = []
    if covered is not None:
        print(f"{path}: meshes cover {100 * covered:.1f} % of the picture")
        browser.screenshot(path.with_suffix(".png"))
        if covered < LEAST_COVERED:
            faults.append("the picture is empty")
    for animation in range(len(entry["takes"])):
        worst = compare_poses(browser, entry, animation, scene_files, work / "copy.glb")
        print(f"{path}, animation {animation}: {worst}")
        if worst.where:
            faults.append(f"animation {animation}: {worst.where}")
    return faults


def main(made, scene_files):
    if chromium.find() is None:
        needed.skip("chromium is not installed")
    folder = pathlib.Path(os.environ.get("TV2_THREE_FOLDER", THREE))
    missing = [script for script in SCRIPTS if not (folder / script).exists()]
    if missing:
        needed.skip(f"{folder / missing[0]} (libjs-three) is not installed")
    work = pathlib.Path(made) / "three"
    work.mkdir(exist_ok=True)
    page = work / "three.html"
    sources = [folder / script for script in SCRIPTS] + [TESTS / "glb/three.js"]
    page.write_text(PAGE.format(scripts="\n".join(f'<script src="{source.as_uri()}"></script>' for source in sources)))
    failed = count = 0
    with chromium.Browser(320, 240) as browser:
        for entry in json.loads((pathlib.Path(made) / "manifest.json").read_text()):
            if not entry["glb"].endswith(".glb"):
                continue
            browser.open(page)
            faults = faults_of(browser, entry, scene_files, work)
            faults += [f"{problem['level']}: {problem['text']}" for problem in browser.problems()]
            for fault in faults:
                print(f"{entry['glb']}: {fault}")
            count += 1
            failed += bool(faults)
    print(f"{count} GLBs shown, {failed} with faults")
    return 1 if failed or not count else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
