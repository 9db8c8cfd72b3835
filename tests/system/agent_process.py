# SPDX-License-Identifier: GPL-3.0-or-later
"""The test's end of a script that runs in the program's namespace."""

import json
import os
import subprocess

from zofralab.lab import PYTHON
from zofralab.process import clean_environment, terminate

HERE = os.path.dirname(os.path.abspath(__file__))


class AgentProcess:
    """Runs a script of this folder that answers as agent_loop.py does; the script's functions are methods here.

    `positional` names the arguments of those functions that may be given without their names.
    """

    def __init__(self, lab, script, positional=None):
        self._positional = positional or {}
        self._child = subprocess.Popen([*lab.enter(), PYTHON, os.path.join(HERE, script)], stdin=subprocess.PIPE,
                                       stdout=subprocess.PIPE, text=True, env=clean_environment())

    def __getattr__(self, do):
        def ask(*args, **named):
            named.update(zip(self._positional.get(do, ()), args, strict=False))
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
