# SPDX-License-Identifier: GPL-3.0-or-later
"""How a player misbehaves on demand. All off: it behaves."""

from __future__ import annotations

import dataclasses
from dataclasses import dataclass, field
from typing import Any, Union

#: What one action can be told to answer: a UPnP fault (int < 1100 and not an HTTP status below), or a word.
ActionFailure = Union[int, str]


@dataclass
class Switches:
    """One field per way to fail. A test sets them by name."""

    #: Seconds before any answer, on top of the household's usual latency.
    delay: float = 0.0
    #: Action name to the seconds before it is carried out and answered; others may come in between.
    late: dict[str, float] = field(default_factory=dict)
    #: Accepts, reads and never answers.
    silent: bool = False
    #: Connections are refused while the address stays.
    refuse: bool = False
    #: Answers with bytes that are not HTTP.
    garbage: bool = False
    #: Local control is off: control and events answer 403 with a page of HTML; descriptions stay.
    forbidden: bool = False
    #: GetZoneGroupState answers HTTP 500 with fault 501, as large households do.
    topology_too_large: bool = False
    #: Actions are carried out but answered with this status and no body (204, 201 …); 0 is off.
    action_status: int = 0
    #: Every request answers this status with an empty body; 0 is off.
    status: int = 0
    #: Closes after so many bytes of the answer; -1 is off.
    close_after: int = -1
    #: Seconds between single bytes of an answer; 0 is off.
    trickle: float = 0.0
    #: A body that never ends, without a length.
    endless: bool = False
    #: Action name to a UPnP error code, or "close", "silent", "reset" or "http:STATUS".
    fail: dict[str, ActionFailure] = field(default_factory=dict)
    #: "" or one of descriptions.HOSTILE.
    description: str = ""
    #: "" or one of topology.HOSTILE.
    topology: str = ""
    #: "answer", "silent", or how often each search is answered ("2").
    ssdp: str = "answer"

    def apply(self, changes: dict[str, Any]) -> None:
        """Sets fields by name. Raises ValueError for a name that is none, or a value of the wrong type."""
        known = {f.name for f in dataclasses.fields(self)}
        for name, value in changes.items():
            if name not in known:
                raise ValueError(f"no switch called {name!r}; there are {', '.join(sorted(known))}")
            now = getattr(self, name)
            if isinstance(now, float) and isinstance(value, int):
                value = float(value)
            if type(value) is not type(now):
                raise ValueError(f"switch {name} takes {type(now).__name__}, not {value!r}")
            setattr(self, name, value)

    def changed(self) -> dict[str, Any]:
        """The switches that are not as they were at first."""
        fresh = Switches()
        return {k: v for k, v in vars(self).items() if v != getattr(fresh, k)}
