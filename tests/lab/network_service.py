"""A stand-in for NetworkManager on a system bus of its own, which says how far the network lets this machine through."""

from __future__ import annotations

import pathlib
import shutil
import subprocess
import sys

if __name__ != "__main__":
    from .network import LabError

CONNECTIVITY = {"unknown": 0, "none": 1, "portal": 2, "limited": 3, "full": 4}
_NAME, _PATH = "org.freedesktop.NetworkManager", "/org/freedesktop/NetworkManager"
_INTERFACE = f'<node><interface name="{_NAME}"><property name="Connectivity" type="u" access="read"/></interface></node>'
_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <listen>{address}</listen>
  <policy context="default">
    <allow user="*"/><allow own="*"/><allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/>
  </policy>
</busconfig>
"""
_READY = "ready"
# The distribution's own, which has the library for buses.
_PYTHON = "/usr/bin/python3"


class NetworkService:
    """Runs until it is closed. `environment` is for programs that are to find it."""

    def __init__(self, folder: str, connectivity: str) -> None:
        if missing := self.missing():
            raise LabError(f"not installed: {', '.join(missing)}")
        self.address = f"unix:path={folder}/system-bus"
        self.environment = {"DBUS_SYSTEM_BUS_ADDRESS": self.address}
        configuration = pathlib.Path(folder, "system-bus.conf")
        configuration.write_text(_CONFIGURATION.format(address=self.address), encoding="utf-8")
        self._log = pathlib.Path(folder, "system-bus.log")
        self._processes: list[subprocess.Popen[str]] = []
        try:
            daemon = ["dbus-daemon", f"--config-file={configuration}", "--nofork", "--nopidfile", "--print-address"]
            self._start(daemon, self.address)
            self._start([_PYTHON, "-B", __file__, self.address, str(CONNECTIVITY[connectivity])], _READY)
        except LabError:
            self.close()
            raise

    def __enter__(self) -> NetworkService:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    @staticmethod
    def missing() -> list[str]:
        """The packages that it lacks here."""
        lacks_daemon = ["dbus-daemon"] if shutil.which("dbus-daemon") is None else []
        has_library = subprocess.run([_PYTHON, "-c", "import gi"], stderr=subprocess.DEVNULL, check=False).returncode == 0
        return lacks_daemon + ([] if has_library else ["python3-gi"])

    def close(self) -> None:
        for process in reversed(self._processes):
            process.kill()
            process.wait()
            process.stdout.close()
        self._processes.clear()

    def _start(self, command: list[str], first_line: str) -> None:
        """Waits for what it says when it is ready."""
        with self._log.open("a") as log:
            process = subprocess.Popen(
                command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=log, text=True
            )
        self._processes.append(process)
        if not process.stdout.readline().startswith(first_line):
            raise LabError(f"{command[0]} does not start: {self._log.read_text()}")


def serve(address: str, connectivity: int) -> None:
    """Never returns."""
    from gi.repository import Gio, GLib

    flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
    bus = Gio.DBusConnection.new_for_address_sync(address, flags, None, None)
    interface = Gio.DBusNodeInfo.new_for_xml(_INTERFACE).interfaces[0]
    bus.register_object(_PATH, interface, None, lambda *_: GLib.Variant("u", connectivity), None)
    Gio.bus_own_name_on_connection(
        bus, _NAME, Gio.BusNameOwnerFlags.NONE, lambda *_: print(_READY, flush=True), lambda *_: sys.exit(1)
    )
    GLib.MainLoop().run()


if __name__ == "__main__":
    serve(sys.argv[1], int(sys.argv[2]))
