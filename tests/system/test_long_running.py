# SPDX-License-Identifier: GPL-3.0-or-later
"""After much of the same everything is where it was. `./dev bench endurance` does much more of it."""

import long_run
import pytest

COUNTS = {"songs": 1200, "menus": 240, "panels": 60, "stations": 90}


@pytest.fixture
def item(radio, status_bar):
    """The radio with a tray that passes clicks on, and its item."""
    radio.write_settings()
    radio.write_section("tray", mode="direct")
    radio.start(headless=False)
    return status_bar.wait_for_item()


def judge(held, what):
    """Nothing of it has grown."""
    print(f"{COUNTS[what]} {what}: {held[0]} -> {held[-1]}")
    assert not long_run.too_much(held), held


def test_growth_is_seen_and_noise_is_not():
    flat = [{"memory": 9000 + 37 * (i * 7 % 5), "threads": 7 + i % 2, "descriptors": 20 + i % 3} for i in range(30)]
    assert not long_run.too_much(flat)
    for what, step in (("memory", 40), ("threads", 0.2), ("descriptors", 0.4)):
        leaking = [{**one, what: one[what] + step * index} for index, one in enumerate(flat)]
        assert [name for name, _ in long_run.too_much(leaking)] == [what]


@pytest.mark.slow
@pytest.mark.measured
def test_songs_leave_nothing(lab, radio, item):
    judge(long_run.songs(lab, radio, item, COUNTS["songs"]), "songs")


@pytest.mark.slow
@pytest.mark.measured
def test_menus_leave_nothing(make_radio, status_bar):
    radio = make_radio()
    radio.start(headless=False)
    judge(long_run.menus(radio, status_bar.wait_for_item(), COUNTS["menus"]), "menus")


@pytest.mark.slow
@pytest.mark.measured
def test_panels_leave_nothing(bus, radio, display, item):
    judge(long_run.panels(bus, radio, display, item, COUNTS["panels"]), "panels")


@pytest.mark.slow
@pytest.mark.measured
def test_station_changes_leave_nothing(bus, radio, ears, item):
    assert radio.ask("--play", "zofra").returncode == 0
    ears.wait_for(("zofra", "aac"), 20)
    judge(long_run.stations(bus, radio, ears, COUNTS["stations"]), "stations")
