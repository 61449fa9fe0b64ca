#!/usr/bin/env python3
"""Runs the benchmarks and prints one table: what was measured, beside the floor that was measured in the same run.

    bench/run.py BUILD [--repetitions 21] [--scenes FOLDER] [--json FILE]

Every benchmark runs that number of times, interleaved at random. The table gives the median and, in brackets,
the best of them, then the same of the floor, then the mark to reach and whether the median reaches it.
"""

import argparse
import json
import os
import statistics
import subprocess
import sys
import tempfile

BYTES = ("bytes_per_second", 1e-9, "GB/s", max)
NODES = ("s/node", 1e9, "ns/node", min)
MILLISECONDS = ("real_time", 1.0, "ms", min)
CPU_MILLISECONDS = ("cpu_time", 1.0, "ms", min)
BONES = ("s/bone", 1e9, "ns/bone", min)
VERTICES = ("s/vertex", 1e9, "ns/vertex", min)
SCALING = ("scaling", 1.0, "x", max)
MEMORY = ("share", 1.0, "x tracks", min)


class Share(float):
    """A mark that is a share of the floor."""


def per_second(counter):
    return (counter, 1e-6, "M/s", max)


def rows():
    """Title, benchmark, floor (or None), what to read, mark (or None)."""
    yield ("clock of the processor meanwhile", "Clock", None, ("cycles", 1e-9, "GHz", max), None)
    for workload, warm, fresh in (("W1", 2.8, 0.8), ("W2", 3.4, 0.8), ("W3", 1.5, None)):
        for heap, mark in (("warm", warm), ("fresh", fresh)):
            yield (f"load {workload} from memory, {heap} heap", f"LoadImage/{workload}/{heap}",
                   f"CopyImage/{workload}/{heap}", BYTES, mark)
    for heap, mark in (("warm", 2.0), ("fresh", 0.47)):
        yield (f"load W2 from a file, {heap} heap", f"LoadFile/W2/{heap}/real_time", f"ReadFile/W2/{heap}/real_time",
               BYTES, mark)
    for workload, forward, other in (("W1", 30, 45), ("W2", 34, 45), ("W2 huge pages", 34, 45), ("W3", None, None)):
        base, _, variant = workload.partition(" ")
        suffix = " " + variant if variant else ""
        for motion in ("forward", "backward", "random"):
            yield (f"SetTime {workload}, {motion}", f"Evaluate/{base}/{motion}{suffix}",
                   f"ReadKeys/{base}/{motion}{suffix}", NODES, forward if motion == "forward" else other)
        yield (f"Update {workload} (beside SetTime forward)", f"Evaluate/{base}/update{suffix}",
               f"Evaluate/{base}/forward{suffix}", NODES, Share(1.1) if forward else None)
    yield from playback_rows()
    yield ("save W2", "SaveFile/W2/real_time", "WriteImage/W2/real_time", BYTES, 1.0)
    yield ("save W2, against one fwrite", "SaveFile/W2/real_time", "WriteImage/W2/real_time", BYTES, Share(0.8))
    yield ("save W3", "SaveFile/W3/real_time", "WriteImage/W3/real_time", BYTES, None)
    yield ("load 200,000 skinned vertices, 8 targets", "LoadCharacter", "CopyCharacter", CPU_MILLISECONDS, Share(2))
    for bones in (24, 100):
        yield (f"palettes, {bones} bones, own bind matrices", f"FormPalettes/own/{bones}", None, BONES, 8)
        yield (f"palettes, {bones} bones, the root's table", f"FormPalettes/table/{bones}", None, BONES, 8)
    yield ("SkinVertices, 4 bones, position and normal", "SkinMesh", None, VERTICES, None)
    yield ("SetTime of an anim mesh, positions", "MoveAnimMesh", None, VERTICES, None)
    yield ("ReduceKeys, keys", "ReduceAllKept", None, per_second("keys"), 50)
    for nodes, frames, mark in ((1000, 1000, 1.5), (250, 250, 1.5), (500, 250, None), (1000, 250, None),
                                (2000, 250, None), (250, 500, None), (250, 1000, None), (250, 2000, None)):
        yield (f"export {nodes} nodes x {frames} frames, node-samples",
               f"Export/nodes:{nodes}/frames:{frames}/manual_time", None, per_second("samples"), mark)


def playback_rows():
    for workload, marks, build in (("W1", (0.45, 0.5, 0.5), None), ("W2", (0.25, 0.25, 0.15), 1.5),
                                   ("W3", (0.62, 0.65, 0.72), 1.0)):
        for motion, mark in zip(("forward", "backward", "random"), marks):
            place = f"{workload}/{motion}"
            yield (f"play {workload}, {motion} (beside SetTime)", "PlayWorld/" + place, "MoveScenes/" + place, NODES,
                   Share(mark))
            yield (f"sample {workload}, {motion}", "PlayPose/" + place, "MoveScenes/" + place, NODES, None)
        yield (f"clip of {workload} from a scene", f"ClipFromScene/{workload}", None, BYTES, None)
        yield (f"clip of {workload} from an image", f"ClipFromImage/{workload}", None, BYTES, build)
        yield (f"memory of a clip of {workload}", f"ClipMemory/{workload}/iterations:1", None, MEMORY, 1.3)
    yield ("blend two poses of W1", "BlendPoses/W1", None, NODES, None)
    yield ("1,000 players of W1, two threads (beside registers)", "PlayCrowd/scaling", "Spin/scaling", SCALING,
           Share(0.9))


def add_scaling(found):
    """How much more two threads do than one, run by run."""
    for name in ("PlayCrowd", "Spin"):
        alone, both = (found.get(f"{name}/real_time/threads:{threads}", []) for threads in (1, 2))
        found[name + "/scaling"] = [{"scaling": two["items_per_second"] / one["items_per_second"]}
                                    for one, two in zip(alone, both)]


def fbx_rows(found):
    for name in sorted(found):
        if name.startswith("host/"):
            file = name[len("host/"):]
            yield (f"open {file}", name, None, MILLISECONDS, None)
            yield (f"read {file} without the host", "read/" + file, None, MILLISECONDS, None)


def run(program, arguments, repetitions, environment=None, suffix=""):
    """All repetitions of each benchmark of a program, by name."""
    print(f"running {os.path.basename(program)}{suffix} ...", file=sys.stderr, flush=True)
    with tempfile.TemporaryDirectory() as folder:
        out = os.path.join(folder, "out.json")
        done = subprocess.run([program, f"--benchmark_repetitions={repetitions}", "--benchmark_min_time=0.05",
                               "--benchmark_enable_random_interleaving=true", f"--benchmark_out={out}",
                               "--benchmark_out_format=json", *arguments],
                              cwd=folder, env={**os.environ, **(environment or {})}, capture_output=True, text=True)
        if done.returncode != 0:
            sys.exit(done.stderr)
        with open(out, encoding="utf-8") as file:
            report = json.load(file)
    found = {}
    for entry in report["benchmarks"]:
        if entry.get("error_occurred"):
            sys.exit(f"{entry['name']}: {entry['error_message']}")
        if entry["run_type"] == "iteration":
            found.setdefault(entry["run_name"] + suffix, []).append(entry)
    return found


def export_scenes(build, folders, target):
    """The third workload: real scenes, exported; a file for each take where one has several."""
    for number, folder in enumerate(folders):
        for scene in sorted(os.listdir(folder)):
            if scene.endswith((".fbx", ".bvh", ".glb", ".gltf", ".dae")):
                command = [os.path.join(build, "bin", "tv2"), "export", os.path.join(folder, scene),
                           os.path.join(target, f"{number}_{scene}.tv2")]
                done = subprocess.run(command, capture_output=True, text=True)
                if done.returncode != 0:
                    sys.exit(done.stderr)
    return sorted(os.path.join(target, file) for file in os.listdir(target))


def measured(found, name, reading):
    """Median and best, or None when it did not run."""
    key, factor, _, best = reading
    values = [entry[key] * factor for entry in found.get(name, [])]
    return (statistics.median(values), best(values)) if values else None


def line(found, title, name, floor_name, reading, mark):
    ours = measured(found, name, reading)
    if ours is None:
        return f"{title:<52} not measured"
    floor = measured(found, floor_name, reading) if floor_name else None
    verdict = ""
    if mark is not None:
        goal = mark * floor[0] if isinstance(mark, Share) else mark
        upwards = reading[3] is max
        reached = ours[0] >= goal if upwards else ours[0] <= goal
        unit = " x floor" if isinstance(mark, Share) else ""
        verdict = f"{'>=' if upwards else '<='} {mark:g}{unit}: {'yes' if reached else 'no'}"
    beside = f"{floor[0]:.4g} ({floor[1]:.4g})" if floor else ""
    return f"{title:<52} {ours[0]:>8.4g} ({ours[1]:.4g}) {reading[2]:<8} {beside:>18}  {verdict}".rstrip()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", help="the build folder")
    parser.add_argument("--repetitions", type=int, default=21)
    parser.add_argument("--scenes", help="a folder of further scenes, exported into the third workload")
    parser.add_argument("--json", help="also keep all measurements in this file")
    options = parser.parse_args()
    build = os.path.abspath(options.build)
    programs = os.path.join(build, "bin")
    samples = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "samples")
    found = {}
    with tempfile.TemporaryDirectory() as folder:
        scenes = export_scenes(build, [samples, *([options.scenes] if options.scenes else [])], folder)
        for program in ("format_bench", "playback_bench"):
            found.update(run(os.path.join(programs, program), scenes, options.repetitions))
    add_scaling(found)
    found.update(run(os.path.join(programs, "format_bench"), ["--benchmark_filter=(Evaluate|ReadKeys)/W2"],
                     options.repetitions, {"GLIBC_TUNABLES": "glibc.malloc.hugetlb=1"}, " huge pages"))
    for program in ("mesh_bench", "export_bench", "fbx_bench"):
        path = os.path.join(programs, program)
        if os.path.exists(path):
            found.update(run(path, [], options.repetitions))
    if options.json:
        with open(options.json, "w", encoding="utf-8") as file:
            json.dump(found, file)
    print(f"{'':<52} {'median (best)':>24} {'floor':>18}  mark")
    for row in (*rows(), *fbx_rows(found)):
        print(line(found, *row))
    print(f"W1: 100 nodes x 300 keys; W2: 1,000 x 1,000; W3: {len(scenes)} real scenes. "
          f"{options.repetitions} runs each.")


if __name__ == "__main__":
    main()
