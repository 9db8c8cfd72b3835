# SPDX-License-Identifier: GPL-3.0-or-later
"""How each fault of a plan is brought about. A method is a fault; what lasts until the next step of health is remembered."""

import os
import shutil
import signal
import threading
import time

from gi.repository import Gio, GLib
from radio import NAME
from zofralab.bus import BusError
from zofralab.desktop import ITEM, MENU, PLAYER

from surroundings import INTERFACE, OBJECT


class Faults:
    """Applies steps to surroundings."""

    def __init__(self, around):
        self._around = around
        self._lab = around.lab

    def apply(self, step):
        """One step."""
        getattr(self, step["fault"])(**step["with"])

    # Streams.

    def _which(self, station):
        if station != "current":
            return station
        status = self._around.answers()
        return status["station"] if status else "*"

    def _stream(self, switch, station, codec, **more):
        self._lab.call("icecast", switch, station=self._which(station), codec=codec, **more)
        self._around.breaks("stream")

    def stream_gate(self, station, codec, mode):
        self._stream("gate", station, codec, mode=mode)

    def stream_cut(self, station, codec):
        self._stream("cut", station, codec)

    def stream_finish(self, station, codec):
        self._stream("finish", station, codec)

    def stream_off_air(self, station, codec):
        self._stream("stop_mount", station, codec)

    def stream_silent_studio(self, station, codec):
        self._stream("pause_mount", station, codec)

    def stream_fault(self, station, codec, kind):
        self._stream("fault", station, codec, kind=kind)

    def stream_certificate(self, station, codec, certificate):
        self._stream("fault", station, codec, certificate=certificate)

    def icecast_freeze(self, codec):
        self._lab.icecast.freeze(codec=codec)
        self._around.breaks("stream")

    def icecast_kill(self, codec):
        self._lab.icecast.kill(codec=codec)
        self._around.breaks("stream")

    # The live socket.

    def socket_gate(self, mode):
        self._lab.livefeed.gate(mode=mode)
        self._around.breaks("socket")

    def socket_end(self, how):
        self._lab.call("livefeed", how)
        self._around.breaks("socket")

    def socket_message(self, text):
        self._lab.livefeed.raw(text=text)
        self._around.breaks("socket")

    def socket_bytes(self, hexadecimal, times):
        import base64  # pylint: disable=import-outside-toplevel
        self._lab.livefeed.bytes(base64=base64.b64encode(bytes.fromhex(hexadecimal)).decode(), times=times)
        self._around.breaks("socket")

    def socket_habits(self, style, seconds, mute):
        self._lab.livefeed.behave(style=style, seconds=seconds, mute=mute)
        self._around.breaks("socket")

    def socket_certificate(self, kind):
        self._lab.livefeed.certificate(kind=kind)
        self._around.breaks("socket")

    def socket_flood(self, count):
        station = self._which("current")
        for _ in range(count):
            self._around.new_song(station if station != "*" else "zofra")

    # HTTP.

    def http_answer(self, service, how):
        self._lab.call(service, "answer", **how)
        self._around.breaks("http")

    def http_gate(self, service, mode):
        self._lab.call(service, "gate", mode=mode)
        self._around.breaks("http")

    def http_certificate(self, service, kind):
        self._lab.call(service, "certificate", kind=kind)
        self._around.breaks("http")

    # Names and cables.

    def names(self, mode):
        self._lab.dns.answer(mode=mode)
        self._around.breaks("names")

    def cable(self, seconds):
        self._lab.net.link(is_up=False)
        self._around.breaks("stream", "socket", "http", "house")
        time.sleep(seconds)
        self._lab.net.link(is_up=True)

    def denied(self, how):
        # The home network's addresses that are nobody's have such routes already.
        self._lab.net.deny(networks=["198.51.100.0/24", *(["10.77.0.0/24"] if how == "drop" else [])], how=how)
        self._around.breaks("stream", "socket", "http", "house")

    # Players in the house.

    def _player(self, index):
        players = self._lab.household.players()
        return players[index % len(players)]["uuid"] if players else None

    def player_fault(self, player, switches):
        name = self._player(player)
        if name:
            self._lab.household.switch(player=name, **switches)
        self._around.breaks("house")

    def player_gone(self, player):
        name = self._player(player)
        if name:
            self._lab.household.vanish(player=name)
        self._around.breaks("house")

    def house_router(self, mode):
        self._lab.household.router(mode=mode)
        self._around.breaks("house")

    def house_slow(self, seconds):
        self._lab.household.latency(seconds=seconds)
        self._around.breaks("house")

    def house_scene(self, scene):
        self._lab.household.scene(scene=scene)
        self._around.breaks("house")

    def house_search(self):
        self._choose("🔄")

    # Buses and panels.

    def session_bus_hangs(self, seconds):
        _stopped_for(self._around.session.session_bus.pid, seconds)

    def system_bus_hangs(self, seconds):
        _stopped_for(self._around.session.system_bus.pid, seconds)

    def session_bus_restarts(self):
        around = self._around
        around.peer.close()
        around.session.session_bus.stop()
        time.sleep(0.5)
        around.session.session_bus.start()
        around.connect()
        around.find()

    def panel_gone(self):
        self._around.bar.disappear()
        time.sleep(0.3)
        self._around.bar.appear()

    def panel_flood(self, what, count):
        around = self._around
        calls = {
            "AboutToShow": ("/MenuBar", MENU, "AboutToShow", GLib.Variant("(i)", (0,))),
            "GetLayout": ("/MenuBar", MENU, "GetLayout", GLib.Variant("(iias)", (0, -1, []))),
            "Scroll": ("/StatusNotifierItem", ITEM, "Scroll", GLib.Variant("(is)", (1, "vertical"))),
            "Status": (OBJECT, INTERFACE, "Status", None),
            "PlayPause": ("/org/mpris/MediaPlayer2", PLAYER, "PlayPause", None),
            "Volume": ("/org/mpris/MediaPlayer2", "org.freedesktop.DBus.Properties", "Set",
                       GLib.Variant("(ssv)", (PLAYER, "Volume", GLib.Variant("d", 0.7)))),
        }
        path, interface, method, arguments = calls[what]
        left = [count]
        done = threading.Event()

        def answered(connection, result, _data):
            try:
                connection.call_finish(result)
            except GLib.Error:
                pass  # an error is an answer
            left[0] -= 1
            if not left[0]:
                done.set()
        for _ in range(count):
            around.peer.connection.call(NAME if what == "Status" else around.item.name, path, interface, method, arguments,
                                        None, Gio.DBusCallFlags.NO_AUTO_START, 30000, None, answered, None)
        if not done.wait(30):
            raise AssertionError(f"{left[0]} of {count} {what} were never answered")
        if what == "PlayPause":
            self._take_what_it_says()
        if what == "Scroll":
            self.volume(0.7)

    def panel_nonsense(self, identity, event):
        try:
            self._around.item.menu.event(identity, event)
        except BusError:
            pass  # an error is an answer

    # The sound server, the settings, sleep, the process, the clock.

    def sound_hangs(self, seconds):
        _stopped_for(self._around.session.sound._process.pid, seconds)  # pylint: disable=protected-access

    def sound_restarts(self):
        self._around.breaks("sound")
        self._around.restart_sound()

    def settings(self, how):
        path = self._around.radio.settings_path
        if os.path.isdir(path):
            return
        os.makedirs(os.path.dirname(path), exist_ok=True)
        if how == "deleted":
            if os.path.exists(path):
                os.unlink(path)
        elif how == "directory":
            if os.path.exists(path):
                os.unlink(path)
            os.mkdir(path)
        else:
            content = {"garbage": bytes(range(256)) * 40, "huge": b"[General]\n" + b"x=" + b"y" * 6_000_000 + b"\n",
                       "empty": b""}[how]
            with open(path, "wb") as file:
                file.write(content)
        self._around.breaks("settings")

    def sleep(self, both):
        self._around.logind.prepare_for_sleep(True)
        if both:
            time.sleep(0.2)
            self._around.logind.prepare_for_sleep(False)

    def stopped(self, seconds):
        _stopped_for(self._around.radio.pid, seconds)

    def killed(self):
        around = self._around
        around.radio.process.kill()
        around.radio.wait_end()
        around.bar.registered.clear()
        if os.path.isdir(around.radio.settings_path):
            shutil.rmtree(around.radio.settings_path)
        around.start()
        around.wants_to_play = False

    def clock(self, offset):
        self._around.set_clock(offset)
        self._around.breaks("clock")

    # What people do meanwhile.

    def station(self, station):
        self._around.run(play=True, station=station)
        self._around.wants_to_play = True

    def stations_quickly(self, stations):
        for one in stations:
            self.station(one)

    def play(self):
        self._around.media_player.call("Play")
        self._take_what_it_says()

    def pause(self):
        self._around.media_player.call("Pause")
        self._take_what_it_says()

    def volume(self, value):
        self._around.media_player.volume = value

    def output(self, target):
        self._around.run(output=target)
        time.sleep(0.1)
        self._take_what_it_says()

    def menu(self):
        self._around.item.menu.look()

    def song(self, station):
        self._around.new_song(station)

    def _take_what_it_says(self):
        self._around.wants_to_play = self._around.status()["playing"]

    def _choose(self, beginning):
        """A click on an entry one level down whose text begins so, if it is there."""
        menu = self._around.item.menu
        root = menu.open()
        for entry in (child for part in root.children for child in part.children):
            if entry.label.startswith(beginning) and entry.enabled:
                menu.event(entry.identity)
                break
        menu.close()


def _stopped_for(pid, seconds):
    os.kill(pid, signal.SIGSTOP)
    try:
        time.sleep(seconds)
    finally:
        os.kill(pid, signal.SIGCONT)
