// What the page of three_test.py runs: loads a GLB with three.js' GLTFLoader, poses it, draws it.
/* global THREE */
"use strict";

const renderer = new THREE.WebGLRenderer({ preserveDrawingBuffer: true });
renderer.setSize(320, 240);
renderer.setClearColor(0xff00ff);
document.body.appendChild(renderer.domElement);

let shown = null;

// Replaces what is shown by a GLB in Base64. Its first animation plays if asked for: revision 111 finds nodes by name,
// so names must not be repeated.
window.load = async (base64, plays) => {
  const bytes = Uint8Array.from(atob(base64), (letter) => letter.charCodeAt(0));
  const gltf = await new Promise((resolve, reject) => new THREE.GLTFLoader().parse(bytes.buffer, "", resolve, reject));
  const nodes = await gltf.parser.getDependencies("node");
  const scene = new THREE.Scene();
  scene.add(gltf.scene);
  const mixer = new THREE.AnimationMixer(gltf.scene);
  const action = plays && gltf.animations.length > 0 ? mixer.clipAction(gltf.animations[0]).play() : null;
  shown = { nodes, scene, mixer, action };
};

function seek(time) {
  if (shown.action) {
    shown.action.time = time;
    shown.mixer.update(0);
  }
  shown.scene.updateMatrixWorld(true);
}

// World matrices, three rows of four, of all nodes at each of the times.
window.worlds = (times) =>
  times.map((time) => {
    seek(time);
    return shown.nodes.map((node) => {
      const m = node.matrixWorld.elements;
      return [0, 1, 2].flatMap((row) => [m[row], m[row + 4], m[row + 8], m[row + 12]]);
    });
  });

// Draws the meshes so that they fill the picture, from in front or from behind; the share of it that they cover.
window.draw = (side) => {
  shown.scene.updateMatrixWorld(true);
  const box = new THREE.Box3();
  shown.scene.traverse((thing) => {
    if (!thing.isMesh) return;
    thing.frustumCulled = false;
    box.expandByObject(thing);
  });
  const ball = box.getBoundingSphere(new THREE.Sphere());
  const lamp = new THREE.HemisphereLight(0xffffff, 0x404040, 3);
  shown.scene.add(lamp);
  const camera = new THREE.PerspectiveCamera(45, 4 / 3, ball.radius / 100, ball.radius * 100);
  camera.position.copy(ball.center).add(new THREE.Vector3(1, 0.5, 2).setLength(side * ball.radius * 2.5));
  camera.lookAt(ball.center);
  renderer.render(shown.scene, camera);
  shown.scene.remove(lamp);
  const gl = renderer.getContext();
  const [width, height] = [gl.drawingBufferWidth, gl.drawingBufferHeight];
  const pixels = new Uint8Array(4 * width * height);
  gl.readPixels(0, 0, width, height, gl.RGBA, gl.UNSIGNED_BYTE, pixels);
  let covered = 0;
  for (let at = 0; at < pixels.length; at += 4) {
    if (pixels[at] !== 255 || pixels[at + 1] !== 0 || pixels[at + 2] !== 255) ++covered;
  }
  return covered / (width * height);
};
