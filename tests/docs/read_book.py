#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Somebody else's program reads a book: what it finds there is what the document said, and what was changed there is found out.

    read_book.py --program build/release/bin/estatebook --example examples/harbour-street.json
"""

import argparse
import datetime
import json
import pathlib
import random
import sqlite3
import subprocess
import sys
import tempfile
import unittest
import zoneinfo
from decimal import Decimal

from book_reader import Book, archived, decimal, instant, number, quoted

CYCLES = {"day": 1, "week": 7, "month": 30, "year": 365}
BEHAVIOURS = {"start": 0, "partial": 1, "end": 2}
REFERENCE = datetime.datetime(2001, 1, 1, tzinfo=datetime.timezone.utc)
ARGUMENTS = None


def made(folder, *before):
    book = pathlib.Path(folder) / "book.estatebook"
    for words in (*before, ("import", ARGUMENTS.example, str(book))):
        subprocess.run([ARGUMENTS.program, *(str(word) for word in words)], check=True, stdout=subprocess.DEVNULL)
    return book


def seconds(text, zone):
    if text is None:
        return None
    when = datetime.datetime.fromisoformat(text)
    return ((when if when.tzinfo else when.replace(tzinfo=zone)) - REFERENCE).total_seconds()


class Document:
    """The parts of a document in the words of a file."""

    def __init__(self, document):
        self.document = document
        self.zone = zoneinfo.ZoneInfo(document["timeZone"])

    def date(self, part, name):
        return seconds(part.get(name), self.zone)

    def transactions(self, part):
        for each in part.get("transactions", ()):
            amount = each.get("amount")
            yield (each["id"], None if amount is None else Decimal(amount), each.get("what"), self.date(each, "when"),
                   self.date(each, "processedOn"), each.get("receipt"), each.get("adjustment"), each.get("tags", []))

    def notes(self, part):
        for each in part.get("notes", ()):
            content = each.get("content")
            if isinstance(content, list):
                content = "".join(piece if isinstance(piece, str) else piece["text"] for piece in content)
            yield (each["id"], each.get("subject"), content, self.date(each, "createdDate"), each.get("createdBy"),
                   each.get("tags", []))

    def terms(self, tenure):
        decimals = [None if tenure.get(name) is None else Decimal(tenure[name]) for name in ("rentalAmount", "bondAmount")]
        cycles = [CYCLES.get(tenure.get(name), tenure.get(name)) for name in ("rentalBillingCycle", "advanceBillingCycle")]
        behaviour = tenure.get("chargeBehaviour")
        return (*decimals, *cycles, tenure.get("rentalPeriod"), tenure.get("advancePeriod"),
                BEHAVIOURS.get(behaviour, behaviour), tenure.get("chargeFullDuration"),
                *(self.date(tenure, name) for name in ("startDate", "endDate", "lastBalancedDate")))


class File:
    """The same of a book file."""

    def __init__(self, book):
        self.book = book
        self.names = book.identifiers()

    def name(self, key):
        return None if key is None else self.names[key]

    def tags(self, entity, owner):
        return [tag["name"] for tag in self.book.members(entity, "owner", owner["_key"])]

    def transactions(self, entity, link, owner):
        for each in self.book.members(entity, link, owner["_key"]):
            yield (self.name(each["_key"]), decimal(each["amount"]), each["what"], instant(each["when"]),
                   instant(each["processedOn"]), each["receipt"], number(each["adjustment"]),
                   self.tags("TransactionTag", each))

    def notes(self, entity, link, owner):
        for each in self.book.members(entity, link, owner["_key"]):
            content = archived(each["content"])
            if isinstance(content, list):  # one with attributes
                text = content[1]["NSString"]
                content = content[text.data] if not isinstance(text, str) else text
            yield (self.name(each["_key"]), each["subject"], content, instant(each["createdDate"]), each["createdBy"],
                   self.tags("NoteTag", each))

    def terms(self, tenure):
        return (*(decimal(tenure[name]) for name in ("rentalAmount", "bondAmount")),
                *(number(tenure[name]) for name in ("rentalBillingCycle", "advanceBillingCycle", "rentalPeriod",
                                                    "advancePeriod", "chargeBehaviour", "chargeFullDuration")),
                *(instant(tenure[name]) for name in ("startDate", "endDate", "lastBalancedDate")))


class ReadBookTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def opened(self, path):
        book = Book(path)
        self.addCleanup(book.close)
        return book

    def test_it_holds_what_the_document_says(self):
        said = json.loads(pathlib.Path(ARGUMENTS.example).read_text(encoding="utf-8"))
        document = Document(said)
        book = self.opened(made(self.folder))
        file = File(book)
        settings = {row["name"]: archived(row["value"]) for row in book.of("State")}
        self.assertEqual({**said["settings"], "TimeZone": said["timeZone"]}, settings)

        for entity, owner, parts in (("Property", "property", said["properties"]), ("Tenant", "tenant", said["tenants"])):
            rows = book.of(entity)
            self.assertEqual([part["id"] for part in parts], [file.name(row["_key"]) for row in rows])
            for part, row in zip(parts, rows):
                self.assertEqual((part.get("name"), part.get("addressBookID"), part.get("tags", [])),
                                 (row["name"], row["addressBookID"], file.tags("AccountTag", row)))
                self.assertEqual(list(document.notes(part)), list(file.notes(f"{entity}Note", owner, row)))
                if entity == "Property":
                    self.assertEqual(list(document.transactions(part)),
                                     list(file.transactions("PropertyTransaction", "property", row)))
                    self.assertEqual(part.get("available"), number(row["available"]))
        rows = book.of("Tenure")
        self.assertEqual(len(said["tenures"]), len(rows))
        for part, row in zip(said["tenures"], rows):
            self.assertEqual((part["id"], part.get("property"), part.get("tenant")),
                             (file.name(row["_key"]), file.name(row["property"]), file.name(row["tenant"])))
            self.assertEqual(document.terms(part), file.terms(row))
            self.assertEqual(list(document.transactions(part)),
                             list(file.transactions("TenureTransaction", "tenure", row)))
            self.assertEqual(list(document.notes(part)), list(file.notes("TenureNote", "tenure", row)))

    def test_it_is_sound_also_when_it_has_a_history(self):
        self.assertEqual([], self.opened(made(self.folder)).findings())
        with tempfile.TemporaryDirectory() as folder:
            path = made(folder, ("init", pathlib.Path(folder) / "book.estatebook"))
            book = Book(path)
            self.assertEqual([], book.findings())
            self.assertGreater(len(book.rows("book_commit")), 1)
            book.close()

    def test_whatever_is_changed_is_found_out(self):
        path = made(self.folder)
        seed = random.randrange(1 << 32)
        chance = random.Random(seed)
        sound = path.read_bytes()
        for change in range(60):
            path.write_bytes(sound)
            database = sqlite3.connect(path)
            tables = [name for (name,) in database.execute("SELECT name FROM sqlite_schema WHERE type = 'table'")
                      if database.execute(f"SELECT count(*) FROM {quoted(name)}").fetchone()[0]]
            table = chance.choice(tables)
            place = chance.choice(database.execute(f"SELECT rowid FROM {quoted(table)}").fetchall())[0]
            row = database.execute(f"SELECT * FROM {quoted(table)} WHERE rowid = ?", (place,))
            column, cell = chance.choice([(each[0], value) for each, value in zip(row.description, row.fetchone())][1:])
            if chance.random() < 0.2:
                what = f"seed {seed}, change {change}: {table} {place} deleted"
                database.execute(f"DELETE FROM {quoted(table)} WHERE rowid = ?", (place,))
            else:
                new = {int: lambda: cell ^ (1 << chance.randrange(40)), float: lambda: cell + 1, str: lambda: cell + "x",
                       bytes: lambda: cell + b"x"}.get(type(cell), lambda: 7)()
                what = f"seed {seed}, change {change}: {table} {place} {column}: {cell!r} to {new!r}"
                try:
                    database.execute(f"UPDATE {quoted(table)} SET {quoted(column)} = ? WHERE rowid = ?", (new, place))
                except sqlite3.IntegrityError:
                    database.close()
                    continue
            database.commit()
            database.close()
            book = Book(path)
            self.assertNotEqual([], book.findings(), what)
            book.close()


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--program", required=True)
    parser.add_argument("--example", required=True)
    ARGUMENTS = parser.parse_args()
    unittest.main(argv=sys.argv[:1])
