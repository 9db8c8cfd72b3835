# SPDX-License-Identifier: GPL-3.0-or-later
"""Nobody reads what the program writes, and it goes on all the same."""

import fcntl
import os
import subprocess
import time

import pytest


@pytest.fixture
def full_pipe():
    """The writing end of a pipe that is full and never read."""
    reader, writer = os.pipe()
    flags = fcntl.fcntl(writer, fcntl.F_GETFL)
    fcntl.fcntl(writer, fcntl.F_SETFL, flags | os.O_NONBLOCK)
    try:
        while True:
            os.write(writer, b"x" * 65536)
    except BlockingIOError:
        pass
    fcntl.fcntl(writer, fcntl.F_SETFL, flags)
    yield writer
    os.close(writer)
    os.close(reader)


def test_output_that_nobody_reads_stops_nothing(radio, lab, full_pipe):
    radio.started_at = time.monotonic()
    radio.write_settings(zofra_radio_volume="0.5")
    os.chmod(radio.settings_path, 0o444)  # Worth a line on standard error with the first change.
    radio.process = subprocess.Popen(
        [*lab.enter("/"), radio.binary, "--headless", "--no-discovery", "--endpoints", lab.endpoints, "--play", "joe"],
        env=radio.environment, stdin=subprocess.DEVNULL, stdout=full_pipe, stderr=full_pipe)
    radio.wait_ready()
    radio.wait_status(30, playing=True, buffering=False)
    for station in ("qmusic", "zofra", "joe"):
        assert radio.ask("--play", station).returncode == 0
        radio.wait_status(30, station=station, playing=True, buffering=False)
    # Not every setting could be kept, which is no reason to end otherwise.
    assert radio.quit() == 0
    assert fcntl.fcntl(full_pipe, fcntl.F_GETFL) & os.O_NONBLOCK == 0, "others who share the pipe wait as before"
