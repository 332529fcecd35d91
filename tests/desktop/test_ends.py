"""What is saved when the display goes first, and how signals end the program while it is starting."""

from __future__ import annotations

import os
import signal
import socket
import subprocess
import tempfile
import unittest

from endtoend.waiting import eventually

from .bus import BUS, BUS_PATH, Bus
from .desktops import Desktop
from .panels import BareCompositor, LatePanel
from .program import PATIENCE, PROGRAM, Program, pings_sent

FIRST_DISPLAY_PORT = 6000


def is_on_bus(bus: Bus, process: int) -> bool:
    names = bus.call(BUS, BUS_PATH, BUS, "ListNames")[0]
    return any(bus.process(name) == process for name in names)


class EndOfTheDisplay(unittest.TestCase):
    def saves_at_the_end_of(self, desktop: Desktop) -> None:
        desktop.require()
        desktop.start()
        self.addCleanup(desktop.stop)
        before = pings_sent()
        program = Program(desktop)
        self.addCleanup(program.end)
        eventually(lambda: pings_sent() >= before + 3, PATIENCE, "three pings")

        desktop.display.terminate()

        self.assertNotEqual(program.exit_status(), 0)
        self.assertGreaterEqual(program.saved_pings(), 2, program.output)

    def test_an_x_server_that_dies_loses_nothing(self) -> None:
        self.saves_at_the_end_of(LatePanel())

    def test_a_compositor_that_dies_loses_nothing(self) -> None:
        self.saves_at_the_end_of(BareCompositor())


class SignalsAtTheStart(unittest.TestCase):
    def test_they_end_a_program_whose_display_does_not_answer(self) -> None:
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(number.name), socket.create_server(("127.0.0.1", 0)) as display:
                display.settimeout(PATIENCE)
                process = self.start(f"127.0.0.1:{display.getsockname()[1] - FIRST_DISPLAY_PORT}")
                connection, _ = display.accept()
                with connection:
                    process.send_signal(number)

                    self.assertEqual(process.wait(PATIENCE), 0)

    def start(self, display: str) -> subprocess.Popen[bytes]:
        home = tempfile.TemporaryDirectory()
        self.addCleanup(home.cleanup)
        environment = {
            "PATH": os.environ["PATH"], "HOME": home.name, "DISPLAY": display, "QT_QPA_PLATFORM": "xcb",
            "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere",
        }  # fmt: skip
        process = subprocess.Popen([PROGRAM], env=environment, stdin=subprocess.DEVNULL)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def test_they_end_a_program_that_waits_for_another_one(self) -> None:
        LatePanel.require()
        desktop = LatePanel()
        desktop.start()
        self.addCleanup(desktop.stop)
        first = Program(desktop)
        self.addCleanup(first.end)
        eventually(lambda: desktop.session.bus.owner("org.tarnwick.tarnwick"), PATIENCE, "the first one runs")
        first.send(signal.SIGSTOP)
        waiting = first.start_beside()
        eventually(lambda: is_on_bus(desktop.session.bus, waiting.pid), PATIENCE, "the second one is on the bus")

        waiting.send_signal(signal.SIGTERM)

        self.assertEqual(waiting.wait(PATIENCE), 0, desktop.session.log("second"))


if __name__ == "__main__":
    unittest.main()
