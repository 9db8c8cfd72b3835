# SPDX-License-Identifier: GPL-3.0-or-later
"""Short loops of ready-made ADTS AAC and MP3 frames, one per station and codec, without an audible seam.

Encoding eighteen streams all day would cost most of a processor; sending frames that exist already costs nothing.
The tone fits a whole number of times into the loop, the frames are cut from the middle of a longer encoding, and the
MP3 encoder may not borrow bits from one frame for another, so that the last frame is followed by the first as by
any other. A hiss far below the tone makes every frame different: a listener who comes in the middle of a frame, as
with any icecast, could otherwise take a pattern that repeats itself for the beginning of frames.
"""

import os
import shutil
import subprocess
import tempfile

from .process import clean_environment
from .stations import FRAME_SAMPLES, LOOP_FRAMES, SAMPLE_RATE, TONE_PEAK, TONES

VERSION = "2"
SKIPPED_FRAMES = 24
HISS_PEAK = 0.002
ENCODER = {"aac": ["-c:a", "aac", "-b:a", "128k", "-f", "adts"],
           "mp3": ["-c:a", "libmp3lame", "-b:a", "128k", "-reservoir", "0", "-write_xing", "0", "-id3v2_version", "0",
                   "-f", "mp3"]}


class Loop:
    """The frames of one loop and how long it lasts."""

    def __init__(self, frames, codec):
        self.frames = frames
        self.size = sum(map(len, frames))
        self.seconds = len(frames) * FRAME_SAMPLES[codec] / SAMPLE_RATE


def split_adts(data):
    """The frames of an ADTS stream."""
    frames, position = [], 0
    while position + 7 <= len(data):
        if data[position] != 0xFF or data[position + 1] & 0xF6 != 0xF0:
            raise ValueError(f"no ADTS frame at byte {position}")
        length = (data[position + 3] & 3) << 11 | data[position + 4] << 3 | data[position + 5] >> 5
        frames.append(data[position:position + length])
        position += length
    return frames


def split_mp3(data):
    """The frames of a 128 kbit/s, 48 kHz MPEG-1 layer III stream: all of one size."""
    size = 144 * 128000 // SAMPLE_RATE
    frames = [data[at:at + size] for at in range(0, len(data) - size + 1, size)]
    if any(frame[:2] != b"\xff\xfb" for frame in frames):
        raise ValueError("not plain MP3 frames")
    return frames


def load(cache_dir):
    """All eighteen loops, {(station, codec): Loop}; encoded at most once per cache."""
    directory = os.path.join(cache_dir, f"loops-{VERSION}")
    if not os.path.isdir(directory):
        _encode_all(directory)
    loops = {}
    for raw, codec in TONES:
        with open(os.path.join(directory, f"{raw}.{codec}"), "rb") as file:
            frames = (split_adts if codec == "aac" else split_mp3)(file.read())
        loops[raw, codec] = Loop(frames[SKIPPED_FRAMES:SKIPPED_FRAMES + LOOP_FRAMES[codec]], codec)
        if len(loops[raw, codec].frames) != LOOP_FRAMES[codec]:
            raise ValueError(f"{directory}: the loop of {raw} {codec} is too short; remove the directory")
    return loops


def _encode_all(directory):
    os.makedirs(os.path.dirname(directory), exist_ok=True)
    work = tempfile.mkdtemp(prefix="loops-", dir=os.path.dirname(directory))
    try:
        for codec in ENCODER:
            inputs, outputs = [], []
            tones = [(raw, hertz) for (raw, other), hertz in TONES.items() if other == codec]
            for index, (raw, hertz) in enumerate(tones):
                inputs += ["-f", "lavfi", "-i",
                           f"aevalsrc={TONE_PEAK}*sin(2*PI*{hertz!r}*t)+{HISS_PEAK}*(2*random(0)-1)"
                           f":s={SAMPLE_RATE}:d=4"]
                outputs += ["-map", str(index), "-ac", "2", *ENCODER[codec], os.path.join(work, f"{raw}.{codec}")]
            subprocess.run(["ffmpeg", "-v", "error", "-nostdin", *inputs, *outputs], check=True,
                           env=clean_environment())
        os.chmod(work, 0o755)
        os.rename(work, directory)
    except OSError:
        if not os.path.isdir(directory):  # else another lab was quicker: its loops are the same
            raise
    finally:
        shutil.rmtree(work, ignore_errors=True)
