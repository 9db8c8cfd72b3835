# SPDX-License-Identifier: GPL-3.0-or-later
"""How soon a stream's faults are noticed, and how soon sound is back after they are over."""

import time

AAC, MP3 = ("qmusic", "aac"), ("qmusic", "mp3")
BOTH = {"station": "qmusic", "codec": "*"}


def _playing(stage, radio):
    radio.start("--play", "qmusic")
    stage.ears.wait_for(AAC, 15, since=radio.started_at)
    time.sleep(3)


def _clean_close(stage):
    with stage.radio() as radio:
        _playing(stage, radio)
        began = time.monotonic()
        stage.lab.icecast.stop_mount(station="qmusic", codec="aac")
        silent = stage.ears.wait_for(None, 60, since=began, seconds=0.1)
        back = stage.ears.wait_for(MP3, 30, since=silent) - silent
        stage.row("clean close: other codec after the buffer's end", f"{back:.2f} s (buffer {silent - began:.1f} s)",
                  "<= 1 s", recovered_s=back)


def _stall(stage):
    with stage.radio() as radio:
        _playing(stage, radio)
        began = time.monotonic()
        stage.lab.icecast.gate(station="qmusic", codec="aac", mode="hold")
        silent = stage.ears.wait_for(None, 60, since=began, seconds=0.1)
        back = stage.ears.wait_for(MP3, 40, since=silent) - silent
        stage.row("stall: other codec after the silence began", f"{back:.2f} s (buffer {silent - began:.1f} s)",
                  "<= 10 s", recovered_s=back)


def _refused(stage):
    with stage.radio() as radio:
        _playing(stage, radio)
        stage.lab.icecast.gate(**BOTH, mode="refuse")
        began = time.monotonic()
        stage.ears.wait_for(None, 60, since=began, seconds=0.3)
        time.sleep(15)
        returned = time.monotonic()
        stage.lab.icecast.gate(**BOTH, mode="open")
        back = stage.ears.wait_for_any((AAC, MP3), 40, since=returned)[0] - returned
        stage.row("refused port: sound after it returned", f"{back:.2f} s", "<= 10 s", recovered_s=back)


def run(stage, _seconds):
    """Every row."""
    stage.heading("Faults of a stream")
    _clean_close(stage)
    _stall(stage)
    _refused(stage)
