"use strict";

// The scenes of the page. Everything here is what the files hold, in their own axes: metres, radians, seconds,
// quaternions as x, y, z, w, a left-handed world. Numbers may be anything that a file can hold, NaN included; indices
// are checked here, and -1 is none.

/**
 * @typedef {Object} Track Keys of an animated value, at least one.
 * @property {number} kind as in the file: 0 number, 3 vector, 5 and 6 quaternion, 8 integer, 9 vector of four...
 * @property {number} width numbers in a value
 * @property {number} count keys
 * @property {Float32Array} times of the keys, seconds
 * @property {Float32Array|Int32Array} values of the keys one after another, count * width
 *
 * @typedef {Object} Property A value of the user's own: a track, or texts.
 * @property {string} name
 * @property {?Track} track
 * @property {?string[]} texts
 *
 * @typedef {Object} SceneNode
 * @property {number} index
 * @property {string} name
 * @property {number} parent index; it may be any node where a file is wrong, also the node itself
 * @property {number[]} children indices
 * @property {?Track} translation metres
 * @property {?Track} rotation quaternions
 * @property {?Track} scale
 * @property {string} text free text of the file
 * @property {Property[]} properties
 * @property {number} keyCount different times at which translation, rotation or scale has a key
 *
 * @typedef {Object} Camera
 * @property {number} index
 * @property {string} name
 * @property {number} node
 * @property {number} inverseAspect height of the picture divided by its width
 * @property {?Track} fieldOfView radians, across the width
 * @property {?Track} clipRange near and far, metres
 * @property {?Track} distance metres
 * @property {Property[]} properties
 *
 * @typedef {Object} Material
 * @property {string} name
 * @property {?Track} colour linear red, green, blue, alpha
 * @property {?Track} opacity
 * @property {boolean} twoSided
 *
 * @typedef {Object} Marker A light or a helper.
 * @property {string} name
 * @property {number} node
 * @property {Property[]} properties
 *
 * @typedef {Object} Target A shape of a mesh.
 * @property {string} name
 * @property {?Track} weight absent: 0
 * @property {Uint32Array} vertices that it moves
 * @property {Float32Array} positions offsets of these, 3 numbers each
 * @property {Float32Array} normals offsets, or empty
 *
 * @typedef {Object} Mesh
 * @property {number} index
 * @property {string} name
 * @property {"rigid"|"anim"|"morph"|"weighted"} kind
 * @property {number} node that places it; has no meaning for "weighted", whose vertices are in the world
 * @property {Property[]} properties
 * @property {?Track} visibility absent: 1
 * @property {number} vertices how many
 * @property {Float32Array} positions 3 numbers a vertex
 * @property {Float32Array} normals the same, or empty: its triangles are flat
 * @property {?(?Track)[]} positionTracks of the vertices of an "anim" mesh
 * @property {?(?Track)[]} normalTracks
 * @property {{material: number, corners: Uint32Array}[]} parts triangles, 3 corners each, all below `vertices`
 * @property {Target[]} targets
 * @property {?Skin} skin
 *
 * @typedef {Object} Skin
 * @property {number} influences entries of each vertex
 * @property {Uint32Array} boneIndices positions in `bones`
 * @property {Float32Array} weights
 * @property {Uint32Array} bones nodes
 * @property {Float32Array} binds from bind space to each bone, 12 numbers each: three rows of four; or empty: the
 *     inverse of the bones' world at the start
 *
 * @typedef {Object} Instance A mesh again, at a node of its own.
 * @property {string} name
 * @property {number} node
 * @property {Property[]} properties
 * @property {number} mesh index
 * @property {{material: number, corners: Uint32Array}[]} parts as of a mesh
 *
 * @typedef {Object} Scene
 * @property {number} index in the page
 * @property {string} title
 * @property {number} start seconds, finite
 * @property {number} end not before the start
 * @property {"+Y"|"+Z"|"-Z"|"unknown"} up what is up in the file's world
 * @property {SceneNode[]} nodes in file order
 * @property {Camera[]} cameras in the order that the switcher counts
 * @property {?Track} switcher indices of cameras; -1 is none
 * @property {Marker[]} lights
 * @property {Marker[]} helpers
 * @property {Material[]} materials
 * @property {Mesh[]} meshes
 * @property {Instance[]} instances
 */

/** Numbers in a value of each kind of track. */
const kTrackWidths = [1, 2, 4, 3, 2, 4, 4, 4, 1, 4, 6, 6];
const kIntegerTrack = 8;

/** Bytes of Base64, in a new buffer. */
function BytesOfBase64(text) {
  if (Uint8Array.fromBase64) return Uint8Array.fromBase64(text);
  const characters = atob(text);
  const bytes = new Uint8Array(characters.length);
  for (let i = 0; i < bytes.length; ++i) bytes[i] = characters.charCodeAt(i);
  return bytes;
}

/** Reads the description of one scene. */
class SceneReader {
  /** @param {ArrayBuffer} words the numbers of the page */
  constructor(words) {
    this.floats = new Float32Array(words);
    this.integers = new Int32Array(words);
    this.cardinals = new Uint32Array(words);
  }

  /** The words at a place: [first, how many]. */
  run(place, array = this.floats) {
    return place ? array.subarray(place[0], place[0] + place[1]) : array.subarray(0, 0);
  }

  /** Keys that have both a time and a value; a value alone is a constant, nothing is zero or no rotation. */
  keys(kind, timesAt, timeCount, valuesAt, valueCount) {
    const width = kTrackWidths[kind];
    if (width === undefined) return null;
    if (valueCount === 0) {
      const values = new Float32Array(width);
      if (kind === 5 || kind === 6) values[3] = 1;
      return {kind, width, count: 1, times: new Float32Array(1), values};
    }
    const constant = valueCount === 1 || timeCount < 2;
    const count = constant ? 1 : Math.min(timeCount, valueCount);
    const values = kind === kIntegerTrack ? this.integers : this.floats;
    const times = timeCount > 0 ? this.floats.subarray(timesAt, timesAt + count) : new Float32Array(1);
    return {kind, width, count, times, values: values.subarray(valuesAt, valuesAt + count * width)};
  }

  track(place) {
    return place ? this.keys(...place) : null;
  }

  /** One track of 3 numbers for each vertex. */
  vertexTracks(place) {
    if (!place) return null;
    const table = this.run(place, this.cardinals);
    const tracks = [];
    for (let i = 0; i < table.length; i += 4) {
      const [timesAt, timeCount, valuesAt, valueCount] = table.subarray(i, i + 4);
      tracks.push(valueCount ? this.keys(3, timesAt, timeCount, valuesAt, valueCount) : null);
    }
    return tracks;
  }

  properties(list) {
    return list.map(({name, track, texts}) => ({name, track: this.track(track), texts: texts || null}));
  }

  placed(object, index) {
    return {index, name: object.name, node: object.node, properties: this.properties(object.properties)};
  }

  node(node, index) {
    const {name, parent} = node;
    return {
      index, name, parent, text: node.text || "", children: [], keyCount: 0,
      properties: this.properties(node.properties),
      translation: this.track(node.translation), rotation: this.track(node.rotation), scale: this.track(node.scale),
    };
  }

  camera(camera, index) {
    return Object.assign(this.placed(camera, index), {
      inverseAspect: this.run(camera.inverseAspect)[0], fieldOfView: this.track(camera.fieldOfView),
      clipRange: this.track(camera.clipRange), distance: this.track(camera.distance),
    });
  }

  material(material) {
    return {
      name: material.name || "", twoSided: material.twoSided === 1, colour: this.track(material.colour),
      opacity: this.track(material.opacity),
    };
  }

  target(target) {
    return {
      name: target.name, weight: this.track(target.weight), vertices: this.run(target.vertices, this.cardinals),
      positions: this.run(target.positions), normals: this.run(target.normals),
    };
  }

  skin(skin) {
    return {
      influences: skin.influences, boneIndices: this.run(skin.boneIndices, this.cardinals),
      weights: this.run(skin.weights), bones: this.run(skin.bones, this.cardinals),
      binds: this.run(skin.binds),
    };
  }

  /** Triangles, 3 corners a count; without those that a mesh has no vertices for. */
  parts(parts, vertices) {
    return parts.map(({material, corners}) => ({material, corners: this.run(corners, this.cardinals)}))
        .filter(({corners}) => corners.every(corner => corner < vertices));
  }

  mesh(mesh, index) {
    return Object.assign(this.placed(mesh, index), {
      kind: mesh.kind, vertices: mesh.vertices, visibility: this.track(mesh.visibility),
      positions: this.run(mesh.positions), normals: this.run(mesh.normals),
      positionTracks: this.vertexTracks(mesh.positionTracks), normalTracks: this.vertexTracks(mesh.normalTracks),
      parts: this.parts(mesh.parts, mesh.vertices),
      targets: (mesh.targets || []).map(target => this.target(target)),
      skin: mesh.skin ? this.skin(mesh.skin) : null,
    });
  }

  instance(instance, index, meshes) {
    const {mesh, materials} = instance;
    const own = instance.parts ? this.parts(instance.parts, meshes[mesh].vertices) : meshes[mesh].parts;
    const parts = materials ? own.map((part, i) => ({...part, material: materials[i] ?? -1})) : own;
    return Object.assign(this.placed(instance, index), {mesh, parts});
  }

  scene(header, index) {
    const [start, end] = this.run(header.range);
    const first = Number.isFinite(start) ? start : 0;
    const marker = (object, i) => this.placed(object, i);
    const scene = {
      index, title: header.title, up: header.up,
      start: first, end: Number.isFinite(end) && end > first ? end : first,
      nodes: header.nodes.map((node, i) => this.node(node, i)),
      cameras: header.cameras.map((camera, i) => this.camera(camera, i)),
      switcher: this.track(header.switcher),
      lights: header.lights.map(marker), helpers: header.helpers.map(marker),
      materials: header.materials.map(material => this.material(material)),
      meshes: header.meshes.map((mesh, i) => this.mesh(mesh, i)),
    };
    scene.instances = header.instances.map((instance, i) => this.instance(instance, i, scene.meshes));
    for (const node of scene.nodes) {
      if (node.parent >= 0) scene.nodes[node.parent].children.push(node.index);
      node.keyCount = KeyTimes([node.translation, node.rotation, node.scale]).length;
    }
    return scene;
  }
}

/**
 * The different times at which any of some tracks has a key, ascending, seconds. Constants have no keys here.
 * @param {(?Track)[]} tracks
 * @returns {Float64Array}
 */
function KeyTimes(tracks) {
  const all = [];
  let last = null; // most tracks of a node have the same times
  for (const track of tracks) {
    if (!track || track.count < 2) continue;
    const {times} = track;
    if (last && last.byteOffset === times.byteOffset && last.length === times.length) continue;
    for (const time of times) if (Number.isFinite(time)) all.push(time);
    last = times;
  }
  return Float64Array.from(all).sort().filter((time, i, sorted) => i === 0 || time !== sorted[i - 1]);
}

/**
 * Reads the scenes of a page.
 * @param {Document} page
 * @returns {Scene[]}
 */
function LoadScenes(page) {
  const data = JSON.parse(page.getElementById("data").textContent);
  const reader = new SceneReader(BytesOfBase64(data.words).buffer);
  return data.scenes.map((header, index) => reader.scene(header, index));
}

/**
 * A text of a file for people: characters that are not seen or that change the direction of text become boxes, and long
 * texts are cut. Put it into the page with textContent and nothing else, inside <bdi>.
 * @param {string} text
 * @param {number} most characters, with the ellipsis
 */
function ShownText(text, most = 200) {
  const seen = Array.from(text.length > 2 * most ? text.slice(0, 2 * most) : text,
                          character => /[\p{C}\p{Zl}\p{Zp}]/u.test(character) ? "\u25a1" : character);
  return seen.length > most ? seen.slice(0, most - 1).join("") + "\u2026" : seen.join("");
}
