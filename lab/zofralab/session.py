# SPDX-License-Identifier: GPL-3.0-or-later
"""What a person's session gives a program: a run directory, message buses, sound. All private, all temporary."""

import os
import shutil
import tempfile

from .bus import MessageBus
from .sound import SoundServer


class Session:
    """Starts what is wanted in a directory of its own; `environment()` is what a program needs to be in it."""

    def __init__(self, parent_dir=None, with_sound=True, with_bus=True):
        self._with_sound = with_sound
        self._with_bus = with_bus
        # The sockets' paths must stay short, and the directory must outlive the lab that may remove its own.
        self.directory = tempfile.mkdtemp(prefix="zofrasession-", dir=parent_dir or "/tmp")
        self.sound = None
        self.session_bus = None
        self.system_bus = None

    def __enter__(self):
        if self._with_sound:
            self.sound = SoundServer(os.path.join(self.directory, "sound")).start()
        if self._with_bus:
            self.session_bus = MessageBus(self.directory, "session").start()
            self.system_bus = MessageBus(self.directory, "system").start()
        return self

    def __exit__(self, *_):
        for one in (self.sound, self.session_bus, self.system_bus):
            if one:
                one.stop()
        shutil.rmtree(self.directory, ignore_errors=True)

    def environment(self):
        """The variables that make a program part of this session."""
        env = {}
        if self._with_bus:
            env["XDG_RUNTIME_DIR"] = self.directory
            env["DBUS_SESSION_BUS_ADDRESS"] = self.session_bus.address
            env["DBUS_SYSTEM_BUS_ADDRESS"] = self.system_bus.address
        if self.sound:
            env["PULSE_SERVER"] = self.sound.server
        return env
