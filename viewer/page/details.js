"use strict";

// The chosen node at the present time: local and world pose, difference between A and B, keys, lens, properties, text.

class Details {
  constructor(app, panel) {
    this.app = app;
    this.panel = panel;
    this.updates = []; // set the values of one time
    this.value = new Float64Array(6);
    this.world = new Float64Array(12);
    this.other = new Float64Array(12);
  }

  /** To be called when the chosen node has changed. */
  refresh() {
    this.updates = [];
    this.panel.replaceChildren();
    const {chosen} = this.app;
    if (!chosen) {
      this.panel.append(Make("p", "empty", "Choose a node in the list or in the view."));
      return;
    }
    const {scene, node: index} = chosen;
    const node = scene.nodes[index];
    this.title(scene, index);
    if (this.app.scenes.length > 1) this.difference(chosen);
    this.pose(scene, index);
    this.keys(node);
    const camera = scene.cameras.find(one => one.node === index);
    if (camera) this.camera(camera);
    this.properties(PropertiesOf(scene, index));
    if (node.text !== "") this.texts("Text", [["", [node.text]]]);
    if (this.shown !== scene.nodes[index]) this.panel.scrollTop = 0;
    this.shown = scene.nodes[index];
    this.update();
  }

  title(scene, index) {
    const name = MakeName(scene.nodes[index].name);
    const path = [];
    for (let p = ParentOf(scene, index); p >= 0; p = ParentOf(scene, p)) path.unshift(scene.nodes[p].name);
    const above = MakeName(path.length === 0 ? "top level" : path.slice(-8).join(" \u203a "), "path cut");
    above.title = path.map(PlainName).slice(-40).join(" \u203a ");
    const letter = this.app.scenes.length > 1 ? [Make("i", "swatch " + this.app.letter(scene).toLowerCase())] : [];
    this.panel.append(Make("div", "title", Make("h2", "cut", ...letter, name), above));
  }

  section(heading, classes = "rows") {
    const rows = Make("div", classes);
    if (heading) this.panel.append(Make("h3", "", heading));
    this.panel.append(rows);
    return rows;
  }

  /** A row of `count` values; answers their elements. */
  row(rows, label, count, unit = "") {
    const values = Array.from({length: count}, () => Make("span", "value"));
    const words = typeof label === "string" ? [label, " ", Make("span", "unit", unit)] : [label];
    rows.append(Make("span", "label cut", ...words), Make("span", count > 3 ? "values four" : "values", ...values));
    return values;
  }

  set(elements, texts) { elements.forEach((element, i) => SetText(element, texts[i])); }

  pose(scene, index) {
    const node = scene.nodes[index];
    const angles = new Float64Array(3);
    const local = this.section("Local", "rows pose");
    const position = this.row(local, "Position", 3, "m");
    const rotation = this.row(local, "Rotation", 3, "\u00b0");
    const scale = node.scale ? this.row(local, "Scale", 3) : null;
    const quaternion = this.row(local, "Quaternion", 4);
    const world = this.section("World", "rows pose");
    const worldPosition = this.row(world, "Position", 3, "m");
    const worldRotation = this.row(world, "Rotation", 3, "\u00b0");
    this.updates.push(() => {
      const time = this.app.timeOf(scene);
      this.evaluate(node.translation, time, [0, 0, 0]);
      this.set(position, this.three(this.value, 4));
      this.evaluate(node.rotation, time, [0, 0, 0, 1]);
      this.set(rotation, this.three(EulerDegrees(this.value, angles), 2));
      this.set(quaternion, Array.from(this.value.subarray(0, 4), value => Rounded(value, 4)));
      if (scale) {
        Evaluate(node.scale, time, this.value);
        this.set(scale, this.three(this.value, 4));
      }
      this.app.world(scene, index, this.world);
      this.set(worldPosition, [3, 7, 11].map(at => Rounded(this.world[at], 4)));
      QuaternionOf(this.world, this.value);
      this.set(worldRotation, this.three(EulerDegrees(this.value, angles), 2));
    });
  }

  evaluate(track, time, absent) {
    if (track) Evaluate(track, time, this.value);
    else this.value.set(absent);
  }

  three(values, decimals) { return [0, 1, 2].map(i => Rounded(values[i], decimals)); }

  difference({scene, node}) {
    const rows = this.section("A to B");
    const other = this.app.scenes[1 - this.app.scenes.indexOf(scene)];
    const twin = this.app.twin(scene, node);
    if (twin === null) {
      rows.className = "";
      rows.append(Make("p", "empty", `${this.app.letter(other)} has no node of this name`));
      return;
    }
    const [distance] = this.row(rows, "Distance", 1);
    const [angle] = this.row(rows, "Angle", 1);
    this.updates.push(() => {
      this.app.world(scene, node, this.world);
      this.app.world(other, twin, this.other);
      const apart = Difference(this.world, this.other);
      this.set([distance, angle], [Rounded(apart.metres * 1000, 2) + " mm", Degrees(apart.radians) + "\u00b0"]);
    });
  }

  keys(node) {
    const rows = this.section("Keys");
    const tracks = {Translation: node.translation, Rotation: node.rotation, Scale: node.scale};
    for (const [label, track] of Object.entries(tracks))
      if (track) SetText(this.row(rows, label, 1)[0], track.count < 2 ? "constant" : Counted(track.count, "key"));
  }

  camera(camera) {
    const rows = this.section("Camera");
    const [angle] = this.row(rows, "Angle across", 1);
    const [clip] = this.row(rows, "Near, far", 1);
    SetText(this.row(rows, "Aspect", 1)[0], Rounded(1 / camera.inverseAspect, 3) + ":1");
    this.updates.push(() => {
      const time = this.app.timeOf(this.app.chosen.scene);
      SetText(angle, Degrees(NumberAt(camera.fieldOfView, time, NaN)) + "\u00b0");
      this.evaluate(camera.clipRange, time, [NaN, NaN]);
      SetText(clip, Rounded(this.value[0], 3) + ", " + Rounded(this.value[1], 1) + " m");
    });
  }

  properties(properties) {
    if (properties.length === 0) return;
    this.section("Properties");
    for (const property of properties) {
      const {track} = property;
      if (!track) {
        this.texts("", [[property.name, property.texts ?? []]]);
        continue;
      }
      const values = this.row(this.panel.lastChild, MakeName(property.name), track.width);
      this.updates.push(() => {
        Evaluate(track, this.app.timeOf(this.app.chosen.scene), this.value);
        values.forEach((value, i) => SetText(value, Rounded(this.value[i], track.kind === kIntegerTrack ? 0 : 4)));
      });
    }
  }

  texts(heading, entries) {
    const rows = heading ? this.section(heading) : this.panel.lastChild;
    for (const [name, strings] of entries) {
      const text = Make("bdi");
      text.dataset.lines = "";
      const lines = strings.slice(0, 200).map(string => string.slice(0, 4000)).join("\n");
      ShowText(text, lines.replace(/\r\n?/g, "\n").trimEnd());
      if (name) rows.append(MakeName(name, "label cut"));
      const values = Make("span", "values text", text);
      if (!name) values.style.gridColumn = "1 / -1";
      rows.append(values);
    }
  }

  /** Shows the values of the present time. */
  update() {
    for (const update of this.updates) update();
  }
}

/** The rotation in a matrix of three rows of four, without its scale, as x, y, z, w. */
function QuaternionOf(m, out) {
  const length = c => Math.hypot(m[c], m[c + 4], m[c + 8]) || 1;
  const mirrored = m[0] * (m[5] * m[10] - m[6] * m[9]) - m[1] * (m[4] * m[10] - m[6] * m[8])
    + m[2] * (m[4] * m[9] - m[5] * m[8]) < 0;
  const a = (mirrored ? -1 : 1) / length(0), b = (mirrored ? -1 : 1) / length(1), c = (mirrored ? -1 : 1) / length(2);
  const xx = m[0] * a, yy = m[5] * b, zz = m[10] * c;
  const four = [1 + xx - yy - zz, 1 - xx + yy - zz, 1 - xx - yy + zz, 1 + xx + yy + zz]; // 4 x², 4 y², 4 z², 4 w²
  const most = four.indexOf(Math.max(...four));
  const [yx, zx, zy] = [m[4] * a + m[1] * b, m[8] * a + m[2] * c, m[9] * b + m[6] * c];
  const [xw, yw, zw] = [m[9] * b - m[6] * c, m[2] * c - m[8] * a, m[4] * a - m[1] * b];
  const rows = [[four[0], yx, zx, xw], [yx, four[1], zy, yw], [zx, zy, four[2], zw], [xw, yw, zw, four[3]]];
  const size = Math.hypot(...rows[most]) || 1;
  for (let i = 0; i < 4; ++i) out[i] = rows[most][i] / size;
  return out;
}

/** How far two world matrices are apart: {metres, radians}. */
function Difference(a, b) {
  const p = QuaternionOf(a, [0, 0, 0, 1]), q = QuaternionOf(b, [0, 0, 0, 1]);
  // Of p's inverse times q: exact also for tiny angles, where the arc cosine of the dot product is not.
  const dot = p[0] * q[0] + p[1] * q[1] + p[2] * q[2] + p[3] * q[3];
  const sign = dot < 0 ? -1 : 1;
  const apart = Math.hypot(p[0] - sign * q[0], p[1] - sign * q[1], p[2] - sign * q[2], p[3] - sign * q[3]);
  const together = Math.hypot(p[0] + sign * q[0], p[1] + sign * q[1], p[2] + sign * q[2], p[3] + sign * q[3]);
  return {metres: Math.hypot(a[3] - b[3], a[7] - b[7], a[11] - b[11]), radians: 4 * Math.atan2(apart, together)};
}
