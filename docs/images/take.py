#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Take the documentation's pictures anew, from the program as it runs in the lab:

    docs/images/take.py [--binary PROGRAM] [NAME…]

Without names all pictures are taken. The program runs on a screen that nobody sees, at twice the size, in the font
Inter, and the tool tells it, as a desktop would, whether the desktop is light or dark. That takes what `./dev run` needs,
and Debian's fonts-inter and fonts-noto-color-emoji. Look at what came out before keeping it.
"""

import argparse
import contextlib
import os
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(ROOT, "lab"))

from zofralab.bus import Peer  # noqa: E402
from zofralab.desktop import StatusBar  # noqa: E402
from zofralab.display import Display  # noqa: E402
from zofralab.lab import Lab, program_environment  # noqa: E402
from zofralab.portal import Portal  # noqa: E402
from zofralab.process import terminate, wait_until  # noqa: E402
from zofralab.session import Session  # noqa: E402

from gi.repository import GLib  # noqa: E402

FONTS = """<?xml version="1.0"?><!DOCTYPE fontconfig SYSTEM "urn:fontconfig:fonts.dtd">
<fontconfig><match><edit name="family" mode="prepend" binding="strong"><string>Inter</string></edit></match></fontconfig>
"""
GROUND = "#c9ccd6"


class Studio:
    """The program, on a screen with a window manager and a status bar that is only a list."""

    def __init__(self, binary):
        self._binary = binary
        self._open = contextlib.ExitStack()

    def __enter__(self):
        lab = self._open.enter_context(Lab())
        session = self._open.enter_context(Session(lab.run_dir))
        home = self._open.enter_context(tempfile.TemporaryDirectory(prefix="zofrapictures-"))
        display = Display("2400x1800x24").start()
        self._open.callback(display.stop)
        self._peer = Peer(session.session_bus.address)
        self._open.callback(self._peer.close)
        self.portal = Portal(self._peer).appear()
        bar = StatusBar(self._peer)
        bar.appear()
        self._environment = {**program_environment(lab), **session.environment(), "DISPLAY": display.name,
                             "HOME": home, "XDG_CONFIG_HOME": home, "XDG_CACHE_HOME": home, "XDG_DATA_HOME": home,
                             "XDG_CURRENT_DESKTOP": "LXQt", "XDG_SESSION_TYPE": "x11", "LANG": "C.UTF-8",
                             "QT_SCALE_FACTOR": "2"}
        os.makedirs(os.path.join(home, "fontconfig"))
        with open(os.path.join(home, "fontconfig", "fonts.conf"), "w", encoding="ascii") as file:
            file.write(FONTS)
        os.makedirs(os.path.join(home, "zofrazofra"))
        with open(os.path.join(home, "zofrazofra", "zofrazofra.ini"), "w", encoding="ascii") as file:
            file.write("[General]\n[tray]\nmode=direct\n")
        self._start("openbox", "--sm-disable")
        self._start(*lab.enter("/"), self._binary, "--endpoints", lab.endpoints, "--play", "qmusic")
        item = bar.wait_for_item(30)
        self._item = item
        wait_until(lambda: "–" in item.title, 30, "a song", 0.1)
        wait_until(lambda: len(self._status(lab)["rooms"]) > 3, 60, "the rooms", 0.5)
        return self

    def __exit__(self, *_):
        self._open.close()

    def _start(self, *command):
        process = subprocess.Popen(command, env=self._environment, stdin=subprocess.DEVNULL)
        self._open.callback(terminate, process)

    def _status(self, lab):
        import json  # pylint: disable=import-outside-toplevel
        return json.loads(subprocess.run([*lab.enter("/"), self._binary, "--status", "--json"], check=True,
                                         env=self._environment, capture_output=True).stdout)

    def _run(self, *command):
        return subprocess.run(command, env=self._environment, check=False, capture_output=True, text=True,
                              timeout=60).stdout

    def click(self, method):
        """A click on the button in the status bar, where the pointer is."""
        self._run("xdotool", "mousemove", "500", "40")
        self._peer.connection.call(self._item.name, self._item.path, "org.kde.StatusNotifierItem", method,
                                   GLib.Variant("(ii)", (500, 40)), None, 0, 5000, None, None)

    def windows(self):
        """What the program shows: window numbers, in the order in which they were made."""
        return sorted(map(int, self._run("xdotool", "search", "--onlyvisible", "--class", "zofrazofra").split()))

    def wait_windows(self, count):
        """Until so many are shown, and painted."""
        wait_until(lambda: len(self.windows()) == count, 30, f"{count} windows", 0.1)
        time.sleep(1.0)  # nobody tells when the last pixel is in its place
        return self.windows()

    def keys(self, *names):
        """Press them one after the other."""
        for name in names:
            self._run("xdotool", "key", name)
            time.sleep(0.3)

    def picture(self, window, path):
        """One window, without its frame."""
        self._run("import", "-window", str(window), "-strip", path)

    def scene(self, windows, path, margin=32):
        """Several windows where they are, on a plain ground."""
        places = []
        for window in windows:
            lines = self._run("xwininfo", "-id", str(window)).splitlines()
            value = {line.split(":")[0].strip(): line.split(":")[1].strip() for line in lines if ":" in line}
            places.append(tuple(int(value[key]) for key in
                                ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height")))
        left, top = min(p[0] for p in places) - margin, min(p[1] for p in places) - margin
        right, bottom = max(p[0] + p[2] for p in places) + margin, max(p[1] + p[3] for p in places) + margin
        command = ["convert", "-size", f"{right - left}x{bottom - top}", f"xc:{GROUND}"]
        with tempfile.TemporaryDirectory() as directory:
            for number, (window, place) in enumerate(zip(windows, places)):
                part = os.path.join(directory, f"{number}.png")
                self.picture(window, part)
                command += [part, "-geometry", f"+{place[0] - left}+{place[1] - top}", "-composite"]
            self._run(*command, "-strip", path)


def panel_light(studio, path):
    """The panel."""
    studio.click("ContextMenu")
    studio.picture(studio.wait_windows(1)[0], path)


def panel_dark(studio, path):
    """The panel on a dark desktop, which changes while the panel is open."""
    studio.click("ContextMenu")
    studio.wait_windows(1)
    studio.portal.become("dark")
    studio.picture(studio.wait_windows(1)[0], path)


def panel_languages(studio, path):
    """The panel in the three other languages, chosen with the keyboard."""
    studio.click("ContextMenu")
    window = studio.wait_windows(1)[0]
    with tempfile.TemporaryDirectory() as directory:
        parts = []
        studio.keys("Tab")
        for number in range(3):
            studio.keys("Right")
            time.sleep(0.5)
            parts.append(os.path.join(directory, f"{number}.png"))
            studio.picture(window, parts[-1])
        subprocess.run(["convert", *parts, "+append", "-strip", path], check=True)
    studio.keys("Left", "Left", "Left")


def panel_output_menu(studio, path):
    """The panel with its output menu open."""
    studio.click("ContextMenu")
    studio.wait_windows(1)
    studio.keys(*["Tab"] * 3, "space")
    studio.scene(studio.wait_windows(2), path)


def menu(studio, path):
    """The menu of the button, its output submenu open."""
    studio.click("Activate")
    studio.wait_windows(1)
    studio.keys("Down", "Down", "Down", "Right")
    studio.scene(studio.wait_windows(2), path)


PICTURES = {"panel-light": panel_light, "panel-dark": panel_dark, "panel-languages": panel_languages,
            "panel-output-menu": panel_output_menu, "menu": menu}


def main():
    """Entry point."""
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--binary", default=os.path.join(ROOT, "build", "release", "bin", "zofrazofra"))
    parser.add_argument("--into", default=HERE, help="the folder they are written to")
    parser.add_argument("names", nargs="*", metavar="NAME", help=", ".join(PICTURES))
    options = parser.parse_args()
    unknown = set(options.names) - set(PICTURES)
    if unknown:
        parser.error(f"there is no picture named {', '.join(sorted(unknown))}")
    with Studio(os.path.abspath(options.binary)) as studio:
        for name in options.names or PICTURES:
            path = os.path.join(options.into, f"{name}.png")
            PICTURES[name](studio, path)
            print(path, flush=True)
            for _ in range(3):
                if studio.windows():
                    studio.keys("Escape")
            studio.wait_windows(0)
            studio.portal.become("light")


if __name__ == "__main__":
    main()
