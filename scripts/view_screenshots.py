#!/usr/bin/env python3
"""Takes the pictures of docs/viewing.md again: scripts/view_screenshots.py [build/bin/tv2]

It needs chromium. Sizes are those of the page in CSS pixels.
"""

import pathlib
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests" / "support"))
from chromium import Browser  # noqa: E402

TV2 = sys.argv[1] if len(sys.argv) > 1 else ROOT / "build" / "bin" / "tv2"
LARGEST = 250_000  # bytes of a picture

CHOOSE = "app.choose(app.scenes[0], app.scenes[0].nodes.findIndex(one => one.name === '{}'))"
PICTURES = {
    "view_walk": ("walk.tv2", CHOOSE.format("LeftLeg"), "app.setTime(0.6)", "app.viewport.free.zoom(0.85)",
                  "app.viewport.free.orbit(-0.25, 0)", "app.viewport.invalidate()"),
    "view_camera": ("walk.tv2", CHOOSE.format("Hips"), "app.setTime(0.3)", "app.curves.choose('translation')",
                    "app.run('look', '1')"),
    "view_mesh": ("dance_Dance.tv2", CHOOSE.format("LowerArm.L"), "app.setTime(1)", "app.viewport.free.zoom(0.8)",
                  "app.viewport.invalidate()"),
}


def run(*arguments):
    if subprocess.run([TV2, *map(str, arguments)], stdout=subprocess.DEVNULL).returncode > 1:  # 1: with losses
        sys.exit(f"tv2 {arguments[0]} failed")


def main():
    with tempfile.TemporaryDirectory() as folder, Browser(1280, 800) as browser:
        folder = pathlib.Path(folder)
        run("export", ROOT / "samples" / "mocap_walk_cameras.fbx", folder / "walk.tv2")
        run("convert", ROOT / "samples" / "robot_14_takes.glb", folder / "dance.tv2")
        browser.prefer("dark")
        for name, (file, *steps) in PICTURES.items():
            run("view", "--no-open", folder / file, "-o", folder / "page.html")
            browser.open(folder / "page.html")
            for step in steps:
                browser.evaluate(step)
            browser.evaluate("new Promise(done => setTimeout(done, 300))")
            picture = browser.screenshot(ROOT / "docs" / f"{name}.png")
            if browser.problems() or len(picture) > LARGEST:
                sys.exit(f"{name}: {len(picture)} bytes, {browser.problems()}")
            print(f"docs/{name}.png: {len(picture):,} bytes")


if __name__ == "__main__":
    main()
