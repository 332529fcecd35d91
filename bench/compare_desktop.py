#!/usr/bin/python3
"""Runs the desktop program in a real panel, in turn with a network applet and with a program that has nothing but an
icon, and compares what they cost.

Prints one table: memory, processor time, voluntary context switches (wake-ups).
"""

from __future__ import annotations

import argparse
import dataclasses
import os
import pathlib
import statistics
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
LABORATORY = ROOT / "tests" / "lab" / "run"
sys.path.insert(0, str(ROOT / "tests"))

from desktop.panels import LxqtPanel, X11Desktop, XfcePanel  # noqa: E402

from endtoend import built  # noqa: E402
from endtoend.waiting import eventually  # noqa: E402
from lab.behavior import Behavior  # noqa: E402
from lab.network import Lab  # noqa: E402

PANELS = {"xfce": XfcePanel, "lxqt": LxqtPanel}
NETWORK_MANAGER = "org.freedesktop.NetworkManager"
LOOPBACK = "127.0.0.1"
LABORATORY_HOST = "10.77.0.9"
# Left out of the measurement: the start and the first picture in the panel.
SETTLING_SECONDS = 8


@dataclasses.dataclass
class Run:
    pss_kib: int
    private_kib: int
    growth_kib: int  # of its unshared data, from the start of the run to its end
    cpu_percent: float  # of one core
    switches: float  # voluntary ones, a second


def parse_arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--seconds", type=int, default=120, help="length of a run (120)")
    parser.add_argument("--rounds", type=int, default=1, help="how often each runs, in turn (1)")
    parser.add_argument(
        "--panel", choices=PANELS, default="xfce", help="xfce shares its libraries with the applet, lxqt with none"
    )
    parser.add_argument("--only", default="", help="just the programs whose name contains this")
    parser.add_argument(
        "--changing", action="store_true", help="ping a host that takes another 20 to 32 ms each time, not loopback"
    )
    parser.add_argument("--program", metavar="PATH", help="not the one of the preset release")
    parser.add_argument("--empty", default=str(ROOT / "build/bench/bench/empty-tray"), metavar="PATH")
    options = parser.parse_args()
    options.program = built.program("tarnwick", options.program)
    if not os.access(options.empty, os.X_OK):
        sys.exit(f"{options.empty} is not built: cmake --preset bench && cmake --build --preset bench --target empty-tray")
    return options


def programs(options: argparse.Namespace) -> dict[str, list[str]]:
    host = LABORATORY_HOST if options.changing else LOOPBACK
    tarnwick = [options.program, "--set", f"Hostname={host}", "--set", "PingInterval=1"]
    return {
        "tarnwick, icon and text": tarnwick,
        "tarnwick, icon": [*tarnwick, "--set", "ShowText=false"],
        "an icon and nothing else": [options.empty],
        "nm-applet": ["nm-applet"],
    }


def sums(text: str, *labels: str) -> int:
    return sum(int(line.split()[1]) for line in text.splitlines() if line.startswith(labels))


def memory(process: int) -> tuple[int, int, int]:
    """Proportional, private, and data that no file holds, in KiB."""
    text = pathlib.Path(f"/proc/{process}/smaps_rollup").read_text(encoding="ascii")
    return sums(text, "Pss:"), sums(text, "Private_Clean:", "Private_Dirty:"), sums(text, "Anonymous:")


def work(process: int) -> tuple[int, int]:
    """Nanoseconds on a processor and voluntary context switches so far, of all threads."""
    on_cpu = switches = 0
    for task in pathlib.Path(f"/proc/{process}/task").iterdir():
        on_cpu += int((task / "schedstat").read_text(encoding="ascii").split()[0])
        switches += sums((task / "status").read_text(encoding="ascii"), "voluntary_ctxt_switches:")
    return on_cpu, switches


def measure(panel: X11Desktop, name: str, command: list[str], seconds: int) -> Run:
    process = panel.session.spawn("measured", command)
    try:
        time.sleep(SETTLING_SECONDS)
        begun = time.monotonic()
        _, _, data_before = memory(process.pid)
        cpu_before, switches_before = work(process.pid)
        try:
            status = process.wait(timeout=seconds)
            raise RuntimeError(f"{name} ended with {status}: {panel.session.log('measured')}")
        except subprocess.TimeoutExpired:
            pass
        between = time.monotonic() - begun
        pss, private, data = memory(process.pid)
        cpu, switches = work(process.pid)
    finally:
        panel.session.kill(process)
    return Run(
        pss, private, data - data_before, (cpu - cpu_before) / between / 1e7, (switches - switches_before) / between
    )


def give_network_manager(panel: X11Desktop) -> None:
    """The applet shows nothing without one. A mock with a wired device that is connected."""
    system = panel.session.start_system_bus()
    panel.session.spawn(
        "network", ["/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "networkmanager"]
    )
    eventually(lambda: system.owner(NETWORK_MANAGER), 10, "the network manager answers")
    path, mock = "/org/freedesktop/NetworkManager", "org.freedesktop.DBus.Mock"
    activated = 100
    system.call(NETWORK_MANAGER, path, mock, "AddEthernetDevice", "(ssi)", ("wired", "eth0", activated))
    system.close()


def report(runs: dict[str, list[Run]], seconds: int) -> None:
    print(f"Medians of {len(next(iter(runs.values())))} runs of {seconds} s each, in turn.\n")
    print("| | proportional, KiB | private, KiB | growth, KiB | processor, % of a core | wake-ups a second |")
    print("|---|---:|---:|---:|---:|---:|")
    for name, measured in runs.items():
        cells = (
            form.format(statistics.median(getattr(run, field) for run in measured))
            for field, form in (
                ("pss_kib", "{:.0f}"),
                ("private_kib", "{:.0f}"),
                ("growth_kib", "{:.0f}"),
                ("cpu_percent", "{:.3f}"),
                ("switches", "{:.2f}"),
            )
        )
        print(f"| {name} | " + " | ".join(cells) + " |")


def main() -> int:
    options = parse_arguments()
    if "TARNWICK_LAB_NAMESPACE" not in os.environ:
        os.execv(LABORATORY, [str(LABORATORY), sys.executable, *sys.argv])
    compared = {name: command for name, command in programs(options).items() if options.only in name}
    runs: dict[str, list[Run]] = {name: [] for name in compared}
    panel = PANELS[options.panel]()
    laboratory = Lab() if options.changing else None
    if laboratory is not None:
        laboratory.behave(LABORATORY_HOST, Behavior(delay_ms=20, jitter_ms=12))
    panel.start()
    try:
        give_network_manager(panel)
        for _ in range(options.rounds):
            for name, command in compared.items():
                runs[name].append(measure(panel, name, command, options.seconds))
    finally:
        panel.stop()
        if laboratory is not None:
            laboratory.close()
    report(runs, options.seconds)
    return 0


if __name__ == "__main__":
    sys.exit(main())
