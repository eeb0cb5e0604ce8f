#!/usr/bin/env python3
"""Times a whole process: runs COMMAND once to warm the caches, then RUNS times, and prints the
median wall time and the median CPU time (user + system of the process and its children), in
seconds: "WALL CPU". Output of the command is discarded.

Usage: time_command.py [--runs N] COMMAND [ARG...]

Milliseconds matter here (a start-up is 5 to 15 ms), so the clock is read around the process
itself rather than around a shell that starts it; CPU time tells the command's own cost apart
from the neighbours' on a shared machine.
"""
import resource
import statistics
import subprocess
import sys
import time


def run_once(command):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    start = time.perf_counter()
    subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
    wall = time.perf_counter() - start
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    cpu = (after.ru_utime - before.ru_utime) + (after.ru_stime - before.ru_stime)
    return wall, cpu


def main():
    args = sys.argv[1:]
    runs = 5
    if len(args) >= 2 and args[0] == "--runs":
        runs = int(args[1])
        args = args[2:]
    if not args:
        sys.exit(__doc__)
    run_once(args)
    walls, cpus = zip(*(run_once(args) for _ in range(runs)))
    print(f"{statistics.median(walls):.4f} {statistics.median(cpus):.4f}")


if __name__ == "__main__":
    main()
