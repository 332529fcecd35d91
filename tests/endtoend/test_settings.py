"""Settings that are changed by hand, or by another program, while the program runs."""

from __future__ import annotations

import json
import os
import shutil
import statistics
import unittest

from lab import Behavior, Lab

from .concurrently import ConcurrentTestCase
from .waiting import eventually
from .watch import PATIENCE_SECONDS, Home, Watch, new_home, settings

lab: Lab


def setUpModule() -> None:
    global lab
    lab = Lab()
    unittest.addModuleCleanup(lab.close)


def pings(address: str) -> str:
    """The text of a settings file."""
    return json.dumps({"Hostname": address})


def replace_by_rename(home: Home, text: str) -> None:
    draft = home.settings_file.with_suffix(".draft")
    draft.write_text(text, encoding="utf-8")
    os.replace(draft, home.settings_file)


def move_aside_and_write(home: Home, text: str) -> None:
    home.settings_file.rename(home.settings_file.with_suffix(".json~"))
    home.write_settings(text)


def make_folder_anew(home: Home, text: str) -> None:
    shutil.rmtree(home.settings_file.parent)
    home.write_settings(text)


class AHandEdit(ConcurrentTestCase):
    def wait_for_host(self, watch: Watch, address: str) -> dict[str, object]:
        return watch.wait_for(
            lambda now: now["host"] == now["resolvedAddress"] == address and now["session"]["replied"] >= 1,
            4,
            f"pinging {address}",
        )

    def test_a_new_host_is_pinged_however_the_file_is_written(self) -> None:
        ways = (Home.write_settings, replace_by_rename, move_aside_and_write, make_folder_anew)
        for number, way in enumerate(ways):
            first, second = f"10.77.0.{10 + 2 * number}", f"10.77.0.{11 + 2 * number}"
            lab.behave(first, Behavior(delay_ms=5))
            lab.behave(second, Behavior(delay_ms=5))
            with new_home() as home:
                home.write_settings(pings(first))
                with Watch(home) as watch:
                    self.wait_for_host(watch, first)

                    way(home, pings(second))

                    now = self.wait_for_host(watch, second)
                    # The laboratory may be behind.
                    eventually(
                        lambda now=now, second=second: len(lab.requests(second)) >= now["session"]["sent"],
                        PATIENCE_SECONDS,
                        way.__name__,
                    )
                    self.assertEqual(home.stats()[first]["sent"], len(lab.requests(first)), way.__name__)
                    self.assertEqual(watch.finish(), 0)
                    self.assertEqual(watch.errors(), "", way.__name__)

    def test_a_file_that_was_not_there_at_the_start_is_taken_over(self) -> None:
        lab.behave("10.77.0.30", Behavior(delay_ms=5))
        with new_home() as home, Watch(home) as watch:
            watch.wait_for_lines(1)

            home.write_settings(pings("10.77.0.30"))

            self.wait_for_host(watch, "10.77.0.30")

    def test_a_new_interval_is_kept_to(self) -> None:
        address = "10.77.0.31"
        lab.behave(address, Behavior(delay_ms=5))
        with new_home() as home:
            home.write_settings(json.dumps({"Hostname": address, "PingInterval": 60}))
            with Watch(home) as watch:
                self.wait_for_host(watch, address)

                home.write_settings(json.dumps({"Hostname": address, "PingInterval": 0.01}))

                watch.wait_for(lambda now: now["session"]["replied"] >= 6, 7, "six replies")
                times = [request.at for request in lab.requests(address)][1:6]
                gaps = [later - earlier for earlier, later in zip(times, times[1:])]
                self.assertEqual(round(statistics.median(gaps)), 1)

    def test_a_broken_file_changes_nothing_until_it_is_mended(self) -> None:
        lab.behave("10.77.0.32", Behavior(delay_ms=5))
        lab.behave("10.77.0.33", Behavior(delay_ms=5))
        with new_home() as home:
            home.write_settings(pings("10.77.0.32"))
            with Watch(home) as watch:
                self.wait_for_host(watch, "10.77.0.32")

                home.write_settings('{"Hostname": "10.77.0.33"')
                later = len(watch.lines) + 2
                self.assertEqual(
                    {line.values["host"] for line in watch.wait_for_lines(later)}, {"10.77.0.32"}
                )
                home.write_settings(pings("10.77.0.33"))

                self.wait_for_host(watch, "10.77.0.33")

    def test_a_mistake_is_told_until_it_is_mended(self) -> None:
        address = "10.77.0.34"
        with new_home() as home:
            home.write_settings(json.dumps({"Hostname": address, "PingTimeout": -3}))
            with Watch(home) as watch:
                told = watch.wait_for(lambda now: now["notices"], 4, "a notice")["notices"]
                self.assertEqual(
                    told,
                    [f"{home.settings_file}, line 1: PingTimeout must be a number of seconds, 0.01 to 3600, "
                     "not -3; ignored"])  # fmt: skip
                self.assertEqual(watch.errors(), f"tarnwick-watch: {told[0]}\n")

                home.write_settings(pings(address))

                watch.wait_for(lambda now: not now["notices"], 4, "no notice")

    def test_what_the_command_line_gave_stays_above(self) -> None:
        lab.behave("10.77.0.34", Behavior(delay_ms=5))
        with new_home() as home, Watch(home, *settings(PacketLossTextMode="always"), "10.77.0.34") as watch:
            self.wait_for_host(watch, "10.77.0.34")

            home.write_settings(json.dumps({"Hostname": "10.77.0.35", "PingTimeout": 2, "PingInterval": 60}))
            later = len(watch.lines) + 3
            watch.wait_for_lines(later)

            self.assertEqual(watch.latest["host"], "10.77.0.34")
            sent = watch.latest["session"]["sent"]
            watch.wait_for_lines(later + 3)
            self.assertEqual(watch.latest["session"]["sent"], sent)


if __name__ == "__main__":
    unittest.main()
