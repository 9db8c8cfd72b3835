# SPDX-License-Identifier: GPL-3.0-or-later
"""A virtual desktop: a display without a screen, a window manager and a panel with a status bar."""

import os
import subprocess

from .display import Display
from .process import DIE_WITH_PARENT, terminate, wait_until

PANEL_CONFIG = """[General]
__userfile__=true
iconTheme=hicolor
panels=panel1

[panel1]
alignment=-1
background-color=@Variant(\\0\\0\\0\\x43\\x1\\xff\\xff\\xee\\xee\\xf0\\xf0\\xf4\\xf4\\0\\0)
desktop=0
hidable=false
iconSize=22
lineCount=1
opacity=100
panelSize=36
plugins=spacer, statusnotifier
position=Top
reserve-space=true
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
    """Keeps its files in `directory`; `prefix` puts every program where the radio runs. Start it from the main thread."""

    def __init__(self, directory, environment, prefix=(), panel=True):
        self._directory = directory
        self._prefix = list(prefix)
        self._with_panel = panel
        self._display = Display()
        self._processes = []
        home = os.path.join(directory, "desktop")
        self._panel_config = os.path.join(home, "lxqt", "panel.conf")
        self.environment = {**environment, "XDG_CONFIG_HOME": home, "XDG_CACHE_HOME": home, "XDG_DATA_HOME": home,
                            "HOME": home, "XDG_CURRENT_DESKTOP": "LXQt", "XDG_SESSION_TYPE": "x11"}

    def start(self):
        """Display, window manager, panel; returns when the panel is there."""
        os.makedirs(os.path.dirname(self._panel_config), exist_ok=True)
        self._display.start()
        self.environment["DISPLAY"] = self._display.name
        self._spawn("openbox", "--sm-disable")
        if self._with_panel:
            with open(self._panel_config, "w", encoding="ascii") as file:
                file.write(PANEL_CONFIG)
            self._spawn("lxqt-panel", "-c", self._panel_config)
            wait_until(lambda: "lxqt-panel" in self.run("xwininfo", "-root", "-tree", check=False), 15, "the panel",
                       0.1)
        return self

    def stop(self):
        """End all of it."""
        for process in reversed(self._processes):
            terminate(process)
        self._processes.clear()
        self._display.stop()

    def run(self, *command, check=True):
        """A small program on this display; returns its output."""
        return subprocess.run([*self._prefix, *command], env=self.environment, check=check, capture_output=True,
                              text=True, timeout=20, stdin=subprocess.DEVNULL).stdout

    def screenshot(self, path):
        """Save the whole screen as PNG."""
        self.run("import", "-window", "root", path)

    def _spawn(self, *command):
        with open(os.path.join(self._directory, f"{command[0]}.log"), "wb") as log:
            self._processes.append(subprocess.Popen(
                [*DIE_WITH_PARENT, *self._prefix, *command], env=self.environment, stdin=subprocess.DEVNULL, stdout=log,
                stderr=log, start_new_session=True))
