# SPDX-License-Identifier: GPL-3.0-or-later
"""What everything in the house has in common."""

import inspect


class UnknownCommand(Exception):
    """A switch that the service does not have."""


class Service:
    """One service of the lab, living in the house's namespace on the world's event loop.

    `start` begins serving in the healthy state, `stop` ends it and everything it started, `reset` goes back to the
    healthy state and forgets what was recorded (between two tests; must be quick and must work after any fault).
    A switch `NAME.foo key=value` calls the method `do_foo(key=value)`, plain or async; what it returns (anything JSON
    can carry) is the answer. Values from a command line arrive as JSON where they parse as JSON, else as text.
    """

    #: The word before the dot in a switch.
    name = ""

    def __init__(self, world):
        self.world = world

    async def start(self):
        """Begin serving; healthy."""

    async def stop(self):
        """End serving; must not fail when `start` did not finish."""

    async def reset(self):
        """Healthy again, records emptied."""

    def endpoints(self):
        """What the service adds to endpoints.ini: {section: {key: host}}."""
        return {}

    async def command(self, name, /, **args):
        """Carry out one switch."""
        method = getattr(self, "do_" + name, None)
        if method is None:
            known = sorted(n[3:] for n in dir(self) if n.startswith("do_"))
            raise UnknownCommand(f"{self.name} has no switch {name}; it has {', '.join(known) or 'none'}")
        result = method(**args)
        return await result if inspect.isawaitable(result) else result
