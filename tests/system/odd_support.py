# SPDX-License-Identifier: GPL-3.0-or-later
"""What the tests of odd players and services share: somebody in the program's namespace who says anything at all."""

import json
import os
import subprocess

import pytest

from zofralab.lab import PYTHON
from zofralab.process import clean_environment, terminate

HERE = os.path.dirname(os.path.abspath(__file__))


class Oddity:
    """Runs odd_agent.py; its functions are methods here."""

    def __init__(self, lab):
        self._child = subprocess.Popen([*lab.enter(), PYTHON, os.path.join(HERE, "odd_agent.py")],
                                       stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                                       env=clean_environment())

    def __getattr__(self, do):
        def ask(**named):
            self._child.stdin.write(json.dumps({"do": do, "args": named}) + "\n")
            self._child.stdin.flush()
            answer = json.loads(self._child.stdout.readline())
            if "error" in answer:
                raise RuntimeError(answer["error"])
            return answer["result"]
        return ask

    def close(self):
        """Ends it."""
        self._child.stdin.close()
        self._child.stdout.close()
        terminate(self._child)


@pytest.fixture
def oddity(lab):
    """Somebody odd, saying nothing yet."""
    one = Oddity(lab)
    yield one
    one.close()


def whole(body, head="HTTP/1.1 200 OK", headers=""):
    """An ordinary answer around bytes that are given as latin-1 text."""
    return f"{head}\r\nContent-Type: text/xml\r\nContent-Length: {len(body)}\r\n{headers}\r\n{body}"


def latin1(text):
    """UTF-8 bytes as the latin-1 text in which they travel."""
    return text.encode().decode("latin-1")
