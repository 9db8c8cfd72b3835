# SPDX-License-Identifier: GPL-3.0-or-later
"""What the scripts in the program's namespace share: being asked line by line, and hearing multicast.

Imported by those scripts only, which run without anything else of the lab.
"""

import json
import socket
import struct
import sys

HOME = "10.77.0.2"
GROUP = ("239.255.255.250", 1900)


def multicast_socket():
    """A datagram socket that hears the group on the namespace's own network."""
    udp = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    udp.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    udp.bind(("", GROUP[1]))
    own = struct.pack("4s4s", socket.inet_aton(GROUP[0]), socket.inet_aton(HOME))
    udp.setsockopt(socket.IPPROTO_IP, socket.IP_ADD_MEMBERSHIP, own)
    return udp


def answer_requests(agent):
    """Calls the methods of `agent` that standard input names, one JSON object a line, until it ends."""
    for line in sys.stdin:
        asked = json.loads(line)
        try:
            answer = {"result": getattr(agent, asked["do"])(**asked["args"])}
        except Exception as error:  # belongs to the test that asked
            answer = {"error": f"{type(error).__name__}: {error}"}
        print(json.dumps(answer), flush=True)
