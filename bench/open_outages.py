#!/usr/bin/python3
"""Times the outages window over a year's journal: from the choice in the item's menu, in a real panel, until the window is
on the screen. Needs the targets tarnwick and year-journal."""

from __future__ import annotations

import argparse
import os
import pathlib
import statistics
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
LABORATORY = ROOT / "tests" / "lab" / "run"
sys.path.insert(0, str(ROOT / "tests"))

from Xlib import X, display  # noqa: E402

from desktop.outages import TITLE  # noqa: E402
from desktop.panels import XfcePanel  # noqa: E402
from desktop.program import HOST, PATIENCE, PROGRAM, Program  # noqa: E402
from endtoend.waiting import eventually  # noqa: E402


def find_year_journal() -> pathlib.Path:
    """Beside the program that is measured."""
    build = next(folder for folder in pathlib.Path(PROGRAM).parents if (folder / "build.ninja").exists())
    return build / "bench" / "year-journal"


def opening_ms(desktop: XfcePanel, program: Program, root_events: display.Display) -> float:
    item = program.item()
    row = item.row("Outages…")
    while root_events.pending_events():
        root_events.next_event()
    chosen = time.monotonic()
    item.choose(row)
    while time.monotonic() - chosen < PATIENCE:
        while root_events.pending_events():
            if root_events.next_event().type == X.MapNotify:
                shown = time.monotonic()
                eventually(lambda: desktop.focused_title() == TITLE, PATIENCE, "the window has the keyboard")
                return (shown - chosen) * 1000
        time.sleep(0.0005)
    raise RuntimeError("no window opened")


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--times", type=int, default=20, help="how often it is opened (20)")
    options = parser.parse_args()
    if "TARNWICK_LAB_NAMESPACE" not in os.environ:
        os.execv(LABORATORY, [str(LABORATORY), sys.executable, *sys.argv])
    desktop = XfcePanel()
    desktop.start()
    try:
        journal = desktop.session.home / ".local/state/Tarnwick/journal.sqlite"
        journal.parent.mkdir(mode=0o700, parents=True)
        subprocess.run([find_year_journal(), journal, HOST], check=True)
        program = Program(desktop)
        program.item_up()
        root_events = display.Display(desktop.session.environment["DISPLAY"])
        root_events.screen().root.change_attributes(event_mask=X.SubstructureNotifyMask)
        root_events.sync()
        times = []
        for _ in range(options.times):
            times.append(opening_ms(desktop, program, root_events))
            desktop.key("Escape")
            eventually(lambda: desktop.focused_title() != TITLE, PATIENCE, "the window closes")
    finally:
        desktop.stop()
    print(f"first {times[0]:.0f} ms, median {statistics.median(times):.0f} ms, longest {max(times):.0f} ms of {len(times)}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
