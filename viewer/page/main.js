"use strict";

// The page: what is chosen, shown and played, and the commands of buttons and keys. Every part shows this state; none
// keeps a copy. Pictures are drawn only after something has changed.

const kSpeeds = [0.1, 0.25, 0.5, 1, 2, 4];

class App {
  constructor(scenes) {
    const byId = id => document.getElementById(id);
    this.scenes = scenes;
    this.samples = scenes.map(scene => new Samples(scene));
    this.time = scenes[0].start;
    this.playing = false;
    this.looping = true;
    this.speed = 1;
    this.camera = "free"; // or "switcher", or the index of a camera
    this.chosen = null;   // {scene, node}
    this.options = {bones: false, names: false, meshes: true};
    this.work = [];       // milliseconds of the last frames, for measuring
    this.frames = 0;
    this.span = new TimeSpan();
    this.compare = new Compare(this, byId("compare"));
    this.tree = new NodeTree(this, byId("nodes"));
    this.details = new Details(this, byId("details"));
    this.timeline = new Timeline(this, byId("timeline"));
    this.curves = new Curves(this, byId("curves"));
    this.span.onChange = () => this.spanChanged();
    this.fillHeader(byId("files"), byId("facts"));
    this.fillChoices(byId("speed"), byId("camera"));
    this.label = byId("view-label");
    this.seconds = byId("seconds");
    this.sample = byId("sample");
    this.playButton = document.querySelector('[data-command="play"]');
    this.fillAbout(byId("about-files"));
    this.listen();
    this.tree.show(scenes[0]);
    this.shownChanged();
    this.view(byId("viewport"), byId("hover"), byId("view-note"));
    const moving = scenes[0].nodes.findIndex(node => node.keyCount > 0);
    this.choose(scenes[0], moving < 0 ? null : moving); // so that there is something to see
  }

  // What the parts ask for.

  shown() { return this.compare.shown(); }
  letter(scene) { return "AB"[this.scenes.indexOf(scene)]; }
  offsetOf(scene) { return scene === this.scenes[1] ? this.compare.offset : 0; }
  timeOf(scene) { return this.time - this.offsetOf(scene); }

  /** The chosen node, or in the other scene the one that belongs to it; null without. */
  chosenIn(scene) {
    if (!this.chosen) return null;
    return this.chosen.scene === scene ? this.chosen.node : this.twin(this.chosen.scene, this.chosen.node);
  }

  twin(scene, node) { return this.scenes.length < 2 ? null : this.compare.twin(scene, node); }

  /** Copies the world matrix of a node at the present time. */
  world(scene, node, out) {
    const pose = this.viewport.poseOf(scene, this.timeOf(scene));
    for (let i = 0; i < 12; ++i) out[i] = pose.world[12 * node + i];
  }

  timeText(time) {
    return Seconds(time) + " s" + (this.rate ? " \u00b7 frame " + this.frameText(time) : "");
  }

  frameText(time) {
    const frame = time * this.rate;
    return Math.abs(frame - Math.round(frame)) < 0.02 ? String(Math.round(frame)) : frame.toFixed(1);
  }

  /** The scene that leads of those shown: its samples are stepped through, its cameras are looked through. */
  get leading() { return this.shown()[0]; }
  get leadingSamples() { return this.samples[this.scenes.indexOf(this.leading.scene)]; }

  /** Samples a second, or null. */
  get rate() { return this.leadingSamples.rate; }

  snapped(time) {
    const {offset} = this.leading;
    // Beyond the leading scene's end there is only the other.
    const inside = time - offset >= this.leadingSamples.start && time - offset <= this.leadingSamples.end;
    return inside ? this.leadingSamples.snap(time - offset) + offset : time;
  }

  // Changes.

  setTime(time) {
    if (!Number.isFinite(time)) return;
    this.time = Clamp(time, this.span.start, this.span.end);
    this.span.follow(this.time);
    this.draw();
  }

  scrub(time, between) {
    this.setPlaying(false);
    this.setTime(between ? time : this.snapped(time));
  }

  /** To the sample before (-1) or after (1). */
  step(by) {
    this.setPlaying(false);
    const {offset} = this.leading;
    const {start, end, stepRate} = this.leadingSamples;
    const time = this.time - offset;
    const inside = by > 0 ? time >= start && time < end : time > start && time <= end;
    this.setTime((inside ? this.leadingSamples.step(time, by) : time + by / stepRate) + offset);
  }

  stepKey(by) {
    this.setPlaying(false);
    const keys = this.shown().flatMap(({scene, offset}) => {
      const node = this.chosenIn(scene);
      return node === null ? [] : Array.from(KeysOfNode(scene, node), time => time + offset);
    });
    const near = 1e-6;
    const found = by > 0 ? keys.filter(time => time > this.time + near).reduce((a, b) => Math.min(a, b), Infinity)
                         : keys.filter(time => time < this.time - near).reduce((a, b) => Math.max(a, b), -Infinity);
    if (Number.isFinite(found)) this.setTime(found);
  }

  setPlaying(playing) {
    if (this.playing === playing) return;
    this.playing = playing;
    if (playing && this.time >= this.span.end) this.time = this.span.start;
    this.clock = null;
    this.playButton.ariaLabel = playing ? "Pause" : "Play";
    this.playButton.title = this.playButton.ariaLabel + " (Space)";
    this.playButton.querySelector("use").setAttribute("href", playing ? "#icon-pause" : "#icon-play");
    this.draw();
  }

  setSpeed(speed) {
    this.speed = speed;
    document.getElementById("speed").value = String(speed);
  }

  choose(scene, node) {
    this.chosen = node === null ? null : {scene, node};
    if (node !== null) this.listNodesOf(scene);
    this.viewport?.choose(scene, node);
    this.tree.reveal(this.chosenIn(this.tree.scene));
    this.details.refresh();
    this.timeline.refresh();
    this.curves.refresh();
    this.draw();
  }

  listNodesOf(scene) {
    this.tree.show(scene);
    for (const letter of "AB") this.press("list" + letter, this.letter(scene) === letter);
  }

  look(camera) {
    this.camera = camera;
    document.getElementById("camera").value = String(camera);
    this.viewport?.look(camera);
    this.draw();
  }

  /** Another of A, B and both is shown, or B starts at another time. */
  shownChanged() {
    const shown = this.shown();
    const start = Math.min(...shown.map(({scene, offset}) => scene.start + offset));
    const end = Math.max(...shown.map(({scene, offset}) => scene.end + offset));
    this.span.setRange(start, end);
    this.time = Clamp(this.time, start, end);
    for (const [command, mode] of [["showA", "A"], ["showB", "B"], ["showBoth", "both"]])
      this.press(command, this.compare.mode === mode);
    if (shown.length === 1) this.listNodesOf(shown[0].scene);
    this.fillCameras();
    this.viewport?.show(shown);
    this.details.refresh();
    this.timeline.refresh();
    this.curves.refresh();
    this.tree.draw();
    this.draw();
  }

  spanChanged() {
    this.timeline.chart.invalidate();
    this.curves.chart.invalidate();
    this.timeline.chart.setTime(this.time);
    this.curves.setTime(this.time);
  }

  // Drawing.

  /** Draws before the next frame of the screen. */
  draw() {
    this.pending ??= requestAnimationFrame(now => this.frame(now));
  }

  frame(now) {
    const began = performance.now();
    try {
      if (this.playing) this.advance(now);
      this.show();
    } finally {
      this.pending = null; // what showing has asked for is drawn
    }
    this.frames += 1;
    this.work.push(performance.now() - began);
    if (this.work.length > 600) this.work.splice(0, 300);
    if (this.playing) this.draw();
  }

  advance(now) {
    const passed = this.clock === null ? 0 : Math.min(0.25, (now - this.clock) / 1000);
    this.clock = now;
    const {start, end} = this.span;
    let time = this.time + passed * this.speed;
    if (time >= end && this.looping) time = end > start ? start + (time - start) % (end - start) : start;
    if (time >= end && !this.looping) {
      time = end;
      this.setPlaying(false);
    }
    this.time = time;
    this.span.follow(time);
  }

  show() {
    this.viewport?.setTime(this.time);
    this.viewport?.draw();
    this.details.update();
    this.timeline.chart.setTime(this.time);
    this.curves.setTime(this.time);
    SetText(this.seconds, Seconds(this.time) + " s");
    SetText(this.sample, this.rate ? "frame " + this.frameText(this.time) : "");
    this.timeline.chart.host.ariaValueNow = Seconds(this.time);
    this.timeline.chart.host.ariaValueText = this.timeText(this.time);
    this.showLabel();
    this.showNote();
  }

  /** Which camera is looked through, and with which lens. */
  showLabel() {
    const {scene} = this.leading;
    const index = this.camera === "switcher" ? OnAir(scene, this.timeOf(scene)) : this.camera;
    const camera = scene.cameras[index];
    const lens = camera && Lens(camera, this.timeOf(scene));
    const text = lens ? `${Rounded(lens.aspect, 2)}:1  ${Degrees(lens.across)}\u00b0` : "";
    if (this.labelled === index && this.labelledText === text && this.labelledCamera === this.camera) return;
    [this.labelled, this.labelledText, this.labelledCamera] = [index, text, this.camera];
    if (camera) this.label.replaceChildren(MakeName(camera.name), Make("span", "lens", text));
    else this.label.replaceChildren(...this.camera === "free" ? [] : [Make("span", "off", "nothing on air")]);
  }

  // Set up.

  fillHeader(files, facts) {
    this.scenes.forEach((scene, i) => {
      const letter = this.scenes.length > 1 ? [Make("i", "swatch " + "ab"[i])] : [];
      files.append(Make("span", "", ...letter, MakeName(scene.title)));
    });
    const [scene] = this.scenes;
    const {nodes, meshes, cameras} = scene;
    const ups = this.scenes.map(({up}) => up === "unknown" ? "up axis unknown" : up + " up");
    const turned = ups.some(up => up !== ups[0]); // the figures lie across each other
    const all = [
      turned && ups.map((up, i) => `${"AB"[i]}: ${up}`).join(", "),
      Seconds(scene.end - scene.start) + " s",
      this.rate && `${Number(this.rate.toFixed(3))} samples a second`,
      Counted(nodes.length, "node"),
      meshes.length && Counted(meshes.length, "mesh", "meshes"),
      cameras.length && Counted(cameras.length, "camera"),
      !turned && ups[0],
    ];
    for (const fact of all) if (fact) facts.append(Make("li", "", fact));
  }

  fillAbout(element) {
    for (const [i, scene] of this.scenes.entries()) {
      const list = Make("dl");
      const line = (term, ...values) => list.append(Make("dt", "", term), Make("dd", "", ...values));
      line(this.scenes.length > 1 ? "File " + "AB"[i] : "File", MakeName(scene.title, ""));
      line("Time", `${Seconds(scene.start)} s to ${Seconds(scene.end)} s`);
      line("Up", scene.up === "unknown" ? "unknown, taken as +Y" : scene.up);
      line("Holds", ["node", "mesh", "camera", "light", "helper"].map(kind => {
        const plural = kind === "mesh" ? "meshes" : kind + "s";
        return Counted(scene[plural].length, kind, plural);
      }).join(", "));
      element.append(list);
    }
  }

  fillChoices(speed, camera) {
    for (const one of kSpeeds) speed.append(new Option(one + "\u00d7", one));
    speed.value = "1";
    speed.addEventListener("change", () => this.setSpeed(Number(speed.value)));
    camera.addEventListener("change", () => {
      this.look(/^\d+$/.test(camera.value) ? Number(camera.value) : camera.value);
    });
  }

  fillCameras() {
    const {scene} = this.leading;
    if (this.camerasOf === scene) return;
    this.camerasOf = scene;
    const list = document.getElementById("camera");
    list.replaceChildren(new Option("Free view", "free"));
    if (scene.switcher) list.append(new Option("Switcher", "switcher"));
    scene.cameras.forEach(({name}, i) => list.append(new Option(PlainName(name), i)));
    list.disabled = list.options.length === 1;
    this.look("free");
  }

  /** The picture comes last: the rest of the page works without it. */
  view(host, hover, note) {
    this.viewport = new Viewport(host, this.scenes);
    this.viewport.onChange = () => this.draw();
    this.viewport.onChoose = (scene, node) => this.choose(scene, node);
    this.viewport.onHover = (scene, node, x, y) => {
      hover.hidden = node === null;
      if (node === null) return;
      hover.replaceChildren(MakeName(scene.nodes[node].name));
      const box = hover.getBoundingClientRect();
      const left = Math.min(x + 12, host.clientWidth - box.width - 4);
      hover.style.transform = `translate(${left}px, ${Math.max(4, y - box.height - 6)}px)`;
    };
    this.note = note;
    this.hasMeshes = this.viewport.drawing === "webgl" && this.scenes.some(({meshes}) => meshes.length > 0);
    document.querySelector('[data-command="meshes"]').disabled = !this.hasMeshes;
    this.press("meshes", this.hasMeshes);
  }

  /** How far lines of the grid are apart, and what the view does not show. */
  showNote() {
    if (!this.viewport) return;
    const {unit} = this.viewport.grid();
    const length = unit < 0.01 ? `${Number((unit * 1000).toPrecision(1))} mm`
                   : unit < 1  ? `${Math.round(unit * 100)} cm`
                               : `${unit.toLocaleString("en")} m`;
    SetText(this.note, [`Grid ${length}`, this.viewport.note].filter(Boolean).join(" \u00b7 "));
  }

  /** Moves the free view. */
  turn(x, y, zoom = 1) {
    this.viewport.free.orbit(x, y);
    this.viewport.free.zoom(zoom);
    this.viewport.invalidate();
  }

  press(command, pressed) {
    const button = document.querySelector(`[data-command="${command}"]`);
    if (button) button.ariaPressed = String(pressed);
  }

  listen() {
    // A click does not take the focus, so that the space bar plays after it.
    document.addEventListener("mousedown", event => {
      if (!event.target.closest("button")) return;
      event.preventDefault();
      LeaveTextField();
    });
    document.addEventListener("click", event => {
      const button = event.target.closest("[data-command]");
      if (button) this.run(button.dataset.command);
    });
    // A list that was used with the pointer gives the keys back.
    for (const list of document.querySelectorAll("select")) {
      list.addEventListener("pointerdown", () => { list.pointed = true; });
      list.addEventListener("keydown", () => { list.pointed = false; });
      list.addEventListener("change", () => list.pointed && list.blur());
    }
    document.getElementById("offset").addEventListener("keydown", event => {
      if (event.key === "Enter" || event.key === "Escape") event.target.blur();
    });
    ListenToKeys((command, key) => this.run(command, key));
    matchMedia("(prefers-color-scheme: light)").addEventListener("change", () => {
      theme.forget();
      this.spanChanged();
      this.draw();
    });
    FillHelp(document.getElementById("help-table"));
    TellKeys();
    const root = document.documentElement;
    const most = (element, rest) => Math.max(80, element.clientHeight - rest);
    new Splitter(document.getElementById("split-main"), "--left", 1, () => [160, root.clientWidth / 2]);
    new Splitter(document.getElementById("split-left"), "--details", -1,
                 () => [60, most(document.getElementById("left"), 120)]);
    new Splitter(document.getElementById("split-curves"), "--curves", -1,
                 () => [90, most(document.getElementById("right"), 280)]);
  }

  run(command, key) {
    const commands = {
      play: () => this.setPlaying(!this.playing),
      back: () => this.step(-1),
      forward: () => this.step(1),
      keyBefore: () => this.stepKey(-1),
      keyAfter: () => this.stepKey(1),
      start: () => this.setTime(this.span.start),
      end: () => this.setTime(this.span.end),
      slower: () => this.setSpeed(kSpeeds.findLast(speed => speed < this.speed) ?? kSpeeds[0]),
      faster: () => this.setSpeed(kSpeeds.find(speed => speed > this.speed) ?? kSpeeds.at(-1)),
      loop: () => this.press("loop", this.looping = !this.looping),
      frame: () => this.chosen ? this.viewport.frame() : this.viewport.frameFigures(),
      frameAll: () => this.viewport.frameBoxes(({box}) => box),
      free: () => this.look("free"),
      look: () => Number(key) <= this.leading.scene.cameras.length && this.look(Number(key) - 1),
      switcher: () => this.leading.scene.switcher && this.look("switcher"),
      search: () => this.tree.search.select(),
      turnLeft: () => this.turn(-0.05, 0),
      turnRight: () => this.turn(0.05, 0),
      turnUp: () => this.turn(0, -0.05),
      turnDown: () => this.turn(0, 0.05),
      nearer: () => this.turn(0, 0, 0.8),
      farther: () => this.turn(0, 0, 1.25),
      chooseNothing: () => this.choose(this.leading.scene, null),
      zoomIn: () => this.span.zoom(this.time, 1 / 1.5),
      zoomOut: () => this.span.zoom(this.time, 1.5),
      zoomAll: () => this.span.showAll(),
      fitCurves: () => {
        this.press("fitCurves", this.curves.fit = !this.curves.fit);
        this.curves.chart.invalidate();
      },
      showA: () => this.compare.show("A"),
      showB: () => this.compare.show("B"),
      showBoth: () => this.compare.show("both"),
      nextShown: () => this.compare.show({A: "B", B: "both", both: "A"}[this.compare.mode]),
      listA: () => this.listNodesOf(this.scenes[0]),
      listB: () => this.listNodesOf(this.scenes[1]),
      help: () => document.getElementById("help").showModal(),
      about: () => document.getElementById("about").showModal(),
    };
    for (const option of ["bones", "names", "meshes"]) commands[option] = () => {
      if (option === "meshes" && !this.hasMeshes) return;
      this.options[option] = !this.options[option];
      this.press(option, this.options[option]);
      this.viewport.setOptions(this.options);
    };
    commands[command]();
    this.draw();
  }
}

window.app = new App(LoadScenes(document));
