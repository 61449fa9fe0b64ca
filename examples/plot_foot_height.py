#!/usr/bin/env python3
"""Plots how high a foot is over time.

    plot_foot_height.py FILE.tv2 PICTURE [NODE...]

PICTURE is a .png, .svg or .pdf file. Without names, the nodes whose names begin with "Foot" are plotted.
"""

import sys

import matplotlib.pyplot as plt
import numpy as np

import tev2

# The axis and direction that is up in the world of a file; of an exported selection, +Y.
UP = {"+Y": (1, 1), "+Z": (2, 1), "-Z": (2, -1), "unknown": (1, 1)}


def heights(path, names=()):
    """Times in seconds, and the heights of each node in metres, by its name."""
    scene = tev2.load(path)
    clip = tev2.Clip(scene)
    start, end = clip.time_range
    times = np.linspace(start, end, 200)
    axis, sign = UP[scene.up_axis]
    positions = clip.sample(times)[:, :, axis, 3]
    chosen = names or [name for name in clip.nodes if name.startswith("Foot")]
    return times, {name: sign * positions[:, clip.find_node(name)] for name in chosen}


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__.strip())
    try:
        times, curves = heights(sys.argv[1], sys.argv[3:])
    except (tev2.LoadError, KeyError) as error:
        sys.exit(str(error))
    figure, axes = plt.subplots(figsize=(8, 4))
    for name, curve in curves.items():
        axes.plot(times, curve, label=name)
    axes.set(xlabel="time (s)", ylabel="height (m)", title=sys.argv[1])
    axes.legend()
    figure.savefig(sys.argv[2])


if __name__ == "__main__":
    main()
