"""GLB files for tests: read, written, and copied in a form that other programs can be asked about node by node."""

import copy
import json
import pathlib
import struct

MAGIC, JSON_CHUNK, BINARY_CHUNK = 0x46546C67, 0x4E4F534A, 0x004E4942


def read(path):
    """The document of a GLB and its binary buffer."""
    data = pathlib.Path(path).read_bytes()
    magic, version, length = struct.unpack_from("<3I", data)
    if (magic, version, length) != (MAGIC, 2, len(data)):
        raise ValueError(f"{path} is no GLB")
    chunks, at = {}, 12
    while at < length:
        size, kind = struct.unpack_from("<2I", data, at)
        chunks[kind] = data[at + 8:at + 8 + size]
        at += 8 + size
    return json.loads(chunks[JSON_CHUNK]), chunks.get(BINARY_CHUNK, b"")


def write(path, document, binary):
    text = json.dumps(document).encode()
    text += b" " * (-len(text) % 4)
    binary += b"\0" * (-len(binary) % 4)
    chunks = struct.pack("<2I", len(text), JSON_CHUNK) + text
    if binary:
        chunks += struct.pack("<2I", len(binary), BINARY_CHUNK) + binary
    pathlib.Path(path).write_bytes(struct.pack("<3I", MAGIC, 2, 12 + len(chunks)) + chunks)


def posing_copy(document, animation, keep_meshes):
    """The document with nodes named n0, n1 ... (programs rename and cut names that are repeated or long), with one
    animation, since they play the first alone, without materials, and without meshes and skins where these are not
    asked about: a skeleton's bones have axes of the importer's own."""
    made = copy.deepcopy(document)
    for index, node in enumerate(made.get("nodes", [])):
        node["name"] = f"n{index}"
        if not keep_meshes:
            for member in ("mesh", "skin", "weights"):
                node.pop(member, None)
    for member in ("materials", "textures", "images", "samplers"):
        made.pop(member, None)
    for mesh in made.get("meshes", []):
        for primitive in mesh["primitives"]:
            primitive.pop("material", None)
    for node in made.get("nodes", []):
        if "mesh" in node:  # of its own: on a bone, Blender names the object after it
            made["meshes"].append(dict(made["meshes"][node["mesh"]], name=node["name"]))
            node["mesh"] = len(made["meshes"]) - 1
    if not keep_meshes:
        for member in ("meshes", "skins"):
            made.pop(member, None)
    made["animations"] = made.get("animations", [])[animation:animation + 1]
    if not keep_meshes:
        for kept in made["animations"]:
            kept["channels"] = [channel for channel in kept["channels"] if channel["target"]["path"] != "weights"]
    if not (made["animations"] and made["animations"][0]["channels"]):
        del made["animations"]
    return made


def corners(document, binary, primitive):
    """The vertices that a primitive's triangles use, each once, ascending."""
    if "indices" not in primitive:
        return list(range(document["accessors"][primitive["attributes"]["POSITION"]]["count"]))
    accessor = document["accessors"][primitive["indices"]]
    view = document["bufferViews"][accessor["bufferView"]]
    start = view.get("byteOffset", 0) + accessor.get("byteOffset", 0)
    letter = {5121: "B", 5123: "H", 5125: "I"}[accessor["componentType"]]
    return sorted(set(struct.unpack_from(f"<{accessor['count']}{letter}", binary, start)))
