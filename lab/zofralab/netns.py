# SPDX-License-Identifier: GPL-3.0-or-later
"""Two network namespaces joined by one cable: the program's and the house's.

Neither has a name: they exist as long as a process is in them. The house's namespace is the one this process was
started in (see `unshare_command`); the program's is held by one sleeping child, which also has a mount namespace in
which names are looked up at the house's own name server.
"""

import ipaddress
import os
import shutil
import subprocess

from . import addresses
from .process import DIE_WITH_PARENT, wait_until

HOLDER_SCRIPT = """
set -e
mount --bind "$1/resolv.conf" "$(readlink -f /etc/resolv.conf)"
mount --bind "$1/nsswitch.conf" /etc/nsswitch.conf
echo ready >"$1/holder.ready"
parent=$2
set -- sleep infinity
exec setpriv --pdeathsig KILL -- sh -c '[ "$PPID" = "$0" ] || exit 1; exec "$@"' "$parent" "$@"
"""


def unshare_command():
    """The command prefix that puts a process into a new, empty network namespace in which it may do everything."""
    if os.geteuid() == 0:
        return ["unshare", "--net", "--"]
    return ["unshare", "--user", "--map-current-user", "--keep-caps", "--net", "--"]


def enter_command(holder_pid, directory=None, prefix=None):
    """The command prefix that runs a program inside the program's namespace, as a child of the caller; it dies with the
    caller unless another `prefix` than that is given."""
    enter = ["nsenter", "--target", str(holder_pid), "--net", "--mount"]
    if os.geteuid() != 0:
        enter += ["--user", "--preserve-credentials"]
    # Entering a mount namespace moves to its root directory.
    return [*enter, "--", "env", "-C", directory or os.getcwd(), *(DIE_WITH_PARENT if prefix is None else prefix)]


def run(*command, check=True):
    """Run one short command; its output belongs to the error when it fails."""
    done = subprocess.run(command, capture_output=True, text=True, check=False, stdin=subprocess.DEVNULL)
    if check and done.returncode != 0:
        raise RuntimeError(f"{' '.join(command)}: {done.stderr.strip() or done.stdout.strip()}")
    return done.stdout


def ip_batch(lines):
    """Run many `ip` commands at once."""
    done = subprocess.run(["ip", "-batch", "-"], input="\n".join(lines) + "\n", capture_output=True, text=True,
                          check=False)
    if done.returncode != 0:
        raise RuntimeError(f"ip -batch: {done.stderr.strip()}")


class Cable:
    """The two namespaces and the veth pair between them. Lives inside the house's namespace."""

    def __init__(self, run_dir):
        self.run_dir = run_dir
        self.holder = None
        self._added = set()
        self._denying_routes = []

    def start(self):
        """Make the program's namespace and lay the cable. Needs to be the only user of this namespace."""
        self._write_name_lookup_files()
        ready = os.path.join(self.run_dir, "holder.ready")
        self.holder = subprocess.Popen(
            ["unshare", "--net", "--mount", "--", "sh", "-c", HOLDER_SCRIPT, "sh", self.run_dir, str(os.getpid())],
            stdin=subprocess.DEVNULL, start_new_session=True)
        wait_until(lambda: os.path.exists(ready) or self.holder.poll() is not None, 5, "the program's namespace")
        if self.holder.poll() is not None:
            raise RuntimeError("the program's namespace could not be made (are mount namespaces allowed here?)")
        house, program = addresses.HOUSE_INTERFACE, addresses.PROGRAM_INTERFACE
        prefix = addresses.HOME_PREFIX
        ip_batch(["link set lo up",
                  f"link add name {house} type veth peer name {program} netns {self.holder.pid}",
                  f"addr add {addresses.ROUTER_ADDRESS}/{prefix} brd + dev {house}",
                  f"link set {house} up"])
        self.in_program("ip", "link", "set", "lo", "up")
        self.in_program("ip", "addr", "add", f"{addresses.PROGRAM_ADDRESS}/{prefix}", "brd", "+", "dev", program)
        self.in_program("ip", "link", "set", program, "up")
        self.in_program("ip", "route", "add", addresses.SERVICE_NETWORK, "via", addresses.ROUTER_ADDRESS)
        self.multicast_route(True)
        run("sysctl", "-q", "-w", "net.ipv4.ip_unprivileged_port_start=0")
        run("sysctl", "-q", "-w", "net.ipv4.igmp_max_memberships=1024", check=False)

    def stop(self):
        """Let the program's namespace go; the house's goes with this process."""
        if self.holder and self.holder.poll() is None:
            self.holder.kill()
            self.holder.wait()

    def in_program(self, *command, check=True):
        """Run a short command inside the program's namespace, with every right over its network."""
        # Not through `enter_command`: a command of an ordinary user keeps its capabilities only while it stays
        # inside the user namespace that it is in already.
        enter = ["nsenter", "--target", str(self.holder.pid), "--net", "--mount", "--"]
        return run(*enter, *command, check=check)

    def add_addresses(self, wanted, interface=addresses.HOUSE_INTERFACE, prefix=addresses.HOME_PREFIX):
        """Give the house's side more addresses, many at once. Each has a broadcast address."""
        new = [a for a in wanted if a not in self._added]
        if new:
            ip_batch([f"addr add {address}/{prefix} brd + dev {interface}" for address in new])
            self._added.update(new)

    def remove_addresses(self, unwanted, interface=addresses.HOUSE_INTERFACE, prefix=addresses.HOME_PREFIX):
        """Take addresses of `add_addresses` away again."""
        gone = [a for a in unwanted if a in self._added]
        if gone:
            ip_batch([f"addr del {address}/{prefix} dev {interface}" for address in gone])
            self._added.difference_update(gone)

    def multicast_route(self, present):
        """With or without a route for multicast in the program's namespace."""
        route = ["224.0.0.0/4", "dev", addresses.PROGRAM_INTERFACE]
        self.in_program("ip", "route", "replace" if present else "del", *route, check=present)

    def link(self, is_up):
        """Pull the program's cable, or plug it in again (with the routes it had)."""
        program = addresses.PROGRAM_INTERFACE
        self.in_program("ip", "link", "set", program, "up" if is_up else "down")
        if is_up:
            self.in_program("ip", "route", "replace", addresses.SERVICE_NETWORK, "via", addresses.ROUTER_ADDRESS)
            self.multicast_route(True)

    def second_interface(self, wanted):
        """Give the program's side one more interface, up and running, with these addresses (ADDRESS/PREFIX) and no
        broadcast address: nobody is there. An empty list takes it away."""
        name, end = addresses.SECOND_INTERFACE, addresses.SECOND_INTERFACE + "end"
        self.in_program("ip", "link", "delete", name, check=False)
        if not wanted:
            return
        self.in_program("ip", "link", "add", name, "type", "veth", "peer", "name", end)
        for address in wanted:
            self.in_program("ip", "addr", "add", address, "dev", name)
        for one in (name, end):
            self.in_program("ip", "link", "set", one, "up")

    def deny(self, networks, how="drop"):
        """Refuse the program to send to these networks; an empty list allows everything again.

        `drop`: a packet filter; a datagram fails with EPERM, a connection hangs. `prohibit`, `unreachable`: routes;
        both fail at once, with EACCES or EHOSTUNREACH.
        """
        if how not in ("drop", "prohibit", "unreachable"):
            raise ValueError(f"how {how!r} is none of drop, prohibit, unreachable")
        for route in self._denying_routes:
            self.in_program("ip", "route", "del", *route, check=False)
        self._denying_routes = []
        self._filter([] if how != "drop" else networks)
        for network in networks if how != "drop" else []:
            whole = ipaddress.ip_network(network)
            # Halves are more specific than the route of the network itself, which stays.
            for part in [whole] if whole.prefixlen == 32 else whole.subnets():
                route = [how, str(part)]
                self.in_program("ip", "route", "add", *route)
                self._denying_routes.append(route)

    def _filter(self, networks):
        if shutil.which("nft"):
            self.in_program("nft", "delete", "table", "inet", "zofralab", check=False)
            if networks:
                rules = "; ".join(f"ip daddr {network} drop" for network in networks)
                self.in_program("nft", "add table inet zofralab { chain output { type filter hook output priority 0; "
                                + rules + "; }; }")
            return
        self.in_program("iptables", "-F", "OUTPUT")
        for network in networks:
            self.in_program("iptables", "-A", "OUTPUT", "-d", network, "-j", "DROP")

    def _write_name_lookup_files(self):
        with open(os.path.join(self.run_dir, "resolv.conf"), "w", encoding="ascii") as file:
            file.write(f"nameserver {addresses.DNS_ADDRESS}\noptions timeout:2 attempts:2\n")
        with open(os.path.join(self.run_dir, "nsswitch.conf"), "w", encoding="ascii") as file:
            file.write("passwd: files\ngroup: files\nshadow: files\nhosts: files dns\nnetworks: files\n"
                       "protocols: files\nservices: files\n")
