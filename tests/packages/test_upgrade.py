"""A newer package in the place of the desktop program that runs: `scripts/test packages` builds and tries it."""

from __future__ import annotations

import json
import subprocess
import unittest

from desktop.item import USUAL_PATH, Item
from desktop.panels import WaybarPanel
from desktop.session import NOBODY
from endtoend.waiting import eventually

from .built import INSTALL, PackagesCase
from .system import PATIENCE, printed

NEWS = "Restart to use the new version."
KEPT = ("DBUS_SESSION_BUS_ADDRESS", "HOME", "WAYLAND_DISPLAY", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR")
# The older version runs until the newer one is installed and that was seen. Prints what it has stored.
SCRIPT = """
{install} /packages/older/tarnwick-common.deb /packages/older/tarnwick.deb >&2
setpriv --reuid={user} --regid={user} --clear-groups env {variables} tarnwick --from-session --set Hostname=127.0.0.1 >&2 &
program=$!
wait_for() {{
    until [ -e "/packages/$1" ]; do kill -0 $program; sleep 0.1; done
}}
wait_for shown
{install} /packages/tarnwick-common.deb /packages/tarnwick.deb >&2
wait_for seen
kill $program
wait $program
cat {data}/Tarnwick/stats.json
"""


class Upgrade(PackagesCase):
    @classmethod
    def setUpClass(cls) -> None:
        WaybarPanel.require()
        super().setUpClass()

    def started_panel(self) -> WaybarPanel:
        desktop = WaybarPanel()
        desktop.start()
        self.addCleanup(desktop.stop)
        return desktop

    def rows(self, desktop: WaybarPanel, process: subprocess.Popen[str]) -> list[str]:
        """Of the menu of the only item; none while there is no item."""
        if process.poll() is not None:
            raise AssertionError(f"the program ended: {process.communicate()}")
        for entry in desktop.watcher_property("RegisteredStatusNotifierItems") or ():
            service, slash, path = entry.replace("@", "").partition("/")
            return [row.label for row in Item(desktop.session.bus, service, slash + path or USUAL_PATH).rows()]
        return []

    def test_the_desktop_program_goes_on_and_tells_of_it(self) -> None:
        system = self.system()
        system.install_needs("tarnwick.deb")
        desktop = self.started_panel()
        environment = desktop.session.environment
        variables = " ".join(f"{name}={environment[name]}" for name in KEPT)
        script = SCRIPT.format(install=INSTALL, user=NOBODY, variables=variables, data=environment["XDG_DATA_HOME"])
        process = system.start(script, shared=desktop.session.folder)
        self.addCleanup(process.kill)

        before = eventually(lambda: self.rows(desktop, process), PATIENCE, "the item's menu")
        self.assertNotIn(NEWS, before)
        (self.packages / "shown").touch()
        eventually(lambda: NEWS in self.rows(desktop, process), PATIENCE, "the news in the menu")
        desktop.screenshot("upgraded.png")
        (self.packages / "seen").touch()

        self.assertGreaterEqual(json.loads(printed(process))["127.0.0.1"]["replied"], 1)


if __name__ == "__main__":
    unittest.main()
