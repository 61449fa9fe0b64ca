"""Runs inside Blender: imports GLBs and writes down where their objects are at given times.

    blender -b --factory-startup --python-exit-code 3 -P poses.py -- JOBS.json ANSWERS.json

Each job has "glb", "times" in seconds and "vertices", whether vertices are wanted. Each answer has, for each time,
"objects": kind and world matrix (three rows of four) by name, and "vertices": the vertices of meshes after all
deformation, in the world, by name. Blender's world has Z up.
"""

import json
import sys

import numpy

numpy.bool = bool  # Blender 3.4's importer uses a name that numpy has dropped

import bpy  # noqa: E402

FRAMES_A_SECOND = 30


def matrix_of(thing):
    return [number for row in thing.matrix_world[:3] for number in row]


def vertices_of(thing, graph):
    evaluated = thing.evaluated_get(graph)
    mesh = evaluated.to_mesh()
    points = [tuple(evaluated.matrix_world @ vertex.co) for vertex in mesh.vertices]
    evaluated.to_mesh_clear()
    return points


def pose_at(time, with_vertices):
    frame = time * FRAMES_A_SECOND
    scene = bpy.context.scene
    scene.frame_set(int(frame // 1), subframe=frame - frame // 1)
    graph = bpy.context.evaluated_depsgraph_get()
    pose = {"objects": {thing.name: {"kind": thing.type, "matrix": matrix_of(thing)} for thing in scene.objects}}
    if with_vertices:
        pose["vertices"] = {thing.name: vertices_of(thing, graph) for thing in scene.objects if thing.type == "MESH"}
    return pose


def answer_to(job):
    bpy.ops.wm.read_factory_settings(use_empty=True)
    bpy.context.scene.render.fps = FRAMES_A_SECOND
    bpy.ops.import_scene.gltf(filepath=job["glb"], guess_original_bind_pose=False)
    return [pose_at(time, job["vertices"]) for time in job["times"]]


def main(jobs_path, answers_path):
    with open(jobs_path) as file:
        jobs = json.load(file)
    answers = [answer_to(job) for job in jobs]
    with open(answers_path, "w") as file:
        json.dump(answers, file)


main(*sys.argv[sys.argv.index("--") + 1:])
