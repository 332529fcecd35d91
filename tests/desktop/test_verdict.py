"""Whose fault it is, in the drop-down of a real panel: the sentence, and the path that opens below it."""

from __future__ import annotations

import tempfile
import unittest

from endtoend.judging import wait_until_learnt
from endtoend.waiting import eventually
from lab import Names
from lab.chain import Chain
from lab.faults import Cut
from lab.topology import ACCESS, ADDRESSES, HOPS, HOST, NAMES

from .panels import XfcePanel
from .program import APPLICATION, PATIENCE, Program

DOWN_SECONDS = 20
SENTENCE = "Your router answers in"


class AProvidersFault(unittest.TestCase):
    def setUp(self) -> None:
        XfcePanel.require()
        self.chain = self.enterContext(Chain())
        self.desktop = XfcePanel()
        self.desktop.start()
        self.addCleanup(self.desktop.stop)
        self.desktop.park_pointer()
        self.empty = self.desktop.still_picture()

    def texts(self) -> list[str]:
        return self.desktop.accessible(APPLICATION).texts()

    def test_the_path_opens_below_its_sentence(self) -> None:
        names = Names(self.enterContext(tempfile.TemporaryDirectory()))
        names.write(hosts=NAMES)
        program = Program(self.desktop, prefix=names.prefix(), Hostname=ADDRESSES[HOST][4])
        item = program.item_up()
        icon = self.desktop.item_rectangle(self.empty)
        wait_until_learnt(self.chain)
        self.chain.begin(Cut(ACCESS))
        eventually(lambda: any(SENTENCE in line for line in item.tool_tip), DOWN_SECONDS + PATIENCE, "the verdict")

        self.desktop.click(*icon.center)
        place = eventually(program.drop_down, PATIENCE, "the drop-down")
        self.desktop.act(APPLICATION, "Show Path")

        def rows() -> list[str]:
            return [text for text in self.texts() if text.startswith("Hop ")]

        eventually(lambda: len(rows()) == len(HOPS), PATIENCE, "a row for each hop")
        eventually(lambda: all(name in row for name, row in zip(NAMES, rows(), strict=True)), PATIENCE, "their names")
        for number, (hop, row) in enumerate(zip(HOPS, rows(), strict=True), 1):
            self.assertTrue(row.startswith(f"Hop {number}, {ADDRESSES[hop][4]}"), row)
        eventually(lambda: ", 100% lost" in rows()[-1], PATIENCE, "the host's answers are lost")
        self.assertIn(", 0% lost", rows()[0])
        self.assertTrue(any(SENTENCE in text for text in self.texts()))
        self.desktop.park_pointer()
        self.desktop.screenshot("verdict-path.png")
        grown = eventually(program.drop_down, PATIENCE, "the drop-down")
        self.assertGreater(grown.height, place.height)

        self.chain.end(Cut(ACCESS))

        eventually(lambda: not any(SENTENCE in text for text in self.texts()), DOWN_SECONDS + PATIENCE, "all is well")
        self.assertEqual(rows(), [])


if __name__ == "__main__":
    unittest.main()
