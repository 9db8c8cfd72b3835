# SPDX-License-Identifier: GPL-3.0-or-later
"""A disk without room: a small one of memory, which only the program under test sees."""

import os
import shlex

#: The settings' folder is in its place, with a file that was there before, and not a byte is left.
SCRIPT = """set -e
mount -t tmpfs -o size=64k zofrafull "$1"
cat "$2" > "$1/zofrazofra.ini"
cat /dev/zero > "$1/filler" 2> /dev/null || true
shift 2
exec "$@"
"""


def wrapper(program, settings_folder, directory):
    """The path of a script that replaces itself by `program`, which then has its settings (those in `directory`,
    as zofrazofra.ini) on a full disk."""
    os.makedirs(settings_folder, exist_ok=True)
    user = [] if os.geteuid() == 0 else ["--user", "--map-current-user", "--keep-caps"]
    command = ["unshare", *user, "--mount", "--", "sh", "-c", SCRIPT, "sh", settings_folder,
               os.path.join(directory, "zofrazofra.ini"), program]
    path = os.path.join(directory, "on-a-full-disk")
    with open(path, "w", encoding="utf-8") as script:
        script.write("#!/bin/sh\nexec " + " ".join(map(shlex.quote, command)) + ' "$@"\n')
    os.chmod(path, 0o755)
    return path
