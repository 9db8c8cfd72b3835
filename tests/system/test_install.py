# SPDX-License-Identifier: GPL-3.0-or-later
"""Installing with CMake alone, as packagers do."""

import configparser
import os
import subprocess

import pytest
from conftest import ROOT

EXPECTED = ["bin/zofrazofra", "share/applications/be.zofra.ZofraZofra.desktop",
            "share/metainfo/be.zofra.ZofraZofra.metainfo.xml", "share/dbus-1/services/be.zofra.ZofraZofra.service",
            "share/icons/hicolor/scalable/apps/be.zofra.ZofraZofra.svg",
            "share/icons/hicolor/48x48/apps/be.zofra.ZofraZofra.png",
            "share/bash-completion/completions/zofrazofra", "share/zsh/vendor-completions/_zofrazofra",
            "share/fish/vendor_completions.d/zofrazofra.fish", "share/man/man1/zofrazofra.1.gz"]


@pytest.fixture(name="installed")
def fixture_installed(binary, tmp_path):
    """The prefix below a folder into which the build was installed."""
    build = os.path.dirname(os.path.dirname(binary))
    made = ["pages/zofrazofra.1", "256.png", "changelog.gz"]
    if not all(os.path.exists(os.path.join(build, "packaging", name)) for name in made):
        pytest.skip(f"skipped: {build} is not built as a whole")
    done = subprocess.run(["cmake", "--install", build], env=os.environ | {"DESTDIR": str(tmp_path)},
                          capture_output=True, text=True, check=False, timeout=120)
    assert done.returncode == 0, done.stderr
    with open(os.path.join(build, "CMakeCache.txt"), encoding="utf-8") as file:
        prefix = next(line.split("=", 1)[1].strip() for line in file if line.startswith("CMAKE_INSTALL_PREFIX:"))
    return str(tmp_path) + prefix


def test_everything_is_where_desktops_look_for_it(installed):
    assert [name for name in EXPECTED if not os.path.exists(os.path.join(installed, name))] == []


def test_the_installed_program_runs(installed):
    done = subprocess.run([os.path.join(installed, "bin", "zofrazofra"), "--version"], capture_output=True, text=True,
                          check=False, timeout=20)
    assert done.returncode == 0 and done.stdout.startswith("zofrazofra ")


def test_the_bus_service_names_the_installed_program(installed, tmp_path):
    service = configparser.ConfigParser()
    service.read(os.path.join(installed, "share/dbus-1/services/be.zofra.ZofraZofra.service"))
    assert str(tmp_path) + service["D-BUS Service"]["Exec"] == os.path.join(installed, "bin", "zofrazofra")


def test_the_page_for_packagers_names_presets_that_there_are():
    with open(os.path.join(ROOT, "docs", "packagers.md"), encoding="utf-8") as file:
        page = file.read()
    done = subprocess.run(["cmake", "--list-presets=all"], cwd=ROOT, capture_output=True, text=True, check=True, timeout=20)
    configure, build = done.stdout.split("Available build presets")
    assert "cmake --preset release" in page and '"release"' in configure
    assert "cmake --build --preset release" in page and '"release"' in build
