# SPDX-License-Identifier: MIT
"""Reads a book file with nothing but what docs/book-file.md tells of it, and tells what is not sound in it."""

import collections
import plistlib
import sqlite3
import struct
from decimal import Decimal

MASK = (1 << 64) - 1
FACTOR = 0x9E3779B97F4A7C15


def signed(word):
    return word - (1 << 64) if word >> 63 else word


def digest(cells):
    state = FACTOR

    def take(word):
        nonlocal state
        state = ((state ^ word) * FACTOR) & MASK
        state ^= state >> 32

    for cell in cells:
        if cell is None:
            take(5)
        elif isinstance(cell, int):
            take(1)
            take(cell & MASK)
        elif isinstance(cell, float):
            take(2)
            take(int.from_bytes(struct.pack("<d", cell), "little"))
        else:
            data, kind = (cell.encode(), 3) if isinstance(cell, str) else (cell, 4)
            take(8 * len(data) + kind)
            for start in range(0, len(data), 8):
                take(int.from_bytes(data[start : start + 8], "little"))
    return signed(state)


def quoted(name):
    return '"' + name.replace('"', '""') + '"'


class Book:
    """The rows of a file that nobody has open for writing."""

    def __init__(self, path):
        self.database = sqlite3.connect(f"file:{path}?mode=ro", uri=True)
        self.database.row_factory = sqlite3.Row
        self.tables = [name for (name,) in self.database.execute("SELECT name FROM sqlite_schema WHERE type = 'table'")]
        self.entities = {row["number"]: row["name"] for row in self.rows("book_entity")}
        self.objects = {}
        for table in self.tables:
            for row in self.rows(table) if not table.startswith("book_") else ():
                self.objects[row["_key"]] = {**dict(row), "table": table, "entity": self.entities.get(row["_entity"])}

    def close(self):
        self.database.close()

    def rows(self, table):
        return self.database.execute(f"SELECT * FROM {quoted(table)} ORDER BY 1").fetchall()

    def of(self, entity):
        return [each for _, each in sorted(self.objects.items()) if each["entity"] == entity]

    def members(self, entity, link, owner):
        """Those whose link leads to the owner, in their order."""
        found = [each for each in self.of(entity) if each[link] == owner]
        return sorted(found, key=lambda each: each.get(f"{link}.place") or 0)

    def identifiers(self):
        return {row["key"]: row["identifier"] for row in self.rows("book_identifier")}

    def findings(self):
        """What is not as the page says of a sound book."""
        found = []

        def expect(holds, text):
            if not holds:
                found.append(text)

        pragma = lambda name: self.database.execute(f"PRAGMA {name}").fetchone()[0]
        expect(pragma("application_id") == 1161972529, "application_id")
        expect(pragma("application_id").to_bytes(4, "big") == b"EBK1", "the letters")
        expect(pragma("user_version") == 2, "layout")
        expect(pragma("encoding") == "UTF-8", "encoding")
        kinds = {kind for (kind,) in self.database.execute("SELECT DISTINCT type FROM sqlite_schema")}
        expect(kinds <= {"table", "index"}, "other objects in the schema")

        sums = {}
        for table in self.tables:
            if table == "book_sum":
                continue
            rows = self.rows(table)
            expect(not rows or rows[0].keys()[-1] == "_digest", f"the last column of {table}")
            for row in rows:
                expect(digest(tuple(row)[:-1]) == row["_digest"], f"{table} {row[0]}: its digest")
            sums[table] = (len(rows), sum(row["_digest"] for row in rows) & MASK)
        told = {row["name"]: (row["rows"], row["digests"] & MASK) for row in self.rows("book_sum")}
        expect(told == sums, "book_sum")

        header = self.rows("book_header")
        expect([row[0] for row in header] == [1], "book_header")
        expect(all(len(row["identifier"]) == 32 and int(row["identifier"], 16) >= 0 for row in header), "identifier")

        commits = self.rows("book_commit")
        expect([row["number"] for row in commits] == list(range(1, len(commits) + 1)), "commits with gaps")
        last = 0
        for row in commits:
            expect(row["first_key"] > last and row["last_key"] >= row["first_key"] - 1, f"keys of commit {row['number']}")
            last = max(last, row["last_key"])
        keys = [row["_key"] for table in self.tables if not table.startswith("book_") for row in self.rows(table)]
        expect(len(keys) == len(set(keys)), "a key given twice")
        expect(all(0 < key <= last for key in keys), "a key that no save gave")
        expect(set(self.identifiers()) <= set(keys), "an identifier of no row")
        told = [(row["commit"], row["key"]) for row in self.rows("book_journal")]
        expect(told == sorted(told), "the order of the journal")
        expect(all(1 <= commit <= len(commits) and key <= last for commit, key in told), "the journal's commits")

        places = collections.defaultdict(list)
        for table in self.tables:
            if table.startswith("book_"):
                continue
            links = [row["from"] for row in self.database.execute(f"PRAGMA foreign_key_list({quoted(table)})")]
            for row in self.rows(table):
                for link in links:
                    expect(row[link] is None or row[link] in self.objects, f"{table} {row[0]}: {link} leads nowhere")
                    if f"{link}.place" in row.keys() and row[link] is not None:
                        places[table, link, row[link]].append(row[f"{link}.place"])
        expect(all(sorted(each) == list(range(len(each))) for each in places.values()), "places with gaps")
        return found


def instant(cell):
    """Seconds since 1 January 2001."""
    return struct.unpack(">d", cell)[0] if isinstance(cell, bytes) else cell


def decimal(cell):
    return None if cell is None else Decimal(cell)


def number(cell):
    if isinstance(cell, bytes):
        return struct.unpack(">d" if len(cell) == 8 else ">f", cell)[0]
    if isinstance(cell, str):
        if cell in ("true", "false"):
            return cell == "true"
        return int(cell[1:]) if cell[0] == "u" else Decimal(cell[1:])
    return cell


def archived(cell):
    """What an archive holds at its root, when that is a text, a number or a truth; else the objects of the archive."""
    if cell is None:
        return None
    archive = plistlib.loads(cell)
    root = archive["$objects"][archive["$top"]["root"].data]
    return root if isinstance(root, (str, int, float, bool)) else archive["$objects"]
