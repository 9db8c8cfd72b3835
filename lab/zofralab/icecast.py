# SPDX-License-Identifier: GPL-3.0-or-later
"""One real icecast2, on the loopback interface: a plain port for sources and players, a TLS port for the rest."""

import asyncio
import base64
import os
import signal
import ssl
import time
import xml.etree.ElementTree as ElementTree

from .process import DIE_WITH_PARENT

ADMIN_PASSWORD = "lab"
NOBODY = 65534
ATTEMPTS = 5
#: What it writes when its main loop has begun.
LISTENING = "SSL using ciphers"
CONFIG = """<icecast>
 <location>lab</location><admin>lab@zofra.test</admin><hostname>{name}.streams.zofra.test</hostname>
 <limits>
  <clients>400</clients><sources>30</sources><queue-size>1048576</queue-size><burst-size>65535</burst-size>
  <client-timeout>60</client-timeout><header-timeout>30</header-timeout><source-timeout>3600</source-timeout>
 </limits>
 <authentication>
  <source-password>lab</source-password><admin-user>admin</admin-user><admin-password>lab</admin-password>
 </authentication>
 <listen-socket><port>{plain}</port><bind-address>127.0.0.1</bind-address></listen-socket>
 <listen-socket><port>{tls}</port><bind-address>127.0.0.1</bind-address><ssl>1</ssl></listen-socket>
 <http-headers><header name="Access-Control-Allow-Origin" value="*"/></http-headers>
 <paths>
  <basedir>{directory}</basedir><logdir>{directory}</logdir><webroot>/usr/share/icecast2/web</webroot>
  <adminroot>/usr/share/icecast2/admin</adminroot><ssl-certificate>{certificate}</ssl-certificate>
 </paths>
 <logging><accesslog>access.log</accesslog><errorlog>error.log</errorlog><loglevel>3</loglevel></logging>
 <security><chroot>0</chroot></security>
</icecast>
"""


class Icecast:
    """One server process, which can be killed, frozen and started again on the same ports."""

    def __init__(self, world, name, plain_port, tls_port):
        self.name = name
        self.plain_port = plain_port
        self.tls_port = tls_port
        self._world = world
        self._directory = os.path.join(world.run_dir, f"icecast-{name}")
        self._log = os.path.join(self._directory, "error.log")
        self._process = None

    def write_config(self, certificate):
        """Once, before the first start."""
        os.mkdir(self._directory)
        with open(os.path.join(self._directory, "icecast.xml"), "w", encoding="ascii") as file:
            file.write(CONFIG.format(name=self.name, plain=self.plain_port, tls=self.tls_port,
                                     directory=self._directory, certificate=certificate.both))
        if os.geteuid() == 0:
            os.chown(self._directory, NOBODY, NOBODY)

    @property
    def pid(self):
        """Of the running process."""
        return self._process.pid

    @property
    def running(self):
        """Whether there is a process, frozen or not."""
        return self._process is not None and self._process.poll() is None

    async def start(self):
        """Start and wait until both ports answer."""
        for _ in range(ATTEMPTS):
            self._launch()
            if await self._comes_up():
                return
            self.kill()
        raise RuntimeError(f"icecast2 ({self.name}) does not start: {self.error_log()}")

    def _launch(self):
        # icecast refuses to run as root.
        user = []
        if os.geteuid() == 0:
            user = ["setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups", "--", *DIE_WITH_PARENT]
        if os.path.exists(self._log):
            os.unlink(self._log)
        self._process = self._world.spawn([*user, "icecast2", "-c", os.path.join(self._directory, "icecast.xml")])

    async def _comes_up(self):
        """Whether it answers before long. One that is asked while its threads are still starting may crash (2.4.4
        does, once in a hundred times): so it is left alone until it says that it listens, and a little longer."""
        deadline = time.monotonic() + 10
        while self.running and LISTENING not in self.error_log(None):
            if time.monotonic() > deadline:
                return False
            await asyncio.sleep(0.01)
        await asyncio.sleep(0.05)
        for port, context in ((self.plain_port, None), (self.tls_port, _trusting_context())):
            while not await _answers(port, context):
                if not self.running or time.monotonic() > deadline:
                    return False
                await asyncio.sleep(0.02)
        return self.running

    def kill(self):
        """End it at once, as a crash does."""
        if self.running:
            self._process.kill()
            self._process.wait()

    def freeze(self, is_frozen):
        """Let it hang, or go on."""
        if self.running:
            self._process.send_signal(signal.SIGSTOP if is_frozen else signal.SIGCONT)

    def error_log(self, limit=1500):
        """The end of its own log (all of it for None)."""
        try:
            with open(self._log, encoding="utf-8", errors="replace") as file:
                text = file.read()
                return text if limit is None else text[-limit:]
        except OSError:
            return "(no log)"

    async def listeners(self):
        """How many listen to each mount, as icecast counts them: {path: count}."""
        reader, writer = await asyncio.open_connection("127.0.0.1", self.plain_port)
        try:
            credentials = base64.b64encode(f"admin:{ADMIN_PASSWORD}".encode()).decode()
            writer.write(f"GET /admin/stats HTTP/1.0\r\nAuthorization: Basic {credentials}\r\n\r\n".encode())
            answer = await asyncio.wait_for(reader.read(-1), 5)
        finally:
            writer.close()
        document = ElementTree.fromstring(answer.split(b"\r\n\r\n", 1)[1])
        return {source.get("mount"): int(source.findtext("listeners", "0")) for source in document.iter("source")}


def _trusting_context():
    """For asking our own server on the loopback interface whether it is there."""
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_CLIENT)
    context.check_hostname = False
    context.verify_mode = ssl.CERT_NONE
    return context


async def _answers(port, context):
    """Whether a request is answered at this port."""
    try:
        reader, writer = await asyncio.open_connection("127.0.0.1", port, ssl=context)
    except OSError:
        return False
    try:
        writer.write(b"GET /status-json.xsl HTTP/1.0\r\n\r\n")
        return (await asyncio.wait_for(reader.readline(), 5)).startswith(b"HTTP/1.")
    except (OSError, asyncio.TimeoutError):
        return False
    finally:
        writer.close()
