#!/usr/bin/env python3
"""Opening one 24 MP camera JPEG from exec, under Xvfb: our image view (bench_viewer_ui_event
--stamps: the window shown, the embedded preview painted, the picture at the fit painted) beside
other viewers started on the same file (time until `xdotool search --onlyvisible --pid` finds
their window, polled every 10 ms; whether their picture is drawn by then is not seen). Fresh
HOME each run, one untimed run first, median of five.

Usage: bench/viewer_open.py BENCH_VIEWER_BINARY FILE
"""
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

RUNS = 5
POLL = 0.010
TIMEOUT = 30.0


def start_xvfb():
    for display in range(120, 150):
        if os.path.exists("/tmp/.X%d-lock" % display):
            continue
        server = subprocess.Popen(["Xvfb", ":%d" % display, "-screen", "0", "1600x1000x24", "-nolisten", "tcp"],
                                  stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        time.sleep(0.5)
        if server.poll() is None:
            return server, ":%d" % display
    raise SystemExit("no free X display")


def environment(display, home):
    return {"PATH": os.environ["PATH"], "DISPLAY": display, "HOME": home, "TMPDIR": home,
            "XDG_RUNTIME_DIR": home, "LANG": os.environ.get("LANG", "C.UTF-8"), "QT_QPA_PLATFORM": "xcb"}


def visible_window(pid, env):
    result = subprocess.run(["xdotool", "search", "--onlyvisible", "--pid", str(pid)],
                            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, env=env)
    return result.returncode == 0 and result.stdout.strip() != b""


def run_ours(binary, path, display):
    home = tempfile.mkdtemp(prefix="viewer-home-")
    os.chmod(home, 0o700)
    start = time.time()
    result = subprocess.run([binary, "--stamps", path], env=environment(display, home),
                            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, timeout=TIMEOUT)
    shutil.rmtree(home, ignore_errors=True)
    stamps = {}
    for line in result.stdout.decode().splitlines():
        name, _, value = line.partition(" ")
        if value.strip().isdigit():
            stamps[name] = int(value) / 1e6 - start
    return stamps


def run_theirs(command, display):
    home = tempfile.mkdtemp(prefix="viewer-home-")
    os.chmod(home, 0o700)
    env = environment(display, home)
    start = time.monotonic()
    process = subprocess.Popen(command, env=env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    elapsed = None
    while time.monotonic() - start < TIMEOUT:
        if visible_window(process.pid, env):
            elapsed = time.monotonic() - start
            break
        if process.poll() is not None:
            break
        time.sleep(POLL)
    process.terminate()
    try:
        process.wait(timeout=5)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()
    shutil.rmtree(home, ignore_errors=True)
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
