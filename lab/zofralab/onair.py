# SPDX-License-Identifier: GPL-3.0-or-later
"""The on-air search service and the scraper service: what the programme says, in every form seen in the field.

Switches of both, `onair` and `scraper`: answer, queue, requests, connections, gate, certificate (see httpd.py).
"""

import json
import time
from urllib.parse import parse_qs, urlsplit

from . import addresses
from .httpd import HttpService
from .programme import SONG_SECONDS, Song
from .stations import LIVE, STATIONS


class OnAir(HttpService):
    """GET /056/qp/v3/onair?rpIds=NUMBER. Forms: text (times as text, the default), number, jsonp, named_jsonp,
    programme (no song), info (neither song nor programme), empty, error, two (an old song first)."""

    name = "onair"
    host = addresses.ON_AIR
    port = 9400
    section_key = "on_air"
    PATH = "/056/qp/v3/onair"

    def station_of(self, target):
        """By the number in the query."""
        parts = urlsplit(target)
        wanted = parse_qs(parts.query).get("rpIds", [""])[0]
        if parts.path != self.PATH:
            return None
        return next((s.raw for s in STATIONS if s.on_air_id == wanted), None)

    def healthy(self, station, how, request):
        """The answer in one of the forms above."""
        form = how.get("form", "")
        item = next(s for s in STATIONS if s.raw == station)
        song = Song(*how["song"], time.time() - 30) if "song" in how else self.world.services[
            "livefeed"].programme.song(station)
        entries = [] if form == "empty" else self._entries(item, form, song)
        results = {item.on_air_id: entries} if entries else {}
        document = {"responseStatus": "SUCCESS", "total": len(entries), "results": results}
        if form == "error":
            document = {"responseStatus": "FAILURE", "total": 0, "results": None}
        text = json.dumps(document, ensure_ascii=form == "jsonp", separators=(",", ":"))
        if form == "jsonp":
            text = f"callback({text})"
        elif form == "named_jsonp":
            text = f"radioplayer.playing.receive({text});\n"
        elif form not in ("", "text", "number", "programme", "info", "empty", "error", "two"):
            raise ValueError(f"no form {form!r}")
        return "application/json; charset=utf-8", text.encode()

    def _entries(self, item, form, song):
        info = {"type": "SI", "rpId": item.on_air_id, "serviceName": item.title, "name": "", "artistName": "",
                "description": "Always on", "imageUrl": "https://img.example/l.png", "song": False}
        show = self._entry(item, form, "PI", "The Long Afternoon", "", time.time() - 3600, 7200, False)
        playing = self._entry(item, form, "PE_E", song.title, song.artist, song.started, SONG_SECONDS * 1000, True)
        if form == "info":
            return [info]
        if form == "programme":
            return [info, show]
        if form == "two":
            old = self._entry(item, form, "PE_E", "Gone By", "The Formers", song.started - 600, 200, True)
            return [old, playing]
        return [info, show, playing]

    def _entry(self, item, form, kind, name, artist, start, seconds, is_song):
        def moment(value):
            return int(value) if form == "number" else str(int(value))
        return {"type": kind, "rpId": item.on_air_id, "serviceName": item.title, "name": name, "artistName": artist,
                "description": "", "imageUrl": "", "startTime": moment(start), "stopTime": moment(start + seconds),
                "song": is_song}


class Scraper(HttpService):
    """GET of one page per live station. Forms: title (the default), tracks (artist and track), none, page (HTML)."""

    name = "scraper"
    host = addresses.SCRAPER
    port = 9500
    section_key = "scraper"

    def station_of(self, target):
        """By the path."""
        return next((s.raw for s in LIVE if s.scraper_path == urlsplit(target).path), None)

    def healthy(self, station, how, request):
        """The answer in one of the forms above."""
        form = how.get("form", "")
        song = Song(*how["song"], time.time()) if "song" in how else self.world.services[
            "livefeed"].programme.song(station)
        document = {"alias": urlsplit(request["target"]).path[1:], "stationId": 1, "updated": int(time.time())}
        if form in ("", "title", "page"):
            document["title"] = f"{song.artist} - {song.title}"
        elif form == "tracks":
            document.update(artist=song.artist, track=song.title)
        elif form != "none":
            raise ValueError(f"no form {form!r}")
        text = json.dumps(document, ensure_ascii=False, separators=(", ", " : "))
        if form == "page":
            text = f"<html><head><title>x</title></head><body><script>var now = {text};</script></body></html>"
        return "application/json; charset=utf-8", text.encode()
