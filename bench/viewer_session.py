"""What the Xvfb benchmarks share: a display of their own, and a fresh home for each program run
so that no program starts with a warm thumbnail cache or saved settings."""
import os
import shutil
import subprocess
import tempfile
import time


def start_xvfb():
    """Starts Xvfb on the first free display from :90; answers (server process, DISPLAY)."""
    for display in range(90, 120):
        if os.path.exists("/tmp/.X%d-lock" % display):
            continue
        server = subprocess.Popen(["Xvfb", ":%d" % display, "-screen", "0", "1600x1000x24", "-nolisten", "tcp"],
                                  stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        time.sleep(0.5)
        if server.poll() is None:
            return server, ":%d" % display
    raise SystemExit("no free X display")


def fresh_environment(display):
    """An environment with an empty HOME (and runtime and temporary folders in it); answers
    (environment, home). The caller removes home."""
    home = tempfile.mkdtemp(prefix="viewer-home-")
    os.chmod(home, 0o700)
    env = {"PATH": os.environ["PATH"], "DISPLAY": display, "HOME": home, "TMPDIR": home,
           "XDG_RUNTIME_DIR": home, "LANG": os.environ.get("LANG", "C.UTF-8")}
    return env, home


def visible_window(pid, env):
    """Whether process `pid` shows a window yet."""
    result = subprocess.run(["xdotool", "search", "--onlyvisible", "--pid", str(pid)],
                            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, env=env)
    return result.returncode == 0 and result.stdout.strip() != b""


def xdotool(env, *args):
    """Runs xdotool on the benchmark's display; answers its output's words (window ids)."""
    result = subprocess.run(["xdotool"] + list(args), stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, env=env)
    return result.stdout.decode().split()


def wait_for_window(process, env, timeout, poll=0.02, start=None):
    """Seconds from `start` (a time.monotonic() reading; now by default) until `process` shows a
    window; None when it exits or times out first."""
    start = time.monotonic() if start is None else start
    while time.monotonic() - start < timeout:
        if visible_window(process.pid, env):
            return time.monotonic() - start
        if process.poll() is not None:
            return None
        time.sleep(poll)
    return None


def stop(process, home):
    """Ends a program started in a fresh home and removes the home."""
    process.terminate()
    try:
        process.wait(timeout=5)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()
    shutil.rmtree(home, ignore_errors=True)


def memory_mb(pid):
    """(resident, anonymous) memory of process `pid` in MB, from smaps_rollup; None when gone.
    Anonymous is the heap and decoded pictures; the rest is mapped files (libraries, fonts)."""
    fields = {}
    try:
        with open("/proc/%d/smaps_rollup" % pid) as rollup:
            for line in rollup:
                parts = line.split()
                if len(parts) >= 2 and parts[0].endswith(":"):
                    fields[parts[0][:-1]] = int(parts[1]) / 1024.0
    except OSError:
        return None
    return fields.get("Rss", 0.0), fields.get("Anonymous", 0.0)


def cpu_seconds(pid):
    """User and system CPU seconds process `pid` has used so far."""
    try:
        with open("/proc/%d/stat" % pid) as stat:
            parts = stat.read().rsplit(")", 1)[1].split()
        return (int(parts[11]) + int(parts[12])) / os.sysconf("SC_CLK_TCK")
    except (OSError, IndexError, ValueError):
        return 0.0
