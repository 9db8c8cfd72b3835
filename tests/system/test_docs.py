# SPDX-License-Identifier: GPL-3.0-or-later
"""What the documentation says can be done.

Every command in a shell block or in back quotes is checked:

* `zofrazofra ...` is run, in the order in which a page has it, against a radio in the lab. The first start gets
  `--headless` and the lab's endpoints.
* `./dev ...` would build, install or test for minutes. Its job and options must be those that `./dev help` lists; the jobs that
  only tell something are run. What `./dev run` starts after building is run by test_dev_run.py.
* `lab/lab ...` is run, ended by Ctrl-C where it would run for ever.
* `sudo apt ...` must name the package that `./dev package` makes; `man` and `journalctl` the page and the name in the log that
  there are.

A command of any other kind fails: it needs a way to be checked first.
"""

import glob
import os
import re
import shlex
import signal
import subprocess

import pytest
from conftest import ROOT
from zofralab.process import clean_environment, wait_until

PAGES = sorted(os.path.relpath(path, ROOT) for pattern in ("*.md", "docs/*.md", "lab/*.md")
               for path in glob.glob(os.path.join(ROOT, pattern)))
#: Jobs that only tell something.
HARMLESS_JOBS = ("help", "doctor")


def text_of(page):
    """A page."""
    with open(os.path.join(ROOT, page), encoding="utf-8") as file:
        return file.read()


def block_commands(page):
    """The commands in shell blocks, without comments, in their order."""
    lines = "\n".join(re.findall(r"^```sh\n(.*?)^```", text_of(page), re.M | re.S)).splitlines()
    return [line for line in (re.sub(r"(^|\s+)#.*", "", line).strip() for line in lines) if line]


def quoted_commands(page):
    """Commands within sentences."""
    return [words for words in quoted(page)
            if re.match(r"(\./dev|zofrazofra|lab/lab|sudo|man|journalctl|apt) \S", words)]


def quoted(page):
    """What stands in back quotes within sentences, each on one line."""
    text = re.sub(r"^```.*?^```", "", text_of(page), flags=re.M | re.S)
    return [re.sub(r"\s+", " ", words) for words in re.findall(r"`([^`]+)`", text)]


def commands(page):
    """All of them."""
    return block_commands(page) + quoted_commands(page)


def of_kind(first, lister=commands):
    """Every command of all pages whose first word is this, once."""
    return list(dict.fromkeys(line for page in PAGES for line in lister(page) if shlex.split(line)[0] == first))


def test_there_is_a_way_to_check_every_command():
    known = {"./dev", "zofrazofra", "lab/lab", "sudo", "man", "journalctl"}
    assert {shlex.split(line)[0] for page in PAGES for line in commands(page)} == known


@pytest.fixture(scope="module")
def jobs():
    """What `./dev help` lists: the arguments of each job."""
    done = subprocess.run([os.path.join(ROOT, "dev"), "help"], capture_output=True, text=True, check=True)
    found = {}
    for names, arguments in re.findall(r"^  ([a-z]+(?: \| [a-z]+)*)((?: [^ ]+)*)", done.stdout, re.M):
        for name in names.split(" | "):
            found[name] = arguments
    return {**found, "help": ""}


def has_tests_named(part, kinds):
    """Whether `-k part` finds tests: in the names of suites, or of pytest's files and functions."""
    if "unit" in kinds:
        return any(re.search(rf"^TEST\w*\([^)]*{re.escape(part)}", text_of(path), re.M)
                   for path in glob.glob("tests/*/**/*.cpp", root_dir=ROOT, recursive=True))
    return any(part in os.path.basename(path) or re.search(rf"^def test_\w*{re.escape(part)}", text_of(path), re.M)
               for path in glob.glob("tests/system/test_*.py", root_dir=ROOT))


@pytest.mark.parametrize("line", of_kind("./dev"))
def test_dev_knows_the_job_and_its_arguments(jobs, line):
    job, *arguments = shlex.split(line)[1:]
    if job == "JOB":
        return  # the usage itself
    assert job in jobs, line
    for before, word in zip([job, *arguments], arguments):
        if word.isdigit() or word.isupper():
            continue  # a number, or a name to be filled in
        if before == "-k":
            assert has_tests_named(word, arguments), f"no test has {word} in its name"
            continue
        assert re.search(rf"[\[| ]{re.escape(word)}(?![a-z])", jobs[job]), f"{word} in {jobs[job]}"
    if job in HARMLESS_JOBS:
        subprocess.run([os.path.join(ROOT, "dev"), job, *arguments], check=True, capture_output=True, timeout=60)


def test_the_list_of_jobs_in_the_readme_is_complete(jobs):
    listed = re.search(r"`\./dev help` lists the other jobs:\s([a-z,\s]+)\.", text_of("README.md")).group(1)
    assert {*re.split(r",\s+", listed), "run", "test", "help"} == set(jobs)


@pytest.mark.parametrize("arguments", [["nonsense"], ["run", "--nonsense"], ["run", "--seconds", "many"],
                                       ["test", "nonsense"], ["test", "-k"]], ids=" ".join)
def test_dev_refuses_what_it_does_not_know_before_it_does_anything(arguments):
    done = subprocess.run([os.path.join(ROOT, "dev"), *arguments], capture_output=True, text=True, check=False,
                          timeout=60)
    assert done.returncode == 1 and done.stderr.splitlines()[-1].startswith("dev: ") and done.stdout == ""


def words_of(line):
    """The options of a command for the program."""
    return shlex.split(line)[1:]


@pytest.mark.parametrize("page", [page for page in PAGES if any(
    shlex.split(line)[0] == "zofrazofra" for line in block_commands(page))])
def test_what_is_said_about_everyday_use_works(radio, bus, page):
    lines = [line for line in block_commands(page) if shlex.split(line)[0] == "zofrazofra"]
    assert words_of(lines[0]) == [], "a first start comes first"
    radio.start(discovery=True)
    for line in lines[1:]:
        options = words_of(line)
        done = radio.ask(*options, timeout=120)
        assert (done.returncode, done.stderr) == (0, "") or options[0] == "--doctor", f"{line}: {done}"
        if options[0] == "--play":
            radio.wait_status(30, station=options[1], playing=True, buffering=False)
        elif options[0] == "--output":
            radio.wait_status(30, output=options[1])
        elif options == ["--quit"]:
            assert radio.wait_end(30) == 0
        else:
            assert "station" in done.stdout or options[0] == "--doctor"
    assert radio.process.poll() == 0, "the last one ends it"


def program_help(radio):
    """What `--help` says."""
    return radio.ask("--help").stdout


def test_every_option_that_is_spoken_of_is_one(radio, jobs):
    known = set(re.findall(r"--[a-z-]+", program_help(radio) + "".join(jobs.values())))
    known |= {"--state", "--control", "--services"}  # of the lab's own command
    for page in ["README.md", "docs/stations.md", "docs/speakers.md", "docs/panels.md", "docs/privacy.md",
                 "docs/command-line.md"]:
        spoken = {option for words in quoted(page) for option in re.findall(r"--[a-z-]+", words)}
        assert spoken <= known, page


@pytest.mark.parametrize("page", ["zofrazofra.1", "zofrazofra.bash", "_zofrazofra", "zofrazofra.fish"])
def test_the_manual_and_the_shells_know_every_option_and_station(radio, binary, page):
    folder = os.path.join(os.path.dirname(os.path.dirname(binary)), "packaging", "pages")
    if not os.path.isdir(folder):
        pytest.skip(f"skipped: there is no {folder}")
    text = text_of(os.path.join(folder, page)).replace("\\-", "-")
    if page.endswith(".fish"):
        text = re.sub(r" -l ([a-z])", r" --\1", text)
    told = program_help(radio)
    options = set(re.findall(r"--[a-z-]+", told))
    assert options - set(re.findall(r"--[a-z-]+", text)) == set()
    stations = re.search(r"Stations: (.*)\.", told).group(1).split(", ")
    assert re.search(r"[ ,]+\s*".join(stations), text), "all stations, in the program's order"


def test_the_table_of_stations_is_the_programs(radio):
    stations = re.search(r"Stations: (.*)\.", program_help(radio)).group(1).split(", ")
    table = re.findall(r"^\| [^|]+ \| `([a-z_]+)` \|", text_of("docs/stations.md"), re.M)
    assert sorted(table) == sorted(stations)


@pytest.fixture
def in_the_foreground(binary):
    """Start a command line from the top folder as in a terminal; it is ended with the test."""
    started = []

    def start(line):
        line = line.replace("build/release/bin/zofrazofra", shlex.quote(binary))
        process = subprocess.Popen(["env", "--default-signal=INT", "bash", "-c", line], cwd=ROOT, text=True,
                                   env=clean_environment(), start_new_session=True, stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE)
        started.append(process)
        return process
    yield start
    for process in started:
        if process.poll() is None:
            os.killpg(process.pid, signal.SIGTERM)
        process.wait(30)
        process.stdin.close()
        process.stdout.close()


def lab_command(beginning):
    """The one documented command of the lab that begins so."""
    (line,) = (line for line in of_kind("lab/lab", block_commands) if line.startswith(beginning))
    return line


def test_the_radio_runs_in_the_lab_as_its_page_says(in_the_foreground, tmp_path):
    process = in_the_foreground(f"XDG_CONFIG_HOME={tmp_path} {lab_command('lab/lab run -- sh -c ')}")
    assert "state: playing\n" in iter(process.stdout.readline, "")
    os.killpg(process.pid, signal.SIGINT)
    process.wait(30)


def test_switches_are_thrown_as_the_labs_page_says(in_the_foreground, tmp_path):
    state = str(tmp_path / "lab.json")
    outside = lab_command("lab/lab ctl --state ").replace("/tmp/lab.json", state)
    inside = next(line for line in of_kind("lab/lab", block_commands) if line.startswith("lab/lab ctl '"))
    process = in_the_foreground(lab_command("lab/lab run --state ").replace("/tmp/lab.json", state))
    process.stdin.write(f"{inside}; echo inside $?\n")
    process.stdin.flush()
    assert process.stdout.readline() == "inside 0\n"
    wait_until(lambda: os.path.exists(state), 30, "the state file")
    assert subprocess.run(["bash", "-c", outside], cwd=ROOT, check=False, timeout=60).returncode == 0
    process.stdin.write("exit 5\n")
    process.stdin.flush()
    assert process.wait(60) == 5


def test_every_command_of_the_lab_is_run_here():
    beginnings = ("lab/lab run -- sh -c ", "lab/lab run --state ", "lab/lab ctl '", "lab/lab ctl --state ")
    assert all(line.startswith(beginnings) for line in of_kind("lab/lab"))


@pytest.mark.parametrize("line", of_kind("sudo"))
def test_what_is_installed_and_removed_is_the_package(line):
    package = re.search(r'set\(CPACK_PACKAGE_NAME (\S+)\)', text_of("packaging/CMakeLists.txt")).group(1)
    built = re.search(r"build/package/\w+_\*\.deb", text_of("packaging/build-deb.sh")).group(0)
    assert built.startswith(f"build/package/{package}_")
    assert line in (f"sudo apt install ./{built}", f"sudo apt remove {package}")


@pytest.mark.parametrize("line", of_kind("man") + of_kind("journalctl"))
def test_manual_page_and_name_in_the_log_are_there(line):
    if line.startswith("man "):
        assert os.path.exists(os.path.join(ROOT, "packaging", "man", line.split()[1] + ".1.in"))
    else:
        assert f'" {line.split()[-1]}["' in text_of("platform/linux/SyslogLog.h")


@pytest.mark.parametrize("page", PAGES)
def test_every_link_leads_to_a_file(page):
    folder = os.path.dirname(os.path.join(ROOT, page))
    links = re.findall(r"\]\(([^)#]+)\)", text_of(page)) + re.findall(r'src="([^"]+)"', text_of(page))
    assert [link for link in links
            if "://" not in link and not os.path.exists(os.path.join(folder, link))] == []
