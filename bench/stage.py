# SPDX-License-Identifier: GPL-3.0-or-later
"""Where measuring happens: the lab, a session with sound and a screen, and rows of results that are shown at once."""

import configparser
import contextlib
import json
import os
import shutil
import subprocess
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
from radio import Radio
from zofralab.bus import Peer
from zofralab.desktop import StatusBar
from zofralab.display import Display
from zofralab.household.systemlog import SystemLog
from zofralab.lab import Lab, program_environment
from zofralab.process import terminate
from zofralab.session import Session
from zofralab.sound import Ears

#: ZOFRA_BINARY names another build of the program.
BINARY = os.path.abspath(os.environ.get("ZOFRA_BINARY", os.path.join(ROOT, "build", "release", "bin", "zofrazofra")))
#: The least that a program of this kind can be: an application object of the toolkit and a name on the bus.
FLOOR = os.path.join(ROOT, "build", "release", "bin", "floor")
#: The same without a face, with every library of the radio's and one secure connection.
FLOOR_LINKED = FLOOR + "_linked"
#: And the least that can play: libmpv with the radio's options and a plain connection.
ENGINE_FLOOR = os.path.join(ROOT, "build", "release", "bin", "engine_floor")


class Stage:
    """Use as a context. Everything that is started on it ends with it."""

    def __init__(self):
        self._open = contextlib.ExitStack()
        self.rows = []
        #: {title: its rows} and {name: (title, SVG)}, for those who publish.
        self.chapters, self.pictures = {}, {}
        self._title = ""

    def __enter__(self):
        self.place = self._open.enter_context(tempfile.TemporaryDirectory(prefix="zofrabench-"))
        self.lab = self._open.enter_context(Lab())
        self.session = self._open.enter_context(Session(self.lab.run_dir))
        self.display = Display().start()
        self._open.callback(self.display.stop)
        self.ears = Ears(self.session.sound).start()
        self._open.callback(lambda: self.ears.stop())
        self.peer = Peer(self.session.session_bus.address)
        self._open.callback(self.peer.close)
        self._bar = StatusBar(self.peer)
        return self

    def __exit__(self, *_):
        self._open.close()

    def row(self, what, value, target, **figures):
        """Show one result at once, and keep its figures."""
        self.rows.append({"what": what, "value": value, "target": target, **figures})
        self.chapters.setdefault(self._title, []).append(self.rows[-1])
        print(f"{what:<46} {value:<46} {target:<16} {figures.get('peer', '')} {figures.get('floor', '')}", flush=True)

    def heading(self, text):
        """Show what the next rows are about."""
        self._title = text
        print(f"\n{text}", flush=True)

    def draw(self, name, svg):
        """A picture for the rows of this heading."""
        self.pictures[name] = (self._title, svg)

    def keep(self, path):
        """Write every row as JSON."""
        with open(path, "w", encoding="utf-8") as file:
            json.dump(self.rows, file, indent=1, ensure_ascii=False)

    @contextlib.contextmanager
    def deaf(self):
        """Without the recorder for a while, whose small buffers would make every player wake up more often."""
        self.ears.stop()
        try:
            yield
        finally:
            self.ears = Ears(self.session.sound).start()

    @contextlib.contextmanager
    def status_bar(self):
        """A status bar that is only a list, there for a while."""
        self._bar.appear()
        try:
            yield self._bar
        finally:
            self._bar.disappear()

    @contextlib.contextmanager
    def radio(self, with_log=False):
        """The radio, not started yet, with a home of its own; the lab is put back to its healthy state before."""
        self.lab.reset()
        with contextlib.ExitStack() as stack:
            home = stack.enter_context(tempfile.TemporaryDirectory(dir=self.place))
            binary = BINARY
            log = None
            if with_log:
                os.makedirs(os.path.join(home, "log"))
                log = SystemLog(os.path.join(home, "log"))
                stack.callback(log.close)
                binary = log.wrapper(BINARY)
            radio = Radio(binary, self.lab, self.session, self.session.sound, self.display, home)
            stack.callback(radio.stop)
            self.ears.forget()
            yield (radio, log) if with_log else radio

    @contextlib.contextmanager
    def other(self, command, **pipes):
        """Another player, started where the radio is; None where it is not installed. `pipes` in place of no input and output."""
        if shutil.which(command[0]) is None:
            yield None
            return
        with tempfile.TemporaryDirectory(dir=self.place) as home:
            environment = {**program_environment(self.lab, self.session), "DISPLAY": self.display.name, "HOME": home,
                           "XDG_CONFIG_HOME": home, "XDG_CACHE_HOME": home, "XDG_DATA_HOME": home, "LANG": "C.UTF-8"}
            process = subprocess.Popen([*self.lab.enter("/"), *command], env=environment, start_new_session=True,
                                       **{name: subprocess.DEVNULL for name in ("stdin", "stdout", "stderr")} | pipes)
            try:
                yield process
            finally:
                terminate(process)

    def address(self, scheme="https"):
        """A stream of the lab that any player can open."""
        return f"{scheme}://qmusic-aac.streams.zofra.test/qmusic.aac"

    def on_air(self):
        """The address that is polled for what is on the air."""
        return f"https://{self._metadata_host('on_air')}/056/qp/v3/onair?rpIds=1"

    def live_host(self):
        """The host of the live feed."""
        return self._metadata_host("live_socket")

    def _metadata_host(self, name):
        endpoints = configparser.ConfigParser()
        endpoints.read(self.lab.endpoints)
        return endpoints["metadata"][name]

    def engine_floor(self):
        """The bare engine on that stream."""
        host, _, path = self.address("http").removeprefix("http://").partition("/")
        return [ENGINE_FLOOR, host, "/" + path]

    def mpv(self):
        """mpv on that stream, as careful about certificates as the radio is."""
        return ["mpv", "--no-config", "--no-video", "--really-quiet", f"--tls-ca-file={self.lab.authority}",
                "--tls-verify", self.address()]


def quantile(values, share):
    """The value below which that share of the values lies (nearest rank)."""
    ordered = sorted(values)
    return ordered[max(0, -int(-share * len(ordered) // 1) - 1)]


def slope(values):
    """Growth per step by least squares."""
    count = len(values)
    mean_x, mean_y = (count - 1) / 2, sum(values) / count
    return (sum((x - mean_x) * (y - mean_y) for x, y in enumerate(values)) /
            sum((x - mean_x) ** 2 for x in range(count)))
