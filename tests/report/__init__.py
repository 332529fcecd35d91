"""Tests of the report as a page, in a browser and on paper. Run them from the folder above:

    lab/run /usr/bin/python3 -B -m unittest -v report.test_paper
"""
