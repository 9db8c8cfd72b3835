# SPDX-License-Identifier: GPL-3.0-or-later
"""The lab comes and goes without a trace, for everybody, and twice at once."""

import json
import os
import pwd
import shutil
import signal
import subprocess
import uuid

import pytest
from conftest import ROOT
from zofralab.lab import Lab
from zofralab.process import clean_environment, wait_until

LAB = os.path.join(ROOT, "lab", "lab")
MARK = "ZOFRA_TEST_MARK"


def marked(mark):
    """Processes that were started, at whatever distance, with this mark in their environment."""
    found = []
    for pid in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{pid}/environ", "rb") as file:
                if f"{MARK}={mark}".encode() in file.read().split(b"\0"):
                    found.append(int(pid))
        except OSError:
            pass  # gone meanwhile, or somebody else's
    return found


@pytest.fixture
def lab_command(tmp_path):
    """Start `lab run` with a command; anything left of it is ended with the test."""
    mark = uuid.uuid4().hex
    state = str(tmp_path / "state.json")

    def start(*command, options=(), prefix=(), lab=LAB):
        # A runner in the background may have been told to ignore Ctrl-C, and would hand that on.
        prefix = ["env", "--default-signal=INT", *prefix]
        process = subprocess.Popen([*prefix, lab, "run", "--state", state, *options, "--", *command],
                                   env={**clean_environment(), MARK: mark}, cwd="/", start_new_session=True,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True)
        process.mark, process.state = mark, state
        return process
    yield start
    for pid in marked(mark):
        os.kill(pid, signal.SIGKILL)


def run_dir_of(process):
    wait_until(lambda: os.path.exists(process.state) and os.path.getsize(process.state), 20, "the state file")
    with open(process.state, encoding="utf-8") as file:
        return os.path.dirname(json.load(file)["control"])


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGKILL], ids=lambda n: n.name)
def test_nothing_is_left_behind_however_it_ends(lab_command, number):
    process = lab_command("sleep", "1000")
    run_dir = run_dir_of(process)
    assert len(marked(process.mark)) > 8
    if number == signal.SIGINT:
        os.killpg(process.pid, number)  # as a terminal does: to everybody in the foreground
    else:
        os.kill(process.pid, number)
    process.wait(15)
    wait_until(lambda: not marked(process.mark), 10, "all processes to end")
    wait_until(lambda: not os.path.exists(run_dir), 5, "the run directory to go")


def test_the_command_decides_the_exit_status_and_sees_the_lab(lab_command):
    script = ("test -S $ZOFRA_LAB_CONTROL && test -r $ZOFRA_LAB_ENDPOINTS && pactl info >/dev/null && "
              f"{LAB} ctl dns.answer mode=servfail && ip -4 -br addr show home0 && exit 7")
    process = lab_command("sh", "-c", script)
    output, _ = process.communicate(timeout=60)
    assert process.returncode == 7
    assert output.split()[-1] == "10.77.0.2/24"


def test_an_ordinary_user_gets_the_same(lab_command, tmp_path):
    if os.geteuid() != 0:
        pytest.skip("every other test shows it when the tests run without root")
    nobody = pwd.getpwnam("nobody")
    os.chmod(tmp_path, 0o777)
    for parent in tmp_path.parents:
        if str(parent).startswith("/tmp/") and not os.stat(parent).st_mode & 1:
            os.chmod(parent, 0o711)
    script = (f"id -u; curl -sS -m 1 --cacert $(sed -n s/^extra_ca=//p $ZOFRA_LAB_ENDPOINTS) -o {tmp_path}/stream "
              "https://zofra-aac.streams.zofra.test/zofra.aac; test $(stat -c %s {0}/stream) -gt 20000 && "
              "dbus-send --session --print-reply --dest=org.freedesktop.DBus / org.freedesktop.DBus.ListNames >/dev/null "
              "&& pactl info >/dev/null && echo fine").replace("{0}", str(tmp_path))
    # The way to this checkout may be closed to others.
    copied = shutil.copytree(os.path.dirname(LAB), tmp_path / "lab", ignore=shutil.ignore_patterns("__pycache__"))
    process = lab_command("sh", "-c", script, lab=str(copied / "lab"), prefix=[
        "setpriv", f"--reuid={nobody.pw_uid}", f"--regid={nobody.pw_gid}", "--clear-groups", "env",
        f"HOME={tmp_path}"])
    output, _ = process.communicate(timeout=60)
    assert output.split() == [str(nobody.pw_uid), "fine"]
    wait_until(lambda: not marked(process.mark), 10, "all processes to end")


def test_two_labs_do_not_meet(lab):
    with Lab(["dns"]) as other:
        other.dns.answer(mode="servfail")
        other_side = subprocess.run([*other.enter(), "getent", "hosts", "onair.zofra.test"], check=False,
                                    capture_output=True)
        this_side = subprocess.run([*lab.enter(), "getent", "hosts", "onair.zofra.test"], check=False,
                                   capture_output=True)
    assert (other_side.returncode, this_side.returncode) == (2, 0)


@pytest.mark.parametrize("how, error", [("drop", "EPERM"), ("prohibit", "EACCES"), ("unreachable", "EHOSTUNREACH")])
def test_a_denied_network_fails_at_the_sender(lab, how, error):
    lab.net.deny(networks=["10.77.0.0/24", "239.255.255.250/32"], how=how)
    script = ("import socket, errno\nfor to in '10.77.0.9', '239.255.255.250':\n"
              " try: socket.socket(socket.AF_INET, socket.SOCK_DGRAM).sendto(b'x', (to, 1900)); print('sent')\n"
              " except OSError as e: print(errno.errorcode[e.errno])")

    def send():
        return subprocess.run([*lab.enter(), "/usr/bin/python3", "-c", script], capture_output=True, text=True,
                              check=True).stdout.split()
    assert send() == [error, error]
    lab.net.deny(networks=[])
    assert send() == ["sent", "sent"]


def test_without_a_multicast_route_sending_is_impossible_until_an_interface_is_named(lab):
    lab.net.multicast_route(present=False)
    script = ("import socket, errno\ns = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)\n"
              "try: s.sendto(b'x', ('239.255.255.250', 1900))\nexcept OSError as e: print(errno.errorcode[e.errno])\n"
              "s.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_IF, socket.inet_aton('10.77.0.2'))\n"
              "s.sendto(b'x', ('239.255.255.250', 1900)); print('sent')")
    done = subprocess.run([*lab.enter(), "/usr/bin/python3", "-c", script], capture_output=True, text=True, check=True)
    assert done.stdout.split() == ["ENETUNREACH", "sent"]
