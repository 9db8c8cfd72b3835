# SPDX-License-Identifier: GPL-3.0-or-later
"""A home of an ordinary user, for tests about rights: to root, modes of files mean nothing."""

import os
import shlex
import shutil
import tempfile

import pytest

NOBODY = 65534


class PlainUser:
    """A folder that is this user's own, and the way to run a program as this user."""

    def __init__(self):
        self._is_root = os.geteuid() == 0
        self.home = tempfile.mkdtemp(prefix="zofrahome-", dir="/tmp")
        os.chmod(self.home, 0o755)

    def close(self):
        """Remove it."""
        for folder, _, _ in os.walk(self.home):
            os.chmod(folder, 0o755)
        shutil.rmtree(self.home)

    def own(self):
        """Let everything in the folder be the user's."""
        if self._is_root:
            for folder, _, files in os.walk(self.home):
                for name in [folder, *(os.path.join(folder, file) for file in files)]:
                    os.chown(name, NOBODY, NOBODY)

    def wrapper(self, program):
        """The path of a script that replaces itself by `program`, run by the user."""
        if not self._is_root:
            return program
        folder = os.path.join(self.home, "bin")
        os.makedirs(folder, exist_ok=True)
        # The way to the original may be closed to others.
        copy = shutil.copy(program, folder)
        os.chmod(copy, 0o755)
        path = os.path.join(folder, "run")
        command = ["setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups", "--", copy]
        with open(path, "w", encoding="utf-8") as script:
            script.write("#!/bin/sh\nexec " + " ".join(map(shlex.quote, command)) + ' "$@"\n')
        os.chmod(path, 0o755)
        return path


@pytest.fixture
def plain_user():
    """An ordinary user with an empty home."""
    user = PlainUser()
    yield user
    user.close()
