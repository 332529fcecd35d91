"""Tests of the desktop program in real panels on virtual displays. Run them from the folder above:

    lab/run /usr/bin/python3 -B -m unittest -v desktop.test_xfce

The program under test is $TARNWICK (when unset, the first that is built of the presets release and debug). Every session has its own display, home
folder and buses; logs and pictures of the latest run stay below build/desktop. A module whose panel is not
installed says so and exits with 77, or with 1 when TARNWICK_DESKTOPS=require.
"""
