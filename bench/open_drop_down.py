#!/usr/bin/python3
"""Times what drops down: from the click on the item in a real panel until the window is on the screen."""

from __future__ import annotations

import argparse
import os
import pathlib
import statistics
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
LABORATORY = ROOT / "tests" / "lab" / "run"
sys.path.insert(0, str(ROOT / "tests"))

from Xlib import X, display  # noqa: E402

from desktop.panels import XfcePanel  # noqa: E402
from desktop.program import Program  # noqa: E402
from endtoend.waiting import eventually  # noqa: E402

LONGEST_SECONDS = 5


def opening_ms(desktop: XfcePanel, program: Program, root_events: display.Display, x: int, y: int) -> float:
    while root_events.pending_events():
        root_events.next_event()
    clicked = time.monotonic()
    desktop.click(x, y)
    while time.monotonic() - clicked < LONGEST_SECONDS:
        while root_events.pending_events():
            if root_events.next_event().type == X.MapNotify:
                shown = time.monotonic()
                eventually(program.drop_down, LONGEST_SECONDS, "the drop-down")
                return (shown - clicked) * 1000
        time.sleep(0.0005)
    raise RuntimeError("nothing dropped down")


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--times", type=int, default=20, help="how often it is opened (20)")
    options = parser.parse_args()
    if "TARNWICK_LAB_NAMESPACE" not in os.environ:
        os.execv(LABORATORY, [str(LABORATORY), sys.executable, *sys.argv])
    desktop = XfcePanel()
    desktop.start()
    try:
        empty = desktop.still_picture()
        program = Program(desktop)
        place = desktop.item_rectangle(empty)
        program.item_up()
        root_events = display.Display(desktop.session.environment["DISPLAY"])
        root_events.screen().root.change_attributes(event_mask=X.SubstructureNotifyMask)
        root_events.sync()
        times = []
        for _ in range(options.times):
            times.append(opening_ms(desktop, program, root_events, *place.center))
            desktop.key("Escape")
            eventually(lambda: program.drop_down() is None, LONGEST_SECONDS, "the drop-down closes")
    finally:
        desktop.stop()
    print(f"first {times[0]:.0f} ms, median {statistics.median(times):.0f} ms, longest {max(times):.0f} ms of {len(times)}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
