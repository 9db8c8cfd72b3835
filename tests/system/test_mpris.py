# SPDX-License-Identifier: GPL-3.0-or-later
"""Media keys and media displays: org.mpris.MediaPlayer2, driven by playerctl and by hand."""

import os
import subprocess
import time
from urllib.parse import unquote

import pytest
from radio import MEDIA_PLAYER
from zofralab.bus import Peer
from zofralab.desktop import MediaPlayer
from zofralab.process import wait_until

AAC = ("zofra", "aac")


@pytest.fixture
def playerctl(radio):
    """playerctl on this test's session bus."""
    def run(*arguments):
        done = subprocess.run(["playerctl", "--player=zofrazofra", *arguments], env=radio.environment,
                              capture_output=True, text=True, timeout=10, check=False)
        assert done.returncode == 0, done.stderr
        return done.stdout.strip()
    return run


def test_playerctl_plays_stops_and_toggles(radio, ears, playerctl):
    radio.start()
    assert playerctl("status") == "Stopped"
    for command, heard in (("play", AAC), ("pause", None), ("play-pause", AAC), ("play-pause", None), ("play", AAC),
                           ("stop", None)):
        at = time.monotonic()
        playerctl(command)
        ears.wait_for(heard, 10, at, seconds=0.4)
        wait_until(lambda: (playerctl("status") == "Playing") == (heard is not None), 5, f"the status after {command}")
        radio.wait_status(playing=heard is not None)
    assert playerctl("--list-all") == "zofrazofra"


def test_the_song_is_shown_with_the_live_flag_and_without_an_artist(radio, bus, lab):
    radio.start()
    player = radio.media_player(bus)
    lab.livefeed.song(station="zofra", artist="Mira Voss", title="Über den Dächern")
    wait_until(lambda: player.metadata.get("xesam:title") == "Mira Voss – Über den Dächern", 10, "the song")
    metadata = player.metadata
    assert metadata["zofra:isLiveStream"] is True
    assert "xesam:artist" not in metadata
    assert metadata["mpris:trackid"].startswith("/") and "mpris:length" not in metadata


def test_changes_are_told_and_the_track_is_another_one(radio, bus, lab):
    radio.start()
    player = radio.media_player(bus)
    wait_until(lambda: lab.livefeed.sessions() and lab.livefeed.sessions()[0]["stations"], 10, "the live feed")
    wait_until(lambda: "–" in player.metadata.get("xesam:title", ""), 10, "the first song")
    before = player.metadata["mpris:trackid"]
    bus.record_signals(interface="org.freedesktop.DBus.Properties", path=MediaPlayer.PATH)
    lab.livefeed.song(station="zofra", artist="A", title="B")

    def told():
        return [signal.arguments[1]["Metadata"] for signal in bus.signals if "Metadata" in signal.arguments[1]]
    wait_until(lambda: told() and told()[-1]["xesam:title"] == "A – B", 5, "the change")
    assert told()[-1]["mpris:trackid"] != before


def test_playback_status_is_told_when_playing_begins_and_ends(radio, bus, ears):
    radio.start()
    player = radio.media_player(bus)
    bus.record_signals(interface="org.freedesktop.DBus.Properties", path=MediaPlayer.PATH)

    def told():
        return [s.arguments[1]["PlaybackStatus"] for s in bus.signals if "PlaybackStatus" in s.arguments[1]]
    player.call("Play")
    wait_until(lambda: told()[-1:] == ["Playing"], 10, "Playing")
    player.call("PlayPause")
    wait_until(lambda: told()[-1:] in (["Paused"], ["Stopped"]), 10, "the end of it")


def test_a_held_stream_is_paused_and_no_stream_is_stopped(radio, bus, ears):
    radio.start()
    player = radio.media_player(bus)
    assert player.status == "Stopped"
    player.call("Play")
    ears.wait_for(AAC, 10)
    assert player.status == "Playing"
    player.call("Pause")
    wait_until(lambda: player.status == "Paused", 5, "Paused")


def test_the_volume_is_the_menus_volume(radio, bus, ears):
    radio.start("--play")
    player = radio.media_player(bus)
    assert player.volume == pytest.approx(0.8)
    ears.wait_for(AAC, 10, radio.started_at)
    player.volume = 0.25
    radio.wait_status(volume=0.25)
    wait_until(lambda: radio.setting("zofra_radio_volume") == "0.25", 3, "the setting")
    radio.wait_line("volume: 25 %")
    player.volume = 7.0
    radio.wait_status(volume=1.0)


def test_what_it_is_and_can(radio, bus):
    radio.start()
    bus.wait_for_name(MEDIA_PLAYER)
    root = bus.get_all(MEDIA_PLAYER, MediaPlayer.PATH, "org.mpris.MediaPlayer2")
    assert root["Identity"] == "Zofra Zofra" and root["DesktopEntry"] == "be.zofra.ZofraZofra"
    assert root["HasTrackList"] is False
    player = bus.get_all(MEDIA_PLAYER, MediaPlayer.PATH, "org.mpris.MediaPlayer2.Player")
    assert (player["CanPlay"], player["CanPause"], player["CanControl"]) == (True, True, True)
    assert (player["CanGoNext"], player["CanGoPrevious"], player["CanSeek"]) == (True, True, False)
    assert player["Rate"] == player["MinimumRate"] == player["MaximumRate"] == 1.0


def test_next_and_previous_change_the_station_and_go_round(radio, playerctl):
    radio.start()
    playerctl("next")
    radio.wait_status(station="qmusic", playing=False)
    playerctl("previous")
    radio.wait_status(station="zofra")
    playerctl("previous")
    radio.wait_status(station="sud_radio_hainaut", playing=False)


def test_the_album_is_the_station_and_the_picture_is_the_programs(radio, bus, lab):
    radio.start()
    player = radio.media_player(bus)
    lab.livefeed.song(station="zofra", artist="Mira Voss", title="Regen")
    wait_until(lambda: player.metadata.get("xesam:title") == "Mira Voss – Regen", 10, "the song")
    assert player.metadata["xesam:album"] == "Zofra"
    picture = player.metadata["mpris:artUrl"]
    assert picture.startswith("file:///") and os.path.exists(unquote(picture.removeprefix("file://")))


def test_the_stations_are_playlists(radio, bus, ears):
    radio.start()
    bus.wait_for_name(MEDIA_PLAYER)
    lists = (MEDIA_PLAYER, MediaPlayer.PATH, "org.mpris.MediaPlayer2.Playlists")
    found = bus.call(*lists, "GetPlaylists", "(uusb)", (0, 100, "UserDefined", False))[0]
    assert [name for _, name, _ in found][:3] == ["Zofra", "Qmusic", "JOE"] and len(found) == 9
    assert bus.get_all(*lists)["ActivePlaylist"][1][1] == "Zofra"
    bus.call(*lists, "ActivatePlaylist", "(o)", (found[2][0],))
    radio.wait_status(station="joe", playing=True)
    ears.wait_for(("joe", "aac"), 15)


def test_quit_over_the_bus_ends_it(radio, bus):
    radio.start()
    bus.wait_for_name(MEDIA_PLAYER)
    bus.call(MEDIA_PLAYER, MediaPlayer.PATH, "org.mpris.MediaPlayer2", "Quit")
    assert radio.wait_end() == 0


def test_a_bus_that_dies_does_not_stop_the_music_and_is_used_again_when_it_returns(radio, ears, session, lab):
    radio.start("--play")
    ears.wait_for(AAC, 10, radio.started_at)
    session.session_bus.stop()
    died = time.monotonic()
    ears.wait_recorded(died + 3)
    assert ears.heard(died, died + 3) == {AAC} and not ears.silences(died, died + 3)
    assert radio.process.poll() is None
    session.session_bus.start()
    peer = Peer(session.session_bus.address)
    try:
        player = MediaPlayer(peer)
        peer.wait_for_name(MEDIA_PLAYER, 15)
        assert player.status == "Playing"
        stopped = time.monotonic()
        player.call("Pause")
        ears.wait_for(None, 5, stopped, seconds=0.5)
    finally:
        peer.close()


def test_without_any_bus_it_plays(make_radio, ears, session):
    radio = make_radio()
    for name in ("DBUS_SESSION_BUS_ADDRESS", "DBUS_SYSTEM_BUS_ADDRESS"):
        radio.environment[name] = "unix:path=/nonexistent/bus"
    radio.start("--play", wait=False)
    ears.wait_for(AAC, 10, radio.started_at)


def test_two_players_of_the_kind_are_told_apart(make_radio, session, bus):
    other = Peer(session.session_bus.address)
    other.own(MEDIA_PLAYER)
    radio = make_radio()
    radio.start()
    wait_until(lambda: [n for n in bus.names() if n.startswith(MEDIA_PLAYER + ".instance")], 5, "another name")
    other.close()
