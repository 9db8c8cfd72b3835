# SPDX-License-Identifier: GPL-3.0-or-later
"""`./dev run`: what it shows, and that it leaves nothing behind.

`./dev run` builds and then becomes `lab/demo.py`; that is what is started here, with the program that is there. It runs
with /tmp, /var/tmp, /dev/shm and a home of its own, so that what it leaves in them is seen, whoever works beside it.
"""

import contextlib
import os
import re
import signal
import subprocess
import threading
import uuid

import pytest
from conftest import ROOT
from test_lab_process import MARK, marked
from zofralab.panels import LxqtPanel
from zofralab.process import clean_environment, wait_until
from zofralab.screen import VirtualScreen
from zofralab.session import Session
from zofralab.sound import Ears

#: Hides the places where programs leave things, brings back what is needed of them, runs the rest, and tells what is left.
PRIVATE = r"""
set -e
# Held open, because their paths may be hidden next.
exec 8<"$1" 9<"$2"
for place in /tmp /var/tmp /dev/shm; do mount -t tmpfs -o mode=1777 tmpfs $place; done
for kept in "8 $1" "9 $2"; do
    path=${kept#* }
    case $path in /tmp/*|/var/tmp/*) mkdir -p "$path"; mount -c --bind /proc/self/fd/${kept%% *} "$path" ;; esac
done
exec 8<&- 9<&-
mkdir /tmp/home
export HOME=/tmp/home
files() { find /tmp /var/tmp /dev/shm -xdev | sort; }
before=$(files)
mounts=$(grep -c . /proc/self/mountinfo)
trap : INT TERM
shift 2
set +e
"$@"
echo "ended: $?"
comm -13 <(echo "$before") <(files) | sed 's/^/left: /'
[ "$(grep -c . /proc/self/mountinfo)" = "$mounts" ] || echo "left: a mount"
echo done
"""


def network_namespaces(pids):
    """The network namespaces that these processes are in."""
    found = set()
    for pid in pids:
        try:
            found.add(os.readlink(f"/proc/{pid}/ns/net"))
        except OSError:
            pass  # gone meanwhile
    return found


def all_processes():
    """Every process that can be seen."""
    return [int(pid) for pid in os.listdir("/proc") if pid.isdigit()]


class DemoRun:
    """`./dev run` after the building: without a display, or on the desktop whose environment is given. On a desktop the
    places of its sockets cannot be hidden, so what is left in files is seen only without one."""

    def __init__(self, binary, *options, desktop=None):
        self.mark = uuid.uuid4().hex
        self.lines = []
        # The path of an ordinary user.
        environment = {**clean_environment(), MARK: self.mark, "PATH": "/usr/local/bin:/usr/bin:/bin"}
        for name in ("DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"):
            environment.pop(name, None)
        command = ["/usr/bin/python3", os.path.join(ROOT, "lab", "demo.py"), "--binary", binary, *options]
        if desktop:
            environment.update(desktop)
        else:
            user = [] if os.geteuid() == 0 else ["--user", "--map-current-user", "--keep-caps"]
            command = ["unshare", *user, "--mount", "--", "bash", "-c", PRIVATE, "private", ROOT, os.path.dirname(binary),
                       *command]
        self.process = subprocess.Popen(
            ["env", "--default-signal=INT", *command],
            env=environment, start_new_session=True, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT, text=True, cwd=ROOT)
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def _read(self):
        for line in self.process.stdout:
            self.lines.append(line.rstrip("\n"))

    def wait_line(self, pattern, timeout=60):
        """Wait for a whole line that matches."""
        def found():
            assert self.process.poll() is None, "\n".join(self.lines)
            return next((line for line in list(self.lines) if re.fullmatch(pattern, line)), None)
        try:
            return wait_until(found, timeout, f"a line {pattern!r}", 0.05)
        except TimeoutError as error:
            raise AssertionError(f"{error}; there were {self.lines}") from None

    def wait_end(self, timeout=30):
        """Wait for the end; returns the last lines, which tell what is left."""
        self.process.wait(timeout)
        self._reader.join(5)
        return [line for line in self.lines if line.startswith(("ended: ", "left: ")) or line == "done"]


@pytest.fixture
def demo(binary):
    """Start a demonstration; what is left of it is ended with the test."""
    started = []

    def start(*options, desktop=None):
        started.append(DemoRun(binary, *options, desktop=desktop))
        return started[-1]
    yield start
    for run in started:
        for pid in marked(run.mark):
            os.kill(pid, signal.SIGKILL)
        run.process.wait(10)


@pytest.mark.slow
@pytest.mark.xdist_group("dev_run")
def test_it_sounds_shows_a_song_and_rooms_and_ctrl_c_leaves_nothing_behind(demo):
    run = demo()
    run.wait_line("heard: Zofra, AAC")
    run.wait_line("song: .+ – .+")
    run.wait_line(r"rooms: [1-9].*")
    text = "\n".join(run.lines)
    assert "simulation" in text and "./dev run --live" in text
    pids = marked(run.mark)
    namespaces = network_namespaces(pids) - network_namespaces([os.getpid()])
    assert len(pids) > 10 and len(namespaces) == 2
    os.killpg(run.process.pid, signal.SIGINT)  # as a terminal does: to everybody in the foreground
    assert run.wait_end() == ["ended: 0", "done"]
    wait_until(lambda: not marked(run.mark), 10, "all processes to end")
    assert not namespaces & network_namespaces(all_processes())


@pytest.mark.slow
@pytest.mark.xdist_group("dev_run")
def test_it_ends_by_itself_after_the_seconds_and_hands_options_on(demo):
    run = demo("--seconds", "8", "--", "--play", "joe")
    run.wait_line("heard: JOE, AAC")
    assert run.wait_end(60) == ["ended: 0", "done"]
    assert "time is over" in run.lines
    wait_until(lambda: not marked(run.mark), 10, "all processes to end")


@pytest.mark.slow
@pytest.mark.xdist_group("dev_run")
def test_on_a_desktop_it_is_in_the_persons_own_status_bar(demo, tmp_path):
    missing = VirtualScreen.missing() + LxqtPanel().missing()
    if missing:
        pytest.skip(f"not run: no {', '.join(missing)} on this machine")
    with contextlib.ExitStack() as stack:
        session = stack.enter_context(Session())
        screen = VirtualScreen(str(tmp_path), {**clean_environment(), **session.environment()}, panel=LxqtPanel())
        stack.callback(screen.stop)
        screen.start()
        ears = Ears(session.sound)
        stack.callback(ears.stop)
        ears.start()
        empty = screen.still_picture(screen.panel_box, seconds=2.0)
        run = demo(desktop={**session.environment(), **screen.variables})
        run.wait_line("The radio is in your status bar: .*")
        ears.wait_for(("zofra", "aac"), 60)
        run.wait_line("song: .+ – .+")
        run.wait_line(r"rooms: [1-9].*")
        item = screen.wait_for_item(empty)
        screen.click(item.centre, 3)
        screen.wait_for_window("zofrazofra", "Zofra Zofra")
        os.killpg(run.process.pid, signal.SIGINT)
        assert run.process.wait(30) == 0
        wait_until(lambda: not marked(run.mark), 10, "all processes to end")
        screen.wait_for_no_item(empty)
