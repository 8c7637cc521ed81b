#!/usr/bin/env python3
"""Tests of the comparison itself: each kind of finding, and what its message says."""

import unittest

import agreement as by
import compare
import tables
from readings import Value


class TestCase(unittest.TestCase):
    def compare(self, document, theirs, same=(), different=(), left_out=(), name="film.mp4"):
        """What a comparison of these values by these tables has to say."""
        kept = tables.SAME, tables.DIFFERENT, tables.LEFT_OUT
        tables.SAME, tables.DIFFERENT, tables.LEFT_OUT = same, different, left_out
        try:
            comparison = compare.Comparison()
        finally:
            tables.SAME, tables.DIFFERENT, tables.LEFT_OUT = kept
        for value in theirs:
            comparison.value(name, document, "ffprobe", value)
        comparison.dead_rows()
        return comparison

    def one_problem(self, *arguments, **tables_of_it):
        problems = self.compare(*arguments, **tables_of_it).problems
        self.assertEqual(len(problems), 1, problems)
        return problems[0]

    def test_counts_values_that_agree(self):
        found = self.compare([Value("size", None, 12)], [Value("format.size", None, "12")],
                             same=[tables.Same("size", by.number, ffprobe="format.size")])
        self.assertEqual((found.problems, found.agreed), ([], 1))

    def test_compares_streams_with_the_stream_of_the_same_number(self):
        document = [Value("streams[].width", 0, 320), Value("streams[].width", 1, 640)]
        row = tables.Same("streams[].width", by.number, ffprobe="streams[].width")
        theirs = [Value("streams[].width", 0, 640), Value("streams[].width", 1, 640)]
        self.assertIn("streams[].width is [320]", self.one_problem(document, theirs, same=[row]))

    def test_says_where_to_write_an_unknown_key(self):
        message = self.one_problem([], [Value("format.new", None, "x")])
        self.assertIn("film.mp4: ffprobe's format.new = 'x'", message)
        self.assertIn("tests/comparison/tables.py", message)
        self.assertIn("LEFT_OUT", message)

    def test_reports_a_value_that_the_document_lacks(self):
        row = tables.Same("size", by.number, ffprobe="format.size")
        message = self.one_problem([], [Value("format.size", None, "12")], same=[row])
        self.assertIn("the document has no size", message)

    def test_reports_a_value_that_differs(self):
        row = tables.Same("size", by.number, ffprobe="format.size")
        message = self.one_problem([Value("size", None, 13)], [Value("format.size", None, "12")],
                                   same=[row])
        self.assertIn("the document's size is [13]", message)

    def test_reports_a_difference_that_is_none(self):
        row = tables.Different("size", "why", by.number, ffprobe="format.size")
        message = self.one_problem([Value("size", None, 12)], [Value("format.size", None, "12")],
                                   different=[row])
        self.assertIn("from DIFFERENT to SAME", message)

    def test_keeps_quiet_about_a_difference_that_is_one(self):
        row = tables.Different("size", "why", by.number, ffprobe="format.size")
        found = self.compare([Value("size", None, 13)], [Value("format.size", None, "12")],
                             different=[row])
        self.assertEqual(found.problems, [])

    def test_reports_rows_that_match_nothing(self):
        row = tables.LeftOut("why", ffprobe="format.gone ?format.newer")
        message = self.one_problem([], [], left_out=[row])
        self.assertIn("nothing matches ffprobe's format.gone", message)
        self.assertIn("Take it out", message)

    def test_rows_of_other_files_do_not_match(self):
        row = tables.LeftOut("why", ffprobe="?format.x", files="song.*")
        self.assertIn("is in no table",
                      self.one_problem([], [Value("format.x", None, 1)], left_out=[row]))


class AgreementTest(unittest.TestCase):
    def test_spellings_of_the_same(self):
        same = (
            (by.number, "24000/1001", 23.976), (by.number, "0x1f", 31), (by.number, "1.5 dB", 1.5),
            (by.moment, "2021:08:14 15:03:21", "2021-08-14T17:03:21+02:00"),
            (by.moment, "2021-08-14 15:03:21 UTC", "2021-08-14T15:03:21Z"),
            (by.clock, "2021:08:14", "2021-08-14T17:03:21+02:00"),
            (by.texts, "Folk / Jazz", ["Jazz", "Folk"]), (by.one_of, "Folk", ["Folk", "Jazz"]),
            (by.spelling, "BT.709", "bt709"), (by.language, "de", "ger"),
            (by.clockwise, -90, 90), (by.clockwise, "-270", 270), (by.quarters, 3, 90),
            (by.quarters, 270, 90), (by.clock_time, "00:00:01.921000000", 1.921),
        )
        for function, theirs, ours in same:
            with self.subTest(function=function.__name__, theirs=theirs):
                self.assertTrue(function(theirs, [ours]))

    def test_what_is_not_the_same(self):
        other = (
            (by.number, "24", 23.976),
            (by.moment, "2021:08:14 17:03:21", "2021-08-14T17:03:21+02:00"),
            (by.clock, "2021:08:15", "2021-08-14"), (by.texts, "Folk", ["Folk", "Jazz"]),
            (by.one_of, "Rock", ["Folk", "Jazz"]), (by.rounded, "100", 101),
            (by.clockwise, 90, 90), (by.quarters, 1, 90), (by.number, "0/0", 0),
        )
        for function, theirs, ours in other:
            with self.subTest(function=function.__name__, theirs=theirs):
                self.assertFalse(function(theirs, [ours]))


if __name__ == "__main__":
    unittest.main()
