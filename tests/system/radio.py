# SPDX-License-Identifier: GPL-3.0-or-later
"""The program under test, as a person or another program meets it."""

import configparser
import json
import os
import re
import subprocess
import threading
import time

from zofralab.desktop import MediaPlayer
from zofralab.lab import program_environment
from zofralab.process import terminate, wait_until

NAME = "be.zofra.ZofraZofra"
MEDIA_PLAYER = "org.mpris.MediaPlayer2.zofrazofra"


class Line:
    """One line of output and when it came."""

    def __init__(self, at, text):
        self.at = at
        self.text = text

    def __repr__(self):
        return f"{self.at:.3f} {self.text}"


class Radio:
    """One run of the program in the program's namespace, with a home of its own."""

    def __init__(self, binary, lab, session, sound_server, display, home):
        self.binary = binary
        self.home = home
        self.lines = []
        self.errors = []
        self.started_at = None
        self.process = None
        self._lab = lab
        self._readers = []
        self.environment = {
            **program_environment(lab, session), "PULSE_SERVER": sound_server.server, "HOME": home,
            "XDG_CONFIG_HOME": os.path.join(home, "config"), "XDG_DATA_HOME": os.path.join(home, "data"),
            "XDG_CACHE_HOME": os.path.join(home, "cache"), "XDG_STATE_HOME": os.path.join(home, "state"),
            "LANG": "C.UTF-8", "DISPLAY": display.name,
        }
        for name in ("LANGUAGE", "LC_ALL", "LC_MESSAGES", "WAYLAND_DISPLAY", "XDG_CURRENT_DESKTOP",
                     "XDG_SESSION_TYPE", "DESKTOP_SESSION", "QT_QPA_PLATFORM"):
            self.environment.pop(name, None)

    # Running it.

    def start(self, *options, headless=True, discovery=False, endpoints=True, wait=True):
        """Start it; returns when it is on the bus (unless told not to wait)."""
        command = [self.binary, *options]
        if headless:
            command.append("--headless")
        if not discovery:
            command.append("--no-discovery")
        if endpoints:
            command += ["--endpoints", self._lab.endpoints if endpoints is True else endpoints]
        self.started_at = time.monotonic()
        self.process = subprocess.Popen([*self._lab.enter("/"), *command], env=self.environment,
                                        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self._readers = [threading.Thread(target=self._read, args=pair, daemon=True)
                         for pair in ((self.process.stdout, self.lines), (self.process.stderr, self.errors))]
        for reader in self._readers:
            reader.start()
        if wait:
            self.wait_ready()
        return self

    def wait_ready(self, timeout=30.0):
        """Wait until it answers `--status`."""
        def ready():
            ended = self.process.poll()
            assert ended is None, f"the program ended with {ended}:\n{self.transcript()}"
            return self.ask("--status", "--json").returncode == 0
        wait_until(ready, timeout, "the program to answer", 0.05)

    def ask(self, *options, timeout=20.0, environment=None):
        """Start it a second time with these options, as a command; returns the finished command."""
        return subprocess.run([*self._lab.enter("/"), self.binary, *options], env=environment or self.environment,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=timeout, check=False)

    def status(self):
        """What `--status --json` says."""
        done = self.ask("--status", "--json")
        assert done.returncode == 0, done.stderr
        return json.loads(done.stdout)

    def wait_status(self, timeout=30.0, **wanted):
        """Wait until `--status --json` has these values."""
        last = {}

        def holds():
            last.clear()
            last.update(self.status())
            return all(last.get(key) == value for key, value in wanted.items())
        try:
            wait_until(holds, timeout, f"status {wanted}", 0.05)
        except TimeoutError as error:
            raise AssertionError(f"{error}; it is {last}") from None
        return last

    def quit(self, timeout=20.0):
        """Ask it to end; returns its exit status."""
        done = self.ask("--quit")
        assert done.returncode == 0, done.stderr
        return self.wait_end(timeout)

    def wait_end(self, timeout=20.0):
        """Wait until it has ended by itself; returns its exit status."""
        status = self.process.wait(timeout)
        for reader in self._readers:
            reader.join(2)
        return status

    def stop(self):
        """End it in any case."""
        if self.process is not None:
            terminate(self.process)
            for reader in self._readers:
                reader.join(2)

    # What it says.

    def wait_line(self, pattern, timeout=30.0, since=None):
        """Wait for a whole line of standard output that matches; returns the `Line`."""
        since = since if since is not None else 0.0

        def found():
            return next((line for line in list(self.lines)
                         if line.at >= since and re.fullmatch(pattern, line.text)), None)
        try:
            return wait_until(found, timeout, f"a line {pattern!r}")
        except TimeoutError as error:
            raise AssertionError(f"{error}; there were {[line.text for line in self.lines]}") from None

    def lines_like(self, pattern, since=0.0):
        """All lines of standard output so far that match."""
        return [line for line in list(self.lines) if line.at >= since and re.fullmatch(pattern, line.text)]

    def transcript(self):
        """Everything it said, for a failing test."""
        return "\n".join([*map(str, self.lines), "-- errors:", *map(str, self.errors)])

    # What it keeps, and what it costs.

    @property
    def settings_path(self):
        """Its settings file."""
        return os.path.join(self.home, "config", "zofrazofra", "zofrazofra.ini")

    def setting(self, key, section="General"):
        """A value from the settings file, as text, or None."""
        parser = configparser.ConfigParser(interpolation=None, strict=False)
        parser.optionxform = str
        try:
            with open(self.settings_path, encoding="utf-8") as file:
                parser.read_file(file)
        except FileNotFoundError:
            return None
        return parser.get(section, key, fallback=None)

    def write_settings(self, **values):
        """Settings that are there before it starts."""
        os.makedirs(os.path.dirname(self.settings_path), exist_ok=True)
        with open(self.settings_path, "w", encoding="utf-8") as file:
            file.write("[General]\n" + "".join(f"{key}={value}\n" for key, value in values.items()))

    def write_section(self, section, **values):
        """Further settings, of a section of their own, that are there before it starts."""
        os.makedirs(os.path.dirname(self.settings_path), exist_ok=True)
        with open(self.settings_path, "a", encoding="utf-8") as file:
            file.write(f"[{section}]\n" + "".join(f"{key}={value}\n" for key, value in values.items()))

    @property
    def pid(self):
        """Its process: entering the namespace replaces itself by the program."""
        return self.process.pid

    def threads(self):
        """How many threads it has."""
        return len(os.listdir(f"/proc/{self.pid}/task"))

    def descriptors(self):
        """How many files it has open."""
        return len(os.listdir(f"/proc/{self.pid}/fd"))

    def memory(self):
        """The memory that is its own alone, in kilobytes: what it shares changes with who else runs."""
        with open(f"/proc/{self.pid}/smaps_rollup", encoding="ascii") as file:
            return int(re.search(r"^Anonymous:\s+(\d+) kB", file.read(), re.M).group(1))

    def peak_memory(self):
        """The largest resident set it ever had, in kilobytes."""
        with open(f"/proc/{self.pid}/status", encoding="ascii") as file:
            return int(re.search(r"^VmHWM:\s+(\d+) kB", file.read(), re.M).group(1))

    # Its place on the bus.

    def media_player(self, peer):
        """It, as media keys see it."""
        peer.wait_for_name(MEDIA_PLAYER)
        return MediaPlayer(peer)

    def _read(self, stream, lines):
        for raw in stream:
            lines.append(Line(time.monotonic(), raw.decode("utf-8", "replace").rstrip("\n")))
