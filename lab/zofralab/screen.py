# SPDX-License-Identifier: GPL-3.0-or-later
"""A virtual desktop: a display without a screen, a window manager, a panel with a status bar, a mouse."""

import glob
import os
import shutil
import subprocess
import time

from .display import Display
from .panels import HEIGHT, WIDTH, LxqtPanel, Panel
from .picture import Box
from .process import DIE_WITH_PARENT, terminate, wait_until
from .xserver import XServer


class Screen:
    """What every virtual desktop has: programs of its own in a home of its own, pictures, and a panel at the top."""

    #: Where the pointer is out of the way.
    rest = (640, 600)

    def __init__(self, directory, environment, prefix, panel, kind):
        self._directory = directory
        self._prefix = list(prefix)
        self._processes = []
        self.panel = panel
        self.home = os.path.join(directory, "desktop")
        self.environment = {**environment, "XDG_CONFIG_HOME": self.home, "XDG_CACHE_HOME": self.home,
                            "XDG_DATA_HOME": self.home, "HOME": self.home, "XDG_SESSION_TYPE": kind,
                            "XDG_CURRENT_DESKTOP": panel.desktop if panel else "", "NO_AT_BRIDGE": "1"}
        for name in ("DISPLAY", "WAYLAND_DISPLAY", "SWAYSOCK"):
            self.environment.pop(name, None)

    def stop(self):
        """End all of it."""
        if self.panel:
            self.panel.stop(self)
        for process in reversed(self._processes):
            terminate(process)
        self._processes.clear()

    def _told(self, *names):
        return {name: self.environment[name] for name in names if name in self.environment}

    # Programs on it.

    def spawn(self, *command, prefix=None):
        """Start a program of the desktop; it ends with the screen, or by `end`."""
        name = os.path.basename(command[-1] if prefix else command[0])
        with open(os.path.join(self._directory, f"{name}.log"), "ab") as log:
            process = subprocess.Popen(
                [*DIE_WITH_PARENT, *(self._prefix if prefix is None else prefix), *command], env=self.environment,
                stdin=subprocess.DEVNULL, stdout=log, stderr=log, start_new_session=True)
        self._processes.append(process)
        return process

    def end(self, process):
        """End a program that `spawn` started."""
        self._processes.remove(process)
        terminate(process)

    def run_inside(self, *command):
        """A command where the radio runs, waited for: nothing else may have a network."""
        subprocess.run([*self._prefix, *command], env=self.environment, check=True, capture_output=True, timeout=60,
                       stdin=subprocess.DEVNULL)

    def run(self, *command, check=True):
        """A small program on this display that needs no network; returns its output."""
        return self.run_raw(*command, check=check).decode("utf-8", "replace")

    def run_raw(self, *command, check=True):
        """The same; the output as bytes."""
        return subprocess.run(command, env=self.environment, check=check, capture_output=True, timeout=60,
                              stdin=subprocess.DEVNULL).stdout

    # Looking at it.

    def picture(self, box=None):
        """A part of the screen, or all of it."""
        raise NotImplementedError

    def still_picture(self, box=None, seconds=0.1):
        """The same once it has not changed for so long."""
        last, since = None, time.monotonic()

        def stands_still():
            nonlocal last, since
            now = self.picture(box)
            if last is None or now.data != last.data:
                last, since = now, time.monotonic()
            return time.monotonic() - since >= seconds and last
        return wait_until(stands_still, 30 + seconds, "a still picture", 0.1)

    @property
    def panel_box(self):
        """Where the panel is, as far as it stands still."""
        whole = Box(0, 0, WIDTH, HEIGHT)
        return self.panel.box(whole) if self.panel else whole

    def wait_for_item(self, empty, timeout=30.0):
        """Wait until something is shown in the panel that was not in `empty`, a picture of it, and stands still. Returns
        where it is."""
        seen = []

        def stands_still():
            seen.append(self.picture(self.panel_box).difference(empty))
            return len(seen) > 1 and seen[-1] is not None and seen[-1] == seen[-2] and seen[-1]
        found = wait_until(stands_still, timeout, "an item in the panel", 0.1)
        return found._replace(x=found.x + self.panel_box.x, y=found.y + self.panel_box.y)

    def wait_for_no_item(self, empty, timeout=30.0):
        """Wait until the panel looks as in `empty`."""
        wait_until(lambda: self.picture(self.panel_box).difference(empty) is None, timeout, "an empty panel", 0.05)


class VirtualScreen(Screen):
    """An X server without a screen. Keeps its files in `directory`; `prefix` puts every program where the radio runs.
    `panel` is the one to start, by default LXQt's; None for a desktop without one. Start it from the main thread."""

    def __init__(self, directory, environment, prefix=(), panel=True):
        super().__init__(directory, environment, prefix, LxqtPanel() if panel is True else panel, "x11")
        self.display = Display(f"{WIDTH}x800x24")
        self.server = None

    @staticmethod
    def missing():
        """What this machine lacks for it."""
        return [program for program in ("Xvfb", "openbox") if not shutil.which(program)]

    def start(self):
        """Display, window manager, panel; returns when the panel is there."""
        os.makedirs(self.home, exist_ok=True)
        self.display.start()
        self.server = XServer(self.display.name)
        self.environment["DISPLAY"] = self.display.name
        if self.panel:
            self.panel.configure(self)
        self._start_manager(self.panel.manager if self.panel else Panel.manager)
        if self.panel:
            self.panel.start(self)
        return self

    def _start_manager(self, command):
        if command:
            self.spawn(*command)
            # A panel that shows itself while the window manager takes over may stay hidden for ever.
            wait_until(self.server.manager_is_there, 60, "the window manager", 0.02)

    def stop(self):
        """End all of it."""
        super().stop()
        if self.server:
            self.server.close()
        self.display.stop()

    @property
    def variables(self):
        """What a program needs to be shown on it."""
        return self._told("DISPLAY", "XDG_SESSION_TYPE", "XDG_CURRENT_DESKTOP", "XDG_DATA_DIRS")

    # Looking at it.

    def screenshot(self, path):
        """Save the whole screen as PNG."""
        self.run("import", "-window", "root", path)

    def picture(self, box=None):
        """A part of the screen, or all of it."""
        return self.server.picture(box)

    def windows(self, kind="", title=""):
        """The windows that can be seen, of that class and that title if given; the uppermost last."""
        return [w for w in self.server.windows() if (not kind or w.kind == kind) and (not title or w.title == title)]

    def wait_for_window(self, kind="", title=""):
        """Wait for the first such window."""
        return wait_until(lambda: next(iter(self.windows(kind, title)), None), 30, f"a window {kind} {title}", 0.05)

    # The mouse and the keyboard.

    def move(self, x, y):
        """Move the pointer."""
        self.server.move(x, y)

    def glide(self, start, end, steps=20):
        """Move the pointer from one point to another as a hand does: newer menus open nothing for one that jumps."""
        for step in range(steps + 1):
            self.server.move(*(round(a + (b - a) * step / steps) for a, b in zip(start, end)))
            time.sleep(0.02)

    def click(self, point, button=1):
        """Move there and click."""
        self.server.move(*point)
        self.server.press(button)

    def key(self, *names):
        """Press keys, one after the other."""
        for name in names:
            self.server.key(name)


class NestedScreen(VirtualScreen):
    """A Wayland desktop in a window that fills an X server without a screen: mouse, keyboard and pictures are the X
    server's, and programs know of the Wayland display only."""

    rest = (4, 798)

    def __init__(self, directory, environment, prefix=(), panel=None):
        super().__init__(directory, environment, prefix, panel)
        self.environment["XDG_SESSION_TYPE"] = "wayland"

    @staticmethod
    def missing():
        """What this machine lacks for it."""
        absent = VirtualScreen.missing()
        if not glob.glob("/usr/lib/*/qt6/plugins/platforms/libqwayland*.so"):
            absent.append("part of the toolkit for Wayland")
        return absent

    def _start_manager(self, command):
        if self.panel.compositor:
            # A copy has no capabilities of its own: not every container may give those of the original.
            program = shutil.copy(shutil.which(self.panel.compositor[0]), self.home)
            self.spawn(program, *self.panel.compositor[1:], self.display.name)
            socket = os.path.join(self.environment["XDG_RUNTIME_DIR"], "wayland-0")
            wait_until(lambda: os.path.exists(socket), 60, "the compositor", 0.05)
            del self.environment["DISPLAY"]
            self.environment["WAYLAND_DISPLAY"] = "wayland-0"

    @property
    def variables(self):
        """What a program needs to be shown on it."""
        return {"WAYLAND_DISPLAY": "wayland-0", **self._told("XDG_SESSION_TYPE", "XDG_CURRENT_DESKTOP", "XDG_DATA_DIRS")}

    @property
    def below_panel(self):
        """Everything but the panel, and a strip in which the pointer may rest: some draw it into the picture."""
        return Box(0, HEIGHT, WIDTH, 776 - HEIGHT)
