#!/usr/bin/env python3
"""Opening one 24 MP camera JPEG from exec, under Xvfb: our image view (bench_viewer_ui_event
--stamps: the window shown, the embedded preview painted, the picture at the fit painted) beside
other viewers started on the same file (time until `xdotool search --onlyvisible --pid` finds
their window, polled every 10 ms; whether their picture is drawn by then is not seen). Fresh
HOME each run, one untimed run first, median of five.

Usage: bench/viewer_open.py BENCH_VIEWER_BINARY FILE
"""
import shutil
import statistics
import subprocess
import sys
import time

from viewer_session import fresh_environment, start_xvfb, stop, wait_for_window

RUNS = 5
POLL = 0.010
TIMEOUT = 30.0


def environment(display):
    """A fresh home, and Qt told to use the X server even where a session asks otherwise."""
    env, home = fresh_environment(display)
    env["QT_QPA_PLATFORM"] = "xcb"
    return env, home


def run_ours(binary, path, display):
    env, home = environment(display)
    start = time.time()
    result = subprocess.run([binary, "--stamps", path], env=env,
                            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, timeout=TIMEOUT)
    shutil.rmtree(home, ignore_errors=True)
    stamps = {}
    for line in result.stdout.decode().splitlines():
        name, _, value = line.partition(" ")
        if value.strip().isdigit():
            stamps[name] = int(value) / 1e6 - start
    return stamps


def run_theirs(command, display):
    env, home = environment(display)
    start = time.monotonic()
    process = subprocess.Popen(command, env=env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    elapsed = wait_for_window(process, env, TIMEOUT, POLL, start)
    stop(process, home)
    return elapsed


def main():
    binary, path = sys.argv[1], sys.argv[2]
    server, display = start_xvfb()
    try:
        run_ours(binary, path, display)
        runs = [run_ours(binary, path, display) for _ in range(RUNS)]
        for key, label in [("window_shown", "window shown"), ("preview_paint", "embedded preview painted"),
                           ("fit_paint", "fit quality painted")]:
            values = [run[key] for run in runs if key in run]
            if values:
                print("  %-34s %7.0f ms" % ("pixcove image view: " + label, statistics.median(values) * 1000))
        for name in ["qimgv", "gwenview"]:
            if not shutil.which(name):
                print("  %-34s not installed (bench/setup-viewers installs it)" % name)
                continue
            command = [name, path]
            run_theirs(command, display)
            times = [t for t in (run_theirs(command, display) for _ in range(RUNS)) if t is not None]
            if times:
                print("  %-34s %7.0f ms" % (name + ": window shown", statistics.median(times) * 1000))
            else:
                print("  %-34s no window" % name)
            sys.stdout.flush()
    finally:
        server.terminate()
        server.wait()


if __name__ == "__main__":
    main()
