# SPDX-License-Identifier: GPL-3.0-or-later
"""The lab as an object: start it, throw switches, run programs in the program's namespace, stop it."""

import json
import os
import select
import subprocess
import tempfile
import time

from . import netns
from .control import ControlClient
from .process import clean_environment, terminate

LAB_DIRECTORY = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
PYTHON = "/usr/bin/python3"


class LabError(Exception):
    """The lab did not start."""


def default_cache_dir():
    """Where encoded loops are kept from run to run: beside the build if there is one."""
    build = os.path.join(os.path.dirname(LAB_DIRECTORY), "build")
    if os.path.isdir(build) and os.access(build, os.W_OK):
        return os.path.join(build, "lab-cache")
    return os.path.join(os.environ.get("XDG_CACHE_HOME") or os.path.expanduser("~/.cache"), "zofralab")


class Lab:
    """One broadcaster and one house. Several can run beside each other."""

    def __init__(self, services=None, start_timeout=60.0):
        self._services = services
        self._start_timeout = start_timeout
        self._world = None
        self._control = None
        self.run_dir = None
        self.info = {}

    def start(self):
        """Start everything; returns when all of it serves. Call from the main thread."""
        self.run_dir = tempfile.mkdtemp(prefix="zofralab-", dir="/tmp")
        os.chmod(self.run_dir, 0o711)
        env = clean_environment()
        env["PYTHONPATH"] = LAB_DIRECTORY
        env["PYTHONDONTWRITEBYTECODE"] = "1"
        command = [*netns.unshare_command(), PYTHON, "-m", "zofralab.world", "--run-dir", self.run_dir,
                   "--cache-dir", default_cache_dir(), "--parent", str(os.getpid())]
        if self._services is not None:
            command += ["--services", ",".join(self._services)]
        # Kept open: the house removes its run directory, and the log with it.
        self._log = open(os.path.join(self.run_dir, "world.log"), "w+b")
        self._world = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=self._log,
                                       env=env, start_new_session=True)
        line = self._first_line()
        if not line:
            log = self.log_text()
            self.stop()
            raise LabError(f"the lab did not start:\n{log}")
        self.info = json.loads(line)
        self._control = ControlClient(self.info["control"])
        return self

    def stop(self):
        """End everything that `start` started."""
        if self._control:
            self._control.close()
            self._control = None
        if self._world:
            terminate(self._world, 10.0)
            self._world.stdout.close()
            self._world = None

    def __enter__(self):
        return self.start()

    def __exit__(self, *_):
        self.stop()

    def call(self, service, command, /, **args):
        """Throw a switch: `lab.call("icecast", "stop_mount", station="zofra", codec="aac")`."""
        return self._control.call(service, command, **args)

    def __getattr__(self, service):
        """The same, shorter: `lab.icecast.stop_mount(station="zofra", codec="aac")`."""
        if service.startswith("_"):
            raise AttributeError(service)
        return _Switches(self, service)

    def reset(self):
        """Everything healthy again and all records empty."""
        self.call("lab", "reset")

    def enter(self, directory=None):
        """The command prefix that runs a program in the program's namespace, dying with its parent."""
        return netns.enter_command(self.info["holder"], directory)

    def enter_for_others(self, directory=None):
        """The same for whoever reads the state file: the program is their child, and theirs to end."""
        return netns.enter_command(self.info["holder"], directory, [])

    @property
    def endpoints(self):
        """The generated endpoints.ini."""
        return self.info["endpoints"]

    @property
    def authority(self):
        """The PEM of the authority that signed the healthy certificates."""
        return self.info["authority"]

    def log_text(self, limit=20000):
        """The end of the house's log."""
        self._log.seek(0, os.SEEK_END)
        self._log.seek(max(0, self._log.tell() - limit))
        return self._log.read().decode(errors="replace")

    def _first_line(self):
        deadline = time.monotonic() + self._start_timeout
        while time.monotonic() < deadline and self._world.poll() is None:
            if select.select([self._world.stdout], [], [], 0.1)[0]:
                return self._world.stdout.readline()
        return b""


class _Switches:
    """`lab.SERVICE`: every attribute is a switch."""

    def __init__(self, lab, service):
        self._lab = lab
        self._service = service

    def __getattr__(self, command):
        return lambda **args: self._lab.call(self._service, command, **args)


def program_environment(lab, session=None):
    """The environment for a program that is to meet the lab (and the private session) and nothing else."""
    env = clean_environment()
    env["ZOFRA_LAB_ENDPOINTS"] = lab.endpoints
    env["ZOFRA_LAB_CONTROL"] = lab.info["control"]
    if session is not None:
        env.update(session.environment())
    return env
