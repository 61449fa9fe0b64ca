"use strict";

/**
 * A bar that changes a length of the layout, by dragging and by arrow keys. `property` is a custom property of the
 * style; `sign` is 1 where moving right or down makes it more. `limits()` answers the least and the most, in pixels.
 */
class Splitter {
  constructor(bar, property, sign, limits) {
    const upright = bar.getAttribute("aria-orientation") === "vertical";
    const root = document.documentElement;
    const length = () => parseFloat(getComputedStyle(root).getPropertyValue(property));
    const set = wanted => {
      const [least, most] = limits();
      const now = Math.round(Math.max(least, Math.min(most, wanted)));
      root.style.setProperty(property, now + "px");
      bar.ariaValueNow = String(now);
    };
    bar.ariaValueNow = String(length());
    let drag = null;
    bar.addEventListener("pointerdown", event => {
      drag = {at: upright ? event.clientX : event.clientY, length: length()};
      bar.setPointerCapture(event.pointerId);
      event.preventDefault();
    });
    bar.addEventListener("pointermove", event => {
      if (drag) set(drag.length + sign * ((upright ? event.clientX : event.clientY) - drag.at));
    });
    for (const end of ["pointerup", "pointercancel"]) bar.addEventListener(end, () => { drag = null; });
    bar.addEventListener("keydown", event => {
      const by = {ArrowLeft: upright ? -1 : 0, ArrowRight: upright ? 1 : 0, ArrowUp: upright ? 0 : -1,
                  ArrowDown: upright ? 0 : 1}[event.key];
      if (!by) return;
      set(length() + sign * by * 16);
      event.preventDefault();
      event.stopPropagation();
    });
    bar.addEventListener("dblclick", () => root.style.removeProperty(property));
  }
}
