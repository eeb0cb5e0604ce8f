"""What the Xvfb benchmarks share: a display of their own, and a fresh home for each program run
so that no program starts with a warm thumbnail cache or saved settings."""
import os
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
