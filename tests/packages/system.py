"""Bare Debian systems, thrown away after each test. Root only."""

from __future__ import annotations

import pathlib
import shlex
import subprocess
import tempfile

PATIENCE = 900
# Binds what a system needs to run, then becomes the command in it. The first word says whether it has a network of its own.
ENTER = r"""
set -e
[ "$1" = shared ] || ip link set lo up
mount -t overlay overlay -o "lowerdir=$2,upperdir=$3/upper,workdir=$3/work" "$3/root"
for folder in proc sys dev; do mount --rbind "/$folder" "$3/root/$folder"; done
mkdir -p "$3/root/packages" && mount --bind "$4" "$3/root/packages"
[ -z "$6" ] || { mkdir -p "$3/root/$6" && mount --bind "$6" "$3/root/$6"; }
cp -L /etc/resolv.conf /etc/hosts "$3/root/etc/"
exec chroot "$3/root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 DEBIAN_FRONTEND=noninteractive HOME=/root \
    bash -euo pipefail -c "$5"
"""


def release() -> str:
    return dict(line.split("=", 1) for line in shlex.split(pathlib.Path("/etc/os-release").read_text(encoding="utf-8")))[
        "VERSION_CODENAME"
    ]


def make_bare(folder: pathlib.Path, suite: str) -> None:
    """The least that Debian calls a system, with this machine's package sources."""
    subprocess.run(
        ["mmdebstrap", "--quiet", "--variant=minbase", "--mode=root", "--include=ca-certificates", suite, folder],
        check=True, stdin=subprocess.DEVNULL, timeout=PATIENCE,
    )  # fmt: skip


def printed(process: subprocess.Popen[str]) -> str:
    """What a script that was started prints until it ends."""
    try:
        output, errors = process.communicate(timeout=PATIENCE)
    finally:
        process.kill()
    if process.returncode != 0:
        raise AssertionError(f"ended with {process.returncode}:\n{output[-4000:]}\n{errors[-4000:]}")
    return output


class System:
    """Its changes lie beside the bare one, and go with it."""

    def __init__(self, bare: pathlib.Path, packages: pathlib.Path) -> None:
        self._bare = bare
        self._packages = packages
        self._folder = tempfile.TemporaryDirectory()
        for name in ("upper", "work", "root"):
            (pathlib.Path(self._folder.name) / name).mkdir()

    def close(self) -> None:
        self._folder.cleanup()

    def run(self, script: str, own_network: bool = True) -> str:
        """Returns what it prints. With a network of its own, which has loopback alone and lets no group ping."""
        return printed(self.start(script, own_network))

    def start(self, script: str, own_network: bool = True, shared: pathlib.Path | None = None) -> subprocess.Popen[str]:
        """The folder that is shared with this machine has the same path there."""
        spaces = ["--net"] if own_network else []
        return subprocess.Popen(
            ["unshare", "--mount", "--pid", "--fork", "--kill-child", *spaces, "bash", "-c", ENTER, "enter",
             "own" if own_network else "shared", self._bare, self._folder.name, self._packages, script, shared or ""],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
        )  # fmt: skip

    def install_needs(self, *packages: str) -> None:
        """What these packages of ours need of others, so that `dpkg` can install them without the internet."""
        files = " ".join(f"/packages/{package}" for package in packages)
        self.run(
            f"""
            apt-get update -q
            needs=$(for file in {files}; do dpkg-deb --field "$file" Depends | tr ',' '\\n'; done | grep -v tarnwick-common | paste -sd ,)
            apt-get satisfy -qy --no-install-recommends "$needs"
            """,
            own_network=False,
        )
