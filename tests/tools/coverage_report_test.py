#!/usr/bin/python3
"""What ./coverage makes of counts, on counts and documents that this test made up.

coverage_report_test.py COVERAGE_REPORT
"""

import contextlib
import importlib.util
import io
import pathlib
import sys
import tempfile
import unittest

module_source = importlib.util.spec_from_file_location("coverage_report", sys.argv.pop())
report = importlib.util.module_from_spec(module_source)
module_source.loader.exec_module(report)

SOURCE = """int Half(int n) {
  if (n < 0 || n > 9) {
    return 0;
  }
  return n / 2;
}
"""
CONDITION = "if (n < 0 || n > 9) {"


def branch(count, throw=False):
    return {"count": count, "throw": throw, "fallthrough": False}


def line(number, count, *branches):
    return {"line_number": number, "count": count, "branches": list(branches)}


def entry(lines, calls=1):
    return {"file": "dsp/half.cpp", "lines": lines,
            "functions": [{"name": "Half(int)", "lineno": 1, "execution_count": calls}]}


WHOLE = [line(1, 5), line(2, 5, branch(1), branch(4), branch(2), branch(2)), line(3, 3), line(5, 2)]
LACKING = [line(1, 5), line(2, 5, branch(0), branch(5), branch(3), branch(2)), line(3, 3), line(5, 2)]


class Report(unittest.TestCase):
    def faults(self, file_entry, document=""):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            (root / "dsp").mkdir()
            (root / "dsp" / "half.cpp").write_text(SOURCE, encoding="utf-8")
            (root / "coverage.md").write_text(document, encoding="utf-8")
            files = {file_entry["file"]: report.read_file(file_entry)}
            with contextlib.redirect_stdout(io.StringIO()):
                library = report.table("library", report.LIBRARY, files)
                host = report.table("host", report.HOST, files)
            return list(report.faults(root, library, host, files, root / "coverage.md"))

    def test_everything_run_is_no_fault(self):
        self.assertEqual(self.faults(entry(WHOLE)), [])

    def test_ways_out_of_a_call_are_no_branches(self):
        calls = [branch(7), branch(0, throw=True)]
        self.assertEqual(report.decisions(calls), [])
        self.assertEqual(report.decisions([branch(0, throw=True)]), [])
        self.assertEqual(report.decisions([branch(3), branch(4), *calls, branch(5), branch(0)]), [3, 4, 5, 0])

    def test_a_line_and_a_function_that_never_run_are_named(self):
        found = self.faults(entry([line(1, 0), line(5, 1)], calls=0))
        self.assertIn("lines of the library: fewer than 100 %", found)
        self.assertIn("functions of the library: fewer than 100 %", found)
        self.assertIn("dsp/half.cpp:1: never run: int Half(int n) {", found)
        self.assertIn("dsp/half.cpp:1: never called: Half(int)", found)

    def test_a_branch_needs_a_reason_in_the_document(self):
        unnamed = f"dsp/half.cpp:2: 1 branches not taken, for no reason given: {CONDITION}"
        self.assertIn(unnamed, self.faults(entry(LACKING)))
        row = "| `dsp/half.cpp` | `if (n < 0 \\|\\| n > 9) {` | 1 | Nobody gives less than 0. |\n"
        self.assertNotIn(unnamed, self.faults(entry(LACKING), row))
        self.assertIn(unnamed, self.faults(entry(LACKING), row.replace("Nobody gives less than 0.", "")))

    def test_a_reason_for_a_branch_that_is_taken_is_stale(self):
        row = "| `dsp/half.cpp` | `if (n < 0 \\|\\| n > 9) {` | 1 | Nobody gives less than 0. |\n"
        self.assertEqual(self.faults(entry(WHOLE), row),
                         [f"dsp/half.cpp: named as not taken, but taken or gone: {CONDITION}"])


if __name__ == "__main__":
    unittest.main()
