#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Each rule of tools/check_layers.py finds what breaks it, and nothing else."""

import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools"))
from check_layers import Checker  # noqa: E402

LAYERS = ["ground", "middle", "top"]
FOREIGN = {"unicode/": ["src/middle"], "CLI/": ["programs"], "cairo": ["programs/paper"]}
SPDX = "// SPDX-License-Identifier: MIT\n"


class LayerTest(unittest.TestCase):
    def findings(self, files, exceptions=None):
        with tempfile.TemporaryDirectory() as root:
            for name, text in files.items():
                path = pathlib.Path(root, name)
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text)
            checker = Checker(root, LAYERS, FOREIGN, exceptions or {}, ["src/middle/open"])
            checker.run()
            return checker.found

    @staticmethod
    def header(*lines):
        return SPDX + "#pragma once\n" + "".join(f"{line}\n" for line in lines)

    @staticmethod
    def source(*lines):
        return SPDX + "".join(f"{line}\n" for line in lines)

    def test_includes_that_run_downwards_are_right(self):
        self.assertEqual(self.findings({
            "src/ground/A.hpp": self.header("#include <vector>"),
            "src/middle/B.hpp": self.header('#include "ground/A.hpp"'),
            "src/top/C.cpp": self.source('#include "middle/B.hpp"', '#include "ground/A.hpp"'),
            "programs/p/main.cpp": self.source('#include "middle/B.hpp"', "#include <CLI/CLI.hpp>"),
        }), [])

    def test_an_include_that_runs_upwards_is_found(self):
        self.assertEqual(self.findings({
            "src/ground/A.cpp": self.source('#include "top/C.hpp"'),
            "src/top/C.hpp": self.header(),
        }), ['src/ground/A.cpp:2: "top/C.hpp" lies above: top over ground'])

    def test_an_exception_lets_one_file_include_upwards(self):
        self.assertEqual(self.findings({
            "src/ground/A.cpp": self.source('#include "top/C.hpp"'),
            "src/top/C.hpp": self.header(),
        }, {("src/ground/A.cpp", "top/C.hpp"): "makes one"}), [])

    def test_an_exception_that_nobody_uses_is_found(self):
        self.assertIn("is used no more", self.findings({}, {("src/ground/A.cpp", "top/C.hpp"): "made one"})[0])

    def test_a_foreign_header_in_another_folder_is_found(self):
        self.assertEqual(self.findings({
            "src/middle/B.cpp": self.source("#include <unicode/uchar.h>"),
            "src/top/C.cpp": self.source("#include <unicode/uchar.h>"),
        }), ["src/top/C.cpp:2: <unicode/uchar.h> belongs to src/middle"])

    def test_a_foreign_header_in_a_header_is_found(self):
        self.assertEqual(self.findings({
            "src/middle/B.hpp": self.header("#include <unicode/uchar.h>"),
        }), ["src/middle/B.hpp:3: <unicode/uchar.h> in a header"])

    def test_a_library_of_its_own_may_show_foreign_types(self):
        self.assertEqual(self.findings({
            "src/middle/open/B.hpp": self.header("#include <unicode/uchar.h>"),
            "src/middle/open/B.cpp": self.source('#include "middle/open/B.hpp"'),
            "programs/p/main.cpp": self.source('#include "middle/open/B.hpp"'),
        }), [])

    def test_an_include_of_another_library_is_found(self):
        self.assertEqual(self.findings({
            "src/middle/open/B.hpp": self.header(),
            "src/middle/A.cpp": self.source('#include "middle/open/B.hpp"'),
            "src/top/C.cpp": self.source('#include "middle/open/B.hpp"'),
        }), ['src/middle/A.cpp:2: "middle/open/B.hpp" belongs to another library',
             'src/top/C.cpp:2: "middle/open/B.hpp" belongs to another library'])

    def test_what_one_folder_of_the_programs_sees_stays_in_its_sources(self):
        self.assertEqual(self.findings({
            "programs/p/A.hpp": self.header("#include <CLI/CLI.hpp>"),
            "programs/paper/B.cpp": self.source("#include <cairo-pdf.h>"),
        }), [])
        self.assertEqual(self.findings({
            "programs/p/A.cpp": self.source("#include <cairo.h>"),
            "programs/paper/B.hpp": self.header("#include <cairo.h>"),
        }), ["programs/p/A.cpp:2: <cairo.h> belongs to programs/paper",
             "programs/paper/B.hpp:3: <cairo.h> in a header"])

    def test_an_unknown_foreign_header_is_found(self):
        self.assertEqual(self.findings({
            "src/middle/B.cpp": self.source("#include <pugixml.hpp>"),
        }), ["src/middle/B.cpp:2: <pugixml.hpp> is foreign and in no table"])

    def test_a_file_outside_the_layers_is_found(self):
        self.assertEqual(self.findings({"src/else/A.cpp": self.source()}), ["src/else/A.cpp:1: stands in no layer"])

    def test_a_header_that_is_not_there_is_found(self):
        self.assertEqual(self.findings({
            "src/top/C.cpp": self.source('#include "Other.hpp"'),
        }), ['src/top/C.cpp:2: no "Other.hpp" below src/'])

    def test_a_ring_of_includes_is_found_once(self):
        found = self.findings({
            "src/top/A.hpp": self.header('#include "top/B.hpp"'),
            "src/top/B.hpp": self.header('#include "top/A.hpp"'),
        })
        self.assertEqual(found, [
            "src/top/A.hpp:1: a ring of includes: src/top/A.hpp -> src/top/B.hpp -> src/top/A.hpp"])

    def test_habits_that_do_harm_are_found(self):
        found = self.findings({
            "src/top/A.hpp": SPDX + "using namespace std;\n",
            "src/top/B.cpp": "int b;\n",
            "tools/script": "#!/bin/sh\necho\n",
        })
        self.assertEqual(found, [
            "src/top/A.hpp:1: no #pragma once",
            "src/top/A.hpp:2: using namespace in a header",
            "src/top/B.cpp:1: no SPDX line at the top",
            "tools/script:1: no SPDX line at the top",
        ])


if __name__ == "__main__":
    unittest.main()
