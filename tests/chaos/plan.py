# SPDX-License-Identifier: GPL-3.0-or-later
"""The list of faults that a seed stands for: the same seed gives the same list, on every machine.

A step is a dictionary {"n", "fault", "with", "then"}: its number, the name of a method of `faults.Faults`, the arguments,
and the seconds of rest behind it. Everything random is decided here; nothing depends on what a run sees, so that any part of
a list can be played again.
"""

import json
import random

LIVE = ("zofra", "qmusic", "joe", "zofra_class_x")
STATIONS = (*LIVE, "radio_contact", "bel_rtl", "inside_radio", "sud_radio_belgique", "sud_radio_hainaut")
CODECS = ("aac", "mp3", "*")
CERTIFICATES = ("foreign", "expired", "wrong_name", "self_signed")
#: Everything is put right after so many faults (one of these), and has to be as good as new.
FAULTS_BETWEEN_HEALTH = (5, 12, 30)
#: One rest in so many is long enough for buffers to run dry and for patience to end.
LONG_RESTS = 12


def _stream(rng):
    """Which streams: mostly the station that is playing, whichever that is then."""
    return {"station": rng.choice(("current", "current", "current", "*")), "codec": rng.choice(CODECS)}


#: name: (weight, arguments from a random generator)
FAULTS = {
    # Streams.
    "stream_gate": (6, lambda r: {**_stream(r), "mode": r.choice(("refuse", "hold", "open"))}),
    "stream_cut": (3, _stream),
    "stream_finish": (3, _stream),
    "stream_off_air": (3, _stream),
    "stream_silent_studio": (2, _stream),
    "stream_fault": (6, lambda r: {**_stream(r), "kind": r.choice(
        ("silent", "html", "status", "redirect", "loop", "empty", "garbage", "short", "trickle"))}),
    "stream_certificate": (2, lambda r: {**_stream(r), "certificate": r.choice(CERTIFICATES)}),
    "icecast_freeze": (2, lambda r: {"codec": r.choice(CODECS)}),
    "icecast_kill": (1, lambda r: {"codec": r.choice(CODECS)}),
    # The live socket.
    "socket_gate": (3, lambda r: {"mode": r.choice(("refuse", "hold", "open"))}),
    "socket_end": (4, lambda r: {"how": r.choice(("goodbye", "close", "destroy", "cut"))}),
    "socket_message": (4, lambda r: {"text": r.choice(
        ('a["not json"]', "a[nonsense", "a[]", "x", "", 'm"x"', "h", "o", "c[3000,1]", "a" + "[" * 900, "\u202e&<b>\x07"))}),
    "socket_bytes": (3, lambda r: {"hexadecimal": r.choice(
        ("8900", "8a7d00", "83017a", "c10178", "81fe00ff", "817f7fffffffffffffff", "0101610101628000", "8800", "880203e7")),
        "times": r.choice((1, 3, 2000))}),
    "socket_habits": (2, lambda r: {"style": r.choice(("h", "ping", "none")), "seconds": r.choice((1, 5, 25)),
                                    "mute": r.random() < 0.3}),
    "socket_certificate": (1, lambda r: {"kind": r.choice(CERTIFICATES)}),
    "socket_flood": (2, lambda r: {"count": r.choice((50, 200))}),
    # HTTP.
    "http_answer": (8, lambda r: {"service": r.choice(("onair", "scraper")), "how": r.choice((
        {"status": 503}, {"status": 404}, {"hang": True}, {"hang": "headers"}, {"hang": "body"}, {"huge": 3_000_000},
        {"close": True}, {"reset": True}, {"short": True}, {"redirect": 3}, {"redirect": 9},
        {"redirect": "http://10.77.0.1/"}, {"body": "[" * 5000}, {"body": ""}, {"delay": 4},
        {"base64": "//79AAECgICA"}))}),
    "http_gate": (3, lambda r: {"service": r.choice(("onair", "scraper")), "mode": r.choice(("refuse", "hold", "open"))}),
    "http_certificate": (1, lambda r: {"service": r.choice(("onair", "scraper")), "kind": r.choice(CERTIFICATES)}),
    # Names and cables.
    "names": (3, lambda r: {"mode": r.choice(("nxdomain", "servfail", "silent", "ok"))}),
    "cable": (2, lambda r: {"seconds": r.choice((0.3, 2.0, 6.0))}),
    "denied": (1, lambda r: {"how": r.choice(("drop", "prohibit"))}),
    # Players in the house.
    "player_fault": (6, lambda r: {"player": r.randrange(12), "switches": r.choice((
        {"delay": 3.0}, {"silent": True}, {"refuse": True}, {"garbage": True}, {"forbidden": True}, {"status": 500},
        {"close_after": 40}, {"endless": True}, {"description": "doctype"}, {"description": "huge"}, {"description": "deep"},
        {"topology": "deep"}, {"topology": "cut"}, {"topology": "huge"}, {"fail": {"Play": 701}},
        {"fail": {"SetAVTransportURI": "reset"}}, {"ssdp": "silent"}, {"ssdp": "5"}))}),
    "player_gone": (2, lambda r: {"player": r.randrange(12)}),
    "house_router": (1, lambda r: {"mode": r.choice(("stranger", "impostor", "relay", "noise"))}),
    "house_slow": (1, lambda r: {"seconds": r.choice((0.5, 2.0))}),
    "house_scene": (1, lambda r: {"scene": r.choice(("one", "empty", "many", "mixed", "twelve"))}),
    "house_search": (2, lambda r: {}),
    # Buses and panels.
    "session_bus_hangs": (2, lambda r: {"seconds": r.choice((0.5, 1.5, 3.0))}),
    "session_bus_restarts": (1, lambda r: {}),
    "system_bus_hangs": (1, lambda r: {"seconds": r.choice((1.0, 3.0))}),
    "panel_gone": (2, lambda r: {}),
    "panel_flood": (3, lambda r: {"what": r.choice(("AboutToShow", "Status", "Scroll", "PlayPause", "GetLayout", "Volume")),
                                  "count": r.choice((50, 400))}),
    "panel_nonsense": (2, lambda r: {"identity": r.choice((-1, 0, 7, 99999)), "event": r.choice(("clicked", "opened", "x"))}),
    # The sound server, the settings, sleep, the process, the clock.
    "sound_hangs": (3, lambda r: {"seconds": r.choice((0.5, 2.0, 5.0))}),
    "sound_restarts": (1, lambda r: {}),
    "settings": (3, lambda r: {"how": r.choice(("deleted", "garbage", "directory", "huge", "empty"))}),
    "sleep": (2, lambda r: {"both": r.random() < 0.8}),
    "stopped": (3, lambda r: {"seconds": r.choice((0.5, 2.0, 4.0))}),
    "killed": (1, lambda r: {}),
    "clock": (2, lambda r: {"offset": r.choice((-3600, -90, 90, 3600))}),
    # What people do meanwhile.
    "station": (14, lambda r: {"station": r.choice(STATIONS)}),
    "stations_quickly": (2, lambda r: {"stations": [r.choice(STATIONS) for _ in range(r.choice((3, 12, 40)))]}),
    "play": (8, lambda r: {}),
    "pause": (4, lambda r: {}),
    "volume": (3, lambda r: {"value": round(r.uniform(0.3, 1.0), 2)}),
    "output": (4, lambda r: {"target": r.choice(("here", "here", "everywhere", "Kitchen", "Living Room", "Office"))}),
    "menu": (3, lambda r: {}),
    "song": (8, lambda r: {"station": r.choice(LIVE)}),
}


def plan(seed, count):
    """The first `count` faults of a seed, with steps of health between them and at the end."""
    rng = random.Random(seed)
    names = list(FAULTS)
    weights = [FAULTS[name][0] for name in names]
    steps, left = [], rng.choice(FAULTS_BETWEEN_HEALTH)
    for n in range(1, count + 1):
        name = rng.choices(names, weights)[0]
        what = FAULTS[name][1](rng)
        rest = rng.uniform(4, 16) if rng.randrange(LONG_RESTS) == 0 else rng.uniform(0.05, 1.0)
        steps.append({"n": n, "fault": name, "with": what, "then": round(rest, 2)})
        left -= 1
        if not left or n == count:
            left = rng.choice(FAULTS_BETWEEN_HEALTH)
            steps.append({"n": n, "fault": "health", "with": {}, "then": 0.0})
    return steps


def read(path):
    """A list that was kept, perhaps cut down by hand: one step a line, other lines of a report left out."""
    with open(path, encoding="utf-8") as file:
        lines = [json.loads(line) for line in file if line.strip()]
    return [{key: line[key] for key in ("n", "fault", "with", "then")} for line in lines if "fault" in line]
