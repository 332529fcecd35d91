"""A test case whose tests run at the same time, since most of them spend their time waiting for pings."""

from __future__ import annotations

import concurrent.futures
import functools
import threading
import unittest
from collections.abc import Callable

# No test takes longer than this. One that hangs fails, and its thread ends with the process.
LONGEST_SECONDS = 120


class ConcurrentTestCase(unittest.TestCase):
    """All tests of all such classes of a module start together, each in a thread; results are reported one by one.

    The methods may use what setUpClass made, assertions and context managers, but not subTest, addCleanup or setUp:
    each runs on an instance of its own that unittest does not know.
    """

    _bodies: dict[str, Callable[[ConcurrentTestCase], None]] = {}
    _asked_for: set[str] = set()
    _futures: dict[str, concurrent.futures.Future[None]] = {}
    _classes: list[type[ConcurrentTestCase]] = []

    def __init_subclass__(cls, **arguments: object) -> None:
        super().__init_subclass__(**arguments)
        cls._bodies = {}
        cls._asked_for = set()
        cls._futures = {}
        ConcurrentTestCase._classes.append(cls)
        for name, body in list(vars(cls).items()):
            if name.startswith("test_"):
                cls._bodies[name] = body
                setattr(cls, name, cls._collector(name, body))

    @classmethod
    def setUpClass(cls) -> None:
        for sibling in ConcurrentTestCase._classes:
            if sibling.__module__ == cls.__module__ and not sibling._futures:
                sibling._start()

    @classmethod
    def _start(cls) -> None:
        for name in [name for name in cls._bodies if name in cls._asked_for]:
            cls._futures[name] = concurrent.futures.Future()
            threading.Thread(target=cls._run_body, args=(name,), daemon=True).start()

    @classmethod
    def _run_body(cls, name: str) -> None:
        future = cls._futures[name]
        try:
            cls._bodies[name](cls(name))
        except BaseException as error:
            future.set_exception(error)
        else:
            future.set_result(None)

    def __init__(self, name: str = "runTest") -> None:
        super().__init__(name)
        # Only the tests that the runner has chosen are started.
        type(self)._asked_for.add(name)

    @staticmethod
    def _collector(name: str, body: Callable[..., None]) -> Callable[..., None]:
        @functools.wraps(body)
        def collect(self: ConcurrentTestCase) -> None:
            self._futures[name].result(timeout=LONGEST_SECONDS)

        return collect
