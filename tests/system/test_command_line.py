# SPDX-License-Identifier: GPL-3.0-or-later
"""The radio operated and followed from a command line: acts, the line for status bars, the history, the sleep timer."""

import json
import os
import stat
import subprocess
import threading
import time

import pytest
from zofralab.bus import Peer
from zofralab.process import DIE_WITH_PARENT, clean_environment, terminate, wait_until


class Follower:
    """A running `--follow` and its lines so far."""

    def __init__(self, radio, lab, *options):
        self.lines = []
        self.process = subprocess.Popen([*lab.enter("/"), radio.binary, "--follow", *options], env=radio.environment,
                                        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                        text=True)
        threading.Thread(target=self._read, daemon=True).start()

    def _read(self):
        for line in self.process.stdout:
            self.lines.append(line.rstrip("\n"))

    def wait_last(self, holds, what):
        """Wait until the last line is such a one."""
        try:
            wait_until(lambda: self.lines and holds(self.lines[-1]), 30, what, 0.05)
        except TimeoutError as error:
            raise AssertionError(f"{error}; there were {self.lines}") from None

    def stop(self):
        """End it."""
        terminate(self.process)


@pytest.fixture(name="follow")
def fixture_follow(radio, lab):
    """Start followers that end with the test."""
    started = []

    def start(*options):
        started.append(Follower(radio, lab, *options))
        return started[-1]
    yield start
    for one in started:
        one.stop()


def asked(radio, *options):
    """What it prints when all is well."""
    done = radio.ask(*options)
    assert (done.returncode, done.stderr) == (0, ""), done
    return done.stdout


@pytest.mark.parametrize("options", [("--stop",), ("--toggle",), ("--station", "next"), ("--volume", "40"), ("--song",),
                                     ("--stop-in", "5m"), ("--notify", "on")], ids=" ".join)
def test_without_a_running_program_it_says_so(radio, options):
    done = radio.ask(*options)
    assert (done.returncode, done.stdout, done.stderr) == (1, "", "zofrazofra: the program is not running\n")


def test_it_answers_in_the_language_of_the_terminal(radio):
    done = radio.ask("--song", environment=radio.environment | {"LANG": "nl_BE.UTF-8"})
    assert done.stderr == "zofrazofra: het programma loopt niet\n"
    assert "Gebruik:" in radio.ask("--help", environment=radio.environment | {"LANG": "nl_BE.UTF-8"}).stdout


def test_play_toggle_and_stop(radio, ears):
    radio.start()
    asked(radio, "--toggle")
    ears.wait_for(("zofra", "aac"), 20)
    radio.wait_status(playing=True)
    asked(radio, "--stop")
    radio.wait_status(playing=False)
    asked(radio, "--stop")
    assert not radio.status()["playing"], "it never starts"


def test_stations_in_their_order_and_volumes(radio):
    radio.start()
    asked(radio, "--station", "next")
    assert radio.status()["station"] == "qmusic"
    asked(radio, "--station", "previous")
    asked(radio, "--station", "previous")
    assert radio.status()["station"] == "sud_radio_hainaut"
    asked(radio, "--station", "joe", "--volume", "40")
    assert (radio.status()["station"], radio.status()["volume"]) == ("joe", 0.4)
    asked(radio, "--volume", "-15")
    assert radio.status()["volume"] == 0.25
    asked(radio, "--volume", "+5%")
    assert radio.status()["volume"] == 0.3


def test_the_song_is_one_line(radio, lab):
    radio.start()
    lab.livefeed.song(station="zofra", artist="Mira Voss", title="North\nSea")
    radio.wait_status(song="Mira Voss – North\nSea")
    assert asked(radio, "--song") == "Mira Voss – North\\nSea\n"


def test_a_bar_hears_of_every_change_and_of_the_end(radio, lab, follow):
    text, lines = follow(), follow("--json")
    lines.wait_last(lambda line: json.loads(line)["class"] == "off", "the program to be off")
    text.wait_last(lambda line: line == "", "an empty line")
    radio.start()
    lines.wait_last(lambda line: json.loads(line)["class"] == "stopped", "the program to be there")
    text.wait_last(lambda line: line == "Zofra", "the station alone")
    asked(radio, "--play")
    lab.livefeed.song(station="zofra", artist="Mira Voss", title="50%{F#f00} & more")
    lines.wait_last(lambda line: json.loads(line)["class"] == "playing" and "more" in line, "the song")
    last = json.loads(lines.lines[-1])
    assert last["text"] == "Zofra: Mira Voss – 50%{F#f00} & more"
    assert last["percentage"] == 80 and last["tooltip"].splitlines()[0].startswith("Station: Zofra")
    text.wait_last(lambda line: line == "Zofra: Mira Voss – 50% {F#f00} & more", "the song without orders to the bar")
    assert len(lines.lines) == len(set(lines.lines)), "no line twice in a row, nor any that says nothing new"
    radio.quit()
    lines.wait_last(lambda line: json.loads(line)["class"] == "off", "the program to be off again")
    text.wait_last(lambda line: line == "", "an empty line again")


def test_a_follower_ends_with_its_reader(radio, lab):
    follower = subprocess.Popen([*lab.enter("/"), radio.binary, "--follow"], env=radio.environment,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    assert follower.stdout.readline() == b"\n"
    follower.stdout.close()
    try:
        radio.start()
        asked(radio, "--station", "next")
        assert follower.wait(20) == 0
    finally:
        terminate(follower)


def test_what_was_heard_is_kept_for_its_owner_alone(radio, lab):
    assert json.loads(asked(radio, "--history", "--json")) == []
    radio.start("--play")
    radio.wait_status(playing=True, buffering=False)
    for title in ("First", "Second"):
        lab.livefeed.song(station="zofra", artist="Mira Voss", title=title)
        radio.wait_status(song=f"Mira Voss – {title}")

    def kept():
        return [(song["station"], song["song"]) for song in json.loads(asked(radio, "--history", "--json"))]
    wait_until(lambda: kept()[-2:] == [("zofra", "Mira Voss – First"), ("zofra", "Mira Voss – Second")], 20, "the songs", 0.1)
    assert "Zofra: Mira Voss – Second" in asked(radio, "--history").splitlines()[-1]
    path = os.path.join(radio.environment["XDG_STATE_HOME"], "zofrazofra", "history.json")
    assert stat.S_IMODE(os.stat(path).st_mode) == 0o600
    radio.quit()
    assert kept()[-1] == ("zofra", "Mira Voss – Second"), "also when it does not run"


def test_one_setting_keeps_no_history(radio, lab):
    radio.write_section("history", enabled="false")
    radio.start("--play")
    lab.livefeed.song(station="zofra", artist="Mira Voss", title="Secret")
    radio.wait_status(song="Mira Voss – Secret", playing=True)
    radio.quit()
    assert not os.path.exists(os.path.join(radio.environment["XDG_STATE_HOME"], "zofrazofra"))


def test_the_music_stops_after_a_while(radio, ears):
    radio.start("--play", "--stop-in", "8s")
    ears.wait_for(("zofra", "aac"), 20)
    status = radio.status()
    assert status["playing"] and 0 < status["stops_in"] <= 8
    assert "stops_in: " in asked(radio, "--status")
    radio.wait_status(20, playing=False)
    assert "stops_in" not in radio.status()
    assert time.monotonic() - radio.started_at >= 8


class MockedNotifications:
    """A notification server, as python-dbusmock plays it."""

    NAME, PATH = "org.freedesktop.Notifications", "/org/freedesktop/Notifications"

    def __init__(self, address):
        env = {**clean_environment(), "DBUS_SESSION_BUS_ADDRESS": address}
        self._process = subprocess.Popen(
            [*DIE_WITH_PARENT, "/usr/bin/python3", "-m", "dbusmock", "--session", "--template", "notification_daemon"],
            env=env, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self._peer = Peer(address)
        self._peer.wait_for_name(self.NAME, 10)

    def shown(self):
        """(id that is replaced, title, text) of each message so far."""
        calls = self._peer.call(self.NAME, self.PATH, "org.freedesktop.DBus.Mock", "GetMethodCalls", "(s)", ("Notify",))
        return [(arguments[1], arguments[3], arguments[4]) for _time, arguments in calls[0]]

    def stop(self):
        """End it."""
        self._peer.close()
        terminate(self._process)


@pytest.fixture(name="notifications")
def fixture_notifications(session):
    """A notification server on the session's bus."""
    try:
        one = MockedNotifications(session.session_bus.address)
    except TimeoutError:
        pytest.skip("not run: no python3-dbusmock on this machine")
    yield one
    one.stop()


def test_new_songs_are_announced_where_it_is_wanted(radio, lab, notifications):
    radio.start("--play")
    radio.wait_status(playing=True, buffering=False)
    lab.livefeed.song(station="zofra", artist="Mira Voss", title="Unannounced")
    radio.wait_status(song="Mira Voss – Unannounced")
    assert notifications.shown() == [], "off at first"
    asked(radio, "--notify", "on")
    for title in ("<b>One</b>", "Two"):
        lab.livefeed.song(station="zofra", artist="Mira Voss", title=title)
        radio.wait_status(song=f"Mira Voss – {title}")
        wait_until(lambda wanted=title: any(wanted in shown[1] for shown in notifications.shown()), 20, title, 0.05)
    first, second = notifications.shown()[-2:]
    assert first[1:] == ("Mira Voss – <b>One</b>", "Zofra") and second[1:] == ("Mira Voss – Two", "Zofra")
    assert second[0] != 0, "it takes the place of the one before"
    assert radio.setting("songs", "notifications") == "true"


def test_the_computer_stays_awake_while_it_plays_if_that_is_wanted(radio, logind):
    def inhibitors():
        calls = logind.peer.call("org.freedesktop.login1", logind.PATH, "org.freedesktop.DBus.Mock", "GetMethodCalls",
                                 "(s)", ("Inhibit",))
        return [tuple(arguments) for _time, arguments in calls[0]]
    before = len(inhibitors())
    radio.write_section("session", inhibit_idle="true")
    radio.start()
    assert len(inhibitors()) == before
    asked(radio, "--play")
    wait_until(lambda: len(inhibitors()) == before + 1, 20, "the inhibitor", 0.05)
    assert inhibitors()[-1][:2] == ("idle", "Zofra Zofra") and inhibitors()[-1][3] == "block"


def test_the_computer_may_sleep_unless_it_is_told(radio, logind):
    def calls():
        return len(logind.peer.call("org.freedesktop.login1", logind.PATH, "org.freedesktop.DBus.Mock", "GetMethodCalls",
                                    "(s)", ("Inhibit",))[0])
    before = calls()
    radio.start("--play")
    radio.wait_status(playing=True, buffering=False)
    assert calls() == before
