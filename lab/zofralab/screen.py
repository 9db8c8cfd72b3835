# SPDX-License-Identifier: GPL-3.0-or-later
"""A virtual desktop: an X server without a screen, a window manager and a panel with a status bar."""

import os
import subprocess

from .process import DIE_WITH_PARENT, terminate, wait_until

PANEL_CONFIG = """[General]
__userfile__=true
iconTheme=
[panel1]
alignment=-1
desktop=0
hidable=false
iconSize=22
lineCount=1
panelSize=32
plugins=spacer, statusnotifier
position=Top
width=100
width-percent=true
[spacer]
alignment=Left
expandable=true
type=spacer
[statusnotifier]
alignment=Right
type=statusnotifier
"""


class VirtualScreen:
    """Starts in `directory`; `prefix` puts every program where the radio runs. Start it from the main thread."""

    def __init__(self, directory, environment, prefix=(), size="1280x800", panel=True):
        self._directory = directory
        self._prefix = list(prefix)
        self._size = size
        self._with_panel = panel
        self._processes = []
        self.environment = {**environment, "XDG_CONFIG_HOME": os.path.join(directory, "desktop-config"),
                            "XDG_CURRENT_DESKTOP": "LXQt", "XDG_SESSION_TYPE": "x11", "HOME": directory}

    def start(self):
        """X server, window manager, panel; returns when the display answers."""
        os.makedirs(os.path.join(self.environment["XDG_CONFIG_HOME"], "lxqt"), exist_ok=True)
        readable, writable = os.pipe()
        self._spawn(["Xvfb", "-displayfd", str(writable), "-screen", "0", f"{self._size}x24", "-nolisten", "tcp",
                     "-noreset"], pass_fds=(writable,))
        os.close(writable)
        with os.fdopen(readable) as answer:
            number = answer.readline().strip()
        if not number:
            raise RuntimeError("the virtual display did not start")
        self.environment["DISPLAY"] = f":{number}"
        self._spawn(["openbox", "--sm-disable"])
        if not self._with_panel:
            return self
        config = os.path.join(self.environment["XDG_CONFIG_HOME"], "lxqt", "panel.conf")
        with open(config, "w", encoding="ascii") as file:
            file.write(PANEL_CONFIG)
        self._spawn(["lxqt-panel", "-c", config])
        wait_until(self._panel_is_there, 15, "the panel", 0.1)
        return self

    def stop(self):
        """End all of it."""
        for process in reversed(self._processes):
            terminate(process)
        self._processes.clear()

    def run(self, *command, check=True):
        """A small program on this display; returns its output."""
        return subprocess.run([*self._prefix, *command], env=self.environment, check=check, capture_output=True,
                              text=True, timeout=20).stdout

    def screenshot(self, path):
        """Save the whole screen as PNG."""
        self.run("import", "-window", "root", path)

    def _spawn(self, command, pass_fds=()):
        log = open(os.path.join(self._directory, f"{command[0]}.log"), "wb")
        self._processes.append(subprocess.Popen(
            [*DIE_WITH_PARENT, *self._prefix, *command], env=self.environment, stdin=subprocess.DEVNULL, stdout=log,
            stderr=log, start_new_session=True, pass_fds=pass_fds))
        log.close()

    def _panel_is_there(self):
        return "lxqt-panel" in self.run("xwininfo", "-root", "-tree", check=False)
