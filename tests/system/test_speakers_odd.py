# SPDX-License-Identifier: GPL-3.0-or-later
"""Players that are odd but valid are rooms like any other, and those that are not valid are nobody's: in how they
describe themselves, how they speak HTTP, how they answer a search and how they take an order.
"""

import gzip
import re
import time

import pytest
from odd_support import latin1, oddity, whole  # noqa: F401
from speakers_support import binary, house, rooms, system_log, tell  # noqa: F401
from zofralab.process import wait_until

ZONE_PLAYER = "urn:schemas-upnp-org:device:ZonePlayer:1"
HOME = "10.77.0.2"
OK = "HTTP/1.1 200 OK"
MOVED = "HTTP/1.1 302 Found\r\nLocation: {}\r\nContent-Length: 0\r\n\r\n"
DONE = '<s:Envelope xmlns:s="http://schemas.xmlsoap.org/soap/envelope/"><s:Body/></s:Envelope>'


def description(number, room, services=""):
    """What an ordinary player says of itself."""
    return ('<?xml version="1.0"?><root xmlns="urn:schemas-upnp-org:device-1-0"><device>'
            f"<deviceType>{ZONE_PLAYER}</deviceType><roomName>{room}</roomName><modelName>Odd One</modelName>"
            f"<UDN>{uuid(number)}</UDN>{services}</device></root>")


def uuid(number):
    """The player with this number."""
    return f"uuid:ODD_{number:03}"


def control_at(address):
    """A service list with the address at which transport is controlled."""
    return ("<serviceList><service><serviceType>urn:schemas-upnp-org:service:AVTransport:1</serviceType>"
            f"<controlURL>{address}</controlURL></service></serviceList>")


def declared(text, declaration):
    """The document with another declaration, or none."""
    return text.replace('<?xml version="1.0"?>', declaration)


def prefixed(text):
    """The document with its namespace as a prefix."""
    return re.sub(r"<(/?)(?=[a-zA-Z])", r"<\1d:", text.replace("xmlns=", "xmlns:d="))


def room_in(make):
    """A description whose room name is written as `make` writes it."""
    return lambda number, room: description(number, make(room))


VALID = {
    "prefixes": lambda n, room: prefixed(description(n, room)),
    "CDATA": lambda n, room: description(n, f"<![CDATA[{room}]]>").replace(ZONE_PLAYER, f"<![CDATA[{ZONE_PLAYER}]]>"),
    "CDATA in the middle": room_in(lambda room: f"{room[:2]}<![CDATA[{room[2:4]}]]>{room[4:]}"),
    "a comment in the middle": room_in(lambda room: f"{room[:2]}<!-- > & -->{room[2:]}"),
    "references": room_in(lambda room: "".join(f"&#x{ord(one):X};" for one in room)),
    "blanks around": lambda n, room: description(n, f"\n\t {room} \r\n").replace(uuid(n), f" {uuid(n)}\n"),
    "Latin-1 declared": lambda n, room: declared(description(n, room), '<?xml version="1.0" encoding="ISO-8859-1"?>'),
    "UTF-16 declared": lambda n, room: declared(description(n, room), "<?xml version='1.0' encoding='UTF-16'?>"),
    "an unknown encoding": lambda n, room: declared(description(n, room), '<?xml version="1.0" encoding="x-odd"?>'),
    "a later version": lambda n, room: declared(description(n, room), '<?xml version="1.1"?>'),
    "standalone": lambda n, room: declared(description(n, room), '<?xml version="1.0" standalone="yes" ?>\r\n'),
    "no declaration": lambda n, room: "\r\n" + declared(description(n, room), ""),
    "a byte order mark": lambda n, room: "\ufeff" + description(n, room),
    "a style sheet": lambda n, room: description(n, room).replace("?><root", '?><?xml-stylesheet href="x"?><root'),
    "a last word": lambda n, room: description(n, room) + "\r\n<!-- good-bye -->\n\n",
    "attributes": lambda n, room: description(n, room).replace("<device>", "<device b='2' a=\"1 > 0\"\n\tc = '&lt;'>"),
    "another root": lambda n, room: description(n, room).replace("root", "odd"),
    "a friendly name": lambda n, room: description(n, room).replace("roomName", "friendlyName"),
    "only a model": lambda n, room: description(n, "x").replace("<roomName>x</roomName>", "").replace("Odd One", room),
    "a base": lambda n, room: description(n, room).replace("<device>", "<URLBase>ftp://x</URLBase><device>"),
}
INVALID = {
    "garbage at the end": lambda n, room: description(n, room) + "garbage",
    "two roots": lambda n, room: description(n, room) + "<root/>",
    "a blank before the declaration": lambda n, room: "\n" + description(n, room),
    "a document type": lambda n, room: description(n, room).replace("<root", "<!DOCTYPE root><root"),
    "another device": lambda n, room: description(n, room).replace("ZonePlayer:1", "ZonePlayer:2"),
    "no id": lambda n, room: description(n, room).replace(uuid(n), "uuid:"),
    "an upper-case id prefix": lambda n, room: description(n, room).replace("uuid:", "UUID:"),
    "in capitals": lambda n, room: description(n, room).replace("device>", "DEVICE>"),
}
SPOKEN = {
    "in chunks": lambda body: [f"{OK}\r\nTransfer-Encoding: chunked\r\n\r\n", f"5;odd=1\r\n{body[:5]}\r\n", 0.05,
                               f"{len(body) - 5:X}\r\n{body[5:]}\r\n0\r\nX-Trailer: 1\r\n\r\n"],
    "until the end": lambda body: ["HTTP/1.0 200 OK\r\n\r\n" + body[:50], 0.05, body[50:]],
    "after 100": lambda body: ["HTTP/1.1 100 Continue\r\n\r\n", 0.05, whole(body)],
    "after 103": lambda body: ["HTTP/1.1 103 Early Hints\r\nLink: </x>\r\n\r\n" + whole(body)],
    "letter by letter": lambda body: [part for one in whole(body)[:40] for part in (one, 0.005)] + [whole(body)[40:]],
    "with line feeds": lambda body: [f"{OK}\nContent-Length: {len(body)}\n\n{body}"],
    "in small letters": lambda body: [f"{OK}\r\ncontent-length:{len(body)}\r\n\r\n{body}"],
    "without a reason": lambda body: [f"HTTP/1.1 200\r\nContent-Length: {len(body)}\r\n\r\n{body}"],
    "with folded headers": lambda body: [whole(body, headers="X-Odd: a\r\n b\r\n")],
    "as something else": lambda body: [whole(body).replace("text/xml", "image/png; charset=iso-8859-1")],
}
BROKEN = {
    "cut": lambda body: [f"{OK}\r\nContent-Length: {len(body) + 10}\r\n\r\n{body}"],
    "201": lambda body: [whole(body, "HTTP/1.1 201 Created")],
    "204": lambda body: ["HTTP/1.1 204 No Content\r\n\r\n"],
    "206": lambda body: [whole(body, "HTTP/1.1 206 Partial Content")],
    "empty": lambda body: [whole("")],
    "packed": lambda body: [whole(gzip.compress(body.encode("latin-1")).decode("latin-1"),
                                  headers="Content-Encoding: gzip\r\n")],
    "no HTTP": lambda body: [body],
}


def found_at(address, status=OK, end="\r\n", target="ST", kind=ZONE_PLAYER, location="LOCATION", more=()):
    """A search answer."""
    return end.join([status, "CACHE-CONTROL: max-age = 1800", f"{location}: {address}", f"{target}: {kind}", *more, "",
                     ""])


@pytest.fixture
def found(oddity, radio, rooms, house):
    """Runs the program among players given by path, with these search answers; the rooms' titles by their id."""
    def run(documents, datagrams=None):
        house.scene(scene="empty")
        oddity.serve(port=1400, answers=documents)
        oddity.respond(datagrams=datagrams or [found_at(f"http://{HOME}:1400{path}") for path in documents])
        radio.start(discovery=True)
        status = rooms.wait_scanned(timeout=60)
        return {room["id"]: room["title"] for room in status["rooms"]}
    return run


def test_descriptions_are_read_however_they_are_written(found):
    forms = {**VALID, **INVALID}
    documents = {f"/{number}": [whole(latin1(make(number, f"Küche {number}")))]
                 for number, make in enumerate(forms.values())}
    titles = found(documents)
    read = {name: titles.get(f"ODD_{number:03}") for number, name in enumerate(forms)}
    assert read == {name: f"Küche {number}" if name in VALID else None for number, name in enumerate(forms)}


def test_bytes_that_are_no_text_are_repaired_and_empty_names_stay_empty(found):
    assert found({"/1": [whole(description(1, "K\xfcche"))], "/2": [whole(description(2, ""))]}) == {
        "ODD_001": "K\ufffdche", "ODD_002": ""}


def test_descriptions_are_read_however_they_are_sent(found):
    forms = {**SPOKEN, **BROKEN}
    documents = {f"/{number}": make(description(number, name)) for number, (name, make) in enumerate(forms.items())}
    documents["/moved"] = [MOVED.format("/there")]
    documents["/there"] = [whole(description(99, "moved"))]
    assert sorted(found(documents).values()) == sorted([*SPOKEN, "moved"])


def test_search_answers_count_however_they_are_spelt(oddity, found, system_log):
    oddity.serve(port=1401, address="::1", answers={"/six": [whole(description(0, "six"))]})
    here = f"http://{HOME}:1400"
    answers = {
        "lf": found_at(f"{here}/lf", end="\n"), "cr": found_at(f"{here}/cr", end="\r"),
        "mixed": found_at(f"{here}/mixed", location="lOcAtIoN \t", target=" st"),
        "later": found_at(f"{here}/earlier", more=[f"Location:{here}/later"]),
        "twice": found_at(f"{here}/twice"), "again": found_at(f"{here}/twice"),
        "open": found_at(f"{here}/open").rstrip(), "long": found_at(f"{here}/long", more=["X: " + "y" * 5000]),
        "ok": found_at(f"{here}/ok", status="HTTP/1.1 200 ok"),
        "root": found_at(f"{here}/root", kind="upnp:rootdevice"),
        "kind": found_at(f"{here}/kind", kind=ZONE_PLAYER.lower()), "blank": "\r\n" + found_at(f"{here}/blank"),
        "told": found_at(f"{here}/told", status="NOTIFY * HTTP/1.1"), "user": found_at(f"http://me@{HOME}:1400/user"),
        "scheme": found_at(f"HTTP://{HOME}:1400/scheme"), "port": found_at(f"http://{HOME}:99999/port"),
        "cut": found_at(f"{here}/cut").replace("CACHE", "X: " + "y" * 5000 + "\r\nCACHE"), "noise": "\xff\xfe\0",
        "six": found_at("http://[::1]:1401/six"),
    }
    names = [*answers, "earlier"]
    documents = {f"/{name}": [whole(description(number, name))] for number, name in enumerate(names, 1)}
    counted = ["cr", "later", "lf", "long", "mixed", "open", "twice"]
    assert sorted(found(documents, list(answers.values())).values()) == sorted([*counted, "six"])
    addresses = [*(f"{here}/{name}" for name in counted), "http://[::1]:1401/six"]
    assert system_log.texts() == [
        "[Sonos] home0: 2 Sendeversuche, 0 davon blockiert (letzter errno 0)",
        "[Sonos] home0: 8 SSDP-Antworten",
        "[Sonos] SSDP-Beschreibungen: [" + ", ".join(f'"{address}"' for address in addresses) + "]",
    ]


# How an order is answered, and the status in the log when that is a failure.
ORDERS = {
    "204": (["HTTP/1.1 204 No Content\r\n\r\n"], None), "in chunks": (SPOKEN["in chunks"](DONE), None),
    "until the end": (SPOKEN["until the end"](DONE), None), "after 100": (SPOKEN["after 100"](DONE), None),
    "elsewhere": (["HTTP/1.1 307 Moved\r\nLocation: /done\r\nContent-Length: 0\r\n\r\n"], 307),
    "201": ([whole(DONE, "HTTP/1.1 201 Created")], 201), "206": ([whole(DONE, "HTTP/1.1 206 Partial Content")], 206),
    "500": ([whole(DONE, "HTTP/1.1 500 X")], 500), "403": ([whole("<html>", "HTTP/1.1 403 X")], 403),
    "nothing": ([], 0), "cut": (BROKEN["cut"](DONE), None), "no HTTP": (["hello\r\n\r\n"], 0),
}


def test_an_order_has_succeeded_with_200_and_204_only_however_that_is_said(oddity, found, radio, system_log):
    documents = {"/done": [whole(DONE)]}
    for number, (name, (answer, _)) in enumerate(ORDERS.items()):
        documents[f"/{number}"] = [whole(description(number, name, control_at(f"/control/{number}")))]
        documents[f"/control/{number}"] = answer
    found(documents, [found_at(f"http://{HOME}:1400/{number}") for number in range(len(ORDERS))])
    for number, (_, status) in enumerate(ORDERS.values()):
        since = time.monotonic()
        tell(radio, "--output", f"ODD_{number:03}")
        if status is None:
            radio.wait_status(30, output=f"ODD_{number:03}", playing=True)
        else:
            line = rf"\[Sonos\] SOAP SetAVTransportURI an {HOME} fehlgeschlagen: HTTP {status}"
            system_log.wait_for(line, 30, since)
            radio.wait_status(30, output=f"ODD_{number:03}", playing=False)
    orders = [request for request in oddity.requests(port=1400) if request["path"].startswith("/control/")]
    expected = [2 if status is None else 1 for _, status in ORDERS.values()]
    assert [len([o for o in orders if o["path"] == f"/control/{n}"]) for n in range(len(ORDERS))] == expected


def test_orders_go_where_the_description_says_or_else_to_the_usual_address(oddity, found, radio):
    usual = "/MediaRenderer/AVTransport/Control"
    places = {f"http://{HOME}:1401/other": "/other", f"//{HOME}:1401/host": "/host", "beside": "/dir/beside",
              "../above": "/above", "?query": "/dir/6?query", "ftp://x/y": usual, f"HTTP://{HOME}:1401/": usual,
              "/with blank": usual, "": usual}
    places = dict(sorted(places.items(), key=lambda place: place[0] != "?query"))
    places["?query"] = "/dir/0?query"
    documents = {path: [whole(DONE)] for path in places.values()}
    for number, place in enumerate(places):
        documents[f"/dir/{number}"] = [whole(description(number, f"At {number}", control_at(place)))]
    oddity.serve(port=1401, answers={"/other": [whole(DONE)], "/host": [whole(DONE)]})
    found(documents, [found_at(f"http://{HOME}:1400/dir/{number}") for number in range(len(places))])

    def ordered():
        asked = [*oddity.requests(port=1400), *oddity.requests(port=1401)]
        return [r["path"] for r in sorted(asked, key=lambda r: r["at"]) if "SetAVTransportURI" in r["body"]]
    for number in range(len(places)):
        tell(radio, "--output", f"ODD_{number:03}")
        wait_until(lambda wanted=number + 1: len(ordered()) == wanted, 30, "the order")
    assert ordered() == list(places.values())


def test_every_address_of_every_interface_is_searched_and_counted_by_itself(lab, found, system_log):
    lab.net.second_interface(addresses=["10.99.0.2/24", "10.98.0.2/24"])
    assert found({"/1": [whole(description(1, "Room"))]}) == {"ODD_001": "Room"}
    texts = system_log.texts()
    assert sorted(texts[:-1]) == [
        "[Sonos] home0: 1 SSDP-Antworten", "[Sonos] home0: 2 Sendeversuche, 0 davon blockiert (letzter errno 0)",
        *["[Sonos] second0: 0 SSDP-Antworten"] * 2,
        *["[Sonos] second0: 1 Sendeversuche, 0 davon blockiert (letzter errno 0)"] * 2]
    assert texts[-1] == f'[Sonos] SSDP-Beschreibungen: ["http://{HOME}:1400/1"]'
