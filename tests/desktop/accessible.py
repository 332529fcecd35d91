"""What assistive technology sees. As a program it prints the tree of an application, carries an action out, sets a
value, or puts a text in the place of the one that a field holds:

    accessible.py tree APPLICATION
    accessible.py act APPLICATION NAME
    accessible.py set APPLICATION NAME VALUE
    accessible.py write APPLICATION NAME TEXT

The bus that it asks is that of its environment, so each session needs a process of its own.
"""

from __future__ import annotations

import dataclasses
import json
import sys
import time
from collections.abc import Iterator

DEEPEST = 30
# What later versions, as those of Debian 13, call a push button.
PUSH_BUTTONS = ("button", "push button menu")
TIMEOUT_MS = 3000


@dataclasses.dataclass(frozen=True)
class Node:
    role: str
    name: str
    description: str
    text: str | None  # what a field holds; none for what is no field
    states: tuple[str, ...]
    children: tuple[Node, ...]

    @staticmethod
    def from_json(value: dict[str, object]) -> Node:
        children = tuple(Node.from_json(child) for child in value["children"])
        own = (value[key] for key in ("role", "name", "description", "text"))
        return Node(*own, tuple(value["states"]), children)

    def all(self) -> Iterator[Node]:
        yield self
        for child in self.children:
            yield from child.all()

    def has_keyboard(self) -> Node | None:
        """The control that has it. The entries of pickers and lists may say so of themselves, too, also without it."""
        if {"showing", "focused"} <= set(self.states):
            return self
        if self.role in ("combo box", "list"):
            return None
        return next(filter(None, (child.has_keyboard() for child in self.children)), None)

    def texts(self) -> list[str]:
        """Every name and description that is shown."""
        shown = (node for node in self.all() if "showing" in node.states)
        return [text for node in shown for text in (node.name, node.description) if text]


def applications(wanted: str) -> Iterator[Atspi.Accessible]:
    desktop = Atspi.get_desktop(0)
    for index in range(desktop.get_child_count()):
        application = desktop.get_child_at_index(index)
        if application is not None and wanted in ("*", application.get_name()):
            yield application


def held_text(node: Atspi.Accessible) -> str | None:
    return None if node.get_editable_text_iface() is None else Atspi.Text.get_text(node.get_text_iface(), 0, -1)


def described(node: Atspi.Accessible, depth: int = 0) -> dict[str, object]:
    children = []
    if depth < DEEPEST:
        for index in range(node.get_child_count()):
            child = node.get_child_at_index(index)
            if child is not None:
                children.append(described(child, depth + 1))
    return {
        "role": "push button" if node.get_role_name() in PUSH_BUTTONS else node.get_role_name(),
        "name": node.get_name() or "",
        "description": node.get_description() or "",
        "text": held_text(node),
        "states": sorted(state.value_nick for state in node.get_state_set().get_states()),
        "children": children,
    }


def has_left(application: str) -> bool:
    deadline = time.monotonic() + TIMEOUT_MS / 1000
    while time.monotonic() < deadline:
        try:
            if not list(applications(application)):
                return True
        except GLib.Error:
            pass  # It goes while it is looked at.
        time.sleep(0.05)
    return False


def act(node: Atspi.Accessible, name: str) -> bool:
    if node.get_name() == name and node.get_n_actions() > 0:
        application = node.get_application().get_name()
        try:
            return node.do_action(0)
        except GLib.Error:
            # A program that ends by it may be gone before its answer is sent.
            if not has_left(application):
                raise
            return True
    children = (node.get_child_at_index(index) for index in range(node.get_child_count()))
    return any(act(child, name) for child in children if child is not None)


def set_value(node: Atspi.Accessible, name: str, value: str) -> bool:
    if node.get_name() == name and node.get_value_iface() is not None:
        return node.get_value_iface().set_current_value(float(value))
    children = (node.get_child_at_index(index) for index in range(node.get_child_count()))
    return any(set_value(child, name, value) for child in children if child is not None)


def write(node: Atspi.Accessible, name: str, text: str) -> bool:
    if node.get_name() == name and node.get_editable_text_iface() is not None:
        return node.get_editable_text_iface().set_text_contents(text)
    children = (node.get_child_at_index(index) for index in range(node.get_child_count()))
    return any(write(child, name, text) for child in children if child is not None)


def main() -> None:
    command, application, *rest = sys.argv[1:]
    Atspi.set_timeout(TIMEOUT_MS, TIMEOUT_MS)
    if command == "tree":
        trees = []
        for found in applications(application):
            try:
                trees.append(described(found))
            except GLib.Error:
                continue  # It went while it was looked at.
        print(json.dumps(trees))
        return
    change = {"act": act, "set": set_value, "write": write}[command]
    if not any(change(found, *rest) for found in applications(application)):
        sys.exit(f"nothing to {command}: {rest}")


if __name__ == "__main__":
    import gi

    gi.require_version("Atspi", "2.0")
    from gi.repository import Atspi, GLib

    main()
