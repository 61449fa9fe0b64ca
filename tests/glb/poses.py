"""Poses of a .tv2 file as the format library evaluates them, and those of its GLB in another program. Lengths are
metres, matrices lists of three rows of four, one after another."""

import json
import math
import subprocess

MOST_MILLIMETRES = 0.01
MOST_OF_THE_SIZE = 1e-6  # of the largest coordinate: single precision
MOST_DEGREES = 0.01
MOST_SCALE = 1e-4  # of an axis' length

# Where a point of the file's world lies in that of glTF, as rows: docs/format.md, "What the exporter does".
# Of a file that does not say which way is up, +Y is assumed.
WORLDS = {
    ("+Y", False): ((1, 0, 0), (0, 1, 0), (0, 0, -1)),
    ("+Y", True): ((-1, 0, 0), (0, 1, 0), (0, 0, 1)),
    ("+Z", False): ((1, 0, 0), (0, 0, 1), (0, 1, 0)),
    ("-Z", True): ((-1, 0, 0), (0, 0, -1), (0, 1, 0)),
}

# What a node's axes are called in glTF, by what it holds: the format's cameras look along +Z and its lights shine along
# -Z, glTF's cameras and lights along -Z; the second and third axis of all other nodes change places.
CAMERA_AXES = ((1, 0, 0), (0, 1, 0), (0, 0, -1))
LIGHT_AXES = ((-1, 0, 0), (0, 1, 0), (0, 0, 1))
OTHER_AXES = ((1, 0, 0), (0, 0, 1), (0, 1, 0))


class Expected:
    """What the format library makes of a .tv2 file at times of its keys, or at one time, in the world of glTF.

    times: of the poses, in seconds of the file; start: the one that is 0 in glTF.
    """

    def __init__(self, scene_files, path, most_times, at=None):
        one = [] if at is None else [str(at)]
        answer = subprocess.run([scene_files, "poses", path, str(most_times), *one], check=True, stdout=subprocess.PIPE)
        self._answer = json.loads(answer.stdout)
        self._poses = self._answer["poses"]
        self.nodes = self._answer["nodes"]
        self.times = [pose["time"] for pose in self._poses]
        self.start = min([0.0, *self.times])
        self.is_turned = bool(self._poses and self.nodes and self._poses[0]["matrices"][0][0] < -0.5)
        self.world = WORLDS.get((self._answer["upAxis"], self.is_turned), WORLDS["+Y", False])

    def matrix(self, pose, node, axes):
        """The world matrix of a node, whose axes are called otherwise in glTF."""
        m = self._poses[pose]["matrices"][node]
        rotation = [m[0:3], m[4:7], m[8:11]]
        turned = product(product(self.world, rotation), axes)
        place = self.point(m[3::4])
        return [number for row in range(3) for number in (*turned[row], place[row])]

    def point(self, point):
        return [sum(a * b for a, b in zip(row, point)) for row in self.world]

    def meshes(self, pose):
        """(name, points in the world) of each mesh."""
        for mesh in self._poses[pose]["meshes"]:
            numbers = mesh["positions"]
            yield mesh["name"], [self.point(numbers[i:i + 3]) for i in range(0, len(numbers), 3)]

    def has_rotation(self, node):
        """Whether a node's axes can be compared: rotations of models that mirror are none, and glTF gets others."""
        return self.nodes[node]["unit"]

    def is_placed(self, node):
        """Whether a node's place can be compared: not below such a rotation."""
        parent = self.nodes[node]["parent"]
        return not 0 <= parent < node or (self.has_rotation(parent) and self.is_placed(parent))

    def size(self):
        """The largest coordinate of any node at any time."""
        return max((abs(m[i]) for pose in self._poses for m in pose["matrices"] for i in (3, 7, 11)), default=0.0)


def product(a, b):
    return [[sum(a[row][k] * b[k][column] for k in range(3)) for column in range(3)] for row in range(3)]


def axes_of(node):
    """The axes of a glTF node."""
    if "camera" in node:
        return CAMERA_AXES
    return LIGHT_AXES if "KHR_lights_punctual" in node.get("extensions", {}) else OTHER_AXES


def pair_nodes(nodes, document):
    """The glTF node of each node of a .tv2 file: below the same ones, and of the same name. Where names are repeated,
    in their order."""
    children = {}
    for index, node in enumerate(nodes):
        children.setdefault(node["parent"] if 0 <= node["parent"] < len(nodes) else -1, []).append(index)
    gltf = document.get("nodes", [])
    scene = document["scenes"][document.get("scene", 0)].get("nodes", []) if gltf else []
    paired = {}

    def pair(parent, candidates):
        left = list(candidates)
        for index in children.get(parent, []):
            found = next((at for at in left if gltf[at].get("name", "") == nodes[index]["name"]), None)
            if found is None:
                raise AssertionError(f"no node for {nodes[index]['name']!r}")
            left.remove(found)
            paired[index] = found
            pair(index, gltf[found].get("children", []))

    pair(-1, scene)
    return paired


def pair_meshes(meshes, document):
    """(glTF node, points) for each of the meshes of a .tv2 file: the node that shows a mesh of its name. Where names
    are repeated, in their order."""
    left = [index for index, node in enumerate(document["nodes"]) if "mesh" in node]
    for name, points in meshes:
        found = next((at for at in left if document["meshes"][document["nodes"][at]["mesh"]].get("name", "") == name),
                     None)
        if found is None:
            raise AssertionError(f"no mesh for {name!r}")
        left.remove(found)
        yield found, points


class Deviation:
    """The worst differences of matrices and points."""

    def __init__(self, size):
        self.most_millimetres = max(MOST_MILLIMETRES, MOST_OF_THE_SIZE * size * 1000.0)
        self.millimetres = self.degrees = self.scale = 0.0
        self.where = None
        self.count = 0

    def add(self, actual, expected, where, with_axes=True):
        """Two world matrices."""
        self.add_point(actual[3::4], expected[3::4], where)
        if not with_axes:
            return
        for axis in range(3):
            self._worst("degrees", degrees_between(actual[axis:12:4], expected[axis:12:4]), MOST_DEGREES, where)
            length = math.hypot(*expected[axis:12:4])
            if length > 0.0:
                off = abs(math.hypot(*actual[axis:12:4]) / length - 1.0)
                self._worst("scale", off, MOST_SCALE, where)

    def add_point(self, actual, expected, where):
        self.count += 1
        self._worst("millimetres", 1000.0 * math.dist(actual, expected), self.most_millimetres, where)

    def _worst(self, quantity, value, most, where):
        if not value <= getattr(self, quantity):  # true for NaN
            setattr(self, quantity, value)
        if not value <= most and self.where is None:
            self.where = f"{value:g} {quantity} at {where}"

    def __str__(self):
        text = f"{self.count} compared: {self.millimetres:.5f} mm (of {self.most_millimetres:.5f}), " \
               f"{self.degrees:.5f} degrees"
        return f"{text}; {self.where}" if self.where else text


def compare_nodes(expected, document, actual):
    """The worst deviation of all nodes at all times; actual(pose, index of the glTF node) gives a world matrix."""
    worst = Deviation(expected.size())
    for index, gltf in pair_nodes(expected.nodes, document).items():
        if not expected.is_placed(index):
            continue
        node = document["nodes"][gltf]
        for pose, time in enumerate(expected.times):
            worst.add(actual(pose, gltf), expected.matrix(pose, index, axes_of(node)),
                      f"{node.get('name', '')!r}, {time:g} s", expected.has_rotation(index))
    if worst.count == 0:
        worst.where = "nothing was compared"
    return worst


def degrees_between(a, b):
    cross = (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])
    return math.degrees(math.atan2(math.hypot(*cross), sum(p * q for p, q in zip(a, b))))
