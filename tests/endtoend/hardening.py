"""What a program lacks of the usual hardening: of what makes mistakes in memory hard to use."""

from __future__ import annotations

import platform
import re
import subprocess
from typing import TYPE_CHECKING

if TYPE_CHECKING:
    import pathlib

PATIENCE = 60
# What `readelf` tells of each with an option.
SIGNS = {
    "position-independent": ("--file-header", r"Type: +DYN"),
    "all names bound at the start": ("--dynamic", r"\(FLAGS_1\).*NOW.*PIE"),
    "relocations read-only": ("--program-headers", r"GNU_RELRO"),
    "stack without code": ("--program-headers", r"GNU_STACK .* RW +0x"),
    "stack protector": ("--dyn-syms", r" __stack_chk_fail@"),
    "checked calls of the C library": ("--dyn-syms", r" __\w+_chk@"),
}
# The compiler's own start-up code has a few in any case, each function of ours that is called by address has one.
FEWEST_TARGETS = 100


def output(*command: str | pathlib.Path) -> str:
    return subprocess.run(command, capture_output=True, text=True, timeout=PATIENCE, check=True).stdout


def lacks_of_hardening(program: pathlib.Path) -> list[str]:
    lacks = [name for name, (option, sign) in SIGNS.items() if not re.search(sign, output("readelf", "-W", option, program))]
    if platform.machine() == "x86_64":
        code = output("objdump", "--disassemble", "--section=.text", program)
        if code.count("\tendbr64") < FEWEST_TARGETS:
            lacks.append("marked targets of jumps")
    return lacks
