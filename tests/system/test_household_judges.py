# SPDX-License-Identifier: GPL-3.0-or-later
"""Judges that are not ours find the lab's players to be real ones: GSSDP, and two controllers from npm.

The controllers are not installed by default, and an automatic build need not have them:
    npm ci --ignore-scripts --prefix tests/tools/controllers
"""

import json
import os
import shutil
import subprocess

import pytest

from household_support import (  # noqa: F401
    HERE, MULTICAST, ROOT, SEARCH, ZONE_PLAYER, house, household_lab, household_stranger,
)
from zofralab.lab import PYTHON
from zofralab.process import clean_environment, terminate

GSSDP = os.path.join(HERE, "household_gssdp.py")
CONTROLLERS = os.path.join(ROOT, "tests", "tools", "controllers")
KITCHEN = "10.77.0.15"
RADIO = "x-rincon-mp3radio://10.77.0.2:8000/radio"


def inside(lab, *command, timeout=60):
    """Runs a command in the program's namespace and returns its output, read as JSON."""
    done = subprocess.run([*lab.enter(), *command], capture_output=True, text=True, timeout=timeout, check=False,
                          env=clean_environment())
    assert done.returncode == 0, done.stderr[-2000:]
    return json.loads(done.stdout)


@pytest.fixture
def published(house, household_lab):
    """A stranger's player in a house that is empty otherwise, offered by GSSDP."""
    # First: GSSDP keeps to one of the addresses that the interface has.
    house.scene(scene="empty")
    enter = ["nsenter", "--target", str(household_lab.info["pid"]), "--net"]
    if os.geteuid() != 0:
        enter += ["--user", "--preserve-credentials"]
    command = [*enter, "--", PYTHON, GSSDP, "publish", "house0", ZONE_PLAYER,
               f"uuid:RINCON_STRICT::{ZONE_PLAYER}", "http://10.77.0.1:1400/xml/device_description.xml"]
    child = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                             env=clean_environment())
    assert child.stdout.readline() == "ready\n"
    yield
    child.stdin.close()
    child.stdout.close()
    terminate(child)


def test_gssdp_answers_the_search_and_no_sloppy_one(household_stranger, published):
    heard = household_stranger.search(SEARCH, [MULTICAST], 3.0)
    assert len(heard) == 1 and f"USN: uuid:RINCON_STRICT::{ZONE_PLAYER}\r\n".lower() in heard[0][0].lower()
    for sloppy in (SEARCH.replace('"', ""), SEARCH.replace("MX: 1\r\n", "")):
        assert household_stranger.search(sloppy, [MULTICAST], 2.0) == []


def test_gssdp_finds_every_player(house, household_lab):
    found = inside(household_lab, PYTHON, GSSDP, "browse", "home0", ZONE_PLAYER, "4")
    expected = {f"uuid:{p['uuid']}::{ZONE_PLAYER}": [f"http://{p['ip']}:1400/xml/device_description.xml"]
                for p in house.players()}
    assert found == expected
    assert all(s["well_formed"] for s in house.searches()) and house.searches()


@pytest.fixture(scope="module")
def node():
    """The interpreter, when the controllers are there."""
    if not os.path.isdir(os.path.join(CONTROLLERS, "node_modules", "sonos")) or not shutil.which("node"):
        pytest.skip("not run: the controllers are not installed (npm ci --ignore-scripts in tests/tools/controllers)")
    return shutil.which("node")


def test_a_controller_that_mirrors_the_household_takes_it_for_real(house, household_lab, household_stranger, node):
    # It asks whoever answers first for the household, and a companion knows of none.
    house.switch(player="10.77.0.22", ssdp="silent")
    seen = inside(household_lab, node, os.path.join(CONTROLLERS, "judge-manager.js"), KITCHEN, RADIO, "37")
    players = {p["ip"]: p for p in house.players()}
    first = players[KITCHEN]["household"]
    told = {d["host"]: d for d in seen["devices"]}
    # Satellites are not told to controllers as rooms; the hidden half of the pair is.
    assert sorted(told) == ["10.77.0.11", "10.77.0.15", "10.77.0.16", "10.77.0.17", "10.77.0.18"]
    for ip, device in told.items():
        assert (device["uuid"], device["name"], device["zone"]) == (players[ip]["uuid"], *[players[ip]["room"]] * 2)
        assert device["coordinator"] == players[ip]["coordinator"]
        assert (device["volume"], device["state"]) == (25, "STOPPED")
    assert told[KITCHEN]["group"] == told["10.77.0.16"]["group"] == "Kitchen + 1"
    assert seen["played"] == {
        "started": True, "uri": RADIO, "playing": "PLAYING", "paused": True, "after": "PAUSED_PLAYBACK",
        "refusal": {"code": 701, "text": seen["played"]["refusal"]["text"]},
        "told": ["STOPPED", "TRANSITIONING", "PLAYING", "PAUSED_PLAYBACK"],
    }
    assert players[KITCHEN]["volume"] == 37 and players[KITCHEN]["stream"]["bytes_total"] > 0
    households = [{p["uuid"] for p in players.values() if p["household"] == h}
                  for h in (first, players["10.77.0.20"]["household"])]
    assert seen["discovered"] and any(set(seen["discovered"]) <= one for one in households)


def test_a_controller_of_single_players_takes_them_for_real(house, household_lab, household_stranger, node):
    before = {p["ip"]: p for p in house.players()}
    seen = inside(household_lab, node, os.path.join(CONTROLLERS, "judge-device.js"), KITCHEN, RADIO, "41")
    after = {p["ip"]: p for p in house.players()}
    # It leaves out what does not call itself one of its own make.
    assert seen["discovered"] == sorted(ip for ip in before if ip != "10.77.0.22")
    assert seen["description"]["roomName"] == seen["attributes"]["CurrentZoneName"] == "Kitchen"
    assert seen["description"]["UDN"] == f"uuid:{before[KITCHEN]['uuid']}"
    assert seen["zone"]["IPAddress"] == KITCHEN
    assert (seen["volumeBefore"], seen["volumeAfter"], seen["muted"]) == (25, 41, False)
    groups = {g["coordinator"]: sorted(g["members"]) for g in seen["groups"]}
    assert groups == {
        before["10.77.0.11"]["uuid"]: ["Living Room"],
        before[KITCHEN]["uuid"]: ["Dining Room", "Kitchen"],
        before["10.77.0.17"]["uuid"]: ["Office", "Office"],
    }
    played = seen["played"]
    assert (played["started"], played["playing"], played["uri"]) == (True, "playing", RADIO)
    assert (played["paused"], played["after"]) == (True, "paused") and "701" in played["refusal"]
    assert seen["groupsAfter"] == 4
    assert after[KITCHEN]["volume"] == 41 and after[KITCHEN]["mute"]
    assert len(after["10.77.0.16"]["group"]) == 1
