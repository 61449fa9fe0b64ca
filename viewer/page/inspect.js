"use strict";

// What tests, and anybody at the browser's console, can ask of the page: what it shows, not what it was given. Nodes,
// cameras and meshes are indices in the file; scenes are those of the page, from 0.

window.tv2Test = {
  /** Goes to a time in seconds and draws at once. */
  seek(time) {
    app.setPlaying(false);
    app.setTime(time);
    app.show();
  },

  /** The world matrix of a node as it is drawn: 12 numbers, three rows of four. */
  world(node, scene = 0) {
    return Array.from(app.viewport.layers[scene].pose.world.subarray(12 * node, 12 * node + 12));
  },

  /** Looks through a camera, "switcher" or "free"; the camera that is looked through then, or -1. */
  camera(what) {
    app.look(what);
    app.show();
    return app.viewport.leading.camera;
  },

  /** The camera that the switcher has on air, or -1. */
  onAir() {
    const {scene, pose} = app.viewport.leading;
    return OnAir(scene, pose.time);
  },

  /** Where a node is in the picture that was drawn last: x and y, -1 to 1, as WebGL has them; null without WebGL. */
  project(node, scene = 0) {
    const {painter, layers} = app.viewport;
    if (painter.kind !== "webgl") return null;
    const point = new THREE.Vector3(...layers[scene].pose.position(node));
    point.applyMatrix4(painter.layers[scene].group.matrixWorld).project(painter.camera);
    return [point.x, point.y];
  },

  /** Width divided by height of the picture, which is smaller than the view where a camera is looked through. */
  aspect() {
    const {width, height} = app.viewport.picture;
    return width / height;
  },

  /** The vertices of a mesh as they are drawn, 3 numbers each; a node still has to place them. */
  vertices(mesh, scene = 0) {
    return Array.from(app.viewport.layers[scene].meshes[mesh].positions);
  },

  normals(mesh, scene = 0) {
    return Array.from(app.viewport.layers[scene].meshes[mesh].normals);
  },

  /**
   * How the page draws ("webgl" or "canvas"), whether the processor does, why WebGL is missing, frames since the page
   * was loaded, and milliseconds of work of the last of them.
   */
  stats() {
    const {painter, trouble} = app.viewport;
    return {drawing: painter.kind, software: painter.software, trouble: trouble ? String(trouble) : "",
            frames: app.frames, work: [...app.work]};
  },
};
