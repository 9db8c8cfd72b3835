#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Measures the budgets in the lab, side by side with other players, in one run: `./dev bench`.

Nothing here passes or fails; the last column says what the target is. Memory is PSS; CPU is percent of one core; wake-ups
are voluntary context switches of all threads per second.
"""

import argparse
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path[:0] = [os.path.join(ROOT, "lab"), os.path.join(ROOT, "bench")]

from measure import cost, tree  # noqa: E402
from zofralab.bus import BusError, Peer  # noqa: E402
from zofralab.desktop import StatusBar  # noqa: E402
from zofralab.lab import Lab, program_environment  # noqa: E402
from zofralab.process import terminate, wait_until  # noqa: E402
from zofralab.screen import VirtualScreen  # noqa: E402
from zofralab.session import Session  # noqa: E402
from zofralab.sound import Ears  # noqa: E402

BINARY = os.path.join(ROOT, "build", "release", "bin", "zofrazofra")
MEDIA_PLAYER = "org.mpris.MediaPlayer2.zofrazofra"


class Bench:
    """The lab, a session with a status bar that is only a list, and rows of results."""

    def __init__(self, lab, session, screen, seconds):
        self._lab = lab
        self._session = session
        self._seconds = seconds
        self._screen = screen
        self.rows = []

    def row(self, what, value, target):
        """Show one result at once."""
        self.rows.append((what, value, target))
        print(f"{what:<46} {value:<34} {target}", flush=True)

    def start(self, command, home):
        """Start a program where the radio runs."""
        environment = {**self._screen.environment, "XDG_CONFIG_HOME": home, "XDG_CACHE_HOME": home, "HOME": home,
                       "XDG_DATA_HOME": home}
        return subprocess.Popen([*self._lab.enter(), *command], env=environment, stdin=subprocess.DEVNULL,
                                stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def radio(self, home, *options):
        """Start the radio."""
        return self.start([BINARY, "--endpoints", self._lab.endpoints, "--no-discovery", *options], home)

    def starts(self, runs=10):
        """From the start of the process to its name on the bus and its item in the status bar."""
        peer = Peer(self._session.session_bus.address)
        bar = StatusBar(peer)
        bar.appear()
        times = []
        for _ in range(runs):
            with tempfile.TemporaryDirectory() as home:
                bar.registered.clear()
                began = time.monotonic()
                process = self.radio(home)
                item = bar.wait_for_item(10)
                wait_until(lambda: MEDIA_PLAYER in peer.names(), 10, "the media player's name", 0.002)
                times.append(max(item.registered_at, time.monotonic()) - began)
                terminate(process)
        bar.disappear()
        peer.close()
        self.row("start to name and item", f"median {statistics.median(times):.3f} s, worst {max(times):.3f} s",
                 "<= 0.15 s")

    def costs(self, name, command, target, settle=8.0):
        """PSS, CPU and wake-ups of one program."""
        if shutil.which(command[0]) is None:
            self.row(name, "not installed here", target)
            return
        with tempfile.TemporaryDirectory() as home:
            process = self.start(command, home)
            time.sleep(settle)
            if process.poll() is not None:
                self.row(name, f"ended by itself ({process.returncode})", target)
                return
            memory, cpu, woken = cost(process.pid, self._seconds)
            self.row(name, f"{memory:.1f} MB, {cpu:.2f} %, {woken:.1f}/s", target)
            for pid in reversed(tree(process.pid)[1:]):
                try:
                    os.kill(pid, 15)
                except ProcessLookupError:
                    pass
            terminate(process)

    def to_sound(self, name, command, ears, press=None, runs=5):
        """From asking for sound to hearing it."""
        times = []
        for _ in range(runs):
            with tempfile.TemporaryDirectory() as home:
                process = None if press else self.start(command, home)
                began = time.monotonic()
                if press:
                    process = self.start(command, home)
                    began = press()
                times.append(ears.wait_for(("qmusic", "aac"), 15, since=began, seconds=0.15) - began)
                terminate(process)
                ears.wait_for(None, 5, seconds=0.3)
        self.row(name, f"median {statistics.median(times):.2f} s, worst {max(times):.2f} s", "<= mpv's median")

    def press_play(self):
        """Wait for the radio, then press play as a media key does; returns when that was."""
        peer = Peer(self._session.session_bus.address)
        wait_until(lambda: MEDIA_PLAYER in peer.names(), 10, "the radio", 0.01)
        time.sleep(1.0)
        began = time.monotonic()
        try:
            peer.call(MEDIA_PLAYER, "/org/mpris/MediaPlayer2", "org.mpris.MediaPlayer2.Player", "Play")
        except BusError as error:
            raise RuntimeError(f"the radio refuses to play: {error}") from None
        peer.close()
        return began


def main():
    """Entry point."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--seconds", type=float, default=20.0, help="how long each cost is measured")
    options = parser.parse_args()
    with Lab() as lab, Session(lab.run_dir) as session, tempfile.TemporaryDirectory() as place:
        environment = {**program_environment(lab), **session.environment()}
        screen = VirtualScreen(place, environment, lab.enter(), panel=False).start()
        ears = Ears(session.sound).start()
        bench = Bench(lab, session, screen, options.seconds)
        url = "https://qmusic-aac.streams.zofra.test/qmusic.aac"
        # The others trust only the system's authorities, so they get the same mount without TLS where they must.
        mpv = ["mpv", "--no-config", "--no-video", "--really-quiet", f"--tls-ca-file={lab.authority}", "--tls-verify",
               url]
        try:
            bench.starts()
            radio = [BINARY, "--endpoints", lab.endpoints, "--no-discovery"]
            bench.costs("idle: zofrazofra", radio, "<= 25 MB, 0.0 %, <= 1/s")
            bench.costs("idle: goodvibes", ["goodvibes"], "")
            bench.costs("idle: strawberry", ["strawberry"], "")
            bench.costs("playing: zofrazofra", [*radio, "--play", "qmusic"], "<= 60 MB, <= 1.0 %, <= 85/s")
            bench.costs("playing: mpv", mpv, "")
            plain = url.replace("https:", "http:")
            bench.costs("playing: goodvibes", ["goodvibes", plain], "")
            bench.costs("playing: strawberry", ["strawberry", plain], "")
            seed = ["sh", "-c", 'mkdir -p "$XDG_CONFIG_HOME/zofrazofra" && printf "[General]\\nzofra_selected_station='
                    'qmusic\\n" > "$XDG_CONFIG_HOME/zofrazofra/zofrazofra.ini" && exec "$@"', "radio", *radio]
            bench.to_sound("play to sound: zofrazofra", seed, ears, bench.press_play)
            bench.to_sound("start to sound: zofrazofra --play", [*radio, "--play", "qmusic"], ears)
            bench.to_sound("start to sound: mpv", mpv, ears)
        finally:
            ears.stop()
            screen.stop()
    return 0


if __name__ == "__main__":
    sys.exit(main())
