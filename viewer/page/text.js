"use strict";

// Names and numbers as the page shows them. Names come from files: they reach the page as text and nothing else.

// Controls, format characters such as those that turn the direction of writing, lone surrogates, separators of lines.
const kUnseen = /[\p{Cc}\p{Cf}\p{Cs}\p{Zl}\p{Zp}]/gu;
const kLongestName = 300; // characters; lists show about forty

/** A name for places that take nothing but text: options, tooltips, canvases. */
function PlainName(name) {
  return name === "" ? "(no name)" : ShownText(name, kLongestName);
}

/** Makes `element` show `text`: unseen characters as boxes with their numbers, other writing left as it is. */
function ShowText(element, text) {
  const parts = [];
  let end = 0;
  for (const found of text.matchAll(kUnseen)) {
    if (found[0] === "\n" && element.dataset.lines !== undefined) continue;
    parts.push(text.slice(end, found.index));
    const box = Make("span", "box");
    box.textContent = found[0].codePointAt(0).toString(16).toUpperCase().padStart(4, "0");
    parts.push(box);
    end = found.index + found[0].length;
  }
  if (parts.length === 0) element.textContent = text;
  else element.replaceChildren(...parts, text.slice(end));
}

/** A name, isolated from the direction of its surroundings and cut with an ellipsis where it does not fit. */
function ShowName(element, name) {
  const cut = name.length > kLongestName ? name.slice(0, kLongestName) + "\u2026" : name;
  ShowText(element, name === "" ? "(no name)" : cut);
}

function Make(tag, classes = "", ...children) {
  const element = document.createElement(tag);
  if (classes) element.className = classes;
  element.append(...children);
  return element;
}

function MakeName(name, classes = "cut") {
  const element = Make("bdi", classes);
  ShowName(element, name);
  element.title = PlainName(name);
  return element;
}

function MakeIcon(name, classes = "") {
  const space = "http://www.w3.org/2000/svg";
  const icon = document.createElementNS(space, "svg");
  const use = document.createElementNS(space, "use");
  use.setAttribute("href", "#icon-" + name);
  if (classes) icon.setAttribute("class", classes);
  icon.setAttribute("aria-hidden", "true");
  icon.append(use);
  return icon;
}

/** Sets a text only where it changed, so that nothing is laid out again for nothing. */
function SetText(element, text) {
  if (element.firstChild?.nodeType === Node.TEXT_NODE && element.firstChild.data === text) return;
  element.textContent = text;
}

/** `value` with a fixed number of decimals; very large and very small ones with an exponent. */
function Rounded(value, decimals) {
  if (!Number.isFinite(value)) return String(value);
  if (Math.abs(value) >= 1e7) return value.toExponential(3);
  const text = value.toFixed(decimals);
  return Number(text) === 0 ? (0).toFixed(decimals) : text;
}

const Degrees = radians => Rounded(radians * 180 / Math.PI, 2);
const Seconds = value => Rounded(value, 3);
const Counted = (count, one, many = one + "s") => count.toLocaleString("en") + " " + (count === 1 ? one : many);
