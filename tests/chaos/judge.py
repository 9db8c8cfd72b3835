# SPDX-License-Identifier: GPL-3.0-or-later
"""What must hold after every fault, and what must hold again once everything around has been put right.

Times allow for what the machine owes: seconds in which the program's main thread, or whoever carries its answers, was ready to
run and did not get a processor are not the program's.
"""

import os
import re
import time

from zofralab.bus import BusError

#: Seconds.
ANSWER, SOUND, QUIET, STOPPED_PLAYER = 1.0, 4.0, 4.0, 15.0
#: An on-air round is every 15 s, a socket is tried every 5 s, and each attempt has 10 s.
TEXT = 32.0
SOUND_AGAIN = 20.0
#: Processor seconds allowed for one fault, and the share of a processor beside them.
WORK, SHARE = 1.5, 0.5
#: What may come on top of the largest seen while warming up: kilobytes, threads, descriptors.
GROWTH = {"memory": 24_000, "threads": 6, "descriptors": 16}
WARM = 4
SONG = re.compile(r"Band (\w+) – Song (\d+)")


class Violation(Exception):
    """Something that must hold does not."""


class Judge:
    """Looks at the surroundings after each step."""

    def __init__(self, around):
        self._around = around
        #: What it held at every step of health.
        self.held = []
        self._work = self._load()
        self._worst = {"answer": 0.0, "sound": 0.0, "text": 0.0, "share": 0.0}

    @property
    def worst(self):
        """The worst that was seen and allowed, in seconds (the share of a processor aside)."""
        return {key: round(value, 3) for key, value in self._worst.items()}

    # After every fault.

    def after_fault(self):
        """Alive, answering, saying what is to be heard and shown, and not busy."""
        self._alive()
        status = self._answering()
        self._not_busy()
        self._truthful(status)
        self._text(status)

    def _alive(self):
        ended = self._around.radio.process.poll()
        if ended is not None:
            raise Violation(f"it has ended with {ended}: {self._around.radio.errors[-3:]}")

    def _answering(self):
        owed, began = self._owed(), time.monotonic()
        try:
            status = self._around.status(ANSWER + 60)
        except BusError as error:
            raise Violation(f"no answer: {error}") from None
        took = time.monotonic() - began - (self._owed() - owed)
        self._note("answer", took)
        if took > ANSWER:
            raise Violation(f"an answer took {took:.2f} s")
        return status

    def _truthful(self, status):
        """Sound and words agree, or come to agree within seconds, whichever of the two moves."""
        if "sound" in self._around.broken:
            return
        began, owed = time.monotonic(), self._owed()
        while True:
            says = status["playing"] and not status["buffering"] and status["output"] == "here"
            heard = self._around.ears.now()
            # The media player speaks of this computer's own sound, whichever way the output is.
            if self._hears(status) if says else heard is None or self._around.media_player.status == "Playing":
                break
            passed = time.monotonic() - began - (self._owed() - owed)
            if passed > (SOUND if says else QUIET):
                raise Violation(f"it says {_short(status)}, {self._around.media_player.status}, "
                                f"and {heard or 'nothing'} is heard for {passed:.1f} s")
            time.sleep(0.15)
            status = self._answering()
        self._note("sound", time.monotonic() - began)

    def _text(self, status):
        """The song is one of this station, and the newest where everything has worked for long enough."""
        found = SONG.fullmatch(status["song"] or "")
        if not found:
            return
        if found.group(1) != status["station"]:
            # It may have changed between two words of one answer's making; not for longer.
            time.sleep(0.2)
            status = self._answering()
            found = SONG.fullmatch(status["song"] or "")
            if found and found.group(1) != status["station"]:
                raise Violation(f"{status['station']} shows {status['song']!r}")
            return
        age = self._age(status)
        if not self._around.broken:
            self._note("text", age)
            if age > TEXT and time.monotonic() - self._around.healthy_since > TEXT:
                raise Violation(f"{status['station']} has shown {status['song']!r} for {age:.0f} s too long")

    def _age(self, status):
        """Seconds for which the song that is shown has not been the newest one."""
        serial = int(SONG.fullmatch(status["song"]).group(2))
        later = [at for number, at in self._around.songs[status["station"]] if number > serial]
        return time.monotonic() - later[0] if later else 0.0

    def _not_busy(self):
        at, used = self._work
        self._work = now, total = self._load()
        passed, work = now - at, total - used
        if passed > 1:
            self._note("share", max(0.0, work - WORK) / passed)
        if work > WORK + SHARE * passed:
            raise Violation(f"{work:.1f} s of processor in {passed:.1f} s")

    # When everything has been put right.

    def after_health(self):
        """It plays, or is silent, as it was told; the newest song is shown; nothing has grown."""
        self._alive()
        around = self._around
        since = time.monotonic()
        status = self._answering()
        if around.wants_to_play and status["output"] == "here" and not status["playing"]:
            raise Violation("it has stopped to play by itself")
        self._until(lambda s: not (s["playing"] and s["output"] == "here") or self._hears(s), SOUND_AGAIN, since,
                    "no sound although everything works again")
        self._until(lambda s: SONG.fullmatch(s["song"] or "") and self._age(s) == 0, TEXT, since,
                    "not the newest song although everything works again")
        self._until(lambda s: not s["scanning"], 60, since, "a search without end")
        self.after_fault()
        # It is the answer that counts here; how long it takes was measured without a start of a process around it.
        done = around.radio.ask("--status", "--json", timeout=180)
        if done.returncode:
            raise Violation(f"--status: {done.stderr.strip()}")
        self._not_grown()

    def _hears(self, status):
        heard = self._around.ears.now()
        return isinstance(heard, tuple) and heard[0] == status["station"]

    def _until(self, holds, seconds, since, what):
        owed = self._owed()
        while True:
            status = self._answering()
            if holds(status):
                return
            if time.monotonic() - since - (self._owed() - owed) > seconds:
                raise Violation(f"{what} for {seconds:.0f} s: {_short(status)}, heard {self._around.ears.now()}")
            time.sleep(0.25)

    def _not_grown(self):
        radio = self._around.radio
        now = {"memory": radio.memory(), "threads": radio.threads(), "descriptors": radio.descriptors()}
        self.held.append({**now, "pid": radio.pid})
        warm = [one for one in self.held if one["pid"] == radio.pid]
        if len(warm) <= WARM:
            return
        for what, allowed in GROWTH.items():
            most = max(one[what] for one in warm[:WARM])
            if now[what] > most + allowed:
                raise Violation(f"{what} grew from {most} to {now[what]}")

    # What the program used, and what it was owed.

    def _load(self):
        used = 0.0
        for task in _tasks(self._around.radio.pid):
            used += task[0]
        return time.monotonic(), used

    def _owed(self):
        return self._around.owed()

    def forget_work(self):
        """After a new start: its processor time begins anew."""
        self._work = self._load()

    def _note(self, what, value):
        self._worst[what] = max(self._worst[what], value)


def _tasks(pid):
    try:
        with open(f"/proc/{pid}/stat", encoding="ascii", errors="replace") as file:
            fields = file.read().rsplit(")", 1)[1].split()
        yield (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK"),
    except OSError:
        return


def _short(status):
    return {key: status[key] for key in ("station", "playing", "buffering", "output", "song", "scanning")}


