"""Where settings come from: the command line, the stored file, older forms, and files that can't be read."""

from __future__ import annotations

import json
import unittest

from lab import Behavior, Lab

from .concurrently import ConcurrentTestCase
from .watch import Watch, new_home, settings

DEFAULT_HOST = "1.1.1.1"

lab: Lab


def setUpModule() -> None:
    global lab
    lab = Lab()
    unittest.addModuleCleanup(lab.close)


class Settings(ConcurrentTestCase):
    def test_the_default_host_is_pinged_when_nothing_is_set(self) -> None:
        lab.behave(DEFAULT_HOST, Behavior(delay_ms=10))
        with new_home() as home, Watch(home) as watch:
            now = watch.wait_for(lambda now: now["session"]["replied"] >= 1, 2, "a reply")
            self.assertEqual((now["host"], now["resolvedAddress"]), (DEFAULT_HOST, DEFAULT_HOST))

    def test_every_key_is_taken_for_this_run_and_not_written(self) -> None:
        lab.behave("10.77.0.50", Behavior(delay_ms=33))
        everything = settings(
            Hostname="10.77.0.50",
            PingTimeout=2.5,
            PingInterval=2,
            SlowPingLowThreshold="1e2",
            ShowIcon="true",
            ShowText="false",
            ShowNotifications="true",
            PacketLossTextMode="always",
            ShowPacketLossText="false",
        )
        for stored in (None, '{\n "Hostname":"10.77.0.51", "Unknown": [1]}\n'):
            with new_home() as home:
                if stored:
                    home.write_settings(stored)
                with Watch(home, *everything) as watch:
                    now = watch.wait_for(lambda now: now["session"]["replied"] >= 1, 3, "a reply")
                    self.assertEqual(now["host"], "10.77.0.50")
                    self.assertRegex(now["menuTitle"], r"^\d+ms \(0%\)$")
                    self.assertEqual(watch.finish(), 0)
                if stored:
                    self.assertEqual(home.settings_file.read_text(), stored)
                else:
                    self.assertFalse(home.settings_file.exists())

    def test_a_host_argument_counts_for_this_run_only_and_wins(self) -> None:
        stored = '{"Hostname": "10.77.0.52"}'
        with new_home() as home:
            home.write_settings(stored)
            with Watch(home, *settings(Hostname="10.77.0.53"), "10.77.0.54") as watch:
                watch.wait_for_lines(1)
                self.assertEqual(watch.latest["host"], "10.77.0.54")
                self.assertEqual(watch.finish(), 0)
            self.assertEqual(home.settings_file.read_text(), stored)
            with Watch(home) as watch:
                watch.wait_for_lines(1)
                self.assertEqual(watch.latest["host"], "10.77.0.52")

    def test_stored_settings_are_used(self) -> None:
        lab.behave("10.77.0.55", Behavior(delay_ms=550))
        with new_home() as home:
            home.write_settings(
                json.dumps({"Hostname": "10.77.0.55", "SlowPingLowThreshold": 800, "PacketLossTextMode": "always"})
            )
            with Watch(home) as watch:
                now = watch.wait_for(lambda now: now["session"]["replied"] >= 2, 4, "two replies")
                self.assertEqual(now["qualityTitle"], "Excellent")
                self.assertEqual(now["menuTitle"], f"{now['latestPingMs'] / 1000:.1f}s (0%)")

    def test_the_older_loss_setting_is_understood(self) -> None:
        for stored, shown in ((True, True), (False, False), (1, False)):
            lab.behave("10.77.0.56", Behavior(delay_ms=10))
            with new_home() as home:
                home.write_settings(json.dumps({"Hostname": "10.77.0.56", "ShowPacketLossText": stored}))
                with Watch(home) as watch:
                    now = watch.wait_for(lambda now: now["session"]["replied"] >= 1, 2, "a reply")
                    self.assertEqual(now["menuTitle"].endswith("(0%)"), shown, stored)

    def test_an_unparsable_file_means_defaults_and_is_not_touched(self) -> None:
        for text in ("", '{"Hostname": "10.77.0.5', "[]", "null", "\udcff\0".encode("utf-8", "surrogateescape")):
            with new_home() as home:
                home.write_settings("")
                content = text if isinstance(text, bytes) else text.encode()
                home.settings_file.write_bytes(content)
                with Watch(home) as watch:
                    watch.wait_for_lines(1)
                    self.assertEqual(watch.latest["host"], DEFAULT_HOST, text)
                    self.assertEqual(watch.finish(), 0)
                self.assertEqual(home.settings_file.read_bytes(), content)
                self.assertEqual([file for file in home.files() if file.startswith("config")],
                                 ["config/Tarnwick/settings.json"])  # fmt: skip

    def test_a_file_that_cannot_be_read_means_defaults(self) -> None:
        with new_home() as home:
            home.settings_file.mkdir(parents=True)
            with Watch(home) as watch:
                watch.wait_for_lines(1)
                self.assertEqual(watch.latest["host"], DEFAULT_HOST)
                self.assertEqual(watch.finish(), 0)

    def test_one_wrong_type_costs_only_its_own_setting(self) -> None:
        lab.behave("10.77.0.57", Behavior(delay_ms=13))
        with new_home() as home:
            home.write_settings('{"Hostname": "10.77.0.57", "PingTimeout": true, "PacketLossTextMode": 3}')
            with Watch(home) as watch:
                now = watch.wait_for(lambda now: now["status"] == "up", 2, "up")
                self.assertEqual(now["host"], "10.77.0.57")
                self.assertRegex(now["menuTitle"], r"^\d+ms$")


if __name__ == "__main__":
    unittest.main()
