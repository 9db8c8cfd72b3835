# SPDX-License-Identifier: GPL-3.0-or-later
"""Everything around one running radio, and what is broken of it at the moment."""

import contextlib
import glob
import json
import os
import shutil
import tempfile
import time

from radio import MEDIA_PLAYER, NAME, Radio
from zofralab.bus import BusError, MockedLogind, Peer
from zofralab.control import ControlError
from zofralab.desktop import WATCHER, MediaPlayer, StatusBar, StatusItem
from zofralab.display import Display
from zofralab.household.systemlog import SystemLog
from zofralab.lab import Lab
from zofralab.session import Session
from zofralab.sound import Ears

from plan import STATIONS

OBJECT = "/be/zofra/ZofraZofra"
#: Gives one program a wall clock of its own; the monotonic one is left alone, as when an owner sets the time.
FAKETIME = next(iter(glob.glob("/usr/lib/*/faketime/libfaketimeMT.so.1") + glob.glob("/usr/lib*/faketime/libfaketimeMT.so.1")),
                "libfaketimeMT.so.1")
INTERFACE = "be.zofra.ZofraZofra1"


def wait_for(condition, seconds):
    """What a condition comes to be within that time, or its last value."""
    until = time.monotonic() + seconds
    while not (value := condition()) and time.monotonic() < until:
        time.sleep(0.05)
    return value


def _waited(pid, names):
    """Seconds in which the main thread of a process, and those of its threads with such a name, waited for a processor."""
    total = 0
    for task in glob.glob(f"/proc/{pid}/task/*"):
        try:
            with open(f"{task}/comm", encoding="utf-8", errors="replace") as file:
                name = file.read().strip()
            if os.path.basename(task) == str(pid) or name in names:
                with open(f"{task}/schedstat", encoding="ascii") as file:
                    total += int(file.read().split()[1])
        except OSError:
            pass  # it has ended meanwhile
    return total / 1e9


class Surroundings:
    """Use as a context: a lab, a session, ears, and the radio in the middle."""

    def __init__(self, binary):
        self._binary = binary
        self._open = contextlib.ExitStack()
        #: What does not work just now: name to the moment since when.
        self.broken = {}
        #: When everything has worked since.
        self.healthy_since = time.monotonic()
        self.serial = 0
        #: Per station: (serial, moment) of every song put on the air, the newest last.
        self.songs = {raw: [] for raw in STATIONS}
        self.wants_to_play = False
        self.item = None

    def __enter__(self):
        self.place = tempfile.mkdtemp(prefix="zofrachaos-", dir="/tmp")
        self._open.callback(shutil.rmtree, self.place, ignore_errors=True)
        self.lab = self._open.enter_context(Lab())
        self.session = self._open.enter_context(Session(self.lab.run_dir))
        self.display = Display().start()
        self._open.callback(self.display.stop)
        self.ears = Ears(self.session.sound).start()
        self._open.callback(lambda: self.ears.stop())
        self.logind = MockedLogind(self.session.system_bus).start()
        self._open.callback(self.logind.stop)
        self.connect()
        self._open.callback(lambda: self.peer.close())
        self._clock = os.path.join(self.place, "clock")
        os.makedirs(os.path.join(self.place, "log"))
        self.system_log = SystemLog(os.path.join(self.place, "log"))
        self._open.callback(self.system_log.close)
        self.radio = Radio(self.system_log.wrapper(self._binary), self.lab, self.session, self.session.sound, self.display,
                           os.path.join(self.place, "home"))
        self.set_clock(0)
        self.radio.environment.update(LD_PRELOAD=FAKETIME, FAKETIME_TIMESTAMP_FILE=self._clock,
                                      FAKETIME_CACHE_DURATION="1", DONT_FAKE_MONOTONIC="1")
        self._open.callback(self.radio.stop)
        self.mend()
        self.start()
        return self

    def __exit__(self, *_):
        self._open.close()

    # The radio.

    def start(self):
        """Start it; it finds its panel."""
        self.radio.lines.clear()
        self.radio.errors.clear()
        self.radio.start(headless=False, discovery=True, wait=False)
        self.find()

    def find(self, timeout=30.0):
        """Wait for it on the bus; seconds in which it got no processor do not count."""
        began, owed = time.monotonic(), self.owed()

        def there():
            return self.peer.owner(NAME) and self.answers()
        while not wait_for(there, 5):
            if self.radio.process.poll() is not None:
                raise RuntimeError(f"it has ended with {self.radio.process.returncode} before it was on the bus")
            if time.monotonic() - began - max(0.0, self.owed() - owed) > timeout:
                raise TimeoutError(f"it was not on the bus within {timeout:.0f} s")
        self.item = StatusItem(self.peer, self.peer.owner(NAME), "/StatusNotifierItem")
        with open(f"/proc/{self.radio.pid}/maps", encoding="utf-8") as file:
            if FAKETIME not in file.read():
                raise RuntimeError(f"the program has no clock of its own: {FAKETIME} was not loaded")

    def owed(self):
        """Seconds in which somebody on an answer's way was ready to run and got no processor: the radio's main thread, the
        threads that speak to the bus, there and here, and the bus itself."""
        ways = ((self.radio.pid, ("QDBusConnection",)), (self.session.session_bus.pid, ()), (os.getpid(), ("gdbus",)))
        return sum(_waited(pid, names) for pid, names in ways)

    def answers(self):
        """Whether it answers at all just now."""
        try:
            return self.status(1.0)
        except BusError:
            return None

    def status(self, timeout=20.0):
        """What `--status --json` says, over a connection that is there already."""
        return json.loads(self.peer.call(NAME, OBJECT, INTERFACE, "Status", timeout=timeout)[0])

    def run(self, **options):
        """Hand options to the running program, as a second start does."""
        from gi.repository import GLib  # pylint: disable=import-outside-toplevel
        return self.peer.call(NAME, OBJECT, INTERFACE, "Run", "(a{sv})",
                              ({key: GLib.Variant("s" if isinstance(value, str) else "b", value)
                                for key, value in options.items()},), 20)

    @property
    def media_player(self):
        """It, as media keys see it."""
        return MediaPlayer(self.peer, MEDIA_PLAYER)

    def connect(self):
        """Be on the session bus, with a panel."""
        self.peer = Peer(self.session.session_bus.address)
        self.bar = StatusBar(self.peer)
        self.bar.appear()

    # What is on the air.

    def new_song(self, raw):
        """Another song on a station, with a number of its own."""
        self.serial += 1
        self.lab.livefeed.song(station=raw, artist=f"Band {raw}", title=f"Song {self.serial}", next_title="Later")
        self.songs[raw].append((self.serial, time.monotonic()))

    def set_clock(self, offset):
        """The program's wall clock, so many seconds off."""
        with open(self._clock, "w", encoding="ascii") as file:
            file.write(f"{offset:+d}")

    # Broken and whole.

    def breaks(self, *what):
        """Remember that these do not work any more."""
        for one in what:
            self.broken.setdefault(one, time.monotonic())

    def mend(self):
        """Everything as it should be, the radio aside."""
        self.set_clock(0)
        if self.session.sound._process.poll() is not None:  # pylint: disable=protected-access
            self.restart_sound()
        path = self.radio.settings_path
        if os.path.isdir(path):
            shutil.rmtree(path)
        if self.peer.owner(WATCHER) is None:
            self.bar.appear()
        self._reset_lab()
        self.lab.household.others(mode="refused")
        for raw in STATIONS:
            self.new_song(raw)
        self.broken.clear()
        self.healthy_since = time.monotonic()

    def _reset_lab(self, attempts=3):
        """A server that was killed the moment before may not let go of its port at once; that is the lab's affair."""
        for left in reversed(range(attempts)):
            try:
                return self.lab.reset()
            except ControlError:
                if not left:
                    raise
                time.sleep(1)

    def restart_sound(self):
        """The sound server, and the ears with it, from the beginning."""
        self.ears.stop()
        self.session.sound.stop()
        self.session.sound.start()
        self.ears = Ears(self.session.sound).start()
