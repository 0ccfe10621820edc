"""Drives the real kestrun program on an X display as a person would: the
keyboard and the mouse through xdotool, and what is on screen read through
the accessibility tree (AT-SPI) that Qt publishes.

Run inside `xvfb-run -a dbus-run-session -- ...`; Session starts the
accessibility bus itself."""
import atexit
import json
import os
import pathlib
import shutil
import subprocess
import tempfile
import time

import pyatspi

ROOT = pathlib.Path(__file__).resolve().parents[2]


class Timeout(AssertionError):
    pass


def wait_for(what, predicate, timeout=10.0, interval=0.1):
    """The predicate's first truthy value, or Timeout naming what was awaited."""
    end = time.monotonic() + timeout
    while True:
        value = predicate()
        if value:
            return value
        if time.monotonic() > end:
            raise Timeout(f"timed out waiting for {what}")
        time.sleep(interval)


_bus = None


def accessibility_bus():
    """Starts the accessibility bus once for every session of this process."""
    global _bus
    if _bus is None:
        _bus = subprocess.Popen(["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"])
        atexit.register(_bus.terminate)
        # A program started before the bus answers never joins it.
        ask = ["dbus-send", "--session", "--print-reply", "--dest=org.a11y.Bus", "/org/a11y/bus",
               "org.a11y.Bus.GetAddress"]
        wait_for("the accessibility bus", lambda: subprocess.run(ask, capture_output=True).returncode == 0, 60, 0.2)
        wait_for("the accessibility registry", lambda: pyatspi.Registry.getDesktop(0) is not None, 60, 0.2)
    return _bus


class Session:
    """One run of the app with a home directory of its own."""

    def __init__(self, program, home=None, environment=None, wrap=(), screenshots_mode=False):
        self.program = str(program)
        self.home = pathlib.Path(home or tempfile.mkdtemp(prefix="kestrun-e2e-"))
        self.environment = environment or {}
        self.wrap = list(wrap)
        # The app's own screenshots mode frames the window alike, and runs
        # the code of a code lesson as soon as it opens.
        self.screenshots_mode = screenshots_mode
        self.process = None
        self.window = None

    # Files the app keeps for the learner.
    @property
    def progress_file(self):
        return self.home / "share" / "Swift Kestrun" / "progress.json"

    def progress(self):
        with open(self.progress_file, encoding="utf-8") as file:
            return json.load(file)

    def write_progress(self, record):
        self.progress_file.parent.mkdir(parents=True, exist_ok=True)
        self.progress_file.write_text(json.dumps(record), encoding="utf-8")

    def start(self):
        accessibility_bus()
        env = dict(os.environ)
        env.update({
            "HOME": str(self.home),
            "XDG_DATA_HOME": str(self.home / "share"),
            "XDG_CONFIG_HOME": str(self.home / "config"),
            "XDG_CACHE_HOME": str(self.home / "cache"),
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
            "QT_ACCESSIBILITY": "1",
        })
        env.pop("QT_QPA_PLATFORM", None)
        env.pop("KRX_SCREENSHOTS", None)
        if self.screenshots_mode:
            env["KRX_SCREENSHOTS"] = "1"
        env.update(self.environment)
        self.process = subprocess.Popen(self.wrap + [self.program], env=env)
        self.window = wait_for("the main window", lambda: self.find(role="frame", name="Swift: Kestrun"), 60)
        if self.screenshots_mode:
            wait_for("the window in place", lambda: self.extents(self.window)[:2] == (40, 40), 10)
        return self

    def stop(self, signal_name=None):
        if self.process and self.process.poll() is None:
            if signal_name:
                subprocess.run(["kill", "-" + signal_name, str(self.process.pid)], check=False)
            else:
                self.process.terminate()
            self.process.wait(20)
        return self.process.returncode if self.process else None

    def close(self):
        self.stop()

    def __enter__(self):
        return self.start()

    def __exit__(self, *_):
        self.close()

    def resize(self, width, height):
        """Sizes the main window as a person would drag its corner."""
        window = subprocess.run(["xdotool", "search", "--name", "^Swift: Kestrun$"], capture_output=True, text=True).stdout.split()
        for wid in window:
            subprocess.run(["xdotool", "windowsize", wid, str(width), str(height)], check=False)
        wait_for("the window's new size", lambda: self.extents(self.window)[2:] == (width, height), 10)

    # Finding what is on screen.
    def _pids(self):
        """The program's process and those it started (a wrapper's child)."""
        pids, queue = set(), [self.process.pid]
        while queue:
            pid = queue.pop()
            pids.add(pid)
            for children in pathlib.Path(f"/proc/{pid}/task").glob("*/children"):
                try:
                    queue.extend(int(child) for child in children.read_text().split())
                except OSError:
                    pass
        return pids

    def application(self):
        pids = self._pids()
        desktop = pyatspi.Registry.getDesktop(0)
        for app in desktop:
            try:
                if app is not None and app.get_process_id() in pids:
                    return app
            except Exception:
                continue
        return None

    def all(self, role=None, name=None, contains=None, showing=True):
        """Every accessible of the app matching role and name."""
        root = self.application()
        found = []
        if root is None:
            return found

        def visit(node, depth):
            if node is None or depth > 40:
                return
            try:
                node_role = node.getRoleName()
                node_name = node.name or ""
                states = node.getState()
            except Exception:
                return
            if showing and node_role != "application" and not states.contains(pyatspi.STATE_SHOWING):
                return
            if ((role is None or node_role == role) and (name is None or node_name == name)
                    and (contains is None or contains in node_name)):
                found.append(node)
            try:
                count = node.childCount
            except Exception:
                return
            for i in range(count):
                try:
                    visit(node.getChildAtIndex(i), depth + 1)
                except Exception:
                    continue

        visit(root, 0)
        return found

    def find(self, role=None, name=None, contains=None):
        matches = self.all(role, name, contains)
        return matches[0] if matches else None

    def wait(self, role=None, name=None, contains=None, timeout=10.0):
        label = f"{role or 'anything'} {name or contains or ''}".strip()
        return wait_for(label, lambda: self.find(role, name, contains), timeout)

    @staticmethod
    def extents(node):
        box = node.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
        return box.x, box.y, box.width, box.height

    @staticmethod
    def is_enabled(node):
        return node.getState().contains(pyatspi.STATE_ENABLED)

    # Acting as a person.
    def click(self, node):
        x, y, w, h = self.extents(node)
        subprocess.run(["xdotool", "mousemove", "--sync", str(x + w // 2), str(y + h // 2), "click", "1"], check=True)
        time.sleep(0.15)

    def key(self, *keys):
        subprocess.run(["xdotool", "key", "--clearmodifiers", *keys], check=True)
        time.sleep(0.15)

    def type(self, text):
        """Types into whatever has the keyboard focus; a line feed is the Return key."""
        for i, line in enumerate(text.split("\n")):
            if i:
                self.key("Return")
            if line:
                subprocess.run(["xdotool", "type", "--delay", "8", "--", line], check=True)
        time.sleep(0.15)

    def screenshot(self, path, node=None):
        """The node, by default the main window, as it is on screen; the whole
        screen once the app has gone."""
        path = pathlib.Path(path)
        path.parent.mkdir(parents=True, exist_ok=True)
        node = self.window if node is None else node
        crop = []
        if node is not None and self.process and self.process.poll() is None:
            x, y, w, h = self.extents(node)
            crop = ["-crop", f"{w}x{h}+{x}+{y}", "+repage"]
        subprocess.run(["import", "-window", "root", *crop, str(path)], check=True)


def toolchain_present():
    return shutil.which("swiftc") is not None or any(pathlib.Path("/opt").glob("swift*/usr/bin/swiftc"))
