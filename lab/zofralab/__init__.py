# SPDX-License-Identifier: GPL-3.0-or-later
"""A broadcaster and a house in a box: everything Zofra Zofra talks to, in network namespaces of its own."""
