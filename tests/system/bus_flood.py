# SPDX-License-Identifier: GPL-3.0-or-later
"""A program on the bus that calls another one as fast as the bus takes it. Run as a program of its own, it sends what it reads
from standard input until it is ended, for half a minute at most, and says how far it is."""

import os
import socket
import subprocess
import sys
import threading
import time

from gi.repository import Gio

PIECE = 1024


def message(name, path, interface, method, body=None, wants_answer=True):
    """A call as bytes."""
    call = Gio.DBusMessage.new_method_call(name, path, interface, method)
    call.set_serial(7)
    if not wants_answer:
        call.set_flags(Gio.DBusMessageFlags.NO_REPLY_EXPECTED)
    if body is not None:
        call.set_body(body)
    return call.to_blob(Gio.DBusCapabilityFlags.NONE)


class Flood:
    """A program that sends one call again and again."""

    def __init__(self, path, call):
        self._command = [sys.executable, "-B", __file__, path]
        self._call = call
        self.sent = 0

    def __enter__(self):
        self._process = subprocess.Popen(self._command, stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self._process.stdin.write(self._call)
        self._process.stdin.close()
        threading.Thread(target=self._read, daemon=True).start()
        return self

    def __exit__(self, *_):
        self._process.terminate()
        self._process.wait(10)

    def _read(self):
        for _ in self._process.stdout:
            self.sent += PIECE


def main():
    """Send."""
    call = sys.stdin.buffer.read()
    connection = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
    connection.connect(sys.argv[1])
    connection.sendall(b"\0AUTH EXTERNAL " + str(os.getuid()).encode().hex().encode() + b"\r\n")
    connection.recv(4096)
    bus = "org.freedesktop.DBus"
    connection.sendall(b"BEGIN\r\n" + message(bus, "/org/freedesktop/DBus", bus, "Hello"))
    piece = call * PIECE
    limit = time.monotonic() + 30
    while time.monotonic() < limit:
        connection.sendall(piece)
        print("sent", flush=True)


if __name__ == "__main__":
    main()
