# SPDX-License-Identifier: GPL-3.0-or-later
"""Who has which address.

The program lives in a home network, 10.77.0.0/24, as its own single address. The house's side is the router and
whatever players the household has. The broadcaster and the other services are beyond the router, at addresses
reserved for documentation, so that a scan of the home network never meets them.
"""

HOME_NETWORK = "10.77.0.0/24"
HOME_PREFIX = 24
PROGRAM_ADDRESS = "10.77.0.2"
ROUTER_ADDRESS = "10.77.0.1"
PROGRAM_INTERFACE = "home0"
HOUSE_INTERFACE = "house0"
SECOND_INTERFACE = "second0"

SERVICE_NETWORK = "198.51.100.0/24"
DNS_ADDRESS = "198.51.100.53"
LIVE_SOCKET = ("socket.zofra.test", "198.51.100.61")
ON_AIR = ("onair.zofra.test", "198.51.100.62")
SCRAPER = ("scraper.zofra.test", "198.51.100.63")
#: A name at which every mount of one codec is always served, whatever faults are set: where redirects lead.
EDGE = {"aac": ("edge-aac.zofra.test", "198.51.100.51"), "mp3": ("edge-mp3.zofra.test", "198.51.100.52")}


def stream_name(station, codec):
    """The host name of one of the eighteen stream addresses."""
    return f"{station.replace('_', '-')}-{codec}.streams.zofra.test"


def stream_address(index, codec):
    """The address behind `stream_name` for the station with this position in the catalogue."""
    return f"198.51.100.{10 + index if codec == 'aac' else 30 + index}"
