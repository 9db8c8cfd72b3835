# SPDX-License-Identifier: GPL-3.0-or-later
"""A stranger in the program's namespace: does on the network what tests tell it.

Bytes travel as latin-1 text.
"""

import socket
import threading
import time

from agent_loop import HOME, answer_requests, multicast_socket


def exchange(host, port, data, timeout=5.0, source=None):
    """Sends bytes and reads until the other side closes. What came, how it ended, and how long it took."""
    began = time.monotonic()
    received, end = b"", "closed"
    try:
        with socket.create_connection((host, port), timeout, (source, 0) if source else None) as connection:
            connected = time.monotonic()
            connection.settimeout(timeout)
            connection.sendall(data.encode("latin-1"))
            while len(received) < 8 << 20 and time.monotonic() - connected < timeout:
                chunk = connection.recv(65536)
                if not chunk:
                    break
                received += chunk
            else:
                end = "endless"
    except socket.timeout:
        end = "timeout"
    except ConnectionResetError:
        end = "reset"
    except OSError as error:
        end = f"errno {error.errno}"
    return {"data": received.decode("latin-1"), "end": end, "seconds": time.monotonic() - began}


def hold(host, port, count, seconds):
    """Opens many connections at once and keeps them that long, saying nothing. How many there were."""
    opened = [socket.create_connection((host, port), 3) for _ in range(count)]
    time.sleep(seconds)
    for connection in opened:
        connection.close()
    return len(opened)


def search(data, to, seconds):
    """Sends a datagram to each address and collects what comes back: [text, sender, seconds after sending]."""
    heard = []
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as udp:
        udp.setsockopt(socket.SOL_SOCKET, socket.SO_BROADCAST, 1)
        began = time.monotonic()
        for address in to:
            udp.sendto(data.encode("latin-1"), (address, 1900))
        while (left := began + seconds - time.monotonic()) > 0:
            udp.settimeout(left)
            try:
                answer, sender = udp.recvfrom(4096)
            except socket.timeout:
                break
            heard.append([answer.decode("latin-1"), sender[0], time.monotonic() - began])
    return heard


class Listener(threading.Thread):
    """Collects announcements."""

    def __init__(self):
        super().__init__(daemon=True)
        self.heard = []
        self._udp = multicast_socket()

    def run(self):
        while True:
            data, sender = self._udp.recvfrom(4096)
            if data.startswith(b"NOTIFY "):
                self.heard.append([data.decode("latin-1"), sender[0]])


class Radio(threading.Thread):
    """A broadcaster of noise: a stream that lasts, /once that ends, /moved that redirects, /gone that is not there."""

    def __init__(self, port):
        super().__init__(daemon=True)
        self.requests = []
        self._port = port
        self._listener = socket.create_server((HOME, port), backlog=64)

    def run(self):
        while True:
            connection, _ = self._listener.accept()
            threading.Thread(target=self._serve, args=(connection,), daemon=True).start()

    def _serve(self, connection):
        with connection:
            head = b""
            while b"\r\n\r\n" not in head:
                piece = connection.recv(4096)
                if not piece:
                    return
                head += piece
            self.requests.append(head.decode("latin-1"))
            path = head.split(b" ")[1]
            if path == b"/gone":
                connection.sendall(b"HTTP/1.0 404 Not Found\r\n\r\n")
            elif path == b"/moved":
                connection.sendall(b"HTTP/1.0 302 Found\r\nLocation: http://10.77.0.2:%d/radio\r\n\r\n" % self._port)
            else:
                connection.sendall(b"HTTP/1.0 200 OK\r\nContent-Type: audio/mpeg\r\n\r\n")
                try:
                    for _ in range(5 if path == b"/once" else 6000):
                        connection.sendall(b"\xff\xfb" * 400)
                        time.sleep(0.05)
                except OSError:
                    pass


class Agent:
    """What can be asked for: each public method of this class."""

    def __init__(self):
        self._listener = None
        self._radio = None

    exchange = staticmethod(exchange)
    hold = staticmethod(hold)
    search = staticmethod(search)

    def listen(self):
        """Collects announcements from now on."""
        self._listener = Listener()
        self._listener.start()

    def announcements(self):
        """What was announced since `listen`."""
        return self._listener.heard

    def radio(self, port=8000):
        """Goes on the air."""
        self._radio = Radio(port)
        self._radio.start()

    def radio_requests(self):
        """What the radio was asked."""
        return self._radio.requests


if __name__ == "__main__":
    answer_requests(Agent())
