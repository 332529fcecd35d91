"""The desktop program without a desktop: its command line, no display, no bus, no panel, a name server that hangs."""

from __future__ import annotations

import contextlib
import json
import os
import pathlib
import signal
import subprocess
import tempfile
import unittest
from collections.abc import Iterator, Sequence

from endtoend.waiting import eventually
from lab import Lab, Names

from .program import HOST, PATIENCE, PROGRAM, pings_sent

DEAD_NAME_SERVER = "10.77.0.57"
USAGE_FAILURE = 2
# As commands before the program.
WITHOUT_STANDARD_DESCRIPTORS = ("sh", "-c", 'exec "$0" "$@" <&- >&- 2>&-')
WITHOUT_ROOM_IN_FILES = ("sh", "-c", 'ulimit -f 0 && exec "$0" "$@"')
WITHOUT_DISPLAY = {"PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8", "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere"}
WITH_DISPLAY = WITHOUT_DISPLAY | {"QT_QPA_PLATFORM": "offscreen"}

ONLY_FOR_UPDATES = r"lib(archive|sodium|ssl|Qt6Network)\."

lab: Lab


def setUpModule() -> None:
    global lab
    lab = Lab()
    unittest.addModuleCleanup(lab.close)


def run(*arguments: str, environment: dict[str, str] = WITH_DISPLAY) -> subprocess.CompletedProcess[str]:
    with tempfile.TemporaryDirectory() as home:
        done = subprocess.run(
            [PROGRAM, *arguments],
            env=environment | {"HOME": home},
            capture_output=True,
            text=True,
            timeout=PATIENCE,
            check=False,
        )
        assert not list(pathlib.Path(home).iterdir()), "something was written"
        return done


class Running:
    """The program in a home of its own."""

    def __init__(self, home: str, host: str, prefix: Sequence[str]) -> None:
        self.home = pathlib.Path(home)
        self.log = self.home / "log"
        with open(self.log, "wb") as log:
            self.process = subprocess.Popen(
                [*prefix, PROGRAM, "--set", f"Hostname={host}", "--set", "PingInterval=1"],
                env=WITH_DISPLAY | {"HOME": home},
                stdin=subprocess.DEVNULL,
                stdout=log,
                stderr=log,
            )

    def end(self, number: signal.Signals) -> int:
        self.process.send_signal(number)
        return self.process.wait(timeout=PATIENCE)

    def saved_pings(self) -> int:
        file = self.home / ".local/share/Tarnwick/stats.json"
        return json.loads(file.read_text(encoding="utf-8"))[HOST]["sent"]


@contextlib.contextmanager
def running(host: str = HOST, prefix: Sequence[str] = ()) -> Iterator[Running]:
    with tempfile.TemporaryDirectory() as home:
        program = Running(home, host, prefix)
        try:
            yield program
        finally:
            program.process.kill()
            program.process.wait()


class CommandLine(unittest.TestCase):
    def test_it_says_its_version(self) -> None:
        done = run("--version", environment=WITHOUT_DISPLAY)

        self.assertEqual(done.returncode, 0)
        self.assertRegex(done.stdout, r"^tarnwick \d+\.\d+\.\d+\n$")

    def test_it_explains_itself(self) -> None:
        done = run("--help", environment=WITHOUT_DISPLAY)

        self.assertEqual(done.returncode, 0)
        self.assertIn("--set KEY=VALUE", done.stdout)

    def test_what_is_wrong_is_said_in_one_line(self) -> None:
        for arguments in (["--json"], ["one.example"], ["--set", "Nonsense=1"], ["--set", "PanelFace=tall"], ["--set"]):
            with self.subTest(arguments=arguments):
                done = run(*arguments)

                self.assertEqual(done.returncode, USAGE_FAILURE)
                self.assertEqual(done.stdout, "")
                self.assertRegex(done.stderr, r"^tarnwick: [^\n]+\n$")

    def test_without_a_display_it_names_the_terminal_program(self) -> None:
        done = run(environment=WITHOUT_DISPLAY)

        self.assertEqual(done.returncode, 1)
        self.assertIn("tarnwick-watch", done.stderr)

    def test_a_display_that_does_not_answer_is_named(self) -> None:
        for display, name in (
            ({"DISPLAY": ":4077"}, ":4077"),
            ({"WAYLAND_DISPLAY": "wayland-4077", "XDG_RUNTIME_DIR": "/nowhere"}, "wayland-4077"),
        ):
            with self.subTest(name):
                done = run(environment=WITHOUT_DISPLAY | display)

                self.assertEqual(done.returncode, 1)
                self.assertRegex(done.stderr, rf'^tarnwick: the display "{name}" does not answer; tarnwick-watch [^\n]+\n$')


class WithoutADesktop(unittest.TestCase):
    def test_without_a_bus_it_says_so_once_and_measures(self) -> None:
        with running() as program:
            before = pings_sent()
            eventually(lambda: "No panel" in program.log.read_text(), PATIENCE, "what is missing is said")
            eventually(lambda: pings_sent() > before + 3, PATIENCE, "three pings and the request for the path")

            self.assertEqual(program.end(signal.SIGTERM), 0)
            self.assertGreaterEqual(program.saved_pings(), 3)
            self.assertEqual(program.log.read_text().count("No panel"), 1)

    def test_a_terminal_that_is_closed_ends_it_with_the_statistics_saved(self) -> None:
        before = pings_sent()
        with running() as program:
            eventually(lambda: pings_sent() > before + 2, PATIENCE, "two pings and the request for the path")

            self.assertEqual(program.end(signal.SIGHUP), 0)
            self.assertGreaterEqual(program.saved_pings(), 2)

    def test_nohup_keeps_it_running_without_its_terminal(self) -> None:
        before = pings_sent()
        with running(prefix=("nohup",)) as program:
            eventually(lambda: pings_sent() > before, PATIENCE, "a ping")

            program.process.send_signal(signal.SIGHUP)

            hung_up = pings_sent()
            eventually(lambda: pings_sent() >= hung_up + 2, PATIENCE, "two more pings")
            self.assertEqual(program.end(signal.SIGTERM), 0)

    def test_its_own_files_do_not_take_the_numbers_of_closed_descriptors(self) -> None:
        before = pings_sent()
        with running(prefix=WITHOUT_STANDARD_DESCRIPTORS) as program:
            eventually(lambda: pings_sent() > before, PATIENCE, "a ping")

            opened = [os.readlink(f"/proc/{program.process.pid}/fd/{number}") for number in range(3)]
            self.assertEqual(opened, ["/dev/null"] * 3)
            self.assertEqual(program.end(signal.SIGTERM), 0)

    def test_it_has_nothing_in_memory_that_only_an_update_needs(self) -> None:
        before = pings_sent()
        with running() as program:
            eventually(lambda: pings_sent() >= before + 2, PATIENCE, "two pings")

            process = pathlib.Path(f"/proc/{program.process.pid}")
            self.assertNotRegex((process / "maps").read_text(encoding="utf-8"), ONLY_FOR_UPDATES)
            # An icon is drawn by several threads, which stay for half a minute, and stays itself.
            threads = {(thread / "comm").read_text(encoding="utf-8").strip() for thread in (process / "task").iterdir()}
            self.assertEqual({name for name in threads if "pooled" in name}, set())

    def test_a_file_that_may_not_grow_does_not_end_it(self) -> None:
        before = pings_sent()
        with running(prefix=WITHOUT_ROOM_IN_FILES) as program:
            eventually(lambda: pings_sent() > before, PATIENCE, "a ping")

            self.assertEqual(program.end(signal.SIGTERM), 0)

    def test_settings_of_the_command_line_are_not_stored(self) -> None:
        with running() as program:
            before = pings_sent()
            eventually(lambda: pings_sent() > before, PATIENCE, "a ping")
            self.assertEqual(program.end(signal.SIGINT), 0)

            self.assertFalse((program.home / ".config/Tarnwick").exists())

    def test_a_lookup_that_hangs_does_not_hold_up_the_end(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            names = Names(folder)
            names.write(order="files dns", name_servers=[DEAD_NAME_SERVER])
            with running("hanging.lab", names.prefix()) as program:
                eventually(lambda: lab.queries(DEAD_NAME_SERVER), PATIENCE, "the lookup")

                # The lookup goes on for minutes.
                self.assertEqual(program.end(signal.SIGTERM), 0)


if __name__ == "__main__":
    unittest.main()
