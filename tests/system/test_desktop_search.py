# SPDX-License-Identifier: GPL-3.0-or-later
"""Stations as desktops find them: by their searches, and by the actions of the desktop file."""

from radio import NAME

SEARCH = (NAME, "/be/zofra/ZofraZofra/search")
SHELL = (*SEARCH, "org.gnome.Shell.SearchProvider2")
RUNNER = (*SEARCH, "org.kde.krunner1")
APPLICATION = (NAME, "/be/zofra/ZofraZofra", "org.freedesktop.Application")


def test_a_station_is_found_by_name_and_played(radio, bus, ears):
    radio.start()
    assert bus.call(*SHELL, "GetInitialResultSet", "(as)", (["sud", "RADIO"],))[0] == ["sud_radio_belgique",
                                                                                      "sud_radio_hainaut"]
    described = bus.call(*SHELL, "GetResultMetas", "(as)", (["qmusic"],))[0]
    assert [(one["id"], one["name"], one["description"]) for one in described] == [("qmusic", "Qmusic", "Hits & Pop")]
    bus.call(*SHELL, "ActivateResult", "(sasu)", ("qmusic", ["qmu"], 0))
    radio.wait_status(station="qmusic", playing=True)
    ears.wait_for(("qmusic", "aac"), 15)


def test_the_runner_finds_and_plays_it_too(radio, bus):
    radio.start()
    matches = bus.call(*RUNNER, "Match", "(s)", ("joe",))[0]
    assert [(one[0], one[1]) for one in matches] == [("joe", "JOE")]
    bus.call(*RUNNER, "Run", "(ss)", ("joe", ""))
    radio.wait_status(station="joe", playing=True)


def test_an_action_of_the_desktop_file_plays_its_station(radio, bus):
    radio.start()
    bus.call(*APPLICATION, "ActivateAction", "(sava{sv})", ("play-zofra-class-x", [], {}))
    radio.wait_status(station="zofra_class_x", playing=True)
    bus.call(*APPLICATION, "ActivateAction", "(sava{sv})", ("play-nonsense", [], {}))
    assert radio.status()["station"] == "zofra_class_x"
