#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks what may include what, and a few habits of the source files.

    tools/check_layers.py [ROOT]

Includes run downwards only, foreign headers are seen by one folder each and by no header, no two files include
each other in a ring, and each file begins with its SPDX line. The tables below are the whole law.
"""

import pathlib
import re
import sys

# From the ground up. A file may include its own layer and those before it.
LAYERS = [
    "platform/values",
    "platform/calendar",
    "platform/text",
    "platform/archive",
    "platform/system",
    "platform/observation",
    "platform/persistence",
    "platform/toolkit",
    "model",  # generated from src/store/EstateBook.model
    "tags",
    "billing",
    "statement",
    "store",
    "tenure",
    "ui",
    "reports",
]

# All foreign headers there are, by how they begin, and the folders whose sources may see them. Headers see none but
# those that all of programs/ may see, and there alone.
FOREIGN = {
    "boost/": ["src/platform/values"],
    "cctz/": ["src/platform/calendar"],
    "unicode/": ["src/platform/text"],
    "sqlite3.h": ["src/platform/persistence/store/sqlite"],
    "fmt/": ["programs"],
    "nlohmann/": ["programs"],
    "CLI/": ["programs"],
    "Q": ["programs/estatebook-desktop", "src/platform/toolkit/qt"],
    "cairo": ["programs/paper"],
    "pango/": ["programs/paper"],
    # The operating system's.
    "dlfcn.h": ["src/platform/system"],
    "poll.h": ["src/platform/system"],
    "pwd.h": ["src/platform/system"],
    "sys/epoll.h": ["src/platform/system"],
    "sys/file.h": ["src/platform/persistence/store"],
    "sys/stat.h": ["src/platform/persistence/store"],
    "sys/timerfd.h": ["src/platform/system"],
    "syslog.h": ["src/platform/system"],
    "fcntl.h": ["programs", "src/platform/persistence/store", "src/platform/system"],
    "locale.h": ["programs"],
    "signal.h": ["programs"],
    "sys/inotify.h": ["programs"],
    "sys/ioctl.h": ["programs"],
    "sys/signalfd.h": ["programs"],
    "unistd.h": ["programs", "src/platform/persistence/store", "src/platform/system"],
}

# Folders whose headers may show foreign types: libraries of their own, for those who know those types anyway.
OPEN_FOLDERS = ["src/platform/toolkit/qt", "programs/estatebook-desktop"]

# (file, what it includes) -> why. Each must be in use; one that is not is an error, too.
EXCEPTIONS = {
    ("src/platform/values/Object.hpp", "sys/single_threaded.h"): "counting must be seen by its callers, and asks how many threads there are",
    ("src/billing/TKDuePeriods.cpp", "tenure/TKTenure.hpp"): "due periods are reckoned from a tenure's figures",
    ("src/store/TKAccount.cpp", "tenure/TKTenure.hpp"): "an account asks its tenures which are active",
    ("src/store/TKProperty.cpp", "tenure/TKTenure.hpp"): "a property asks its tenures which are active",
    ("src/store/TKTenant.cpp", "tenure/TKTenure.hpp"): "a tenant asks its tenures which are active",
    ("src/store/TKTenureNote.cpp", "tenure/TKTenure.hpp"): "a note tells the name of its tenure",
    ("src/store/TKTenureTransaction.cpp", "tenure/TKTenure.hpp"): "a payment announces its tenure's totals",
}

# Headers that the build makes, by how they begin. What stands in a layer's folder belongs to that layer.
GENERATED = ("EstateBook_ModelExport.hpp", "model/")

PRODUCT_FOLDERS = ["src", "programs"]
OTHER_FOLDERS = ["tests", "bench", "fuzz", "tools", "cmake", "packaging", "examples"]
ROOT_FILES = ["CMakeLists.txt", ".clang-format", ".clang-tidy", "demo", "desktop", "test", "check-all", "torture", ".ci/run"]
SPDX = "SPDX-License-Identifier: MIT"
SPDX_SUFFIXES = {".hpp", ".h", ".cpp", ".py", ".cmake", ".model"}

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)
STANDARD = re.compile(r"[a-z_0-9]+")
# (pattern, in headers only?, what is wrong with it)
FORBIDDEN = [
    (re.compile(r"^\s*using\s+namespace\b", re.MULTILINE), True, "using namespace in a header"),
    (re.compile(r"#\s*include\s*<iostream>"), True, "<iostream> in a header"),
    (re.compile(r"#\s*include\s*<bits/"), False, "a private header of the compiler"),
    (re.compile(r'#\s*include\s*"[^"]*\.\./'), False, "an include that climbs with ../"),
    (re.compile(r"\b(TODO|FIXME|XXX)\b"), False, "unfinished work"),
]


class Checker:
    def __init__(self, root, layers=None, foreign=None, exceptions=None, open_folders=None):
        self.root = pathlib.Path(root)
        self.layers = LAYERS if layers is None else layers
        self.foreign = FOREIGN if foreign is None else foreign
        self.exceptions = EXCEPTIONS if exceptions is None else exceptions
        self.open_folders = OPEN_FOLDERS if open_folders is None else open_folders
        self.used = set()
        self.found = []

    def complain(self, path, text, line, message):
        number = text.count("\n", 0, line) + 1 if line is not None else 1
        self.found.append(f"{path.relative_to(self.root)}:{number}: {message}")

    def excepted(self, path, included):
        key = (str(path.relative_to(self.root)), included)
        if key in self.exceptions:
            self.used.add(key)
        return key in self.exceptions

    def layer_of(self, name):
        """The rank of the layer that a path below src/ belongs to, or None."""
        folder = pathlib.PurePosixPath(name).parent
        for candidate in (folder, *folder.parents):
            if str(candidate) in self.layers:
                return self.layers.index(str(candidate))
        return None

    def check_product_file(self, path):
        text = path.read_text(encoding="utf-8")
        header = path.suffix != ".cpp"
        in_src = path.is_relative_to(self.root / "src")
        rank = self.layer_of(path.relative_to(self.root / "src")) if in_src else len(self.layers)
        if rank is None:
            self.complain(path, text, None, "stands in no layer")
            return set()
        if header and "#pragma once" not in text:
            self.complain(path, text, None, "no #pragma once")
        for pattern, headers_only, message in FORBIDDEN:
            if header or not headers_only:
                for match in pattern.finditer(text):
                    self.complain(path, text, match.start(), message)
        own = set()
        for match in INCLUDE.finditer(text):
            at, (quote, included) = match.start(), match.groups()
            if quote == "<":
                self.check_foreign(path, text, at, header, included)
            elif not self.excepted(path, included):
                own |= self.check_own(path, text, at, rank, in_src, included)
        return own

    def is_open(self, path):
        return any(path.is_relative_to(self.root / folder) for folder in self.open_folders)

    def check_foreign(self, path, text, at, header, included):
        if STANDARD.fullmatch(included) or self.excepted(path, included):
            return
        if (self.root / "src" / included).exists():
            self.complain(path, text, at, f"<{included}> is our own: write it in quotes")
            return
        folders = next((folders for prefix, folders in self.foreign.items() if included.startswith(prefix)), None)
        if folders is None:
            self.complain(path, text, at, f"<{included}> is foreign and in no table")
        elif (header and not self.is_open(path)
              and (path.is_relative_to(self.root / "src") or "programs" not in folders)):
            self.complain(path, text, at, f"<{included}> in a header")
        elif not any(path.is_relative_to(self.root / folder) for folder in folders):
            self.complain(path, text, at, f"<{included}> belongs to {' and '.join(folders)}")

    def check_own(self, path, text, at, rank, in_src, included):
        target = self.root / "src" / included
        generated = included.startswith(GENERATED)
        if not target.exists() and not generated:
            if in_src or not (self.root / "programs" / included).exists():
                self.complain(path, text, at, f'no "{included}" below src/')
            return set()
        if self.is_open(target) and in_src and not self.is_open(path):
            self.complain(path, text, at, f'"{included}" belongs to another library')
            return set()
        other = self.layer_of(included)
        if other is not None and other > rank:
            self.complain(path, text, at, f'"{included}" lies above: {self.layers[other]} over {self.layers[rank]}')
            return set()
        return set() if generated else {target}

    def check_rings(self, includes):
        """Depth first; a file met while it is still open closes a ring."""
        state = {}

        def visit(path, trail):
            if state.get(path) == "done":
                return
            if path in trail:
                ring = [str(each.relative_to(self.root)) for each in trail[trail.index(path):] + [path]]
                self.found.append(f"{ring[0]}:1: a ring of includes: {' -> '.join(ring)}")
                return
            for other in sorted(includes.get(path, ())):
                visit(other, trail + [path])
            state[path] = "done"

        for path in sorted(includes):
            visit(path, [])

    def check_spdx(self, path):
        with path.open(encoding="utf-8", errors="replace") as stream:
            head = [stream.readline(), stream.readline()]
        wants = path.suffix in SPDX_SUFFIXES or path.name in ("CMakeLists.txt", "packages")
        wants = wants or str(path.relative_to(self.root)) in ROOT_FILES or head[0].startswith("#!")
        if wants and SPDX not in (head[1] if head[0].startswith("#!") else head[0]):
            self.complain(path, "", None, "no SPDX line at the top")

    def files(self, folders):
        for folder in folders:
            for path in sorted((self.root / folder).rglob("*")):
                if path.is_file() and not path.is_symlink() and "__pycache__" not in path.parts:
                    yield path

    def run(self):
        includes = {}
        for path in self.files(PRODUCT_FOLDERS):
            if path.suffix in (".hpp", ".h", ".cpp"):
                includes[path] = self.check_product_file(path)
        self.check_rings(includes)
        for path in self.files(PRODUCT_FOLDERS + OTHER_FOLDERS):
            self.check_spdx(path)
        for name in ROOT_FILES:
            if (self.root / name).is_file():
                self.check_spdx(self.root / name)
        for name, included in sorted(set(self.exceptions) - self.used):
            self.found.append(f'{name}:1: the exception for "{included}" is used no more; take it out of the table')
        return len(includes)


def main():
    root = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parents[1]
    checker = Checker(root)
    count = checker.run()
    for line in checker.found:
        print(line)
    print(f"layers: {count} files, {len(checker.found)} findings")
    return 1 if checker.found else 0


if __name__ == "__main__":
    sys.exit(main())
