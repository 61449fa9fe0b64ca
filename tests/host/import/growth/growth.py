#!/usr/bin/env python3
"""Whether the time for a scene grows no faster than the scene: counts instructions with callgrind.

usage: growth.py PROGRAM

PROGRAM is compiled with -O0, as all tests are: optimisation would copy or rename MeasuredRead.
"""

import concurrent.futures
import os
import re
import shutil
import subprocess
import sys
import tempfile

SIZES = 4  # of each case
MOST = 2.3  # times the instructions for twice the size
SKIPPED = 77


def instructions(program, names):
    """Of each call of MeasuredRead for each name, in order."""
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(
            ["valgrind", "--tool=callgrind", "--callgrind-out-file=" + os.path.join(folder, "out"),
             "--collect-atstart=no", "--toggle-collect=MeasuredRead", "--dump-after=MeasuredRead",
             program] + names,
            check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        counts = []
        number = 1
        while os.path.exists(os.path.join(folder, "out." + str(number))):
            with open(os.path.join(folder, "out." + str(number)), encoding="utf-8", errors="replace") as dump:
                counts.append(int(re.search(r"^(?:summary|totals): (\d+)", dump.read(), re.M).group(1)))
            number += 1
    return [counts[SIZES * at:SIZES * (at + 1)] for at in range(len(names))]


def main():
    if shutil.which("valgrind") is None:
        print("skipped: valgrind is not installed")
        return SKIPPED
    program = sys.argv[1]
    names = subprocess.run([program], check=True, stdout=subprocess.PIPE, text=True).stdout.split()
    failed = False
    workers = os.cpu_count()
    with concurrent.futures.ThreadPoolExecutor(workers) as pool:
        results = list(pool.map(lambda first: instructions(program, names[first::workers]), range(workers)))
    for index, name in enumerate(names):
        counts = results[index % workers][index // workers]
        factors = [after / before for before, after in zip(counts, counts[1:])]
        good = len(counts) == SIZES and all(factor <= MOST for factor in factors)
        failed = failed or not good
        print("%-24s %12s instructions, times %s%s" % (
            name, counts[0] if counts else "no", " ".join("%.2f" % factor for factor in factors),
            "" if good else "  FAILED"))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
