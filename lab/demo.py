#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The radio in its simulated world, for somebody who wants to see it: `./dev run`.

On a desktop the radio shows up in its status bar; without one it runs on a virtual display, and pictures of it are saved.
Either way each change is printed. Everything ends with Ctrl-C or after --seconds, and nothing is left behind outside
build/run.
"""

import argparse
import os
import signal
import subprocess
import sys
import time

# Nothing but build/run is written to.
sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from zofralab.bus import BusError, Peer  # noqa: E402
from zofralab.lab import Lab, LabError, program_environment  # noqa: E402
from zofralab.process import terminate  # noqa: E402
from zofralab.screen import VirtualScreen  # noqa: E402
from zofralab.session import Session  # noqa: E402
from zofralab.sound import Ears  # noqa: E402
from zofralab.stations import BY_RAW  # noqa: E402
from zofralab.watch import Watch  # noqa: E402

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
RUN_DIRECTORY = os.path.join(ROOT, "build", "run")
WORDS = """
This is a simulation: nine stations that play tones, live song texts, and a house full of networked speakers, all on this
computer. Nothing leaves it. `./dev run --live` plays the real stations on your own speakers.
"""


def say(text):
    """One line, at once."""
    print(text, flush=True)


def has_desktop():
    """Whether this is somebody's desktop: a display that answers, and a message bus."""
    if not os.environ.get("DBUS_SESSION_BUS_ADDRESS"):
        return False
    runtime, wayland = os.environ.get("XDG_RUNTIME_DIR", ""), os.environ.get("WAYLAND_DISPLAY", "")
    if wayland and os.path.exists(os.path.join(runtime, wayland)):
        return True
    # One of another computer could not be reached from where the radio will run.
    return os.environ.get("DISPLAY", "").startswith((":", "unix:")) and subprocess.run(
        ["xwininfo", "-root"], capture_output=True, check=False).returncode == 0


class Demo:
    """Lab, session, screen and radio, in this order; ended in the other."""

    def __init__(self, options):
        self._options = options
        self._desktop = has_desktop()
        self._radio = self._screen = self._ears = None
        self._deadline = time.monotonic() + options.seconds if options.seconds else None

    def run(self):
        """Until the radio ends, somebody presses Ctrl-C, or the time is over. Returns the exit status."""
        os.makedirs(RUN_DIRECTORY, exist_ok=True)
        say(WORDS)
        with Lab() as lab, Session(lab.run_dir, with_sound=not self._desktop, with_bus=not self._desktop) as session:
            try:
                self._start(lab, session)
                return self._follow(session)
            finally:
                if self._radio:
                    terminate(self._radio)
                if self._ears:
                    self._ears.stop()
                if self._screen:
                    self._screen.stop()

    def _start(self, lab, session):
        environment = {**program_environment(lab), **session.environment(),
                       "XDG_CONFIG_HOME": os.path.join(RUN_DIRECTORY, "config")}
        if self._desktop:
            say("The radio is in your status bar: left click for the menu, right or middle click for the panel.")
        else:
            self._screen = VirtualScreen(RUN_DIRECTORY, environment, lab.enter()).start()
            environment = {**self._screen.environment, "XDG_CONFIG_HOME": environment["XDG_CONFIG_HOME"]}
            self._ears = Ears(session.sound).start()
            say("There is no display here, so the radio runs on a virtual one.")
        self._environment, self._prefix = environment, lab.enter()
        # The clock of --seconds runs from here: what comes before is the simulation's own start.
        if self._options.seconds:
            self._deadline = time.monotonic() + self._options.seconds
        command = [self._options.binary, "--endpoints", lab.endpoints, "--play", "zofra", *self._options.program]
        self._radio = subprocess.Popen([*self._prefix, *command], env=environment, stdin=subprocess.DEVNULL)

    def _follow(self, session):
        address = session.environment().get("DBUS_SESSION_BUS_ADDRESS") or os.environ["DBUS_SESSION_BUS_ADDRESS"]
        peer = Peer(address)
        watch = Watch(peer, say)
        heard, started, pictures = None, time.monotonic(), self._screen is not None
        try:
            while self._radio.poll() is None:
                watch.look()
                if self._ears:
                    now = self._ears.now()
                    if now not in (heard, "noise"):
                        heard = now
                        say("heard: " + (f"{BY_RAW[now[0]].title}, {now[1].upper()}" if now else "silence"))
                if pictures and time.monotonic() - started > 6:
                    pictures = False
                    self._take_pictures()
                if self._deadline and time.monotonic() > self._deadline:
                    say("time is over")
                    return 0
                time.sleep(0.2)
            return self._radio.returncode
        finally:
            peer.close()

    def _take_pictures(self):
        """The panel as it opens for a second start, and the menu under the button."""
        picture = os.path.join(RUN_DIRECTORY, "screenshot.png")
        try:
            self._screen.run_inside(self._options.binary)
            time.sleep(1.0)
            self._screen.screenshot(picture)
            say(f"screenshot: {picture}")
        except (subprocess.SubprocessError, BusError) as error:
            say(f"no screenshot: {error}")


def main():
    """Entry point."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--binary", required=True)
    parser.add_argument("--seconds", type=int)
    parser.add_argument("program", nargs="*", help="options for the radio, behind --")
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    try:
        return Demo(parser.parse_args()).run()
    except KeyboardInterrupt:
        return 0
    except (LabError, OSError, TimeoutError, RuntimeError) as error:
        say(f"dev run: {error}")
        return 1


if __name__ == "__main__":
    sys.exit(main())
