"use strict";

// How often a take was sampled, which its file does not say, and the times of its samples.

const kUsualRates = [23.976, 24, 25, 29.97, 30, 48, 50, 59.94, 60, 90, 100, 119.88, 120, 240];
const kRateWithoutKeys = 30; // samples a second to step by where no keys say how many

class Samples {
  constructor(scene) {
    this.start = scene.start;
    this.end = scene.end;
    this.times = new Float64Array(0);
    /** Samples a second: the inverse of the smallest step between keys; null where no track has three. */
    this.rate = null;
    this.read(scene);
  }

  read(scene) {
    const lenses = scene.cameras.flatMap(camera => [camera.fieldOfView, camera.clipRange]);
    const motion = scene.nodes.flatMap(node => [node.translation, node.rotation, node.scale]);
    const tracks = [...motion, ...lenses, scene.switcher];
    const met = new Set(); // many tracks share their times
    const all = new Set();
    let least = Infinity;
    for (const track of tracks) {
      if (!track || track.count < 2) continue;
      const {times, count} = track;
      const place = times.byteOffset + " " + count;
      if (met.has(place)) continue;
      met.add(place);
      for (let i = 0; i < count; ++i) {
        if (Number.isFinite(times[i])) all.add(times[i]);
        // The end may cut the last step short.
        const step = times[i + 1] - times[i];
        if (i + 2 < count && step > 1e-4 && step < least) least = step;
      }
    }
    this.times = Float64Array.from(all).sort();
    if (least < Infinity) this.rate = Samples.usual(least);
  }

  /** The rate that people know of those that fit a step, which is rounded to single precision. */
  static usual(step) {
    const off = rate => Math.abs(rate * step - 1);
    const near = kUsualRates.filter(rate => off(rate) < 5e-4).sort((a, b) => off(a) - off(b));
    const whole = Math.round(1 / step);
    return near[0] ?? (off(whole) < 5e-4 ? whole : 1 / step);
  }

  get stepRate() { return this.rate ?? kRateWithoutKeys; }

  /** The sample next to a time: the time of its key, where it has one, since times of keys are rounded. */
  snap(time) {
    const clamped = Clamp(time, this.start, this.end);
    const near = this.start + Math.round((clamped - this.start) * this.stepRate) / this.stepRate;
    const sample = this.end - clamped < Math.abs(near - clamped) ? this.end : Math.min(near, this.end);
    const at = LowerBound(this.times, sample - 0.02 / this.stepRate);
    return this.times[at] < sample + 0.02 / this.stepRate ? this.times[at] : sample;
  }

  /** The sample before (by = -1) or after (1) a time. */
  step(time, by) {
    const place = (time - this.start) * this.stepRate;
    const next = by > 0 ? Math.floor(place + 1.02) : Math.ceil(place - 1.02);
    // From an end between two samples the one before is less than a step away.
    const nearer = by < 0 && next + 1 < place - 0.02 ? next + 1 : next;
    return this.snap(this.start + nearer / this.stepRate);
  }
}
