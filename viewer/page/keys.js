"use strict";

// Keys and what they run: one table, from which the help is made, too.

const kKeys = [
  ["Playback", [
    [[" "], "Space", "play", "Play, pause"],
    [["ArrowLeft"], "\u2190", "back", "One sample back"],
    [["ArrowRight"], "\u2192", "forward", "One sample forward"],
    [[","], ",", "keyBefore", "Key of the chosen node before"],
    [["."], ".", "keyAfter", "Key of the chosen node after"],
    [["Home"], "Home", "start", "Start"],
    [["End"], "End", "end", "End"],
    [["["], "[", "slower", "Slower"],
    [["]"], "]", "faster", "Faster"],
    [["l"], "L", "loop", "Loop"],
  ]],
  ["View", [
    [["f"], "F", "frame", "Frame the chosen node, or all"],
    [["Shift+f"], "Shift + F", "frameAll", "Frame everything"],
    [["Shift+ArrowLeft"], "Shift + \u2190", "turnLeft", "Turn the free view; likewise \u2192 \u2191 \u2193"],
    [["Shift+ArrowRight"], null, "turnRight"],
    [["Shift+ArrowUp"], null, "turnUp"],
    [["Shift+ArrowDown"], null, "turnDown"],
    [["PageUp"], "Page up", "nearer", "Nearer"],
    [["PageDown"], "Page down", "farther", "Farther away"],
    [[], "Drag", null, "Turn; with Shift or the right button: move along"],
    [["0"], "0", "free", "Free view"],
    [["1", "2", "3", "4", "5", "6", "7", "8", "9"], "1 \u2026 9", "look", "Look through a camera"],
    [["s"], "S", "switcher", "Follow the camera switcher"],
    [["b"], "B", "bones", "Solid bones"],
    [["n"], "N", "names", "Names of all nodes"],
    [["m"], "M", "meshes", "Meshes"],
  ]],
  ["Nodes", [
    [["/"], "/", "search", "Search"],
    [[], "Enter", null, "In the search: the next node found; in the list: open or close"],
    [[], "\u2191 \u2193", null, "In the list: the node above, below"],
    [["Escape"], "Esc", "chooseNothing", "Choose nothing"],
  ]],
  ["Timeline and curves", [
    [["+", "="], "+", "zoomIn", "Zoom in at the playhead"],
    [["-"], "\u2212", "zoomOut", "Zoom out"],
    [["a"], "A", "zoomAll", "Whole take"],
    [["v"], "V", "fitCurves", "Scale curves to what is in sight"],
    [[], "Wheel", null, "Zoom at the pointer; with Shift: move along"],
    [[], "Shift + drag", null, "Between the samples"],
  ]],
  ["Two files", [
    [["c"], "C", "nextShown", "A, B, both in turn"],
  ]],
  ["Page", [
    [["?"], "?", "help", "These keys"],
  ]],
];

/** Runs `run(command, key)` for the keys of the table, except where they are typed or have a meaning of their own. */
function ListenToKeys(run) {
  const commands = new Map();
  for (const [, rows] of kKeys)
    for (const [keys, , command] of rows)
      for (const key of keys) commands.set(key, command);
  document.addEventListener("keydown", event => {
    if (event.defaultPrevented || event.ctrlKey || event.metaKey || event.altKey || event.isComposing) return;
    const target = event.target instanceof Element ? event.target : document.body;
    if (target.matches("input, textarea, select, [contenteditable]") || document.querySelector("dialog[open]")) return;
    if (event.key === " " && target.closest("button, summary, a")) return; // the button's own key
    const plain = event.key.length === 1 ? event.key.toLowerCase() : event.key;
    const key = event.shiftKey && commands.has("Shift+" + plain) ? "Shift+" + plain : plain;
    if (!commands.has(key)) return;
    event.preventDefault();
    run(commands.get(key), key);
  });
}

/** Adds to the tooltips of buttons their keys. */
function TellKeys() {
  for (const [, shown, command] of kKeys.flatMap(([, rows]) => rows)) {
    const button = shown && command && document.querySelector(`[data-command="${command}"]`);
    if (button) button.title = `${button.title || button.ariaLabel || button.textContent.trim()} (${shown})`;
  }
}

/** The table for people. */
function FillHelp(element) {
  const line = ([, shown, , meaning]) =>
    Make("div", "", Make("dt", "", Make("kbd", "", shown)), Make("dd", "", meaning));
  for (const [group, rows] of kKeys)
    element.append(Make("dl", "", Make("h3", "", group), ...rows.filter(([, shown]) => shown).map(line)));
}
