# SPDX-License-Identifier: GPL-3.0-or-later
"""A station is heard; play, stop, stations and volume do what they say."""

import json
import subprocess
import time

import pytest
from zofralab.desktop import find
from zofralab.process import wait_until
from zofralab.stations import STATIONS

FALLBACK = "AAC Stream fehlgeschlagen – wechsle zu MP3 Fallback ({})"


def test_zofra_plays_on_its_aac_stream_and_says_so(radio, ears):
    radio.start("--play")
    ears.wait_for(("zofra", "aac"), 10, radio.started_at)
    radio.wait_line("station: Zofra")
    radio.wait_line("state: playing")
    status = radio.status()
    assert (status["station"], status["playing"], status["buffering"]) == ("zofra", True, False)
    assert not radio.lines_like("AAC Stream.*")
    assert ears.heard(radio.started_at, ears.recorded_until()) == {("zofra", "aac")}


@pytest.mark.parametrize("station", STATIONS, ids=lambda s: s.raw)
def test_every_station_is_heard_from_its_first_address(radio, ears, lab, station):
    radio.start("--play", station.raw)
    ears.wait_for((station.raw, "aac"), 10, radio.started_at)
    assert not lab.icecast.connections(station=station.raw, codec="mp3")


def test_a_stopped_mount_makes_the_mp3_stream_heard_after_the_german_line(radio, ears, lab):
    radio.start("--play")
    ears.wait_for(("zofra", "aac"), 10, radio.started_at)
    stopped = time.monotonic()
    lab.icecast.stop_mount(station="zofra", codec="aac")
    heard = ears.wait_for(("zofra", "mp3"), 20, stopped)
    line = radio.wait_line(FALLBACK.format("Zofra").replace("(", r"\(").replace(")", r"\)"))
    assert line.at < heard + 0.05  # the recorder's own delay
    assert radio.status()["playing"]
    # The mp3 stream is kept, though the other is back.
    lab.icecast.start_mount(station="zofra", codec="aac")
    connections = lab.icecast.connections(station="zofra", codec="aac")
    assert not [c for c in connections if c["closed"] is None]


def test_choosing_a_station_in_the_menu_is_heard_and_kept(radio, ears, status_bar):
    radio.start("--play", headless=False)
    item = status_bar.wait_for_item()
    ears.wait_for(("zofra", "aac"), 10, radio.started_at)
    chosen = time.monotonic()
    item.menu.choose("Station (…", "Qmusic – Hits & Pop")
    ears.wait_for(("qmusic", "aac"), 10, chosen)
    wait_until(lambda: radio.setting("zofra_selected_station") == "qmusic", 3, "the setting")
    stations = find(item.menu.look(), "Station (…")
    assert [entry.label for entry in stations.children if entry.checked] == ["Qmusic – Hits & Pop"]
    # Nothing of the old station after the new one began.
    after = ears.wait_for(("qmusic", "aac"), 5, chosen)
    assert ("zofra", "aac") not in ears.heard(after, ears.recorded_until())


def test_play_and_stop_from_the_menu(radio, ears, status_bar):
    radio.start(headless=False)
    item = status_bar.wait_for_item()
    begun = time.monotonic()
    item.menu.choose("Play Radio")
    ears.wait_for(("zofra", "aac"), 10, begun)
    radio.wait_status(playing=True, buffering=False)
    stopped = time.monotonic()
    item.menu.choose("Stop Radio")
    assert ears.wait_for(None, 3, stopped, seconds=0.5) - stopped < 1.0
    assert not radio.wait_status(playing=False)["buffering"]
    again = time.monotonic()
    item.menu.choose("Play Radio")
    ears.wait_for(("zofra", "aac"), 10, again)


def test_stopped_it_opens_no_stream_and_a_station_chosen_then_opens_none(radio, lab, status_bar):
    radio.start(headless=False)
    item = status_bar.wait_for_item()
    item.menu.choose("Station (…", "JOE – 80s, 90s & Pop Classics")
    radio.wait_status(station="joe", playing=False)
    wait_until(lambda: radio.setting("zofra_selected_station") == "joe", 3, "the setting")
    assert lab.icecast.connections(station="*", codec="*") == []


def test_the_chosen_station_and_volume_are_there_again_after_a_restart(make_radio, status_bar):
    first = make_radio()
    first.start(headless=False)
    item = status_bar.wait_for_item()
    item.menu.choose("Station (…", "Bel RTL – Info, Talk & Pop")
    item.menu.choose("Volume (…", "25 %")
    first.wait_status(station="bel_rtl", volume=0.25)
    assert first.quit() == 0
    second = make_radio(first.home)
    second.start()
    assert (second.status()["station"], second.status()["volume"]) == ("bel_rtl", 0.25)


def test_half_the_volume_is_half_the_amplitude(radio, ears, status_bar):
    radio.start("--play", headless=False)
    item = status_bar.wait_for_item()
    began = ears.wait_for(("zofra", "aac"), 10, radio.started_at)
    loudness = {}
    for text, volume in (("100 %", 1.0), ("50 %", 0.5), ("25 %", 0.25)):
        item.menu.choose("Volume (…", text)
        radio.wait_status(volume=volume)
        settled = time.monotonic() + 1.0  # sound that was already on its way to the device
        loudness[volume] = ears.loudness(settled, settled + 1.0)
    assert loudness[0.5] / loudness[1.0] == pytest.approx(0.5, abs=0.02)
    assert loudness[0.25] / loudness[1.0] == pytest.approx(0.25, abs=0.02)
    assert ears.heard(began, ears.recorded_until()) == {("zofra", "aac")}


def test_mute_is_silence_and_comes_back_as_the_default_volume(make_radio, ears, status_bar):
    first = make_radio()
    first.start("--play", headless=False)
    item = status_bar.wait_for_item()
    ears.wait_for(("zofra", "aac"), 10, first.started_at)
    muted = time.monotonic()
    item.menu.choose("Volume (…", "Mute (0 %)")
    assert ears.wait_for(None, 3, muted, seconds=0.5) - muted < 1.0
    assert first.status()["playing"]
    wait_until(lambda: first.setting("zofra_radio_volume") in ("0", "0.0"), 3, "the setting")
    assert first.quit() == 0
    second = make_radio(first.home)
    second.start()
    assert second.status()["volume"] == 0.8


def test_the_volume_in_the_settings_is_a_number_that_a_person_can_write(make_radio):
    radio = make_radio()
    radio.write_settings(zofra_radio_volume="0.35", zofra_selected_station="radio_contact", app_language="fr")
    radio.start()
    status = radio.status()
    assert (status["volume"], status["station"], status["language"]) == (0.35, "radio_contact", "fr")


def test_an_unknown_station_in_the_settings_means_zofra(make_radio):
    radio = make_radio()
    radio.write_settings(zofra_selected_station="Zofra")
    radio.start()
    assert radio.status()["station"] == "zofra"


def test_the_volume_mixer_shows_the_program_the_station_and_the_icon(radio, ears, sound_server):
    radio.start("--play", "qmusic")
    ears.wait_for(("qmusic", "aac"), 10)
    shown = subprocess.run(["pactl", "--format=json", "list", "sink-inputs"], env=sound_server.environment,
                           capture_output=True, text=True, check=True)
    properties = next(one["properties"] for one in json.loads(shown.stdout)
                      if one["properties"].get("application.process.id") == str(radio.pid))
    assert properties["application.name"] == "Zofra Zofra"
    assert properties["media.name"] == "Qmusic"
    assert properties["media.icon_name"] == properties["application.icon_name"] == "be.zofra.ZofraZofra"


def test_quitting_while_playing_ends_the_sound_at_once(radio, ears):
    radio.start("--play")
    ears.wait_for(("zofra", "aac"), 10, radio.started_at)
    asked = time.monotonic()
    assert radio.quit(timeout=3) == 0
    assert ears.wait_for(None, 3, asked, seconds=0.5) - asked < 1.5
