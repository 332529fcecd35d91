"""The tools that the documents tell to run, each on a small scale. What they measure or draw is not judged here."""

from __future__ import annotations

import pathlib
import re
import tempfile
import unittest
from typing import ClassVar

from endtoend.built import ROOT
from endtoend.concurrently import ConcurrentTestCase

from .command import output
from .test_documents import BUILD, code

TOOL = re.compile(
    r"\b(bench/\w+\.py|scripts/(?:mutate|pictures|report-picture)|tarnwick-bench|outages-bench|tarnwick-pictures|"
    r"tarnwick-report-samples|empty-tray|Fuzz\w+)(?= |$)"
)
BENCH = ROOT / "build/bench/bench"
README_PICTURES = ROOT / "docs/pictures"
REPORT_PICTURES = {"report-1.png", "report-2.png"}


def documented() -> set[str]:
    """The commands that begin with a tool, or with what builds it."""
    starts = ("bench/", "build/", "scripts/", "tests/lab/run scripts/", "cmake ", "TARNWICK=build/")
    commands = (re.sub(r"\s+#.*", "", span) for span in code() if span.startswith(starts))
    return {command for command in commands if TOOL.search(command)} - {"scripts/mutate"}  # the name of the tool


class Tools(ConcurrentTestCase):
    tried: ClassVar[dict[str, str]] = {
        "bench/compare_ping.py": "test_the_comparison_with_other_pingers",
        "bench/compare_desktop.py --panel lxqt --seconds 30": "test_the_comparison_with_other_programs_in_the_panel",
        "bench/compare_desktop.py --panel lxqt --seconds 30 --changing": "test_the_comparison_with_a_changing_latency",
        "bench/open_drop_down.py": "test_the_timing_of_the_drop_down",
        "TARNWICK=build/bench/app/tarnwick bench/open_outages.py": "test_the_timing_of_the_outages_window",
        "build/bench/bench/outages-bench": "test_the_outages_window_without_a_display",
        "cmake --preset bench && cmake --build --preset bench --target outages-bench --target year-journal --target tarnwick": (
            "test_the_timing_of_the_outages_window"
        ),
        "cmake --preset bench && cmake --build --preset bench --target empty-tray": "test_the_comparison_with_other_programs_in_the_panel",
        "cmake --preset bench && cmake --build --preset bench && build/bench/bench/tarnwick-bench": "test_the_hot_paths",
        "build/fuzz/tests/fuzz/FuzzParseReply -max_total_time=600 build/fuzz/found/ParseReply/corpus tests/fuzz/corpus/ParseReply": "test_a_fuzz_target",
        "scripts/mutate core/PingLedger.cpp": "test_mutation",
        "scripts/mutate core app/Monitor --sample 200": "test_mutation",
        "scripts/mutate core --again": "test_mutation",
        "tests/lab/run scripts/mutate core/Pinger": "test_mutation",
        "tests/lab/run scripts/mutate core app/Monitor app/Reading app/Preferences app/SettingsView/Model \\": "test_mutation",
        "cmake --preset debug && cmake --build --preset debug --target tarnwick-pictures": "test_the_pictures_of_the_windows",
        "build/debug/tests/app/views/tarnwick-pictures --readme docs/pictures": "test_the_pictures_of_the_windows",
        "build/debug/tests/app/views/tarnwick-pictures FOLDER": "test_the_pictures_of_the_windows",
        "tests/lab/run scripts/pictures": "test_the_picture_of_the_terminal_view",
        "scripts/report-picture": "test_the_pictures_of_the_report",
        "build/debug/tests/app/tarnwick-report-samples FOLDER": "test_the_pictures_of_the_report",
    }

    # Each that needs the laboratory has a network of its own: they run at the same time.
    @staticmethod
    def output(command: str, **environment: str) -> str:
        return output(command.split(), seconds=600, **environment)

    def test_each_documented_tool_is_tried(self) -> None:
        self.assertEqual(documented(), set(self.tried))
        for test in self.tried.values():
            self.assertTrue(hasattr(self, test), test)

    def test_the_comparison_with_other_pingers(self) -> None:
        table = self.output("bench/compare_ping.py --seconds 17 --rounds 1 --starts 1")
        for name in ("tarnwick-watch", "ping", "fping"):
            self.assertRegex(table, rf"\b{name}\b")

    def test_the_comparison_with_other_programs_in_the_panel(self) -> None:
        self.assertIn("tarnwick", self.output("bench/compare_desktop.py --panel lxqt --seconds 1"))

    def test_the_comparison_with_a_changing_latency(self) -> None:
        table = self.output("tests/lab/run bench/compare_desktop.py --panel lxqt --seconds 1 --changing --only tarnwick")
        self.assertIn("tarnwick", table)

    def test_the_timing_of_the_drop_down(self) -> None:
        self.assertRegex(self.output("bench/open_drop_down.py --times 2"), r"median \d+ ms")

    def test_the_timing_of_the_outages_window(self) -> None:
        program = ROOT / "build/bench/app/tarnwick"
        self.assertRegex(self.output("bench/open_outages.py --times 2", TARNWICK=str(program)), r"median \d+ ms")

    def test_the_outages_window_without_a_display(self) -> None:
        self.assertIn("ms", self.output(f"{BENCH}/outages-bench --benchmark_min_time=0.001"))

    def test_the_hot_paths(self) -> None:
        self.assertIn("ns", self.output(f"{BENCH}/tarnwick-bench --benchmark_min_time=0.001"))

    def test_a_fuzz_target(self) -> None:
        with tempfile.TemporaryDirectory() as found:
            target = "build/fuzz/tests/fuzz/FuzzParseReply -max_total_time=1"
            self.assertIn("Done", self.output(f"{target} {found} tests/fuzz/corpus/ParseReply"))

    def test_mutation(self) -> None:
        # A source that a small test program links.
        tried = self.output("scripts/mutate platform/bus/BusText.cpp --sample 1 --again")
        self.assertIn("1 mutants tried, 1 killed", tried)

    def test_the_pictures_of_the_windows(self) -> None:
        program = BUILD / "tests/app/views/tarnwick-pictures"
        without_leaks = {"ASAN_OPTIONS": "detect_leaks=0"}  # the C library's, of the locale that it was given
        with tempfile.TemporaryDirectory() as folder:
            self.output(f"{program} --readme {folder}", **without_leaks)
            drawn = {path.name for path in pathlib.Path(folder).iterdir()}
            self.assertEqual(drawn | REPORT_PICTURES, {path.name for path in README_PICTURES.glob("*.png")})
        with tempfile.TemporaryDirectory() as folder:
            self.output(f"{program} {folder}", **without_leaks)
            self.assertTrue((pathlib.Path(folder) / "settings-light-10pt-1x.png").exists())

    def test_the_pictures_of_the_report(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            self.output(f"tests/lab/run scripts/report-picture {folder}", TARNWICK_BUILD=str(BUILD))
            self.assertEqual({path.name for path in pathlib.Path(folder).iterdir()}, REPORT_PICTURES)

    def test_the_picture_of_the_terminal_view(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            picture = pathlib.Path(folder) / "watch.svg"
            self.output(f"tests/lab/run scripts/pictures 3 {picture}")
            self.assertRegex(picture.read_text(encoding="utf-8"), r"\A<svg (?s:.*)</svg>\n\Z")


if __name__ == "__main__":
    unittest.main()
