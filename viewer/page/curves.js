"use strict";

// Curves of one channel of the chosen node, those of B dashed, with keys and the values under the pointer.

const kComponentColours = ["x", "y", "z", "w"];
const kCurveMargin = 14; // above and below the curves

class Curves {
  constructor(app, panel) {
    this.app = app;
    this.panel = panel;
    this.groups = panel.querySelector("#curve-groups");
    this.property = panel.querySelector("#curve-property");
    this.legend = panel.querySelector("#curve-legend");
    this.empty = panel.querySelector(".empty");
    this.chart = new Chart(panel.querySelector(".chart"), app.span, context => this.paint(context));
    this.chart.onScrub = (time, event) => app.scrub(time, event.shiftKey);
    this.chart.onHover = place => this.hover(place);
    this.wanted = "rotation"; // the channel last asked for, kept from node to node
    this.muted = new Set();   // components that are not shown
    this.fit = false;
    this.lines = [];          // one for each shown scene: {scene, offset, letter, channel, curve}
    this.numbers = [];
    this.value = new Float64Array(4);
    this.property.addEventListener("change", () => this.choose(this.property.value));
  }

  choose(id) {
    this.wanted = id;
    this.refresh();
  }

  /** To be called when the chosen node, or which scenes are shown, has changed. */
  refresh() {
    const shown = this.app.shown();
    const lists = shown.map(({scene}) => {
      const node = this.app.chosenIn(scene);
      return node === null ? [] : Channels(scene, node);
    });
    const offered = lists.find(list => list.length > 0) ?? [];
    const channel = offered.find(one => one.id === this.wanted) ?? offered[0] ?? null;
    this.channel = channel;
    this.lines = [];
    shown.forEach((one, i) => {
      const own = channel && lists[i].find(other => other.id === channel.id && other.label === channel.label);
      if (own) this.lines.push({...one, channel: own, curve: CurveOf(own)});
    });
    this.offer(offered);
    this.showLegend();
    const points = this.lines.some(line => line.curve.times.length > 0);
    this.empty.hidden = points;
    if (!points)
      this.empty.textContent = channel ? "This node has no keys here" : "Choose a node to see its curves";
    this.chart.read(null);
    this.chart.invalidate();
    this.setTime(this.app.time);
  }

  /** Buttons for the channels that every node has, a list for properties. */
  offer(channels) {
    const usual = channels.filter(channel => !channel.property);
    this.groups.replaceChildren(...usual.map(channel => {
      const button = Make("button", "", channel.label);
      button.type = "button";
      button.ariaPressed = String(channel === this.channel);
      button.addEventListener("click", () => {
        this.choose(channel.id);
        this.groups.querySelector('[aria-pressed="true"]')?.focus({preventScroll: true});
      });
      return button;
    }));
    const properties = channels.filter(channel => channel.property);
    this.property.hidden = properties.length === 0;
    const heading = new Option("Properties", "");
    heading.disabled = true;
    this.property.replaceChildren(heading, ...properties.map(({label, id}) => new Option(PlainName(label), id)));
    this.property.value = this.channel?.property ? this.channel.id : "";
  }

  showLegend() {
    this.numbers = [];
    const components = this.channel && this.lines.length > 0 ? this.channel.components : 0;
    this.legend.replaceChildren(...Array.from({length: components}, (_, c) => {
      const number = Make("span", "number");
      this.numbers.push(number);
      const name = components === 1 ? "Value" : kAxes[c];
      const button = Make("button", "", Make("i", "colour c" + c), name, number);
      button.type = "button";
      button.ariaPressed = String(!this.muted.has(c));
      button.title = "Show or hide " + name;
      button.addEventListener("click", () => {
        if (!this.muted.delete(c)) this.muted.add(c);
        button.ariaPressed = String(!this.muted.has(c));
        this.chart.invalidate();
      });
      return button;
    }));
  }

  setTime(time) {
    this.chart.setTime(time);
    if (this.lines.length === 0) return;
    const line = this.lines[0];
    this.read(line, time - line.offset, this.value);
    this.numbers.forEach((number, c) => SetText(number, this.text(this.value[c])));
  }

  withUnit(number) { return number + (this.channel.unit === "m" ? " m" : this.channel.unit); }

  text(value) {
    return Number.isNaN(value) ? "\u2013" : this.withUnit(Rounded(value, this.channel.decimals));
  }

  /** The values of a curve at a time of its own scene. */
  read({curve}, time, out) {
    const {times, values, stepped} = curve;
    const i = LowerBound(times, time);
    for (let c = 0; c < values.length; ++c) {
      const of = values[c];
      if (times.length === 0) out[c] = NaN;
      else if (i === 0) out[c] = of[0];
      else if (i === times.length) out[c] = of[i - 1];
      else if (times[i] === time) out[c] = of[i];
      else if (stepped) out[c] = of[i - 1];
      else out[c] = of[i - 1] + (of[i] - of[i - 1]) * (time - times[i - 1]) / (times[i] - times[i - 1]);
    }
  }

  /** The values that the axis spans. */
  extent() {
    let low = Infinity, high = -Infinity;
    for (const {curve, offset} of this.lines) {
      const [first, end] = this.fit ? Within(curve.times, this.app.span.from - offset, this.app.span.to - offset)
                                    : [0, curve.times.length];
      curve.values.forEach((of, c) => {
        if (this.muted.has(c)) return;
        for (let i = first; i < end; ++i) {
          if (of[i] < low) low = of[i];
          if (of[i] > high) high = of[i];
        }
      });
    }
    if (!(low <= high) || !Number.isFinite(high - low)) return [-1, 1];
    // Nothing smaller than what people see: noise of a constant is a straight line.
    const least = Math.max({m: 0.002, "\u00b0": 0.2}[this.channel.unit] ?? 0.002, Math.abs(high) * 1e-5);
    const more = Math.max(0, least - (high - low)) / 2;
    return [low - more, high + more];
  }

  paint(context) {
    const points = this.lines.some(line => line.curve.times.length > 0);
    if (!points) return;
    const chart = this.chart;
    const [low, high] = this.extent();
    const y = value => chart.height - kCurveMargin - (value - low) / (high - low) * (chart.height - 2 * kCurveMargin);
    this.y = y;
    this.grid(context, low, high, y);
    context.save();
    context.beginPath();
    context.rect(kGutter - 4, 0, chart.plotWidth + 8, chart.height);
    context.clip();
    for (const line of this.lines)
      for (let c = line.curve.values.length - 1; c >= 0; --c)
        if (!this.muted.has(c)) this.line(context, line, c, y);
    context.restore();
  }

  grid(context, low, high, y) {
    const chart = this.chart, span = this.app.span;
    const step = TickStep(28 * (high - low) / Math.max(30, chart.height - 2 * kCurveMargin));
    context.textAlign = "right";
    for (const i of Ticks(low - step * 0.3, high + step * 0.3, step)) {
      const at = Math.round(y(i * step)) + 0.5;
      context.fillStyle = theme.colour(i === 0 ? "grid-strong" : "grid");
      context.fillRect(kGutter, at - 0.5, chart.plotWidth, 1);
      context.fillStyle = theme.colour("dim");
      context.fillText(this.withUnit(Rounded(i * step, TickDecimals(step))), kGutter - 6, at);
    }
    const seconds = TickStep(64 / chart.plotWidth * (span.to - span.from));
    context.fillStyle = theme.colour("grid");
    for (const i of Ticks(span.from, span.to, seconds))
      context.fillRect(Math.round(chart.x(i * seconds) - 0.5), 0, 1, chart.height);
  }

  line(context, {curve, offset, letter}, c, y) {
    const {times, stepped} = curve;
    const of = curve.values[c];
    const chart = this.chart, span = this.app.span;
    const [first, end] = Within(times, span.from - offset, span.to - offset);
    if (first >= end) return;
    context.strokeStyle = context.fillStyle = theme.colour(kComponentColours[c]);
    context.lineWidth = 1.5;
    context.lineJoin = "round";
    context.setLineDash(letter === "B" && this.lines.length > 1 ? [5, 4] : []);
    context.beginPath();
    const dense = end - first > 4 * chart.plotWidth;
    let column = -1, lowest = 0, highest = 0;
    // Held before the first key and after the last.
    if (first === 0) context.moveTo(chart.x(Math.min(times[0] + offset, span.from)), y(of[0]));
    for (let i = first; i < end; ++i) {
      const x = chart.x(times[i] + offset), at = y(of[i]);
      if (!dense) {
        if (stepped && i > first) context.lineTo(x, y(of[i - 1]));
        context.lineTo(x, at);
      } else if (Math.floor(x) !== column) {
        if (column >= 0) {
          context.lineTo(column, lowest);
          context.lineTo(column, highest);
        }
        column = Math.floor(x);
        lowest = highest = at;
      } else {
        lowest = Math.min(lowest, at);
        highest = Math.max(highest, at);
      }
    }
    if (end === times.length) context.lineTo(chart.x(Math.max(times[end - 1] + offset, span.to)), y(of[end - 1]));
    context.stroke();
    context.setLineDash([]);
    this.keys(context, curve, of, offset, first, end, y);
  }

  keys(context, {times, steps}, of, offset, first, end, y) {
    const count = (end - first) / steps;
    if (count * 8 > this.chart.plotWidth) return; // too close to be told apart; the timeline has them
    for (let i = Math.ceil(first / steps) * steps; i < end; i += steps)
      context.fillRect(this.chart.x(times[i] + offset) - 2.5, y(of[i]) - 2.5, 5, 5);
  }

  /** The time of the key within 5 pixels of x, or null. */
  keyAt(x) {
    for (const {curve, offset} of this.lines) {
      const near = LowerBound(curve.times, this.chart.timeAt(x - 5) - offset);
      for (let i = Math.ceil(near / curve.steps) * curve.steps; i < curve.times.length; i += curve.steps) {
        const at = this.chart.x(curve.times[i] + offset);
        if (at > x + 5) break;
        return curve.times[i] + offset;
      }
    }
    return null;
  }

  hover(place) {
    if (!place || place[0] < kGutter - 4 || this.lines.length === 0 || !this.empty.hidden) return this.chart.read(null);
    const key = this.keyAt(place[0]);
    const time = key ?? this.chart.timeAt(place[0]);
    const rows = [Make("div", "time", this.app.timeText(time) + (key === null ? "" : " \u00b7 key"))];
    const values = this.lines.map(line => {
      const out = new Float64Array(4);
      this.read(line, time - line.offset, out);
      return out;
    });
    if (this.lines.length > 1)
      rows.push(Make("div", "row", Make("i"), ...this.lines.map(({letter}) => Make("span", "number", letter))));
    for (let c = 0; c < this.channel.components; ++c) {
      if (this.muted.has(c)) continue;
      const row = Make("div", "row", Make("i", "colour c" + c), this.channel.components === 1 ? "" : kAxes[c]);
      for (const out of values) row.append(Make("span", "number", this.text(out[c])));
      rows.push(row);
    }
    this.chart.read(rows, key === null ? place[0] : this.chart.x(key), place[1]);
  }
}
