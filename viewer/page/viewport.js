"use strict";

// The picture: poses of the scenes, from where they are seen, and what the pointer does to that. Painters draw it: with
// WebGL (draw.js), or on a canvas where that is missing (draw_canvas.js).
//
//     const viewport = new Viewport(document.getElementById("viewport"), LoadScenes(document));
//     viewport.onChange = () => requestAnimationFrame(() => viewport.draw()); // something has to be drawn
//     viewport.onChoose = (scene, node) => ...;       // a Scene and an index; node is null for nothing
//     viewport.onHover = (scene, node, x, y) => ...;  // the same, and where it is in the host, pixels
//     viewport.show([{scene, offset: 0}]);            // which scenes, seconds by which they are late
//     viewport.look("switcher");                      // or "free", or the index of a camera of the first shown scene
//     viewport.setOptions({bones: false, names: true, meshes: true, grid: true});
//     viewport.setTime(0.5);                          // seconds
//     viewport.draw();

const kHoverPixels = 12;
const kInstants = 9; // of the range, which decide on bones and on what is framed

/** Calls visit(instant) for poses over the range of a scene. */
function AtInstants(pose, visit) {
  const {start, end} = pose.scene;
  for (let i = 0; i < kInstants; ++i) visit(pose.at(start + (end - start) * i / (kInstants - 1)), i);
}

/**
 * Nodes that have a line to their parent. Files do not say what is a bone: its parent is not the first node, neither
 * end has a camera or a light, and its length stays within a tenth.
 * @returns {number[]} indices of the lower ends
 */
function BonesOf(pose) {
  const {nodes, cameras, lights} = pose.scene;
  const placed = new Set([...cameras, ...lights].map(object => object.node));
  const found = nodes.filter(({index, parent}) => parent > 0 && parent < index && !placed.has(index) &&
                                                  !placed.has(parent)).map(({index}) => index);
  const shortest = new Float64Array(nodes.length).fill(Infinity);
  const longest = new Float64Array(nodes.length);
  AtInstants(pose, () => {
    for (const i of found) {
      const [x, y, z] = [3, 7, 11].map(at => pose.world[12 * i + at] - pose.world[12 * nodes[i].parent + at]);
      const length = Math.hypot(x, y, z);
      shortest[i] = Math.min(shortest[i], length);
      longest[i] = Math.max(longest[i], length);
    }
  });
  return found.filter(i => longest[i] > 0 && shortest[i] >= 0.9 * longest[i]);
}

/** A box around points. */
class Box {
  constructor() {
    this.least = [Infinity, Infinity, Infinity];
    this.most = [-Infinity, -Infinity, -Infinity];
  }

  add(point) {
    if (!point.every(Number.isFinite)) return;
    point.forEach((value, i) => {
      this.least[i] = Math.min(this.least[i], value);
      this.most[i] = Math.max(this.most[i], value);
    });
  }

  empty() {
    return !(this.least[0] <= this.most[0]);
  }

  centre() {
    return this.empty() ? [0, 0, 0] : this.least.map((value, i) => (value + this.most[i]) / 2);
  }

  /** All eight; none of an empty box. */
  corners() {
    return this.empty() ? [] : Array.from({length: 8}, (_, corner) =>
        this.least.map((value, i) => corner >> i & 1 ? this.most[i] : value));
  }

  radius() {
    return this.empty() ? 1 : Math.hypot(...this.least.map((value, i) => this.most[i] - value)) / 2;
  }
}

/** A scene as it is drawn. */
class Layer {
  constructor(scene) {
    this.scene = scene;
    this.visible = true;
    this.colourName = scene.index === 0 ? "a" : "b";
    this.offset = 0; // seconds by which it is late
    this.pose = new Pose(scene);
    this.mirror = MirrorOf(scene);
    this.bones = BonesOf(this.pose);
    this.meshes = scene.meshes.map(mesh => new PosedMesh(mesh, this.pose));
    this.boneBox = new Box();
    this.box = new Box();
    this.measure();
    this.chosen = -1;
    this.camera = -1; // that is looked through, whose frustum is hidden
    this.pose.at(scene.start);
  }

  /** The place of a node in the drawn world. */
  drawn(node) {
    const out = [0, 0, 0];
    Transform(this.mirror, ...this.pose.position(node), 1, out, 0);
    return out;
  }

  measure() {
    const {nodes, cameras} = this.scene;
    const ends = new Set(this.bones);
    for (const i of this.bones) ends.add(nodes[i].parent);
    AtInstants(this.pose, (pose, instant) => {
      for (const i of ends) this.boneBox.add(this.drawn(i));
      for (let i = 0; i < nodes.length; ++i) this.box.add(this.drawn(i));
      if (instant === 0) this.meshes.forEach(mesh => this.measureMesh(mesh));
    });
    if (cameras.length > 0 && nodes.length === 0) this.box.add([0, 0, 0]);
  }

  /** Adds the vertices at the present time. */
  measureMesh(posed) {
    posed.update();
    const box = new Box();
    const {positions, mesh} = posed;
    for (let i = 0; i < positions.length; i += 3) box.add([positions[i], positions[i + 1], positions[i + 2]]);
    if (box.empty()) return;
    const node = this.placeOf(mesh);
    for (const point of box.corners()) {
      if (node >= 0) Transform(this.pose.world.subarray(12 * node, 12 * node + 12), ...point, 1, point, 0);
      Transform(this.mirror, ...point, 1, point, 0);
      this.box.add(point);
      this.boneBox.add(point);
    }
  }

  /** The node that places the vertices of a mesh, or -1 for the world. */
  placeOf(mesh) {
    return mesh.kind === "weighted" ? -1 : mesh.node;
  }

  /** Goes to a time of the page. @param {boolean} meshes whether they are wanted */
  at(time, meshes) {
    this.pose.at(time - this.offset);
    if (meshes) for (const mesh of this.meshes) if (mesh.changes) mesh.update();
  }
}

class Viewport {
  /**
   * @param {HTMLElement} host filled and followed in size; it has a position and a size of its own
   * @param {Scene[]} scenes the first one's cameras are looked through
   */
  constructor(host, scenes) {
    this.host = host;
    this.layers = scenes.map(scene => new Layer(scene));
    this.leading = this.layers[0];
    this.options = {bones: false, names: false, meshes: true, grid: true};
    this.onChange = () => {};
    this.onHover = () => {};
    this.onChoose = () => {};
    this.time = scenes[0].start;
    this.free = new FreeView();
    this.looking = "free";
    this.hovered = null; // {layer, node, x, y}
    this.timeChanged = true;
    this.changed = true;
    this.ratio = 1;
    /** For people: what this browser does not show; or null. */
    this.note = null;
    this.makePainter();
    this.overlay = host.appendChild(document.createElement("canvas"));
    for (const canvas of [this.canvas, this.overlay]) {
      Object.assign(canvas.style, {position: "absolute", left: "0", top: "0", width: "100%", height: "100%"});
    }
    this.overlay.style.touchAction = "none";
    this.pointers();
    new ResizeObserver(() => this.resize()).observe(host);
    this.resize();
    this.frameFigures();
  }

  /** "webgl" or "canvas". */
  get drawing() {
    return this.painter.kind;
  }

  makePainter() {
    this.canvas = this.host.appendChild(document.createElement("canvas"));
    try {
      this.painter = new GlPainter(this.canvas, this.layers, () => this.invalidate());
    } catch (error) {
      this.trouble = error;
      if (!(error instanceof NoWebGl)) console.error(error);
      // A canvas that was asked for WebGL has no other context.
      this.canvas.remove();
      this.canvas = this.host.appendChild(document.createElement("canvas"));
      this.painter = new CanvasPainter(this.canvas, this.layers);
      this.note = "This browser has no WebGL: meshes are not shown.";
    }
  }

  // --- What is shown

  /** @param {number} time seconds */
  setTime(time) {
    if (time === this.time) return;
    this.time = time;
    this.timeChanged = true;
    this.invalidate();
  }

  /**
   * @param {{scene: Scene, offset: number}[]} shown offsets are seconds by which a scene is late; the first one's
   *     cameras are looked through
   */
  show(shown) {
    for (const layer of this.layers) {
      const found = shown.find(({scene}) => scene === layer.scene);
      layer.visible = found !== undefined;
      if (found) layer.offset = found.offset;
    }
    this.leading = this.layerOf(shown[0].scene);
    this.timeChanged = true;
    this.invalidate();
  }

  /** @param {"free"|"switcher"|number} what a number is the index of a camera */
  look(what) {
    this.looking = what;
    this.invalidate();
  }

  /** Marks a node. @param {?number} node null: none */
  choose(scene, node) {
    for (const layer of this.layers) layer.chosen = layer.scene === scene && node !== null ? node : -1;
    this.invalidate();
  }

  /** Any of bones (solid), names (of all nodes), meshes and grid. */
  setOptions(options) {
    Object.assign(this.options, options);
    this.timeChanged = true;
    this.invalidate();
  }

  /** Moves the free view to the chosen node and what hangs on it; without one to everything. */
  frame() {
    const layer = this.layers.find(({visible, chosen}) => visible && chosen >= 0);
    if (!layer) return this.frameBoxes(({box}) => box);
    const box = new Box();
    const node = layer.scene.nodes[layer.chosen];
    const near = [layer.chosen, ...node.children];
    if (node.children.length === 0 && node.parent >= 0) near.push(node.parent);
    for (const one of near) box.add(layer.drawn(one));
    this.frameBox(box);
  }

  /** Moves the free view to the figures, over the whole range; without any to everything. */
  frameFigures() {
    const figures = this.layers.some(({visible, boneBox}) => visible && !boneBox.empty());
    this.frameBoxes(({box, boneBox}) => figures ? boneBox : box);
  }

  frameBoxes(boxOf) {
    const box = new Box();
    for (const layer of this.layers.filter(({visible}) => visible)) {
      const {least, most} = boxOf(layer);
      box.add(least);
      box.add(most);
    }
    this.frameBox(box);
  }

  frameBox(box) {
    this.free.frame(box, this.width / this.height);
    this.invalidate();
  }

  /**
   * What is looked through now: the index of a camera of the leading scene, -1 for the free view; `nothing` where the
   * switcher has nothing on air.
   */
  shown() {
    const {looking, leading: {scene, pose}} = this;
    const onAir = looking === "switcher" ? OnAir(scene, pose.time) : -1;
    return {camera: typeof looking === "number" ? looking : onAir, nothing: looking === "switcher" && onAir < 0};
  }

  layerOf(scene) {
    return this.layers.find(layer => layer.scene === scene);
  }

  /** @returns {Pose} of a scene at a time of its own; the one that is drawn if that is its time */
  poseOf(scene, time) {
    const {pose} = this.layerOf(scene);
    return pose.time === time ? pose : pose.at(time);
  }

  // --- Drawing

  invalidate() {
    this.changed = true;
    this.onChange();
  }

  /** Draws, if there is anything new. */
  draw() {
    if (!this.changed) return;
    this.changed = false;
    this.pose();
    this.painter.paint(this.view, this.options);
    DrawOverlay(this.overlay.getContext("2d"), this);
  }

  /** Brings poses and the eye up to the present time. */
  pose() {
    const {leading} = this;
    for (const layer of this.layers) {
      if (layer.visible && (this.timeChanged || layer.pose.time !== this.time - layer.offset))
        layer.at(this.time, this.options.meshes);
      layer.camera = -1;
      layer.colour = theme.colour(layer.colourName);
      layer.tinted = this.layers.every(({visible}) => visible) && this.layers.length > 1;
    }
    const reach = this.reach();
    const {camera, nothing} = this.shown();
    const eye = camera >= 0 ? EyeOf(leading.pose, leading.mirror, camera, reach) : null;
    if (eye) leading.camera = camera;
    this.eye = eye || this.free.eye(reach);
    this.picture = Letterbox(this.width, this.height, this.eye.aspect);
    this.projection = new Projection(this.eye, this.picture);
    const {eye: seen, picture, projection, width, height, ratio} = this;
    this.view = {eye: seen, picture, projection, width, height, ratio, moved: this.timeChanged, nothing,
                 mirror: leading.mirror, grid: this.grid()};
    this.timeChanged = false;
  }

  /** Metres across everything. */
  reach() {
    let reach = 1;
    for (const {box} of this.layers) {
      if (!box.empty()) reach = Math.max(reach, 2 * box.radius() + Math.hypot(...box.centre()));
    }
    return 4 * reach;
  }

  /** Lines on the floor: how far apart, metres, how many to each side, and where the middle one is. */
  grid() {
    let half = this.free.distance / 2;
    const centre = [0, 0];
    for (const {boneBox, box} of this.layers) {
      const shown = boneBox.empty() ? box : boneBox;
      if (shown.empty()) continue;
      half = Math.max(half, Math.min(shown.radius(), 20 * this.free.distance));
    }
    const unit = 10 ** Math.floor(Math.log10(Math.max(half, 1e-4)));
    const {target} = this.free;
    [target[0], target[2]].forEach((value, i) => {
      if (Math.abs(value) > 8 * unit) centre[i] = Math.round(value / unit) * unit;
    });
    return {unit, lines: 12, centre};
  }

  resize() {
    this.width = Math.max(1, this.host.clientWidth);
    this.height = Math.max(1, this.host.clientHeight);
    this.ratio = Math.min(2, window.devicePixelRatio || 1);
    this.overlay.width = Math.round(this.width * this.ratio);
    this.overlay.height = Math.round(this.height * this.ratio);
    this.painter.resize(this.width, this.height, this.ratio);
    this.changed = true;
    this.draw(); // at once: the canvas is empty
  }

  // --- The pointer

  pointers() {
    const {overlay} = this;
    let held = null; // {x, y, button, travelled}
    overlay.addEventListener("contextmenu", event => event.preventDefault());
    overlay.addEventListener("pointerdown", event => {
      overlay.setPointerCapture(event.pointerId);
      held = {x: event.clientX, y: event.clientY, button: event.shiftKey ? 2 : event.button, travelled: 0};
    });
    overlay.addEventListener("pointermove", event => {
      if (!held) return this.hover(event);
      const [x, y] = [event.clientX - held.x, event.clientY - held.y];
      Object.assign(held, {x: event.clientX, y: event.clientY, travelled: held.travelled + Math.abs(x) + Math.abs(y)});
      if (held.travelled < 4) return;
      if (held.button === 0) this.free.orbit(x / this.height, y / this.height);
      else this.free.pan(x / this.height, y / this.height);
      this.invalidate();
    });
    overlay.addEventListener("pointerup", event => {
      const clicked = held && held.travelled < 4 && held.button === 0;
      held = null;
      if (!clicked) return;
      const found = this.nodeAt(...this.pointOf(event));
      this.onChoose(found ? found.layer.scene : this.leading.scene, found ? found.node : null);
    });
    overlay.addEventListener("pointerleave", () => this.hover(null));
    overlay.addEventListener("wheel", event => {
      event.preventDefault();
      this.free.zoom(Math.exp(Math.max(-100, Math.min(100, event.deltaY)) * 0.002));
      this.invalidate();
    }, {passive: false});
  }

  pointOf(event) {
    const box = this.overlay.getBoundingClientRect();
    return [event.clientX - box.left, event.clientY - box.top];
  }

  hover(event) {
    const found = event && this.nodeAt(...this.pointOf(event));
    const before = this.hovered;
    if (!found && !before) return;
    this.hovered = found;
    if (!found || !before || found.layer !== before.layer || found.node !== before.node) this.invalidate();
    if (found) this.onHover(found.layer.scene, found.node, found.x, found.y);
    else this.onHover(null, null, 0, 0);
  }

  /** The node nearest to a point of the host: {layer, node, x, y}; null where none is near. */
  nodeAt(x, y) {
    let found = null;
    let nearest = kHoverPixels;
    const out = [0, 0, 0];
    for (const layer of this.layers) {
      if (!layer.visible) continue;
      for (let node = 0; node < layer.scene.nodes.length; ++node) {
        if (!this.projection.project(...layer.drawn(node), out)) continue;
        const away = Math.hypot(out[0] - x, out[1] - y);
        if (away < nearest) {
          nearest = away;
          found = {layer, node, x: out[0], y: out[1]};
        }
      }
    }
    return found;
  }
}

/** Names, the chosen node and the edge of the picture: over what the painter has drawn. */
function DrawOverlay(context, viewport) {
  const {projection, picture, width, height, ratio, layers, options, hovered} = viewport;
  context.setTransform(ratio, 0, 0, ratio, 0, 0);
  context.clearRect(0, 0, width, height);
  context.font = "12px system-ui, sans-serif";
  context.textBaseline = "middle";
  const out = [0, 0, 0];
  const taken = new Set(); // cells of the picture that have a name: others are left out there
  const label = (text, point, colour) => {
    if (!projection.project(...point, out)) return;
    const [left, row] = [Math.round(out[0] / 8), Math.round(out[1] / 13) * 10000];
    const cells = Array.from({length: Math.min(40, text.length) + 1}, (_, i) => row + left + i);
    if (cells.some(cell => taken.has(cell))) return;
    for (const cell of cells) taken.add(cell);
    context.fillStyle = colour;
    context.fillText(ShownText(text, 40), out[0] + 7, out[1]);
  };
  const ring = (point, colour) => {
    if (!projection.project(...point, out)) return;
    context.strokeStyle = colour;
    context.lineWidth = 2;
    context.beginPath();
    context.arc(out[0], out[1], 6, 0, 2 * Math.PI);
    context.stroke();
  };
  for (const layer of layers) {
    if (!layer.visible) continue;
    const {nodes, cameras} = layer.scene;
    for (const camera of cameras) {
      if (camera.node < 0 || camera.index === layer.camera) continue;
      label(camera.name, layer.drawn(camera.node), CameraColour(camera.index));
    }
    if (options.names) for (const node of nodes) label(node.name, layer.drawn(node.index), theme.colour("dim"));
    if (layer.chosen >= 0) ring(layer.drawn(layer.chosen), theme.colour("text"));
    if (hovered && hovered.layer === layer) ring(layer.drawn(hovered.node), theme.colour("dim"));
  }
  if (picture.width < width || picture.height < height) {
    context.globalAlpha = 0.85;
    context.fillStyle = theme.colour("line");
    context.fillRect(0, 0, width, picture.y);
    context.fillRect(0, picture.y + picture.height, width, height);
    context.fillRect(0, picture.y, picture.x, picture.height);
    context.fillRect(picture.x + picture.width, picture.y, width, picture.height);
    context.globalAlpha = 1;
  }
}

/** Four corners of a camera's picture at a distance, in the axes of its node; 3 numbers each. */
function FrustumCorners(camera, time, distance) {
  const {aspect, angle} = Lens(camera, time);
  const y = distance * Math.tan(angle / 2);
  const x = y * aspect;
  return [[-x, -y, distance], [x, -y, distance], [x, y, distance], [-x, y, distance]];
}

/**
 * The lines of a camera's frustum in the file's world, 6 numbers each: from its place to the corners, around, and a
 * mark above. @param {number} size metres
 */
function FrustumLines(pose, camera, size) {
  const world = camera.node >= 0 ? pose.world.subarray(12 * camera.node, 12 * camera.node + 12) : kIdentity;
  const corners = FrustumCorners(camera, pose.time, size);
  const above = [0, corners[2][1] * 1.4, size];
  const points = [[0, 0, 0], ...corners, above].map(point => {
    const out = [0, 0, 0];
    Transform(world, ...point, 1, out, 0);
    return out;
  });
  const pairs = [0, 1, 0, 2, 0, 3, 0, 4, 1, 2, 2, 3, 3, 4, 4, 1, 3, 5, 5, 4];
  return pairs.flatMap(i => points[i]);
}
const kFrustumLines = 10;
