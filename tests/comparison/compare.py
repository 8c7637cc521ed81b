#!/usr/bin/env python3
"""Compares `kolum probe` with ExifTool, MediaInfo, ffprobe and Mutagen on files made for this.

    compare.py KOLUM FOLDER

KOLUM is the program, FOLDER gets the files. tables.py says what is compared; the messages of
failures say what to do. Prints how much was compared.
"""

import fnmatch
import functools
import os
import re
import sys

import make_files
import readings
import tables


@functools.lru_cache(maxsize=None)
def expression(pattern):
    return re.compile("".join(".*" if letter == "*" else re.escape(letter)
                              for letter in pattern.lstrip("?")))


class Row:
    """A row of a table, and which of its keys have been found."""

    def __init__(self, row):
        self.row = row
        self.patterns = {reader: getattr(row, reader).split() for reader in readings.READERS}
        self.found = set()

    def match(self, name, reader, key):
        """The pattern that matches, if any."""
        if not any(fnmatch.fnmatchcase(name, pattern) for pattern in self.row.files.split()):
            return None
        for pattern in self.patterns[reader]:
            if expression(pattern).fullmatch(key):
                self.found.add((reader, pattern))
                return pattern
        return None

    def dead(self):
        for reader, patterns in self.patterns.items():
            for pattern in patterns:
                if not pattern.startswith("?") and (reader, pattern) not in self.found:
                    yield f"{reader}'s {pattern}"


class Comparison:
    def __init__(self):
        self.same = [Row(row) for row in tables.SAME]
        self.different = [Row(row) for row in tables.DIFFERENT]
        self.left_out = [Row(row) for row in tables.LEFT_OUT]
        self.problems = []
        self.differ = set()
        self.never_differ = {}
        self.agreed = 0

    def first(self, rows, name, value, reader):
        """The row and its pattern, or twice None."""
        for row in rows:
            pattern = row.match(name, reader, value.key)
            if pattern:
                return row.row, pattern
        return None, None

    def value(self, name, document, reader, value):
        where = f"{name}: {reader}'s {value.key} = {str(value.value)[:80]!r}"
        different, pattern = self.first(self.different, name, value, reader)
        if different:
            if not agrees(different, document, value):
                self.differ.add((different, pattern))
            elif not pattern.startswith("?"):
                self.never_differ.setdefault((different, pattern), where)
            return
        same, _ = self.first(self.same, name, value, reader)
        if same:
            self.same_value(same, document, value, where)
        elif self.first(self.left_out, name, value, reader) == (None, None):
            self.problems.append(
                f"{where} is in no table. Say in tests/comparison/tables.py which key of the "
                "document holds it (SAME), or why none does (LEFT_OUT).")

    def same_value(self, row, document, value, where):
        found = values_of(row.key, document, value.index)
        if not found:
            self.problems.append(f"{where}, but the document has no {row.key}. Mend the document, "
                                 "or say why it has none (LEFT_OUT in tests/comparison/tables.py).")
        elif not row.how(value.value, found):
            self.problems.append(
                f"{where}, but the document's {row.key} is {str(found)[:200]}. Mend the document, "
                "or say why they differ (DIFFERENT in tests/comparison/tables.py).")
        else:
            self.agreed += 1

    def dead_rows(self):
        for found, where in self.never_differ.items():
            if found not in self.differ:
                self.problems.append(f"{where} agrees with the document's {found[0].key}: move its "
                                     "row from DIFFERENT to SAME in tests/comparison/tables.py.")
        for table, rows in (("SAME", self.same), ("DIFFERENT", self.different),
                            ("LEFT_OUT", self.left_out)):
            for row in rows:
                for key in row.dead():
                    about = getattr(row.row, "key", "") or row.row.reason
                    self.problems.append(
                        f"{table}: nothing matches {key} ({about[:60]}). Take it out of "
                        "tests/comparison/tables.py, or put \"?\" in front of it if other "
                        "releases show it.")


def values_of(keys, document, index):
    """The document's values for KEYS, of the stream or chapter INDEX if that is known."""
    found = []
    if not keys.startswith(("streams[]", "chapters[]")):
        index = None
    for key in keys.split():
        for value in document:
            if value.key == key and (index is None or value.index in (None, index)):
                found.append(value.value)
    return found


def agrees(row, document, value):
    found = values_of(row.key, document, value.index)
    return bool(found) and row.how(value.value, found)


def main(kolum, folder):
    os.makedirs(folder, exist_ok=True)
    make_files.make(folder)
    comparison = Comparison()
    for name in make_files.FILES:
        path = os.path.join(folder, name)
        document = readings.document(kolum, path)
        for reader, read in readings.READERS.items():
            for value in read(path):
                comparison.value(name, document, reader, value)
    comparison.dead_rows()
    for problem in comparison.problems:
        print(problem)
    print(f"{comparison.agreed} values agree; {len(comparison.problems)} problems")
    return 1 if comparison.problems or not comparison.agreed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2]))
