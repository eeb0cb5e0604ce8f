#!/usr/bin/env python3
"""Resident memory of the real pixcove window showing a big folder, beside other image viewers.

Each program opens FOLDER under Xvfb with a fresh empty HOME (so a fresh thumbnail cache), its
window is set to 1400 x 900, and once it has shown the folder for a few seconds the mouse wheel
scrolls its grid down a few pages (five bursts of ten notches, a second apart). Ten seconds later
the resident memory is read from /proc: all of it, and the anonymous part (heap, images) apart
from the mapped files (libraries, fonts). The run of median resident memory among three is shown. Only the process
itself is counted: helper processes (a viewer's thumbnailing workers) are not.

Usage: bench/window_memory.py PIXCOVE_BINARY FOLDER [VIEWER...]
  VIEWER: other programs to measure the same way when installed (default: qimgv gwenview).
"""
import shutil
import subprocess
import sys
import time

from viewer_session import fresh_environment, memory_mb, start_xvfb, stop, wait_for_window, xdotool

RUNS = 3
WINDOW = (1400, 900)
POLL = 0.05
TIMEOUT = 30.0
SHOW_FOR = 4.0  # the folder is listed and the first screen of thumbnails asked for
BURSTS = 5  # ten notches each: about a page of the grid per burst
SETTLE = 10.0


def run_once(command, display):
    env, home = fresh_environment(display)
    process = subprocess.Popen(command, env=env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    result = None
    try:
        if wait_for_window(process, env, TIMEOUT, POLL) is not None:
            window = xdotool(env, "search", "--onlyvisible", "--pid", str(process.pid))[-1]
            xdotool(env, "windowmove", window, "0", "0")
            xdotool(env, "windowsize", window, str(WINDOW[0]), str(WINDOW[1]))
            time.sleep(SHOW_FOR)
            # Two fifths across: over the grid whether a sidebar is on its left or a preview on its
            # right.
            xdotool(env, "mousemove", str(WINDOW[0] * 2 // 5), str(WINDOW[1] // 2))
            for _ in range(BURSTS):
                xdotool(env, "click", "--repeat", "10", "--delay", "30", "5")
                time.sleep(1.0)
            time.sleep(SETTLE)
            memory = memory_mb(process.pid)
            if memory:
                result = memory + (memory[0] - memory[1],)  # resident, anonymous, files
    finally:
        stop(process, home)
    return result


def main():
    pixcove, folder = sys.argv[1], sys.argv[2]
    others = sys.argv[3:] or ["qimgv", "gwenview"]
    programs = [("pixcove", [pixcove, folder])]
    for name in others:
        if shutil.which(name):
            programs.append((name, [name, folder]))
        else:
            print("  %-10s not installed (bench/setup-viewers installs it)" % name)
    server, display = start_xvfb()
    try:
        print("  %-10s %12s %12s %12s" % ("program", "resident", "anonymous", "files"))
        for name, command in programs:
            samples = [m for m in (run_once(command, display) for _ in range(RUNS)) if m is not None]
            if not samples:
                print("  %-10s %12s" % (name, "no window"))
                continue
            # The run of median resident memory, with its own breakdown.
            resident, anonymous, files = sorted(samples)[(len(samples) - 1) // 2]
            print("  %-10s %9.0f MB %9.0f MB %9.0f MB" % (name, resident, anonymous, files))
            sys.stdout.flush()
    finally:
        server.terminate()
        server.wait()


if __name__ == "__main__":
    main()
