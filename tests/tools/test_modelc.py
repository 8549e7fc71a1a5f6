#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The compiler of the model file: what it makes, and what it refuses."""

import pathlib
import struct
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
MODELC = ROOT / "tools" / "modelc"

GOOD = """model Small
entity House class House
    attribute name string indexed
    to-many rooms Room inverse house delete cascade
entity Room class Room
    attribute width decimal transient   # a remark
    to-one house House inverse rooms
    derived label
"""

REFUSED = {
    "an empty file": ("", "there is no model in it"),
    "an entity before the model": ("entity A class A\n", ":1: expected a model and an entity before this line"),
    "a second model": ("model M\nentity A class A\nmodel N\n", ':3: "model" is no line of a model'),
    "a word nobody knows": ("model M\nentity A class A\n\n  property x string\n", ':4: "property" is no line'),
    "an entity without a class": ("model M\nentity A\n", ":2: an entity is written:"),
    "an entity twice": ("model M\nentity A class A\nentity A class A\n", ":3: the entity A is described twice"),
    "an attribute without a type": ("model M\nentity A class A\nattribute x\n", ":3: an attribute is written:"),
    "an unknown type": ("model M\nentity A class A\nattribute x text\n", ":3: an attribute is written:"),
    "a class of objects nobody knows": ("model M\nentity A class A\nattribute x object Castle\n", ":3: no header is known"),
    "an index over what is not saved": (
        "model M\nentity A class A\nattribute x string transient indexed\n", ":3: only what is saved, and is a string or a decimal"),
    "an index over what no column compares": (
        "model M\nentity A class A\nattribute x number indexed\n", ":3: only what is saved, and is a string or a decimal"),
    "a name that is none": ("model M\nentity A class A\nattribute 2nd string\n", ":3: an attribute is written:"),
    "a derived key that is none": ("model M\nentity A class A\nderived a.b\n", ':3: "a.b" is no name of a key'),
    "a relationship without an inverse": ("model M\nentity A class A\nto-one a A\n", ":3: a relationship is written:"),
    "an unknown rule": (GOOD.replace("cascade", "forget"), ":4: a relationship is written:"),
    "a parent that is not there": ("model M\nentity A : B class A\n", "the parent B of A is not described"),
    "an entity that is its own parent": ("model M\nentity A : A class A\n", "A is its own ancestor"),
    "parents in a circle": ("model M\nentity A : B class A\nentity B : A class B\n", "is its own ancestor"),
    "parents that lead into a circle": (
        "model M\nentity C : A class C\nentity A : B class A\nentity B : A class B\n", "is its own ancestor"),
    "too many ancestors": (
        "model M\nentity A class A\n" + "".join(f"entity {b} : {a} class {b}\n" for a, b in zip("ABCD", "BCDE")),
        "E has more than 3 ancestors"),
    "a property twice": ("model M\nentity A class A\nattribute x string\nattribute x date\n", "A has the property x twice"),
    "a property of an ancestor again": (
        "model M\nentity A class A\nattribute x string\nentity B : A class B\nattribute x string\n",
        "B has the property x twice"),
    "a target that is not there": (GOOD.replace("house House", "house Castle"), "leads to Castle, which is not described"),
    "an inverse that is not there": (GOOD.replace("inverse rooms", "inverse walls"), "are not each other's inverses"),
    "many with many": (GOOD.replace("to-one house", "to-many house"), "joins many with many"),
    "one class for two shapes": (
        "model M\nentity A class A\nattribute x string\nentity B class A\nattribute y string\n",
        "B and A share the class A but not its properties"),
    "more keys than there is room for": (
        "model M\nentity A class A\n" + "".join(f"attribute a{number} string\n" for number in range(127)),
        "a model has at most 126 keys, this one has 127"),
}


def fnv(data):
    value = 0xcbf29ce484222325
    for byte in data:
        value = ((value ^ byte) * 0x100000001b3) & 0xffffffffffffffff
    return value


class ModelcTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.model = self.folder / "Small.model"

    def run_modelc(self, text, *arguments):
        self.model.write_bytes(text if isinstance(text, bytes) else text.encode())
        return subprocess.run([sys.executable, MODELC, self.model, *arguments], text=True, capture_output=True, timeout=30)

    def assert_refused(self, done, reason):
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stdout, "")
        self.assertEqual(len(done.stderr.splitlines()), 1, done.stderr)
        self.assertTrue(done.stderr.startswith("modelc: "), done.stderr)
        self.assertIn(reason, done.stderr)

    def test_a_bad_model_is_refused_with_one_line_and_nothing_is_written(self):
        for what, (text, reason) in REFUSED.items():
            with self.subTest(what):
                resource = self.folder / "Small.momd"
                done = self.run_modelc(text, "--resource", resource, "--sources", self.folder / "generated")
                self.assert_refused(done, reason)
                self.assertIn(str(self.model), done.stderr)
                self.assertFalse(resource.exists())
                self.assertFalse((self.folder / "generated").exists())

    def test_a_file_that_is_no_text_is_refused(self):
        self.assert_refused(self.run_modelc(b"model \xff\n", "--list-sources"), "it is no UTF-8 text")

    def test_a_missing_file_is_refused(self):
        done = subprocess.run([sys.executable, MODELC, self.folder / "none.model", "--list-sources"],
                              text=True, capture_output=True)
        self.assert_refused(done, "No such file")

    def test_the_resource_is_sealed(self):
        resource = self.folder / "below" / "Small.momd"
        done = self.run_modelc(GOOD, "--resource", resource)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        content = resource.read_bytes()
        magic, form, length, total = struct.unpack("<8sIIQ", content[:24])
        self.assertEqual((magic, form, length, total), (b"EBMODEL\n", 2, len(content) - 24, fnv(content[24:])))
        self.assertEqual(content[24:33], b"\x05\x00Small\x02\x00")
        self.assertIn(b"\x04\x00name\x01\x00\x00\x01", content)
        self.assertIn(b"\x05\x00width\x03\x01\x00\x00", content)

    def test_compiling_twice_gives_the_same_bytes(self):
        contents = []
        for name in ("first", "second"):
            self.assertEqual(self.run_modelc(GOOD, "--resource", self.folder / name).returncode, 0)
            contents.append((self.folder / name).read_bytes())
        self.assertEqual(*contents)

    def test_the_sources_listed_are_those_written_and_stay_untouched_when_nothing_changed(self):
        listed = self.run_modelc(GOOD, "--list-sources").stdout.strip().split(";")
        generated = self.folder / "generated"
        self.assertEqual(self.run_modelc(GOOD, "--sources", generated).returncode, 0)
        written = [path for path in generated.rglob("*") if path.is_file()]
        self.assertEqual(sorted(listed), sorted(str(path.relative_to(generated)) for path in written))
        times = [path.stat().st_mtime_ns for path in written]
        self.assertEqual(self.run_modelc(GOOD, "--sources", generated).returncode, 0)
        self.assertEqual(times, [path.stat().st_mtime_ns for path in written])
        for path in written:
            self.assertIn("Generated from", path.read_text().splitlines()[1])

    def test_keys_are_numbered_in_the_order_in_which_they_are_named(self):
        self.assertEqual(self.run_modelc(GOOD, "--sources", self.folder).returncode, 0)
        keys = (self.folder / "model" / "Keys.hpp").read_text()
        for number, name in enumerate(["name", "rooms", "width", "house", "label"], 1):
            self.assertIn(f"platform::Key {name}{{{number}}};", keys)

    def test_the_librarys_own_model_compiles(self):
        own = (ROOT / "src" / "store" / "EstateBook.model").read_text()
        self.assertEqual(self.run_modelc(own, "--resource", self.folder / "own").returncode, 0)


if __name__ == "__main__":
    unittest.main()
