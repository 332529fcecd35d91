"""What the documents tell to type exists, and selects tests."""

from __future__ import annotations

import os
import pathlib
import re
import shlex
import unittest

from endtoend.built import ROOT

from .command import output

DOCUMENTS = [*ROOT.glob("*.md"), *(ROOT / "docs").glob("*.md"), *(ROOT / "tests").rglob("*.md")]
# The folder whose tests run; by hand that of the preset `debug`.
BUILD = pathlib.Path(os.environ.get("TARNWICK_BUILD") or ROOT / "build/debug")
DOCUMENTED_BUILD = "build/debug"
NOWHERE = "/no/such/program"
BENCHMARKS = (["compare_desktop.py", "--program", NOWHERE], ["compare_ping.py", "--program", NOWHERE], ["open_drop_down.py"])


def code() -> list[str]:
    """Every line or span of code in a document."""
    found = []
    for document in DOCUMENTS:
        text = document.read_text(encoding="utf-8")
        found += re.findall(r"^    (\S.*)$", text, re.MULTILINE) + re.findall(r"`([^`\n]+)`", text)
    return [span.replace(r"\|", "|") for span in found]


def words_after(span: str, word: str) -> list[str]:
    words = shlex.split(span, comments=True)
    return words[words.index(word) + 1 :]


class Documents(unittest.TestCase):
    def test_each_selection_of_test_programs_finds_some(self) -> None:
        commands = [span for span in code() if "ctest --test-dir" in span]
        self.assertGreater(len(commands), 8)
        for command in commands:
            with self.subTest(command):
                arguments = [word.replace(DOCUMENTED_BUILD, str(BUILD)) for word in words_after(command, "ctest")]
                self.assertNotIn("Total Tests: 0", output(["ctest", "-N", *arguments]))

    def test_each_selection_of_cases_finds_some(self) -> None:
        commands = [span for span in code() if "--gtest_filter" in span]
        self.assertGreater(len(commands), 3)
        for command in commands:
            with self.subTest(command):
                program, *options = shlex.split(command)
                built = program.replace(DOCUMENTED_BUILD, str(BUILD))
                self.assertRegex(output([built, "--gtest_list_tests", *options]), r"(?m)^  \S")

    def test_each_module_exists(self) -> None:
        commands = [span for span in code() if "unittest" in span and "$" not in span]
        self.assertGreater(len(commands), 3)
        for command in commands:
            with self.subTest(command):
                module = words_after(command, "unittest")[-1]
                self.assertTrue((ROOT / "tests" / (module.replace(".", "/") + ".py")).exists())

    def test_each_path_exists(self) -> None:
        paths = [
            path
            for span in code()
            for path in re.findall(r"(?<![\w/.~])(?:app|bench|cmake|core|docs|packaging|platform|scripts|tests)/[\w./-]+", span)
        ]
        self.assertGreater(len(paths), 60)
        for path in sorted(set(paths)):
            with self.subTest(path):
                self.assertTrue((ROOT / path).exists())

    def test_each_link_leads_somewhere(self) -> None:
        for document in DOCUMENTS:
            for link in re.findall(r"\]\(([^)#:]+)\)", document.read_text(encoding="utf-8")):
                with self.subTest(document=document.name, link=link):
                    self.assertTrue((document.parent / link).exists())


class Unbuilt(unittest.TestCase):
    def test_a_benchmark_says_that_nothing_is_built(self) -> None:
        for script, *options in BENCHMARKS:
            with self.subTest(script):
                command = ["/usr/bin/python3", "-B", ROOT / "bench" / script, *options]
                self.assertRegex(output(command, status=1, TARNWICK=NOWHERE), r"\A/no/such/program is not built: [^\n]+\n\Z")


if __name__ == "__main__":
    unittest.main()
