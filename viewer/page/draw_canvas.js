"use strict";

// Drawing without WebGL: bones, nodes, cameras and the grid as lines and points on a canvas. Meshes are left out.

class CanvasPainter {
  constructor(canvas, layers) {
    this.kind = "canvas";
    this.software = true;
    this.context = canvas.getContext("2d");
    this.layers = layers;
  }

  resize(width, height, ratio) {
    this.context.canvas.width = Math.round(width * ratio);
    this.context.canvas.height = Math.round(height * ratio);
  }

  paint(view, options) {
    const {context} = this;
    const {width, height, ratio, projection, nothing, picture} = view;
    context.setTransform(ratio, 0, 0, ratio, 0, 0);
    context.fillStyle = theme.colour(nothing ? "edge" : "ground");
    context.fillRect(0, 0, width, height);
    context.save();
    context.beginPath();
    context.rect(picture.x, picture.y, picture.width, picture.height);
    context.clip();
    if (options.grid) {
      this.lines(projection, GridLines(view.grid), theme.colour("grid-strong"));
      const axes = AxisLines(view.mirror, view.grid.unit);
      kAxisColours.forEach((name, i) => this.lines(projection, axes.slice(6 * i, 6 * i + 6), theme.colour(name)));
    }
    for (const layer of this.layers) if (layer.visible) this.layer(projection, layer);
    context.restore();
  }

  layer(projection, layer) {
    const {scene, pose, bones, mirror} = layer;
    const places = scene.nodes.map((node, i) => layer.drawn(i));
    this.lines(projection, bones.flatMap(i => [...places[scene.nodes[i].parent], ...places[i]]), layer.colour);
    this.context.fillStyle = layer.colour;
    const out = [0, 0, 0];
    for (const place of places)
      if (projection.project(...place, out)) this.context.fillRect(out[0] - 2, out[1] - 2, 4, 4);
    const size = Positive(0.1 * (layer.boneBox.empty() ? layer.box : layer.boneBox).radius(), 0.2);
    const onAir = OnAir(scene, pose.time);
    for (const camera of scene.cameras) {
      if (camera.index === layer.camera) continue;
      const lines = FrustumLines(pose, camera, size);
      for (let i = 0; i < lines.length; i += 3) Transform(mirror, lines[i], lines[i + 1], lines[i + 2], 1, lines, i);
      this.lines(projection, lines, FrustumColour(layer, camera, onAir));
    }
  }

  /** Lines of the drawn world, 6 numbers each; those with an end out of sight are left out. */
  lines(projection, ends, colour) {
    const {context} = this;
    const [a, b] = [[0, 0, 0], [0, 0, 0]];
    context.strokeStyle = colour;
    context.lineWidth = 1;
    context.beginPath();
    for (let i = 0; i < ends.length; i += 6) {
      if (!projection.project(ends[i], ends[i + 1], ends[i + 2], a)) continue;
      if (!projection.project(ends[i + 3], ends[i + 4], ends[i + 5], b)) continue;
      context.moveTo(a[0], a[1]);
      context.lineTo(b[0], b[1]);
    }
    context.stroke();
  }
}
