"""Tests of the built terminal program in the network laboratory. Run them from the folder above:

    lab/run /usr/bin/python3 -m unittest -v endtoend.test_connection
"""
