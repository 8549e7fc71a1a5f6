#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The runner of golden documents, driven with a program that does as it is told."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

RUNNER = pathlib.Path(__file__).resolve().parents[1] / "golden" / "run.py"
PROGRAM = """#!/bin/sh
case $1 in
    say) shift; printf "$*" ;;
    complain) echo "no" >&2; exit 3 ;;
    echo) cat ;;
    zone) echo "$TZ $LC_ALL" ;;
esac
"""


class GoldenTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.program = self.folder / "bin" / "estatebook"
        self.program.parent.mkdir()
        self.program.write_text(PROGRAM)
        self.program.chmod(0o755)
        (self.folder / "books").mkdir()
        (self.folder / "books" / "one.json").write_text("a book\n")
        self.document = self.folder / "case.test"

    def run_document(self, text, *arguments):
        self.document.write_text(text)
        return subprocess.run(
            [sys.executable, RUNNER, "--program", self.program, "--books", self.folder / "books", *arguments,
             self.document], text=True, capture_output=True)

    def assert_right(self, text):
        done = self.run_document(text)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def test_output_errors_and_exit_code_are_compared(self):
        self.assert_right("Prose.\n\n$ estatebook say 'a\\n\\nb\\n'\n> a\n>\n> b\n\n$ estatebook complain\n! no\n= 3\n")

    def test_another_output_fails_with_a_difference(self):
        done = self.run_document("$ estatebook say 'new\\n'\n> old\n")
        self.assertEqual(done.returncode, 1)
        self.assertIn("-> old\n+> new\n", done.stdout)

    def test_an_exit_code_not_named_fails(self):
        self.assertEqual(self.run_document("$ estatebook complain\n! no\n").returncode, 1)

    def test_a_missing_line_feed_at_the_end_is_seen(self):
        self.assert_right("$ estatebook say 'a'\n> a\n\\ no line feed at the end\n")
        self.assertEqual(self.run_document("$ estatebook say 'a'\n> a\n").returncode, 1)

    def test_input_is_given(self):
        self.assert_right("$ estatebook echo\n< one\n<\n< two\n> one\n>\n> two\n")

    def test_the_environment_is_fixed_unless_the_command_says_otherwise(self):
        self.assert_right("$ estatebook zone\n> UTC en_GB.UTF-8\n$ TZ=Asia/Tokyo estatebook zone\n> Asia/Tokyo en_GB.UTF-8\n")

    def test_a_file_written_by_one_command_is_read_by_the_next(self):
        self.assert_right("$ cat books/one.json > copy.json\n$ cmp copy.json books/one.json\n")

    def test_update_rewrites_expectations_and_nothing_else(self):
        done = self.run_document("Why.\n\n$ estatebook echo\n< in\n> old\n! gone\n= 9\n\nMore.\n", "--update")
        self.assertEqual(done.returncode, 0)
        self.assertEqual(self.document.read_text(), "Why.\n\n$ estatebook echo\n< in\n> in\n\nMore.\n")

    def test_a_document_without_a_command_is_refused(self):
        self.assertEqual(self.run_document("Prose only.\n").returncode, 1)

    def test_an_expectation_that_follows_no_command_is_refused(self):
        self.assertIn("line 1", self.run_document("> text\n$ estatebook say\n").stdout)


if __name__ == "__main__":
    unittest.main()
