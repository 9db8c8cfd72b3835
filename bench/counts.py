# SPDX-License-Identifier: GPL-3.0-or-later
"""Work that can be counted: instructions and allocations of a start, a song, a menu, our own menu and a search, and wake-ups.

Counted by callgrind in the program as it is, between two moments, so that the figures hardly move with the load of the machine.
"""

import glob
import os
import re
import stat
import subprocess
import time

from measure import cpu_seconds, wake_ups
from radio import NAME
from stage import BINARY
from windows import WindowWatch
from zofralab.desktop import ITEM, Menu
from zofralab.process import wait_until

SONGS = MENUS = 20
OWN_MENUS = 10
#: Seconds for anything: the program runs fifty times slower than ever, perhaps on a crowded machine. No figure depends on it.
PATIENCE = 600
PLAYERS = 8
OBJECT, INTERFACE = "/be/zofra/ZofraZofra", "be.zofra.ZofraZofra1"
ALLOCATORS = ("malloc", "calloc", "realloc", "posix_memalign", "aligned_alloc")
NAMED = re.compile(r"\((\d+)\)(?: (.*))?")


class PatientMenu(Menu):
    """A menu of a program that runs fifty times slower than ever."""

    def call(self, method, signature, arguments, timeout=PATIENCE):
        """One call, with time."""
        return super().call(method, signature, arguments, timeout)


class Counted:
    """The radio under callgrind, on a stage. Use as a context."""

    def __init__(self, stage, *options, tray="", **how):
        self._stage, self._tray = stage, tray
        self._options, self._how = options, how

    def __enter__(self):
        self._context = self._stage.radio()
        self.radio = self._context.__enter__()
        self._out = os.path.join(self.radio.home, "callgrind")
        wrapper = os.path.join(self.radio.home, "counted")
        with open(wrapper, "w", encoding="ascii") as file:
            file.write(f'#!/bin/sh\nexec valgrind -q --tool=callgrind --callgrind-out-file={self._out} {BINARY} "$@"\n')
        os.chmod(wrapper, os.stat(wrapper).st_mode | stat.S_IXUSR)
        self.radio.binary = wrapper
        if self._tray:
            self.radio.write_section("tray", mode=self._tray)
        self.radio.start(*self._options, headless=False, wait=False, **self._how)
        self._stage.peer.wait_for_name(NAME, PATIENCE)
        return self

    def __exit__(self, *error):
        return self._context.__exit__(*error)

    def status(self):
        """What it says, asked by this process, for every second start would be counted as well."""
        import json  # pylint: disable=import-outside-toplevel
        return json.loads(self._stage.peer.call(NAME, OBJECT, INTERFACE, "Status", timeout=PATIENCE)[0])

    def title(self):
        """What the item shows."""
        owner = self._stage.peer.owner(NAME)
        return self._stage.peer.call(owner, "/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get", "(ss)",
                                     (ITEM, "Title"), PATIENCE)[0]

    def menu(self):
        """Its menu, as a panel that draws it sees it."""
        return PatientMenu(self._stage.peer, self._stage.peer.owner(NAME), "/MenuBar")

    def settle(self, most=0.1):
        """What a start leaves for idle moments is done: a stretch of two seconds has cost next to nothing."""
        before = [cpu_seconds(self.radio.pid)]

        def rests():
            before.append(cpu_seconds(self.radio.pid))
            return before[-1] - before[-2] < most
        time.sleep(2)
        wait_until(rests, PATIENCE, "rest", 2)

    def zero(self):
        """From now on."""
        self._control("-z")

    def taken(self):
        """{instructions, allocations} since the last zero or the start."""
        for old in glob.glob(self._out + "*"):
            os.unlink(old)
        self._control("-d")
        files = wait_until(lambda: glob.glob(self._out + ".*"), PATIENCE, "callgrind's figures", 0.1)
        wait_until(lambda: "totals:" in _tail(files[0]), PATIENCE, "the end of callgrind's figures", 0.1)
        return read(files[0])

    def _control(self, what):
        done = subprocess.run(["callgrind_control", what, str(self.radio.pid)], capture_output=True, text=True, check=False,
                              timeout=PATIENCE)
        if done.returncode or "Error" in done.stdout + done.stderr:
            raise RuntimeError(f"callgrind_control: {done.stdout}{done.stderr}")


def _tail(path):
    with open(path, "rb") as file:
        file.seek(max(0, os.path.getsize(path) - 200))
        return file.read().decode("ascii", "replace")


def read(path):
    """Instructions and allocations of one of callgrind's files."""
    names, callee, allocations, instructions = {}, "", 0, 0
    with open(path, encoding="utf-8", errors="replace") as file:
        for line in file:
            if line.startswith(("cfn=", "fn=")):
                number, name = NAMED.match(line.partition("=")[2].rstrip("\n")).groups()
                if name:
                    names[number] = name
                callee = names[number] if line.startswith("cfn=") else callee
            elif line.startswith("calls=") and callee.partition("'")[0].partition("@")[0] in ALLOCATORS:
                allocations += int(line[6:].split()[0])
            elif line.startswith("totals:"):
                instructions = int(line.split()[1])
    return {"instructions": instructions, "allocations": allocations}


def _each(taken, count):
    return {what: value / count for what, value in taken.items()}


def shell(stage):
    """{what: figures} of a start, a song and a menu."""
    found = {}
    with stage.status_bar() as bar, Counted(stage) as radio:
        item = bar.wait_for_item(PATIENCE)
        wait_until(lambda: "–" in radio.title(), PATIENCE, "the first song", 0.2)
        radio.settle()
        found["start"] = radio.taken()
        # What the item tells is waited for: questions would be counted with it, and never the same number of them.
        stage.peer.record_signals(sender=item.name)
        radio.zero()
        for index in range(SONGS):
            before = len(stage.peer.signals)
            stage.lab.livefeed.song(station="zofra", artist="Artist", title=f"Title {index:02}", next_title="Later")
            wait_until(lambda before=before: any(one.name == "NewTitle" for one in stage.peer.signals[before:]), PATIENCE,
                       "the song", 0.02)
        found["one song"] = _each(radio.taken(), SONGS)
        menu = radio.menu()
        menu.look()
        radio.zero()
        for _ in range(MENUS):
            menu.look()
        found["one menu"] = _each(radio.taken(), MENUS)
    return found


def own_menu(stage):
    """{what: figures} of the menu that we draw ourselves, opened and closed."""
    with stage.status_bar() as bar, Counted(stage, tray="direct") as radio, WindowWatch(stage, PATIENCE) as windows:
        item = bar.wait_for_item(PATIENCE)
        for index in range(OWN_MENUS + 1):
            if index == 1:  # the first makes what the others find
                radio.settle()
                radio.zero()
            windows.open(stage, item, "Activate")
            time.sleep(1)  # what is drawn of it
            windows.close()
        radio.settle()
        return {"one own menu": _each(radio.taken(), OWN_MENUS)}


def songs_at_once(stage, numbers):
    """[(number, figures)] of that many songs that come at once."""
    found = []
    with stage.status_bar() as bar, Counted(stage) as radio:
        bar.wait_for_item(PATIENCE)
        wait_until(lambda: "–" in radio.title(), PATIENCE, "the first song", 0.2)
        for number in numbers:
            radio.settle()
            radio.zero()
            for index in range(1, number + 1):
                stage.lab.livefeed.song(station="zofra", artist=f"{number} at once", title=f"Title {index}", next_title="Later")
            radio.settle()
            found.append((number, radio.taken()))
            if f"Title {number}" not in radio.title() or f"{number} at once" not in radio.title():
                raise RuntimeError(f"after {number} songs it shows {radio.title()}")
    return found


def search(stage, players=PLAYERS):
    """{what: figures} of one search that finds players."""
    with stage.status_bar() as bar, Counted(stage, discovery=True) as radio:
        stage.lab.household.others(mode="refused")
        stage.lab.household.scene(scene="many", count=players)
        bar.wait_for_item(PATIENCE)
        wait_until(lambda: not radio.status()["scanning"], PATIENCE, "the first run", 0.5)
        menu = radio.menu()
        radio.settle()
        radio.zero()
        menu.choose("Audio Output (…", "🔄 Search for Sonos and Zofra devices")
        wait_until(lambda: radio.status()["scanning"], PATIENCE, "a run", 0.01)
        wait_until(lambda: not radio.status()["scanning"], PATIENCE, "its end", 0.5)
        radio.settle()
        taken = radio.taken()
        found = [room["title"] for room in radio.status()["rooms"]]
        if len(found) != players:
            raise RuntimeError(f"a search of {players} players showed {found}")
        return {f"a search of {players} players": taken}


def menu_with(stage, rooms):
    """Figures of one menu in which that many rooms are shown."""
    with stage.status_bar() as bar, Counted(stage, discovery=True) as radio:
        stage.lab.household.others(mode="refused")
        stage.lab.household.scene(scene="many" if rooms else "empty", count=rooms)
        bar.wait_for_item(PATIENCE)
        wait_until(lambda: not radio.status()["scanning"], PATIENCE, "the first run", 0.5)
        if len(radio.status()["rooms"]) != rooms:
            raise RuntimeError(f"a search of {rooms} players showed {len(radio.status()['rooms'])}")
        menu = radio.menu()
        menu.look()
        radio.settle()
        radio.zero()
        for _ in range(MENUS):
            menu.look()
        return _each(radio.taken(), MENUS)


def wakes(stage, seconds=20.0):
    """{what: wake-ups a second}, idle and playing."""
    found = {}
    for what, options in (("idle", ()), ("playing", ("--play", "qmusic"))):
        with stage.status_bar() as bar, stage.radio() as radio:
            radio.start(*options, headless=False)
            bar.wait_for_item(20)
            if options:
                stage.ears.wait_for(("qmusic", "aac"), 20)
            with stage.deaf():
                time.sleep(8)
                before, began = wake_ups(radio.pid), time.monotonic()
                time.sleep(seconds)
                found[what] = {"wake_ups": (wake_ups(radio.pid) - before) / (time.monotonic() - began)}
    return found


def all_of(stage):
    """Every count."""
    return {**shell(stage), **own_menu(stage), **search(stage), **wakes(stage)}
