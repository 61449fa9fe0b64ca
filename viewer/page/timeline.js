"use strict";

// The timeline: a ruler of seconds and samples, keys of the chosen node, cuts of the camera switcher.

const kRulerHeight = 34;
const kRowHeight = 19;

/**
 * `app` has the state: scenes, shown scenes, chosen node, rate, span. A row of keys for each shown scene, and a strip
 * for the switcher where there is one.
 */
class Timeline {
  constructor(app, host) {
    this.app = app;
    this.chart = new Chart(host, app.span, context => this.paint(context));
    this.chart.onScrub = (time, event) => app.scrub(time, event.shiftKey);
    this.chart.onHover = place => this.hover(place);
    this.rows = [];
  }

  /** To be called when the chosen node, or which scenes are shown, has changed. */
  refresh() {
    this.rows = [];
    for (const {scene, offset, letter} of this.app.shown()) {
      const node = this.app.chosenIn(scene);
      this.rows.push({kind: "keys", scene, offset, letter, keys: node === null ? [] : KeysOfNode(scene, node)});
    }
    for (const {scene, offset, letter} of this.app.shown())
      if (scene.switcher) this.rows.push({kind: "cuts", scene, offset, letter, cuts: this.cuts(scene)});
    const height = kRulerHeight + this.rows.length * kRowHeight + 6;
    this.chart.host.style.flexBasis = height + "px";
    this.chart.invalidate();
  }

  /** Spans of the switcher with one camera each: {from, to, camera}. */
  cuts(scene) {
    const {times, values} = scene.switcher;
    const cuts = [];
    for (let i = 0; i < times.length; ++i) {
      const last = cuts.at(-1);
      if (last && last.camera === values[i]) continue;
      if (last) last.to = times[i];
      cuts.push({from: i === 0 ? Math.min(scene.start, times[0]) : times[i], to: scene.end, camera: values[i]});
    }
    return cuts;
  }

  paint(context) {
    this.ruler(context);
    this.rows.forEach((row, i) => {
      const y = kRulerHeight + i * kRowHeight;
      context.fillStyle = theme.colour("ground");
      context.fillRect(kGutter, y + 1, this.chart.plotWidth, kRowHeight - 3);
      context.fillStyle = theme.colour("dim");
      context.textAlign = "right";
      const letter = this.app.shown().length > 1 ? " " + row.letter : "";
      context.fillText((row.kind === "keys" ? "keys" : "camera") + letter, kGutter - 8, y + 9);
      context.save();
      context.beginPath();
      context.rect(kGutter - 5, y, this.chart.plotWidth + 10, kRowHeight);
      context.clip();
      if (row.kind === "keys") this.keys(context, row, y + kRowHeight / 2 - 0.5);
      else this.strip(context, row, y + 1);
      context.restore();
    });
  }

  ruler(context) {
    const {span, rate} = this.app;
    const chart = this.chart;
    const perSecond = chart.plotWidth / (span.to - span.from);
    context.textAlign = "center";
    const step = TickStep(64 / perSecond);
    const decimals = TickDecimals(step);
    context.fillStyle = theme.colour("text");
    for (const i of Ticks(span.from, span.to, step))
      this.label(context, Rounded(i * step, decimals) + " s", chart.x(i * step), 9);
    if (rate) this.frames(context, perSecond, rate);
    context.fillStyle = theme.colour("edge");
    context.fillRect(kGutter, kRulerHeight - 1, chart.plotWidth, 1);
    context.fillStyle = theme.colour("faint");
    context.textAlign = "right";
    if (rate) context.fillText("frames", kGutter - 8, 23);
  }

  /** Centred, but inside the chart. */
  label(context, text, x, y) {
    const half = context.measureText(text).width / 2;
    context.fillText(text, Math.min(Math.max(x, half + 2), this.chart.width - half - 2), y);
  }

  frames(context, perSecond, rate) {
    const {span} = this.app;
    const chart = this.chart;
    const perFrame = perSecond / rate;
    const labels = Math.max(1, TickStep(44 / perFrame));
    const ticks = perFrame >= 5 ? 1 : Math.max(1, labels / 5);
    context.fillStyle = theme.colour("edge");
    for (const f of Ticks(span.from * rate, span.to * rate, ticks))
      context.fillRect(Math.round(chart.x(f * ticks / rate) - 0.5), kRulerHeight - 5, 1, 4);
    for (const f of Ticks(span.from * rate, span.to * rate, labels)) {
      const x = chart.x(f * labels / rate);
      context.fillStyle = theme.colour("dim");
      context.fillRect(Math.round(x - 0.5), kRulerHeight - 7, 1, 6);
      this.label(context, String(Math.round(f * labels)), x, 22);
    }
  }

  keys(context, row, y) {
    const chart = this.chart, span = this.app.span;
    const [first, end] = Within(row.keys, span.from - row.offset, span.to - row.offset);
    context.fillStyle = theme.colour(this.app.shown().length > 1 ? row.letter.toLowerCase() : "key");
    const apart = (end - first) > 1 ? chart.plotWidth / (end - first) : Infinity;
    const r = apart > 9 ? 4 : 3;
    let drawn = -Infinity;
    for (let i = first; i < end; ++i) {
      const x = chart.x(row.keys[i] + row.offset);
      if (x - drawn < 0.75) continue; // not to be told apart from the one before
      drawn = x;
      if (apart < 5) {
        context.fillRect(x - 0.5, y - 5, 1, 10);
        continue;
      }
      context.beginPath();
      context.moveTo(x - r, y);
      context.lineTo(x, y - r - 1);
      context.lineTo(x + r, y);
      context.lineTo(x, y + r + 1);
      context.fill();
    }
  }

  strip(context, row, y) {
    const chart = this.chart;
    context.textAlign = "left";
    for (const cut of row.cuts) {
      const from = Math.max(chart.x(cut.from + row.offset), kGutter);
      const to = Math.min(chart.x(cut.to + row.offset), chart.width - kRightMargin);
      if (to <= from) continue;
      const camera = row.scene.cameras[cut.camera];
      context.fillStyle = camera ? CameraColour(cut.camera) : theme.colour("raised");
      context.fillRect(from, y, Math.max(1, to - from - 1), kRowHeight - 3);
      context.fillStyle = theme.colour(camera ? "on-camera" : "dim");
      const name = ShortText(context, camera ? PlainName(camera.name) : "nothing on air", to - from - 12);
      if (name) context.fillText(name, from + 6, y + kRowHeight / 2 - 1.5);
    }
  }

  hover(place) {
    if (!place || place[0] < kGutter - 4) return this.chart.read(null);
    const time = this.chart.timeAt(place[0]);
    const lines = [Make("div", "time", this.app.timeText(this.app.snapped(time)))];
    const row = this.rows[Math.floor((place[1] - kRulerHeight) / kRowHeight)];
    if (place[1] > kRulerHeight && row?.kind === "cuts") {
      const cut = row.cuts.findLast(one => one.from + row.offset <= time);
      const camera = cut && row.scene.cameras[cut.camera];
      lines.push(Make("div", "", camera ? MakeName(camera.name) : "nothing on air"));
    }
    this.chart.read(lines, place[0], place[1]);
  }
}

/** Colours that tell cameras apart, the same in view and strip; dark or light enough for the theme's ground. */
function CameraColour(index) {
  return `hsl(${(42 + index * 137.5) % 360}, 62%, ${theme.colour("camera")})`;
}

/** `text`, cut with an ellipsis to `width` pixels; empty where not even that has room. */
function ShortText(context, text, width) {
  if (width < 14) return "";
  if (text.length < 200 && context.measureText(text).width <= width) return text;
  let low = 0, high = Math.min(text.length, 200);
  while (low < high) {
    const middle = (low + high + 1) >> 1;
    if (context.measureText(text.slice(0, middle) + "\u2026").width <= width) low = middle;
    else high = middle - 1;
  }
  return low === 0 ? "" : text.slice(0, low) + "\u2026";
}
