# SPDX-License-Identifier: GPL-3.0-or-later
"""What is on air from the on-air service and the scraper: every form, every fault, and when they are asked."""

import re
import time

import pytest
from zofralab.process import wait_until

LOADING = "Loading..."


@pytest.fixture
def start(make_radio, lab):
    """Start on a station that is chosen already."""
    def begin(station="bel_rtl", **options):
        radio = make_radio()
        radio.write_settings(zofra_selected_station=station)
        radio.start(**options)
        return radio
    return begin


def no_live_feed(lab):
    """Nobody answers at the live socket."""
    lab.livefeed.gate(mode="refuse")


def songs(radio):
    """The songs it showed, in order."""
    return [line.text.removeprefix("song: ") for line in radio.lines_like("song: .*")]


def asked(lab, service, count, timeout=12.0):
    """The first so many requests, once they have come."""
    return wait_until(lambda: len(lab.call(service, "requests")) >= count and lab.call(service, "requests"), timeout,
                      f"{count} requests", 0.02)


@pytest.mark.parametrize("form, shown", [
    ("text", "By – Song"), ("number", "By – Song"), ("jsonp", "By – Song"), ("named_jsonp", "By – Song"),
    ("two", "By – Song"), ("programme", "The Long Afternoon"), ("info", "Bel RTL")])
def test_every_form_of_a_healthy_answer_is_understood(start, lab, form, shown):
    lab.onair.answer(form=form, song=["By", "Song"])
    radio = start()
    radio.wait_line(f"song: {re.escape(shown)}")
    assert songs(radio) == [LOADING, shown]


@pytest.mark.parametrize("song, shown", [(["", "Alone"], "Alone"), ([" By ", "\n Song "], "By – Song"),
                                         (["Nobody", ""], "Bel RTL")])
def test_artist_and_title_are_joined_as_they_come(start, lab, song, shown):
    lab.onair.answer(song=song)
    if not song[1]:
        lab.onair.answer(body='{"results":{"6":[{"song":true,"name":"","artistName":"Nobody"}]}}')
    start().wait_line(f"song: {re.escape(shown)}")


def test_the_request_is_what_the_service_expects(start, lab):
    start("zofra")
    request = asked(lab, "onair", 1)[0]
    assert request["target"] == "/056/qp/v3/onair?rpIds=5067"
    lines = request["head"].split("\r\n")
    assert re.fullmatch(r"GET /056/qp/v3/onair\?rpIds=5067 HTTP/1\.1", lines[0])
    assert "Host: onair.zofra.test" in lines and "User-Agent: Mozilla/5.0" in lines
    assert not [line for line in lines if line.lower().startswith(("cookie:", "if-none-match:", "if-modified"))]


@pytest.mark.parametrize("how", [
    {"status": 500}, {"status": 404}, {"body": "nonsense"}, {"body": ""}, {"form": "empty"}, {"form": "error"},
    {"body": "[1,2]"}, {"body": '{"results":{"6":{}}}'}, {"close": True}, {"reset": True}, {"short": True},
    {"huge": 64_000_000}, {"redirect": 6}, {"redirect": "http://onair.zofra.test/056/qp/v3/onair?rpIds=6"},
    {"redirect": "file:///etc/hostname"}, {"base64": "/////w=="}], ids=lambda how: str(how)[:40])
def test_a_failed_answer_is_asked_for_once_more_after_two_seconds(start, lab, how):
    lab.onair.answer(**how)
    radio = start()
    hops = 6 if how.get("redirect") == 6 else 1
    requests = asked(lab, "onair", 2 * hops)
    first, second = requests[0], requests[hops]
    assert 1.9 <= second["at"] - first["at"] <= 3.0
    lab.onair.answer(song=["By", "Song"])
    wait_until(lambda: time.monotonic() > second["at"] + 3, 6, "the time to pass", 0.1)
    assert len(lab.onair.requests()) == 2 * hops  # no third before the next round
    assert songs(radio) == [LOADING]


def test_a_retry_that_succeeds_is_shown(start, lab):
    lab.onair.queue(answers=[{"status": 502}])
    lab.onair.answer(song=["Second", "Try"])
    start().wait_line("song: Second – Try", 6)


@pytest.mark.parametrize("hops", [1, 5])
def test_a_few_redirects_are_followed(start, lab, hops):
    lab.onair.answer(redirect=hops, song=["By", "Song"])
    start().wait_line("song: By – Song")
    assert len(lab.onair.requests()) == hops + 1


@pytest.mark.parametrize("kind", ["foreign", "expired", "wrong_name", "self_signed"])
def test_a_wrong_certificate_is_refused(start, lab, kind):
    lab.onair.certificate(kind=kind)
    radio = start()
    wait_until(lambda: len(lab.onair.connections()) >= 2, 8, "the retry")
    assert lab.onair.requests() == [] and songs(radio) == [LOADING]


@pytest.mark.slow
def test_a_huge_answer_is_cut_off_while_it_comes(start, lab):
    lab.onair.answer(song=["By", "Song"])
    radio = start("bel_rtl")
    radio.wait_line("song: By – Song")
    before = radio.peak_memory()
    lab.onair.answer(huge=64_000_000)
    asked(lab, "onair", 3, 25)  # the next round and its second attempt
    wait_until(lambda: lab.onair.connections()[-1]["closed"], 10, "it to leave")
    # What is between the two ends is in the kernel's buffers.
    assert max(connection["sent"] for connection in lab.onair.connections()) < 8_000_000
    assert radio.peak_memory() - before < 6_000
    assert songs(radio) == [LOADING, "By – Song"]


def test_a_slow_answer_counts(start, lab):
    lab.onair.queue(answers=[{"delay": 5, "song": ["Slow", "But Sure"]}])
    start("bel_rtl").wait_line("song: Slow – But Sure", 7)


@pytest.mark.slow
@pytest.mark.parametrize("hang", [True, "headers", "body"])
def test_a_hanging_service_is_given_up_after_six_seconds(start, lab, hang):
    no_live_feed(lab)
    lab.onair.answer(hang=hang)
    lab.scraper.answer(song=["From", "Scraper"])
    radio = start("zofra")
    first = asked(lab, "onair", 1)[0]
    scraped = asked(lab, "scraper", 1)[0]
    # The six seconds began before the request had come.
    assert 5.5 <= scraped["at"] - first["at"] <= 7.0
    radio.wait_line("song: From - Scraper")
    # The scraper's answer is newer than a second attempt would be: the service is left alone until the next round.
    assert asked(lab, "onair", 2, 20)[1]["at"] - first["at"] >= 14


@pytest.mark.slow
def test_with_both_services_failing_each_is_asked_twice_in_a_round(start, lab):
    no_live_feed(lab)
    lab.onair.answer(status=500)
    lab.scraper.answer(status=500)
    radio = start("zofra")
    rounds = asked(lab, "onair", 3, 25)
    assert 1.9 <= rounds[1]["at"] - rounds[0]["at"] <= 3.0 and rounds[2]["at"] - rounds[0]["at"] >= 14
    assert len([r for r in lab.scraper.requests() if r["at"] < rounds[2]["at"] - 0.5]) == 2
    assert songs(radio) == [LOADING]


@pytest.mark.parametrize("station", ["zofra", "qmusic", "joe", "zofra_class_x"])
def test_the_scraper_takes_over_for_stations_with_a_live_feed(start, lab, station):
    no_live_feed(lab)
    lab.onair.answer(status=500)
    lab.scraper.answer(song=["From", "Scraper"])
    radio = start(station)
    radio.wait_line("song: From - Scraper")
    request = lab.scraper.requests()[0]
    assert request["station"] == station and "\r\nUser-Agent: Mozilla/5.0\r\n" in request["head"]


@pytest.mark.parametrize("how, shown", [
    ({"form": "tracks", "song": ["By", "Song"]}, "By – Song"),
    ({"form": "page", "song": ["By", "Song"]}, "By - Song"),
    ({"form": "none"}, "Zofra"), ({"body": '{"title" :  "one", "title": "two"}'}, "one"),
    ({"body": r'{"title":"\u00e9t\u00e9 \/ Thunder"}'}, r"\u00e9t\u00e9 \/ Thunder"),
    ({"body": '{"title":"","artist":"A","track":"T"}'}, "A – T"), ({"body": "nothing at all"}, "Zofra")], ids=str)
def test_what_the_scraper_says_is_found_by_its_three_expressions(start, lab, how, shown):
    no_live_feed(lab)
    lab.onair.answer(status=500)
    lab.scraper.answer(**how)
    radio = start("zofra")
    radio.wait_line(f"song: {re.escape(shown)}")


def test_stations_without_a_live_feed_are_never_scraped(start, lab):
    lab.onair.answer(status=500)
    start("bel_rtl")
    asked(lab, "onair", 2)
    assert lab.scraper.requests() == []


@pytest.mark.slow
def test_the_service_is_asked_every_fifteen_seconds(start, lab):
    start("bel_rtl")
    times = [request["at"] for request in asked(lab, "onair", 3, 40)]
    assert all(14.8 <= later - earlier <= 15.6 for earlier, later in zip(times, times[1:])), times


@pytest.mark.slow
def test_a_change_by_http_clears_the_next_song(start, lab):
    lab.livefeed.song(station="zofra", artist="By", title="Socket", next_title="Soon")
    radio = start("zofra")
    radio.wait_line("next: Soon")
    lab.livefeed.kill()
    lab.onair.answer(song=["By", "HTTP"])
    radio.wait_line("song: By – HTTP", 20)
    assert radio.status()["next"] is None


def test_loading_is_said_in_the_users_language(make_radio, lab):
    lab.onair.answer(hang=True)
    no_live_feed(lab)
    for language, text in (("nl", "Laden..."), ("fr", "Chargement..."), ("de", "Lädt...")):
        radio = make_radio()
        radio.write_settings(app_language=language)
        radio.start()
        assert radio.status()["song"] == text
        radio.quit()
