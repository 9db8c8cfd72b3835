# SPDX-License-Identifier: GPL-3.0-or-later
"""How long a person waits: for the item, for sound, for the menu and the panel, for a new song."""

import json
import statistics
import time

from radio import MEDIA_PLAYER
from stage import quantile
from zofralab.process import wait_until


def _show(stage, name, values, target, unit=1e3):
    mark = "ms" if unit == 1e3 else "s"
    digits = 1 if unit == 1e3 else 2
    median, tail, worst = statistics.median(values), quantile(values, 0.99), max(values)
    stage.row(name, f"median {median * unit:.{digits}f}, p99 {tail * unit:.{digits}f}, worst {worst * unit:.{digits}f} "
              f"{mark} ({len(values)})", target, median_s=median, p99_s=tail, worst_s=worst, count=len(values))


def _start(stage, runs=10):
    times = []
    for _ in range(runs):
        with stage.status_bar() as bar, stage.radio() as radio:
            radio.start(headless=False, wait=False)
            item = bar.wait_for_item(10)
            stage.peer.wait_for_name(MEDIA_PLAYER, 10)
            times.append(max(item.registered_at, time.monotonic()) - radio.started_at)
    _show(stage, "start to name on the bus and item", times, "<= 150 ms")


def _sound(stage, runs=7):
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
    _show(stage, "play pressed to sound: zofrazofra", pressed, "<= mpv", 1)
    _show(stage, "start to sound: zofrazofra --play", ours, "", 1)
    if theirs:
        _show(stage, "start to sound: mpv", theirs, "", 1)


def _song(stage, songs=200):
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
        _show(stage, "live frame sent to new title on the bus", times, "p99 <= 10 ms")


def _hang(lab):
    """Every service takes a connection and says nothing, look-ups included."""
    lab.icecast.gate(station="*", codec="*", mode="hold")
    lab.livefeed.gate(mode="hold")
    lab.onair.answer(hang=True)
    lab.scraper.answer(hang="body")
    lab.dns.answer(mode="silent")


def _menu_of_the_panel(stage, clicks=200):
    with stage.status_bar() as bar, stage.radio() as radio:
        _hang(stage.lab)
        radio.start("--play", headless=False)
        menu = bar.wait_for_item().menu
        times = []
        for _ in range(clicks):
            began = time.monotonic()
            menu.open()
            times.append(time.monotonic() - began)
            menu.close()
            time.sleep(0.05)
        _show(stage, "click to menu, drawn by the panel, all hanging", times, "<= 16 ms")


def _windows(stage, mode, click, name, clicks=40):
    """From the call that a click is to the window on the screen, as the X server reports it."""
    from Xlib import X, display as xlib  # pylint: disable=import-outside-toplevel
    watcher = xlib.Display(stage.display.name)
    watcher.screen().root.change_attributes(event_mask=X.SubstructureNotifyMask)
    watcher.sync()

    def next_map(kind):
        while True:
            event = watcher.next_event()
            if event.type == kind:
                return time.monotonic()
    with stage.status_bar() as bar, stage.radio() as radio:
        radio.write_settings()
        with open(radio.settings_path, "a", encoding="utf-8") as file:
            file.write(f"[tray]\nmode={mode}\n")
        _hang(stage.lab)
        radio.start("--play", headless=False)
        item = bar.wait_for_item()
        time.sleep(5)  # what a radio prepares when nobody asks anything of it
        times = []
        for _ in range(clicks):
            began = time.monotonic()
            stage.peer.connection.call(item.name, item.path, "org.kde.StatusNotifierItem", click,
                                       _point(), None, 0, 5000, None, None)
            times.append(next_map(X.MapNotify) - began)
            time.sleep(0.2)
            close(stage, watcher)
            next_map(X.UnmapNotify)
            time.sleep(0.1)
        stage.row(f"first {name}", f"{times[0] * 1e3:.1f} ms", "<= 16 ms", first_s=times[0])
        _show(stage, f"every {name}", times, "<= 16 ms")
    watcher.close()


def _point():
    from gi.repository import GLib  # pylint: disable=import-outside-toplevel
    return GLib.Variant("(ii)", (600, 5))


def close(stage, watcher):
    """Press Escape."""
    from Xlib import XK, X  # pylint: disable=import-outside-toplevel
    from Xlib.ext import xtest  # pylint: disable=import-outside-toplevel
    code = watcher.keysym_to_keycode(XK.XK_Escape)
    xtest.fake_input(watcher, X.KeyPress, code)
    xtest.fake_input(watcher, X.KeyRelease, code)
    watcher.sync()
    del stage


def run(stage, _seconds):
    """Every row."""
    stage.heading("Waiting")
    _start(stage)
    _sound(stage)
    _song(stage)
    _menu_of_the_panel(stage)
    try:
        import Xlib  # noqa: F401  pylint: disable=import-outside-toplevel,unused-import
    except ImportError:
        stage.row("click to our own menu and panel", "not measured: python3-xlib is not installed", "<= 16 ms")
        return
    _windows(stage, "direct", "Activate", "click to our own menu")
    _windows(stage, "direct", "ContextMenu", "click to panel")
