"use strict";

// Vertices of meshes at the time of a pose, worked out on the CPU so that all that is drawn comes from one place.

/** The mesh of a pose: where its vertices are. */
class PosedMesh {
  /**
   * @param {Mesh} mesh
   * @param {Pose} pose
   */
  constructor(mesh, pose) {
    this.mesh = mesh;
    this.pose = pose;
    const {positions, normals, vertices} = mesh;
    /** In the axes of the node, of a weighted mesh in the file's world; 3 numbers a vertex. */
    this.positions = new Float32Array(3 * vertices);
    this.positions.set(positions.subarray(0, 3 * vertices));
    /** Unit vectors, or empty. */
    this.normals = new Float32Array(normals.length > 0 || mesh.normalTracks ? 3 * vertices : 0);
    this.normals.set(normals.subarray(0, this.normals.length));
    this.weights = new Float64Array(mesh.targets.length);
    this.palette = new Float64Array(mesh.skin ? 12 * mesh.skin.bones.length : 0);
    this.binds = mesh.skin ? BindsOf(mesh.skin, pose) : null;
    /** Whether the vertices change with time; otherwise update() does nothing. */
    this.changes = mesh.kind !== "rigid";
  }

  /** Moves the vertices to the time of the pose. */
  update() {
    const {mesh, pose} = this;
    if (mesh.kind === "anim") this.evaluateTracks(pose.time);
    if (mesh.targets.length > 0) this.morph(pose.time);
    if (mesh.skin) this.skin();
  }

  /** 0 invisible to 1. */
  visibility() {
    return NumberAt(this.mesh.visibility, this.pose.time, 1);
  }

  evaluateTracks(time) {
    const {positionTracks, normalTracks} = this.mesh;
    const run = (tracks, out) => tracks && tracks.forEach((track, i) => track && Evaluate(track, time, out, 3 * i));
    run(positionTracks, this.positions);
    run(normalTracks, this.normals);
  }

  morph(time) {
    const {mesh, positions, normals} = this;
    positions.set(mesh.positions);
    normals.set(mesh.normals);
    for (const {weight, vertices, ...offsets} of mesh.targets) {
      const factor = NumberAt(weight, time, 0);
      if (factor === 0) continue;
      AddOffsets(vertices, offsets.positions, factor, positions);
      AddOffsets(vertices, offsets.normals, factor, normals);
    }
    Normalise(normals);
  }

  skin() {
    const {palette, binds, pose, mesh} = this;
    const {skin} = mesh;
    const nodes = pose.scene.nodes.length;
    skin.bones.forEach((bone, i) => {
      if (bone < nodes) Multiply(pose.world, 12 * bone, binds, 12 * i, palette, 12 * i);
      else palette.set(kIdentity, 12 * i);
    });
    const morphed = mesh.targets.length > 0;
    Blend(skin, palette, morphed ? this.positions : mesh.positions, morphed ? this.normals : mesh.normals,
          this.positions, this.normals);
  }
}

/** From bind space to each bone, 12 numbers each. */
function BindsOf(skin, pose) {
  const binds = new Float64Array(12 * skin.bones.length);
  if (skin.binds.length >= binds.length) {
    binds.set(skin.binds.subarray(0, binds.length));
    return binds;
  }
  pose.at(pose.scene.start);
  skin.bones.forEach((bone, i) =>
    binds.set(bone < pose.scene.nodes.length ? Inverted(pose.world, 12 * bone) : kIdentity, 12 * i));
  return binds;
}

/** Adds weighted offsets to the vertices that a target lists. */
function AddOffsets(vertices, offsets, factor, out) {
  const count = Math.min(vertices.length, offsets.length / 3);
  for (let i = 0; i < count; ++i) {
    const to = 3 * vertices[i];
    if (to + 2 >= out.length) continue;
    out[to] += factor * offsets[3 * i];
    out[to + 1] += factor * offsets[3 * i + 1];
    out[to + 2] += factor * offsets[3 * i + 2];
  }
}

/** Makes vectors 1 long; those of no length stay. */
function Normalise(vectors) {
  for (let i = 0; i + 2 < vectors.length; i += 3) {
    const length = Math.hypot(vectors[i], vectors[i + 1], vectors[i + 2]);
    if (!(length > 0 && length < Infinity)) continue;
    vectors[i] /= length;
    vectors[i + 1] /= length;
    vectors[i + 2] /= length;
  }
}

/** Applies to each vertex the weighted sum of its bones' matrices. `positions` may be the array that receives. */
function Blend(skin, palette, positions, normals, outPositions, outNormals) {
  const {influences, boneIndices, weights} = skin;
  const bones = palette.length / 12;
  const count = Math.min(outPositions.length, positions.length) / 3;
  const m = new Float64Array(12);
  for (let vertex = 0; vertex < count; ++vertex) {
    m.fill(0);
    for (let entry = vertex * influences, end = entry + influences; entry < end; ++entry) {
      const weight = weights[entry];
      if (weight === 0) continue;
      const bone = boneIndices[entry];
      const from = bone < bones ? palette : kIdentity;
      const at = bone < bones ? 12 * bone : 0;
      for (let i = 0; i < 12; ++i) m[i] += weight * from[at + i];
    }
    const at = 3 * vertex;
    Transform(m, positions[at], positions[at + 1], positions[at + 2], 1, outPositions, at);
    if (at < outNormals.length && at < normals.length)
      Transform(m, normals[at], normals[at + 1], normals[at + 2], 0, outNormals, at);
  }
  Normalise(outNormals);
}

/** out[to...] = a point (w = 1) or a direction (w = 0) after a matrix. */
function Transform(m, x, y, z, w, out, to) {
  out[to] = m[0] * x + m[1] * y + m[2] * z + m[3] * w;
  out[to + 1] = m[4] * x + m[5] * y + m[6] * z + m[7] * w;
  out[to + 2] = m[8] * x + m[9] * y + m[10] * z + m[11] * w;
}
