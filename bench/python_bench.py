#!/usr/bin/env python3
"""Measures clip.sample beside the C++ player doing the same: W2 at 1,000 times.

    bench/python_bench.py BUILD [--repetitions 21]

Both take turns, so that a busy machine slows both. Prints medians and bests, and the mark: at most 1.2 times.
"""

import argparse
import os
import statistics
import subprocess
import sys
import tempfile
import time

TIMES = 1000
MARK = 1.2


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build")
    parser.add_argument("--repetitions", type=int, default=21)
    arguments = parser.parse_args()
    sys.path.insert(0, os.path.join(arguments.build, "python"))
    import numpy as np
    import tev2

    ours, fresh, floor, fresh_floor = [], [], [], []
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "w2.tv2")
        with subprocess.Popen([os.path.join(arguments.build, "bin", "sample_bench"), path, str(TIMES)], text=True,
                              stdin=subprocess.PIPE, stdout=subprocess.PIPE) as player:
            player.stdout.readline()
            clip = tev2.load_clip(path)
            times = np.linspace(0, clip.time_range[1], TIMES)
            out = np.zeros((TIMES, len(clip.nodes), 4, 4), np.float32)

            def seconds(work):
                start = time.perf_counter()
                work()
                return time.perf_counter() - start

            for turn in range(arguments.repetitions + 1):
                player.stdin.write("\n")
                player.stdin.flush()
                taken = [float(value) for value in player.stdout.readline().split()]
                if turn > 0:  # the first is for the caches
                    floor.append(taken[0])
                    fresh_floor.append(taken[1])
                    ours.append(seconds(lambda: clip.sample(times, out=out)))
                    fresh.append(seconds(lambda: clip.sample(times)))
            player.stdin.close()
    for title, values, player in (("an array that is there", ours, floor), ("a new array", fresh, fresh_floor)):
        median, beside = 1e3 * statistics.median(values), 1e3 * statistics.median(player)
        print(f"{'clip.sample W2 at 1,000 times, ' + title:<56} {median:8.2f} ms ({1e3 * min(values):.2f}) "
              f"{beside:8.2f} ms ({1e3 * min(player):.2f})  {median / beside:.2f} x, at most {MARK}: "
              f"{'reached' if median <= MARK * beside else 'MISSED'}")


if __name__ == "__main__":
    main()
