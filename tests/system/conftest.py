# SPDX-License-Identifier: GPL-3.0-or-later
"""The frame of the system tests: the program as it is, against real servers, heard and seen from outside.

One lab, one sound server and one screen per test process; buses, settings and the program itself are new for every
test, and the lab is put back to its healthy state before each.

    ZOFRA_BINARY     the program (default build/release/bin/zofrazofra)
"""

import os
import shutil
import sys
import tempfile

import pytest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.dont_write_bytecode = True
# Where the network's tools are; not on the way of an ordinary user.
os.environ["PATH"] += ":/usr/sbin:/sbin"
sys.path.insert(0, os.path.join(ROOT, "lab"))
sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from radio import Radio  # noqa: E402
from zofralab.bus import MockedLogind, Peer  # noqa: E402
from zofralab.desktop import StatusBar  # noqa: E402
from zofralab.display import Display  # noqa: E402
from zofralab.lab import Lab  # noqa: E402
from zofralab.session import Session  # noqa: E402
from zofralab.sound import Ears, SoundServer  # noqa: E402


def pytest_configure(config):
    """Markers of these tests."""
    config.addinivalue_line("markers", "slow: takes more than twenty seconds of real time; begun first")
    config.addinivalue_line("markers", "measured: measures times or load; run it with nothing beside it")
    config.addinivalue_line("markers", "whole_desktop: starts one; only run for whoever asks for it by name (-k)")


def pytest_collection_modifyitems(config, items):
    """Leave out what nobody asked for, and begin the long ones first, so that parallel runs end together."""
    if not config.getoption("keyword"):
        unasked = pytest.mark.skip(reason="not run: whole desktops are started by name only (-k panels_plasma, ...)")
        for item in items:
            if item.get_closest_marker("whole_desktop"):
                item.add_marker(unasked)
    items.sort(key=lambda item: item.get_closest_marker("slow") is None)


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item, call):
    """Show what the house and the program said beside a failure."""
    report = (yield).get_result()
    if report.when == "call" and report.failed:
        lab = item.funcargs.get("lab")
        if lab is not None:
            report.sections.append(("the house's log", lab.log_text(4000)))
        for radio in item.funcargs.get("radios", []):
            report.sections.append(("the program's output", radio.transcript()))


@pytest.fixture(scope="session")
def binary():
    """The program under test."""
    named = os.environ.get("ZOFRA_BINARY")
    path = os.path.abspath(named or os.path.join(ROOT, "build", "release", "bin", "zofrazofra"))
    if not os.access(path, os.X_OK):
        if named:
            pytest.fail(f"ZOFRA_BINARY: no program at {path}")
        pytest.skip(f"not run: no program at {path}")
    return path


@pytest.fixture(scope="session")
def running_lab():
    """The lab of this test process."""
    with Lab() as lab:
        yield lab


@pytest.fixture
def lab(running_lab):
    """The lab, healthy, with empty records."""
    running_lab.reset()
    return running_lab


@pytest.fixture(scope="session")
def sound_server():
    """The private sound server of this test process."""
    directory = tempfile.mkdtemp(prefix="zofrasound-", dir="/tmp")
    server = SoundServer(directory)
    try:
        yield server.start()
    finally:
        server.stop()
        shutil.rmtree(directory, ignore_errors=True)


@pytest.fixture(scope="session")
def listening(sound_server):
    """Ears that are kept open from test to test, because opening them takes seconds."""
    ears = Ears(sound_server)
    try:
        yield ears.start()
    finally:
        ears.stop()


@pytest.fixture
def ears(listening):
    """What the computer's loudspeakers would give."""
    listening.forget()
    return listening


@pytest.fixture(scope="session")
def display():
    """A screen."""
    screen = Display()
    try:
        yield screen.start()
    finally:
        screen.stop()


@pytest.fixture
def session(running_lab):
    """A person's session: run directory and message buses, new for this test."""
    with Session(running_lab.run_dir, with_sound=False) as one:
        yield one


@pytest.fixture
def bus(session):
    """A connection to the session bus."""
    peer = Peer(session.session_bus.address)
    yield peer
    peer.close()


@pytest.fixture
def status_bar(bus):
    """A panel that is there before the program."""
    bar = StatusBar(bus)
    bar.appear()
    return bar


@pytest.fixture
def logind(session):
    """A mocked logind on the private system bus."""
    mocked = MockedLogind(session.system_bus)
    try:
        yield mocked.start()
    finally:
        mocked.stop()


@pytest.fixture
def radios():
    """Every program that this test started; ended when the test ends."""
    started = []
    yield started
    for radio in started:
        radio.stop()


@pytest.fixture
def make_radio(binary, lab, session, sound_server, display, radios, tmp_path):
    """Make a program that is not started yet: `make_radio()`; it shares settings with others of this test."""
    def make(home=None):
        radio = Radio(binary, lab, session, sound_server, display, home or str(tmp_path))
        radios.append(radio)
        return radio
    return make


@pytest.fixture
def radio(make_radio):
    """The program, not started yet."""
    return make_radio()
