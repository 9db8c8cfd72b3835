# SPDX-License-Identifier: GPL-3.0-or-later
"""A household of networked players that keep real state, answer like real ones, and fail on demand."""

from .plugin import Household

__all__ = ["Household"]
