# SPDX-License-Identifier: GPL-3.0-or-later
"""GSSDP as a judge: another implementation of the search protocol, on either side of the cable.

    household_gssdp.py publish INTERFACE TARGET USN LOCATION    answers searches until standard input ends
    household_gssdp.py browse INTERFACE TARGET SECONDS          searches, and prints what it found as JSON
    household_gssdp.py count INTERFACE TARGET COUNT SECONDS     searches, and prints after how many seconds it knew so many
"""

import json
import sys
import time

import gi

gi.require_version("GSSDP", "1.6")
from gi.repository import GLib, GSSDP  # noqa: E402


def client(interface):
    """The other side of the cable, at the standard port."""
    made = GSSDP.Client.new_full(interface, None, 1900, GSSDP.UDAVersion.VERSION_1_0)
    return made


def publish(interface, target, usn, location):
    """Offers one resource."""
    group = GSSDP.ResourceGroup.new(client(interface))
    group.add_resource_simple(target, usn, location)
    group.set_available(True)
    loop = GLib.MainLoop()
    GLib.io_add_watch(sys.stdin.fileno(), GLib.PRIORITY_DEFAULT, GLib.IOCondition.HUP, lambda *_: loop.quit())
    print("ready", flush=True)
    loop.run()


def browse(interface, target, seconds):
    """Collects what is available."""
    found = {}
    browser = GSSDP.ResourceBrowser.new(client(interface), target)
    browser.connect("resource-available", lambda _, usn, locations: found.update({usn: list(locations)}))
    browser.set_active(True)
    loop = GLib.MainLoop()
    GLib.timeout_add(int(float(seconds) * 1000), loop.quit)
    loop.run()
    print(json.dumps(found))


def count(interface, target, enough, seconds):
    """How long it takes to hear of so many."""
    found, began, loop = set(), time.monotonic(), GLib.MainLoop()
    browser = GSSDP.ResourceBrowser.new(client(interface), target)

    def available(_browser, usn, _locations):
        found.add(usn)
        if len(found) == int(enough):
            print(f"{time.monotonic() - began:.3f}")
            loop.quit()
    browser.connect("resource-available", available)
    browser.set_active(True)
    GLib.timeout_add(int(float(seconds) * 1000), loop.quit)
    loop.run()


if __name__ == "__main__":
    {"publish": publish, "browse": browse, "count": count}[sys.argv[1]](*sys.argv[2:])
