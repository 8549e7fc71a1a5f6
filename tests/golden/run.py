#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs golden documents: commands together with exactly what they print. README.md tells the form.

    run.py --program build/release/bin/estatebook [--update] DOCUMENT.test...
"""

import argparse
import difflib
import os
import pathlib
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
EXAMPLES = HERE.parents[1] / "examples"
SAMPLES = HERE.parent / "books"
TIMEOUT_SECONDS = 120
ENVIRONMENT = {"TZ": "UTC", "LC_ALL": "en_GB.UTF-8", "HOME": "/nonexistent"}
# What may be taken over from the caller: settings of the sanitizers.
INHERITED = ("ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS")

COMMAND, INPUT, OUT, ERROR, STATUS, UNENDED = "$ ", "<", ">", "!", "=", "\\"
EXPECTATIONS = (OUT, ERROR, STATUS, UNENDED)


class Malformed(Exception):
    pass


def read_text(path):
    return path.read_bytes().decode("utf-8", "surrogateescape")


def write_text(path, text):
    path.write_bytes(text.encode("utf-8", "surrogateescape"))


def lines_of(text):
    """Lines end with a line feed and with nothing else."""
    return text.removesuffix("\n").split("\n")


def marked(mark, text):
    """The lines of a text behind a mark; a last line without its line feed is followed by a line of its own."""
    if not text:
        return []
    lines = text.split("\n")
    ended = lines[-1] == ""
    if ended:
        lines.pop()
    shown = [f"{mark} {line}" if line else mark for line in lines]
    return shown if ended else shown + [f"{UNENDED} no line feed at the end"]


def unmarked(line):
    return line[2:] if line[1:2] == " " else line[1:]


def parse(text):
    """Pieces in order: ("prose", line) or ("run", command, input text)."""
    pieces = []
    after_command = False
    for number, line in enumerate(lines_of(text), 1):
        if line.startswith(COMMAND):
            pieces.append(["run", line[len(COMMAND):], ""])
            after_command = True
        elif line.startswith(INPUT) and after_command:
            pieces[-1][2] += unmarked(line) + "\n"
        elif line.startswith(EXPECTATIONS) and after_command:
            pass
        else:
            if line.startswith((INPUT,) + EXPECTATIONS):
                raise Malformed(f"line {number}: an expectation that follows no command")
            pieces.append(["prose", line])
            after_command = False
    if not any(kind == "run" for kind, *_ in pieces):
        raise Malformed("no command in it")
    return pieces


def run(command, given, folder, program):
    environment = dict(ENVIRONMENT, PATH=f"{program.parent}:/usr/bin:/bin")
    environment.update({name: os.environ[name] for name in INHERITED if name in os.environ})
    done = subprocess.run(
        ["/bin/sh", "-c", command],
        input=given.encode("utf-8", "surrogateescape"),
        capture_output=True,
        cwd=folder,
        env=environment,
        timeout=TIMEOUT_SECONDS,
    )
    return (
        done.stdout.decode("utf-8", "surrogateescape"),
        done.stderr.decode("utf-8", "surrogateescape"),
        done.returncode,
    )


def replay(text, folder, program):
    """The document as it reads with what its commands print now."""
    lines = []
    for kind, line, *given in parse(text):
        if kind == "prose":
            lines.append(line)
            continue
        lines.append(COMMAND + line)
        lines.extend(marked(INPUT, given[0]))
        out, error, status = run(line, given[0], folder, program)
        lines.extend(marked(OUT, out))
        lines.extend(marked(ERROR, error))
        if status != 0:
            lines.append(f"{STATUS} {status}")
    return "\n".join(lines) + "\n"


def check(path, program, books, update):
    expected = read_text(path)
    with tempfile.TemporaryDirectory(prefix="golden-") as folder:
        os.symlink(books, os.path.join(folder, "books"))
        os.symlink(EXAMPLES, os.path.join(folder, "examples"))
        os.symlink(SAMPLES, os.path.join(folder, "samples"))
        try:
            actual = replay(expected, folder, program)
        except Malformed as trouble:
            print(f"{path}: {trouble}")
            return False
        except subprocess.TimeoutExpired as trouble:
            print(f"{path}: no end after {trouble.timeout} s: {trouble.cmd[-1]}")
            return False
    if actual == expected:
        return True
    if update:
        write_text(path, actual)
        print(f"{path}: rewritten")
        return True
    difference = difflib.unified_diff(
        lines_of(expected), lines_of(actual), f"{path.name} (expected)", f"{path.name} (now)", lineterm=""
    )
    sys.stdout.buffer.write("\n".join(difference).encode("utf-8", "surrogateescape") + b"\n")
    sys.stdout.flush()
    return False


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--program", required=True, type=pathlib.Path, help="the program under test")
    parser.add_argument("--books", type=pathlib.Path, default=HERE / "books", help="what stands as books/")
    parser.add_argument("--update", action="store_true", help="rewrite the expectations")
    parser.add_argument("documents", nargs="+", type=pathlib.Path)
    options = parser.parse_args()
    program, books = options.program.resolve(), options.books.resolve()
    if not program.exists():
        parser.error(f"no program {program}")
    results = [check(path, program, books, options.update) for path in options.documents]
    return 0 if all(results) else 1


if __name__ == "__main__":
    sys.exit(main())
