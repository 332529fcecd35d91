"""What packaging/release makes. The builders of the packages and of the bundle are stand-ins, all else is real."""

from __future__ import annotations

import hashlib
import json
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

from endtoend.built import ROOT
from update.maker import Key

PATIENCE = 120
BUILD = pathlib.Path(os.environ.get("TARNWICK_BUILD") or ROOT / "build/debug")
READER = BUILD / "tests/core/Update/tarnwick-read-release"
VERSION, DAY = "3.2.1", "2026-11-20"
ARCHIVE = f"Tarnwick-{VERSION}-x86_64.tar.zst"
BILL = f"Tarnwick-{VERSION}-x86_64.spdx.json"
FEED = "https://one.example/tarnwick/feed.json"
TIME, LATER = "2026-11-23T04:00:00Z", "2026-12-20T04:00:00Z"
METAINFO = "packaging/org.tarnwick.tarnwick.metainfo.xml.in"
FILES = {
    "CMakeLists.txt": f"cmake_minimum_required(VERSION 3.25)\nproject(Tarnwick VERSION {VERSION} LANGUAGES CXX)\n",
    "CHANGELOG.md": f"# Changelog\n\nOf users.\n\n## {VERSION} - {DAY}\n\n### Changed\n\n- One é.\n\n## 3.2.0 - 2026-01-01\n\n- Old.\n",
    "packaging/debian/changelog": f"tarnwick ({VERSION}) unstable; urgency=medium\n\n  * One.\n\n"
    " -- One <one@one.example>  Fri, 20 Nov 2026 10:00:00 +0000\n",
    METAINFO: f'<releases><release version="@PROJECT_VERSION@" date="{DAY}"/><release version="3.2.0" date="2026-01-01"/></releases>\n',
}
DEB = f"""#!/bin/sh
mkdir -p "$1"
echo package >"$1/tarnwick_{VERSION}~deb12_amd64.deb"
date +%N >"$1/tarnwick_{VERSION}~deb12_amd64.buildinfo"
"""
BUNDLE = f"""#!/bin/bash
folder=$1
shift
app=$(mktemp -d)/Tarnwick.app
documents="$app/share/doc/tarnwick"
mkdir -p "$app/bin" "$app/lib" "$documents/libraries"
echo '{{"version": "{VERSION}"}}' >"$app/Information.json"
printf '%s\\n' "$@" >"$app/bin/tarnwick"
ln -s bin/tarnwick "$app/tarnwick"
echo 'one library' >"$app/lib/libone++.so.1"
echo 'lib/libone++.so.1 libone++1' >"$documents/files"
printf 'Copyright (c) 2026 Someone\\n' >"$documents/LICENSE"
printf '%s\\n' 'libone++1 1:2.0+dfsg-1, from the source one 2.0+dfsg-1' \\
    'two-dev 3-1, from the source two 3-1' >"$documents/libraries/packages"
printf 'One licence \\351\\n' >"$documents/libraries/libone++1"
echo 'Another licence' >"$documents/libraries/two-dev"
mkdir -p "$folder"
tar -C "${{app%/*}}" --sort=name --mtime=@0 --owner=0 --group=0 -cf - Tarnwick.app | zstd -q -f -o "$folder/{ARCHIVE}"
rm -r "${{app%/*}}"
echo "$folder/{ARCHIVE}"
"""


class Sources:
    """A clone with what a release is made of."""

    def __init__(self, folder: pathlib.Path) -> None:
        self.folder = folder
        shutil.copytree(ROOT / "scripts", folder / "scripts")
        shutil.copytree(ROOT / "packaging", folder / "packaging")
        shutil.copytree(ROOT / "cmake", folder / "cmake")
        shutil.copy2(ROOT / ".gitignore", folder)
        for name, text in FILES.items():
            (folder / name).write_text(text, encoding="utf-8")
        for name, script in (("deb", DEB), ("bundle", BUNDLE)):
            (folder / "packaging" / name).write_text(script, encoding="utf-8")
        self._git("init", "--quiet")
        self.commit()

    def change(self, name: str, old: str, new: str) -> None:
        file = self.folder / name
        text = file.read_text(encoding="utf-8")
        assert old in text
        file.write_text(text.replace(old, new, 1), encoding="utf-8")

    def commit(self) -> None:
        self._git("add", "--all")
        self._git("-c", "user.name=one", "-c", "user.email=one@one.example", "commit", "--quiet", "--message=One")

    def _git(self, *arguments: str) -> None:
        environment = os.environ | {"GIT_AUTHOR_DATE": "@1795000000 +0000", "GIT_COMMITTER_DATE": "@1795000000 +0000"}
        subprocess.run(["git", "-C", self.folder, *arguments], check=True, timeout=PATIENCE, env=environment)


class ReleaseCase(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.sources = Sources(self.folder / "clone")
        self.key, self.stranger = (Key.make(self.folder, name) for name in ("one", "stranger"))
        self.made = self.folder / "made"

    def run_script(self, name: str, *arguments: str | pathlib.Path, typed: str = "") -> subprocess.CompletedProcess[str]:
        """Without a terminal, even where something is typed."""
        return subprocess.run(
            [self.sources.folder / "packaging" / name, *arguments],
            input=typed, capture_output=True, text=True, timeout=PATIENCE, start_new_session=True,
        )  # fmt: skip

    def release(self, *options: str | pathlib.Path) -> subprocess.CompletedProcess[str]:
        return self.run_script("release", self.made, *options)

    @property
    def signing(self) -> list[str | pathlib.Path]:
        return ["--feed", FEED, "--public-key", self.key.public, "--secret-key", self.key.secret, "--signed-at", TIME]

    def succeeded(self, done: subprocess.CompletedProcess[str]) -> str:
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stderr

    def refused(self, done: subprocess.CompletedProcess[str]) -> str:
        self.assertNotEqual(done.returncode, 0)
        return done.stderr

    def files(self) -> dict[str, bytes]:
        return {file.name: file.read_bytes() for file in self.made.iterdir()} if self.made.exists() else {}

    def read_as_programs_do(self) -> str:
        done = subprocess.run([READER, self.made, self.key.public], capture_output=True, text=True, timeout=PATIENCE)
        return self.succeeded(done) or done.stdout


class MadeRelease(ReleaseCase):
    def test_it_has_what_users_get(self) -> None:
        self.succeeded(self.release(*self.signing))

        package = f"tarnwick_{VERSION}~deb12_amd64.deb"
        signed = {ARCHIVE, "SHA256SUMS", "feed.json"}
        self.assertEqual(set(self.files()), {package, BILL, *signed, *(f"{name}.minisig" for name in signed)})

    def test_programs_read_it_and_trust_it(self) -> None:
        self.succeeded(self.release(*self.signing))

        self.assertEqual(
            self.read_as_programs_do(),
            f"signed at 1795406400\n{VERSION} stable 6.1\n### Changed\n\n- One é.\nx86_64 https://one.example/tarnwick/{ARCHIVE}\n",
        )

    def test_it_is_the_same_bytes_made_anew_elsewhere(self) -> None:
        self.succeeded(self.release(*self.signing))
        first = self.files()
        self.sources = Sources(self.folder / "another clone")
        self.made = self.folder / "made elsewhere"

        self.succeeded(self.release(*self.signing))

        self.assertEqual(self.files(), first)

    def test_the_bundle_is_told_where_its_feed_is_and_which_keys_sign(self) -> None:
        self.succeeded(self.release(*self.signing, "--public-key", self.stranger.public))

        program = subprocess.run(
            ["tar", "-xOf", self.made / ARCHIVE, "Tarnwick.app/bin/tarnwick"], capture_output=True, text=True, check=True
        )
        keys = f"{self.key.public};{self.stranger.public}"
        self.assertEqual(program.stdout.split(), ["-D", f"TARNWICK_FEED_ADDRESS={FEED}", "-D", f"TARNWICK_PUBLIC_KEYS={keys}"])

    def test_its_sums_are_right_and_name_packages_of_another_debian(self) -> None:
        other = f"tarnwick_{VERSION}~deb13_amd64.deb"
        self.made.mkdir()
        (self.made / other).write_text("another package", encoding="ascii")
        (self.made / "tarnwick_3.2.0~deb12_amd64.deb").write_text("an old one", encoding="ascii")

        self.succeeded(self.release(*self.signing))

        done = subprocess.run(["sha256sum", "--check", "SHA256SUMS"], cwd=self.made, capture_output=True, text=True, check=True)
        named = {line.split(":")[0] for line in done.stdout.splitlines()}
        self.assertEqual(named, {other, other.replace("13", "12"), ARCHIVE, BILL})

    def test_without_a_secret_key_it_says_how_to_sign(self) -> None:
        told = self.succeeded(self.release(*self.signing[:4], "--signed-at", TIME))

        self.assertNotIn(".minisig", " ".join(self.files()))
        commands = re.findall(r"minisign -S .*", told)
        self.assertEqual(len(commands), 3)
        for command in commands:
            by_hand = command.replace("SECRET-KEY", str(self.key.secret))
            subprocess.run(["bash", "-c", by_hand], cwd=self.made, check=True, timeout=PATIENCE, capture_output=True)
        self.assertIn(ARCHIVE, self.read_as_programs_do())

    def test_without_an_address_it_has_no_feed(self) -> None:
        self.succeeded(self.release("--secret-key", self.key.secret))

        self.assertIn(f"{ARCHIVE}.minisig", self.files())
        self.assertNotIn("feed.json", self.files())


class RefusedRelease(ReleaseCase):
    def test_a_key_that_no_bundle_trusts_does_not_sign(self) -> None:
        options = [self.stranger.secret if option == self.key.secret else option for option in self.signing]

        self.assertIn("None of the public keys", self.refused(self.release(*options)))
        self.assertNotIn(".minisig", " ".join(self.files()))
        self.assertNotIn("feed.json", self.files())

    def test_a_password_is_not_asked_for_without_a_terminal(self) -> None:
        password = "one\none\n"
        subprocess.run(
            ["minisign", "-G", "-f", "-p", self.folder / "one.pub", "-s", self.key.secret],
            input=password, text=True, check=True, capture_output=True, timeout=PATIENCE,
        )  # fmt: skip

        self.assertIn("could not be signed", self.refused(self.run_script("release", self.made, *self.signing, typed=password)))

    def test_files_that_differ_in_the_version_or_its_day_are_named(self) -> None:
        changes = {
            "CMakeLists.txt": (VERSION, "3.3.0"),
            "CHANGELOG.md": (DAY, "2026-11-21"),
            "packaging/debian/changelog": (VERSION, "3.2.0"),
            METAINFO: (DAY, "2026-11-19"),
        }
        for name, (old, new) in changes.items():
            with self.subTest(name):
                self.sources.change(name, old, new)
                self.sources.commit()

                told = self.refused(self.release(*self.signing))

                self.assertRegex(told, rf"{re.escape(name)}: .*{re.escape(new)}")
                self.assertEqual(self.files(), {})
                self.sources.change(name, new, old)

    def test_what_has_no_version_yet_is_not_released(self) -> None:
        self.sources.change("CHANGELOG.md", f"## {VERSION} - {DAY}", f"## Unreleased\n\n- New.\n\n## {VERSION} - {DAY}")
        self.sources.commit()

        self.assertIn("Unreleased", self.refused(self.release(*self.signing)))

    def test_what_is_not_committed_is_named(self) -> None:
        (self.sources.folder / "forgotten.txt").touch()

        self.assertIn("forgotten.txt", self.refused(self.release(*self.signing)))

    def test_options_that_do_not_fit_each_other_are_refused_at_once(self) -> None:
        key = ["--public-key", self.key.public]
        for options in (
            ["--feed", FEED],
            key,
            ["--feed", FEED.replace("https", "http"), *key],
            ["--feed", FEED.replace("feed", "news"), *key],
            ["--feed", FEED.replace("https://", "https://me@"), *key],
            ["--feed", FEED, *key, "--public-key", self.stranger.public[:-1]],
            ["--signed-at", "yesterday"],
            ["--secret-key", "/no/such/key"],
            ["--unknown", "x"],
        ):
            with self.subTest(options):
                self.refused(self.release(*options))
                self.assertFalse(self.made.exists())


class RenewedFeed(ReleaseCase):
    def setUp(self) -> None:
        super().setUp()
        self.succeeded(self.release(*self.signing))
        self.before = self.files()

    def renew(self, time: str, key: Key) -> subprocess.CompletedProcess[str]:
        options = ("--secret-key", key.secret, "--public-key", self.key.public, "--signed-at", time)
        return self.run_script("renew", self.made, *options)

    def test_only_its_time_and_its_signature_change(self) -> None:
        self.succeeded(self.renew(LATER, self.key))

        after = self.files()
        changed = {name for name, content in after.items() if content != self.before.get(name)}
        self.assertEqual((set(after), changed), (set(self.before), {"feed.json", "feed.json.minisig"}))
        self.assertEqual(after["feed.json"].decode().replace(LATER, TIME), self.before["feed.json"].decode())
        self.assertIn(f"signed at 1797739200\n{VERSION} ", self.read_as_programs_do())

    def test_it_stays_as_it_is_when_it_is_not_renewed(self) -> None:
        for time, key in ((TIME, self.key), ("2026-11-01T04:00:00Z", self.key), (LATER, self.stranger)):
            with self.subTest(time):
                self.refused(self.renew(time, key))
                self.assertEqual(self.files(), self.before)


class Bill(ReleaseCase):
    def setUp(self) -> None:
        super().setUp()
        self.succeeded(self.release(*self.signing))
        self.bill = json.loads(self.files()[BILL])
        self.packages = {package["name"]: package for package in self.bill["packages"]}

    def related(self, identifier: str, kind: str) -> set[str]:
        return {
            relation["relatedSpdxElement"]
            for relation in self.bill["relationships"]
            if (relation["spdxElementId"], relation["relationshipType"]) == (identifier, kind)
        }

    def test_it_describes_the_archive_at_the_commits_time(self) -> None:
        self.assertEqual((self.bill["spdxVersion"], self.bill["dataLicense"]), ("SPDX-2.3", "CC0-1.0"))
        self.assertEqual(self.bill["creationInfo"]["created"], "2026-11-18T11:06:40Z")
        self.assertEqual(self.related("SPDXRef-DOCUMENT", "DESCRIBES"), {"SPDXRef-Tarnwick"})
        product = self.packages["Tarnwick"]
        self.assertEqual((product["SPDXID"], product["versionInfo"]), ("SPDXRef-Tarnwick", VERSION))
        self.assertEqual(product["checksums"][0]["checksumValue"], hashlib.sha256(self.files()[ARCHIVE]).hexdigest())

    def test_it_names_each_file_once_and_whose_it_is(self) -> None:
        files = {file["fileName"]: file for file in self.bill["files"]}
        library = files["./lib/libone++.so.1"]

        self.assertEqual(len(files), len(self.bill["files"]))
        self.assertNotIn("./tarnwick", files)
        self.assertEqual(self.related(self.packages["libone++1"]["SPDXID"], "CONTAINS"), {library["SPDXID"]})
        own = self.related("SPDXRef-Tarnwick", "CONTAINS")
        self.assertEqual(own, {file["SPDXID"] for file in files.values() if file != library} | {self.packages["libone++1"]["SPDXID"]})
        self.assertIn({"algorithm": "SHA256", "checksumValue": hashlib.sha256(b"one library\n").hexdigest()}, library["checksums"])

    def test_it_names_each_package_with_its_version_source_and_licence(self) -> None:
        package = self.packages["libone++1"]
        (licence,) = [text for text in self.bill["hasExtractedLicensingInfos"] if text["licenseId"] == package["licenseDeclared"]]

        self.assertEqual(package["versionInfo"], "1:2.0+dfsg-1")
        self.assertIn("one 2.0+dfsg-1", package["sourceInfo"])
        self.assertIn("One licence", licence["extractedText"])
        digest = hashlib.sha1(b"one library\n").hexdigest()
        code = hashlib.sha1(digest.encode()).hexdigest()
        self.assertEqual(package["packageVerificationCode"]["packageVerificationCodeValue"], code)

    def test_it_names_what_is_compiled_into_the_programs(self) -> None:
        self.assertEqual(self.related("SPDXRef-Tarnwick", "STATIC_LINK"), {self.packages["two-dev"]["SPDXID"]})
        self.assertFalse(self.packages["two-dev"]["filesAnalyzed"])

    def test_its_identifiers_are_valid_and_all_known(self) -> None:
        elements = [self.bill, *self.bill["packages"], *self.bill["files"]]
        known = [element["SPDXID"] for element in elements]

        self.assertEqual(len(known), len(set(known)))
        for identifier in known:
            self.assertRegex(identifier, r"\ASPDXRef-[A-Za-z0-9.-]+\Z")
        for relation in self.bill["relationships"]:
            self.assertLessEqual({relation["spdxElementId"], relation["relatedSpdxElement"]}, set(known))


if __name__ == "__main__":
    unittest.main()
