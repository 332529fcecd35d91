"""A drop-down that lies in an overlay of the screen: only a picture tells where it is drawn."""

from __future__ import annotations

from PIL import Image

from .accessible import Node
from .desktops import Desktop
from .pictures import Rectangle, solid_change

TITLE = "Tarnwick"
APPLICATION = "tarnwick"


class OverlayDesktop(Desktop):
    """Of Wayland."""

    bare: Image.Image
    _drawn: Rectangle | None = None  # what drops down, when it was last looked at

    def start(self) -> None:
        super().start()
        self.bare = self.picture()

    def windows(self) -> list[tuple[str, Rectangle]]:
        """Also the overlay: what is drawn of it."""
        windows = [(title, place) for title, place in self.placed_windows() if title != TITLE]
        is_open = self._overlay() is not None
        if is_open or self._drawn is not None:
            picture = self.picture()
            drawn = solid_change(self.bare, picture, self.rest if is_open else self._drawn)
            # A busy compositor shows it for a moment after it was closed.
            self._drawn = drawn if is_open or drawn == self._drawn else None
        return windows if self._drawn is None else [*windows, (TITLE, self._drawn)]

    def placed_windows(self) -> list[tuple[str, Rectangle]]:
        """Those that the compositor counts."""
        raise NotImplementedError

    def focused_title(self) -> str:
        overlay = self._overlay()
        if overlay is not None and "active" in overlay.states:
            return overlay.name
        return self.focused_window_title()

    def focused_window_title(self) -> str:
        raise NotImplementedError

    def _overlay(self) -> Node | None:
        """As assistive technology sees it: an application's windows are its children."""
        windows = (node for application in self.accessible(APPLICATION).children for node in application.children)
        return next((node for node in windows if node.name == TITLE and "showing" in node.states), None)
