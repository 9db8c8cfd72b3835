# SPDX-License-Identifier: GPL-3.0-or-later
"""How long a person waits: for the item, for sound, for the menu and the panel, for a new song."""

import json
import math
import os
import statistics
import struct
import subprocess
import time

from radio import MEDIA_PLAYER, NAME
from stage import FLOOR, quantile
from windows import WindowWatch
from zofralab.desktop import Menu
from zofralab.process import wait_until
from zofralab.stations import station as find_station


LISTENER = os.path.join(os.path.dirname(os.path.abspath(__file__)), "programs", "listener.js")
OBJECT, INTERFACE = "/be/zofra/ZofraZofra", "be.zofra.ZofraZofra1"
STATIONS = ("qmusic", "joe", "zofra", "bel_rtl")


def _show(stage, name, values, target, unit=1e3, floor="", peer=""):
    mark = "ms" if unit == 1e3 else "s"
    digits = 1 if unit == 1e3 else 2
    median, tail, worst = statistics.median(values), quantile(values, 0.99), max(values)
    stage.row(name, f"median {median * unit:.{digits}f}, p99 {tail * unit:.{digits}f}, worst {worst * unit:.{digits}f} "
              f"{mark} ({len(values)})", target, median_s=median, p99_s=tail, worst_s=worst, count=len(values), floor=floor, peer=peer)


def _until_name(stage, command, name):
    """Seconds from the start of another program to its name on the bus; None where it is not installed."""
    began = time.monotonic()
    with stage.other(command) as process:
        if process is None:
            return None
        stage.peer.wait_for_name(name, 10)
        return time.monotonic() - began


def _beside(mine, theirs, who, unit=1e3):
    """How many times as long as somebody else."""
    if not theirs:
        return ""
    other = statistics.median(theirs)
    return f"{who} {other * unit:.{1 if unit == 1e3 else 2}f} {'ms' if unit == 1e3 else 's'}: x {statistics.median(mine) / other:.2f}"


def _start(stage, runs=10):
    """The radio and others in turn, so that the load of the machine is the same for all."""
    times, bare, peers = [], [], []
    for _ in range(runs):
        with stage.status_bar() as bar, stage.radio() as radio:
            radio.start(headless=False, wait=False)
            item = bar.wait_for_item(10)
            stage.peer.wait_for_name(MEDIA_PLAYER, 10)
            times.append(max(item.registered_at, time.monotonic()) - radio.started_at)
        bare.append(_until_name(stage, [FLOOR], "be.zofra.Floor"))
        peers.append(_until_name(stage, ["goodvibes"], "org.mpris.MediaPlayer2.Goodvibes"))
    _show(stage, "start to name on the bus and item", times, "<= 35 ms", floor=f"bare program {statistics.median(bare) * 1e3:.1f} ms",
          peer=_beside(times, [one for one in peers if one is not None], "goodvibes"))


def _call_floor(stage, calls=200):
    """An empty call to the radio over the same bus."""
    times = []
    for _ in range(calls):
        began = time.monotonic()
        stage.peer.call(NAME, OBJECT, "org.freedesktop.DBus.Peer", "Ping")
        times.append(time.monotonic() - began)
    return f"empty call {statistics.median(times) * 1e3:.1f}, p99 {quantile(times, 0.99) * 1e3:.1f} ms"


def _first_sound_sent(stage, enough=4096):
    """Seconds until curl has as much of the stream as a decoder wants to see: look-up, TLS and what the server takes."""
    began = time.monotonic()
    with subprocess.Popen([*stage.lab.enter("/"), "curl", "-sN", "-m", "10", "--cacert", stage.lab.authority, stage.address()],
                          stdout=subprocess.PIPE, env=stage.session.sound.environment) as process:
        process.stdout.read(enough)
        took = time.monotonic() - began
        process.kill()
    return took


def _tone_heard(stage):
    """Seconds from a tone given to the sound server's own player until it is heard."""
    samples = b"".join(struct.pack("<h", int(8000 * math.sin(2 * math.pi * 440 * i / 8000))) for i in range(8000))
    stage.ears.wait_for(None, 10)
    began = time.monotonic()
    with subprocess.Popen(["pacat", "--rate=8000", "--channels=1", "--format=s16le", "--latency-msec=20"],
                          stdin=subprocess.PIPE, env=stage.session.sound.environment) as process:
        process.stdin.write(samples)
        process.stdin.close()
        wait_until(lambda: any(span.what is not None for span in stage.ears.spans(began)), 10, "a tone", 0.01)
        return next(span.start for span in stage.ears.spans(began) if span.what is not None) - began


def _engine_heard(stage):
    """Seconds from the order to sound of the bare engine that is loaded already, over a plain connection."""
    with stage.other(stage.engine_floor(), stdin=subprocess.PIPE, stdout=subprocess.PIPE) as process:
        process.stdout.readline()
        stage.ears.wait_for(None, 10)
        time.sleep(0.5)
        began = time.monotonic()
        process.stdin.write(b"\n")
        process.stdin.flush()
        return stage.ears.wait_for(("qmusic", "aac"), 15, since=began, seconds=0.15) - began


def _sound_floor(stage, runs=7):
    """Piece by piece."""
    sent, tone, engine = (statistics.median(piece(stage) for _ in range(runs))
                          for piece in (_first_sound_sent, _tone_heard, _engine_heard))
    return f"sent after {sent:.2f} s (curl), a tone heard after {tone:.2f} s, the bare engine heard after {engine:.2f} s"


def _change(stage, floor, changes=16):
    """From the order to the new station's first sound."""
    times = []
    with stage.radio() as radio:
        radio.start("--play", STATIONS[-1])
        stage.ears.wait_for_any(((STATIONS[-1], "aac"), (STATIONS[-1], "mp3")), 20)
        for index in range(changes):
            station = STATIONS[index % len(STATIONS)]
            time.sleep(1.5)
            began = time.monotonic()
            stage.peer.call(NAME, OBJECT, INTERFACE, "Run", "(a{sv})",
                            ({"play": _variant("b", True), "station": _variant("s", station)},))
            at, _ = stage.ears.wait_for_any(((station, "aac"), (station, "mp3")), 15, since=began, seconds=0.15)
            times.append(at - began)
    _show(stage, "station change to sound", times, "<= 0.25 s", 1, floor)


def _variant(kind, value):
    from gi.repository import GLib  # pylint: disable=import-outside-toplevel
    return GLib.Variant(kind, value)


def _sound(stage, floor, runs=7):
    heard = ("qmusic", "aac")
    pressed, ours, theirs = [], [], []
    for _ in range(runs):
        with stage.radio() as radio:
            radio.write_settings(zofra_selected_station="qmusic")
            radio.start(headless=False)
            player = radio.media_player(stage.peer)
            time.sleep(1.0)
            began = time.monotonic()
            player.call("Play")
            pressed.append(stage.ears.wait_for(heard, 15, since=began, seconds=0.15) - began)
        with stage.radio() as radio:
            radio.start("--play", "qmusic", headless=False, wait=False)
            ours.append(stage.ears.wait_for(heard, 15, since=radio.started_at, seconds=0.15) - radio.started_at)
        with stage.other(stage.mpv()) as process:
            began = time.monotonic()
            if process is not None:
                theirs.append(stage.ears.wait_for(heard, 15, since=began, seconds=0.15) - began)
    _show(stage, "play pressed to sound", pressed, "<= 0.25 s", 1, floor, _beside(pressed, theirs, "mpv from its start", 1))
    _show(stage, "start to sound: zofrazofra --play", ours, "", 1, peer=_beside(ours, theirs, "mpv", 1))


def _song_floor(stage, songs=200):
    """From the feed to a bare listener in place of the radio."""
    stage.lab.reset()
    listener = ["env", "NODE_PATH=/usr/share/nodejs", "node", LISTENER, stage.live_host(), stage.lab.authority,
                find_station("zofra").live_id]
    with stage.other(listener, stdout=subprocess.PIPE) as process:
        process.stdout.readline()  # the song that is on
        times = []
        for index in range(songs):
            sent = stage.lab.livefeed.song(station="zofra", artist="Artist", title=f"Title {index}")["at"]
            times.append(float(process.stdout.readline()) - sent)
    return f"a bare listener {statistics.median(times) * 1e3:.1f}, p99 {quantile(times, 0.99) * 1e3:.1f} ms; "


def _song(stage, songs=200):
    floor = _song_floor(stage, songs)
    with stage.status_bar() as bar, stage.radio() as radio:
        radio.start(headless=False)
        item = bar.wait_for_item()
        wait_until(lambda: "–" in item.title, 10, "the first song")
        times = []
        stage.peer.record_signals(sender=item.name)
        for index in range(songs):
            before = len(stage.peer.signals)
            sent = stage.lab.livefeed.song(station="zofra", artist=f"Artist {index}", title=f"Title {index}",
                                           next_artist="N", next_title=str(index))["at"]

            def told(before=before, wanted=f"Artist {index} – Title {index}"):
                return next((s for s in stage.peer.signals[before:]
                             if s.name in ("NewTitle", "XAyatanaNewLabel")
                             or wanted in json.dumps(s.arguments, ensure_ascii=False, default=str)), None)
            times.append(wait_until(told, 5, "the new title", 0.0005).at - sent)
        _show(stage, "live frame sent to new title on the bus", times, "p99 <= 1 ms", floor=floor + _call_floor(stage))


def _hang(lab):
    """Every service takes a connection and says nothing, look-ups included."""
    lab.icecast.gate(station="*", codec="*", mode="hold")
    lab.livefeed.gate(mode="hold")
    lab.onair.answer(hang=True)
    lab.scraper.answer(hang="body")
    lab.dns.answer(mode="silent")


def _opened(menu, clicks):
    """Seconds that each click takes until the whole menu is there."""
    times = []
    for _ in range(clicks):
        began = time.monotonic()
        menu.open()
        times.append(time.monotonic() - began)
        menu.close()
        time.sleep(0.05)
    return times


def _menu_floor(stage, menu, clicks):
    """The same menu, kept by a bare program that answers with it."""
    with stage.other([FLOOR, menu.name, menu.path]):
        stage.peer.wait_for_name("be.zofra.Floor", 10)
        kept = Menu(stage.peer, "be.zofra.Floor", "/Menu")
        assert len(kept.tree().children) == len(menu.tree().children)
        times = _opened(kept, clicks)
    return f"bare program {statistics.median(times) * 1e3:.1f}, p99 {quantile(times, 0.99) * 1e3:.1f} ms"


def _menu_of_the_panel(stage, clicks=200):
    with stage.status_bar() as bar, stage.radio() as radio:
        _hang(stage.lab)
        radio.start("--play", headless=False)
        menu = bar.wait_for_item().menu
        floor = _menu_floor(stage, menu, clicks)
        _show(stage, "click to menu, drawn by the panel, all hanging", _opened(menu, clicks), "p99 <= 5 ms", floor=floor)


def _windows(stage, click, name, clicks=40):
    """From the call that a click is to the window on the screen."""
    with stage.status_bar() as bar, stage.radio() as radio, WindowWatch(stage) as windows:
        radio.write_settings()
        radio.write_section("tray", mode="direct")
        _hang(stage.lab)
        radio.start("--play", headless=False)
        item = bar.wait_for_item()
        time.sleep(5)  # what a radio prepares when nobody asks anything of it
        times = []
        for _ in range(clicks):
            times.append(windows.open(stage, item, click))
            time.sleep(0.2)
            windows.close()
            time.sleep(0.1)
        stage.row(f"first {name}", f"{times[0] * 1e3:.1f} ms", "<= 16 ms", first_s=times[0])
        _show(stage, f"every {name}", times, "<= 16 ms")


def run(stage, _seconds):
    """Every row."""
    stage.heading("Waiting")
    _start(stage)
    floor = _sound_floor(stage)
    _sound(stage, floor)
    _change(stage, floor)
    _song(stage)
    _menu_of_the_panel(stage)
    try:
        import Xlib  # noqa: F401  pylint: disable=import-outside-toplevel,unused-import
    except ImportError:
        stage.row("click to our own menu and panel", "not measured: python3-xlib is not installed", "<= 16 ms")
        return
    _windows(stage, "Activate", "click to our own menu")
    _windows(stage, "ContextMenu", "click to panel")
