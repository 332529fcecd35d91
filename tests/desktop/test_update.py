"""From one bundle to the next over HTTPS, with real windows, on X11 and on Wayland."""

from __future__ import annotations

import json
import os
import pathlib
import signal
import time
import unittest

from endtoend.waiting import eventually

from .panels import WaybarPanel, XfcePanel
from .program import PATIENCE
from .updates import NEW, OLD, TITLE, UpdateCase


class Update(UpdateCase):
    def test_the_user_updates_and_restarts(self) -> None:
        self.offer(self.release())
        program = self.start()
        pid = program.process.pid

        self.check_for_updates()
        self.wait_for(f"Version {NEW} can be installed now. You have version {OLD}.")
        eventually(lambda: self.desktop.focused_title() == TITLE, PATIENCE, "the window has the keyboard")
        self.desktop.screenshot(f"{self.desktop.name}-found.png")
        self.choose("Install")
        self.wait_for(f"Tarnwick {NEW} is ready")
        self.assertEqual(self.version_in_place(), OLD)
        self.desktop.screenshot(f"{self.desktop.name}-ready.png")
        self.choose("Restart Now")

        eventually(lambda: self.version_in_place() == NEW, PATIENCE, "the new version is in place")
        eventually(self.item, PATIENCE, "its item")
        self.assertIsNone(program.process.poll(), "it is the same process")
        self.assertIn(pid, self.of_bundle())
        self.check_for_updates()
        self.wait_for("Tarnwick is up to date")
        self.wait_for(f"Version {NEW} is the newest one.")
        self.desktop.screenshot(f"{self.desktop.name}-up-to-date.png")
        self.choose("OK")
        eventually(lambda: not self.is_open(), PATIENCE, "the window closes")

    def test_the_terminal_program_of_the_bundle_goes_on_as_the_new_one(self) -> None:
        self.offer(self.release())
        self.start()
        program = self.bundle / "bin/tarnwick-watch"
        session = self.desktop.session
        watch = session.spawn("watch", [str(program), "--json", "--set", "Hostname=127.0.0.1"])
        self.addCleanup(session.kill, watch)
        running = pathlib.Path(f"/proc/{watch.pid}/exe")
        eventually(lambda: "{" in session.log("watch"), PATIENCE, "it runs")
        old = running.stat().st_ino

        self.check_for_updates()
        self.wait_for(f"Version {NEW}")
        self.choose("Install")
        self.wait_for("is ready")
        self.choose("Restart Now")

        eventually(lambda: self.version_in_place() == NEW, PATIENCE, "the new version is in place")
        new = program.stat().st_ino
        self.assertNotEqual(new, old)
        eventually(lambda: running.stat().st_ino == new, PATIENCE, "the terminal program is the new one")
        self.assertIsNone(watch.poll(), "in the same process")

    def test_nothing_of_this_machine_is_told(self) -> None:
        self.offer(self.release())
        self.start()

        self.check_for_updates()
        self.wait_for(f"Version {NEW}")

        self.assertEqual(self.server.paths(), ["/feed.json", "/feed.json.minisig"])
        agents = {dict(request.headers)["user-agent"] for request in self.server.requests}
        self.assertEqual(len(agents), 1)
        self.assertRegex(agents.pop(), rf"^Tarnwick/{OLD} TarnwickUpdate/1 Linux/\d+\.\d+$")

    def test_a_version_that_crashes_at_once_is_brought_back_from(self) -> None:
        statistics, record = self.data / "stats.json", self.place / ".Tarnwick.app.update/update.json"
        seen = self.folder / "seen"
        seen.mkdir(exist_ok=True)
        self.offer(self.release(script=f"cp -p '{statistics}' '{record}' '{seen}'\nkill -SEGV $$"))
        self.start()

        self.check_for_updates()
        self.wait_for(f"Version {NEW}")
        self.choose("Install")
        self.wait_for("is ready")
        chosen = time.time_ns()
        self.choose("Restart Now")

        self.wait_for(f"Tarnwick {NEW} did not run on this machine, so version {OLD} is back.")
        self.desktop.screenshot(f"{self.desktop.name}-brought-back.png")
        self.assertEqual(self.version_in_place(), OLD)
        self.assertEqual(self.beside, [])
        known = json.loads((self.data / "updates.json").read_text(encoding="utf-8"))
        self.assertEqual(known["rolledBack"], NEW)
        # What the new version has found at its start.
        self.assertEqual(json.loads((seen / "update.json").read_text(encoding="utf-8"))["phase"], "fresh")
        saved, exchanged = ((seen / name).stat().st_mtime_ns for name in ("stats.json", "update.json"))
        self.assertGreater(saved, chosen)
        self.assertLess(saved, exchanged, "the statistics are saved before the exchange")


class InXfce(Update, unittest.TestCase):
    panel = XfcePanel

    def quit(self) -> None:
        self.program.send(signal.SIGTERM)
        self.assertEqual(self.program.exit_status(), 0, self.program.output)

    def test_later_means_at_the_next_start_which_may_end_within_its_first_minute(self) -> None:
        self.offer(self.release())
        self.make_ready()

        self.choose("Later")
        eventually(lambda: not self.is_open(), PATIENCE, "the window closes")
        self.assertEqual(self.version_in_place(), OLD)
        self.quit()
        self.assertEqual(self.version_in_place(), NEW)

        for _ in range(2):
            self.start()
            self.assertEqual(self.version_in_place(), NEW)
            self.assertFalse(self.is_open(), "it has nothing to tell")
            self.quit()

    def test_a_bundle_that_is_moved_while_its_update_is_ready_tells_at_its_next_start_why_it_has_none(self) -> None:
        self.offer(self.release())
        self.make_ready()
        moved = self.place / "moved.app"
        self.bundle.rename(moved)

        self.quit()
        self.assertEqual(self.beside, ["moved.app"])

        self.bundle = moved
        self.start()
        self.wait_for("Tarnwick can't be replaced where it is: its folder was moved or removed.")
        self.assertEqual(self.version_in_place(), OLD)

    def test_a_version_put_in_its_place_by_hand_stays_and_is_what_a_restart_starts(self) -> None:
        self.offer(self.release())
        self.start()
        self.find()
        self.bundle.rename(self.place / "old")
        self.bundle_of(self.bundle, "2.0")

        self.choose("Install")
        self.wait_for("Tarnwick's folder has version 2.0 by now. Restart Tarnwick to use it.")
        self.choose("OK")
        eventually(lambda: not self.is_open(), PATIENCE, "the window closes")
        self.assertEqual(self.beside, ["old"])
        self.assertEqual(self.program.start_again("--show"), 0)
        self.wait_for("Restart to use the new version.")
        self.choose("Restart")

        running = f"/proc/{self.program.process.pid}/exe"
        eventually(lambda: os.readlink(running) == str(self.bundle / "bin/tarnwick"), PATIENCE, "the new version runs")

    def test_a_second_start_leaves_what_is_ready_alone(self) -> None:
        self.offer(self.release())
        self.make_ready()

        self.assertEqual(self.program.start_again("--settings"), 0)
        eventually(lambda: self.is_open("Tarnwick Settings"), PATIENCE, "the running one's settings")
        self.assertEqual(self.version_in_place(), OLD)
        self.choose("Restart Now")

        eventually(lambda: self.version_in_place() == NEW and self.item(), PATIENCE, "the new version's item")


class DisplayThatGoes(UpdateCase, unittest.TestCase):
    """Its own, as nothing else can use that desktop afterwards."""

    panel = XfcePanel

    def test_what_is_ready_waits_for_the_next_start(self) -> None:
        self.offer(self.release())
        self.make_ready()

        self.desktop.display.terminate()

        self.assertNotEqual(self.program.exit_status(), 0)
        record = self.place / ".Tarnwick.app.update/update.json"
        self.assertEqual(json.loads(record.read_text(encoding="utf-8"))["phase"], "prepared")
        self.assertEqual(self.version_in_place(), OLD)


class InWaybar(Update, unittest.TestCase):
    panel = WaybarPanel
