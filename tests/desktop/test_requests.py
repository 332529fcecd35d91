"""What a second start asks of the running program, and the desktop's entry that starts both."""

from __future__ import annotations

import configparser
import os
import pathlib
import shlex
import shutil
import subprocess
import tempfile
import unittest

from Xlib import X, display

from endtoend.waiting import eventually, never

from .panels import LatePanel
from .program import APPLICATION, HOST, PATIENCE, PROGRAM, Program, pings_sent
from .x11 import X11Screen

ENTRY = pathlib.Path(__file__).resolve().parents[2] / "packaging/org.tarnwick.tarnwick.desktop"
SETTINGS_TITLE = "Tarnwick Settings"
INSTANCE = "org.tarnwick.tarnwick"
SHORT_SECONDS = 0.5


STARTUP_ID = 'launcher-1 "quoted" and longer than one message_TIME1'


class StartupMessages:
    """What programs tell an X11 desktop of their start."""

    def __init__(self, screen: X11Screen) -> None:
        self._display = display.Display(screen.name)
        self._display.screen().root.change_attributes(event_mask=X.PropertyChangeMask)
        self._begin = self._display.intern_atom("_NET_STARTUP_INFO_BEGIN")
        self._next = self._display.intern_atom("_NET_STARTUP_INFO")
        self._display.sync()
        self._parts: list[bytes] = []

    def close(self) -> None:
        self._display.close()

    def texts(self) -> list[str]:
        while self._display.pending_events():
            event = self._display.next_event()
            if event.type != X.ClientMessage or event.client_type not in (self._begin, self._next):
                continue
            if event.client_type == self._begin:
                self._parts.append(b"")
            self._parts[-1] += bytes(event.data[1])
        return [part.partition(b"\0")[0].decode() for part in self._parts]


class Requests(unittest.TestCase):
    def setUp(self) -> None:
        LatePanel.require()
        self.desktop = LatePanel()
        self.desktop.start()
        self.addCleanup(self.desktop.stop)

    def started(self) -> Program:
        before = pings_sent()
        program = Program(self.desktop, options=("--from-session",))
        self.addCleanup(program.end)
        eventually(lambda: pings_sent() >= before + 2, PATIENCE, "two pings")
        return program

    def has_settings(self) -> bool:
        return any(title == SETTINGS_TITLE for title, _ in self.desktop.windows())

    def second_output(self) -> str:
        return self.desktop.session.log("second")

    def test_a_newer_program_in_its_place_is_told_and_started_at_a_click(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        place = pathlib.Path(folder.name) / "tarnwick"
        shutil.copy2(PROGRAM, place)
        process = self.desktop.session.spawn("replaced", [str(place), "--from-session", "--set", f"Hostname={HOST}"])
        self.addCleanup(self.desktop.session.kill, process)
        eventually(lambda: self.desktop.session.bus.owner(INSTANCE), PATIENCE, "it runs")
        running = pathlib.Path(f"/proc/{process.pid}/exe")

        newer = place.with_name("newer")
        shutil.copy2(PROGRAM, newer)
        newer.rename(place)
        self.assertTrue(os.readlink(running).endswith("(deleted)"))
        subprocess.run(
            [str(place), "--show"], env=self.desktop.session.environment, check=True, timeout=PATIENCE, capture_output=True
        )

        def told() -> bool:
            return "Restart to use the new version." in self.desktop.accessible(APPLICATION).texts()

        eventually(told, PATIENCE, "it tells of the new version")
        self.desktop.screenshot("new-version.png")
        self.desktop.act(APPLICATION, "Restart")
        eventually(lambda: os.readlink(running) == str(place), PATIENCE, "the new version runs in its place")
        eventually(lambda: self.desktop.session.bus.process(INSTANCE) == process.pid, PATIENCE, "it answers")
        command = pathlib.Path(f"/proc/{process.pid}/cmdline").read_bytes().split(b"\0")[1:-1]
        self.assertEqual(command, [b"--from-session", f"--set=Hostname={HOST}".encode()])

    def test_settings_for_a_run_are_refused_while_another_runs(self) -> None:
        program = self.started()

        self.assertEqual(program.start_again("--set", "PingInterval=5"), 1)

        self.assertRegex(self.second_output(), r"^tarnwick: [^\n]*--set[^\n]*\n$")
        self.assertTrue(never(program.drop_down, SHORT_SECONDS), "it opened")

    def test_show_opens_the_drop_down_of_the_running_one(self) -> None:
        program = self.started()

        self.assertEqual(program.start_again("--show"), 0)

        eventually(program.drop_down, PATIENCE, "the drop-down")

    def test_settings_opens_those_of_the_running_one(self) -> None:
        program = self.started()

        self.assertEqual(program.start_again("--settings"), 0)

        eventually(self.has_settings, PATIENCE, "the settings window")
        self.assertIsNone(program.drop_down())

    def test_a_start_with_the_session_leaves_the_running_one_alone(self) -> None:
        program = self.started()

        self.assertEqual(program.start_again("--from-session"), 0)

        self.assertTrue(never(program.drop_down, SHORT_SECONDS), "it opened")

    def test_each_start_tells_the_desktop_that_it_is_over(self) -> None:
        messages = StartupMessages(self.desktop.screen)
        self.addCleanup(messages.close)
        over = 'remove: ID="' + STARTUP_ID.replace('"', '\\"') + '"'
        prefix = ("env", f"DESKTOP_STARTUP_ID={STARTUP_ID}")
        first = Program(self.desktop, prefix, options=("--from-session",))
        self.addCleanup(first.end)
        eventually(lambda: messages.texts() == [over], PATIENCE, "the first start is over")

        self.assertEqual(first.start_again("--show"), 0)

        eventually(lambda: messages.texts() == [over, over], PATIENCE, "the second start is over")

    def test_quit_ends_the_running_one_with_the_statistics_saved(self) -> None:
        program = self.started()

        self.assertEqual(program.start_again("--quit"), 0, self.second_output())

        self.assertIsNone(self.desktop.session.bus.owner(INSTANCE))
        self.assertEqual(program.exit_status(), 0)
        self.assertGreaterEqual(program.saved_pings(), 1)

    def test_the_first_start_can_show_something_too(self) -> None:
        for option, is_open in (("--show", lambda program: program.drop_down()), ("--settings", lambda _: self.has_settings())):
            with self.subTest(option):
                program = Program(self.desktop, options=(option,))
                self.addCleanup(program.end)

                eventually(lambda is_open=is_open, program=program: is_open(program), PATIENCE, "its window")

                program.end()


class QuitWithoutAnother(unittest.TestCase):
    def test_it_says_that_none_runs(self) -> None:
        with tempfile.TemporaryDirectory() as home:
            done = subprocess.run(
                [PROGRAM, "--quit"],
                env={"PATH": os.environ["PATH"], "HOME": home, "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere"},
                capture_output=True,
                text=True,
                timeout=PATIENCE,
                check=False,
            )

        self.assertEqual(done.returncode, 1)
        self.assertRegex(done.stderr, r"^tarnwick: [^\n]*not running[^\n]*\n$")


class DesktopEntry(unittest.TestCase):
    def test_desktops_accept_it(self) -> None:
        done = subprocess.run(
            ["desktop-file-validate", str(ENTRY)], capture_output=True, text=True, timeout=PATIENCE, check=False
        )

        self.assertEqual((done.returncode, done.stdout + done.stderr), (0, ""))

    def test_launchers_hand_a_token_over_to_it(self) -> None:
        self.assertIn("\nStartupNotify=true\n", ENTRY.read_text(encoding="utf-8"))

    def test_it_offers_the_outages_the_settings_and_the_end(self) -> None:
        entry = configparser.ConfigParser(interpolation=None)
        entry.optionxform = str
        entry.read(ENTRY, encoding="utf-8")

        actions = entry["Desktop Entry"]["Actions"].rstrip(";").split(";")

        commands = [shlex.split(entry[f"Desktop Action {action}"]["Exec"]) for action in actions]
        self.assertEqual(commands, [["tarnwick", "--outages"], ["tarnwick", "--settings"], ["tarnwick", "--quit"]])


if __name__ == "__main__":
    unittest.main()
