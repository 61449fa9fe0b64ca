"use strict";

// What of a node changes over time, as curves: translation, rotation, scale, the user's properties; and its keys.

const kAxes = ["X", "Y", "Z", "W"];
const kStepsBetweenKeys = 6; // of curves that are not straight there
const kMostPoints = 60000;

/** A node's parent, or -1: in a wrong file the parent is not before the node and then counts as none. */
function ParentOf(scene, node) {
  const {parent} = scene.nodes[node];
  return parent >= 0 && parent < node ? parent : -1;
}

const kMostProperties = 500; // of a node that are shown
const objectsOfScenes = new WeakMap();

/** Cameras, lights, helpers and meshes on a node. */
function ObjectsOn(scene, node) {
  if (!objectsOfScenes.has(scene)) {
    const found = new Map();
    for (const object of [...scene.cameras, ...scene.lights, ...scene.helpers, ...scene.meshes, ...scene.instances]) {
      if (found.has(object.node)) found.get(object.node).push(object);
      else found.set(object.node, [object]);
    }
    objectsOfScenes.set(scene, found);
  }
  return objectsOfScenes.get(scene).get(node) ?? [];
}

/** The user's properties of a node and of the objects on it. */
function PropertiesOf(scene, node) {
  return [scene.nodes[node], ...ObjectsOn(scene, node)].flatMap(({properties}) => properties).slice(0, kMostProperties);
}

/** Times of the keys of a node and of its own properties, ascending, each once. */
function KeysOfNode(scene, node) {
  const {translation, rotation, scale, properties} = scene.nodes[node];
  return KeyTimes([translation, rotation, scale, ...properties.map(({track}) => track)]);
}

/** The channels of a node: {id, label, unit, decimals, components, track, angles, stepped}. */
function Channels(scene, node) {
  const {translation, rotation, scale} = scene.nodes[node];
  const channels = [
    {id: "translation", label: "Translation", unit: "m", decimals: 4, components: 3, track: translation},
    {id: "rotation", label: "Rotation", unit: "\u00b0", decimals: 2, components: 3, track: rotation, angles: true},
    {id: "quaternion", label: "Quaternion", unit: "", decimals: 4, components: 4, track: rotation},
  ];
  if (scale) channels.push({id: "scale", label: "Scale", unit: "\u00d7", decimals: 4, components: 3, track: scale});
  const camera = scene.cameras.find(one => one.node === node);
  if (camera?.fieldOfView)
    channels.push({id: "angle", label: "Angle of view", unit: "\u00b0", decimals: 2, components: 1,
                   factor: 180 / Math.PI, track: camera.fieldOfView});
  PropertiesOf(scene, node).forEach(({name, track}, index) => {
    if (!track) return;
    const stepped = track.kind === kIntegerTrack;
    channels.push({id: "property " + index, label: name, property: true, unit: "", track, stepped,
                   decimals: stepped ? 0 : 4, components: Math.min(4, track.width)});
  });
  return channels;
}

/**
 * Points of a channel over its keys: {times, values (an array for each component), steps (points from key to key),
 * stepped}.
 * Straight between points, so kinds that are not straight between keys have points there.
 */
function CurveOf({track, components, angles, stepped = false, factor = 1}) {
  const count = track ? track.count : 0;
  const curved = count > 1 && (angles || track.kind === 6);
  const steps = curved ? Math.max(1, Math.min(kStepsBetweenKeys, Math.floor(kMostPoints / count))) : 1;
  const points = count === 0 ? 0 : (count - 1) * steps + 1;
  const times = new Float64Array(points);
  const values = Array.from({length: components}, () => new Float64Array(points));
  const at = new Float64Array(6);
  const turning = angles ? new ContinuousEuler() : null;
  for (let i = 0; i < points; ++i) {
    const key = Math.floor(i / steps), part = (i % steps) / steps;
    times[i] = part === 0 ? track.times[key] : track.times[key] + (track.times[key + 1] - track.times[key]) * part;
    // Of a key its own value: of several at one time, those that players pass over included.
    if (part === 0) for (let c = 0; c < track.width; ++c) at[c] = track.values[key * track.width + c];
    else Evaluate(track, times[i], at);
    const value = turning ? turning.next(at) : at;
    for (let c = 0; c < components; ++c) values[c][i] = value[c] * factor;
  }
  return {times, values, steps, stepped};
}

/**
 * Angles about X, Y and Z, in this order about fixed axes, of a quaternion x, y, z, w; in degrees. Where Y is a quarter
 * turn, X and Z turn about the same axis: X is as given, `wanted`, and Z has the rest.
 */
function EulerDegrees(q, out, wanted = 0) {
  const length = Math.hypot(q[0], q[1], q[2], q[3]) || 1;
  const x = q[0] / length, y = q[1] / length, z = q[2] / length, w = q[3] / length;
  const sine = Math.min(1, Math.max(-1, 2 * (w * y - z * x)));
  const turn = 180 / Math.PI;
  out[1] = Math.asin(sine) * turn;
  if (Math.abs(sine) > 0.999999) {
    out[0] = wanted;
    out[2] = Math.atan2(2 * (w * z - x * y), 1 - 2 * (x * x + z * z)) * turn + Math.sign(sine) * wanted;
  } else {
    out[0] = Math.atan2(2 * (w * x + y * z), 1 - 2 * (x * x + y * y)) * turn;
    out[2] = Math.atan2(2 * (w * z + x * y), 1 - 2 * (y * y + z * z)) * turn;
  }
  return out;
}

/** Angles that go on from those before: of the two sets of angles for a rotation, and their turns, the nearest. */
class ContinuousEuler {
  constructor() {
    this.before = null;
    this.angles = new Float64Array(3);
    this.other = new Float64Array(3);
  }

  next(q) {
    EulerDegrees(q, this.angles, this.before ? this.before[0] : 0);
    if (!this.before) this.before = Float64Array.from(this.angles);
    const [x, y, z] = this.angles;
    this.other[0] = x + 180;
    this.other[1] = 180 - y;
    this.other[2] = z + 180;
    const near = this.approach(this.angles) <= this.approach(this.other) ? this.angles : this.other;
    this.before.set(near);
    return near;
  }

  /** Whole turns that bring `angles` next to those before; answers how far they still are. */
  approach(angles) {
    let distance = 0;
    for (let c = 0; c < 3; ++c) {
      angles[c] -= Math.round((angles[c] - this.before[c]) / 360) * 360;
      distance += Math.abs(angles[c] - this.before[c]);
    }
    return distance;
  }
}
