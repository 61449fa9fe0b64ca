"use strict";

// What the timeline and the curves share: the span of time in sight, a canvas sharp on every screen, ticks, pointers.

/** The part of the take that is in sight. Timeline and curves show the same. Times in seconds. */
class TimeSpan {
  constructor() {
    this.start = 0;
    this.end = 1;
    this.from = 0;
    this.to = 1;
    this.length = 1;   // of the whole range; never 0
    this.least = 1e-4; // that is shown
    this.onChange = () => {};
  }

  /** The whole range of time; shows all of it where all of the former range was in sight. */
  setRange(start, end) {
    const whole = this.isWhole();
    this.start = start;
    this.end = end;
    // Times so far from 0 that single precision does not tell them apart make no span, either.
    this.least = Math.max(1e-4, (end - start) * 1e-4, Math.max(Math.abs(start), Math.abs(end)) * 1e-6);
    this.length = end - start >= this.least ? end - start : Math.max(1, this.least);
    if (whole || this.from >= end || this.to <= start) this.showAll();
    else this.show(this.from, this.to);
  }

  isWhole() { return this.from <= this.start && this.to >= this.end; }

  showAll() { this.show(this.start, this.start + this.length); }

  show(from, to) {
    const length = Clamp(to - from, this.least, this.length);
    this.from = Clamp(from, this.start, this.start + this.length - length);
    this.to = this.from + length;
    this.onChange();
  }

  zoom(time, factor) {
    this.show(time - (time - this.from) * factor, time + (this.to - time) * factor);
  }

  pan(by) { this.show(this.from + by, this.to + by); }

  /** Turns the page when `time` has left the span. */
  follow(time) {
    if (time < this.from || time > this.to) this.show(time, time + this.to - this.from);
  }
}

/** Colours of the theme, read once and again when the theme changes. */
const theme = {
  colours: null,
  colour(name) {
    if (!this.colours) {
      const style = getComputedStyle(document.documentElement);
      this.colours = new Proxy({}, {get: (known, key) => known[key] ??= style.getPropertyValue("--" + key).trim()});
    }
    return this.colours[name];
  },
  forget() { this.colours = null; },
};

const kGutter = 68; // pixels on the left of timeline and curves, for labels
const kRightMargin = 14;

/**
 * A canvas over the span of time, with a playhead of its own element: moving it draws nothing. `paint(context, width,
 * height)` draws in CSS pixels; it is called once before the next frame after `invalidate()`.
 */
class Chart {
  constructor(host, span, paint) {
    this.host = host;
    this.span = span;
    this.paint = paint;
    this.canvas = host.querySelector("canvas");
    this.context = this.canvas.getContext("2d");
    this.playhead = host.querySelector(".playhead");
    this.reading = host.querySelector(".reading");
    this.width = 0;
    this.height = 0;
    this.time = 0;
    this.dirty = false;
    this.onScrub = () => {};   // (time, event)
    this.onHover = () => {};   // (x, y) or null where the pointer is elsewhere
    new ResizeObserver(() => this.resize()).observe(host);
    this.listen();
  }

  resize() {
    this.width = this.host.clientWidth;
    this.height = this.host.clientHeight;
    const ratio = window.devicePixelRatio || 1;
    this.canvas.width = Math.max(1, Math.round(this.width * ratio));
    this.canvas.height = Math.max(1, Math.round(this.height * ratio));
    this.context.setTransform(ratio, 0, 0, ratio, 0, 0);
    this.draw(); // at once: the canvas is empty now
    this.setTime(this.time);
  }

  invalidate() {
    if (this.dirty) return;
    this.dirty = true;
    requestAnimationFrame(() => this.dirty && this.draw());
  }

  draw() {
    this.dirty = false;
    if (this.width <= kGutter + kRightMargin) return;
    this.context.clearRect(0, 0, this.width, this.height);
    this.context.font = "11px " + getComputedStyle(document.body).fontFamily;
    this.context.textBaseline = "middle";
    this.paint(this.context, this.width, this.height);
  }

  get plotWidth() { return Math.max(1, this.width - kGutter - kRightMargin); }
  x(time) { return kGutter + (time - this.span.from) / (this.span.to - this.span.from) * this.plotWidth; }
  timeAt(x) { return this.span.from + (x - kGutter) / this.plotWidth * (this.span.to - this.span.from); }

  setTime(time) {
    this.time = time;
    const x = this.x(time);
    const shown = x >= kGutter - 1 && x <= this.width - kRightMargin + 1;
    if (this.playhead.hidden === shown) this.playhead.hidden = !shown;
    this.playhead.style.transform = `translateX(${x - 0.5}px)`;
  }

  /** A box of text near (x, y) that stays inside the chart; null hides it. */
  read(content, x = 0, y = 0) {
    this.reading.hidden = content === null;
    if (content === null) return;
    this.reading.replaceChildren(...content);
    const box = this.reading.getBoundingClientRect();
    const left = x + 14 + box.width > this.width ? x - 14 - box.width : x + 14;
    const top = Math.min(Math.max(y - box.height / 2, 2), Math.max(2, this.height - box.height - 2));
    this.reading.style.transform = `translate(${Math.max(2, left)}px, ${top}px)`;
  }

  listen() {
    const host = this.host;
    let drag = null; // "scrub", or where a pan began
    const place = event => {
      const box = host.getBoundingClientRect();
      return [event.clientX - box.left, event.clientY - box.top];
    };
    host.addEventListener("pointerdown", event => {
      if (event.button > 1) return;
      const [x] = place(event);
      host.setPointerCapture(event.pointerId);
      drag = event.button === 1 ? {x, from: this.span.from, to: this.span.to} : "scrub";
      if (drag === "scrub") this.onScrub(this.timeAt(x), event);
      event.preventDefault();
      LeaveTextField();
    });
    host.addEventListener("pointermove", event => {
      const [x, y] = place(event);
      if (drag === "scrub") this.onScrub(this.timeAt(x), event);
      else if (drag) {
        const by = (drag.x - x) / this.plotWidth * (drag.to - drag.from);
        this.span.show(drag.from + by, drag.to + by);
      }
      this.onHover([x, y]);
    });
    const stop = () => { drag = null; };
    host.addEventListener("pointerup", stop);
    host.addEventListener("pointercancel", stop);
    host.addEventListener("pointerleave", () => this.onHover(null));
    host.addEventListener("dblclick", () => this.span.showAll());
    host.addEventListener("wheel", event => {
      event.preventDefault();
      const length = this.span.to - this.span.from;
      const unit = event.deltaMode === 0 ? 1 : 30;
      if (event.shiftKey || Math.abs(event.deltaX) > Math.abs(event.deltaY))
        this.span.pan((event.deltaX || event.deltaY) * unit / this.plotWidth * length);
      else
        this.span.zoom(this.timeAt(place(event)[0]), Math.exp(Clamp(event.deltaY * unit, -200, 200) * 0.002));
    }, {passive: false});
  }
}

function Clamp(value, least, most) { return Math.min(Math.max(value, least), most); }

/** The step of ticks that are at least `least` apart: 1, 2 or 5 times a power of ten. */
function TickStep(least) {
  const power = 10 ** Math.floor(Math.log10(least));
  for (const times of [1, 2, 5, 10])
    if (power * times >= least * 0.9999) return power * times;
  return power * 10;
}

/** Whole multiples of `step` from `from` to `to`: the factors. */
function* Ticks(from, to, step) {
  const first = Math.ceil(from / step - 1e-4), last = Math.floor(to / step + 1e-4);
  if (last - first < 5000) for (let i = first; i <= last; ++i) yield i;
}

/** Decimals that tell ticks of `step` apart. */
function TickDecimals(step) {
  return Math.min(9, Math.max(0, Math.ceil(-Math.log10(step) - 1e-9)));
}

/** The first and last entry of ascending `times` within [from, to], each widened by one: [first, last). */
function Within(times, from, to) {
  return [Math.max(0, LowerBound(times, from) - 1), Math.min(times.length, LowerBound(times, to) + 2)];
}

/** The first place in ascending `times` that is not before `time`. */
function LowerBound(times, time) {
  let low = 0, high = times.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (times[middle] < time) low = middle + 1;
    else high = middle;
  }
  return low;
}

/** Keys of the keyboard go to the page again after a click elsewhere. */
function LeaveTextField() {
  if (document.activeElement?.matches("input, select")) document.activeElement.blur();
}
