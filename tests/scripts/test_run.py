"""The scripts: `scripts/run` at a terminal, without one, with sudo and a password, without sudo, and as root.

Nothing is installed and the system's settings stay as they are: what the scripts call are stand-ins, and root has a
network and mounts of its own.
"""

from __future__ import annotations

import pathlib
import unittest

from endtoend.waiting import eventually
from scripts.clone import NOBODY, PASSWORD, PATIENCE_SECONDS, ROOT, Clone, Dialog

QUESTION = "Allow it, now and after each boot"
KEPT = "/etc/sysctl.d/60-tarnwick-ping.conf"
# A new network lets no group ping. The laboratory that these tests run in has mounts of its own.
OWN_NETWORK = ["/usr/bin/unshare", "--net", "--mount"]
# Shows what came of it, at the end.
SHOW = f"cat /proc/sys/net/ipv4/ping_group_range; cat {KEPT} 2>/dev/null || echo not kept"


class ScriptCase(unittest.TestCase):
    def clone(self, **traits: bool) -> Clone:
        clone = Clone(**traits)
        self.addCleanup(clone.close)
        return clone

    def as_user_in_own_network(self, clone: Clone, *command: str) -> list[str]:
        return [*OWN_NETWORK, *clone.as_user(*command)]

    def as_root_in_own_network(self, clone: Clone, before: str = "true") -> list[str]:
        run = " ".join(clone.script("run", "watch"))
        return [*OWN_NETWORK, "/bin/sh", "-c", f"mount -t tmpfs none /etc/sysctl.d && {before} && {run}; {SHOW}"]


class Installing(ScriptCase):
    def test_asks_for_the_password_at_a_terminal(self) -> None:
        clone = self.clone(installed=False)
        with Dialog(clone, clone.as_user(*clone.script("run", "watch", "--json"))) as dialog:
            dialog.expect("[sudo] password: ")
            dialog.type(f"{PASSWORD}\n")
            self.assertEqual(dialog.end(), 0, dialog.output)
            self.assertIn("started with: --json", dialog.output)
        self.assertIn("install -y --no-install-recommends cmake", clone.record("apt-get"))

    def test_a_wrong_password_ends_with_the_command(self) -> None:
        clone = self.clone(installed=False)
        with Dialog(clone, clone.as_user(*clone.script("run", "watch"))) as dialog:
            dialog.expect("[sudo] password: ")
            dialog.type("wrong\n")
            self.assertEqual(dialog.end(), 1)
            self.assertIn("By hand: sudo apt-get install", dialog.output)
        self.assertEqual(clone.record("apt-get"), "")

    def test_without_a_terminal_it_names_the_command(self) -> None:
        clone = self.clone(installed=False)
        result = clone.run(clone.as_user(*clone.script("run", "watch")))
        self.assertEqual(result.returncode, 1)
        self.assertIn("By hand: sudo apt-get install", result.stdout)
        self.assertEqual(clone.record("apt-get"), "")

    def test_without_sudo_it_names_su(self) -> None:
        clone = self.clone(installed=False, sudo=False)
        result = clone.run(clone.as_user(*clone.script("run", "watch")))
        self.assertEqual(result.returncode, 1)
        self.assertIn("By hand: su -c 'apt-get install", result.stdout)

    def test_what_it_wrote_for_itself_goes_with_ctrl_c(self) -> None:
        clone = self.clone(installed=False)
        pipe = clone.folder / "pipe"
        clone.run(["/bin/sh", "-c", f"/usr/bin/mkfifo {pipe}"])
        (clone.records / "ticket").touch()
        with Dialog(clone, clone.as_user(*clone.script("run", "watch")), APT_HANGS=str(pipe)) as dialog:
            eventually((clone.records / "hangs").exists, PATIENCE_SECONDS, "installing goes on")
            self.assertNotEqual(list(clone.temporary.iterdir()), [])
            dialog.type("\x03")
            self.assertNotEqual(dialog.end(), 0)
        self.assertEqual(list(clone.temporary.iterdir()), [])


class Help(ScriptCase):
    def test_is_answered_before_anything_is_installed(self) -> None:
        for script in ("run", "test", "on-debian"):
            for option in ("-h", "--help"):
                with self.subTest(script=script, option=option):
                    clone = self.clone(installed=False)
                    result = clone.run(clone.as_user(*clone.script(script, option)))
                    self.assertEqual(result.returncode, 0, result.stdout)
                    self.assertIn(f"usage: scripts/{script} ", result.stdout)
                    self.assertEqual(clone.record("sudo"), "")


class WhereToLook(ScriptCase):
    def said(self, *arguments: str) -> str:
        clone = self.clone()
        result = clone.run(clone.as_user(*clone.script("run", *arguments)), DISPLAY=":1")
        self.assertIn("started with: ", result.stdout)
        return result.stdout

    def test_is_told_for_a_start_that_stays(self) -> None:
        self.assertIn("Tarnwick goes into your panel now", self.said("--set", "PingInterval=2"))

    def test_is_not_told_for_one_that_only_answers(self) -> None:
        for option in ("--quit", "--version"):
            with self.subTest(option):
                self.assertNotIn("panel", self.said(option))


class OnDebian(ScriptCase):
    def test_a_user_is_told_that_it_needs_root(self) -> None:
        clone = self.clone()
        result = clone.run(clone.as_user(*clone.script("on-debian", "trixie", "true")))
        self.assertEqual((result.returncode, result.stdout), (1, "Only root can make a system.\n"))

    def test_without_a_command_it_tells_its_usage(self) -> None:
        clone = self.clone()
        result = clone.run(clone.as_user(*clone.script("on-debian", "trixie")))
        self.assertEqual(result.returncode, 1)
        self.assertIn("usage: scripts/on-debian SUITE COMMAND", result.stdout)


class Permission(ScriptCase):
    def test_a_user_is_asked_and_the_permission_is_kept(self) -> None:
        clone = self.clone()
        with Dialog(clone, self.as_user_in_own_network(clone, *clone.script("run", "watch"))) as dialog:
            dialog.expect(QUESTION)
            dialog.type("\n")
            dialog.expect("[sudo] password: ")
            dialog.type(f"{PASSWORD}\n")
            self.assertEqual(dialog.end(), 0, dialog.output)
            self.assertIn("started with:", dialog.output)
        calls = clone.record("sudo")
        self.assertIn(f"{NOBODY} {NOBODY} /proc/sys/net/ipv4/ping_group_range", calls)
        self.assertIn(KEPT, calls)

    def test_a_no_is_taken_for_a_no(self) -> None:
        clone = self.clone()
        with Dialog(clone, self.as_user_in_own_network(clone, *clone.script("run", "watch"))) as dialog:
            dialog.expect(QUESTION)
            dialog.type("n\n")
            self.assertEqual(dialog.end(), 0, dialog.output)
            self.assertIn("waits until it is allowed: sudo sysctl -w net.ipv4.ping_group_range=", dialog.output)
            self.assertIn("started with:", dialog.output)
        self.assertEqual(clone.record("sudo"), "")

    def test_without_a_terminal_it_names_the_command(self) -> None:
        clone = self.clone()
        result = clone.run(self.as_user_in_own_network(clone, *clone.script("run", "watch")))
        self.assertEqual(result.returncode, 0, result.stdout)
        self.assertIn("waits until it is allowed: sudo sysctl -w net.ipv4.ping_group_range=", result.stdout)
        self.assertNotIn("refused", result.stdout)
        self.assertIn("started with:", result.stdout)

    def test_root_at_a_terminal_keeps_it(self) -> None:
        clone = self.clone()
        with Dialog(clone, self.as_root_in_own_network(clone), PATH=f"{clone.commands}:/bin:/sbin") as dialog:
            dialog.expect(QUESTION)
            dialog.type("y\n")
            self.assertEqual(dialog.end(), 0, dialog.output)
            self.assertRegex(dialog.output, r"\n0\s+0\n(.*\n)*net\.ipv4\.ping_group_range = 0 0\n")

    def test_root_without_a_terminal_allows_it_until_the_next_boot(self) -> None:
        clone = self.clone()
        result = clone.run(self.as_root_in_own_network(clone), PATH=f"{clone.commands}:/bin:/sbin")
        self.assertIn("Set until the next boot.", result.stdout)
        self.assertRegex(result.stdout, r"\n0\s+0\nnot kept\n")

    def test_root_in_a_container_is_not_told_the_command(self) -> None:
        clone = self.clone()
        read_only = "mount --bind /proc/sys /proc/sys && mount -o remount,bind,ro /proc/sys"
        result = clone.run(self.as_root_in_own_network(clone, read_only), PATH=f"{clone.commands}:/bin:/sbin")
        self.assertIn("set it where the container is started", result.stdout)
        self.assertNotIn("sysctl -w", result.stdout)
        self.assertIn("started with:", result.stdout)


class Building(ScriptCase):
    def test_a_clone_that_can_only_be_read_starts(self) -> None:
        clone = self.clone(installed=False)
        command = clone.as_user(*clone.script("run", "watch", "--json"))
        for path in (clone.root, *clone.root.rglob("*")):
            path.chmod(path.stat().st_mode & ~0o222)
        self.addCleanup(lambda: [path.chmod(0o755) for path in (clone.root, *clone.root.rglob("*"))])
        result = clone.run(command)
        self.assertEqual(result.returncode, 0, result.stdout)
        self.assertIn("started with: --json", result.stdout)

    def test_no_list_of_files_is_looked_up_before_each_build(self) -> None:
        """It would make every start look like one with something to build."""
        lists = [
            str(path.relative_to(ROOT))
            for room in ("core", "platform", "app")
            for path in (ROOT / room).rglob("CMakeLists.txt")
            if "CONFIGURE_DEPENDS" in path.read_text(encoding="utf-8")
        ]
        self.assertEqual(lists, [])


if __name__ == "__main__":
    unittest.main()
