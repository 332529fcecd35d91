#!/usr/bin/python3
"""Prints the version of the sources in FOLDER, if all files there agree on it and on its day.

usage: versions.py FOLDER
"""

from __future__ import annotations

import email.utils
import pathlib
import re
import sys

import changelogs

PROJECT = re.compile(r"^project\(Tarnwick VERSION (\S+)", re.MULTILINE)
DEBIAN = re.compile(r"\Atarnwick \(([^)]+)\).*?^ -- [^>]+>  (.+?)$", re.MULTILINE | re.DOTALL)
METAINFO = re.compile(r'<release version="([^"]+)" date="([^"]+)"')


def of_project(file: pathlib.Path) -> str:
    found = PROJECT.search(file.read_text(encoding="utf-8"))
    return found[1] if found else "no version"


def of_changelog(file: pathlib.Path) -> str:
    section = changelogs.newest(file)
    return section if isinstance(section, str) else f"{section.version} of {section.date}"


def of_debian(file: pathlib.Path) -> str:
    found = DEBIAN.search(file.read_text(encoding="utf-8"))
    return f"{found[1]} of {email.utils.parsedate_to_datetime(found[2]).date()}" if found else "no version"


def of_metainfo(file: pathlib.Path, project: str) -> str:
    found = METAINFO.search(file.read_text(encoding="utf-8"))
    return f"{found[1].replace('@PROJECT_VERSION@', project)} of {found[2]}" if found else "no version"


def named_versions(folder: pathlib.Path) -> tuple[str, dict[str, str]]:
    """The project's version, and what each of the other files says: a version and its day."""
    project = of_project(folder / "CMakeLists.txt")
    metainfo = "packaging/org.tarnwick.tarnwick.metainfo.xml.in"
    return project, {
        "CHANGELOG.md": of_changelog(folder / "CHANGELOG.md"),
        "packaging/debian/changelog": of_debian(folder / "packaging/debian/changelog"),
        metainfo: of_metainfo(folder / metainfo, project),
    }


def main() -> None:
    project, others = named_versions(pathlib.Path(sys.argv[1]))
    if len(set(others.values())) > 1 or not all(text.startswith(f"{project} of ") for text in others.values()):
        lines = [f"  {file}: {text}" for file, text in {"CMakeLists.txt": project, **others}.items()]
        sys.exit("\n".join(["The files differ in the newest version:", *lines]))
    print(project)


if __name__ == "__main__":
    main()
