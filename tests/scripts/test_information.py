"""What a bundle tells its programs about updates."""

from __future__ import annotations

import json
import pathlib
import subprocess
import tempfile
import unittest

from endtoend.built import ROOT

PATIENCE = 300
CHECK = ROOT / "cmake/TarnwickUpdateSource.cmake"
FEED = "TARNWICK_FEED_ADDRESS=https://one.example:8443/feed.json"
KEY, SECOND_KEY = "RW" + 54 * "A", "RW+/" + 52 * "z"
KEYS = f"TARNWICK_PUBLIC_KEYS={KEY};{SECOND_KEY}"


class Information(unittest.TestCase):
    def configure(self, *settings: str) -> subprocess.CompletedProcess[str]:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.file = pathlib.Path(folder.name) / "Information.json"
        usual = ("TARNWICK_TESTS=OFF", "TARNWICK_DESKTOP=OFF")
        options = [word for setting in (*usual, *settings) for word in ("-D", setting)]
        return subprocess.run(
            ["cmake", "-G", "Ninja", "-S", ROOT, "-B", folder.name, *options], capture_output=True, text=True, timeout=PATIENCE
        )

    def check(self, *settings: str) -> subprocess.CompletedProcess[str]:
        """The settings alone, which the configuration reads by the same file."""
        usual = ("TARNWICK_FEED_ADDRESS=", "TARNWICK_PUBLIC_KEYS=", "TARNWICK_CHECK_INTERVAL=86400")
        options = [word for setting in (*usual, *settings) for word in ("-D", setting)]
        return subprocess.run(["cmake", *options, "-P", CHECK], capture_output=True, text=True, timeout=PATIENCE)

    def test_it_names_the_feed_and_every_key(self) -> None:
        self.assertEqual(self.configure(FEED, KEYS).returncode, 0)

        information = json.loads(self.file.read_text(encoding="utf-8"))
        self.assertRegex(information.pop("version"), r"^\d+\.\d+\.\d+$")
        self.assertEqual(
            information,
            {
                "channel": "stable",
                "checkInterval": 86400,
                "feedAddress": "https://one.example:8443/feed.json",
                "publicKeys": [KEY, SECOND_KEY],
            },
        )

    def test_without_an_address_it_names_the_version_alone(self) -> None:
        self.assertEqual(self.configure().returncode, 0)

        self.assertEqual(set(json.loads(self.file.read_text(encoding="utf-8"))), {"version", "channel"})

    def test_what_could_not_update_is_not_configured(self) -> None:
        self.assertIn("TARNWICK_PUBLIC_KEYS", self.configure(FEED).stderr)

    def test_what_could_not_update_is_refused(self) -> None:
        for settings in (
            [FEED],
            [KEYS],
            [FEED.replace("https", "http"), KEYS],
            [FEED.replace("one", "me@one"), KEYS],
            [f"{FEED}?two", KEYS],
            [f"{FEED}#two", KEYS],
            [f"{FEED}/", KEYS],
            [FEED.replace("feed", "fééd"), KEYS],
            [FEED, f"{KEYS[:-1]}"],
            [FEED, f"{KEYS};{KEY}A"],
            [FEED, f"{KEYS};{KEY[:-1]}="],
            [FEED, KEYS, "TARNWICK_CHECK_INTERVAL=3599"],
            [FEED, KEYS, "TARNWICK_CHECK_INTERVAL=2592001"],
        ):
            with self.subTest(settings):
                done = self.check(*settings)

                self.assertNotEqual(done.returncode, 0)
                self.assertIn("TARNWICK_", done.stderr)

    def test_what_can_update_is_taken(self) -> None:
        for settings in ([], [FEED, KEYS], [FEED.replace("one.example", "[::1]"), KEYS], [FEED, KEYS, "TARNWICK_CHECK_INTERVAL=3600"]):
            with self.subTest(settings):
                self.assertEqual(self.check(*settings).returncode, 0)


if __name__ == "__main__":
    unittest.main()
