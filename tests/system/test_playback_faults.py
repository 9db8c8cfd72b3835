# SPDX-License-Identifier: GPL-3.0-or-later
"""Everything that can go wrong with a stream, at the real server, and what is heard then."""

import time

import pytest
from zofralab.household.systemlog import SystemLog
from zofralab.process import wait_until

FALLBACK = r"AAC Stream fehlgeschlagen – wechsle zu MP3 Fallback \(Zofra\)"
ZOFRA = {"station": "zofra", "codec": "aac"}
AAC, MP3 = ("zofra", "aac"), ("zofra", "mp3")


def playing(radio, ears):
    """Start playing and wait for the sound."""
    radio.start("--play")
    return ears.wait_for(AAC, 10, radio.started_at)


def open_connections(lab, codec="aac"):
    """Connections to Zofra's address that are still open."""
    return [c for c in lab.icecast.connections(station="zofra", codec=codec) if c["closed"] is None]


def refused(lab):
    lab.icecast.gate(**ZOFRA, mode="refuse")


def unknown_name(lab):
    lab.dns.answer(name="zofra-aac.streams.zofra.test", mode="nxdomain")


def name_server_fails(lab):
    lab.dns.answer(name="zofra-aac.streams.zofra.test", mode="servfail")


def gone(lab):
    lab.icecast.stop_mount(**ZOFRA)


def server_error(lab):
    lab.icecast.fault(**ZOFRA, kind="status", status=503)


def closes(lab):
    lab.icecast.fault(**ZOFRA, kind="empty")


def redirects_for_ever(lab):
    lab.icecast.fault(**ZOFRA, kind="loop")


def html(lab):
    lab.icecast.fault(**ZOFRA, kind="html")


@pytest.mark.parametrize("fault", [refused, unknown_name, name_server_fails, gone, server_error, closes,
                                   redirects_for_ever, html], ids=lambda f: f.__name__)
def test_a_stream_that_cannot_be_opened_has_failed(radio, ears, lab, fault):
    fault(lab)
    radio.start("--play")
    line = radio.wait_line(FALLBACK, 15)
    heard = ears.wait_for(MP3, 15, radio.started_at)
    assert line.at < heard + 0.05
    assert ears.heard(radio.started_at, ears.recorded_until()) == {MP3}
    radio.wait_status(playing=True, buffering=False)
    assert len(radio.lines_like(FALLBACK)) == 1


@pytest.mark.parametrize("certificate", ["foreign", "expired", "wrong_name", "self_signed"])
def test_a_wrong_certificate_is_refused_and_never_heard(radio, ears, lab, certificate):
    lab.icecast.fault(**ZOFRA, certificate=certificate)
    radio.start("--play")
    radio.wait_line(FALLBACK, 15)
    ears.wait_for(MP3, 15, radio.started_at)
    assert AAC not in ears.heard(radio.started_at, ears.recorded_until())
    assert lab.icecast.requests(**ZOFRA) == []  # not even asked


def test_the_foreign_certificate_would_have_played(radio, ears, lab):
    """The same way with the right certificate is heard, so that the tests above mean what they say."""
    lab.icecast.fault(**ZOFRA, certificate="good")
    radio.start("--play")
    ears.wait_for(AAC, 10, radio.started_at)
    assert len(lab.icecast.requests(**ZOFRA)) == 1


@pytest.mark.parametrize("hops", [1, 5])
def test_five_redirects_are_followed(radio, ears, lab, hops):
    lab.icecast.fault(**ZOFRA, kind="redirect", hops=hops, scheme="https")
    radio.start("--play")
    ears.wait_for(AAC, 10, radio.started_at)
    assert len(lab.icecast.requests(**ZOFRA)) == hops


def test_a_sixth_redirect_is_a_failure(radio, ears, lab):
    lab.icecast.fault(**ZOFRA, kind="redirect", hops=6, scheme="https")
    radio.start("--play")
    radio.wait_line(FALLBACK, 15)
    ears.wait_for(MP3, 15, radio.started_at)
    assert len(lab.icecast.requests(**ZOFRA)) == 6
    assert lab.icecast.connections(station="edge", codec="aac") == []


@pytest.mark.parametrize("hops", [1, 3])
def test_a_redirect_to_an_insecure_address_is_never_followed(radio, ears, lab, hops):
    lab.icecast.fault(**ZOFRA, kind="redirect", hops=hops, scheme="http")
    radio.start("--play")
    radio.wait_line(FALLBACK, 15)
    ears.wait_for(MP3, 15, radio.started_at)
    assert AAC not in ears.heard(radio.started_at, ears.recorded_until())
    assert len(lab.icecast.requests(**ZOFRA)) == hops
    assert lab.icecast.connections(station="edge", codec="aac") == []


def test_the_program_names_itself_to_the_station(radio, ears, lab):
    lab.icecast.fault(**ZOFRA, certificate="good")
    radio.start("--play")
    ears.wait_for(AAC, 10, radio.started_at)
    head = lab.icecast.requests(**ZOFRA)[0]
    assert head.startswith("GET /zofra.aac HTTP/1.")
    assert "\r\nHost: zofra-aac.streams.zofra.test\r\n" in head
    assert "\r\nUser-Agent: ZofraZofra/" in head


@pytest.mark.slow
@pytest.mark.parametrize("fault", ["silent", "hold"])
def test_a_server_that_never_answers_fails_in_bounded_time(radio, ears, lab, fault):
    if fault == "silent":
        lab.icecast.fault(**ZOFRA, kind="silent")
    else:
        lab.icecast.gate(**ZOFRA, mode="hold")
    radio.start("--play")
    radio.wait_line("state: buffering", 5)
    radio.wait_line(FALLBACK, 25)
    ears.wait_for(MP3, 10, radio.started_at)


@pytest.mark.slow
def test_a_stream_that_only_trickles_is_left_for_the_fallback(radio, ears, lab):
    lab.icecast.fault(**ZOFRA, kind="trickle", rate=2000)
    radio.start("--play")
    began = ears.wait_for(AAC, 10, radio.started_at)
    radio.wait_line("state: buffering", 20, began)
    radio.wait_line(FALLBACK, 45)
    ears.wait_for(MP3, 15, began)
    assert not open_connections(lab)


def test_garbage_is_no_sound_and_the_fallback_is_heard(radio, ears, lab):
    lab.icecast.fault(**ZOFRA, kind="garbage")
    radio.start("--play")
    ears.wait_for(MP3, 30, radio.started_at)
    radio.wait_line(FALLBACK)


@pytest.mark.slow
@pytest.mark.parametrize("played", [0, 60_000], ids=["from_the_start", "after_sound"])
@pytest.mark.parametrize("what", ["nonsense", "text", "picture", "unknown"])
def test_a_flood_that_is_no_sound_costs_no_memory_and_is_left_for_the_fallback(radio, ears, lab, what, played):
    lab.icecast.fault(**ZOFRA, kind="flood", what=what, bytes=played)
    radio.start("--play")
    radio.wait_line(FALLBACK, 30)
    ears.wait_for(MP3, 15, radio.started_at)
    received = max(c["sent"] for c in lab.icecast.connections(station="zofra", codec="aac"))
    assert received < 16_000_000, "what was read ahead, and what the network holds"
    # Below what any stream makes mpv take for a moment, and far below what the flood made it take.
    assert radio.peak_memory() < 100_000


def test_a_stall_of_five_seconds_is_bridged_or_shown_and_ends_on_the_same_stream(radio, ears, lab):
    began = playing(radio, ears)
    ears.wait_recorded(began + 2)
    lab.icecast.gate(**ZOFRA, mode="hold")
    held = time.monotonic()
    ears.wait_recorded(held + 5)
    lab.icecast.gate(**ZOFRA, mode="open")
    released = time.monotonic()
    ears.wait_for(AAC, 3, released)
    ears.wait_recorded(released + 4)
    assert ears.heard(began, released + 4) == {AAC}
    assert not radio.lines_like(FALLBACK)
    radio.wait_status(playing=True, buffering=False)
    # Whenever nothing was heard for long, that was shown as waiting.
    for silence in ears.silences(held, released + 3, shortest=0.6):
        assert radio.lines_like("state: buffering", silence.start - 0.5)


@pytest.mark.slow
def test_a_stall_of_twenty_seconds_is_noticed_shown_and_left_behind(radio, ears, lab):
    began = playing(radio, ears)
    ears.wait_recorded(began + 2)
    lab.icecast.gate(station="zofra", codec="*", mode="hold")
    held = time.monotonic()
    quiet = ears.wait_for(None, 10, held, seconds=0.5)
    assert radio.wait_line("state: buffering", 10, held).at < quiet + 10
    ears.wait_recorded(held + 20)
    lab.icecast.gate(station="zofra", codec="*", mode="open")
    released = time.monotonic()
    heard, _ = ears.wait_for_any((AAC, MP3), 12, released)
    assert heard - released <= 10
    radio.wait_status(playing=True, buffering=False)
    assert radio.status()["station"] == "zofra"


@pytest.mark.slow
def test_a_frozen_server_fails_over_and_one_that_comes_back_is_not_needed(radio, ears, lab):
    began = playing(radio, ears)
    ears.wait_recorded(began + 1)
    frozen = time.monotonic()
    lab.icecast.freeze(codec="aac")
    ears.wait_for(MP3, 30, frozen)
    radio.wait_line(FALLBACK)
    lab.icecast.thaw(codec="aac")
    assert not open_connections(lab)


def test_a_broken_connection_is_noticed_and_playing_goes_on(radio, ears, lab):
    began = playing(radio, ears)
    ears.wait_recorded(began + 1)
    broken = time.monotonic()
    lab.icecast.cut(**ZOFRA)
    ears.wait_for(MP3, 15, broken)
    radio.wait_line(FALLBACK)


@pytest.mark.slow
def test_servers_killed_and_back_are_heard_again_within_ten_seconds(radio, ears, lab):
    began = playing(radio, ears)
    ears.wait_recorded(began + 2)
    killed = time.monotonic()
    lab.icecast.kill(codec="*")
    radio.wait_line(FALLBACK, 15, killed)
    ears.wait_for(None, 15, killed, seconds=1.0)
    radio.wait_line("state: buffering", 10, killed)
    assert radio.status()["playing"]  # it still wants to
    ears.wait_recorded(killed + 20)
    attempts = [line for line in radio.lines_like(FALLBACK, killed)]
    assert len(attempts) < 15, "a dead host must not make a hot loop"
    lab.icecast.restart(codec="*")
    back = time.monotonic()
    assert ears.wait_for(MP3, 15, back) - back <= 11
    assert MP3 in ears.heard(back, ears.recorded_until())


@pytest.mark.slow
def test_a_dead_host_is_asked_ever_more_rarely(radio, lab):
    for codec in ("aac", "mp3"):
        lab.icecast.fault(station="zofra", codec=codec, kind="empty")
    radio.start("--play")
    radio.wait_line(FALLBACK, 10)
    deadline = radio.started_at + 25

    def attempts():
        return lab.icecast.connections(station="zofra", codec="mp3")
    while time.monotonic() < deadline:
        time.sleep(0.5)  # real time is what is measured
    times = [attempt["opened"] for attempt in attempts()]
    assert 4 <= len(times) <= 12, times
    gaps = [later - earlier for earlier, later in zip(times, times[1:])]
    assert max(gaps) <= 10.5 + 1.0
    assert max(gaps[-2:]) > 2.0 > min(gaps[:2])
    assert len(lab.icecast.connections(station="zofra", codec="aac")) <= 2


@pytest.mark.slow
def test_a_network_that_comes_back_is_used_at_once(radio, ears, lab):
    began = playing(radio, ears)
    ears.wait_recorded(began + 1)
    lab.net.link(is_up=False)
    down = time.monotonic()
    ears.wait_for(None, 15, down, seconds=1.0)
    ears.wait_recorded(down + 25)  # long enough for the attempts to have become rare
    lab.net.link(is_up=True)
    up = time.monotonic()
    heard, _ = ears.wait_for_any((AAC, MP3), 12, up)
    assert heard - up <= 10


def test_stopping_while_waiting_stays_stopped(radio, lab, bus, ears):
    lab.icecast.gate(station="zofra", codec="*", mode="refuse")
    radio.start("--play")
    radio.wait_line(FALLBACK, 15)
    radio.media_player(bus).call("Pause")
    radio.wait_status(playing=False, buffering=False)
    stopped = time.monotonic()
    lab.icecast.gate(station="zofra", codec="*", mode="open")
    ears.wait_recorded(stopped + 6)
    assert not ears.heard(stopped, stopped + 6)
    assert not radio.lines_like(FALLBACK, stopped + 0.5)


def test_without_the_library_for_requests_it_stays_and_says_why_once(make_radio, ears, lab, tmp_path):
    (tmp_path / "dev").mkdir()
    (tmp_path / "libcurl.so.4").touch()
    log = SystemLog(str(tmp_path / "dev"))
    try:
        radio = make_radio()
        radio.binary = log.wrapper(radio.binary)
        radio.environment["LD_LIBRARY_PATH"] = str(tmp_path)
        radio.start("--play")
        radio.wait_line(FALLBACK, 20)
        wait_until(lambda: [e for e in log.entries if "libcurl cannot be loaded" in e.text], 5, "a line in the log")
        ears.wait_recorded(time.monotonic() + 8)
        assert not ears.heard(radio.started_at, time.monotonic() - 1)
        assert [line.text.count("libcurl cannot be loaded") for line in radio.errors] == [1]
        assert radio.status()["buffering"]
        radio.quit()
    finally:
        log.close()


def test_without_a_sound_device_it_has_failed_and_the_system_log_says_why(make_radio, tmp_path):
    (tmp_path / "dev").mkdir()
    log = SystemLog(str(tmp_path / "dev"))
    try:
        radio = make_radio()
        radio.binary = log.wrapper(radio.binary)
        radio.environment["PULSE_SERVER"] = "unix:/nonexistent/pulse"
        radio.start("--play")
        radio.wait_line(FALLBACK, 20)
        wait_until(lambda: [e for e in log.entries if "audio device" in e.text], 5, "a line in the system log")
        radio.wait_status(playing=True, buffering=True)
        assert not radio.lines_like("state: playing")
    finally:
        log.close()
