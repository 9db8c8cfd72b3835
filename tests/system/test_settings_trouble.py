# SPDX-License-Identifier: GPL-3.0-or-later
"""A settings file that is damaged, read-only or on a full disk: nothing stored is lost, and the radio goes on."""

import os
import signal

import pytest
from full_disk import wrapper
from plain_user import plain_user  # noqa: F401
from radio import Radio
from zofralab.process import wait_until

DAMAGED = bytes(range(256)) + b"\n[General]\nzofra_radio_volume=0.5\n\xff\xfe\nmine=1\n"


def read(path):
    """The bytes of a file."""
    with open(path, "rb") as file:
        return file.read()


def write(radio, content):
    """Settings that are there before it starts, byte for byte."""
    radio.write_settings()
    with open(radio.settings_path, "wb") as file:
        file.write(content)


def told(radio):
    """What it said about its settings."""
    return [line.text for line in radio.errors if "etting" in line.text]


def test_a_damaged_file_is_kept_as_a_copy_before_it_is_written_anew(radio, ears):
    write(radio, DAMAGED)
    radio.start()
    assert radio.status()["volume"] == 0.5, "what can be read counts"
    assert read(radio.settings_path) == DAMAGED, "reading changes nothing"
    since = radio.started_at
    assert radio.ask("--play", "joe").returncode == 0
    ears.wait_for(("joe", "aac"), 30, since)
    copy = radio.settings_path + ".damaged"
    wait_until(lambda: b"joe" in read(radio.settings_path), 30, "the choice in the file")
    assert read(copy) == DAMAGED
    assert read(radio.settings_path) == b"[General]\nzofra_radio_volume=0.5\nmine=1\nzofra_selected_station=joe\n"
    assert radio.quit() == 0
    assert told(radio) == [f"zofrazofra: Settings in {radio.settings_path} were damaged: what was there is kept in {copy}"]


@pytest.mark.parametrize("text", [b"7.5", b"nan", b"1e400", b"loud", b"-3", b"\x00\xff\x10",
                                  b"@Variant(\\0\\0\\0\\x87?\\0\\0\\0)"],
                         ids=["too-loud", "nan", "huge", "word", "negative", "bytes", "blob"])
def test_an_absurd_volume_is_the_default(radio, status_bar, bus, text):
    write(radio, b"[General]\nzofra_radio_volume=" + text + b"\n")
    radio.start("--play", headless=False)
    assert radio.status()["volume"] == 0.8
    item = status_bar.wait_for_item()
    labels = [entry.label for entry in item.menu.look().children]
    assert "Volume (80 %)" in labels
    radio.wait_status(30, playing=True, buffering=False)
    media = radio.media_player(bus)
    assert media.volume == pytest.approx(0.8)
    media.volume = 0.25
    radio.wait_status(30, volume=0.25)
    wait_until(lambda: radio.setting("zofra_radio_volume") == "0.25", 30, "the new volume in the file")
    assert radio.quit() == 0


@pytest.mark.parametrize("content", [b"[General]\nzofra_selected_station=no_such\napp_language=xx\n[tray]\nmode=sideways\n",
                                     b"[General\n=\n]\n[]\n[[[\n====\n", b"\n" * 10000, b"x" * 100_000],
                         ids=["unknown-values", "syntax", "blank-lines", "one-long-line"])
def test_what_makes_no_sense_counts_as_nothing(radio, content):
    write(radio, content)
    radio.start()
    status = radio.status()
    assert (status["station"], status["volume"], status["language"]) == ("zofra", 0.8, "en")
    assert radio.ask("--play", "joe").returncode == 0
    wait_until(lambda: b"zofra_selected_station=joe" in read(radio.settings_path), 30, "the choice in the file")
    assert all(line in read(radio.settings_path) for line in content.splitlines()
               if not line.startswith(b"zofra_selected_station"))
    assert radio.quit() == 0 and told(radio) == []


def replace(path, kind):
    """Something in the place of a file that is none."""
    os.makedirs(os.path.dirname(path), exist_ok=True)
    if kind == "pipe":
        os.mkfifo(path)
    elif kind == "device":
        os.symlink("/dev/zero", path)
    else:
        os.mkdir(path)


@pytest.mark.parametrize("kind", ["pipe", "device", "folder"])
def test_only_a_file_is_read_as_settings(radio, kind):
    replace(radio.settings_path, kind)
    radio.start()
    assert radio.ask("--play", "joe").returncode == 0
    radio.wait_status(30, station="joe")
    said = "Is a directory" if kind == "folder" else "Not a regular file"
    wait_until(lambda: told(radio) == [f"zofrazofra: Settings cannot be read from {radio.settings_path}: {said}; "
                                       "nothing stored there is used or changed"], 30, "one line about the settings")
    radio.process.send_signal(signal.SIGTERM)
    assert radio.wait_end(30) == 0


@pytest.mark.parametrize("kind", ["pipe", "device", "folder"])
def test_only_a_file_is_read_as_endpoints(radio, tmp_path, kind):
    path = str(tmp_path / "endpoints.ini")
    replace(path, kind)
    radio.start(endpoints=path, wait=False)
    assert radio.wait_end(20) == 2
    said = "Is a directory" if kind == "folder" else "Not a regular file"
    assert [line.text for line in radio.errors] == [f"zofrazofra: {path}: cannot be read: {said}"]


def test_a_file_grown_beyond_reason_keeps_its_other_keys(radio):
    rooms = b'cached_sonos_rooms=["' + b"x" * (23 << 20) + b'"]\n'
    write(radio, b"[General]\nzofra_selected_station=joe\n" + rooms + b"zofra_radio_volume=0.25\napp_language=nl\n")
    radio.start()
    status = radio.status()
    assert (status["station"], status["volume"], status["language"]) == ("joe", 0.25, "nl")
    assert radio.ask("--play", "qmusic").returncode == 0
    wait_until(lambda: len(read(radio.settings_path)) < 1000, 30, "the file without the endless line")
    assert read(radio.settings_path) == (b"[General]\nzofra_selected_station=qmusic\nzofra_radio_volume=0.25\n"
                                         b"app_language=nl\n")
    assert radio.quit() == 0


@pytest.fixture
def users_radio(plain_user, binary, lab, session, sound_server, display, radios):  # noqa: F811
    """The program of an ordinary user, who has no bus here."""
    os.chmod(os.path.dirname(sound_server.socket), 0o711)
    radio = Radio(plain_user.wrapper(binary), lab, session, sound_server, display, plain_user.home)
    for name in ("DBUS_SESSION_BUS_ADDRESS", "DBUS_SYSTEM_BUS_ADDRESS", "XDG_RUNTIME_DIR"):
        radio.environment.pop(name)
    radios.append(radio)
    return radio


@pytest.mark.parametrize("mode, folder_mode, read_too", [(0o444, 0o755, True), (0o644, 0o555, True), (0o444, 0o555, True),
                                                         (0o000, 0o755, False)],
                         ids=["file", "folder", "both", "unreadable"])
def test_what_must_not_be_written_stays_as_it_is(users_radio, plain_user, ears, mode, folder_mode, read_too):  # noqa: F811
    radio = users_radio
    radio.write_settings(zofra_radio_volume="0.5", zofra_selected_station="qmusic")
    before = read(radio.settings_path)
    folder = os.path.dirname(radio.settings_path)
    plain_user.own()
    os.chmod(radio.settings_path, mode)
    os.chmod(folder, folder_mode)
    radio.start("--play", "joe", wait=False)
    radio.wait_line("state: playing", 30)
    ears.wait_for(("joe", "aac"), 30, radio.started_at)
    radio.wait_line("volume: 50 %" if read_too else "volume: 80 %", 30)
    wait_until(lambda: told(radio), 30, "a line about the settings")
    radio.process.send_signal(signal.SIGTERM)
    assert radio.wait_end(30) == 0
    assert os.stat(radio.settings_path).st_mode & 0o777 == mode
    os.chmod(radio.settings_path, 0o644)
    assert read(radio.settings_path) == before
    assert sorted(os.listdir(folder)) in (["zofrazofra.ini"], [".zofrazofra.ini.lock", "zofrazofra.ini"])
    first, *others, last = told(radio)
    assert radio.settings_path in first and ("cannot be written" if read_too else "cannot be read") in first
    assert others == [] and last == "zofrazofra: not every setting could be kept"


def test_a_full_disk_loses_nothing_and_stops_nothing(make_radio, binary, tmp_path, ears):
    radio = make_radio()
    before = b"[General]\nzofra_radio_volume=0.5\nmine=1\n"
    (tmp_path / "zofrazofra.ini").write_bytes(before)
    radio.binary = wrapper(binary, os.path.dirname(radio.settings_path), str(tmp_path))
    radio.start("--play", "joe")
    inside = f"/proc/{radio.pid}/root{radio.settings_path}"
    ears.wait_for(("joe", "aac"), 30, radio.started_at)
    assert (radio.status()["volume"], radio.status()["station"]) == (0.5, "joe")
    wait_until(lambda: told(radio), 30, "a line about the settings")
    assert radio.ask("--play", "qmusic").returncode == 0
    radio.wait_status(30, station="qmusic")
    ears.wait_for(("qmusic", "aac"), 30)
    assert read(inside) == before
    assert told(radio) == [f"zofrazofra: Settings cannot be written to {radio.settings_path}: No space left on device; "
                           "changes last until the program ends"]
    os.remove(os.path.join(os.path.dirname(inside), "filler"))
    assert radio.ask("--play", "zofra").returncode == 0
    wait_until(lambda: read(inside) == before + b"zofra_selected_station=zofra\n", 30, "the choice in the file")
    assert radio.quit() == 0
