#!/usr/bin/env python3
"""Resident memory of image viewers after stepping through COUNT camera JPEGs, under Xvfb.

Each program opens the first COUNT pictures of FOLDER (pixcove is given them on its command line,
as a shell glob gives them, so its viewer steps through exactly those; the other viewers are given
the first file and step through its folder). Its window is set to 1280 x 800, then the Right key
is pressed COUNT - 1 times, DELAY ms apart (a user skimming a shoot), and three seconds later the
resident memory of the process is read from /proc (all of it, and the anonymous part: heap and
decoded pictures). One run per program; the CPU time the process used is shown beside.

Usage: bench/viewer_step_memory.py PIXCOVE_BINARY FOLDER [COUNT] [DELAY_MS]
"""
import os
import shutil
import subprocess
import sys
import time

from viewer_session import cpu_seconds, fresh_environment, memory_mb, start_xvfb, stop, wait_for_window, xdotool

WINDOW = (1280, 800)
TIMEOUT = 30.0
SETTLE = 3.0


def run_once(command, display, steps, delay_ms):
    env, home = fresh_environment(display)
    process = subprocess.Popen(command, env=env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        if wait_for_window(process, env, TIMEOUT) is None:
            return None
        window = xdotool(env, "search", "--onlyvisible", "--pid", str(process.pid))[-1]
        xdotool(env, "windowmove", window, "0", "0")
        xdotool(env, "windowsize", window, str(WINDOW[0]), str(WINDOW[1]))
        xdotool(env, "windowfocus", "--sync", window)
        time.sleep(2.0)
        began = time.monotonic()
        xdotool(env, "key", "--delay", str(delay_ms), "--repeat", str(steps), "Right")
        stepping = time.monotonic() - began
        time.sleep(SETTLE)
        memory = memory_mb(process.pid)
        return memory + (cpu_seconds(process.pid), stepping) if memory else None
    finally:
        stop(process, home)


def main():
    pixcove, folder = sys.argv[1], sys.argv[2]
    count = int(sys.argv[3]) if len(sys.argv) > 3 else 500
    delay_ms = int(sys.argv[4]) if len(sys.argv) > 4 else 100
    names = sorted(n for n in os.listdir(folder) if n.lower().endswith((".jpg", ".jpeg")))[:count]
    paths = [os.path.join(folder, n) for n in names]
    programs = [("pixcove", [pixcove] + paths)]
    for name in ("qimgv", "eog", "gwenview"):
        if shutil.which(name):
            programs.append((name, [name, paths[0]]))
    server, display = start_xvfb()
    try:
        print("  %-10s %12s %12s %10s" % ("program", "resident", "anonymous", "CPU"))
        for name, command in programs:
            result = run_once(command, display, len(paths) - 1, delay_ms)
            if result is None:
                print("  %-10s %12s" % (name, "no window"))
                continue
            resident, anonymous, cpu, stepping = result
            print("  %-10s %9.0f MB %9.0f MB %8.1f s   (%d steps in %.0f s)" % (name, resident, anonymous, cpu,
                                                                              len(paths) - 1, stepping))
            sys.stdout.flush()
    finally:
        server.terminate()
        server.wait()


if __name__ == "__main__":
    main()
