"""The Debian packages on a bare system: `scripts/test packages` builds and tries them."""

from __future__ import annotations

import json
import pathlib
import subprocess
import tempfile
import unittest

from endtoend.hardening import lacks_of_hardening

from .built import BUILT, INSTALL, PackagesCase, package
from .system import PATIENCE

AS_SOMEONE = "setpriv --reuid=someone --regid=someone --init-groups env HOME=/home/someone"
WATCH = f"{AS_SOMEONE} tarnwick-watch --json --for 3 127.0.0.1"


class Packages(PackagesCase):
    def test_lintian_finds_nothing(self) -> None:
        done = subprocess.run(
            ["lintian", "--pedantic", "--fail-on", "error,warning", *BUILT.glob("*.changes")],
            capture_output=True, text=True, timeout=PATIENCE, check=False,
        )  # fmt: skip

        self.assertEqual((done.returncode, done.stdout), (0, ""))

    def test_mistakes_in_memory_are_hard_to_use(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            for name in ("tarnwick", "tarnwick-watch"):
                subprocess.run(["dpkg-deb", "--extract", package(name), folder], check=True, timeout=PATIENCE)
                with self.subTest(name):
                    self.assertEqual(lacks_of_hardening(pathlib.Path(folder) / "usr/bin" / name), [])

    def test_a_user_who_never_pinged_pings_at_once_and_without_a_toolkit(self) -> None:
        system = self.system()
        system.install_needs("tarnwick-watch.deb")

        output = system.run(
            f"""
            [ "$(tr -s '[:space:]' ' ' </proc/sys/net/ipv4/ping_group_range)" = '1 0 ' ]
            {INSTALL} /packages/tarnwick-common.deb /packages/tarnwick-watch.deb >&2
            ! dpkg-query --show '*qt6*' >&2
            useradd --create-home someone
            {WATCH}
            """
        )

        last = json.loads(output.splitlines()[-1])
        self.assertEqual((last["status"], last["notices"]), ("up", []))

    def range_after_install(self, prepare: str) -> list[str]:
        return (
            self.system()
            .run(
                f"""
                mkdir -p /etc/sysctl.d
                {prepare}
                {INSTALL} /packages/tarnwick-common.deb >&2
                cat /proc/sys/net/ipv4/ping_group_range
                """
            )
            .split()
        )

    def test_an_administrators_choice_stays(self) -> None:
        self.assertEqual(self.range_after_install("echo '7 8' >/proc/sys/net/ipv4/ping_group_range"), ["7", "8"])

    def test_an_administrators_choice_for_each_boot_stays(self) -> None:
        for prepare in (
            "echo 'net.ipv4.ping_group_range = 1 0' >/etc/sysctl.d/local.conf",
            "ln -s /dev/null /etc/sysctl.d/60-tarnwick-ping.conf",
        ):
            with self.subTest(prepare):
                self.assertEqual(self.range_after_install(prepare), ["1", "0"])

    def test_it_goes_on_through_an_upgrade_and_tells_of_it(self) -> None:
        system = self.system()
        system.install_needs("tarnwick-watch.deb")

        output = system.run(
            f"""
            {INSTALL} /packages/older/tarnwick-common.deb /packages/older/tarnwick-watch.deb >&2
            useradd --create-home someone
            mkfifo /tmp/lines
            {AS_SOMEONE} tarnwick-watch --json 127.0.0.1 >/tmp/lines &
            exec 3</tmp/lines
            read -r first <&3
            {INSTALL} /packages/tarnwick-common.deb /packages/tarnwick-watch.deb >&2
            while read -r -t 60 line <&3; do
                case $line in *'Restart to use the new version'*) printf '%s\\n' "$first" "$line"; break ;; esac
            done
            kill %1
            """
        )

        first, line = map(json.loads, output.splitlines())
        self.assertEqual(first["notices"], [])
        self.assertEqual((line["status"], line["notices"]), ("up", ["Restart to use the new version."]))
        self.assertGreater(line["session"]["sent"], first["session"]["sent"])

    def test_what_goes_leaves_the_users_files_alone(self) -> None:
        system = self.system()
        system.install_needs("tarnwick-watch.deb", "tarnwick.deb")

        output = system.run(
            f"""
            {INSTALL} /packages/tarnwick-common.deb /packages/tarnwick-watch.deb /packages/tarnwick.deb >&2
            useradd --create-home someone
            {WATCH} >/dev/null
            apt-get remove -qy tarnwick-watch tarnwick tarnwick-common >&2
            apt-get purge -qy tarnwick-watch tarnwick tarnwick-common >&2
            find / -xdev -path /proc -prune -o -path /sys -prune -o -path /packages -prune -o -iname '*tarnwick*' -print
            """
        )

        kept = {"/home/someone/.local/share/Tarnwick", "/home/someone/.local/state/Tarnwick"}
        ours = {line for line in output.split() if not line.startswith("/var/")}
        self.assertEqual(ours, kept)

    def test_the_desktop_program_starts_with_what_it_depends_on(self) -> None:
        system = self.system()
        system.install_needs("tarnwick.deb")

        output = system.run(
            f"""
            {INSTALL} /packages/tarnwick-common.deb /packages/tarnwick.deb >&2
            useradd --create-home someone
            {AS_SOMEONE} tarnwick --version
            {AS_SOMEONE} QT_QPA_PLATFORM=offscreen timeout --signal=TERM 3 tarnwick --set Hostname=127.0.0.1 >&2 || [ $? -eq 124 ]
            cat /home/someone/.local/share/Tarnwick/stats.json
            """
        )

        version, _, stats = output.partition("\n")
        self.assertRegex(version, r"^tarnwick \d")
        self.assertGreaterEqual(json.loads(stats)["127.0.0.1"]["replied"], 1)


if __name__ == "__main__":
    unittest.main()
