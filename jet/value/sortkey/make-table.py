#!/usr/bin/env python3
"""Makes SortKeyTable.inc, the table of the weights of all UTF-16 units, from weights.txt.

    make-table.py            writes the table beside this script
    make-table.py --check    exit code 1 if the existing table differs from the one that would be written
"""

import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
SOURCE = os.path.join(HERE, "weights.txt")
TARGET = os.path.join(HERE, "SortKeyTable.inc")

CLASSES = {"letters": 1, "kana": 2, "marks": 3, "accents": 4, "unknown": 5}
COUNTS_UP, TWO_BYTES, EXPANDS, SMALL_KANA = 0x08, 0x10, 0x20, 0x40
NO_ACCENT = 2


def read_entries():
    """All entries of weights.txt as (first, last, section, weights, counts up), in order of the units."""
    entries, section = [], None
    with open(SOURCE, encoding="ascii") as lines:
        for line in lines:
            line = line.split("#")[0].strip()
            if line.startswith("["):
                section = line.strip("[]")
                continue
            for entry in line.split():
                units, _, weights = entry.partition("=")
                first, _, last = units.partition("..")
                entries.append((int(first, 16), int(last or first, 16), section,
                                weights.rstrip("+"), weights.endswith("+")))
    return sorted(entries)


def one_byte_codes(entries):
    """No byte is both a code of its own and the first byte of a longer one."""
    codes = set()
    for _, _, section, weights, _ in entries:
        code = weights.split("/")[0].split(":")[0]
        if section in ("letters", "kana") and len(code) == 2:
            codes.add(int(code, 16))
    return codes


def cut(codes, single):
    """The run of codes as a list of codes."""
    parts, at = [], 0
    while at < len(codes):
        length = 1 if codes[at] in single else 2
        parts.append(codes[at:at + length])
        at += length
    return parts


class Table:
    def __init__(self):
        self.ranges, self.expansions = [], []
        self.next_unit = 0

    def add(self, first, code, value, kind):
        if self.ranges and self.ranges[-1][1:] == (code, value, kind) and not kind & COUNTS_UP:
            return
        self.ranges.append((first, code, value, kind))

    def expansion(self, parts, accents):
        found = (parts, accents)
        if found not in self.expansions:
            self.expansions.append(found)
        return self.expansions.index(found)

    def add_entry(self, entry, single):
        first, last, section, weights, counts_up = entry
        if first < self.next_unit:
            raise ValueError("two entries for U+%04X" % first)
        if first > self.next_unit:
            self.add(self.next_unit, 0, 0, 0)
        kind = CLASSES[section] | (COUNTS_UP if counts_up else 0)
        code = value = 0
        if section in ("marks", "accents"):
            value = int(weights, 16)
        elif section != "unknown":
            weights, _, kana = weights.partition(":")
            codes, _, accents = weights.partition("/")
            parts = cut(bytes.fromhex(codes), single)
            accents = bytes.fromhex(accents) or bytes([NO_ACCENT]) * len(parts)
            if len(parts) != len(accents):
                raise ValueError("U+%04X: %d codes, %d accents" % (first, len(parts), len(accents)))
            if kana == "2":
                kind |= SMALL_KANA
            if len(parts) > 1:
                kind |= EXPANDS
                code = self.expansion(parts, accents)
            else:
                kind |= TWO_BYTES if len(parts[0]) == 2 else 0
                code, value = int.from_bytes(parts[0], "big"), accents[0]
        self.add(first, code, value, kind)
        self.next_unit = last + 1


def build():
    entries = read_entries()
    single = one_byte_codes(entries)
    table = Table()
    for entry in entries:
        table.add_entry(entry, single)
    if table.next_unit <= 0xFFFF:
        table.add(table.next_unit, 0, 0, 0)
    return table


def rows(cells):
    """Cells of a brace list, as many a line as fit."""
    lines, line = [], "   "
    for cell in cells:
        if len(line) + 2 + len(cell) > 118:
            lines.append(line)
            line = "   "
        line += " " + cell + ","
    return "\n".join(lines + [line])


def text_of(table):
    ranges = ["{0x%04X, 0x%X, %d, 0x%02X}" % r for r in table.ranges]
    # For each block of 256 units: the range of its first unit.
    pages, at = [], 0
    for page in range(256):
        while at + 1 < len(table.ranges) and table.ranges[at + 1][0] <= page * 256:
            at += 1
        pages.append(str(at))
    expansions = []
    for parts, accents in table.expansions:
        codes = b"".join(parts)
        expansions.append("{%d, %d, {%s}, {%s}}" % (
            len(codes), len(accents), ", ".join("0x%02X" % b for b in codes),
            ", ".join("0x%02X" % b for b in accents)))
    return ("// Made from weights.txt by make-table.py; do not edit.\n"
            "constexpr SortRange kRanges[] = {\n%s\n};\n"
            "constexpr std::uint16_t kFirstRangeOfPage[] = {\n%s\n};\n"
            "constexpr SortExpansion kExpansions[] = {\n%s\n};\n"
            % (rows(ranges), rows(pages), rows(expansions)))


def main():
    text = text_of(build())
    if "--check" in sys.argv[1:]:
        with open(TARGET, encoding="ascii") as there:
            if there.read() != text:
                print("FAIL sort_key_table: it is not what make-table.py makes of weights.txt; run it again")
                return 1
        print("PASS sort_key_table")
        return 0
    with open(TARGET, "w", encoding="ascii", newline="\n") as target:
        target.write(text)
    return 0


if __name__ == "__main__":
    sys.exit(main())
