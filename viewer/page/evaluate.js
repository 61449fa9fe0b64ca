"use strict";

// Values at any time, in double precision from the numbers of the file, and the poses of all nodes. The same time gives
// the same pose whatever was shown before. Matrices are three rows of four numbers, translation in the fourth column;
// points are columns.

const kIdentity = Float64Array.of(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0);

/** The place of a time among keys: between key `at` and the next, `fraction` of the way. */
const place = {at: 0, fraction: 0};

/**
 * Finds a time among at least two ascending times; sets `place`. Before the first key and after the last the track
 * holds. On a key the segment that ends there counts.
 */
function Seek(times, time, integer) {
  const last = times.length - 1;
  if (time >= times[last]) {
    place.at = last - 1;
    place.fraction = 1;
    return;
  }
  place.at = 0;
  place.fraction = 0;
  if (!(time > times[0])) return;
  let low = 0;
  let high = last; // times[low] < time <= times[high], where times ascend
  while (high - low > 1) {
    const middle = (low + high) >> 1;
    if (times[middle] < time) low = middle;
    else high = middle;
  }
  place.at = low;
  const span = times[high] - times[low];
  if (!(span > 0)) return;
  // An integer changes where the fraction is exactly 1 in the single precision of players.
  place.fraction = integer ? Math.fround(Math.fround(time - times[low]) / Math.fround(span))
                           : (time - times[low]) / span;
}

/** Spherical interpolation of two quaternions. */
function Slerp(values, a, fraction, out, to) {
  const b = a + 4;
  const dot = values[a] * values[b] + values[a + 1] * values[b + 1] + values[a + 2] * values[b + 2] +
              values[a + 3] * values[b + 3];
  let first = 1 - fraction;
  let second = fraction;
  if (!(dot > 0.99)) {
    const angle = Math.acos(dot);
    const sine = Math.sin(angle);
    first = Math.sin((1 - fraction) * angle) / sine;
    second = Math.sin(fraction * angle) / sine;
  }
  for (let i = 0; i < 4; ++i) out[to + i] = first * values[a + i] + second * values[b + i];
}

/**
 * The value of a track at a time.
 * @param {Track} track
 * @param {number} time seconds
 * @param {number[]|Float64Array} out receives track.width numbers
 * @param {number} to where in `out`
 */
function Evaluate(track, time, out, to = 0) {
  const {values, width, kind} = track;
  if (track.count < 2) {
    for (let i = 0; i < width; ++i) out[to + i] = values[i];
    return;
  }
  Seek(track.times, time, kind === kIntegerTrack);
  const {at, fraction} = place;
  const a = at * width;
  if (kind === kIntegerTrack) {
    out[to] = fraction === 1 ? values[at + 1] : values[at];
  } else if (kind === 6) {
    Slerp(values, a, fraction, out, to);
  } else {
    for (let i = 0; i < width; ++i)
      out[to + i] = values[a + i] + (values[a + width + i] - values[a + i]) * fraction;
  }
}

const scratch = new Float64Array(6);

/**
 * The value of a track of one number.
 * @param {?Track} track
 * @param {number} time
 * @param {number} absent the value without a track
 */
function NumberAt(track, time, absent) {
  if (!track) return absent;
  Evaluate(track, time, scratch);
  return scratch[0];
}

/** Writes a matrix of rotation v[0..3], scale v[4..6] and translation v[7..9] to out[at...]. */
function WriteMatrix(v, out, at) {
  const x = v[0], y = v[1], z = v[2], w = v[3];
  const sx = v[4], sy = v[5], sz = v[6];
  out[at] = (1 - 2 * y * y - 2 * z * z) * sx;
  out[at + 1] = (2 * x * y - 2 * w * z) * sy;
  out[at + 2] = (2 * x * z + 2 * w * y) * sz;
  out[at + 3] = v[7];
  out[at + 4] = (2 * x * y + 2 * w * z) * sx;
  out[at + 5] = (1 - 2 * x * x - 2 * z * z) * sy;
  out[at + 6] = (2 * y * z - 2 * w * x) * sz;
  out[at + 7] = v[8];
  out[at + 8] = (2 * x * z - 2 * w * y) * sx;
  out[at + 9] = (2 * y * z + 2 * w * x) * sy;
  out[at + 10] = (1 - 2 * x * x - 2 * y * y) * sz;
  out[at + 11] = v[9];
}

/** out[to...] = left[at...] * right[from...]; `out` at `to` must not be one of the others. */
function Multiply(left, at, right, from, out, to) {
  for (let row = 0; row < 12; row += 4) {
    const a = left[at + row], b = left[at + row + 1], c = left[at + row + 2];
    out[to + row] = a * right[from] + b * right[from + 4] + c * right[from + 8];
    out[to + row + 1] = a * right[from + 1] + b * right[from + 5] + c * right[from + 9];
    out[to + row + 2] = a * right[from + 2] + b * right[from + 6] + c * right[from + 10];
    out[to + row + 3] = a * right[from + 3] + b * right[from + 7] + c * right[from + 11] + left[at + row + 3];
  }
}

/** The inverse of the matrix at m[at...]; not finite where there is none. */
function Inverted(m, at = 0) {
  const a = m[at], b = m[at + 1], c = m[at + 2], x = m[at + 3];
  const d = m[at + 4], e = m[at + 5], f = m[at + 6], y = m[at + 7];
  const g = m[at + 8], h = m[at + 9], i = m[at + 10], z = m[at + 11];
  const scale = 1 / (a * (e * i - f * h) - b * (d * i - f * g) + c * (d * h - e * g));
  const r = [e * i - f * h, c * h - b * i, b * f - c * e, f * g - d * i, a * i - c * g, c * d - a * f,
             d * h - e * g, b * g - a * h, a * e - b * d].map(cofactor => cofactor * scale);
  return Float64Array.of(r[0], r[1], r[2], -(r[0] * x + r[1] * y + r[2] * z),
                         r[3], r[4], r[5], -(r[3] * x + r[4] * y + r[5] * z),
                         r[6], r[7], r[8], -(r[6] * x + r[7] * y + r[8] * z));
}

/**
 * The transforms of all nodes of a scene at a time.
 *
 * @property {number} time of the last at(), seconds
 * @property {Float64Array} local 12 numbers a node: in its parent
 * @property {Float64Array} world 12 numbers a node: in the file's world
 */
class Pose {
  /** @param {Scene} scene */
  constructor(scene) {
    this.scene = scene;
    this.time = NaN;
    const {nodes} = scene;
    this.local = new Float64Array(12 * nodes.length);
    this.world = new Float64Array(12 * nodes.length);
    this.values = new Float64Array(10);
    this.moving = new Uint8Array(nodes.length);
    nodes.forEach((node, i) => {
      this.moving[i] = [node.translation, node.rotation, node.scale].some(track => track && track.count > 1) ? 1 : 0;
      this.formLocal(node, 0);
    });
    this.at(scene.start);
  }

  /**
   * Goes to a time.
   * @param {number} time seconds
   * @returns {Pose} this
   */
  at(time) {
    const {nodes} = this.scene;
    const {local, world} = this;
    this.time = time;
    for (let i = 0; i < nodes.length; ++i) {
      if (this.moving[i]) this.formLocal(nodes[i], time);
      const {parent} = nodes[i];
      if (parent >= 0 && parent < i) Multiply(world, 12 * parent, local, 12 * i, world, 12 * i);
      else world.set(local.subarray(12 * i, 12 * i + 12), 12 * i); // a later parent counts as none
    }
    return this;
  }

  /** The place of a node in the file's world, metres. */
  position(node) {
    return [this.world[12 * node + 3], this.world[12 * node + 7], this.world[12 * node + 11]];
  }

  formLocal(node, time) {
    const {values} = this;
    values.fill(0);
    values[3] = values[4] = values[5] = values[6] = 1;
    if (node.rotation) Evaluate(node.rotation, time, values, 0);
    if (node.scale) Evaluate(node.scale, time, values, 4);
    if (node.translation) Evaluate(node.translation, time, values, 7);
    WriteMatrix(values, this.local, 12 * node.index);
  }
}
