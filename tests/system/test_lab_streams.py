# SPDX-License-Identifier: GPL-3.0-or-later
"""The lab's broadcaster is what it claims to be, and each of its faults is one."""

import subprocess
import time

import pytest
from labclients import curl, start_mpv, stream_url
from zofralab import hearing
from zofralab.hearing import RATE, WINDOW
from zofralab.process import cpu_seconds, terminate, wait_until
from zofralab.stations import TONES

ALL = [pytest.param(raw, codec, id=f"{raw}-{codec}") for raw, codec in TONES]


@pytest.fixture
def listener(lab, sound_server):
    """Start mpv on a stream; ended with the test."""
    started = []

    def start(raw, codec, *options):
        started.append(start_mpv(lab, sound_server, stream_url(raw, codec), *options))
        return started[-1]
    yield start
    for process in started:
        terminate(process)


def decode(path):
    done = subprocess.run(["ffmpeg", "-v", "error", "-nostdin", "-i", path, "-f", "s16le", "-ac", "1", "-ar", str(RATE),
                           "-"], capture_output=True, check=True)
    return hearing.samples_of(done.stdout)


@pytest.mark.parametrize("raw, codec", ALL)
def test_every_stream_decodes_to_its_own_tone_without_a_seam(lab, tmp_path, raw, codec):
    target = str(tmp_path / "stream")
    status, code, size, _, _ = curl(lab, stream_url(raw, codec), seconds=1.5, output=target)
    assert (status, code) == (28, 200)  # it would have gone on
    assert size > 50_000
    samples = decode(target)
    # Without the very end, where the last frame was cut off.
    windows = [hearing.listen(samples[at:at + WINDOW]) for at in range(RATE // 2, len(samples) - RATE // 4, WINDOW)]
    assert len(windows) > 40  # two seconds and more: at least one seam is in it
    assert {what for what, _ in windows} == {(raw, codec)}
    loudness = [rms for _, rms in windows]
    assert min(loudness) > 0.95 * max(loudness)


def test_silence_and_noise_are_told_from_tones():
    assert hearing.listen([0] * WINDOW)[0] is None
    noise = [((i * 7919 + i * i * 104729) % 20011) - 10005 for i in range(WINDOW)]
    assert hearing.listen(noise)[0] == "noise"


def test_mpv_is_heard_at_the_sink_and_its_end_as_well(lab, ears, listener):
    began = time.monotonic()
    process = listener("qmusic", "aac")
    ears.wait_for(("qmusic", "aac"), 30, began)
    terminate(process)
    ended = time.monotonic()
    assert ears.wait_for(None, 30, ended) - ended < 10


def test_half_the_volume_is_half_the_amplitude(ears, listener):
    loudness = []
    for percent in (100, 50):
        # mpv's scale is cubic.
        process = listener("joe", "mp3", f"--volume={100 * (percent / 100) ** (1 / 3)}")
        began = ears.wait_for(("joe", "mp3"), 30)
        loudness.append(ears.loudness(began + 0.5, began + 1.5))
        terminate(process)
        ears.wait_for(None, 30)
    assert loudness[1] / loudness[0] == pytest.approx(0.5, abs=0.01)


def test_a_mount_that_wears_another_tone_is_heard_after_the_burst(lab, ears, listener):
    listener("zofra", "aac")
    ears.wait_for(("zofra", "aac"), 30)
    lab.icecast.wear(station="zofra", codec="aac", of_station="joe", of_codec="aac")
    changed = time.monotonic()
    assert ears.wait_for(("joe", "aac"), 30, changed) - changed > 3.0


def test_a_stopped_mount_ends_its_listeners_and_is_gone_until_it_starts_again(lab, listener):
    process = listener("zofra", "aac")
    wait_until(lambda: lab.icecast.listeners()["aac"]["/zofra.aac"] == 1, 5, "a listener")
    lab.icecast.stop_mount(station="zofra", codec="aac")
    assert process.wait(10) is not None
    assert curl(lab, stream_url("zofra", "aac"))[1] == 404
    assert curl(lab, stream_url("qmusic", "aac"), seconds=3)[1] == 200
    lab.icecast.start_mount(station="zofra", codec="aac")
    assert curl(lab, stream_url("zofra", "aac"), seconds=3)[1] == 200


def test_a_held_network_is_a_silence_that_ends_where_it_began(lab, ears, listener):
    listener("zofra", "aac")
    ears.wait_for(("zofra", "aac"), 30)
    lab.icecast.gate(station="zofra", codec="aac", mode="hold")
    held = time.monotonic()
    assert ears.wait_for(None, 10, held) - held < 6
    lab.icecast.gate(station="zofra", codec="aac", mode="open")
    released = time.monotonic()
    assert ears.wait_for(("zofra", "aac"), 3, released) - released < 1


@pytest.mark.parametrize("kill, restart", [("kill", "restart"), ("freeze", "thaw")])
def test_a_server_that_crashed_refuses_and_one_that_hangs_is_silent(lab, kill, restart):
    lab.call("icecast", kill, codec="aac")
    assert curl(lab, stream_url("joe", "aac"), seconds=3)[0] == (7 if kill == "kill" else 28)
    assert curl(lab, stream_url("joe", "mp3"), seconds=3)[1] == 200
    lab.call("icecast", restart, codec="aac")
    assert curl(lab, stream_url("joe", "aac"), seconds=3)[1] == 200


def test_a_refusing_gate_resets_present_connections(lab):
    process = subprocess.Popen([*lab.enter(), "curl", "-sS", "--cacert", lab.authority, "-o", "/dev/null",
                                stream_url("zofra", "mp3")], stderr=subprocess.PIPE, text=True)
    wait_until(lambda: [c for c in lab.icecast.connections(station="zofra", codec="mp3") if c["sent"] > 1000], 5,
               "a connection")
    lab.icecast.gate(station="zofra", codec="mp3", mode="refuse")
    _, errors = process.communicate(timeout=5)
    assert process.returncode in (35, 56) and errors
    assert curl(lab, stream_url("zofra", "mp3"))[0] == 7


@pytest.mark.parametrize("kind, expected", [
    ("html", (0, 200)), ("status", (0, 503)), ("empty", (52, 0)), ("silent", (28, 0)), ("garbage", (28, 200)),
    ("healthy", (28, 200))])
def test_every_wrong_answer_is_given(lab, kind, expected):
    lab.icecast.fault(station="zofra", codec="aac", kind=kind)
    assert curl(lab, stream_url("zofra", "aac"), seconds=3)[:2] == expected
    assert len(lab.icecast.requests(station="zofra", codec="aac")) == 1


@pytest.mark.parametrize("hops, scheme", [(1, "https"), (5, "https"), (1, "http")])
def test_redirects_lead_to_the_stream_after_so_many_hops(lab, hops, scheme):
    lab.icecast.fault(station="zofra", codec="aac", kind="redirect", hops=hops, scheme=scheme)
    status, code, size, redirects, _ = curl(lab, stream_url("zofra", "aac"), "-L", seconds=3)
    assert (status, code, redirects) == (28, 200, hops) and size > 10_000


@pytest.mark.parametrize("certificate, refused", [("good", False), ("foreign", True), ("expired", True),
                                                  ("wrong_name", True), ("self_signed", True)])
def test_wrong_certificates_are_wrong_and_would_play_for_the_careless(lab, certificate, refused):
    lab.icecast.fault(station="zofra", codec="aac", certificate=certificate)
    assert curl(lab, stream_url("zofra", "aac"), seconds=3)[0] == (60 if refused else 28)
    assert curl(lab, stream_url("zofra", "aac"), "-k", seconds=3)[:2] == (28, 200)


def test_names_can_be_unknown_or_unanswered(lab):
    lab.dns.answer(name="zofra-aac.streams.zofra.test", mode="nxdomain")
    assert curl(lab, stream_url("zofra", "aac"))[0] == 6
    assert curl(lab, stream_url("zofra", "mp3"), seconds=3)[1] == 200
    lab.dns.answer(mode="silent")
    assert curl(lab, stream_url("zofra", "mp3"), seconds=3)[0] == 28


def test_a_reset_lab_is_healthy_whatever_was_broken(lab):
    lab.icecast.kill(codec="aac")
    lab.icecast.freeze(codec="mp3")
    lab.icecast.gate(station="*", codec="*", mode="hold")
    lab.icecast.fault(station="joe", codec="*", kind="html")
    lab.icecast.wear(station="qmusic", codec="mp3", of_station="joe", of_codec="mp3")
    lab.dns.answer(mode="silent")
    lab.net.deny(networks=["198.51.100.0/24"])
    lab.net.link(is_up=False)
    lab.reset()
    assert all(curl(lab, stream_url(raw, codec), seconds=0.4)[1] == 200 for raw, codec in TONES)
    assert len(lab.icecast.connections(station="*", codec="*")) == len(TONES)


@pytest.mark.measured
def test_all_feeds_together_take_less_than_a_tenth_of_a_core(lab):
    pids = lab.icecast.pids()
    before, began = {name: cpu_seconds(pid) for name, pid in pids.items()}, time.monotonic()
    time.sleep(10)  # the length of the measurement
    spent = {name: (cpu_seconds(pid) - before[name]) / (time.monotonic() - began) for name, pid in pids.items()}
    print("share of a core:", {name: f"{share:.4f}" for name, share in spent.items()}, f"{sum(spent.values()):.4f}")
    assert sum(spent.values()) < 0.1
