#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The runner of the pages' examples notices what a page shows wrongly."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

RUNNER = pathlib.Path(__file__).resolve().parents[1] / "docs" / "run.py"


def block(mark, language, *lines):
    return "\n".join([f"<!-- test: {mark} -->", f"```{language}", *lines, "```", ""])


class DocsTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        (self.root / "data").write_text("seen\n")
        # A compiler that takes the source for a shell script.
        self.compiler = self.root / "compile"
        self.compiler.write_text('#!/bin/sh\nsh -n "$1" && cp "$1" "$2" && chmod +x "$2"\n')
        self.compiler.chmod(0o755)

    def run_page(self, text):
        page = self.root / "page.md"
        page.write_text(text)
        return subprocess.run(
            [sys.executable, RUNNER, "--root", self.root, "--program", self.root / "none" / "estatebook",
             "--compile", f"{self.compiler} SOURCE PROGRAM", page], text=True, capture_output=True)

    def assert_right(self, text):
        done = self.run_page(text)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def test_a_session_that_prints_what_it_shows_is_right(self):
        self.assert_right("Words.\n\n" + block("session", "console", "$ cat data", "seen", "$ echo more", "more"))

    def test_a_session_that_prints_something_else_is_wrong(self):
        done = self.run_page(block("session", "console", "$ cat data", "unseen"))
        self.assertEqual(done.returncode, 1)
        self.assertIn("-unseen\n+seen", done.stdout)

    def test_a_failing_command_shows_its_exit_code(self):
        self.assert_right(block("session", "console", "$ exit 4", "[exit code 4]"))

    def test_a_program_is_built_and_its_output_compared(self):
        program = block("program one", "cpp", "#!/bin/sh", "cat data")
        self.assert_right(program + block("output one", "text", "seen"))
        self.assertEqual(self.run_page(program + block("output one", "text", "other")).returncode, 1)

    def test_a_program_that_does_not_compile_is_wrong(self):
        self.assertIn("does not compile", self.run_page(block("program one", "cpp", "if")).stdout)

    def test_a_mark_without_a_block_is_wrong(self):
        self.assertIn("no fenced block", self.run_page("<!-- test: session -->\nwords\n").stdout)

    def test_blocks_without_a_mark_are_left_alone(self):
        self.assert_right("```console\n$ false\n```\n")


if __name__ == "__main__":
    unittest.main()
