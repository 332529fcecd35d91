#!/usr/bin/python3
"""Runs clang-tidy over the sources of one or more build folders; what was clean and has not changed is not read again.

Most of clang-tidy's time goes into the headers that every source includes. So sources that are compiled alike are read
several at a time, pasted into one text.

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
import re
import shlex
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
CLANG_TIDY = "clang-tidy-19"
STAMPS = ROOT / "build" / "lint"
GROUP_SIZE = 15
CONSTANT = re.compile(r"^constexpr .*?(\w+)(?= =|\[|\{)", re.MULTILINE)


@dataclasses.dataclass(frozen=True)
class Source:
    """One source file, as one build folder compiles it."""

    path: pathlib.Path
    build: pathlib.Path
    command: str
    output: str

    @functools.cached_property
    def flags(self) -> tuple[str, ...]:
        """What the compiler is told, but for the names of its files."""
        words = shlex.split(self.command)[1:]
        output = words.index("-o")
        return tuple(word for word in words[:output] + words[output + 2 :] if word not in ("-c", str(self.path)))


class Group:
    """Sources pasted into one text, and the way back from its lines to theirs."""

    def __init__(self, sources: list[Source]) -> None:
        self.sources = sources
        self.origins: list[tuple[Source, int]] = []
        lines: list[str] = []
        included: set[str] = set()
        for source in sources:
            # What a source before has included would be found to be included twice.
            before = included.copy()
            for number, line in enumerate(source.path.read_text(encoding="utf-8").splitlines(), start=1):
                lines.append("" if line in before else line)
                self.origins.append((source, number))
                if line.startswith("#include"):
                    before.discard(line)
                    included.add(line)
        self.text = "\n".join(lines) + "\n"

    def original(self, findings: str, pasted: str) -> str:
        """The findings, told of the sources instead of the pasted text."""

        def place(match: re.Match[str]) -> str:
            source, number = self.origins[int(match[1]) - 1]
            return f"{source.path}:{number}:"

        return re.sub(rf"^{re.escape(pasted)}:(\d+):", place, findings, flags=re.MULTILINE)


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


def run_clang_tidy(*arguments: str | pathlib.Path) -> str:
    """What it finds; empty when that is nothing."""
    result = subprocess.run(
        [CLANG_TIDY, "--quiet", *arguments],
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        text=True,
        check=False,
    )
    if result.returncode == 0:
        return ""
    return result.stdout or result.stderr or f"{CLANG_TIDY} {arguments[-1]} ended with {result.returncode}\n"


def findings_in(sources: list[Source]) -> str:
    """What is found in a source that others stand before is believed when it's found again in the source alone."""
    if len(sources) == 1:
        return run_clang_tidy("-p", sources[0].build, sources[0].path)
    group = Group(sources)
    # Inside the clone, where clang-tidy finds its configuration. A name may well be that of another source's constant.
    with tempfile.NamedTemporaryFile("w", encoding="utf-8", suffix=".cpp", dir=STAMPS) as pasted:
        pasted.write(group.text)
        pasted.flush()
        findings = run_clang_tidy(pasted.name, "--", *sources[0].flags, "-Wno-shadow")
        findings = group.original(findings, pasted.name)
    places = set(re.findall(r"^([^:\n]+):\d+:\d+: (?:error|warning): ", findings, flags=re.MULTILINE))
    found = [source for source in sources if str(source.path) in places]
    if "[clang-diagnostic-error" in findings:
        # Such as a second constant of the same name: those that don't compile after the others are read without them.
        apart = found if 0 < len(found) < len(sources) else sources[: len(sources) // 2]
        return findings_in([source for source in sources if source not in apart]) + findings_in(apart)
    if len(places) > len(found):
        return findings
    return "".join(findings_in([source]) for source in found)


def lint(due: dict[Source, pathlib.Path]) -> str:
    """The findings; none leaves the stamps."""
    findings = findings_in(list(due))
    if not findings:
        for stamp in due.values():
            stamp.touch()
    return findings


def groups_of(due: dict[Source, pathlib.Path]) -> list[dict[Source, pathlib.Path]]:
    """Sources that may be read together: compiled alike, no two constants of one name. The largest groups first."""
    groups: list[dict[Source, pathlib.Path]] = []
    taken: list[set[str]] = []
    for source, stamp in due.items():
        names = set(CONSTANT.findall(source.path.read_text(encoding="utf-8")))
        for group, others in zip(groups, taken):
            if len(group) < GROUP_SIZE and next(iter(group)).flags == source.flags and not names & others:
                break
        else:
            group, others = {}, set()
            groups.append(group)
            taken.append(others)
        group[source] = stamp
        others |= names
    return sorted(groups, key=len, reverse=True)


def main() -> int:
    options = parse_arguments()
    STAMPS.mkdir(parents=True, exist_ok=True)
    tool = subprocess.run([CLANG_TIDY, "--version"], check=True, capture_output=True, text=True).stdout
    current: set[pathlib.Path] = set()
    due: dict[Source, pathlib.Path] = {}
    for build in (folder.resolve() for folder in options.builds):
        dependencies = dependencies_of(build)
        for source in sources_of(build, options.only):
            if source.output not in dependencies:
                sys.exit(f"{source.path} is not built in {build}: build first.")
            if source.path in current:
                continue
            stamp = stamp_of(source, dependencies[source.output], tool)
            current.add(source.path)
            if not stamp.exists():
                due[source] = stamp
    if not current:
        sys.exit("No source to read: wrong build folder?")
    with concurrent.futures.ThreadPoolExecutor(len(os.sched_getaffinity(0))) as pool:
        findings = "".join(pool.map(lint, groups_of(due)))
    print(findings, end="")
    print(f"clang-tidy: {len(current)} sources, {len(due)} read anew, {'with' if findings else 'no'} findings")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
