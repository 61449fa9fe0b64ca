"use strict";

// Two files over each other: which of them is shown, how much later B starts, which nodes belong together.

class Compare {
  constructor(app, panel) {
    this.app = app;
    this.mode = app.scenes.length > 1 ? "both" : "A";
    this.offset = 0; // seconds that B starts later than A
    this.twins = new Map();
    panel.hidden = app.scenes.length < 2;
    document.getElementById("listed").hidden = panel.hidden;
    this.field = panel.querySelector("#offset");
    this.field.addEventListener("input", () => {
      const offset = this.field.valueAsNumber;
      if (!Number.isFinite(offset) || Math.abs(offset) > 1e6) return;
      this.offset = offset;
      app.shownChanged();
    });
    // A field left empty shows again what counts.
    this.field.addEventListener("change", () => { this.field.value = String(this.offset); });
  }

  show(mode) {
    if (this.app.scenes.length < 2) return;
    this.mode = mode;
    this.app.shownChanged();
  }

  /** The scenes that are shown: {scene, offset, letter}. */
  shown() {
    return this.app.scenes.map((scene, i) => ({scene, letter: "AB"[i], offset: i === 1 ? this.offset : 0}))
      .filter(({letter}) => this.mode === "both" || this.mode === letter);
  }

  /** The node of the other scene that has the same name, of several the one with the same place among them; or null. */
  twin(scene, node) {
    if (!this.twins.has(scene)) {
      const other = this.app.scenes[1 - this.app.scenes.indexOf(scene)];
      this.twins.set(scene, Compare.match(scene, other));
    }
    return this.twins.get(scene)[node];
  }

  static match(from, to) {
    const places = new Map();
    to.nodes.forEach(({name}, i) => places.has(name) ? places.get(name).push(i) : places.set(name, [i]));
    const met = new Map();
    return from.nodes.map(({name}) => {
      const nth = met.get(name) ?? 0;
      met.set(name, nth + 1);
      return places.get(name)?.[nth] ?? null;
    });
  }
}
