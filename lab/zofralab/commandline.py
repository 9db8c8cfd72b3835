# SPDX-License-Identifier: GPL-3.0-or-later
"""`lab/lab run` and `lab/lab ctl`."""

import argparse
import json
import os
import signal
import subprocess
import sys

from .control import ControlClient, ControlError, parse_switch
from .lab import Lab, LabError, program_environment
from .process import terminate


def main(arguments):
    """Entry point; returns the exit status."""
    parser = argparse.ArgumentParser(prog="lab", description="A broadcaster and a house in a box.")
    verbs = parser.add_subparsers(dest="verb", required=True)
    run = verbs.add_parser("run", help="start the lab and run a command in the program's namespace")
    run.add_argument("--state", metavar="FILE", help="write where the lab is (JSON) to this file")
    run.add_argument("--services", metavar="A,B", help="only these services (default: all)")
    run.add_argument("--own-sound", action="store_true", help="keep the session's sound server: audible")
    run.add_argument("--own-bus", action="store_true", help="keep the session's message bus and run directory")
    run.add_argument("command", nargs=argparse.REMAINDER, metavar="-- COMMAND...")
    ctl = verbs.add_parser("ctl", help="throw a switch of a running lab")
    ctl.add_argument("--control", metavar="SOCKET", default=os.environ.get("ZOFRA_LAB_CONTROL"))
    ctl.add_argument("--state", metavar="FILE")
    ctl.add_argument("switch", nargs="+", help="SERVICE.SWITCH key=value ...")
    options = parser.parse_args(arguments)
    return run_command(options) if options.verb == "run" else throw_switch(options)


def throw_switch(options):
    """`lab ctl`."""
    control = options.control
    if options.state:
        with open(options.state, encoding="utf-8") as file:
            control = json.load(file)["control"]
    if not control:
        print("lab: which lab? give --control, --state, or set ZOFRA_LAB_CONTROL", file=sys.stderr)
        return 2
    try:
        service, command, args = parse_switch(" ".join(options.switch))
        client = ControlClient(control)
        result = client.call(service, command, **args)
    except (ControlError, ValueError) as error:
        print(f"lab: {error}", file=sys.stderr)
        return 1
    if result is not None:
        print(json.dumps(result, indent=1, ensure_ascii=False))
    return 0


def run_command(options):
    """`lab run`."""
    command = options.command[1:] if options.command[:1] == ["--"] else options.command
    if not command:
        print("lab: which command?", file=sys.stderr)
        return 2
    # Ctrl-C reaches the command as well, which decides how to end; the lab ends after it.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    services = options.services.split(",") if options.services else None
    try:
        with Lab(services) as lab:
            return _run_inside(lab, options, command)
    except (LabError, OSError) as error:
        print(f"lab: {error}", file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        return 130


def _run_inside(lab, options, command):
    from .session import Session  # the sound server and the bus are not needed for `ctl`
    with Session(lab.run_dir, with_sound=not options.own_sound, with_bus=not options.own_bus) as session:
        env = program_environment(lab, session)
        if options.state:
            with open(options.state, "w", encoding="utf-8") as file:
                state = {**lab.info, "environment": session.environment(), "enter": lab.enter_for_others()}
                json.dump(state, file, indent=1)
        child = subprocess.Popen([*lab.enter(), *command], env=env)
        try:
            while True:
                try:
                    status = child.wait()
                    return status if status >= 0 else 128 - status
                except KeyboardInterrupt:
                    continue
        finally:
            terminate(child)
            if options.state and os.path.exists(options.state):
                os.unlink(options.state)
