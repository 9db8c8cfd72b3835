# SPDX-License-Identifier: GPL-3.0-or-later
"""What a listener hears of a stream's faults, with this radio and with others: how long it is silent, and whether it goes on."""

import contextlib
import time

from zofralab.process import wait_until

STREAM = {"station": "qmusic", "codec": "*"}
HEARD = (("qmusic", "aac"), ("qmusic", "mp3"))
#: Seconds that are listened to after a fault has begun; all faults are over long before.
LISTENED = 45


def _clean_close(icecast):
    icecast.finish(**STREAM)


def _kill(icecast):
    icecast.kill(codec="*")
    time.sleep(3)
    icecast.restart(codec="*")


def _stall(seconds):
    def stall(icecast):
        icecast.gate(**STREAM, mode="hold")
        time.sleep(seconds)
        icecast.gate(**STREAM, mode="open")
    return stall


def _refused(icecast):
    icecast.gate(**STREAM, mode="refuse")
    time.sleep(12)
    icecast.gate(**STREAM, mode="open")


FAULTS = {"clean close": _clean_close, "server killed, back after 3 s": _kill, "stall of 5 s": _stall(5),
          "stall of 20 s": _stall(20), "refused for 12 s": _refused}


@contextlib.contextmanager
def _radio(stage):
    with stage.radio() as radio:
        radio.start("--play", "qmusic")
        yield radio.process


def _heard_through(stage, started, fault):
    """(seconds of silence after the fault began, whether there is sound at the end), or None where it cannot be tried."""
    stage.lab.reset()
    with started as process:
        if process is None:
            return None
        try:
            stage.ears.wait_for_any(HEARD, 25)
        except AssertionError:
            return None
        time.sleep(3)
        began = time.monotonic()
        fault(stage.lab.icecast)
        wait_until(lambda: stage.ears.recorded_until() > began + LISTENED, LISTENED + 10, "the sound", 0.5)
        silent = sum(span.seconds for span in stage.ears.silences(began, began + LISTENED))
        goes_on = any(span.what in HEARD for span in stage.ears.spans(began + LISTENED - 2, began + LISTENED))
        stage.ears.forget()
        return silent, goes_on


def run(stage, _seconds):
    """Every row."""
    stage.heading(f"Faults of a stream: silence within {LISTENED} s")
    for name, fault in FAULTS.items():
        found = {"zofrazofra": _heard_through(stage, _radio(stage), fault),
                 "mpv": _heard_through(stage, stage.other(stage.mpv()), fault),
                 "goodvibes (no TLS)": _heard_through(stage, stage.other(["goodvibes", stage.address("http")]), fault)}
        said = [f"{who} " + ("not heard" if one is None else f"{one[0]:.1f} s, " + ("goes on" if one[1] else "ended"))
                for who, one in found.items()]
        stage.row(name, "; ".join(said), "goes on", found=found)
