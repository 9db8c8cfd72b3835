# SPDX-License-Identifier: GPL-3.0-or-later
"""A Wayland desktop without a screen: sway, and a mouse that is spoken to its compositor byte by byte."""

import glob
import json
import os
import shutil
import socket
import struct
import subprocess
import time

from .panels import HEIGHT, WIDTH, Waybar
from .picture import Box, Picture
from .process import wait_until
from .screen import Screen

SCREEN_HEIGHT = 800
CONFIG = f"""xwayland disable
output HEADLESS-1 resolution {WIDTH}x{SCREEN_HEIGHT} position 0 0
output HEADLESS-1 bg #204060 solid_color
default_border none
"""
_POINTER_MANAGER = "zwlr_virtual_pointer_manager_v1"
_BUTTONS = {1: 0x110, 2: 0x112, 3: 0x111}


class Mouse:
    """A pointer that the compositor takes for a real one (the protocol wlr-virtual-pointer-unstable-v1)."""

    _DISPLAY, _REGISTRY, _SYNC, _MANAGER, _POINTER = 1, 2, 3, 4, 5

    def __init__(self, path):
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self._socket.settimeout(30)
        self._socket.connect(path)
        self._last_sync = self._POINTER
        self._send(self._DISPLAY, 1, struct.pack("=I", self._REGISTRY))
        self._send(self._DISPLAY, 0, struct.pack("=I", self._SYNC))
        number = self._number_of_manager()
        name = _POINTER_MANAGER.encode() + b"\0"
        self._send(self._REGISTRY, 0, struct.pack("=II", number, len(name)) + name + b"\0" * (-len(name) % 4)
                   + struct.pack("=II", 1, self._MANAGER))
        self._send(self._MANAGER, 0, struct.pack("=II", 0, self._POINTER))
        self._settle()

    def close(self):
        """Unplug it."""
        self._socket.close()

    def move(self, x, y):
        """Move, in two steps so that every program notices."""
        for left in (x - 1, x):
            self._send(self._POINTER, 1, struct.pack("=IIIII", self._now(), left, y, WIDTH, SCREEN_HEIGHT))
            self._frame()

    def press(self, button):
        """Press and release a button: left 1, middle 2, right 3; or turn the wheel: up 4, down 5."""
        if button in (4, 5):
            notch = 1 if button == 5 else -1
            self._send(self._POINTER, 5, struct.pack("=I", 0))
            self._send(self._POINTER, 7, struct.pack("=IIii", self._now(), 0, notch * 15 * 256, notch))
            self._frame()
            return
        for down in (1, 0):
            self._send(self._POINTER, 2, struct.pack("=III", self._now(), _BUTTONS[button], down))
            self._frame()

    def _frame(self):
        self._send(self._POINTER, 4, b"")
        self._settle()

    def _settle(self):
        """Until the compositor has done what it was told."""
        self._last_sync += 1
        self._send(self._DISPLAY, 0, struct.pack("=I", self._last_sync))
        while self._event()[0] != self._last_sync:
            pass

    def _number_of_manager(self):
        found = None
        while True:
            sender, code, body = self._event()
            if sender == self._SYNC:
                break
            if sender == self._REGISTRY and code == 0:
                number, length = struct.unpack_from("=II", body)
                if body[8:8 + length - 1] == _POINTER_MANAGER.encode():
                    found = number
        if found is None:
            raise RuntimeError("the compositor has no virtual pointers")
        return found

    def _send(self, receiver, code, body):
        self._socket.sendall(struct.pack("=IHH", receiver, code, 8 + len(body)) + body)

    def _event(self):
        sender, code, size = struct.unpack("=IHH", self._receive(8))
        body = self._receive(size - 8)
        if sender == self._DISPLAY and code == 0:
            raise RuntimeError(f"the compositor refused: {body!r}")
        return sender, code, body

    def _receive(self, size):
        data = b""
        while len(data) < size:
            more = self._socket.recv(size - len(data))
            if not more:
                raise RuntimeError("the compositor has gone")
            data += more
        return data

    @staticmethod
    def _now():
        return int(time.monotonic() * 1000) & 0xFFFFFFFF


def _other_user():
    """sway refuses to run as root: there it is given another number for itself."""
    return ["unshare", "--user", "--map-user=1000", "--map-group=1000", "--"] if os.geteuid() == 0 else []


class SwayScreen(Screen):
    """sway on an output that nobody sees, with waybar. Start it from the main thread."""

    def __init__(self, directory, environment, prefix=(), panel=True):
        super().__init__(directory, environment, prefix, Waybar() if panel is True else panel, "wayland")
        self.environment.update(WLR_BACKENDS="headless", WLR_LIBINPUT_NO_DEVICES="1", WLR_RENDERER="pixman",
                                XDG_CURRENT_DESKTOP="sway", GDK_BACKEND="wayland")
        self._mouse = None

    @staticmethod
    def missing():
        """What this machine lacks for it."""
        absent = [program for program in ("sway", "swaymsg", "grim") if not shutil.which(program)]
        if not glob.glob("/usr/lib/*/qt6/plugins/platforms/libqwayland*.so"):
            absent.append("part of the toolkit for Wayland")
        if not absent and subprocess.run([*_other_user(), "true"], capture_output=True, check=False).returncode != 0:
            absent.append("user namespaces, which sway needs to run as root")
        return absent

    def start(self):
        """Compositor, panel; returns when the panel is there."""
        os.makedirs(self.home, exist_ok=True)
        config = os.path.join(self.home, "sway.conf")
        with open(config, "w", encoding="ascii") as file:
            file.write(CONFIG)
        run_dir = self.environment["XDG_RUNTIME_DIR"]
        process = self.spawn("sway", "-c", config, prefix=_other_user())

        def sockets():
            names = os.listdir(run_dir)
            display = [n for n in names if n.startswith("wayland-") and not n.endswith(".lock")]
            control = [n for n in names if n.startswith("sway-ipc.")]
            return process.poll() is not None or display and control and (display[0], control[0])
        display, control = wait_until(sockets, 30, "sway", 0.05)
        self.environment["WAYLAND_DISPLAY"] = display
        self.environment["SWAYSOCK"] = os.path.join(run_dir, control)
        wait_until(lambda: self.run("swaymsg", "-t", "get_outputs", check=False).count("HEADLESS-1"), 30, "the output",
                   0.1)
        self._mouse = Mouse(os.path.join(run_dir, display))
        self.move(640, 600)
        self.still_picture()
        if self.panel:
            self.panel.start(self)
        return self

    def stop(self):
        """End all of it."""
        if self._mouse:
            self._mouse.close()
        super().stop()

    @property
    def variables(self):
        """What a program needs to be shown on it."""
        return {name: self.environment[name]
                for name in ("WAYLAND_DISPLAY", "SWAYSOCK", "XDG_SESSION_TYPE", "XDG_CURRENT_DESKTOP")}

    def screenshot(self, path):
        """Save the whole screen as PNG."""
        self.run("grim", path)

    def picture(self, box=None):
        """A part of the screen, or all of it."""
        box = box or Box(0, 0, WIDTH, SCREEN_HEIGHT)
        return Picture.from_ppm(self.run_raw("grim", "-t", "ppm", "-g", f"{box.x},{box.y} {box.width}x{box.height}",
                                             "-"))

    @property
    def below_panel(self):
        """Everything but the panel."""
        return Box(0, HEIGHT, WIDTH, SCREEN_HEIGHT - HEIGHT)

    def windows(self, floating=None):
        """The windows that sway manages, as it describes them; only those that float, or that do not, if asked."""
        found = []

        def collect(node, floats):
            if node.get("app_id"):
                found.append({**node, "floats": floats})
            for child in node["nodes"]:
                collect(child, floats)
            for child in node["floating_nodes"]:
                collect(child, True)
        collect(json.loads(self.run("swaymsg", "-t", "get_tree", "-r")), False)
        return [w for w in found if floating is None or w["floats"] == floating]

    def move(self, x, y):
        """Move the pointer."""
        self._mouse.move(x, y)

    def click(self, point, button=1):
        """Move there and click."""
        self._mouse.move(*point)
        self._mouse.press(button)
