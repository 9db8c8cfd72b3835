# SPDX-License-Identifier: GPL-3.0-or-later
"""`--doctor` where all is well, beside a running program, and as a command."""

import json
import os
import socket
import time

import pytest
from doctor_support import LIMIT, Diagnosis, doctor  # noqa: F401
from zofralab.process import wait_until
from zofralab.stations import STATIONS

AREAS = {"session", "panel", "bus", "program", "audio", "settings", "endpoints", "stream", "live", "onair", "scraper",
         "network", "players"}


def test_where_all_is_well_it_says_so_and_what_it_found(doctor, status_bar, lab):
    lab.household.others(mode="refused")
    found = doctor.diagnose(discovery=True)
    found.assert_fine()
    assert {check["area"] for check in found.checks} == AREAS
    assert "X11" in found.only("session")["text"]
    assert found.only("panel")["details"]["mode"] == "hostmenu"
    assert found.only("program")["details"] == {"running": False}
    audio = found.only("audio")["details"]
    assert (audio["driver"], audio["devices"], audio["server_state"]) == ("pulse", ["Lab"], "present")
    assert found.only("endpoints")["details"]["files"] == [lab.endpoints]
    assert len(found.of("stream")) == 2 * len(STATIONS)
    for check in found.of("stream") + found.of("onair") + found.of("scraper"):
        times = check["details"]["ms"]
        assert check["details"]["status"] == 200 and check["details"]["address"].startswith("198.51.100.")
        assert 0 <= times["name"] <= times["connect"] <= times["tls"] <= times["answer"], check
    home = found.only("network")["details"]
    assert (home["interface"], home["address"], home["answers"]) == ("home0", "10.77.0.2", 12)
    rooms = found.only("players")["details"]["rooms"]
    assert len(rooms) == 7
    assert {player["way"] for room in rooms for player in room["players"]} == {"search"}


def test_its_text_fits_the_screen_and_names_every_area(doctor, status_bar):
    done = doctor.run(json_text=False)
    assert done.returncode == 0 and done.stderr == "", done.stdout + done.stderr
    lines = done.stdout.splitlines()
    assert all(len(line) <= 80 for line in lines)
    assert lines[0].startswith("Zofra Zofra ") and lines[-1] == "Everything is fine."
    assert {line.split()[1] for line in lines[1:-1] if line.startswith(("ok", "-"))} == AREAS - {"players"}


def test_a_running_program_is_asked_and_not_disturbed(doctor, status_bar, radio, lab, ears):
    radio.start("--play", "qmusic", headless=False)
    since = ears.wait_for(("qmusic", "aac"), 30, radio.started_at)
    before = radio.status()
    registered = list(status_bar.registered)
    found = doctor.diagnose()
    found.assert_fine()
    program = found.only("program")
    assert program["details"]["running"] and str(radio.pid) in program["text"]
    assert program["details"]["status"]["station"] == "qmusic" and program["details"]["status"]["playing"]
    assert found.only("bus")["details"]["media_player"]
    assert found.only("panel")["details"]["mode"] == radio.status()["tray"] == "hostmenu"
    assert {**radio.status(), "song": before["song"], "next": before["next"]} == before
    assert status_bar.registered == registered, "the program's item is the only one"
    assert ears.silences(since + 0.5, time.monotonic() - 0.5, 1.0) == []
    assert radio.errors == []


def test_it_leaves_no_file_and_no_name_behind(doctor, bus, status_bar, radio):
    names = set(bus.names())
    doctor.diagnose().assert_fine()
    wait_until(lambda: set(bus.names()) == names, 30, "the names as they were")
    assert not os.path.exists(os.path.dirname(radio.settings_path)), "not even the settings' folder"


def test_headless_needs_neither_display_nor_panel(doctor, radio):
    del radio.environment["DISPLAY"]
    found = doctor.diagnose("--headless")
    found.assert_fine()
    assert found.only("panel")["status"] == "skipped"


def test_without_a_display_it_works_and_names_that(doctor, radio):
    del radio.environment["DISPLAY"]
    doctor.diagnose().assert_problem("session", "no display", cure=["--headless"])


def test_without_a_bus_it_works_and_names_that(doctor, radio):
    del radio.environment["DBUS_SESSION_BUS_ADDRESS"]
    radio.environment["XDG_RUNTIME_DIR"] = radio.home
    doctor.diagnose("--headless").assert_problem("bus", "no session bus", cure=["log in"])


@pytest.fixture
def deaf_socket(tmp_path):
    """Takes connections and never answers."""
    path = str(tmp_path / "deaf")
    with socket.socket(socket.AF_UNIX) as listener:
        listener.bind(path)
        listener.listen(20)
        yield path


def test_what_never_answers_does_not_hold_it_up(doctor, radio, lab, deaf_socket):
    radio.environment["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={deaf_socket}"
    radio.environment["PULSE_SERVER"] = f"unix:{deaf_socket}"
    lab.icecast.gate(station="*", codec="*", mode="hold")
    lab.livefeed.gate(mode="hold")
    lab.onair.gate(mode="hold")
    lab.scraper.answer(hang=True)
    lab.household.switch(silent=True)
    started = time.monotonic()
    found = doctor.diagnose("--headless", discovery=True)
    assert time.monotonic() - started < LIMIT
    assert found.status == 1
    named = {check["area"] for check in found.problems()}
    assert named >= {"bus", "audio", "stream", "live", "onair", "scraper"}, found.summary()
    assert all(check["cure"] for check in found.problems())


@pytest.mark.parametrize("options", [("--play",), ("--output", "here"), ("--quit",), ("--status",), ("--version",),
                                     ("--nonsense",)], ids=" ".join)
def test_options_that_do_not_go_with_it_are_one_line_and_status_two(radio, options):
    done = radio.ask("--doctor", *options)
    assert done.returncode == 2 and done.stdout == ""
    assert len(done.stderr.strip().splitlines()) == 1


def test_json_is_one_line_and_the_same_as_the_text(doctor, status_bar):
    done = doctor.run()
    assert len(done.stdout.splitlines()) == 1
    found = Diagnosis(done)
    text = " ".join(doctor.run(json_text=False).stdout.split())
    for check in found.checks:
        if "ms" not in check["details"]:  # no two runs take the same time
            assert check["text"] in text, check
    assert json.loads(done.stdout)["version"] in text


def test_status_without_a_running_program_is_one_clear_line(radio):
    for options in (("--status",), ("--status", "--json")):
        done = radio.ask(*options)
        assert (done.returncode, done.stdout) == (1, "")
        assert done.stderr == "zofrazofra: the program is not running\n"
