# SPDX-License-Identifier: GPL-3.0-or-later
"""Child processes that never outlive whoever started them.

Every child is told by the kernel to die with its parent, so that nothing is left behind by Ctrl-C, by a crash
or by `kill -9`. The kernel watches the *thread* that started the child: start children from the main thread only.
"""

import ctypes
import os
import signal
import subprocess
import time

PR_SET_PDEATHSIG = 1

#: Begins the command only if the parent is still the one that started it: the wish does not count for a parent that
#: died before it was made.
_STILL_THERE = '[ "$PPID" = "$0" ] || exit 1; exec "$@"'


def guard(parent_pid):
    """To be put in front of a command whose program does not ask for its parent's death itself. It comes last, after
    everything that changes credentials, because a change of credentials makes the kernel forget the wish."""
    return ["setpriv", "--pdeathsig", "KILL", "--", "sh", "-c", _STILL_THERE, str(parent_pid)]


#: The same for children of this process.
DIE_WITH_PARENT = guard(os.getpid())


def die_with_parent(parent_pid, signal_number=signal.SIGTERM):
    """Ask for `signal_number` when the parent dies; leave at once when it is dead already."""
    libc = ctypes.CDLL(None, use_errno=True)
    if libc.prctl(PR_SET_PDEATHSIG, int(signal_number), 0, 0, 0) != 0:
        raise OSError(ctypes.get_errno(), "prctl")
    if os.getppid() != parent_pid:
        os._exit(1)


def clean_environment(base=None):
    """A copy of the environment without what would leak the outer machine's trust, proxies or displays."""
    env = dict(os.environ if base is None else base)
    dropped = ("SSL_CERT_FILE", "SSL_CERT_DIR", "CURL_CA_BUNDLE", "REQUESTS_CA_BUNDLE", "NODE_EXTRA_CA_CERTS",
               "GIT_SSL_CAINFO", "PIP_CERT", "LD_PRELOAD", "PYTHONPATH", "PYTHONHOME")
    for name in list(env):
        if name in dropped or name.lower().endswith("_proxy"):
            del env[name]
    # Where the network's tools are; not on the way of an ordinary user.
    env["PATH"] = env.get("PATH", os.defpath) + ":/usr/sbin:/sbin"
    return env


def terminate(process, grace=3.0):
    """End one child: politely, then by force. Returns its exit status."""
    if process.poll() is None:
        process.terminate()
        try:
            process.wait(grace)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()
    return process.returncode


def wait_until(condition, timeout, what, interval=0.01):
    """Poll `condition` until it is true (its value is returned) or `timeout` seconds have passed."""
    deadline = time.monotonic() + timeout
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() >= deadline:
            raise TimeoutError(f"{what}: not within {timeout} s")
        time.sleep(interval)


def cpu_seconds(pid):
    """User and system time a process has used so far, in seconds."""
    with open(f"/proc/{pid}/stat", encoding="ascii", errors="replace") as stat:
        fields = stat.read().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")
