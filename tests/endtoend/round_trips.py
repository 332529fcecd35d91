"""The latencies that a program shows, beside those that the kernel stamped."""

from __future__ import annotations

from lab import Lab

from .watch import Watch


def errors_ms(lab: Lab, watch: Watch, address: str) -> list[float]:
    """By how much each latency shown is longer than its ping was. For an address that answers every request in order."""
    answered = [request for request in lab.requests(address) if request.left is not None]
    shown = {now["session"]["replied"]: now["latestPingMs"] for now in watch.values()}
    return [latency - answered[count - 1].took_ms for count, latency in shown.items() if count > 0]
