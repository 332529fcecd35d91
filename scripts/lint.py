#!/usr/bin/python3
"""Runs clang-tidy over the sources of one or more build folders; what was clean and has not changed is not read again.

usage: scripts/lint.py BUILD_FOLDER... [--only FOLDER_OF_SOURCES]...
"""

from __future__ import annotations

import argparse
import concurrent.futures
import dataclasses
import functools
import hashlib
import json
import os
import pathlib
import shlex
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
CLANG_TIDY = "clang-tidy-19"
STAMPS = ROOT / "build" / "lint"


@dataclasses.dataclass(frozen=True)
class Source:
    """One source file, as one build folder compiles it."""

    path: pathlib.Path
    build: pathlib.Path
    command: str
    output: str


def parse_arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(usage=__doc__.split("usage: ")[1].strip())
    parser.add_argument("builds", nargs="+", metavar="BUILD_FOLDER", type=pathlib.Path)
    parser.add_argument("--only", action="append", default=[], metavar="FOLDER_OF_SOURCES")
    return parser.parse_args()


def sources_of(build: pathlib.Path, folders: list[str]) -> list[Source]:
    entries = json.loads((build / "compile_commands.json").read_text(encoding="utf-8"))
    found = []
    for entry in entries:
        path = pathlib.Path(entry["file"])
        inside = path.is_relative_to(ROOT) and not path.is_relative_to(ROOT / "build")
        if inside and (not folders or path.relative_to(ROOT).parts[0] in folders):
            words = shlex.split(entry["command"])
            found.append(Source(path, build, entry["command"], words[words.index("-o") + 1]))
    return found


def dependencies_of(build: pathlib.Path) -> dict[str, list[str]]:
    """What each object file was made from, as the build has recorded it."""
    text = subprocess.run(
        ["ninja", "-C", build, "-t", "deps"], check=True, capture_output=True, text=True
    ).stdout
    dependencies: dict[str, list[str]] = {}
    current: list[str] = []
    for line in text.splitlines():
        if line.startswith("    "):
            current.append(os.path.normpath(build / line.strip()))
        elif ": #deps" in line:
            current = dependencies.setdefault(line.split(": #deps")[0], [])
    return dependencies


@functools.cache
def digest_of(path: str) -> str:
    """Of its text for a file of ours, of its date and size for one of the system's."""
    if pathlib.Path(path).is_relative_to(ROOT):
        return hashlib.sha256(pathlib.Path(path).read_bytes()).hexdigest()
    status = os.stat(path)
    return f"{status.st_mtime_ns} {status.st_size}"


def stamp_of(source: Source, dependencies: list[str], tool: str) -> pathlib.Path:
    """A file that exists when exactly this was found clean."""
    parts = [tool, digest_of(str(ROOT / ".clang-tidy")), source.command]
    parts += [f"{path} {digest_of(path)}" for path in sorted({str(source.path), *dependencies})]
    return STAMPS / hashlib.sha256("\n".join(parts).encode()).hexdigest()


def lint(source: Source, stamp: pathlib.Path) -> str:
    """The findings; none leaves the stamp."""
    result = subprocess.run(
        [CLANG_TIDY, "--quiet", "-p", source.build, source.path],
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        text=True,
        check=False,
    )
    if result.returncode == 0:
        stamp.touch()
        return ""
    return result.stdout or result.stderr or f"{source.path}: {CLANG_TIDY} ended with {result.returncode}\n"


def main() -> int:
    options = parse_arguments()
    STAMPS.mkdir(parents=True, exist_ok=True)
    tool = subprocess.run([CLANG_TIDY, "--version"], check=True, capture_output=True, text=True).stdout
    current: dict[pathlib.Path, pathlib.Path] = {}
    due: dict[pathlib.Path, Source] = {}
    for build in (folder.resolve() for folder in options.builds):
        dependencies = dependencies_of(build)
        for source in sources_of(build, options.only):
            if source.output not in dependencies:
                sys.exit(f"{source.path} is not built in {build}: build first.")
            if source.path in current:
                continue
            stamp = stamp_of(source, dependencies[source.output], tool)
            current[source.path] = stamp
            if not stamp.exists():
                due[stamp] = source
    if not current:
        sys.exit("No source to read: wrong build folder?")
    with concurrent.futures.ThreadPoolExecutor(len(os.sched_getaffinity(0))) as pool:
        findings = [text for text in pool.map(lambda item: lint(item[1], item[0]), due.items()) if text]
    print("".join(findings), end="")
    print(f"clang-tidy: {len(current)} sources, {len(due)} read anew, {len(findings)} with findings")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
