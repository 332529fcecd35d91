"""Network namespaces beside the laboratory's own. They last as long as something refers to them: a kill leaves none."""

from __future__ import annotations

import contextlib
import ctypes
import ipaddress
import os
import time
from collections.abc import Callable, Iterable
from concurrent.futures import ThreadPoolExecutor
from typing import TypeVar

from .network import LabError, ip_batch

_CLONE_NEWNET = 0x40000000
_RTF_LOCAL = 0x80000000
_libc = ctypes.CDLL(None, use_errno=True)

Result = TypeVar("Result")


class Namespace:
    """A network namespace. It exists until it is closed and nothing else, such as a device or a socket, holds it."""

    def __init__(self) -> None:
        # Only the thread moves into the new namespace; the process stays where it is.
        self._descriptor: int | None = _in_thread(_make)

    @classmethod
    def own(cls) -> Namespace:
        """The one that the process is in."""
        namespace = cls.__new__(cls)
        namespace._descriptor = None
        return namespace

    def close(self) -> None:
        if self._descriptor is not None:
            os.close(self._descriptor)
            self._descriptor = None

    def call(self, function: Callable[[], Result]) -> Result:
        """What the function returns in there: the sockets and devices that it makes stay there."""
        descriptor = self._descriptor
        if descriptor is None:
            return function()

        def enter_and_call() -> Result:
            _check(_libc.setns(descriptor, _CLONE_NEWNET), "a network namespace can't be entered")
            return function()

        return _in_thread(enter_and_call)

    def ip(self, lines: Iterable[str], version: int | None = None) -> None:
        """Runs these commands of `ip` in there; the version of IP where no address in them tells it."""
        self.call(lambda: ip_batch(lines, version))

    def wait_for_address(self, address: str, seconds: float = 5.0) -> None:
        """Waits until the kernel takes packets for an IPv6 address: it adds that route some time after the address."""
        wanted = ipaddress.IPv6Address(address).packed.hex()
        deadline = time.monotonic() + seconds
        while not self.call(lambda: _has_local_route(wanted)):
            if time.monotonic() > deadline:
                raise LabError(f"the kernel takes no packets for {address}")
            time.sleep(0.001)

    def set(self, settings: dict[str, int]) -> None:
        """Sets network settings, by their paths in /proc/sys/net."""

        def write_all() -> None:
            for path, value in settings.items():
                # Not every kernel has each of them in each namespace.
                with contextlib.suppress(FileNotFoundError, PermissionError):
                    with open(f"/proc/sys/net/{path}", "w", encoding="ascii") as file:
                        file.write(str(value))

        self.call(write_all)


def _in_thread(function: Callable[[], Result]) -> Result:
    with ThreadPoolExecutor(1) as pool:
        return pool.submit(function).result()


def _has_local_route(address: str) -> bool:
    with open("/proc/thread-self/net/ipv6_route", encoding="ascii") as routes:
        fields = [line.split() for line in routes]
    return any(one[0] == address and int(one[8], 16) & _RTF_LOCAL for one in fields)


def _make() -> int:
    _check(_libc.unshare(_CLONE_NEWNET), "no further network namespace")
    return os.open("/proc/thread-self/ns/net", os.O_RDONLY | os.O_CLOEXEC)


def _check(result: int, what: str) -> None:
    if result != 0:
        raise LabError(f"{what}: {os.strerror(ctypes.get_errno())}")
