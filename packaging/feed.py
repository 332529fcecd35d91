#!/usr/bin/python3
"""Makes the feed of updates, or says of a feed that it holds at a later time. Writes the file that is named last."""

from __future__ import annotations

import argparse
import hashlib
import json
import os
import pathlib
import re
import sys

import changelogs

TIME = re.compile(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ")
ARCHIVE = re.compile(r"Tarnwick-[\d.]+-(\w+)\.tar\.zst")
# The kernel of Debian 12, where bundles are made.
MINIMUM_SYSTEM = "6.1"
LONGEST_NOTES = 64 * 1024  # bytes; programs refuse more


def time(text: str) -> str:
    if not TIME.fullmatch(text):
        raise argparse.ArgumentTypeError(f"{text} is no time as 2026-11-23T04:00:00Z")
    return text


def archive_entry(file: pathlib.Path, folder: str) -> dict[str, object]:
    """`folder` is the address below which the archive lies, without a slash at its end."""
    named = ARCHIVE.fullmatch(file.name)
    if not named:
        sys.exit(f"{file.name} is not named as an archive.")
    content = file.read_bytes()
    return {
        "address": f"{folder}/{file.name}",
        "machine": named[1],
        "size": len(content),
        "sha256": hashlib.sha256(content).hexdigest(),
    }


def release_entry(changelog: pathlib.Path, folder: str, archives: list[pathlib.Path]) -> dict[str, object]:
    section = changelogs.newest(changelog)
    if isinstance(section, str):
        sys.exit(f"{changelog.name} has {section}.")
    if len(section.notes.encode()) > LONGEST_NOTES:
        sys.exit(f"{changelog.name} says more of {section.version} than {LONGEST_NOTES} bytes.")
    return {
        "version": section.version,
        "channel": "stable",
        "minimumSystem": MINIMUM_SYSTEM,
        "archives": [archive_entry(file, folder) for file in archives],
        "notes": section.notes,
    }


def make(options: argparse.Namespace) -> dict[str, object]:
    folder = options.address.rpartition("/")[0]
    return {
        "signedAt": options.signed_at,
        "releases": [release_entry(options.changelog, folder, options.archives)],
    }


def renew(options: argparse.Namespace) -> dict[str, object]:
    feed = json.loads(options.feed.read_text(encoding="utf-8"))
    if options.signed_at <= feed["signedAt"]:
        sys.exit(f"{options.signed_at} is not later than {feed['signedAt']}, when the feed was signed.")
    return feed | {"signedAt": options.signed_at}


def write(feed: dict[str, object], file: pathlib.Path) -> None:
    draft = file.with_suffix(".new")
    draft.write_text(json.dumps(feed, indent=2, ensure_ascii=False) + "\n", encoding="utf-8")
    os.replace(draft, file)


def read_options() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__)
    kinds = parser.add_subparsers(required=True)
    for name, command in (("make", make), ("renew", renew)):
        kind = kinds.add_parser(name)
        kind.set_defaults(command=command)
        kind.add_argument("--signed-at", type=time, required=True)
        if command is make:
            kind.add_argument("--address", required=True, help="where the feed will be; the archives lie beside it")
            kind.add_argument("--changelog", type=pathlib.Path, required=True)
            kind.add_argument("archives", type=pathlib.Path, nargs="+")
        kind.add_argument("feed", type=pathlib.Path)
    return parser.parse_args()


def main() -> None:
    options = read_options()
    write(options.command(options), options.feed)


if __name__ == "__main__":
    main()
