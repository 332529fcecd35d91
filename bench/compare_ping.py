#!/usr/bin/python3
"""Runs the terminal program beside ping and fping and compares what they cost, on loopback in a network of its own.

Prints one table: processor time, voluntary context switches (wake-ups), memory, and the time from start to first ping.
"""

from __future__ import annotations

import argparse
import contextlib
import dataclasses
import os
import pathlib
import shutil
import signal
import socket
import statistics
import subprocess
import sys
import tempfile
import time
from collections.abc import Iterator

ROOT = pathlib.Path(__file__).resolve().parent.parent
LABORATORY = ROOT / "tests" / "lab" / "run"
sys.path.insert(0, str(ROOT / "tests"))

from endtoend import built  # noqa: E402

TARGET = "127.0.0.1"
ETHERNET_IPV4 = 0x0800
ECHO_REQUEST = 8
NO_BUS = "unix:path=/nonexistent"
# Left out at both ends of a run, so that starting and ending do not count as steady work. The path is learnt in
# the first ones.
SETTLING_SECONDS = 8


@dataclasses.dataclass(frozen=True)
class Program:
    """Something that pings once a second; `count` and `endless` are its command lines."""

    name: str
    count: list[str]
    endless: list[str]
    system_bus: str = NO_BUS


@dataclasses.dataclass
class Run:
    """What one run of some seconds has cost."""

    cpu_ms: float = 0.0
    steady_cpu_us: float = 0.0  # of each second between start and end
    steady_switches: float = 0.0  # likewise, voluntary ones
    switches: int = 0
    peak_kib: int = 0
    pss_kib: int = 0


def parse_arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--seconds", type=int, default=60, help="length of a run (60)")
    parser.add_argument("--rounds", type=int, default=3, help="how often all three run, side by side (3)")
    parser.add_argument("--bus", action="store_true", help="with a bus and a mock of the login manager on it")
    parser.add_argument("--starts", type=int, default=20, help="how often the first ping is timed (20)")
    parser.add_argument("--program", metavar="PATH", help="not the one of the preset release")
    options = parser.parse_args()
    options.program = built.program("tarnwick-watch", options.program)
    if options.seconds <= 2 * SETTLING_SECONDS or options.rounds < 1 or options.starts < 1:
        parser.error("too short to say anything")
    return options


def programs(options: argparse.Namespace, bus: str) -> list[Program]:
    seconds = str(options.seconds)
    watch = [options.program, "--json", "--set", "PingInterval=1"]
    return [
        Program("tarnwick-watch", [*watch, "--for", seconds, TARGET], [*watch, TARGET], bus),
        Program("ping", ["ping", "-i", "1", "-c", seconds, TARGET], ["ping", "-i", "1", TARGET]),
        Program("fping", ["fping", "-p", "1000", "-c", seconds, TARGET], ["fping", "-l", "-p", "1000", TARGET]),
    ]


def start(program: Program, command: list[str], home: str) -> subprocess.Popen[bytes]:
    places = {"HOME": home, "XDG_CONFIG_HOME": f"{home}/config", "XDG_DATA_HOME": f"{home}/data"}
    places["DBUS_SYSTEM_BUS_ADDRESS"] = program.system_bus
    return subprocess.Popen(
        command,
        env={"PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8"} | places,
        stdin=subprocess.DEVNULL,
        stdout=subprocess.DEVNULL,
        stderr=subprocess.DEVNULL,
    )


def number_in(path: str, label: str) -> int:
    for line in pathlib.Path(path).read_text(encoding="ascii").splitlines():
        if line.startswith(label):
            return int(line.split()[1])
    raise RuntimeError(f"{path} has no {label}")


def steady_figures(process: int) -> tuple[int, int]:
    """Nanoseconds on a processor and voluntary context switches so far."""
    on_cpu = int(pathlib.Path(f"/proc/{process}/schedstat").read_text(encoding="ascii").split()[0])
    return on_cpu, number_in(f"/proc/{process}/status", "voluntary_ctxt_switches:")


def measure(compared: list[Program], seconds: int) -> dict[str, Run]:
    """All of them at once, so that they meet the same machine."""
    with tempfile.TemporaryDirectory() as home:
        begun = time.monotonic()
        running = {program.name: start(program, program.count, home) for program in compared}
        runs = {name: Run() for name in running}
        time.sleep(SETTLING_SECONDS)
        first_at = time.monotonic()
        first = {name: steady_figures(process.pid) for name, process in running.items()}
        time.sleep(begun + seconds - SETTLING_SECONDS - time.monotonic())
        between = time.monotonic() - first_at
        for name, process in running.items():
            on_cpu, switches = steady_figures(process.pid)
            runs[name].steady_cpu_us = (on_cpu - first[name][0]) / 1000 / between
            runs[name].steady_switches = (switches - first[name][1]) / between
            # Not the process's own peak, which starts with the memory of its parent.
            runs[name].peak_kib = number_in(f"/proc/{process.pid}/status", "VmHWM:")
            runs[name].pss_kib = number_in(f"/proc/{process.pid}/smaps_rollup", "Pss:")
        for name, process in running.items():
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
            if process.returncode != 0:
                raise RuntimeError(f"{name} ended with {process.returncode}")
            runs[name].cpu_ms = (usage.ru_utime + usage.ru_stime) * 1000
            runs[name].switches = usage.ru_nvcsw
        return runs


def is_echo_request(packet: bytes) -> bool:
    header = (packet[0] & 0x0F) * 4
    return packet[9] == socket.IPPROTO_ICMP and packet[header] == ECHO_REQUEST


def first_ping_ms(program: Program) -> float:
    """From the moment before the program is started until its first request is on the wire."""
    with tempfile.TemporaryDirectory() as home, socket.socket(
        socket.AF_PACKET, socket.SOCK_DGRAM, socket.htons(ETHERNET_IPV4)
    ) as wire:
        wire.bind(("lo", ETHERNET_IPV4))
        wire.settimeout(5)
        begun = time.monotonic()
        process = start(program, program.endless, home)
        try:
            while not is_echo_request(wire.recv(256)):
                pass
            return (time.monotonic() - begun) * 1000
        finally:
            process.send_signal(signal.SIGINT)
            process.wait(timeout=10)


def report(compared: list[Program], runs: dict[str, list[Run]], starts: dict[str, list[float]], seconds: int) -> None:
    def median(name: str, field: str) -> float:
        return statistics.median(getattr(run, field) for run in runs[name])

    print(f"Medians of {len(next(iter(runs.values())))} runs of {seconds} s; first ping: of {len(next(iter(starts.values())))} starts.\n")
    print("| | " + " | ".join(program.name for program in compared) + " |")
    print("|---|" + "---:|" * len(compared))
    rows = [
        ("processor time of the run, ms", "cpu_ms", "{:.1f}"),
        ("processor time a second, between start and end, µs", "steady_cpu_us", "{:.0f}"),
        ("voluntary context switches of the run", "switches", "{:.0f}"),
        ("voluntary context switches a second, between start and end", "steady_switches", "{:.2f}"),
        ("peak resident memory, KiB", "peak_kib", "{:.0f}"),
        ("proportional memory, KiB", "pss_kib", "{:.0f}"),
    ]
    for title, field, form in rows:
        print(f"| {title} | " + " | ".join(form.format(median(program.name, field)) for program in compared) + " |")
    for title, figure in (("median", statistics.median), ("longest", max)):
        cells = (f"{figure(starts[program.name]):.1f}" for program in compared)
        print(f"| start to first ping, {title}, ms | " + " | ".join(cells) + " |")


@contextlib.contextmanager
def login_manager() -> Iterator[str]:
    """The address of a bus on which a mock of it stands."""
    with tempfile.TemporaryDirectory() as folder, contextlib.ExitStack() as running:
        address = f"unix:path={folder}/bus"

        def spawn(*command: str) -> subprocess.Popen[str]:
            environment = os.environ | {"DBUS_SYSTEM_BUS_ADDRESS": address}
            process = subprocess.Popen(
                command, env=environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, encoding="utf-8"
            )
            running.callback(process.wait)
            running.callback(process.kill)
            return process

        spawn("dbus-daemon", "--session", "--nofork", "--print-address", f"--address={address}").stdout.readline()
        spawn("/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "logind")
        wait = ["gdbus", "wait", f"--address={address}", "--timeout=20", "org.freedesktop.login1"]
        subprocess.run(wait, check=True)  # for the manager
        yield address


def main() -> int:
    options = parse_arguments()
    if "TARNWICK_LAB_NAMESPACE" not in os.environ:
        os.execv(LABORATORY, [str(LABORATORY), sys.executable, *sys.argv])
    needed = [options.program, "ping", "fping", *(["dbus-daemon", "gdbus"] if options.bus else [])]
    missing = [name for name in needed if shutil.which(name) is None]
    if missing:
        print(f"Not found: {', '.join(missing)}", file=sys.stderr)
        return 1
    with login_manager() if options.bus else contextlib.nullcontext(NO_BUS) as bus:
        return compare(options, programs(options, bus))


def compare(options: argparse.Namespace, compared: list[Program]) -> int:
    runs: dict[str, list[Run]] = {program.name: [] for program in compared}
    for _ in range(options.rounds):
        for name, run in measure(compared, options.seconds).items():
            runs[name].append(run)
    starts = {program.name: [first_ping_ms(program) for _ in range(options.starts)] for program in compared}
    report(compared, runs, starts, options.seconds)
    return 0


if __name__ == "__main__":
    sys.exit(main())
