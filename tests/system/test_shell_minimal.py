# SPDX-License-Identifier: GPL-3.0-or-later
"""The program's outside: options, one instance, the status item, its menu, settings and endpoints."""

import os
import subprocess
import time

import pytest
from radio import MEDIA_PLAYER, NAME
from zofralab.bus import BusError, Peer
from zofralab.desktop import ITEM, StatusBar, find
from zofralab.process import wait_until
from zofralab.stations import STATIONS


def ended(radio, *options, **start):
    """Start it with something that makes it end by itself; (status, lines of output, lines of errors)."""
    radio.start(*options, wait=False, **start)
    status = radio.wait_end(10)
    return status, [line.text for line in radio.lines], [line.text for line in radio.errors]


def test_version_and_help(radio):
    for option, words in (("--version", "zofra"), ("--help", "--play")):
        done = radio.ask(option)
        assert done.returncode == 0 and words in done.stdout.lower() and done.stderr == ""


@pytest.mark.parametrize("options", [("--nonsense",), ("--play", "no-such-station"), ("--output",), ("stray",),
                                     ("--status", "--quit"), ("--json",), ("--headless=yes",), ("--endpoints",)],
                         ids=" ".join)
def test_a_bad_option_is_one_line_and_status_two(radio, options):
    done = radio.ask(*options)
    assert done.returncode == 2
    assert len(done.stderr.strip().splitlines()) == 1 and done.stdout == ""


@pytest.mark.parametrize("text, words", [
    ("[streams]\nzofra_aac=host with blanks\n", ["zofra_aac", "host with blanks"]),
    ("[streams]\nzofra_ogg=host\n", ["zofra_ogg"]),
    ("[metadata]\nlive_socket=host:99999\n", ["live_socket", "host:99999"]),
    ("[streams]\nqmusic_mp3=https://host/path\n", ["qmusic_mp3", "https://host/path"]),
    ("[tls]\nextra_ca=/nonexistent/ca.pem\n", ["extra_ca", "/nonexistent/ca.pem"])], ids=lambda v: str(v)[:30])
def test_a_bad_endpoints_file_is_one_line_that_names_file_key_and_value(radio, tmp_path, text, words):
    path = tmp_path / "my endpoints.ini"
    path.write_text(text)
    status, _, errors = ended(radio, endpoints=str(path))
    assert status == 2 and len(errors) == 1
    assert all(word in errors[0] for word in [str(path), *words]), errors


def test_a_missing_endpoints_file_is_refused(radio):
    status, _, errors = ended(radio, endpoints="/nonexistent/endpoints.ini")
    assert status == 2 and len(errors) == 1 and "/nonexistent/endpoints.ini" in errors[0]


def test_the_users_endpoints_file_is_read_and_the_option_is_stronger(make_radio, lab, ears, tmp_path):
    radio = make_radio()
    folder = tmp_path / "config" / "zofrazofra"
    folder.mkdir(parents=True)
    with open(lab.endpoints, encoding="utf-8") as file:
        healthy = file.read()
    (folder / "endpoints.ini").write_text(healthy)
    stronger = tmp_path / "stronger.ini"
    stronger.write_text("[streams]\nzofra_aac=edge-aac.zofra.test\n")
    radio.start("--play", endpoints=str(stronger))
    ears.wait_for(("zofra", "aac"), 10, radio.started_at)
    assert lab.icecast.connections(station="zofra", codec="aac") == []


def test_without_a_display_and_without_headless_it_says_so(make_radio):
    radio = make_radio()
    del radio.environment["DISPLAY"]
    status, _, errors = ended(radio, headless=False)
    assert status == 1 and len(errors) == 1 and "display" in errors[0].lower()


def test_headless_prints_the_state_at_start_line_by_line(radio, lab):
    radio.start()
    radio.wait_line("station: Zofra", 5)
    radio.wait_line("song: The Paper Lanterns – Harbour Lights", 10)
    radio.wait_line("next: Émilie Dùval – Les Années d'été", 5)
    assert radio.lines_like("state: stopped") and radio.lines_like("volume: 80 %") and radio.lines_like("language: en")


def test_headless_has_no_item_and_answers_the_media_bus(radio, bus, status_bar):
    radio.start()
    bus.wait_for_name(MEDIA_PLAYER)
    assert radio.status()["tray"] == "none" and status_bar.registered == []


def test_a_second_start_hands_over_its_options_and_ends(radio, ears):
    radio.start()
    done = radio.ask("--play", "joe")
    assert (done.returncode, done.stdout, done.stderr) == (0, "", "")
    ears.wait_for(("joe", "aac"), 10)
    assert radio.status()["station"] == "joe"


@pytest.mark.parametrize("option", [("--headless",), ("--no-discovery",), ("--endpoints", "/dev/null")], ids=" ".join)
def test_what_belongs_to_a_first_start_is_refused_by_a_running_program(radio, option):
    radio.start()
    done = radio.ask(*option)
    assert done.returncode == 1 and len(done.stderr.strip().splitlines()) == 1
    assert option[0] in done.stderr and radio.process.poll() is None


def test_an_unknown_room_is_refused_by_a_running_program(radio):
    radio.start()
    done = radio.ask("--output", "Cellar")
    assert done.returncode == 1 and "Cellar" in done.stderr


def test_only_one_runs_for_a_session(radio, bus):
    radio.start()
    assert bus.process_id(NAME) == radio.pid


def test_quit_and_status_without_a_running_program(radio):
    for option in ("--quit", "--status"):
        done = radio.ask(option)
        assert done.returncode in (0, 1) and done.stdout == ""
        if done.returncode == 1:
            assert len(done.stderr.strip().splitlines()) == 1


def test_quit_ends_it_with_status_zero(radio):
    radio.start()
    assert radio.quit() == 0


def test_status_has_every_key(radio):
    radio.start()
    assert set(radio.status()) == {
        "station", "playing", "buffering", "volume", "output", "output_title", "song", "next", "language", "rooms",
        "scanning", "network_denied", "tray", "version"}
    assert radio.status()["output"] == "here" and radio.status()["rooms"] == []
    assert "station: zofra" in radio.ask("--status").stdout


def test_the_item_is_registered_under_its_unique_name_and_shows_station_and_song(radio, status_bar, lab):
    radio.start(headless=False)
    item = status_bar.wait_for_item()
    assert item.service == item.name and item.name.startswith(":")
    wait_until(lambda: item.title == "Zofra: The Paper Lanterns – Harbour Lights", 10, "the song")
    assert item.label == item.title
    properties = item.properties
    assert properties["ItemIsMenu"] is True and properties["Menu"].startswith("/")
    assert properties["IconName"] and properties["IconPixmap"]
    assert properties["Status"] == "Active"
    # What is next comes with a message of its own.
    wait_until(lambda: len(item.tooltip) == 5, 10, "the next song")
    assert item.tooltip == [
        "Station: Zofra (Alternative Rock & Indie)", "Now Playing: The Paper Lanterns – Harbour Lights",
        "Up Next: Émilie Dùval – Les Années d'été", "Output: This Mac", "Status: Paused"]
    assert radio.status()["tray"] == "hostmenu"


def test_a_panel_that_draws_the_menu_must_not_find_activate(radio, status_bar, bus):
    radio.start(headless=False)
    item = status_bar.wait_for_item()
    assert '"Activate"' not in bus.introspect(item.name, item.path)
    with pytest.raises(BusError) as refused:
        bus.call(item.name, item.path, ITEM, "Activate", "(ii)", (0, 0))
    assert refused.value.name == "org.freedesktop.DBus.Error.UnknownMethod"


def test_the_menu_offers_what_the_program_can(radio, status_bar):
    radio.start(headless=False)
    menu = status_bar.wait_for_item().menu.look()
    stations = find(menu, "Station (Zofra)")
    assert [entry.label for entry in stations.children] == [f"{s.title} – {s.genre}" for s in STATIONS]
    assert [entry.checked for entry in stations.children] == [True] + [False] * 8
    volume = find(menu, "Volume (80 %)")
    assert [entry.label for entry in volume.children] == ["100 %", "75 %", "50 %", "25 %", "Mute (0 %)"]
    assert [entry.checked for entry in volume.children] == [False, True, False, False, False]
    assert menu.children[0].label == "Play Radio" and menu.children[-1].label == "Quit Zofra Zofra"


def entries_of(entry):
    """{id: label} of all that can be chosen in a menu; titles of submenus and songs may change where they stand."""
    found = {entry.identity: entry.label} if entry.enabled and not entry.children else {}
    for child in entry.children:
        found.update(entries_of(child))
    return found


def test_an_id_never_means_two_things_and_unknown_ids_do_nothing(radio, status_bar):
    radio.start(headless=False)
    menu = status_bar.wait_for_item().menu
    meaning = {}
    for option in ("joe", "qmusic", "bel_rtl"):
        assert radio.ask("--play", option).returncode == 0
        radio.wait_status(playing=True)
        for identity, label in entries_of(menu.look()).items():
            assert meaning.setdefault(identity, label) == label
    shown = entries_of(menu.look())
    for identity in [*(set(meaning) - set(shown)), max(meaning) + 1000, -5]:
        menu.event(identity)
    menu.look()
    assert radio.process.poll() is None and radio.status()["station"] == "bel_rtl" and radio.status()["playing"]


def test_a_click_is_not_lost_when_the_song_changes_while_the_menu_is_open(radio, status_bar, lab):
    radio.start(headless=False)
    item = status_bar.wait_for_item()
    wait_until(lambda: lab.livefeed.sessions() and lab.livefeed.sessions()[0]["stations"], 10, "the live feed")
    for index, station in enumerate(STATIONS[1:4]):
        entry = find(item.menu.open(), "Station (…", f"{station.title} – {station.genre}")
        before = item.title
        lab.livefeed.song(station=STATIONS[index].raw, artist="Meanwhile", title=f"Another {index}")
        wait_until(lambda before=before: item.title != before, 5, "the song to change")
        item.menu.choose_as_gtk_does(entry.identity)
        radio.wait_status(station=station.raw)
        wait_until(lambda index=index: len(lab.livefeed.sessions()) > index + 1
                   and lab.livefeed.sessions()[index + 1]["stations"], 10, "the next live feed")


def test_quit_from_the_menu(radio, status_bar):
    radio.start(headless=False)
    status_bar.wait_for_item().menu.choose("Quit Zofra Zofra")
    assert radio.wait_end() == 0


def test_a_panel_that_restarts_gets_the_item_again(radio, status_bar):
    radio.start(headless=False)
    status_bar.wait_for_item()
    status_bar.disappear()
    status_bar.appear()
    status_bar.wait_for_item().menu.look()


def test_a_panel_that_appears_late_gets_the_item(radio, bus):
    bar = StatusBar(bus)
    radio.start(headless=False)
    bar.appear()
    assert bar.wait_for_item().title.startswith("Zofra: ")


def test_a_session_bus_that_returns_gets_the_item_again(radio, session, status_bar):
    radio.start(headless=False)
    status_bar.wait_for_item()
    session.session_bus.stop()
    session.session_bus.start()
    peer = Peer(session.session_bus.address)
    try:
        bar = StatusBar(peer)
        bar.appear()
        assert bar.wait_for_item(20).menu.look().children
    finally:
        peer.close()


def test_the_texts_follow_the_language(make_radio, status_bar):
    radio = make_radio()
    radio.environment["LANG"] = radio.environment["LC_ALL"] = "nl_BE.UTF-8"
    radio.environment["LANGUAGE"] = "nl_BE"
    radio.start(headless=False)
    item = status_bar.wait_for_item()
    assert item.menu.look().children[0].label == "Radio afspelen"
    assert item.tooltip[0] == "Zender: Zofra (Alternative Rock & Indie)"
    assert radio.setting("app_language") is None  # only a choice is kept


def test_standard_output_that_nobody_reads_does_not_stop_it(make_radio, lab, status_bar, tmp_path):
    radio = make_radio()
    command = [*lab.enter("/"), radio.binary, "--headless", "--no-discovery", "--endpoints", lab.endpoints]
    reading, writing = os.pipe()
    process = subprocess.Popen(command, env=radio.environment, stdin=subprocess.DEVNULL, stdout=writing)
    os.close(reading)
    os.close(writing)
    try:
        radio.process = process
        radio.wait_ready()
        assert radio.quit() == 0
    finally:
        if process.poll() is None:
            process.kill()
            process.wait()


@pytest.mark.measured
def test_start_to_the_name_on_the_bus_and_the_item(make_radio, bus, status_bar):
    names, items = [], []
    for _ in range(5):
        status_bar.registered.clear()
        radio = make_radio()
        radio.start(headless=False, wait=False)
        bus.wait_for_name(MEDIA_PLAYER)
        names.append(time.monotonic() - radio.started_at)
        items.append(status_bar.wait_for_item().registered_at - radio.started_at)
        radio.stop()
        wait_until(lambda: bus.owner(MEDIA_PLAYER) is None, 5, "the name to be free")
    print("start to name, s:", [f"{t:.3f}" for t in names], "to item, s:", [f"{t:.3f}" for t in items])
    assert max(items) < 2.0
