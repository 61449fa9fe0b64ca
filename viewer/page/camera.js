"use strict";

// From where the scene is seen. What is drawn is in a right-handed world with Y up, in metres: the file's world after a
// mirroring matrix. An eye looks along -Z of its own axes, Y up and X right.

/** The file's axes in the drawn world, by what is up in the file. All of them mirror. */
const kMirrors = {
  "+Y": Float64Array.of(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1, 0),
  "+Y turned": Float64Array.of(-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0),
  "+Z": Float64Array.of(1, 0, 0, 0, 0, 0, 1, 0, 0, 1, 0, 0),
  "-Z": Float64Array.of(-1, 0, 0, 0, 0, 0, -1, 0, 0, 1, 0, 0),
};

/** From the file's world into the one that is drawn: 12 numbers. */
function MirrorOf(scene) {
  if (scene.up === "+Y") {
    // "Keep positive Z" has turned node 0 by half a turn about Y.
    const rotation = scene.nodes[0]?.rotation;
    if (rotation && Math.abs(rotation.values[1]) === 1) return kMirrors["+Y turned"];
  }
  return kMirrors[scene.up] || kMirrors["+Y"];
}

/**
 * @typedef {Object} Eye
 * @property {Float64Array} world its axes and place in the drawn world, 12 numbers, without scale
 * @property {number} angle vertical, radians
 * @property {number} aspect width divided by height of the picture; 0: that of the window
 * @property {number} near metres
 * @property {number} far
 */

/** The index of the camera that the switcher has on air, or -1. */
function OnAir(scene, time) {
  if (!scene.switcher) return -1;
  const index = NumberAt(scene.switcher, time, -1);
  return index >= 0 && index < scene.cameras.length ? index : -1;
}

/** Columns 0 to 2 made 1 long; null where that is not possible. */
function WithoutScale(m) {
  const out = Float64Array.from(m);
  for (let column = 0; column < 3; ++column) {
    const length = Math.hypot(m[column], m[column + 4], m[column + 8]);
    if (!(length > 0 && length < Infinity)) return null;
    for (let row = column; row < 12; row += 4) out[row] /= length;
  }
  return [out[3], out[7], out[11]].every(Number.isFinite) ? out : null;
}

const kDefaultAngle = 0.7; // radians

/** A number above 0, or another. */
function Positive(value, otherwise) {
  return value > 0 && value < Infinity ? value : otherwise;
}

/** The picture of a camera: its width divided by its height, and its vertical angle in radians. */
function Lens(camera, time) {
  const inverseAspect = Positive(camera.inverseAspect, 9 / 16);
  const across = NumberAt(camera.fieldOfView, time, kDefaultAngle);
  const angle = 2 * Math.atan(inverseAspect * Math.tan(across / 2));
  return {aspect: 1 / inverseAspect, angle: angle > 1e-4 && angle < 3.1 ? angle : kDefaultAngle, across};
}

/**
 * The eye of a camera of the file.
 * @param {Pose} pose
 * @param {Float64Array} mirror
 * @param {number} index of the camera
 * @param {number} reach metres from the camera that are drawn at least
 * @returns {?Eye} null where the file does not place the camera
 */
function EyeOf(pose, mirror, index, reach) {
  const camera = pose.scene.cameras[index];
  if (!camera) return null;
  const node = camera.node >= 0 ? pose.world.subarray(12 * camera.node, 12 * camera.node + 12) : kIdentity;
  const world = new Float64Array(12);
  Multiply(mirror, 0, node, 0, world, 0);
  for (const i of [2, 6, 10]) world[i] = -world[i]; // the file's cameras look along +Z
  const eye = WithoutScale(world);
  if (!eye) return null;
  const clip = [0.01, 0];
  if (camera.clipRange) Evaluate(camera.clipRange, pose.time, clip);
  const near = Positive(clip[0], 0.01);
  return {world: eye, ...Lens(camera, pose.time), near, far: Math.max(Positive(clip[1], 0), reach, 2 * near)};
}

/** An eye that the user moves around a point. */
class FreeView {
  constructor() {
    this.target = [0, 0, 0]; // in the drawn world, metres
    this.distance = 5;
    this.yaw = 0.6; // radians, 0 looks along -Z
    this.pitch = 0.2; // radians, positive from above
  }

  /** @returns {Eye} */
  eye(reach) {
    const {yaw, pitch, distance, target} = this;
    const [sy, cy, sp, cp] = [Math.sin(yaw), Math.cos(yaw), Math.sin(pitch), Math.cos(pitch)];
    const back = [sy * cp, sp, cy * cp];
    const place = target.map((value, i) => value + distance * back[i]);
    const world = Float64Array.of(cy, -sy * sp, back[0], place[0], 0, cp, back[1], place[1], -sy, -cy * sp, back[2],
                                  place[2]);
    const near = distance / 200;
    return {world, angle: kDefaultAngle, aspect: 0, near, far: Math.max(2 * distance + reach, 10 * near)};
  }

  /** Turns, by parts of the window's height. */
  orbit(x, y) {
    this.yaw -= x * 3;
    this.pitch = Math.min(1.57, Math.max(-1.57, this.pitch + y * 3));
  }

  /** Moves the target along with the pointer. */
  pan(x, y) {
    const {world} = this.eye(0);
    const factor = 2 * this.distance * Math.tan(kDefaultAngle / 2);
    for (let i = 0; i < 3; ++i) this.target[i] += factor * (-x * world[4 * i] + y * world[4 * i + 1]);
  }

  zoom(factor) {
    this.distance = Math.min(1e6, Math.max(1e-5, this.distance * factor));
  }

  /** Shows a box whole, from where the view looks. @param {Box} box */
  frame(box, aspect) {
    this.target = box.centre();
    const {world} = this.eye(0);
    const tangent = Math.tan(kDefaultAngle / 2);
    let distance = 1e-4;
    for (const corner of box.corners()) {
      const offset = corner.map((value, i) => value - this.target[i]);
      const [x, y, z] = [0, 1, 2].map(axis => [0, 1, 2].reduce((sum, i) => sum + world[4 * i + axis] * offset[i], 0));
      distance = Math.max(distance, z + Math.max(Math.abs(y), Math.abs(x) / aspect) / tangent);
    }
    this.distance = Math.min(1e6, 1.1 * distance);
  }
}

/** Where points of the drawn world are on the screen. */
class Projection {
  /**
   * @param {Eye} eye
   * @param {{x: number, y: number, width: number, height: number}} picture in pixels of the page
   */
  constructor(eye, picture) {
    this.eye = eye;
    this.picture = picture;
    this.view = Inverted(eye.world);
    this.scale = picture.height / 2 / Math.tan(eye.angle / 2);
  }

  /** Sets out to x and y in pixels and the depth in metres; false where the point is not in front of the eye. */
  project(x, y, z, out) {
    Transform(this.view, x, y, z, 1, out, 0);
    const depth = -out[2];
    out[2] = depth;
    if (!(depth > this.eye.near)) return false;
    out[0] = this.picture.x + this.picture.width / 2 + this.scale * out[0] / depth;
    out[1] = this.picture.y + this.picture.height / 2 - this.scale * out[1] / depth;
    return true;
  }
}

/** The largest part of a window that has an aspect; all of it for 0. */
function Letterbox(width, height, aspect) {
  if (!(aspect > 0)) return {x: 0, y: 0, width, height};
  const fitted = Math.min(width, height * aspect);
  return {x: (width - fitted) / 2, y: (height - fitted / aspect) / 2, width: fitted, height: fitted / aspect};
}
