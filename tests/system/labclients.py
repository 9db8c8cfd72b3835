# SPDX-License-Identifier: GPL-3.0-or-later
"""Clients that are not the program, with which the lab itself is tried."""

import subprocess

from zofralab.addresses import stream_name
from zofralab.lab import program_environment
from zofralab.stations import host, station


def curl(lab, url, *options, seconds=2.0, output="/dev/null"):
    """Fetch with curl; returns (exit status, HTTP status, bytes, redirects, seconds)."""
    form = "%{http_code} %{size_download} %{num_redirects} %{time_total} %{content_type}"
    done = subprocess.run(
        [*lab.enter(), "curl", "-sS", "-m", str(seconds), "--cacert", lab.authority, "-o", output, "-w", form, *options,
         url], env=program_environment(lab), capture_output=True, text=True, check=False)
    code, size, redirects, total, *_ = done.stdout.split()
    return done.returncode, int(code), int(size), int(redirects), float(total)


def fetch(lab, url, *options):
    """The body of a healthy answer."""
    done = subprocess.run([*lab.enter(), "curl", "-sS", "-m", "5", "--cacert", lab.authority, *options, url],
                          env=program_environment(lab), capture_output=True, text=True, check=False)
    assert done.returncode == 0, done.stderr
    return done.stdout


def stream_url(raw, codec, scheme="https"):
    """The address of one of the eighteen streams."""
    where = host(raw, codec) if scheme == "https" else stream_name(raw, codec)
    return f"{scheme}://{where}{station(raw).path(codec)}"


def start_mpv(lab, sound_server, url, *options):
    """mpv on a stream, as an independent listener. The caller ends it."""
    env = {**program_environment(lab), "PULSE_SERVER": sound_server.server}
    return subprocess.Popen(
        [*lab.enter(), "mpv", "--no-config", "--no-video", "--ao=pulse", "--really-quiet", "--tls-verify=yes",
         f"--tls-ca-file={lab.authority}", *options, url], env=env, stdin=subprocess.DEVNULL)
