"""What CHANGELOG.md says of the newest version."""

from __future__ import annotations

import dataclasses
import re
import typing

if typing.TYPE_CHECKING:
    import pathlib

HEADING = re.compile(r"^## (.*)$", re.MULTILINE)
VERSION = re.compile(r"(\d+(?:\.\d+)*) - (\d{4}-\d\d-\d\d)")


@dataclasses.dataclass(frozen=True)
class Section:
    version: str
    date: str  # as 2026-11-23
    notes: str  # Markdown, without the heading


def newest(file: pathlib.Path) -> Section | str:
    """The first section, or what is wrong with it."""
    _, *parts = HEADING.split(file.read_text(encoding="utf-8"))
    if not parts:
        return "no version"
    heading, notes = parts[:2]
    named = VERSION.fullmatch(heading.strip())
    if not named:
        return f'"{heading.strip()}" in place of a version, as "1.2.3 - 2026-11-23"'
    return Section(named[1], named[2], notes.strip())
