#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs the examples of Markdown pages and compares what they print with what the page shows.

    run.py --program build/release/bin/estatebook --compile "g++ -std=c++20 -I src … SOURCE -o PROGRAM" PAGE.md...

An example is a fenced block right below a mark, which a reader of the page does not see:

    <!-- test: session -->           "$ command" lines, each followed by what it prints
    <!-- test: program NAME -->      a C++ program
    <!-- test: output NAME -->       what that program prints
"""

import argparse
import difflib
import os
import pathlib
import re
import subprocess
import sys
import tempfile

TIMEOUT_SECONDS = 900
MARK = re.compile(r"^<!-- test: (session|program|output)(?: (\S+))? -->$")
# Not LC_ALL: a shell complains of one whose locale is not installed.
ENVIRONMENT = {"TZ": "Europe/London", "LANG": "en_GB.UTF-8"}


class Wrong(Exception):
    pass


def examples(text):
    """(line number, kind, name, block) for each marked block of a page."""
    lines = text.split("\n")
    for number, line in enumerate(lines, 1):
        if not (mark := MARK.match(line.strip())):
            continue
        if number >= len(lines) or not lines[number].startswith("```"):
            raise Wrong(f"line {number}: no fenced block below the mark")
        end = next((i for i in range(number + 1, len(lines)) if lines[i].startswith("```")), None)
        if end is None:
            raise Wrong(f"line {number + 1}: the fenced block has no end")
        yield number, mark[1], mark[2], "".join(f"{each}\n" for each in lines[number + 1 : end])


def printed(command, folder, program_folder, **options):
    environment = {name: value for name, value in os.environ.items() if not name.startswith("LC_")} | ENVIRONMENT
    environment["PATH"] = f"{program_folder}:{environment['PATH']}"
    done = subprocess.run(
        command, cwd=folder, env=environment, timeout=TIMEOUT_SECONDS, text=True,
        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options,
    )
    return done.stdout + (f"[exit code {done.returncode}]\n" if done.returncode else "")


def session(block, folder, program_folder):
    """The block as it reads with what its commands print now."""
    shown = ""
    for line in block.split("\n"):
        if line.startswith("$ "):
            shown += line + "\n" + printed(line[2:], folder, program_folder, shell=True)
    return shown


def build(source, folder, name, compile_line):
    path, program = folder / f"{name}.cpp", folder / name
    path.write_text(source)
    words = [{"SOURCE": str(path), "PROGRAM": str(program)}.get(word, word) for word in compile_line.split()]
    done = subprocess.run(words, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=TIMEOUT_SECONDS)
    if done.returncode != 0:
        raise Wrong(f"the program {name} does not compile:\n{done.stdout}")
    return program


def compare(page, number, expected, actual):
    if expected == actual:
        return True
    print("\n".join(difflib.unified_diff(
        expected.split("\n"), actual.split("\n"), f"{page.name}:{number} (shown)", f"{page.name}:{number} (printed)",
        lineterm="")))
    return False


def check(page, root, program_folder, compile_line):
    right = True
    programs = {}
    with tempfile.TemporaryDirectory(prefix="docs-") as name:
        # The tree as a reader has it, in a folder where an example may leave files.
        folder, scratch = pathlib.Path(name) / "tree", pathlib.Path(name) / "programs"
        folder.mkdir()
        scratch.mkdir()
        for entry in root.iterdir():
            if entry.name != ".git":
                (folder / entry.name).symlink_to(entry)
        for number, kind, name, block in examples(page.read_text()):
            if kind == "session":
                right &= compare(page, number, block, session(block, folder, program_folder))
            elif name is None:
                raise Wrong(f"line {number}: a {kind} needs a name")
            elif kind == "program":
                programs[name] = build(block, scratch, name, compile_line)
            elif name not in programs:
                raise Wrong(f"line {number}: no program {name} above")
            else:
                right &= compare(page, number, block, printed([programs[name]], folder, program_folder))
    return right


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--root", type=pathlib.Path, default=pathlib.Path(__file__).resolve().parents[2])
    parser.add_argument("--program", type=pathlib.Path, required=True)
    parser.add_argument("--compile", required=True)
    parser.add_argument("pages", nargs="+", type=pathlib.Path)
    options = parser.parse_args()
    right = True
    for page in options.pages:
        try:
            right &= check(page, options.root.resolve(), options.program.resolve().parent, options.compile)
        except Wrong as trouble:
            print(f"{page}: {trouble}")
            right = False
    return 0 if right else 1


if __name__ == "__main__":
    sys.exit(main())
