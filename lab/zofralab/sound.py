# SPDX-License-Identifier: GPL-3.0-or-later
"""A private sound server with a null sink, and ears on it."""

import os
import subprocess
import threading
import time

from . import hearing
from .process import DIE_WITH_PARENT, clean_environment, terminate, wait_until

SINK = "lab"
CONFIG = """load-module module-native-protocol-unix socket={socket} auth-anonymous=1
load-module module-null-sink sink_name={sink} rate=48000 channels=2 sink_properties=device.description=Lab
set-default-sink {sink}
"""


class SoundServer:
    """PulseAudio for one run. Start it from the main thread."""

    def __init__(self, directory, with_sink=True):
        self._directory = directory
        self._with_sink = with_sink
        self._process = None
        self.socket = os.path.join(directory, "pulse.socket")

    @property
    def server(self):
        """What PULSE_SERVER is to be."""
        return "unix:" + self.socket

    @property
    def environment(self):
        """For its own clients."""
        return {**clean_environment(), "PULSE_SERVER": self.server, "XDG_RUNTIME_DIR": self._directory,
                "HOME": self._directory}

    def start(self):
        """Start and wait until clients can connect."""
        os.makedirs(self._directory, mode=0o700, exist_ok=True)
        script = os.path.join(self._directory, "pulse.pa")
        text = CONFIG.format(socket=self.socket, sink=SINK)
        with open(script, "w", encoding="ascii") as file:
            file.write(text if self._with_sink else text.splitlines()[0] + "\n")
        with open(os.path.join(self._directory, "pulse.log"), "wb") as log:
            self._process = subprocess.Popen(
                [*DIE_WITH_PARENT, "pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no",
                 "--disable-shm=yes", "-F", script], env=self.environment, stdin=subprocess.DEVNULL, stdout=log,
                stderr=log, start_new_session=True)
        # Needs its sink as well before a client may rely on it.
        wait_until(lambda: self._answers() or self._process.poll() is not None, 10, "the sound server", 0.05)
        if self._process.poll() is not None:
            raise RuntimeError(f"pulseaudio ended with {self._process.returncode}")
        return self

    def _answers(self):
        done = subprocess.run(["pactl", "info"], env=self.environment, capture_output=True, text=True, check=False)
        return done.returncode == 0 and (not self._with_sink or f"Default Sink: {SINK}" in done.stdout)

    def stop(self):
        """End it."""
        if self._process:
            terminate(self._process)


class Ears:
    """Records the sink from `start` on, and answers questions about any moment since.

    All times are `time.monotonic()`. Sound is stamped with the time at which it left the sink, as well as a
    recorder can tell: within about 30 ms.
    """

    def __init__(self, server):
        self._server = server
        self._process = None
        self._thread = None
        self._lock = threading.Lock()
        self._data = bytearray()
        self._origin = None
        self._dropped = 0
        self._cache = {}

    def start(self):
        """Begin to record. parec needs up to 2.5 s before the first sound; this waits for it."""
        self._process = subprocess.Popen(
            [*DIE_WITH_PARENT, "parec", "-d", f"{SINK}.monitor", "--raw", "--format=s16le", "--channels=1",
             f"--rate={hearing.RATE}", "--latency-msec=20"], env=self._server.environment,
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, start_new_session=True)
        self._thread = threading.Thread(target=self._record, name="ears", daemon=True)
        self._thread.start()
        wait_until(lambda: len(self._data) > hearing.RATE // 2, 10, "the first recorded sound")
        return self

    def stop(self):
        """Stop recording."""
        if self._process:
            terminate(self._process)
            self._thread.join(5)

    def forget(self):
        """Drop what was recorded so far (memory: 16 kB per second)."""
        with self._lock:
            whole = len(self._data) // (2 * hearing.WINDOW) * 2 * hearing.WINDOW
            del self._data[:whole]
            self._dropped += whole
            self._cache.clear()

    def recorded_until(self):
        """The moment up to which sound can be asked for."""
        with self._lock:
            return self._origin + (self._dropped + len(self._data)) / 2 / hearing.RATE

    def wait_recorded(self, moment, timeout=5.0):
        """Wait until sound of that moment is there."""
        wait_until(lambda: self.recorded_until() >= moment, max(0.0, moment - time.monotonic()) + timeout,
                   "recorded sound")

    def spans(self, start, end=None):
        """What was to be heard between two moments (default: until now), as a list of `hearing.Span`."""
        if end is None:
            end = self.recorded_until()
        else:
            self.wait_recorded(end)
        return hearing.spans(self._windows(start, end))

    def now(self, seconds=0.3):
        """What is to be heard at this moment: (station, codec), "noise" or None; judged over `seconds`."""
        end = self.recorded_until()
        windows = list(self._windows(end - seconds, end))
        kinds = {what for _, _, what, _ in windows}
        return kinds.pop() if len(kinds) == 1 else "noise"

    def wait_for(self, what, timeout, since=None, seconds=0.25):
        """Wait until `what` ((station, codec) or None for silence) has been heard for `seconds` on end after `since`
        (default: the moment of the call). Returns the moment at which it began."""
        return self.wait_for_any((what,), timeout, since, seconds)[0]

    def wait_for_any(self, choices, timeout, since=None, seconds=0.25):
        """Like `wait_for` for whichever of `choices` comes first; returns (moment, what)."""
        since = time.monotonic() if since is None else since
        seen = []

        def heard():
            seen[:] = self.spans(since)
            return next((span for span in seen if span.what in choices and span.seconds >= seconds), None)
        try:
            span = wait_until(heard, timeout, f"to hear one of {choices}", 0.05)
        except TimeoutError as error:
            raise AssertionError(f"{error}; heard {describe(seen, since)}") from None
        return span.start, span.what

    def loudness(self, start, end):
        """Root mean square between two moments, full scale being 1."""
        self.wait_recorded(end)
        return hearing.rms_of(hearing.samples_of(self._bytes(start, end)))

    def silences(self, start, end, shortest=0.1):
        """The silent spans of at least that length between two moments."""
        return [span for span in self.spans(start, end) if span.what is None and span.seconds >= shortest]

    def heard(self, start, end):
        """The set of everything heard between two moments, silence and windows in which one thing ends left out."""
        return {span.what for span in self.spans(start, end) if span.what is not None and span.what != "noise"}

    def _record(self):
        read = self._process.stdout.read1
        while chunk := read(4096):
            arrived = time.monotonic()
            with self._lock:
                self._data += chunk
                # The recorder may be late but never early: the earliest ever seen is the truth.
                origin = arrived - (self._dropped + len(self._data)) / 2 / hearing.RATE
                if self._origin is None or origin < self._origin:
                    self._origin = origin

    def _bytes(self, start, end):
        with self._lock:
            first = max(0, round((start - self._origin) * hearing.RATE) * 2 - self._dropped)
            last = max(0, round((end - self._origin) * hearing.RATE) * 2 - self._dropped)
            return bytes(self._data[first:last])

    def _windows(self, start, end):
        with self._lock:
            origin, dropped, length = self._origin, self._dropped, len(self._data)
        size = 2 * hearing.WINDOW
        first = max(dropped // size, -int(-((start - origin) * hearing.RATE) // hearing.WINDOW))
        last = min((dropped + length) // size, int((end - origin) * hearing.RATE // hearing.WINDOW))
        for index in range(first, last):
            if index not in self._cache:
                with self._lock:
                    raw = bytes(self._data[index * size - self._dropped:(index + 1) * size - self._dropped])
                if len(raw) < size:
                    continue
                self._cache[index] = hearing.listen(hearing.samples_of(raw))
            what, rms = self._cache[index]
            begin = origin + index * hearing.WINDOW / hearing.RATE
            yield begin, begin + hearing.WINDOW / hearing.RATE, what, rms


def describe(spans, since):
    """Spans in words, for a failing test."""
    def name(what):
        return "silence" if what is None else what if isinstance(what, str) else " ".join(what)
    return "; ".join(f"{span.start - since:+.2f} s {name(span.what)} for {span.seconds:.2f} s at {span.rms:.4f}"
                     for span in spans) or "nothing recorded"
