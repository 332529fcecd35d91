"""A window of another program, for tests on Wayland: other_window.py TITLE."""

from __future__ import annotations

import sys

import gi

gi.require_version("Gtk", "4.0")
gi.require_version("Gdk", "4.0")
from gi.repository import Gdk, Gtk  # noqa: E402

SIZE = (500, 400)
# What drops down over it differs from it.
STYLE = "window { background: #6040a0; }"


def show(application: Gtk.Application) -> None:
    # Without a frame, which would look different as soon as the keyboard goes.
    window = Gtk.ApplicationWindow(application=application, title=sys.argv[1], decorated=False)
    window.set_default_size(*SIZE)
    provider = Gtk.CssProvider()
    provider.load_from_data(STYLE.encode())
    Gtk.StyleContext.add_provider_for_display(Gdk.Display.get_default(), provider, Gtk.STYLE_PROVIDER_PRIORITY_USER)
    window.present()


application = Gtk.Application(application_id="one.example.Other")
application.connect("activate", show)
application.run([])
