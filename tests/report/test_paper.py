"""The page of a report is well-formed, prints on two pages, and fits phones."""

from __future__ import annotations

import pathlib
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from typing import ClassVar

from . import browser, samples

SPACE = "{http://www.w3.org/1999/xhtml}"
MARGIN_MILLIMETERS = 11.5  # a little less than the page's own: letters may reach over their boxes
PHONE, DESKTOP = 360, 1280


class Pages(unittest.TestCase):
    folder: ClassVar[tempfile.TemporaryDirectory[str]]
    pages: ClassVar[dict[str, pathlib.Path]]

    @classmethod
    def setUpClass(cls) -> None:
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        cls.pages = samples.write(cls.folder.name)

    def test_there_is_one_of_each_sample(self) -> None:
        self.assertEqual(set(self.pages), samples.NAMES)

    def test_they_are_xml_with_all_that_assistive_technology_reads(self) -> None:
        for name, page in self.pages.items():
            with self.subTest(name):
                root = ElementTree.parse(page).getroot()
                self.assertEqual((root.tag, root.attrib), (f"{SPACE}html", {"lang": "en"}))
                self.assertTrue(root.findtext(f"{SPACE}head/{SPACE}title"))
                self.assertEqual(len(root.findall(f".//{SPACE}h1")), 1)
                for table in root.iter(f"{SPACE}table"):
                    self.assertEqual(table[0].tag, f"{SPACE}caption")
                    self.assertTrue(all("scope" in cell.attrib for cell in table.iter(f"{SPACE}th")))
                    columns = {len(row) for row in table.iter(f"{SPACE}tr")}
                    self.assertEqual(len(columns), 1)
                for drawing in root.iter(f"{SPACE}svg"):
                    if drawing.get("aria-hidden") != "true":
                        self.assertEqual((drawing.get("role"), drawing[0].tag), ("img", f"{SPACE}title"))

    def test_they_load_and_run_nothing(self) -> None:
        for name, page in self.pages.items():
            with self.subTest(name):
                for element in ElementTree.parse(page).getroot().iter():
                    self.assertNotIn(element.tag, {f"{SPACE}{tag}" for tag in ("script", "link", "img", "iframe", "object")})
                    self.assertFalse({"src", "href", "style"} & set(element.attrib))
                    self.assertFalse([attribute for attribute in element.attrib if attribute.startswith("on")])

    def test_they_print_on_two_pages_and_within_the_margins(self) -> None:
        letters = self.size_of_letters()
        for name, page in self.pages.items():
            for paper, (width, height) in browser.PAPERS.items():
                with self.subTest(name, paper=paper):
                    printed = page.with_suffix(".pdf")
                    browser.print_page(page, paper, printed)
                    sheets = browser.sheets(printed)
                    self.assertEqual(len(sheets), 1 if name == "empty" else 2)
                    for sheet in sheets:
                        self.assertAlmostEqual(sheet.width, width * browser.POINTS_PER_MILLIMETER, delta=1)
                        self.assertAlmostEqual(sheet.height, height * browser.POINTS_PER_MILLIMETER, delta=1)
                        self.assert_within_margins(sheet)
                    self.assertTrue(sheets[0].text.startswith("Report on an internet connection"))
                    # The browser shrinks a page that is too wide.
                    self.assertAlmostEqual(sheets[0].words[0].height, letters, delta=0.05)
                    self.assertIn("How it was measured", sheets[-1].text)
                    if len(sheets) == 2:
                        self.assertRegex(sheets[1].text, r"\AOutages: \d+ ")

    def size_of_letters(self) -> float:
        """Of the first word, on the page that has nothing wide."""
        printed = self.pages["empty"].with_suffix(".pdf")
        browser.print_page(self.pages["empty"], "A4", printed)
        return browser.sheets(printed)[0].words[0].height

    def assert_within_margins(self, sheet: browser.Sheet) -> None:
        margin = MARGIN_MILLIMETERS * browser.POINTS_PER_MILLIMETER
        self.assertGreater(len(sheet.words), 40)
        for word in sheet.words:
            self.assertTrue(margin <= word.left and word.right <= sheet.width - margin, word)
            self.assertTrue(margin <= word.top and word.bottom <= sheet.height - margin, word)

    def test_they_fit_a_phone_and_a_wide_window(self) -> None:
        for name, page in self.pages.items():
            for width in (PHONE, DESKTOP) if name == "bad-week" else (PHONE,):
                with self.subTest(name, width=width):
                    self.assertEqual(browser.widths(page, width), (width, width))


if __name__ == "__main__":
    unittest.main()
