"use strict";

// Drawing with WebGL, by three.js. Everything that moves is worked out before and only uploaded here.

class NoWebGl extends Error {}

/** Whether WebGL is done by the processor, which is too slow for smooth edges. Throws where there is none. */
function DrawsInSoftware() {
  const context = document.createElement("canvas").getContext("webgl");
  if (!context) throw new NoWebGl("no WebGL");
  const names = context.getExtension("WEBGL_debug_renderer_info");
  const renderer = names ? String(context.getParameter(names.UNMASKED_RENDERER_WEBGL)) : "";
  const ending = context.getExtension("WEBGL_lose_context");
  if (ending) ending.loseContext();
  return /swiftshader|llvmpipe|software/i.test(renderer);
}

/** A geometry whose positions change; `count` vertices. */
function MovingGeometry(count) {
  const geometry = new THREE.BufferGeometry();
  geometry.setAttribute("position", new THREE.BufferAttribute(new Float32Array(3 * count), 3));
  return geometry;
}

/** An object that is always drawn, where its vertices are. */
function HandMoved(object) {
  object.frustumCulled = false;
  object.matrixAutoUpdate = false;
  return object;
}

/** Sets the matrix of an object to 12 numbers. */
function Place(object, m, at = 0) {
  object.matrix.set(m[at], m[at + 1], m[at + 2], m[at + 3], m[at + 4], m[at + 5], m[at + 6], m[at + 7], m[at + 8],
                    m[at + 9], m[at + 10], m[at + 11], 0, 0, 0, 1);
  object.matrixWorldNeedsUpdate = true;
}

function Upload(object, array) {
  const {position} = object.geometry.attributes;
  if (array) position.array.set(array);
  position.needsUpdate = true;
}

/** One octahedron from a place to another, 24 corners of 3 numbers. */
function WriteOctahedron(out, to, a, b) {
  const along = [b[0] - a[0], b[1] - a[1], b[2] - a[2]];
  const length = Math.hypot(...along);
  const thick = Math.min(0.1 * length, 0.05);
  const other = Math.abs(along[0]) < 0.9 * length ? [1, 0, 0] : [0, 1, 0];
  const u = Cross(along, other);
  const uLength = Math.hypot(...u) || 1;
  const v = Cross(along, u);
  const vLength = Math.hypot(...v) || 1;
  const ring = [[u, thick / uLength], [v, thick / vLength], [u, -thick / uLength], [v, -thick / vLength]].map(
      ([side, factor]) => a.map((value, i) => value + 0.15 * along[i] + factor * side[i]));
  let at = to;
  for (let i = 0; i < 4; ++i) {
    for (const corner of [a, ring[i], ring[(i + 1) % 4], b, ring[(i + 1) % 4], ring[i]]) {
      out.set(corner, at);
      at += 3;
    }
  }
}

function Cross(a, b) {
  return [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]];
}

/** The objects of one layer. */
class GlLayer {
  constructor(layer) {
    this.layer = layer;
    this.materials = [];
    this.tint = null;
    this.group = HandMoved(new THREE.Group());
    Place(this.group, layer.mirror);
    const {bones, scene} = layer;
    // Bones are seen through surfaces.
    const through = {depthTest: false, transparent: true};
    this.lineMaterial = new THREE.LineBasicMaterial(through);
    this.lines = HandMoved(new THREE.LineSegments(MovingGeometry(2 * bones.length), this.lineMaterial));
    this.pointMaterial = new THREE.PointsMaterial({size: 4, sizeAttenuation: false, ...through});
    this.points = HandMoved(new THREE.Points(MovingGeometry(scene.nodes.length), this.pointMaterial));
    this.solid = null; // made when first wanted
    this.cameras = scene.cameras.map(() => {
      const material = new THREE.LineBasicMaterial();
      return HandMoved(new THREE.LineSegments(MovingGeometry(2 * kFrustumLines), material));
    });
    /** What is drawn of meshes and their instances: {posed, node (-1 for the world), object}. */
    this.meshes = layer.meshes.map(posed => this.makeMesh(posed, posed.mesh.node, posed.mesh.parts));
    for (const {mesh, node, parts} of scene.instances)
      this.meshes.push(this.makeMesh(layer.meshes[mesh], node, parts, this.meshes[mesh].object.geometry.attributes));
    this.group.add(this.lines, this.points, ...this.cameras, ...this.meshes.map(({object}) => object));
  }

  /** @param {Object} [shared] attributes of another geometry of the same mesh */
  makeMesh(posed, node, parts, shared) {
    const geometry = new THREE.BufferGeometry();
    const corners = new Uint32Array(parts.reduce((count, part) => count + part.corners.length, 0));
    let count = 0;
    const materials = parts.map((part, i) => {
      geometry.addGroup(count, part.corners.length, i);
      corners.set(part.corners, count);
      count += part.corners.length;
      return this.makeMaterial(part.material, posed.normals.length === 0);
    });
    geometry.setIndex(new THREE.BufferAttribute(corners, 1));
    geometry.setAttribute("position", shared ? shared.position : new THREE.BufferAttribute(posed.positions, 3));
    if (posed.normals.length > 0)
      geometry.setAttribute("normal", shared ? shared.normal : new THREE.BufferAttribute(posed.normals, 3));
    const object = HandMoved(new THREE.Mesh(geometry, materials));
    return {posed, object, node: posed.mesh.kind === "weighted" ? -1 : node};
  }

  makeMaterial(index, flat) {
    const material = this.layer.scene.materials[index];
    const look = {flatShading: flat, shininess: 8, specular: 0x111111, side: THREE.DoubleSide};
    const made = new THREE.MeshPhongMaterial(look);
    const colour = [0.8, 0.8, 0.8, 1];
    if (material && material.colour) Evaluate(material.colour, this.layer.scene.start, colour);
    made.color.setRGB(...colour.slice(0, 3).map(value => {
      const full = Math.min(1, Math.max(0, Number.isFinite(value) ? value : 0.8));
      return full ** (1 / 2.2); // colours of files are linear
    }));
    made.userData.own = made.color.clone();
    this.materials.push(made);
    return made;
  }

  /** Mixes a colour into those of all materials; null: none. */
  setTint(colour) {
    if (this.tint === colour) return;
    this.tint = colour;
    for (const {color, userData} of this.materials) {
      color.copy(userData.own);
      if (colour) color.lerp(new THREE.Color(colour), 0.6);
    }
  }

  update(options, moved) {
    const {layer} = this;
    this.group.visible = layer.visible;
    if (!layer.visible) return;
    this.setTint(layer.tinted ? layer.colour : null);
    this.lineMaterial.color.set(layer.colour);
    this.pointMaterial.color.set(layer.colour);
    this.lines.visible = !options.bones;
    for (const {posed, object} of this.meshes) object.visible = options.meshes && posed.visibility() > 0;
    if (options.bones) this.updateSolid();
    if (this.solid) this.solid.visible = options.bones;
    this.updateCameras();
    if (!moved) return;
    this.updateLines();
    if (options.meshes) this.updateMeshes();
  }

  updateLines() {
    const {bones, scene, pose: {world}} = this.layer;
    const lines = this.lines.geometry.attributes.position.array;
    const points = this.points.geometry.attributes.position.array;
    for (let i = 0; i < scene.nodes.length; ++i)
      for (let axis = 0; axis < 3; ++axis) points[3 * i + axis] = world[12 * i + 4 * axis + 3];
    bones.forEach((bone, i) => {
      const {parent} = scene.nodes[bone];
      for (let axis = 0; axis < 3; ++axis) {
        lines[6 * i + axis] = points[3 * parent + axis];
        lines[6 * i + 3 + axis] = points[3 * bone + axis];
      }
    });
    Upload(this.lines);
    Upload(this.points);
  }

  updateSolid() {
    const {bones, scene, pose} = this.layer;
    if (!this.solid) {
      const material = new THREE.MeshPhongMaterial({flatShading: true, side: THREE.DoubleSide});
      this.solid = HandMoved(new THREE.Mesh(MovingGeometry(24 * bones.length), material));
      this.group.add(this.solid);
    }
    this.solid.material.color.set(this.layer.colour);
    const {array} = this.solid.geometry.attributes.position;
    bones.forEach((bone, i) =>
      WriteOctahedron(array, 72 * i, pose.position(scene.nodes[bone].parent), pose.position(bone)));
    Upload(this.solid);
  }

  updateMeshes() {
    const {world} = this.layer.pose;
    for (const {posed, object, node} of this.meshes) {
      if (node >= 0) Place(object, world, 12 * node);
      if (!posed.changes) continue;
      for (const attribute of Object.values(object.geometry.attributes)) attribute.needsUpdate = true;
    }
  }

  updateCameras() {
    const {layer} = this;
    const {scene, pose} = layer;
    const size = Positive(0.1 * (layer.boneBox.empty() ? layer.box : layer.boneBox).radius(), 0.2);
    const onAir = OnAir(scene, pose.time);
    scene.cameras.forEach((camera, i) => {
      const object = this.cameras[i];
      object.visible = i !== layer.camera;
      object.material.color.set(FrustumColour(layer, camera, onAir));
      Upload(object, FrustumLines(pose, camera, size));
    });
  }
}

class GlPainter {
  /** Throws where there is no WebGL. @param {function()} redraw called when the picture was lost */
  constructor(canvas, layers, redraw) {
    this.kind = "webgl";
    this.software = DrawsInSoftware();
    this.renderer = new THREE.WebGLRenderer({canvas, antialias: !this.software});
    this.scene = new THREE.Scene();
    this.camera = new THREE.PerspectiveCamera();
    this.camera.matrixAutoUpdate = false;
    const unit = Number(THREE.REVISION) >= 155 ? Math.PI : 1; // of light, in later versions physical
    this.light = new THREE.DirectionalLight(0xffffff, 0.6 * unit);
    this.scene.add(new THREE.HemisphereLight(0xffffff, 0x555566, 0.7 * unit), this.light, this.light.target);
    this.layers = layers.map(layer => new GlLayer(layer));
    this.scene.add(...this.layers.map(({group}) => group));
    this.grid = HandMoved(new THREE.LineSegments(MovingGeometry(0), new THREE.LineBasicMaterial()));
    const coloured = new THREE.LineBasicMaterial({vertexColors: THREE.VertexColors || true}); // once a number
    this.axes = HandMoved(new THREE.LineSegments(MovingGeometry(6), coloured));
    this.axes.geometry.setAttribute("color", new THREE.BufferAttribute(new Float32Array(18), 3));
    this.scene.add(this.grid, this.axes);
    canvas.addEventListener("webglcontextrestored", redraw);
  }

  resize(width, height, ratio) {
    this.renderer.setPixelRatio(ratio);
    this.renderer.setSize(width, height, false);
  }

  paint(view, options) {
    const {eye, picture, height} = view;
    for (const layer of this.layers) layer.update(options, view.moved);
    this.updateGrid(view, options.grid);
    Place(this.camera, eye.world);
    this.camera.fov = eye.angle * 180 / Math.PI;
    this.camera.aspect = picture.width / picture.height;
    this.camera.near = eye.near;
    this.camera.far = eye.far;
    this.camera.updateProjectionMatrix();
    const [back, place] = [2, 3].map(column => [0, 4, 8].map(row => eye.world[row + column]));
    this.light.position.set(...place);
    this.light.target.position.set(...place.map((value, i) => value - back[i]));
    this.renderer.setClearColor(new THREE.Color(theme.colour(view.nothing ? "edge" : "ground")));
    this.renderer.setViewport(picture.x, height - picture.y - picture.height, picture.width, picture.height);
    this.renderer.render(this.scene, this.camera);
  }

  updateGrid({grid, mirror}, visible) {
    this.grid.visible = this.axes.visible = visible;
    this.grid.material.color.set(theme.colour("grid-strong"));
    const {array} = this.axes.geometry.attributes.color;
    kAxisColours.forEach((name, axis) => {
      const {r, g, b} = new THREE.Color(theme.colour(name));
      array.set([r, g, b, r, g, b], 6 * axis);
    });
    this.axes.geometry.attributes.color.needsUpdate = true;
    Upload(this.axes, AxisLines(mirror, grid.unit));
    const key = JSON.stringify(grid);
    if (key === this.gridKey) return;
    this.gridKey = key;
    this.grid.geometry.dispose();
    this.grid.geometry = new THREE.BufferGeometry();
    this.grid.geometry.setAttribute("position", new THREE.BufferAttribute(Float32Array.from(GridLines(grid)), 3));
  }
}

const kAxisColours = ["x", "y", "z"]; // of the file

/** Cameras are dim, but those on air and chosen. */
function FrustumColour(layer, camera, onAir) {
  return camera.index === onAir || camera.node === layer.chosen ? CameraColour(camera.index) : theme.colour("faint");
}

/** Lines on the floor, 6 numbers each. */
function GridLines({unit, lines, centre: [x, z]}) {
  const out = [];
  for (let i = -lines; i <= lines; ++i) {
    out.push(x + i * unit, 0, z - lines * unit, x + i * unit, 0, z + lines * unit);
    out.push(x - lines * unit, 0, z + i * unit, x + lines * unit, 0, z + i * unit);
  }
  return out;
}

/** The axes of a file in the drawn world, from the origin, 6 numbers each. */
function AxisLines(mirror, length) {
  return [0, 1, 2].flatMap(axis => [0, 0, 0, ...[0, 4, 8].map(row => length * mirror[row + axis])]);
}
