# SPDX-License-Identifier: GPL-3.0-or-later
"""The files that the desktop and the shells read, judged by those who read them."""

import configparser
import os
import re
import shutil
import subprocess

import pytest
from conftest import ROOT

PACKAGING = os.path.join(ROOT, "packaging")
DESKTOP = os.path.join(PACKAGING, "desktop", "be.zofra.ZofraZofra.desktop")


def judged(*command):
    """Everything that a judge says, and its exit status."""
    if not shutil.which(command[0]):
        pytest.skip(f"skipped: {command[0]} is not installed")
    done = subprocess.run(command, capture_output=True, text=True, check=False, timeout=60,
                          env={**os.environ, "LC_ALL": "C.UTF-8"})
    return done.returncode, (done.stdout + done.stderr).strip()


def built(binary, name):
    """A file of the build that the program came from."""
    path = os.path.join(os.path.dirname(os.path.dirname(binary)), "packaging", name)
    if not os.path.exists(path):
        pytest.skip(f"skipped: there is no {path}")
    return path


def test_the_desktop_file_is_valid():
    assert judged("desktop-file-validate", DESKTOP) == (0, "")


def test_the_metainfo_is_valid(binary):
    status, said = judged("appstreamcli", "validate", "--strict", "--no-net",
                          built(binary, "be.zofra.ZofraZofra.metainfo.xml"))
    assert status == 0, said


def test_the_manual_page_is_formatted_without_a_warning(binary):
    page = built(binary, "pages/zofrazofra.1")
    status, said = judged("man", "--warnings", "-E", "UTF-8", "-l", page)
    assert status == 0 and "warning" not in said and "--doctor" in said.replace("‐", "-"), said[:500]


def test_the_bus_starts_what_the_desktop_file_names(binary):
    service = configparser.ConfigParser()
    service.read(built(binary, "be.zofra.ZofraZofra.service"))
    entry = configparser.ConfigParser(interpolation=None)
    entry.optionxform = str
    entry.read(DESKTOP, encoding="utf-8")
    name = os.path.basename(DESKTOP).removesuffix(".desktop")
    assert service["D-BUS Service"]["Name"] == name
    assert entry["Desktop Entry"]["DBusActivatable"] == "true"
    assert os.path.basename(service["D-BUS Service"]["Exec"]) == entry["Desktop Entry"]["Exec"] == "zofrazofra"
    assert entry["Desktop Entry"]["Icon"] == name
    assert os.path.exists(os.path.join(ROOT, "app", "icons", f"{name}.svg"))


def completions(binary, *words):
    """What bash offers for the last word."""
    script = 'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _zofrazofra; printf "%s\\n" "${COMPREPLY[@]}"'
    done = subprocess.run(["bash", "-c", script, "bash", built(binary, "pages/zofrazofra.bash"),
                           "zofrazofra", *words], capture_output=True, text=True, check=True, timeout=20)
    return done.stdout.split()


@pytest.mark.parametrize("words, expected", [
    (["--pl"], ["--play"]), (["--play", "q"], ["qmusic"]), (["--play", "sud"], ["sud_radio_belgique", "sud_radio_hainaut"]),
    (["--output", "e"], ["everywhere"]), (["--station", "n"], ["next"]), (["--notify", "o"], ["off", "on"]), (["--he"], ["--headless", "--help"]), (["--nonsense"], [])])
def test_bash_completes(binary, words, expected):
    assert sorted(completions(binary, *words)) == expected


@pytest.mark.parametrize("shell, page", [("zsh", "_zofrazofra"), ("fish", "zofrazofra.fish")])
def test_the_other_shells_can_read_their_completions(binary, shell, page):
    assert judged(shell, "-n", built(binary, f"pages/{page}")) == (0, "")


def test_the_package_list_of_each_job_is_named_by_dev():
    with open(os.path.join(ROOT, "dev"), encoding="utf-8") as file:
        code = re.sub(r"^\s*#.*", "", file.read(), flags=re.M)
    named = {word for line in re.findall(r"\bneed ((?:[a-z-]+ ?)+)", code) for word in line.split()}
    assert set(os.listdir(os.path.join(PACKAGING, "needs"))) == named


def test_a_job_that_installs_nothing_for_tests_builds_none():
    with open(os.path.join(ROOT, "dev"), encoding="utf-8") as file:
        text = file.read()
    pieces = [piece for piece in re.split(r"^(?:job_\w+\(\) \{|bench\))", text, flags=re.M)
              if re.search(r"\bneed build\b", piece)]
    without = [piece for piece in pieces if "test-unit" not in piece and "build_preset release" in piece]
    assert without and all("build_preset release -DZOFRA_TESTS=OFF" in piece for piece in without)


@pytest.mark.parametrize("library, package", [("libmpv", "libmpv2"), ("libcurl", "libcurl4")])
def test_what_is_loaded_when_it_is_needed_is_named_in_the_package(binary, library, package):
    linked = subprocess.run([binary, "--version"], capture_output=True, text=True, check=True, timeout=60,
                            env={**os.environ, "LD_TRACE_LOADED_OBJECTS": "1"}).stdout
    assert "libQt6Core" in linked and library not in linked
    with open(os.path.join(PACKAGING, "CMakeLists.txt"), encoding="utf-8") as file:
        depends = re.search(r'CPACK_DEBIAN_PACKAGE_DEPENDS "(.*)"', file.read())[1]
    assert package in [name.split()[0] for name in depends.split(", ")]


def test_the_icon_theme_has_every_drawing_of_menus_and_trays(binary):
    theme = os.path.join(os.path.dirname(os.path.dirname(binary)), "share", "icons", "hicolor")
    with open(os.path.join(ROOT, "app", "StatusMenu.cpp"), encoding="utf-8") as file:
        used = set(re.findall(r'"([a-z0-9]+(?:\.[a-z0-9]+)+|power)"', file.read()))
    assert {"play.fill", "power", "antenna.radiowaves.left.and.right"} <= used
    used |= {"tray.playing", "tray.stopped", "tray.buffering"}
    for name in used:
        path = os.path.join(theme, "symbolic", "apps", f"be.zofra.ZofraZofra.{name}-symbolic.svg")
        with open(path, encoding="utf-8") as file:
            drawing = file.read()
        # Panels recolour only what they know to be text.
        assert 'class="ColorScheme-Text"' in drawing and "stroke=" not in drawing, path


def test_every_station_can_be_started_from_the_desktop_file():
    entry = configparser.ConfigParser(interpolation=None)
    entry.optionxform = str
    entry.read(DESKTOP, encoding="utf-8")
    actions = entry["Desktop Entry"]["Actions"].strip(";").split(";")
    stations = [action for action in actions if action.startswith("play-")]
    assert len(stations) == 9
    for action in actions:
        assert entry[f"Desktop Action {action}"]["Name"]
    for action in stations:
        station = entry[f"Desktop Action {action}"]["Exec"].removeprefix("zofrazofra --play ")
        assert action == "play-" + station.replace("_", "-")
