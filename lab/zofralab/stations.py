# SPDX-License-Identifier: GPL-3.0-or-later
"""The nine stations as the broadcaster knows them, and the tone that each of the eighteen streams carries."""

from dataclasses import dataclass

from . import addresses

CODECS = ("aac", "mp3")
SAMPLE_RATE = 48000
#: Samples per frame, and frames per loop, of each codec.
FRAME_SAMPLES = {"aac": 1024, "mp3": 1152}
LOOP_FRAMES = {"aac": 48, "mp3": 40}
#: Peak of the tone, full scale being 1.
TONE_PEAK = 0.25


@dataclass(frozen=True)
class Station:
    """One station: raw value, name on screen, genre, the paths of both streams, and what the services call it."""

    raw: str
    title: str
    genre: str
    aac_path: str
    mp3_path: str
    on_air_id: str
    live_id: str = ""
    scraper_path: str = ""

    def path(self, codec):
        """The path of one of the two streams."""
        return self.aac_path if codec == "aac" else self.mp3_path


STATIONS = (
    Station("zofra", "Zofra", "Alternative Rock & Indie", "/zofra.aac", "/zofra.mp3", "5067", "zofra_be", "/be.zofra"),
    Station("qmusic", "Qmusic", "Hits & Pop", "/qmusic.aac", "/qmusic.mp3", "5050", "qmusic_be", "/be.qmusic"),
    Station("joe", "JOE", "80s, 90s & Pop Classics", "/joe.aac", "/joe.mp3", "5051", "joe_fm", "/be.joe"),
    Station("zofra_class_x", "Zofra Class X", "Classics & Classic Rock", "/zofra_classx.aac", "/zofra_classx.mp3",
            "5077", "zofra_be_class_x", "/be.zofraclassx"),
    Station("radio_contact", "Radio Contact", "Feel Good & Hits", "/radiocontact-mp3-192.mp3",
            "/radiocontact-mp3-192.mp3", "1"),
    Station("bel_rtl", "Bel RTL", "Info, Talk & Pop", "/33prmb9subpwv", "/belrtl-mp3-192.mp3", "6"),
    Station("inside_radio", "Inside Radio", "Pop & Contemporary Hits", "/cm96zpmrmm0uv", "/cm96zpmrmm0uv", "1011"),
    Station("sud_radio_belgique", "Sud Radio Belgique", "Variété & Pop", "/sudradio-belgique", "/sudradio-belgique",
            "154"),
    Station("sud_radio_hainaut", "Sud Radio Hainaut", "Regional Mons & Pop", "/sudradio-hainaut",
            "/sudradio-hainaut", "1108"),
)
BY_RAW = {station.raw: station for station in STATIONS}
INDEX = {station.raw: index for index, station in enumerate(STATIONS)}
LIVE = tuple(station for station in STATIONS if station.live_id)


def station(raw):
    """The station with this raw value; a clear refusal for anything else."""
    try:
        return BY_RAW[raw]
    except KeyError:
        raise ValueError(f"no station {raw!r}; there are {', '.join(BY_RAW)}") from None


def require_codec(codec):
    """The codec, or a clear refusal."""
    if codec not in CODECS:
        raise ValueError(f"no codec {codec!r}; there are aac and mp3")
    return codec


def tone(raw, codec):
    """The frequency of this stream's tone in Hz.

    About 440 to 1400 Hz for AAC and 1600 to 2560 Hz for MP3, 120 Hz apart, moved to where a whole number of waves
    fits into the loop, so that the loop has no seam.
    """
    wished = (440 if codec == "aac" else 1600) + 120 * INDEX[raw]
    step = SAMPLE_RATE / (FRAME_SAMPLES[codec] * LOOP_FRAMES[codec])
    return round(wished / step) * step


def host(raw, codec):
    """The name (with a port where one is part of it) under which endpoints.ini gives the stream.

    JOE is on another port than the usual one, so that every run has both forms of a host.
    """
    name = addresses.stream_name(raw, codec)
    return f"{name}:8443" if raw == "joe" else name


TONES = {(s.raw, codec): tone(s.raw, codec) for s in STATIONS for codec in CODECS}
