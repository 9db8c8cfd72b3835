# SPDX-License-Identifier: GPL-3.0-or-later
"""Private message buses, a client for them, and a mocked logind."""

import os
import socket
import subprocess
import threading
import time

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

from .process import DIE_WITH_PARENT, clean_environment, terminate, wait_until  # noqa: E402

CONFIG = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
 <type>session</type><listen>unix:path={socket}</listen><auth>EXTERNAL</auth>
 <policy context="default">
  <allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/>
 </policy>
</busconfig>
"""

_loop_thread = None


def run_main_loop():
    """One thread dispatches signals and calls of all connections of this process."""
    global _loop_thread
    if _loop_thread is None:
        _loop_thread = threading.Thread(target=GLib.MainLoop().run, name="bus", daemon=True)
        _loop_thread.start()


class MessageBus:
    """A dbus-daemon of our own, which starts nothing by itself. Start it from the main thread."""

    def __init__(self, directory, kind="session"):
        self._directory = directory
        self._kind = kind
        self._process = None
        self.socket = os.path.join(directory, f"{kind}-bus")

    @property
    def address(self):
        """For DBUS_SESSION_BUS_ADDRESS or its system counterpart."""
        return "unix:path=" + self.socket

    @property
    def pid(self):
        """Of the daemon."""
        return self._process.pid

    def start(self):
        """Start (again, at the same address) and wait until it listens."""
        os.makedirs(self._directory, mode=0o700, exist_ok=True)
        config = os.path.join(self._directory, f"{self._kind}-bus.conf")
        with open(config, "w", encoding="ascii") as file:
            # Both are of the type "session": a system bus would ask for a user of its own and for services.
            file.write(CONFIG.format(socket=self.socket))
        if os.path.exists(self.socket):
            os.unlink(self.socket)
        self._process = subprocess.Popen(
            [*DIE_WITH_PARENT, "dbus-daemon", f"--config-file={config}", "--nofork", "--nosyslog"],
            env=clean_environment(), stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            start_new_session=True)
        wait_until(lambda: self._listens() or self._process.poll() is not None, 10, "the message bus")
        if self._process.poll() is not None:
            raise RuntimeError(f"dbus-daemon ended with {self._process.returncode}")
        return self

    def _listens(self):
        with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as probe:
            try:
                probe.connect(self.socket)
                return True
            except OSError:
                return False

    def stop(self):
        """End it; everybody on it is disconnected."""
        if self._process:
            terminate(self._process)
            self._process = None


class BusError(Exception):
    """An error answer; `name` is the D-Bus error's name."""

    def __init__(self, error):
        super().__init__(error.message)
        self.name = Gio.DBusError.get_remote_error(error) or ""


class Signal:
    """One signal as it arrived."""

    def __init__(self, sender, path, interface, name, arguments):
        self.at = time.monotonic()
        self.sender = sender
        self.path = path
        self.interface = interface
        self.name = name
        self.arguments = arguments

    def __repr__(self):
        return f"<{self.at:.3f} {self.path} {self.interface}.{self.name}{self.arguments!r}>"


class Peer:
    """A connection to a bus. Calls may come from any thread; signals are recorded as they come."""

    def __init__(self, address):
        run_main_loop()
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self.connection = Gio.DBusConnection.new_for_address_sync(address, flags, None, None)
        self.connection.set_exit_on_close(False)
        self.signals = []

    def close(self):
        """Leave the bus."""
        if not self.connection.is_closed():
            try:
                self.connection.close_sync(None)
            except GLib.Error:
                pass

    def call(self, name, path, interface, method, signature="()", arguments=(), timeout=5.0):
        """Call and wait; the answer's values as a tuple of plain Python values."""
        try:
            answer = self.connection.call_sync(name, path, interface, method, GLib.Variant(signature, arguments),
                                               None, Gio.DBusCallFlags.NO_AUTO_START, int(timeout * 1000), None)
        except GLib.Error as error:
            raise BusError(error) from None
        return answer.unpack()

    def get(self, name, path, interface, prop):
        """One property, unpacked."""
        return self.call(name, path, "org.freedesktop.DBus.Properties", "Get", "(ss)", (interface, prop))[0]

    def get_all(self, name, path, interface):
        """All properties of an interface, unpacked."""
        return self.call(name, path, "org.freedesktop.DBus.Properties", "GetAll", "(s)", (interface,))[0]

    def set(self, name, path, interface, prop, variant):
        """Write one property; `variant` is a GLib.Variant."""
        self.call(name, path, "org.freedesktop.DBus.Properties", "Set", "(ssv)", (interface, prop, variant))

    def introspect(self, name, path):
        """The XML of one object."""
        return self.call(name, path, "org.freedesktop.DBus.Introspectable", "Introspect")[0]

    def names(self):
        """Every name on the bus."""
        return self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ListNames")[0]

    def owner(self, name):
        """The unique name behind a well-known one, or None."""
        try:
            return self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                             "GetNameOwner", "(s)", (name,))[0]
        except BusError:
            return None

    def process_id(self, name):
        """The process behind a name."""
        return self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                         "GetConnectionUnixProcessID", "(s)", (name,))[0]

    def wait_for_name(self, name, timeout=5.0):
        """Wait until somebody has this name; returns the unique name."""
        return wait_until(lambda: self.owner(name), timeout, f"{name} on the bus", 0.005)

    def record_signals(self, sender=None, interface=None, path=None, then=None):
        """Keep matching signals in `signals` from now on, and call `then` with each."""
        def arrived(_connection, from_whom, object_path, of_interface, signal, parameters):
            record = Signal(from_whom, object_path, of_interface, signal, parameters.unpack())
            self.signals.append(record)
            if then:
                then(record)
        self.connection.signal_subscribe(sender, interface, None, path, None, Gio.DBusSignalFlags.NONE, arrived)
        self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId")  # it is in force

    def own(self, name):
        """Take a well-known name."""
        if self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName", "(su)",
                     (name, 4))[0] != 1:
            raise RuntimeError(f"{name} is taken")

    def disown(self, name):
        """Give a well-known name back."""
        self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ReleaseName", "(s)",
                  (name,))


class MockedLogind:
    """logind on a private system bus, as python-dbusmock plays it."""

    PATH, INTERFACE = "/org/freedesktop/login1", "org.freedesktop.login1.Manager"

    def __init__(self, bus):
        self._bus = bus
        self._process = None
        self._peer = None

    def start(self):
        """Start it and wait for its name."""
        env = {**clean_environment(), "DBUS_SYSTEM_BUS_ADDRESS": self._bus.address}
        self._process = subprocess.Popen(
            [*DIE_WITH_PARENT, "/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "logind"], env=env,
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)
        self._peer = Peer(self._bus.address)
        self._peer.wait_for_name("org.freedesktop.login1", 10)
        return self

    @property
    def peer(self):
        """A connection to its bus."""
        return self._peer

    def prepare_for_sleep(self, is_starting):
        """True when the computer is about to sleep, False when it has woken up."""
        self._peer.call("org.freedesktop.login1", self.PATH, "org.freedesktop.DBus.Mock", "EmitSignal", "(sssav)",
                        (self.INTERFACE, "PrepareForSleep", "b", [GLib.Variant("b", is_starting)]))

    def stop(self):
        """End it."""
        if self._peer:
            self._peer.close()
        if self._process:
            terminate(self._process)
