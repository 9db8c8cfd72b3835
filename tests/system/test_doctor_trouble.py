# SPDX-License-Identifier: GPL-3.0-or-later
"""Each thing that can be broken, broken in the lab: `--doctor` names it, and what to do."""

import os

import pytest
from doctor_support import Doctor, doctor  # noqa: F401
from full_disk import wrapper
from gi.repository import GLib
from plain_user import plain_user  # noqa: F401
from radio import Radio
from zofralab.bus import Peer
from zofralab.desktop import StatusBar
from zofralab.sound import SoundServer


# The desktop.


def test_no_panel(doctor):
    problem = doctor.diagnose().assert_problem("panel", "no panel", "window", cure=["tray"])
    assert problem["details"]["mode"] == "window"


def test_no_panel_on_gnome_names_the_extension(doctor, radio):
    radio.environment["XDG_CURRENT_DESKTOP"] = "ubuntu:GNOME"
    doctor.diagnose().assert_problem("panel", "no panel", cure=["gnome-shell-extension-appindicator"])


class HostlessBar(StatusBar):
    """A watcher that no panel has joined."""

    def _asked(self, connection, sender, path, interface, name):
        if name == "IsStatusNotifierHostRegistered":
            return GLib.Variant("b", False)
        return super()._asked(connection, sender, path, interface, name)


def test_a_watcher_without_a_panel(doctor, bus):
    HostlessBar(bus).appear()
    doctor.diagnose().assert_problem("panel", "no panel shows", cure=["panel"])


def test_a_program_that_hangs(doctor, session, status_bar):
    frozen = Peer(session.session_bus.address)
    frozen.own("be.zofra.ZofraZofra")
    frozen.own("org.mpris.MediaPlayer2.zofrazofra")
    try:
        problem = doctor.diagnose().assert_problem("program", "does not answer", str(os.getpid()), cure=["kill"])
        assert problem["details"]["running"]
    finally:
        frozen.close()


# Sound.


def test_no_audio_server(doctor, radio, status_bar, tmp_path):
    server = SoundServer(str(tmp_path / "sound")).start()
    radio.environment["PULSE_SERVER"] = server.server
    doctor.diagnose().assert_fine()
    server.stop()
    doctor.diagnose().assert_problem("audio", "no audio server", server.server, cure=["pipewire", "pulseaudio"])


def test_an_audio_server_without_a_sink(doctor, radio, status_bar, tmp_path):
    server = SoundServer(str(tmp_path / "sound"), with_sink=False).start()
    try:
        radio.environment["PULSE_SERVER"] = server.server
        doctor.diagnose().assert_problem("audio", "no device", cure=["output"])
    finally:
        server.stop()


# Libraries.


@pytest.mark.parametrize("library, area, package", [("libmpv.so.2", "audio", "libmpv2"),
                                                    ("libcurl.so.4", "hosts", "libcurl4")])
def test_a_library_that_cannot_be_loaded(doctor, radio, status_bar, tmp_path, library, area, package):
    (tmp_path / library).touch()
    radio.environment["LD_LIBRARY_PATH"] = str(tmp_path)
    doctor.diagnose().assert_problem(area, "cannot be loaded", str(tmp_path / library), cure=[package])
    doctor.diagnose(discovery=True).assert_problem(area, "cannot be loaded", cure=[package])


# Services.

HOSTS = 21


# On a crowded machine a refusal can take as long as silence does.
@pytest.mark.parametrize("mode, texts", [("servfail", ["cannot be resolved", "name server does not answer"]),
                                         ("nxdomain", ["cannot be resolved", "name server does not answer"]),
                                         ("silent", ["name server does not answer"])])
def test_no_name_is_resolved(doctor, lab, status_bar, mode, texts):
    lab.dns.answer(mode=mode)
    found = doctor.diagnose()
    problems = found.problems()
    assert {check["area"] for check in problems} == {"stream", "live", "onair", "scraper"}, found.summary()
    assert len(problems) == HOSTS and found.status == 1
    assert all(any(text in check["text"] for text in texts) for check in problems), found.summary()
    assert all("name server" in check["cure"] for check in problems), found.summary()
    assert all(check["details"]["failed_at"] == "name" for check in problems)


def test_one_name_is_not_resolved(doctor, lab, status_bar):
    lab.dns.answer(name="onair.zofra.test", mode="nxdomain")
    problem = doctor.diagnose().assert_problem("onair", "onair.zofra.test", "name", cure=["name server"])
    assert problem["details"]["failed_at"] == "name"


@pytest.mark.parametrize("kind, words, cure", [("expired", "expired", "date"), ("foreign", "certificate", "authority"),
                                               ("self_signed", "certificate", "authority"),
                                               ("wrong_name", "certificate", "another host")])
def test_a_stream_with_a_bad_certificate(doctor, lab, status_bar, kind, words, cure):
    lab.icecast.fault(station="joe", codec="mp3", certificate=kind)
    problem = doctor.diagnose().assert_problem("stream", "joe-mp3.streams.zofra.test", words, cure=[cure])
    assert problem["details"]["failed_at"] == "tls"


@pytest.mark.parametrize("service, area", [("livefeed", "live"), ("onair", "onair"), ("scraper", "scraper")])
def test_a_service_with_a_bad_certificate(doctor, lab, status_bar, service, area):
    getattr(lab, service).certificate(kind="expired")
    doctor.diagnose().assert_problem(area, "certificate", "expired", cure=["date"])


def test_a_stream_that_is_off_the_air(doctor, lab, status_bar):
    lab.icecast.stop_mount(station="zofra", codec="aac")
    doctor.diagnose().assert_problem("stream", "404", cure=["off the air", "zofra_aac"])


def test_a_login_page_in_the_place_of_a_stream(doctor, lab, status_bar):
    lab.icecast.fault(station="zofra", codec="aac", kind="html")
    doctor.diagnose().assert_problem("stream", "web page", cure=["log in"])


@pytest.mark.parametrize("service, area, words", [("onair", "onair", "TLS"), ("livefeed", "live", "TLS")])
def test_a_service_that_takes_connections_and_says_nothing(doctor, lab, status_bar, service, area, words):
    getattr(lab, service).gate(mode="hold")
    problem = doctor.diagnose().assert_problem(area, "says nothing", words)
    assert problem["details"]["failed_at"] == "tls"


def test_a_stream_behind_redirects_is_fine(doctor, lab, status_bar):
    lab.icecast.fault(station="zofra", codec="aac", kind="redirect", hops=2)
    doctor.diagnose().assert_fine()


def test_no_socket_service(doctor, lab, status_bar):
    lab.livefeed.kill()
    doctor.diagnose().assert_problem("live", "refuses connections", cure=["down", "endpoints.ini"])


def test_a_socket_service_that_says_nothing(doctor, lab, status_bar):
    lab.livefeed.behave(withholdOpen=True)
    doctor.diagnose().assert_problem("live", "socket service says nothing", cure=["on-air service", "live_socket"])


def test_a_server_without_the_socket_service(doctor, lab, status_bar, tmp_path):
    path = tmp_path / "endpoints.ini"
    with open(lab.endpoints, encoding="utf-8") as file:
        path.write_text(file.read().replace("live_socket=socket.zofra.test", "live_socket=onair.zofra.test"))
    doctor.diagnose(endpoints=str(path)).assert_problem("live", "does not let us in", cure=["live_socket"])


@pytest.mark.parametrize("answer, words", [({"status": 503, "body": "no"}, "HTTP 503"), ({"body": "{}"}, "not what it should"),
                                           ({"close": True}, "without an answer")], ids=["503", "nonsense", "closed"])
def test_an_on_air_service_that_fails(doctor, lab, status_bar, answer, words):
    lab.onair.answer(**answer)
    doctor.diagnose().assert_problem("onair", words, cure=["service has a fault" if "not what" not in words else "on_air"])


def test_no_on_air_service(doctor, lab, status_bar):
    lab.onair.gate(mode="refuse")
    doctor.diagnose().assert_problem("onair", "refuses connections", cure=["down"])


def test_no_way_to_the_services(doctor, lab, status_bar):
    lab.net.deny(networks=["198.51.100.10/32"], how="prohibit")
    doctor.diagnose().assert_problem("stream", "this computer refuses", cure=["firewall"])


# The house.


def test_multicast_is_blocked_here(doctor, lab, status_bar):
    lab.household.others(mode="refused")
    lab.net.deny(networks=["239.255.255.250/32"])
    problem = doctor.diagnose(discovery=True).assert_problem("network", "home0", "multicast is blocked", cure=["239.255.255.250", "1900"])
    sends = {send["to"]: send["errno"] for send in problem["details"]["sends"]}
    assert sends["239.255.255.250"] != 0 and sends["10.77.0.255"] == 0


def test_multicast_is_blocked_on_the_way(doctor, lab, status_bar):
    lab.household.others(mode="refused")
    lab.household.ssdp(silent=True)
    found = doctor.diagnose(discovery=True)
    found.assert_problem("network", "multicast is blocked", "do not answer", cure=["incoming UDP", "IGMP"])
    rooms = found.only("players")["details"]["rooms"]
    assert len(rooms) == 7 and "asking every address" in found.only("players")["text"]
    assert {player["way"] for room in rooms for player in room["players"]} == {"scan"}


@pytest.mark.parametrize("how, area, words", [("drop", "network", "refuses the search"),
                                              ("prohibit", "players", "the local network is denied")])
def test_the_local_network_is_denied(doctor, lab, status_bar, how, area, words):
    lab.net.deny(networks=["10.77.0.0/24", "239.255.255.250/32"], how=how)
    found = doctor.diagnose(discovery=True)
    found.assert_problem(area, words, cure=["1900", "1400", "firewall"])
    assert found.only("players")["details"]["rooms"] == []


def test_no_network_at_all(doctor, lab, status_bar):
    lab.net.link(is_up=False)
    found = doctor.diagnose(discovery=True)
    assert {"network", "stream"} <= {check["area"] for check in found.problems()}
    assert "no network interface" in found.only("network")["text"]


def test_an_empty_house_is_no_problem(doctor, lab, status_bar):
    lab.household.others(mode="refused")
    lab.household.scene(scene="empty")
    found = doctor.diagnose(discovery=True)
    found.assert_fine()
    assert "none found" in found.only("players")["text"]


# Files.


@pytest.mark.parametrize("text, words", [
    ("[streams]\nzofra_aac=host with blanks\n", ["zofra_aac", "host with blanks"]),
    ("[metadata]\nlive_sockets=host\n", ["live_sockets", "unknown key"]),
    (None, ["no such file"])], ids=["value", "key", "missing"])
def test_a_wrong_endpoints_file(doctor, lab, status_bar, tmp_path, text, words):
    path = tmp_path / "wrong.ini"
    if text is not None:
        path.write_text(text)
    asked = len(lab.dns.queries())
    found = doctor.diagnose(endpoints=str(path))
    problem, = found.problems()
    assert found.status == 2 and problem["area"] == "endpoints", found.summary()
    assert all(word in problem["text"] for word in [str(path), *words]) and "endpoints.ini" in problem["cure"]
    assert found.only("hosts")["status"] == "skipped" and len(lab.dns.queries()) == asked, "nobody else is asked instead"
    assert str(path) in doctor.run(endpoints=str(path), json_text=False).stdout.replace("\n                   ", "")


@pytest.fixture
def users_doctor(plain_user, binary, lab, session, sound_server, display):  # noqa: F811
    """The doctor of an ordinary user, who has no bus here; only files are of interest."""
    return Doctor(Radio(plain_user.wrapper(binary), lab, session, sound_server, display, plain_user.home), lab)


def test_settings_that_cannot_be_read(users_doctor, plain_user):  # noqa: F811
    settings = users_doctor.radio.settings_path
    users_doctor.radio.write_settings(zofra_radio_volume="0.5")
    plain_user.own()
    os.chmod(settings, 0)
    check = users_doctor.diagnose("--headless").only("settings")
    assert check["status"] == "problem" and "cannot be read: Permission denied" in check["text"], check
    assert "chmod u+rw" in check["cure"]


@pytest.mark.parametrize("file_mode, folder_mode", [(0o444, 0o755), (0o644, 0o555)], ids=["file", "folder"])
def test_settings_that_cannot_be_written(users_doctor, plain_user, file_mode, folder_mode):  # noqa: F811
    settings = users_doctor.radio.settings_path
    users_doctor.radio.write_settings(zofra_radio_volume="0.5")
    plain_user.own()
    os.chmod(settings, file_mode)
    os.chmod(os.path.dirname(settings), folder_mode)
    check = users_doctor.diagnose("--headless").only("settings")
    assert check["status"] == "problem" and "cannot be written" in check["text"], check
    assert "chmod" in check["cure"]


def test_a_folder_in_the_place_of_the_settings(doctor, radio, status_bar):
    os.makedirs(radio.settings_path)
    doctor.diagnose().assert_problem("settings", "cannot be read", "Is a directory")


@pytest.mark.parametrize("content, words", [(b"\0\1\2\xff blob\n", "damaged"),
                                            (b"[General]\nzofra_radio_volume=7.5\n", "zofra_radio_volume = 7.5"),
                                            (b"[General]\nzofra_radio_volume=loud\n", "zofra_radio_volume = loud"),
                                            (b"[tray]\nmode=upside down\n", "tray/mode = upside down")])
def test_settings_that_make_no_sense(doctor, radio, status_bar, content, words):
    radio.write_settings()
    with open(radio.settings_path, "wb") as file:
        file.write(content)
    doctor.diagnose().assert_problem("settings", words)
    with open(radio.settings_path, "rb") as file:
        assert file.read() == content, "looking changes nothing"


def test_a_full_disk(doctor, radio, status_bar, tmp_path):
    (tmp_path / "zofrazofra.ini").write_text("[General]\nzofra_radio_volume=0.5\n")
    radio.binary = wrapper(radio.binary, os.path.dirname(radio.settings_path), str(tmp_path))
    doctor.diagnose().assert_problem("settings", "cannot be written", "no space left", cure=["room"])
