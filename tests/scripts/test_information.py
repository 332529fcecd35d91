"""What a bundle tells its programs about updates."""

from __future__ import annotations

import json
import pathlib
import subprocess
import tempfile
import unittest

from endtoend.built import ROOT

PATIENCE = 300
FEED = "TARNWICK_FEED_ADDRESS=https://one.example:8443/feed.json"
KEYS = "TARNWICK_PUBLIC_KEYS=RWfirst+/=;RWsecond"


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
                "publicKeys": ["RWfirst+/=", "RWsecond"],
            },
        )

    def test_without_an_address_it_names_the_version_alone(self) -> None:
        self.assertEqual(self.configure().returncode, 0)

        self.assertEqual(set(json.loads(self.file.read_text(encoding="utf-8"))), {"version", "channel"})

    def test_what_could_not_update_is_refused(self) -> None:
        for settings in ([FEED], [KEYS], [FEED.replace("https", "http"), KEYS]):
            with self.subTest(settings):
                done = self.configure(*settings)

                self.assertNotEqual(done.returncode, 0)
                self.assertIn("TARNWICK_", done.stderr)


if __name__ == "__main__":
    unittest.main()
