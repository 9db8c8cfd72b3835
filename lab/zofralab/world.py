# SPDX-License-Identifier: GPL-3.0-or-later
"""The house's process: one event loop that carries every service, inside the house's namespace.

Started by `zofralab.lab.Lab` through `unshare`. Ends when told to, when its parent ends, or when it is terminated;
everything it started ends with it, and its run directory is removed.
"""

import argparse
import asyncio
import importlib
import json
import os
import shutil
import signal
import subprocess
import sys
import time

from . import netns
from .ca import Authority
from .control import ControlServer
from .process import DIE_WITH_PARENT, clean_environment, die_with_parent, terminate
from .service import Service, UnknownCommand

#: Word in a switch -> where the class is, in starting order. A module that is not there is left out.
SERVICES = {
    "dns": "zofralab.dns:NameServer",
    "icecast": "zofralab.broadcaster:Broadcaster",
    "livefeed": "zofralab.livefeed:LiveFeed",
    "onair": "zofralab.onair:OnAir",
    "scraper": "zofralab.onair:Scraper",
    "household": "zofralab.household:Household",
}


class Network(Service):
    """Switches of the cable itself: `net.multicast_route present=false`, `net.link is_up=false`, `net.deny ...`."""

    name = "net"

    async def reset(self):
        """Cable in, multicast route there, nothing denied, no second interface."""
        if self._changed:
            self.world.cable.deny([])
            self.world.cable.link(True)
            self.world.cable.second_interface([])
            self._changed = False

    def __init__(self, world):
        super().__init__(world)
        self._changed = False

    def do_multicast_route(self, present):
        """With or without the route to 224.0.0.0/4."""
        self._changed = True
        self.world.cable.multicast_route(present)

    def do_link(self, is_up):
        """Pull or plug the program's cable."""
        self._changed = True
        self.world.cable.link(is_up)

    def do_second_interface(self, addresses):
        """Another interface on the program's side (see `Cable.second_interface`); [] takes it away."""
        self._changed = True
        self.world.cable.second_interface(addresses)

    def do_deny(self, networks, how="drop"):
        """Refuse at the source what the program sends to these networks (see `Cable.deny`); [] allows all again."""
        self._changed = True
        self.world.cable.deny(networks, how)


class World:
    """What services are given: addresses, certificates, children, and a log."""

    def __init__(self, run_dir, cache_dir, wanted):
        self.run_dir = run_dir
        self.cache_dir = cache_dir
        self.cable = netns.Cable(run_dir)
        self.authority = Authority(os.path.join(run_dir, "authority"), "Zofra lab authority")
        self.services = {}
        self._wanted = wanted
        self._children = []
        self._control = ControlServer(self.control_path, self._dispatch, self.log)
        self._quit = asyncio.Event()

    @property
    def control_path(self):
        """Where switches are taken."""
        return os.path.join(self.run_dir, "control")

    def log(self, text):
        """One line in world.log, which a failing test shows."""
        print(f"{time.monotonic():.3f} {text}", file=sys.stderr, flush=True)

    def spawn(self, command, **options):
        """Start a child that dies with the house. Its output goes to world.log unless told otherwise."""
        options.setdefault("stdin", subprocess.DEVNULL)
        options.setdefault("stdout", sys.stderr)
        child = subprocess.Popen([*DIE_WITH_PARENT, *command], start_new_session=True,
                                 env=options.pop("env", clean_environment()), **options)
        self._children.append(child)
        return child

    async def run(self):
        """Start everything, say so, serve until told to stop."""
        loop = asyncio.get_running_loop()
        for number in (signal.SIGTERM, signal.SIGHUP):
            loop.add_signal_handler(number, self._quit.set)
        signal.signal(signal.SIGINT, signal.SIG_IGN)
        try:
            self.cable.start()
            self.services["net"] = Network(self)
            for name in self._wanted:
                self.services[name] = self._make(name)
            for service in list(self.services.values()):
                if service is not None:
                    await service.start()
            self._write_endpoints()
            await self._control.start()
            print(json.dumps({"control": self.control_path, "holder": self.cable.holder.pid, "pid": os.getpid(),
                              "endpoints": os.path.join(self.run_dir, "endpoints.ini"),
                              "authority": self.authority.certificate}), flush=True)
            await self._quit.wait()
        finally:
            await self._shut_down()

    def _make(self, name):
        module_name, class_name = SERVICES[name].split(":")
        try:
            module = importlib.import_module(module_name)
        except ModuleNotFoundError as error:
            if error.name != module_name:
                raise
            return None
        if module.__file__ is None:  # a folder without code in it
            return None
        return getattr(module, class_name)(self)

    def _write_endpoints(self):
        sections = {}
        for service in self.services.values():
            for section, values in (service.endpoints() if service else {}).items():
                sections.setdefault(section, {}).update(values)
        sections["tls"] = {"extra_ca": self.authority.certificate}
        with open(os.path.join(self.run_dir, "endpoints.ini"), "w", encoding="utf-8") as file:
            for section, values in sections.items():
                file.write(f"[{section}]\n" + "".join(f"{key}={value}\n" for key, value in values.items()) + "\n")

    async def _dispatch(self, service_name, command, args):
        if service_name == "lab":
            return await self._lab_command(command, args)
        service = self.services.get(service_name)
        if service is None:
            raise UnknownCommand(f"no service {service_name}; there are {', '.join(self._present())} and lab")
        return await service.command(command, **args)

    async def _lab_command(self, command, args):
        if command == "reset":
            for service in self.services.values():
                if service is not None:
                    await service.reset()
            return None
        if command == "services":
            return self._present()
        if command == "stop":
            self._quit.set()
            return None
        raise UnknownCommand(f"lab has no switch {command}; it has reset, services, stop")

    def _present(self):
        return [name for name, service in self.services.items() if service is not None]

    async def _shut_down(self):
        await self._control.stop()
        for service in reversed([s for s in self.services.values() if s is not None]):
            try:
                await asyncio.wait_for(service.stop(), 5)
            except Exception as error:  # one service must not keep the others alive
                self.log(f"{service.name}: stop: {error!r}")
        for child in self._children:
            terminate(child, 1.0)
        self.cable.stop()
        shutil.rmtree(self.run_dir, ignore_errors=True)


def main():
    """Entry point inside the house's namespace."""
    parser = argparse.ArgumentParser()
    parser.add_argument("--run-dir", required=True)
    parser.add_argument("--cache-dir", required=True)
    parser.add_argument("--parent", type=int, required=True)
    parser.add_argument("--services", default=",".join(SERVICES))
    options = parser.parse_args()
    die_with_parent(options.parent)
    wanted = [name for name in options.services.split(",") if name]
    unknown = [name for name in wanted if name not in SERVICES]
    if unknown:
        sys.exit(f"no such service: {', '.join(unknown)}")

    async def run():
        await World(options.run_dir, options.cache_dir, wanted).run()
    asyncio.run(run())


if __name__ == "__main__":
    main()
