"""Name resolution of the laboratory's own: hosts, resolv.conf and nsswitch.conf, mounted over the system's."""

from __future__ import annotations

import os
import subprocess
from collections.abc import Iterable, Mapping

from .network import LabError

_FILES = ("hosts", "resolv.conf", "nsswitch.conf")
_LOCALHOST = "127.0.0.1 localhost\n::1 localhost ip6-localhost\n"
# Mounts the files of the folder named first, then becomes the command that follows it.
_MOUNT_AND_RUN = (
    'set -e; folder=$1; shift; for name in hosts resolv.conf nsswitch.conf; do '
    'mount --bind "$folder/$name" "/etc/$name"; done; exec "$@"'
)


class Names:
    """A set of resolver files in a folder. They can be rewritten at any time: lookups that start later see it."""

    def __init__(self, folder: str) -> None:
        self.folder = folder
        os.makedirs(folder, exist_ok=True)
        self.write()

    def write(
        self,
        hosts: Mapping[str, Iterable[str]] | None = None,
        order: str = "files",
        name_servers: Iterable[str] = (),
        patience: int = 30,
    ) -> None:
        """Writes all three files.

        `hosts` maps names to their addresses, in order; `order` is what nsswitch.conf says about hosts; `patience`
        is for how many seconds the resolver waits for each answer (30 is the most that it accepts; it asks 5 times).
        """
        lines = [
            f"{address} {name}\n"
            for name, addresses in (hosts or {}).items()
            for address in addresses
        ]
        servers = [f"nameserver {address}\n" for address in name_servers]
        self._put("hosts", _LOCALHOST + "".join(lines))
        self._put("resolv.conf", "".join(servers) + f"options timeout:{patience} attempts:5\n")
        self._put("nsswitch.conf", f"hosts: {order}\n")

    def install(self) -> None:
        """Lets every process of this mount namespace see the files."""
        for name in _FILES:
            target = f"/etc/{name}"
            if not os.path.exists(target):
                raise LabError(f"{target} does not exist, so nothing can be mounted over it")
            command = ["mount", "--bind", os.path.join(self.folder, name), target]
            done = subprocess.run(command, capture_output=True, text=True, timeout=10, check=False)
            if done.returncode != 0:
                raise LabError(f"{' '.join(command)}: {done.stderr.strip()}")

    def prefix(self) -> list[str]:
        """What to put before a command so that it alone sees the files. The command keeps its process id."""
        # Mounts are private in the laboratory already, and in a changed root they can't be made so again.
        own_mounts = ["unshare", "--mount", "--propagation", "unchanged"]
        return [*own_mounts, "sh", "-c", _MOUNT_AND_RUN, "sh", self.folder]

    def _put(self, name: str, text: str) -> None:
        # Written in place: a mount follows the file, not its name.
        with open(os.path.join(self.folder, name), "w", encoding="utf-8") as file:
            file.write(text)
