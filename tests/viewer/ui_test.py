"""Uses the page of `tv2 view` as people do, with keys and pointer, in a browser.

    ui_test.py TV2 SAMPLES
"""

import json
import math
import pathlib
import statistics
import struct
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "support"))
import chromium  # noqa: E402
import needed  # noqa: E402

TV2, SAMPLES = sys.argv[1], pathlib.Path(sys.argv[2])
CAMERAS = [0] * 10 + [-1] * 10 + [2] * 21  # of the samples of the walk


def run(*arguments):
    return subprocess.run([TV2, *map(str, arguments)], check=True, capture_output=True, text=True).stdout


def answer(*arguments):
    return json.loads(run(*arguments, "--json"))


def write_with_cuts(walk, out):
    """The sample's switcher has nothing on air in all its 41 samples: gives it cameras."""
    nothing = struct.pack("<I41i", 41, *[-1] * 41)
    data = walk.read_bytes()
    assert data.count(nothing) == 1
    out.write_bytes(data.replace(nothing, struct.pack("<I41i", 41, *CAMERAS)))


def write_bvh(path, joints, frames):
    """Chains of ten joints below one root."""
    lines, open_joints = ["HIERARCHY", "ROOT root", "{"], 1
    lines += ["OFFSET 0 0 0", "CHANNELS 6 Xposition Yposition Zposition Zrotation Xrotation Yrotation"]
    for i in range(1, joints):
        if open_joints > 10:
            lines += ["End Site", "{", "OFFSET 0 1 0", "}"] + ["}"] * 10
            open_joints = 1
        lines += [f"JOINT joint{i}", "{", f"OFFSET {i // 10 % 50} 3 {i // 500}"]
        lines += ["CHANNELS 3 Zrotation Xrotation Yrotation"]
        open_joints += 1
    lines += ["End Site", "{", "OFFSET 0 1 0", "}"] + ["}"] * open_joints
    lines += ["MOTION", f"Frames: {frames}", "Frame Time: 0.0333333"]
    for frame in range(frames):
        lines.append(" ".join(f"{20 * math.sin(frame * 0.3 + channel):.3f}" for channel in range(3 * joints + 3)))
    path.write_text("\n".join(lines))


class Page(unittest.TestCase):
    """One browser; each test loads its page anew and ends without an error in the console."""

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory(prefix="viewer_")
        folder = cls.folder_path = pathlib.Path(cls.folder.name)
        run("export", SAMPLES / "mocap_walk_cameras.fbx", folder / "plain.tv2")
        write_with_cuts(folder / "plain.tv2", folder / "walk.tv2")
        for take in ("Walking", "Running"):
            run("export", "--take", take, SAMPLES / "robot_14_takes.glb", folder / f"{take}.tv2")
        # Exit code 1: textures are lost.
        subprocess.run([TV2, "convert", SAMPLES / "robot_14_takes.glb", folder / "robot.tv2"], capture_output=True,
                       check=False)
        run("export", SAMPLES / "user_property_kinds.fbx", folder / "properties.tv2")
        write_bvh(folder / "crowd.bvh", 5000, 4)
        run("export", folder / "crowd.bvh", folder / "crowd.tv2")
        for name, files in {"walk": ["walk"], "two": ["Walking", "Running"], "properties": ["properties"],
                            "crowd": ["crowd"], "across": ["walk", "robot_Walking"]}.items():
            run("view", "--no-open", *(folder / f"{file}.tv2" for file in files), "-o", folder / f"{name}.html")
        cls.walk_nodes = answer("dump", folder / "walk.tv2")["matrixHierarchy"]["nodes"]
        cls.browser = chromium.Browser(1280, 800)

    @classmethod
    def tearDownClass(cls):
        cls.browser.close()
        cls.folder.cleanup()

    def setUp(self):
        self.browser.resize(1280, 800)

    def open(self, name):
        self.browser.open(self.folder_path / f"{name}.html")
        self.settle()

    def settle(self):
        """Waits until the page has drawn what has changed."""
        self.value("new Promise(done => requestAnimationFrame(() => requestAnimationFrame(done)))")

    def tearDown(self):
        self.assertEqual(self.browser.problems(), [])

    def value(self, expression):
        return self.browser.evaluate(expression)

    def press(self, *keys):
        for key in keys:
            self.browser.press(key)

    def time(self):
        return self.value("app.time")

    def text(self, selector):
        return self.browser.call("selector => document.querySelector(selector).textContent", selector)

    def choose(self, name):
        self.browser.call("""name => {
            const [scene] = app.scenes;
            app.choose(scene, scene.nodes.findIndex(one => one.name === name));
        }""", name)

    def node(self, name):
        return next(node for node in self.walk_nodes if node["name"] == name)

    def box(self, selector):
        return self.browser.call("""selector => {
            const box = document.querySelector(selector).getBoundingClientRect();
            return [box.left, box.top, box.right, box.bottom];
        }""", selector)

    # Playing

    def test_it_asks_for_nothing_but_itself(self):
        self.open("walk")
        self.assertEqual(len(self.browser.requests), 1, self.browser.requests)
        self.assertIn("walk", self.value("document.title"))
        self.assertEqual(self.text("#files"), "walk.tv2")
        facts = self.value("Array.from(document.querySelectorAll('#facts li'), one => one.textContent)")
        self.assertEqual(facts, ["1.333 s", "30 samples a second", "77 nodes", "3 cameras", "-Z up"])

    def test_play_goes_on_and_starts_again(self):
        self.open("walk")
        self.press("Space")
        self.browser.wait_for("app.time > 0.1")
        self.value("app.setTime(1.25)")
        self.browser.wait_for("app.time < 0.5")
        self.press("Space")
        stopped = self.time()
        self.settle()
        self.assertEqual(self.time(), stopped)

        self.press("L")
        self.value("app.setTime(1.2)")
        self.press("Space")
        self.browser.wait_for("!app.playing")
        self.assertAlmostEqual(self.time(), 4 / 3, 6)
        self.press("Space")  # from the end it starts again
        self.browser.wait_for("app.playing && app.time < 1")

    def test_it_plays_as_fast_as_asked(self):
        self.open("walk")
        for key, speed in (("[", 0.5), ("[", 0.25), ("]", 0.5), ("]", 1)):
            self.press(key)
            self.assertEqual(float(self.value("document.getElementById('speed').value")), speed)
        for speed in (0.25, 2):
            self.value(f"app.setSpeed({speed})")
            # Time of the page over time of the screen, from frame to frame; where the take starts again, left out.
            ratios = self.value("""new Promise(done => {
                app.setTime(0);
                app.setPlaying(true);
                const ratios = [];
                let before = null;
                requestAnimationFrame(function next(now) {
                    if (before && app.time > before[1] && now - before[0] < 200)
                        ratios.push((app.time - before[1]) * 1000 / (now - before[0]));
                    before = [now, app.time];
                    if (ratios.length < 15) return requestAnimationFrame(next);
                    app.setPlaying(false);
                    done(ratios);
                });
            })""")
            self.assertAlmostEqual(statistics.median(ratios), speed, delta=0.02 * speed)

    def test_steps_land_on_samples_and_keys(self):
        self.open("walk")
        samples = self.node("Hips")["translation"]["m_times"]  # kept in all samples
        self.assertEqual(len(samples), 41)
        for expected in samples[1:4]:
            self.press("ArrowRight")
            self.assertEqual(self.time(), struct.unpack("f", struct.pack("f", expected))[0])
        self.press("ArrowLeft")
        self.assertAlmostEqual(self.time(), samples[2], 6)
        self.press("End")
        self.assertAlmostEqual(self.time(), samples[-1], 6)
        self.press("ArrowLeft")
        self.assertAlmostEqual(self.time(), samples[-2], 6)
        self.press("Home")
        self.assertEqual(self.time(), 0)

        thinned = min((node for node in self.walk_nodes if 5 < len(node["rotation"]["m_times"]) < 41),
                      key=lambda node: len(node["rotation"]["m_times"]))
        keys = sorted(set(thinned["rotation"]["m_times"]) | set(thinned["translation"]["m_times"]))
        self.choose(thinned["name"])
        for expected in keys[1:]:
            self.press(".")
            self.assertAlmostEqual(self.time(), expected, 6)
        self.press(".")
        self.assertAlmostEqual(self.time(), keys[-1], 6)
        for expected in reversed(keys[:-1]):
            self.press(",")
            self.assertAlmostEqual(self.time(), expected, 6)

    def test_scrubbing(self):
        self.open("walk")
        left, top, right, bottom = self.box("#timeline canvas")
        y = (top + bottom) / 2
        self.browser.drag((left + 300, y), (right - 1, y))
        self.assertAlmostEqual(self.time(), 4 / 3, 6)
        self.browser.drag((right - 100, y), (left + 1, y))
        self.assertEqual(self.time(), 0)
        # Where the playhead was put, it is: the nearest sample within half of one.
        for x in (left + 250, left + 517):
            self.browser.click(x, y)
            self.settle()
            shown = self.box("#timeline .playhead")[0]
            sample = self.value("app.timeline.chart.plotWidth") / 40
            self.assertLessEqual(abs(shown - x), sample / 2 + 1)
            self.assertAlmostEqual(self.time() * 30, round(self.time() * 30), 4)
        zoomed = self.value("app.span.to - app.span.from")
        self.browser.wheel(left + 400, y, -400)
        self.browser.wait_for(f"app.span.to - app.span.from < {zoomed} * 0.7")
        self.press("A")
        self.assertAlmostEqual(self.value("app.span.to - app.span.from"), 4 / 3, 6)

    # Looking

    def test_cameras_and_switcher(self):
        self.open("walk")
        names = [f"Camera0{i}" for i in (1, 2, 3)]
        for key, name in zip("123", names):
            self.press(key)
            self.settle()
            self.assertEqual(self.text("#view-label bdi"), name)
            self.assertRegex(self.text("#view-label .lens"), r"^1\.00:1\s+15\.19\u00b0$")  # 0.26510307 rad
        self.press("9")  # there are three
        self.assertEqual(self.value("app.camera"), 2)
        self.press("S")
        for i in (0, 9, 10, 19, 20, 40):
            self.value(f"app.setTime({i} / 30 + 0.01)")
            self.settle()
            expected = names[CAMERAS[i]] if CAMERAS[i] >= 0 else "nothing on air"
            self.assertIn(expected, self.text("#view-label"))
        self.press("0")
        self.settle()
        self.assertEqual(self.text("#view-label"), "")
        self.browser.evaluate("document.getElementById('camera').focus()")
        self.press("ArrowDown")
        self.assertEqual(self.value("app.camera"), "switcher")
        self.press("Space")  # opens the list, and does not play
        self.assertFalse(self.value("app.playing"))

    def test_options_of_the_view_are_buttons_and_keys(self):
        self.open("walk")
        meshes = "document.querySelector('[data-command=meshes]')"
        self.press("M")  # there are none
        self.assertEqual(self.value(f"[{meshes}.disabled, {meshes}.ariaPressed]"), [True, "false"])
        self.open("across")
        self.assertEqual(self.value(f"[{meshes}.disabled, {meshes}.ariaPressed]"), [False, "true"])
        for key, option in (("B", "bones"), ("N", "names"), ("M", "meshes")):
            before = self.value(f"app.viewport.options.{option}")
            self.press(key)
            self.assertEqual(self.value(f"app.viewport.options.{option}"), not before)
            button = f"[data-command={option}]"
            pressed = f"document.querySelector('{button}').getAttribute('aria-pressed')"
            self.assertEqual(self.value(pressed), str(not before).lower())
            self.browser.click_on(button)
            self.assertEqual(self.value(pressed), str(before).lower())
        free = self.value("JSON.stringify(app.viewport.free)")
        self.browser.press("ArrowLeft", "Shift")
        self.assertNotEqual(self.value("JSON.stringify(app.viewport.free)"), free)

    # Nodes

    def test_search(self):
        self.open("walk")
        expected = [node["name"] for node in self.walk_nodes if "hand" in node["name"].lower()]
        self.press("/")
        self.browser.type("hand")
        self.assertEqual(self.text("#tree-count"), f"{len(expected)} of 77 nodes")
        for name in (expected + expected[:1])[:3]:
            self.press("Enter")
            self.assertEqual(self.text("#details h2 bdi"), name)
        self.press("Escape")
        self.assertEqual(self.text("#tree-count"), "77 nodes")
        self.assertEqual(self.value("app.scenes[0].nodes[app.chosen.node].name"), name)

    def test_letters_typed_into_fields_are_no_commands(self):
        self.open("two")
        state = """JSON.stringify([app.playing, app.looping, app.speed, app.viewport.options, app.compare.mode,
                                   app.time, app.span.from, app.camera])"""
        before = self.value(state)
        for field, keys in (("#search", "l[]bnmsc0.,/ "), ("#offset", ".0")):
            self.value(f"document.querySelector('{field}').focus()")
            for key in keys:
                self.browser.press("Space" if key == " " else key)
            self.press("Home", "End")
        self.assertEqual(self.value("document.getElementById('search').value"), "l[]bnmsc0.,/ ")
        self.assertEqual(self.value(state), before)

    def test_the_list_by_keyboard(self):
        self.open("walk")
        self.choose("Hips")
        self.value("app.tree.tree.focus()")
        row = "app.scenes[0].nodes[app.chosen.node].name"
        self.press("ArrowDown")
        below = self.value(row)
        self.assertEqual(below, self.walk_nodes[self.walk_nodes.index(self.node("Hips")) + 1]["name"])
        self.press("ArrowUp")
        self.assertEqual(self.value(row), "Hips")
        rows = self.value("app.tree.rows.length")
        self.press("Enter")
        self.assertLess(self.value("app.tree.rows.length"), rows)
        self.choose(below)  # opens what is above it
        self.assertEqual(self.value("app.tree.rows.length"), rows)

    def test_thousands_of_nodes(self):
        self.open("crowd")
        nodes = self.value("app.scenes[0].nodes.length")
        self.assertGreaterEqual(nodes, 5000)
        self.assertLess(self.value("document.querySelectorAll('#tree .node').length"), 100)
        self.press("/")
        self.browser.type("joint4999")
        self.assertEqual(self.text("#tree-count"), f"2 of {nodes:,} nodes")  # the joint, and the end of its chain
        self.press("Enter")
        self.assertEqual(self.text("#details h2 bdi"), "joint4999")
        self.press("Escape")
        chosen = "document.querySelector('#tree [aria-selected=true]')"
        self.assertEqual(self.value(chosen + ".querySelector('.name').textContent"), "joint4999")
        self.assertTrue(self.value(f"""(() => {{
            const row = {chosen}.getBoundingClientRect(), list = app.tree.tree.getBoundingClientRect();
            return row.top >= list.top - 1 && row.bottom <= list.bottom + 1;
        }})()"""))

    # Values

    def test_details_are_those_of_the_command(self):
        self.open("walk")
        self.choose("Head")
        for at in (0.5, 0.52):  # on a sample and between two
            self.value(f"app.setTime({at})")
            self.settle()
            head = answer("tree", "--at", at, "--node", "Head", self.folder_path / "walk.tv2")["nodes"][0]
            shown = self.value("""Array.from(document.querySelectorAll('#details .pose .values'),
                row => Array.from(row.children, one => Number(one.textContent)))""")
            expected = [(head["local"]["translation"], 6e-5), (head["local"]["degrees"], 6e-3),
                        (head["local"]["rotation"], 6e-5), (head["world"][3::4], 6e-5)]
            for values, (wanted, tolerance) in zip(shown, expected):
                for value, want in zip(values, wanted, strict=True):
                    self.assertAlmostEqual(value, want, delta=tolerance)

    def test_curves_read_values_at_keys(self):
        self.open("walk")
        self.choose("Hips")
        self.browser.evaluate("app.curves.choose('translation')")
        track = self.node("Hips")["translation"]
        key = 17
        left, top, _, bottom = self.box("#curve-chart")
        x = left + self.value(f"app.curves.chart.x({track['m_times'][key]})")
        self.browser.move(x + 2, (top + bottom) / 2)
        numbers = self.value("""Array.from(document.querySelectorAll('#curve-chart .number'),
                                           one => parseFloat(one.textContent))""")
        value = track["m_values"][key]
        for shown, want in zip(numbers, value.values() if isinstance(value, dict) else value, strict=True):
            self.assertAlmostEqual(shown, want, delta=6e-5)
        self.assertIn("frame 17 \u00b7 key", self.text("#curve-chart .time"))

    def test_angles_go_on_over_whole_turns(self):
        self.open("walk")
        # Two and a half turns about Z after a turn about X, which passes 180 degrees five times.
        angles = [[20, 0, step * 10] for step in range(91)]
        quaternions = [self.quaternion(*map(math.radians, one)) for one in angles]
        found = self.browser.call("""quaternions => {
            const euler = new ContinuousEuler();
            return quaternions.map(q => Array.from(euler.next(q)));
        }""", quaternions)
        for shown, want in zip(found, angles, strict=True):
            for one, other in zip(shown, want):
                self.assertAlmostEqual(one, other, 6)

    @staticmethod
    def quaternion(x, y, z):
        """Of turns about X, then Y, then Z."""
        def times(p, q):
            a, b, c, d = p
            e, f, g, h = q
            return (a * h + d * e + b * g - c * f, b * h + d * f + c * e - a * g, c * h + d * g + a * f - b * e,
                    d * h - a * e - b * f - c * g)
        about = [[0.0, 0.0, 0.0, math.cos(angle / 2)] for angle in (x, y, z)]
        for axis, angle in enumerate((x, y, z)):
            about[axis][axis] = math.sin(angle / 2)
        return list(times(about[2], times(about[1], about[0])))

    def test_properties(self):
        self.open("properties")
        self.choose("animated")
        answered = answer("tree", "--at", 2, "--node", "animated", self.folder_path / "properties.tv2")["nodes"][0]
        self.value("app.setTime(2)")
        self.settle()
        shown = self.value("""Object.fromEntries(Array.from(document.querySelectorAll('#details .label'),
            one => [one.textContent, Array.from(one.nextSibling.children, value => value.textContent)]))""")
        self.assertGreater(len(answered["properties"]), 4)
        for one in answered["properties"]:
            if one["kind"] == "texts":
                continue
            values = one["value"] if isinstance(one["value"], list) else [one["value"]]
            for text, want in zip(shown[one["name"]], values, strict=True):
                self.assertAlmostEqual(float(text), want, delta=6e-5)

    # Two files

    def test_comparing_two_files(self):
        self.open("two")
        self.choose("Head")
        self.browser.evaluate("document.getElementById('offset').select()")
        self.browser.type("0.25")
        self.assertAlmostEqual(self.value("app.span.end"), self.value("app.scenes[1].end") + 0.25, 6)
        self.value("document.activeElement.blur()")
        self.value("app.setTime(0.5)")
        self.settle()
        worlds = [answer("tree", "--at", at, "--node", "Head", self.folder_path / f"{take}.tv2")["nodes"][0]["world"]
                  for take, at in (("Walking", 0.5), ("Running", 0.25))]
        apart = math.dist(worlds[0][3::4], worlds[1][3::4]) * 1000
        trace = sum(worlds[0][i] * worlds[1][i] for i in range(12) if i % 4 != 3)
        turned = math.degrees(math.acos(max(-1, min(1, (trace - 1) / 2))))
        shown = self.value("""Object.fromEntries(Array.from(document.querySelectorAll('#details .label'),
            one => [one.textContent.trim(), one.nextSibling.textContent]))""")
        self.assertGreater(apart, 10)
        self.assertAlmostEqual(float(shown["Distance"].removesuffix(" mm")), apart, delta=0.02)
        self.assertAlmostEqual(float(shown["Angle"].removesuffix("\u00b0")), turned, delta=0.02)
        visible = "app.viewport.layers.map(layer => layer.visible)"
        for expected in ([True, False], [False, True], [True, True]):
            self.press("C")
            self.assertEqual(self.value(visible), expected)

    def test_another_up_axis_is_said_first(self):
        self.open("across")
        self.assertEqual(self.text("#facts li"), "A: -Z up, B: +Y up")

    # The page itself

    def test_tab_reaches_everything_and_everything_has_a_name(self):
        self.open("two")
        self.choose("Head")
        wanted = self.value("""Array.from(document.querySelectorAll('button, select, input, [tabindex="0"]'))
            .filter(one => one.checkVisibility() && !one.disabled).map((one, i) => one.dataset.place = String(i))""")
        met = set()
        for _ in range(len(wanted) + 5):
            self.press("Tab")
            met.add(self.value("document.activeElement.dataset?.place ?? ''"))
        self.assertEqual(set(wanted) - met, set())
        nameless = self.value("""Array.from(document.querySelectorAll('[data-place]')).filter(one =>
            !one.ariaLabel && !one.textContent.trim()).map(one => one.outerHTML.slice(0, 200))""")
        self.assertEqual(nameless, [])

    def test_help_lists_the_keys_and_closes(self):
        self.open("walk")
        self.press("?")
        self.assertIn("One sample back", self.text("#help"))
        self.press("Space")  # closes: it is the button's
        self.assertFalse(self.value("app.playing"))
        self.assertFalse(self.value("document.getElementById('help').open"))
        self.browser.click_on("[data-command=about]")
        self.assertIn("Permission is hereby granted", self.text("#about pre"))
        self.press("Escape")
        self.assertFalse(self.value("document.getElementById('about').open"))

    def test_all_keys_and_buttons_do_something(self):
        self.open("two")
        commands = self.value("""kKeys.flatMap(([, rows]) => rows.map(row => row[2])).filter(Boolean).concat(
            Array.from(document.querySelectorAll('[data-command]'), one => one.dataset.command))""")
        self.assertGreater(len(commands), 30)
        for command in commands:  # an unknown one throws
            self.browser.call("command => app.run(command, '1')", command)
            self.value("document.querySelector('dialog[open]')?.close()")

    def test_a_click_leaves_the_space_bar_to_play(self):
        self.open("walk")
        self.browser.click_on("[data-command=loop]")
        self.press("Space")
        self.assertTrue(self.value("app.playing"))
        self.assertFalse(self.value("app.looping"))

    def test_paused_it_draws_nothing(self):
        self.open("walk")
        self.value("new Promise(done => setTimeout(done, 200))")
        count = """(() => {
            const asked = window.requestAnimationFrame;
            window.asked = 0;
            window.requestAnimationFrame = step => { ++window.asked; return asked(step); };
            return app.frames;
        })()"""
        frames = self.value(count)
        self.value("new Promise(done => setTimeout(done, 500))")
        self.assertEqual([self.value("app.frames"), self.value("window.asked")], [frames, 0])
        self.press("ArrowRight")
        self.value("new Promise(done => setTimeout(done, 200))")
        self.assertEqual(self.value("app.frames"), frames + 1)

    def test_nothing_is_cut_or_covered_in_small_windows(self):
        for width, height in ((360, 740), (900, 600), (1280, 800), (1920, 1080)):
            self.browser.resize(width, height)
            self.open("two")
            self.choose("Head")
            left, top, right, bottom = self.box("#view")
            self.assertGreater((right - left) / width, 0.65)
            self.assertGreater(bottom - top, 90)
            for bar in ("#transport", "#header", "#curves .head", "#nodes .head"):
                self.assertEqual(self.browser.call("""selector => {
                    const bar = document.querySelector(selector), outer = bar.getBoundingClientRect();
                    const boxes = Array.from(bar.querySelectorAll('button, select, input, output'))
                        .filter(one => one.checkVisibility()).map(one => [one, one.getBoundingClientRect()]);
                    const apart = (a, b) => a.right <= b.left + 0.5 || a.bottom <= b.top + 0.5;
                    const wrong = boxes.filter(([, {left, top, right, bottom}]) =>
                        left < outer.left - 0.5 || top < outer.top - 0.5 || right > outer.right + 0.5 ||
                        bottom > outer.bottom + 0.5);
                    boxes.forEach(([one, box], i) => boxes.slice(i + 1).forEach(([, other]) => {
                        if (!apart(box, other) && !apart(other, box)) wrong.push([one]);
                    }));
                    return wrong.map(([one]) => one.outerHTML.slice(0, 120));
                }""", bar), [], f"{bar} at {width} x {height}")

    def test_names_can_be_read_in_both_themes(self):
        """Colours of cameras against the ground of the view, and what is written on them (WCAG's contrast of text)."""
        def luminance(colour):
            linear = [(c / 12.92 if c <= 0.04045 else ((c + 0.055) / 1.055) ** 2.4) for c in (v / 255 for v in colour)]
            return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]

        def contrast(one, other):
            low, high = sorted((luminance(one), luminance(other)))
            return (high + 0.05) / (low + 0.05)

        try:
            for scheme in ("light", "dark"):
                self.browser.prefer(scheme)
                self.open("walk")
                ground, written, *cameras = self.value("""(() => {
                    const context = document.createElement('canvas').getContext('2d',
                                                                                {willReadFrequently: true});
                    return [theme.colour('ground'), theme.colour('on-camera'),
                            ...Array.from({length: 24}, (_, i) => CameraColour(i))].map(colour => {
                        context.fillStyle = colour;
                        context.fillRect(0, 0, 1, 1);
                        return Array.from(context.getImageData(0, 0, 1, 1).data.slice(0, 3));
                    });
                })()""")
                for camera in cameras:
                    self.assertGreater(min(contrast(camera, ground), contrast(camera, written)), 4.5, (scheme, camera))
        finally:
            self.browser.prefer("")
        self.assertLess(self.value("app.timeline.chart.context.measureText('camera B').width"),
                        self.value("kGutter") - 8)

    def test_names_are_text(self):
        self.open("walk")
        name = "a\u202egnp.exe<img src=x onerror=alert(1)>" + "x" * 5000
        self.browser.call("name => { app.scenes[0].nodes[3].name = name; app.choose(app.scenes[0], 3); }", name)
        self.assertTrue(self.text("#details h2 bdi").startswith("a202Egnp.exe<img"))
        self.assertEqual(self.value("document.querySelectorAll('#details img').length"), 0)
        self.assertEqual(self.text("#details h2 .box"), "202E")
        self.assertLess(self.box("#details h2")[2], self.box("#details")[2])


if __name__ == "__main__":
    needed.program(*chromium.NAMES)
    unittest.main(argv=sys.argv[:1])
