# SPDX-License-Identifier: GPL-3.0-or-later
"""Much of the same, and what is left behind by it: shared by the tests, which do a little, and `./dev bench endurance`."""

import subprocess
import time

from radio import NAME
from zofralab.process import wait_until

OBJECT, INTERFACE = "/be/zofra/ZofraZofra", "be.zofra.ZofraZofra1"
STATIONS = ("qmusic", "joe", "zofra", "radio_contact")
#: Samples of one run.
SAMPLES = 30
#: Before the first sample: that share of the repetitions, and seconds in which every poll has come by once.
WARM_SHARE, WARM_SECONDS = 0.2, 25
#: What the flat part may end with above its beginning, in all: noise of an allocator, and connections kept for the next question.
NOISE = {"memory": 600, "threads": 1.5, "descriptors": 3}


def hold(radio):
    """What it holds at this moment: anonymous memory in kilobytes, threads, descriptors."""
    return {"memory": radio.memory(), "threads": radio.threads(), "descriptors": radio.descriptors()}


def repeat(radio, do, count, settle=0.0):
    """Do it `count` times (`do` gets the number), and some before, to be warm; returns what was held at every sample."""
    every = max(1, count // SAMPLES)
    for index in range(max(every, int(count * WARM_SHARE) // every * every)):
        do(index)
    time.sleep(max(0.0, radio.started_at + WARM_SECONDS - time.monotonic()))
    held = []
    for index in range(count):
        do(index)
        if (index + 1) % every == 0:
            time.sleep(settle)
            held.append(hold(radio))
    return held


def grown(held):
    """{what: growth from the first sample to the last, as a straight line through all sees it}."""
    return {what: _slope([one[what] for one in held]) * (len(held) - 1) for what in held[0]}


def too_much(held):
    """[what, growth] of everything that grew by more than noise."""
    return [(what, round(value, 1)) for what, value in grown(held).items() if value > NOISE[what]]


def _slope(values):
    count = len(values)
    mean_x, mean_y = (count - 1) / 2, sum(values) / count
    return (sum((x - mean_x) * (y - mean_y) for x, y in enumerate(values)) /
            sum((x - mean_x) ** 2 for x in range(count)))


# What is repeated. Each needs a running radio with a status item, and returns what `repeat` returns.

def songs(lab, radio, item, count):
    """Live songs, one after the other without a rest."""
    wait_until(lambda: "–" in item.title, 10, "the first song")
    every = max(1, count // SAMPLES)

    def one(index):
        lab.livefeed.song(station="zofra", artist=f"Artist {index}", title=f"Title {index}")
        if (index + 1) % every == 0:
            wait_until(lambda: item.title.endswith(f"Title {index}"), 60, "the last song")
    return repeat(radio, one, count)


def stations(peer, radio, ears, count):
    """Station changes while it plays; now and then it is listened to."""
    from gi.repository import GLib  # pylint: disable=import-outside-toplevel
    every = max(1, count // SAMPLES)

    def one(index):
        station = STATIONS[index % len(STATIONS)]
        since = time.monotonic()
        peer.call(NAME, OBJECT, INTERFACE, "Run", "(a{sv})",
                  ({"play": GLib.Variant("b", True), "station": GLib.Variant("s", station)},), 20)
        if (index + 1) % every == 0:
            ears.wait_for((station, "aac"), 20, since)
            ears.forget()
        else:
            time.sleep(0.05)
    return repeat(radio, one, count, 1.0)


def menus(radio, item, count):
    """The menu opened, read and closed; not faster than one caller is answered in the long run (250 calls a second)."""
    def one(_):
        item.menu.look()
        time.sleep(0.02)
    return repeat(radio, one, count)


def panels(peer, radio, display, item, count):
    """The panel opened and closed, as an owner of a tray that passes clicks on does."""
    def visible():
        done = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "^Zofra Zofra$"],
                              env={**radio.environment, "DISPLAY": display.name}, capture_output=True, check=False)
        return bool(done.stdout.strip())

    def closed():
        # A key that comes before the window has the keyboard is nobody's.
        subprocess.run(["xdotool", "key", "Escape"], env={**radio.environment, "DISPLAY": display.name}, check=True)
        time.sleep(0.05)
        return not visible()

    def one(_):
        peer.call(item.name, item.path, "org.kde.StatusNotifierItem", "ContextMenu", "(ii)", (600, 5))
        wait_until(visible, 10, "the panel")
        wait_until(closed, 10, "the panel's end", 0.1)
    return repeat(radio, one, count)
