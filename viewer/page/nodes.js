"use strict";

// The list of nodes: a tree of which only the rows in sight exist, so that thousands of nodes cost no more than fifty.

const kNodeHeight = 22;

/** Pixels before a row: each level less where it is deep, so that there is room for names. */
function Indent(depth) {
  return 4 + 11 * Math.min(depth, 6) + 4 * Math.min(Math.max(depth - 6, 0), 16);
}

const kKinds = [
  ["all", "All", () => true],
  ["animated", "Animated", node => node.keyCount > 0],
  ["camera", "Cameras", (node, scene) => KindsOf(scene)[node.index] === "camera"],
  ["light", "Lights", (node, scene) => KindsOf(scene)[node.index] === "light"],
  ["mesh", "Meshes", (node, scene) => KindsOf(scene)[node.index] === "mesh"],
  ["bone", "Bones", (node, scene) => KindsOf(scene)[node.index] === "bone"],
  ["properties", "With properties", (node, scene) => PropertiesOf(scene, node.index).length > 0],
];

const kindsOfScenes = new WeakMap();

/** What each node is: by the object on it, or because skins name it. */
function KindsOf(scene) {
  if (kindsOfScenes.has(scene)) return kindsOfScenes.get(scene);
  const kinds = scene.nodes.map(() => "node");
  const name = (objects, kind) => objects.forEach(({node}) => { if (node in kinds) kinds[node] = kind; });
  for (const {skin} of scene.meshes) if (skin) for (const bone of skin.bones) if (bone in kinds) kinds[bone] = "bone";
  name(scene.helpers, "helper");
  name(scene.meshes, "mesh");
  name(scene.instances, "mesh");
  name(scene.lights, "light");
  name(scene.cameras, "camera");
  kindsOfScenes.set(scene, kinds);
  return kinds;
}

class NodeTree {
  constructor(app, panel) {
    this.app = app;
    this.tree = panel.querySelector("#tree");
    this.space = panel.querySelector("#tree-space");
    this.search = panel.querySelector("#search");
    this.kinds = panel.querySelector("#kinds");
    this.count = panel.querySelector("#tree-count");
    this.rows = [];     // nodes in the order shown
    this.matches = null; // nodes that the search found; null without a search
    this.closed = new Map(); // a set of closed nodes for each scene
    this.pool = [];
    for (const [id, label] of kKinds) this.kinds.append(new Option(label, id));
    this.listen();
    new ResizeObserver(() => this.draw()).observe(this.tree);
  }

  listen() {
    this.tree.addEventListener("scroll", () => this.draw(), {passive: true});
    this.search.addEventListener("input", () => this.list());
    this.kinds.addEventListener("change", () => this.list());
    this.search.addEventListener("keydown", event => this.searchKey(event));
    this.tree.addEventListener("keydown", event => this.treeKey(event));
    this.space.addEventListener("click", event => {
      const row = event.target.closest(".node");
      if (!row) return;
      if (event.target.closest(".twisty")) this.toggle(row.node);
      else this.app.choose(this.scene, row.node);
    });
    this.space.addEventListener("dblclick", event => {
      if (event.target.closest(".node") && !event.target.closest(".twisty")) this.app.run("frame");
    });
  }

  show(scene) {
    if (this.scene === scene) return;
    this.scene = scene;
    if (!this.closed.has(scene)) this.closed.set(scene, new Set());
    this.order(scene);
    this.list();
  }

  /** Depths and depth-first order, whatever order the file has. */
  order(scene) {
    const nodes = scene.nodes;
    this.children = nodes.map(() => []);
    const roots = [];
    nodes.forEach((_, i) => (this.children[ParentOf(scene, i)] ?? roots).push(i));
    this.depths = new Int32Array(nodes.length);
    this.sequence = [];
    const waiting = roots.reverse();
    while (waiting.length > 0) {
      const i = waiting.pop();
      this.sequence.push(i);
      for (let c = this.children[i].length - 1; c >= 0; --c) {
        this.depths[this.children[i][c]] = this.depths[i] + 1;
        waiting.push(this.children[i][c]);
      }
    }
  }

  /** Forms the rows anew: what is not closed, or what is found with the nodes above it. */
  list() {
    const {nodes} = this.scene;
    const text = this.search.value.trim().toLowerCase();
    const fits = kKinds.find(([id]) => id === this.kinds.value)[2];
    const filtered = text !== "" || this.kinds.value !== "all";
    this.matches = null;
    if (filtered) {
      const found = new Set(), above = new Set();
      for (const node of nodes)
        if (fits(node, this.scene) && node.name.toLowerCase().includes(text)) found.add(node.index);
      for (const i of found)
        for (let p = ParentOf(this.scene, i); p >= 0 && !above.has(p); p = ParentOf(this.scene, p)) above.add(p);
      this.rows = this.sequence.filter(i => found.has(i) || above.has(i));
      this.matches = found;
    } else {
      const closed = this.closed.get(this.scene);
      const hidden = new Uint8Array(nodes.length);
      this.rows = this.sequence.filter(i => {
        const parent = ParentOf(this.scene, i);
        hidden[i] = parent >= 0 && (hidden[parent] || closed.has(parent)) ? 1 : 0;
        return !hidden[i];
      });
    }
    this.count.textContent = filtered ? `${this.matches.size.toLocaleString("en")} of ${Counted(nodes.length, "node")}`
                                      : Counted(nodes.length, "node");
    this.space.style.height = this.rows.length * kNodeHeight + "px";
    this.draw();
  }

  toggle(node, close = !this.closed.get(this.scene).has(node)) {
    if (this.children[node].length === 0 || this.matches) return;
    if (close) this.closed.get(this.scene).add(node);
    else this.closed.get(this.scene).delete(node);
    this.list();
  }

  /**
   * Makes the row of a node visible, by opening what is above it and by scrolling: little to its neighbours,
   * otherwise to the middle.
   */
  reveal(node) {
    if (node === null) return this.draw();
    const closed = this.closed.get(this.scene);
    let opened = false;
    for (let p = ParentOf(this.scene, node); p >= 0; p = ParentOf(this.scene, p))
      opened = closed.delete(p) || opened;
    if (opened) this.list();
    const row = this.rows.indexOf(node);
    if (row >= 0) {
      const top = row * kNodeHeight, height = this.tree.clientHeight;
      const away = Math.max(this.tree.scrollTop - top, top + kNodeHeight - this.tree.scrollTop - height);
      if (away > 2 * kNodeHeight) this.tree.scrollTop = top - (height - kNodeHeight) / 2;
      else if (top < this.tree.scrollTop) this.tree.scrollTop = top;
      else if (top + kNodeHeight > this.tree.scrollTop + height) this.tree.scrollTop = top + kNodeHeight - height;
    }
    this.draw();
  }

  draw() {
    if (!this.scene) return;
    const first = Math.max(0, Math.floor(this.tree.scrollTop / kNodeHeight));
    const count = Math.min(this.rows.length - first, Math.ceil(this.tree.clientHeight / kNodeHeight) + 1);
    while (this.pool.length < count) this.pool.push(this.makeRow());
    const chosen = this.app.chosenIn(this.scene);
    let active = "";
    this.pool.forEach((row, i) => {
      row.hidden = i >= count;
      if (row.hidden) return;
      const node = this.rows[first + i];
      this.fill(row, node, first + i);
      row.ariaSelected = String(node === chosen);
      if (node === chosen) active = row.id;
    });
    if (active) this.tree.setAttribute("aria-activedescendant", active);
    else this.tree.removeAttribute("aria-activedescendant");
  }

  makeRow() {
    const row = Make("div", "node");
    row.id = "row" + this.pool.length;
    row.role = "treeitem";
    row.twisty = Make("span", "twisty", MakeIcon("twisty"));
    row.name = Make("bdi", "name cut");
    row.keys = Make("span", "keys");
    row.append(row.twisty, MakeIcon("node", "kind"), row.name, row.keys);
    this.space.append(row);
    return row;
  }

  fill(row, index, place) {
    const node = this.scene.nodes[index];
    row.style.transform = `translateY(${place * kNodeHeight}px)`;
    const parent = this.children[index].length > 0;
    if (parent) row.ariaExpanded = String(this.matches !== null || !this.closed.get(this.scene).has(index));
    else row.removeAttribute("aria-expanded");
    row.classList.toggle("other", this.matches !== null && !this.matches.has(index));
    if (row.node === index && row.scene === this.scene) return;
    row.node = index;
    row.scene = this.scene;
    row.ariaLevel = String(this.depths[index] + 1);
    row.twisty.style.visibility = parent ? "visible" : "hidden";
    row.style.paddingLeft = Indent(this.depths[index]) + "px";
    const icon = row.children[1];
    const kind = KindsOf(this.scene)[index];
    icon.setAttribute("class", "kind is-" + kind);
    icon.firstChild.setAttribute("href", "#icon-" + kind);
    ShowName(row.name, node.name);
    row.keys.textContent = node.keyCount > 0 ? node.keyCount.toLocaleString("en") : "";
    const keys = node.keyCount > 0 ? Counted(node.keyCount, "key") : "does not move";
    row.title = `${PlainName(node.name)} \u2013 ${kind}, ${keys}`;
  }

  /**
   * Chooses the row `by` rows from the chosen one, or the first; while searching only what was found. After the last
   * comes the first where `around` says so.
   */
  step(by, around = false) {
    const rows = this.matches ? this.rows.filter(i => this.matches.has(i)) : this.rows;
    if (rows.length === 0) return;
    const at = rows.indexOf(this.app.chosenIn(this.scene));
    const next = around ? (at + by + rows.length) % rows.length : Clamp(at + by, 0, rows.length - 1);
    this.app.choose(this.scene, rows[at < 0 ? 0 : next]);
  }

  treeKey(event) {
    if (event.ctrlKey || event.metaKey || event.altKey || event.shiftKey) return;
    const page = Math.max(1, Math.floor(this.tree.clientHeight / kNodeHeight) - 1);
    const chosen = this.app.chosenIn(this.scene);
    const keys = {
      ArrowDown: () => this.step(1),
      ArrowUp: () => this.step(-1),
      PageDown: () => this.step(page),
      PageUp: () => this.step(-page),
      Enter: () => chosen !== null && this.toggle(chosen),
    };
    const run = keys[event.key];
    if (!run) return;
    run();
    event.preventDefault();
    event.stopPropagation();
  }

  searchKey(event) {
    if (event.key === "Enter") {
      this.step(event.shiftKey ? -1 : 1, true);
    } else if (event.key === "ArrowDown") {
      const chosen = this.app.chosenIn(this.scene);
      if (chosen === null || (this.matches && !this.matches.has(chosen))) this.step(0);
      this.tree.focus();
    } else if (event.key === "Escape") {
      if (this.search.value === "") this.search.blur();
      this.search.value = "";
      this.list();
      this.reveal(this.app.chosenIn(this.scene));
    } else {
      return;
    }
    event.preventDefault();
  }
}
