# SPDX-License-Identifier: GPL-3.0-or-later
"""Players and services that are odd, in the program's namespace: they say to the letter what a test tells them.

Is asked as agent_loop.py reads it. Bytes travel as latin-1 text. What a connection is answered
with is a list: texts to send, and numbers, which are seconds to wait; then it is closed.
"""

import socket
import ssl
import threading
import time

from agent_loop import HOME, answer_requests, multicast_socket


def read_request(connection):
    """One request: its head and, as far as a length is given, its body. Empty when the other side has left."""
    data = b""
    while b"\r\n\r\n" not in data:
        piece = connection.recv(65536)
        if not piece:
            return b"", b""
        data += piece
    head, _, body = data.partition(b"\r\n\r\n")
    wanted = 0
    for line in head.split(b"\r\n")[1:]:
        name, _, value = line.partition(b":")
        if name.strip().lower() == b"content-length":
            wanted = int(value)
    while len(body) < wanted:
        piece = connection.recv(65536)
        if not piece:
            break
        body += piece
    return head, body


class Server(threading.Thread):
    """Answers by path; what no path is known for gets 404."""

    def __init__(self, address, port, answers, certificate=None):
        super().__init__(daemon=True)
        self.requests = []
        self._answers = answers
        self._context = None
        if certificate:
            self._context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            self._context.load_cert_chain(*certificate)
        family = socket.AF_INET6 if ":" in address else socket.AF_INET
        self._listener = socket.create_server((address, port), family=family, backlog=64)

    def run(self):
        while True:
            connection, _ = self._listener.accept()
            threading.Thread(target=self._serve, args=(connection,), daemon=True).start()

    def _serve(self, connection):
        try:
            connection.settimeout(20)
            connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            if self._context:
                connection = self._context.wrap_socket(connection, server_side=True)
            with connection:
                head, body = read_request(connection)
                if head:
                    self._answer(connection, head, body)
        except OSError:
            pass  # the program may leave whenever it likes

    def _answer(self, connection, head, body):
        path = head.split(b" ")[1].decode("latin-1")
        self.requests.append({"at": time.monotonic(), "head": head.decode("latin-1"), "body": body.decode("latin-1"),
                              "path": path})
        for part in self._answers.get(path, ["HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n"]):
            if isinstance(part, str):
                connection.sendall(part.encode("latin-1"))
            else:
                time.sleep(part)


class Responder(threading.Thread):
    """Answers every search with the same datagrams."""

    def __init__(self, datagrams):
        super().__init__(daemon=True)
        self.heard = []
        self._datagrams = [text.encode("latin-1") for text in datagrams]
        self._udp = multicast_socket()

    def run(self):
        while True:
            data, sender = self._udp.recvfrom(65536)
            if data.startswith(b"M-SEARCH"):
                self.heard.append(data.decode("latin-1"))
                for datagram in self._datagrams:
                    self._udp.sendto(datagram, sender)


class Agent:
    """What can be asked for: each public method of this class."""

    def __init__(self):
        self._servers = {}
        self._responder = None

    def serve(self, port, answers, address=HOME, certificate=None):
        """Answers on this port from now on."""
        server = self._servers[port] = Server(address, port, answers, certificate)
        server.start()

    def requests(self, port):
        """What was asked on a port."""
        return self._servers[port].requests

    def respond(self, datagrams):
        """Answers searches from now on."""
        self._responder = Responder(datagrams)
        self._responder.start()

    def searches(self):
        """The searches heard."""
        return self._responder.heard


if __name__ == "__main__":
    answer_requests(Agent())
