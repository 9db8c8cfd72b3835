# SPDX-License-Identifier: GPL-3.0-or-later
"""Which of the eighteen tones is in a piece of sound, and how loud: Goertzel's filter over the table, nothing else.

Sound is 16-bit mono at 8000 Hz; windows are 50 ms, so that two tones 120 Hz apart are told apart safely.
"""

import array
import math
from dataclasses import dataclass

from .stations import TONES

RATE = 8000
WINDOW = 400
#: Root mean square (full scale 1) below which there is silence.
SILENCE = 0.0015
#: How much of a window's energy one tone must have to be what is heard.
PURITY = 0.75

_COEFFICIENTS = [(key, 2.0 * math.cos(2.0 * math.pi * hertz / RATE)) for key, hertz in TONES.items()]
#: A Hann window keeps a tone's energy out of its neighbours' filters.
_HANN = [0.5 - 0.5 * math.cos(2.0 * math.pi * (i + 0.5) / WINDOW) for i in range(WINDOW)]
_HANN_SUM = sum(_HANN)


@dataclass(frozen=True)
class Span:
    """A stretch of time with one thing to hear: (station, codec), "noise" or None for silence."""

    start: float
    end: float
    what: object
    rms: float

    @property
    def seconds(self):
        """How long it lasted."""
        return self.end - self.start


def samples_of(raw):
    """Bytes of 16-bit little-endian sound as a sequence of integers."""
    return array.array("h", raw[:len(raw) // 2 * 2])


def rms_of(samples):
    """Root mean square, full scale being 1."""
    return math.sqrt(sum(s * s for s in samples) / len(samples)) / 32768.0 if samples else 0.0


def _energy(samples, coefficient):
    first = second = 0.0
    for sample in samples:
        first, second = sample + coefficient * first - second, first
    return first * first + second * second - coefficient * first * second


def listen(samples):
    """(what, rms) of one window of WINDOW samples."""
    rms = rms_of(samples)
    if rms < SILENCE:
        return None, rms
    shaped = [sample * weight for sample, weight in zip(samples, _HANN)]
    best, energy = max(((key, _energy(shaped, c)) for key, c in _COEFFICIENTS), key=lambda pair: pair[1])
    # A pure tone of amplitude A gives A * sum(window) / 2 as its magnitude, and A / sqrt(2) as its RMS.
    amplitude = 2.0 * math.sqrt(max(energy, 0.0)) / _HANN_SUM / 32768.0
    share = (amplitude * amplitude / 2.0) / (rms * rms)
    return (best if share > PURITY else "noise"), rms


def spans(windows):
    """Join (start, end, what, rms) of neighbouring windows that hear the same into spans."""
    joined = []
    for start, end, what, rms in windows:
        last = joined[-1] if joined else None
        if last is not None and last.what == what and abs(last.end - start) < 1e-6:
            weight = last.seconds / (last.seconds + end - start)
            mean = math.sqrt(last.rms * last.rms * weight + rms * rms * (1 - weight))
            joined[-1] = Span(last.start, end, what, mean)
        else:
            joined.append(Span(start, end, what, rms))
    return joined
