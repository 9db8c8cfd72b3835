# SPDX-License-Identifier: GPL-3.0-or-later
"""The lab's live feed speaks SockJS, its on-air and scraper services answer in every form, its faults are faults."""

import json
import os
import subprocess
import time

import pytest
from labclients import curl, fetch
from zofralab.lab import program_environment
from zofralab.process import terminate, wait_until
from zofralab.stations import LIVE, STATIONS

FOLLOWER = os.path.join(os.path.dirname(os.path.abspath(__file__)), "live_follower.py")
SOCKET = "wss://socket.zofra.test/api/123/0123456789abcdef0123456789abcdef/websocket"
ON_AIR = "https://onair.zofra.test/056/qp/v3/onair?rpIds="
JOIN = {"action": "join", "id": 1, "sub": {"station": "qmusic_be", "entity": "plays", "action": "play"}, "backlog": 1}


class Follower:
    """A web-socket client that joins on every open frame and notes every message."""

    def __init__(self, lab, join):
        self._process = subprocess.Popen(
            [*lab.enter(), "/usr/bin/python3", "-B", FOLLOWER, lab.authority, SOCKET, json.dumps(join)],
            env=program_environment(lab), stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)

    def next(self):
        """The next message (or the close code) and when it came."""
        line = self._process.stdout.readline()
        assert line, "the connection is gone"
        return json.loads(line)

    def ended(self):
        """Whether the connection broke without a word."""
        return self._process.stdout.readline() == ""

    def stop(self):
        """Leave."""
        terminate(self._process)


@pytest.fixture
def follow(lab):
    started = []

    def start(join=None):
        started.append(Follower(lab, join or JOIN))
        return started[-1]
    yield start
    for follower in started:
        follower.stop()


def events(frame):
    """The play events of an array frame."""
    assert frame.startswith("a[")
    return [json.loads(json.loads(text)["data"]) for text in json.loads(frame[1:])]


def test_joining_gives_the_song_on_the_air_and_then_every_new_one(lab, follow):
    follower = follow()
    assert follower.next()[1] == "o"
    first = events(follower.next()[1])
    assert [(e["station"], e["data"]["title"]) for e in first] == [("qmusic_be", "Les Années d'été")]
    wait_until(lambda: lab.livefeed.sessions()[0]["received"], 30, "the join")
    sent = lab.livefeed.song(station="qmusic", artist="A & B", title='<b>"x"</b>', next_artist="C", next_title="D")
    at, frame = follower.next()
    assert sent["sent"] == 1 and 0 <= at - sent["at"] < 0.2
    assert events(frame)[0]["data"]["artist"]["name"] == "A & B"
    assert events(frame)[0]["data"]["next"]["title"] == "D"


def test_what_a_client_sends_is_recorded_byte_for_byte(lab, follow):
    follower = follow()
    follower.next()
    follower.next()
    session = lab.livefeed.sessions()[0]
    assert session["url"] == SOCKET.partition("socket.zofra.test")[2]
    assert [received["text"] for received in session["received"]] == [json.dumps([json.dumps(JOIN)])]
    assert session["stations"] == ["qmusic_be"]
    assert ["Host", "socket.zofra.test"] in session["headers"]


def test_songs_of_other_stations_are_not_heard(lab, follow):
    follower = follow()
    follower.next()
    follower.next()
    assert lab.livefeed.song(station="joe", artist="x", title="y")["sent"] == 0
    lab.livefeed.song(station="qmusic", artist="x", title="z")
    assert events(follower.next()[1])[0]["data"]["title"] == "z"


def test_heartbeats_come_as_frames_or_as_pings(lab, follow):
    lab.livefeed.behave(style="h", seconds=0.2)
    follower = follow()
    assert [follower.next()[1][:1] for _ in range(4)] == ["o", "a", "h", "h"]
    lab.livefeed.behave(style="ping", seconds=0.2)
    lab.livefeed.raw(text="x")  # in between, so that frames still under way are not counted
    while follower.next()[1] != "x":
        pass
    time.sleep(1)  # time for pings, which the library answers and does not show
    lab.livefeed.raw(text="y")
    assert follower.next()[1] == "y"


def test_the_open_frame_can_be_glued_to_the_answer_or_withheld(lab, follow):
    lab.livefeed.behave(glue=True)
    assert follow().next()[1] == "o"
    lab.livefeed.behave(glue=False, withholdOpen=True)
    follower = follow()
    wait_until(lambda: len(lab.livefeed.sessions()) == 2, 30, "the second session")
    lab.livefeed.raw(text="first")
    assert follower.next()[1] == "first"


def test_the_server_says_goodbye_closes_or_breaks(lab, follow):
    for command, last in (("goodbye", ['c[3000,"Go away!"]', 1000]), ("close", [1000])):
        follower = follow()
        follower.next()
        follower.next()
        lab.call("livefeed", command)
        assert [follower.next()[1] for _ in last] == last
    follower = follow()
    follower.next()
    follower.next()
    lab.livefeed.destroy()
    assert follower.ended()


def test_a_restarted_server_takes_new_clients_only(lab, follow):
    follower = follow()
    follower.next()
    follower.next()
    lab.livefeed.kill()
    assert follower.ended()
    assert curl(lab, "https://socket.zofra.test/api")[0] == 7
    lab.livefeed.restart()
    assert follow().next()[1] == "o"


@pytest.mark.parametrize("service, url", [("livefeed", "https://socket.zofra.test/api"), ("onair", ON_AIR + "1"),
                                          ("scraper", "https://scraper.zofra.test/be.joe")])
def test_services_show_foreign_certificates_on_demand(lab, service, url):
    assert curl(lab, url)[:2] == (0, 200)
    for kind in ("foreign", "expired", "wrong_name", "self_signed"):
        lab.call(service, "certificate", kind=kind)
        assert curl(lab, url)[0] == 60
    lab.call(service, "certificate", kind="good")
    assert curl(lab, url)[:2] == (0, 200)


@pytest.mark.parametrize("station", STATIONS, ids=lambda s: s.raw)
def test_the_on_air_service_knows_every_station(lab, station):
    document = json.loads(fetch(lab, ON_AIR + station.on_air_id, "-A", "Tester"))
    entries = document["results"][station.on_air_id]
    songs = [entry for entry in entries if entry["song"]]
    assert len(songs) == 1 and songs[0]["name"] and songs[0]["artistName"]
    assert float(songs[0]["startTime"]) < time.time() < float(songs[0]["stopTime"])
    request = lab.onair.requests()[-1]
    assert request["station"] == station.raw and "User-Agent: Tester\r\n" in request["head"]


def test_the_on_air_service_has_many_forms(lab):
    def answer(form):
        lab.onair.answer(station="bel_rtl", form=form)
        return fetch(lab, ON_AIR + "6")
    assert isinstance(json.loads(answer("number"))["results"]["6"][-1]["startTime"], int)
    assert answer("jsonp").startswith("callback({") and answer("named_jsonp").rstrip().endswith(");")
    assert not any(entry["song"] for entry in json.loads(answer("programme"))["results"]["6"])
    assert json.loads(answer("empty"))["results"] == {}
    assert json.loads(answer("error"))["results"] is None
    assert len(json.loads(answer("two"))["results"]["6"]) == 2


def test_the_scraper_has_a_page_for_every_live_station(lab):
    for station in LIVE:
        assert '"title" : "' in fetch(lab, f"https://scraper.zofra.test{station.scraper_path}")
    lab.scraper.answer(form="tracks")
    assert '"track" : "' in fetch(lab, "https://scraper.zofra.test/be.joe")
    assert curl(lab, "https://scraper.zofra.test/be.nobody")[1] == 404


@pytest.mark.parametrize("how, expected", [
    ({"status": 500}, (0, 500)), ({"hang": True}, (28, 0)), ({"hang": "headers"}, (28, 200)),
    ({"hang": "body"}, (28, 200)), ({"close": True}, (52, 0)), ({"reset": True}, (56, 0)), ({"short": True}, (18, 200)),
    ({"body": "nonsense"}, (0, 200)), ({"redirect": 3}, (0, 200)),
    ({"redirect": "http://onair.zofra.test/"}, (7, 302))],
    ids=str)
def test_http_services_misbehave_on_demand(lab, how, expected):
    lab.onair.answer(**how)
    assert curl(lab, ON_AIR + "1", "-L", seconds=3)[:2] == expected


def test_answers_can_be_slow_huge_or_different_each_time(lab):
    lab.onair.queue(answers=[{"delay": 0.5}, {"huge": 3_000_000}, {"status": 503}])
    results = [curl(lab, ON_AIR + "1") for _ in range(4)]
    assert results[0][4] >= 0.5 and results[1][2] == 3_000_000 and results[2][1] == 503 and results[3][1] == 200
