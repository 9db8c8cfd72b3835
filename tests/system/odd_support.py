# SPDX-License-Identifier: GPL-3.0-or-later
"""What the tests of odd players and services share: somebody in the program's namespace who says anything at all."""

import pytest

from agent_process import AgentProcess


@pytest.fixture
def oddity(lab):
    """Somebody odd, saying nothing yet."""
    one = AgentProcess(lab, "odd_agent.py")
    yield one
    one.close()


def whole(body, head="HTTP/1.1 200 OK", headers=""):
    """An ordinary answer around bytes that are given as latin-1 text."""
    return f"{head}\r\nContent-Type: text/xml\r\nContent-Length: {len(body)}\r\n{headers}\r\n{body}"


def latin1(text):
    """UTF-8 bytes as the latin-1 text in which they travel."""
    return text.encode().decode("latin-1")
