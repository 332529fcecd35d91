"""A page in a browser: printed, measured and as a picture. The browser reaches no network."""

from __future__ import annotations

import dataclasses
import os
import pathlib
import re
import subprocess
import tempfile
import xml.etree.ElementTree as ElementTree

BROWSER = "/usr/bin/chromium-headless-shell"
PATIENCE_SECONDS = 120
POINTS_PER_MILLIMETER = 72 / 25.4
# Width and height in millimeters.
PAPERS = {"A4": (210.0, 297.0), "Letter": (215.9, 279.4)}
POLICY = re.compile(r'<meta http-equiv="Content-Security-Policy"[^>]*/>')
MEASURED = re.compile(r'data-widths="(\d+) (\d+)"')


@dataclasses.dataclass(frozen=True)
class Word:
    text: str
    left: float
    top: float
    right: float
    bottom: float

    @property
    def height(self) -> float:
        return self.bottom - self.top


@dataclasses.dataclass(frozen=True)
class Sheet:
    """A printed page, in points."""

    width: float
    height: float
    words: list[Word]

    @property
    def text(self) -> str:
        return " ".join(word.text for word in self.words)


def _browse(*arguments: str) -> str:
    with tempfile.TemporaryDirectory() as home:
        command = [
            BROWSER, "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--hide-scrollbars",
            f"--user-data-dir={home}/profile", *arguments,
        ]  # fmt: skip
        done = subprocess.run(
            command, env={"HOME": home, "PATH": os.environ["PATH"], "LANG": "C.UTF-8"}, capture_output=True, text=True,
            timeout=PATIENCE_SECONDS, check=False)  # fmt: skip
    if done.returncode != 0:
        raise AssertionError(f"the browser exits with {done.returncode}:\n{done.stderr}")
    return done.stdout


def _changed(page: pathlib.Path, text: str, folder: pathlib.Path) -> str:
    """The address of a copy."""
    copy = folder / page.name
    copy.write_text(text, encoding="utf-8")
    return copy.as_uri()


def print_page(page: pathlib.Path, paper: str, target: pathlib.Path) -> None:
    """As a file of PDF. The page names no paper: a reader's browser takes the one of the reader's country."""
    text = page.read_text(encoding="utf-8")
    named = text.replace("@page {", f"@page {{ size: {paper};")
    if named == text:
        raise AssertionError("the page has no rule for its paper")
    with tempfile.TemporaryDirectory() as folder:
        address = _changed(page, named, pathlib.Path(folder))
        _browse("--no-pdf-header-footer", f"--print-to-pdf={target}", address)


def sheets(printed: pathlib.Path) -> list[Sheet]:
    done = subprocess.run(["pdftotext", "-bbox", printed, "-"], check=True, capture_output=True, timeout=PATIENCE_SECONDS)
    space = "{http://www.w3.org/1999/xhtml}"
    found = []
    for page in ElementTree.fromstring(done.stdout.decode()).iter(f"{space}page"):
        words = [
            Word(word.text or "", *(float(word.attrib[edge]) for edge in ("xMin", "yMin", "xMax", "yMax")))
            for word in page.iter(f"{space}word")
        ]
        found.append(Sheet(float(page.attrib["width"]), float(page.attrib["height"]), words))
    return found


def widths(page: pathlib.Path, width: int) -> tuple[int, int]:
    """How wide the page is, and how much of it a window of this width shows."""
    script = (
        "<script>document.documentElement.dataset.widths ="
        " document.documentElement.scrollWidth + ' ' + document.documentElement.clientWidth</script></body>"
    )
    text = POLICY.sub("", page.read_text(encoding="utf-8")).replace("</body>", script)
    with tempfile.TemporaryDirectory() as folder:
        document = _browse(f"--window-size={width},800", "--dump-dom", _changed(page, text, pathlib.Path(folder)))
    measured = MEASURED.search(document)
    if measured is None:
        raise AssertionError(f"the page was not measured:\n{document[:2000]}")
    return int(measured[1]), int(measured[2])


def picture(page: pathlib.Path, target: pathlib.Path, *, width: int, height: int, dark: bool = False, scale: float = 1) -> None:
    _browse(
        f"--window-size={width},{height}", f"--force-device-scale-factor={scale}",
        *(["--blink-settings=preferredColorScheme=0"] if dark else []),
        f"--screenshot={target}", page.as_uri())  # fmt: skip
