# SPDX-License-Identifier: GPL-3.0-or-later
"""What Orca says of menu and panel, from its own record of it: no voice is needed."""

import re
import shutil

import pytest
from panels_support import display, empty, item, popup, radio, reader, screen, session, wait_for_menus  # noqa: F401
from zofralab.panels import LxqtPanel
from zofralab.process import wait_until

PANEL = LxqtPanel
#: Runs it so that it writes its record line by line, not in large blocks.
BY_LINES = """
import builtins, runpy, sys
whole = builtins.open
builtins.open = lambda *given, **named: whole(*given, **named, **({"buffering": 1} if given[1:] == ("w",) else {}))
sys.argv = sys.argv[1:]
runpy.run_path(sys.argv[0], run_name="__main__")
"""
pytestmark = [pytest.mark.whole_desktop, pytest.mark.xdist_group("panels_orca")]


@pytest.fixture(scope="module")
def spoken(reader, screen, tmp_path_factory):
    """All that it has said so far."""
    program = shutil.which("orca")
    if not program:
        pytest.skip("not run: no orca on this machine")
    folder = tmp_path_factory.mktemp("orca")
    record = folder / "record"

    def said():
        text = record.read_text(encoding="utf-8", errors="replace") if record.exists() else ""
        return re.findall(r"SPEECH OUTPUT: '(.*)'\{", text)
    screen.environment.pop("NO_AT_BRIDGE", None)
    screen.environment["GSETTINGS_BACKEND"] = "memory"
    process = screen.spawn("/usr/bin/python3", "-c", BY_LINES, program, "--debug-file", str(record), "--user-prefs",
                           str(folder))
    wait_until(lambda: "Screen reader on." in said(), 60, "the screen reader", 0.2)
    yield said
    screen.end(process)


def says(spoken, text):
    """Wait until it has said that."""
    def was_said():
        return any(line.startswith(text) for line in spoken())
    try:
        wait_until(was_said, 20, text, 0.1)
    except TimeoutError as error:
        raise AssertionError(f"{error}; it said {spoken()}") from None


def test_the_lines_of_the_menu_are_spoken(item, screen, spoken):
    item.click()
    wait_for_menus(screen, 1)
    for key, line in (("Down", "Play Radio."), ("Down", "Station (Zofra)"),
                      ("Right", "Zofra – Alternative Rock & Indie checked."), ("Down", "Qmusic – Hits & Pop."),
                      ("Left", "Station (Zofra)"), ("n", "Now Playing: The Paper Lanterns – Harbour Lights grayed.")):
        screen.key(key)
        says(spoken, line)


def test_the_parts_of_the_panel_are_spoken_with_what_they_are(item, screen, spoken, reader):
    reader.application("zofrazofra")  # so early that nobody listens yet, a window would not be told
    item.click(3)
    popup(screen)
    says(spoken, "Zofra Zofra frame.")
    says(spoken, "Close Window push button.")
    for line in ("English.", "Station: Zofra collapsed push button.", "Output: This Mac collapsed push button.",
                 "Play push button.", "Volume slider 80.", "Write to us push button.",
                 "Start automatically check box not checked."):
        screen.key("Tab")
        says(spoken, line)
