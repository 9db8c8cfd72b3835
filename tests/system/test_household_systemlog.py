# SPDX-License-Identifier: GPL-3.0-or-later
"""The system log of a test's own catches what a program says, in the program's namespace and outside the machine's."""

import os
import subprocess

import pytest

from household_support import household_lab  # noqa: F401
from zofralab.household.systemlog import SystemLog
from zofralab.process import clean_environment

SPEAK = ("import syslog; syslog.openlog('zofrazofra', syslog.LOG_PID, syslog.LOG_USER);"
         "syslog.syslog(syslog.LOG_NOTICE, '[Sonos] home0: 2 ué [x]: y'); open('/dev/null', 'w').write('x');"
         "print(len(open('/dev/urandom', 'rb').read(4)))")


@pytest.fixture
def log(tmp_path):
    """A log."""
    one = SystemLog(str(tmp_path))
    yield one
    one.close()


def run(command):
    return subprocess.run(command, capture_output=True, text=True, timeout=20, check=False, env=clean_environment())


def test_what_is_said_through_syslog_arrives_whole(log, household_lab):  # noqa: F811
    python = log.wrapper("/usr/bin/python3")
    for command in ([python, "-c", SPEAK], [*household_lab.enter("/"), python, "-c", SPEAK]):
        done = run(command)
        assert (done.returncode, done.stdout, done.stderr) == (0, "4\n", "")
    log.wait_for(r"\[Sonos\] home0: .*")
    assert [(e.priority, e.program, e.text) for e in log.entries] == [
        (8 + 5, "zofrazofra", "[Sonos] home0: 2 ué [x]: y")
    ] * 2
    with pytest.raises(AssertionError, match="home0"):
        log.wait_for("something else", timeout=0.1)


def test_the_wrapper_becomes_the_program_and_touches_nothing_outside(log):
    before = os.path.lexists("/dev/log")
    child = subprocess.Popen([log.wrapper("/usr/bin/sleep"), "5"])
    try:
        with open("/proc/self/mounts", encoding="ascii") as mounts:
            assert "zofralab /dev" not in mounts.read()
        assert run(["cat", f"/proc/{child.pid}/comm"]).stdout.strip() in ("sleep", "unshare", "sh", "setpriv")
    finally:
        child.terminate()
        child.wait()
    assert os.path.lexists("/dev/log") is before
