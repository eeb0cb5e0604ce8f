#!/usr/bin/env python3
"""Start-up to first window and resident memory of pixcove beside other image viewers.

Each program opens the same folder of 40 camera JPEGs of 24 MP under Xvfb, with a fresh empty
HOME (and temporary and runtime folders) each run. Time runs from exec until
`xdotool search --onlyvisible --pid PID` first finds a window, polled every 10 ms (xdotool's own
--sync polls only every 0.5 s). Warm: one untimed run first, then the median of five. Resident
memory is read from /proc 10 s after the window appeared, in the last run.

Usage: bench/startup_window.py PIXCOVE_BINARY WORK_DIR [CORPUS_DIR]
"""
import os
import shutil
import statistics
import subprocess
import sys
import time

from viewer_session import fresh_environment, start_xvfb, stop, wait_for_window

RUNS = 5
POLL = 0.010  # the 10 ms poll interval of the measurement
TIMEOUT = 30.0
SETTLE_FOR_MEMORY = 10.0


def make_folder(work, corpus):
    folder = os.path.join(work, "camera40")
    done = os.path.join(folder, ".complete")
    if os.path.exists(done):
        return folder
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    sources = sorted(os.path.join(corpus, name) for name in os.listdir(corpus)
                     if name.lower().endswith(".jpg") and "corrupt" not in name)
    for i in range(40):
        source = sources[i % len(sources)]
        target = os.path.join(folder, "IMG_%04d.JPG" % (i + 1))
        # 6000 x 4000 at camera quality, keeping the source's EXIF as a camera would write it.
        subprocess.run(["convert", source, "-resize", "6000x4000!", "-quality", "92", target], check=True)
    open(done, "w").close()
    return folder


def rss_mb(pid):
    try:
        with open("/proc/%d/status" % pid) as status:
            for line in status:
                if line.startswith("VmRSS:"):
                    return int(line.split()[1]) / 1024.0
    except OSError:
        pass
    return float("nan")


def run_once(command, display, measure_memory):
    env, home = fresh_environment(display)
    start = time.monotonic()
    process = subprocess.Popen(command, env=env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    elapsed = wait_for_window(process, env, TIMEOUT, POLL, start)
    memory = None
    if elapsed is not None and measure_memory:
        time.sleep(SETTLE_FOR_MEMORY)
        memory = rss_mb(process.pid)
    stop(process, home)
    return elapsed, memory


def main():
    pixcove, work = sys.argv[1], sys.argv[2]
    corpus = sys.argv[3] if len(sys.argv) > 3 else os.path.join(os.path.dirname(__file__), "..", "..", "shared", "corpus", "jpg")
    folder = make_folder(work, corpus)
    viewers = [("pixcove", [pixcove, folder])]
    for name in ["qimgv", "ristretto", "geeqie", "eog", "gwenview", "gthumb"]:
        if shutil.which(name):
            viewers.append((name, [name, folder]))
        else:
            print("  %-10s not installed (bench/setup-viewers installs it)" % name)
    server, display = start_xvfb()
    try:
        print("  %-10s %14s %14s" % ("program", "first window", "RSS after 10 s"))
        for name, command in viewers:
            run_once(command, display, False)  # warm the caches
            times = []
            memory = None
            for i in range(RUNS):
                elapsed, rss = run_once(command, display, i == RUNS - 1)
                if elapsed is not None:
                    times.append(elapsed)
                if rss is not None:
                    memory = rss
            if not times:
                print("  %-10s %14s" % (name, "no window"))
                continue
            print("  %-10s %11.0f ms %11.0f MB" % (name, statistics.median(times) * 1000,
                                                    memory if memory is not None else float("nan")))
            sys.stdout.flush()
    finally:
        server.terminate()
        server.wait()


if __name__ == "__main__":
    main()
