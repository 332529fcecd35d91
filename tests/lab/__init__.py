"""A network laboratory for tests: see README.md."""

from .behavior import DISTORTIONS, SILENT, Behavior, Request
from .names import Names
from .network import DEAD_NAME_SERVER, OWN_IPV4, OWN_IPV6, Lab, LabError

__all__ = [
    "DEAD_NAME_SERVER",
    "DISTORTIONS",
    "OWN_IPV4",
    "OWN_IPV6",
    "SILENT",
    "Behavior",
    "Lab",
    "LabError",
    "Names",
    "Request",
]
