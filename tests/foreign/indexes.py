"""Compares every index of a file with the rows of its table.

On purpose it shares no code with the engine, only weights.txt, the weights of the sort order.
In each index the entries must ascend, links and nodes must lead to the same leaves, the map must name exactly these
pages, and the entries must be those that follow from the rows, byte for byte. Not compared: keys with surrogates, keys
of more than 507 bytes, keys in other sort orders than the two known ones, and indexes of memos.
"""
import pathlib
import re
import struct

from encode import HEADER_COVER, KEY_OFFSET, PAGE_BYTES, covered

WEIGHTS = pathlib.Path(__file__).resolve().parents[2] / "jet/value/sortkey/weights.txt"
LONGEST_KEY = 507
BOOLEAN, BYTE, BINARY, TEXT, MEMO, GUID, NUMERIC = 1, 2, 9, 10, 12, 15, 16
NUMBERS = {3: "h", 4: "i", 5: "q", 6: "f", 7: "d", 8: "d"}
U16 = lambda data, at: int.from_bytes(data[at:at + 2], "little")
U32 = lambda data, at: int.from_bytes(data[at:at + 4], "little")
inverted = lambda data: bytes(byte ^ 0xFF for byte in data)


def readWeights():
    """Maps each unit to (section, codes, accents or value, kana)."""
    weights, entries, section = {}, [], None
    for line in WEIGHTS.read_text("ascii").splitlines():
        for word in line.split("#")[0].split():
            if word.startswith("["):
                section = word.strip("[]")
            else:
                entries.append((section, *re.fullmatch(r"(\w+)(?:\.\.(\w+))?(?:=(\w+)(?:/(\w+))?(?::(\d))?(\+)?)?", word).groups()))
    single = {codes for kind, _, _, codes, *_ in entries if kind in ("letters", "kana") and len(codes) == 2}
    for kind, first, last, codes, accents, kana, counts in entries:
        for step, unit in enumerate(range(int(first, 16), int(last or first, 16) + 1)):
            step = step if counts else 0
            if kind in ("letters", "kana"):
                parts = re.findall("|".join(sorted(single)) + "|....", codes)
                tail = bytes.fromhex(accents) if accents else b"\2" * len(parts)
                if len(parts) == 1 and len(codes) == 4:
                    place = int(codes[:2], 16) * 254 + int(codes[2:], 16) - 2 + step
                    weights[unit] = (kind, bytes((place // 254, place % 254 + 2)), tail, int(kana or 0))
                else:
                    weights[unit] = (kind, bytes.fromhex(codes), tail if not step else bytes([tail[0] + step]), int(kana or 0))
            else:
                weights[unit] = (kind, b"", 0 if kind == "unknown" else int(codes, 16) + step, 0)
    return weights


ALL_WEIGHTS = readWeights()


def textKey(units, lcid):
    """The key; None if it is not known for certain."""
    units = units[:255]
    while units and units[-1] == 0x20:
        units.pop()
    codes, accents, marks, kana, leading = bytearray(), bytearray(), bytearray(), [], 0
    for unit in units:
        kind, code, value, form = ALL_WEIGHTS.get(unit, ("ignored", b"", 0, 0))
        if kind == "unknown":
            return None
        if kind in ("letters", "kana"):
            codes += code
            accents += value
            kana += [form] if kind == "kana" else []
        elif kind == "marks":
            marks += struct.pack(">HBB", 0x8000 | (7 + 4 * len(accents)), 6, value)
        elif kind == "accents" and accents:
            accents[-1] = (accents[-1] + value) & 0xFF
        elif kind == "accents":
            leading = (leading + value) & 0xFF
    accents = accents[::-1] if lcid == 0x040C else accents
    if leading:
        accents.insert(0, leading)
    while accents and accents[-1] <= 2:
        accents.pop()
    key = bytes(codes) + b"\1" + bytes(accents)
    if kana or marks:
        key += b"\1\1"
    if kana:
        while kana and kana[-1] == 3:
            kana.pop()
        kana += [0] * (-len(kana) % 3)
        key += bytes(0x80 | a << 4 | b << 2 | c for a, b, c in zip(kana[::3], kana[1::3], kana[2::3])) + bytes.fromhex("ff0280ff80")
        key += b"\xff" if marks else b""
    return key + (b"\1" + bytes(marks) if marks else b"") + b"\0"


def decodedUnits(data):
    if data[:2] != b"\xff\xfe":
        return list(struct.unpack(f"<{len(data) // 2}H", data))
    units, at, wide = [], 2, False
    while at < len(data):
        if data[at] == 0 and not (wide and data[at + 1] != 0):
            wide, at = not wide, at + 1
        elif wide:
            units.append(U16(data, at))
            at += 2
        else:
            units.append(data[at])
            at += 1
    return units


def grouped(data, ascending):
    """Groups of 8 bytes, each followed by a count."""
    key, turn = b"", (lambda part: part) if ascending else inverted
    for at in range(0, len(data), 8):
        part, isLast = data[at:at + 8], at + 8 >= len(data)
        key += turn(part.ljust(8, b"\0")) + (turn(bytes([len(part)])) if isLast else b"\x09")
    return key


def columnKey(column, data, ascending):
    """@param data  None for null; for a Boolean: whether it is set"""
    kind = column["type"]
    if kind == BOOLEAN:
        key = b"\0" if data else b"\xff"
    elif data is None:
        return b"\0" if ascending else b"\xff"
    elif kind == TEXT:
        key = textKey(decodedUnits(data), column["lcid"]) if column["order"] in (0x0409, 0x040C) else None
        if key is None:
            return None
        return b"\x7f" + key if ascending else b"\x80" + inverted(key) + b"\0"
    elif kind in (BINARY, GUID):
        if kind == GUID:
            data = data[3::-1] + data[5:3:-1] + data[7:5:-1] + data[8:]
        return (b"\x7f" if ascending else b"\x80") + grouped(data, ascending)
    elif kind == NUMERIC:
        magnitude, negative = b"".join(data[at:at + 4][::-1] for at in (1, 5, 9, 13)), data[0] & 0x80
        sign = b"\0" if negative else b"\xff"
        return (b"\x7f" if ascending else b"\x80") + sign + (inverted(magnitude) if bool(negative) == ascending else magnitude)
    elif kind == BYTE:
        key = data
    else:
        key = data[::-1]
        key = inverted(key) if NUMBERS[kind] in "fd" and key[0] & 0x80 else bytes([key[0] ^ 0x80]) + key[1:]
    return b"\x7f" + key if ascending else b"\x80" + inverted(key)


class File:
    def __init__(self, path):
        data = path.read_bytes()
        start, end, stream = HEADER_COVER
        header = data[:start] + covered(stream, data[start:end])
        key = U32(header, KEY_OFFSET)
        self.pages = [data[at:at + PAGE_BYTES] for at in range(0, len(data), PAGE_BYTES)]
        if key:
            self.pages[1:] = [covered((key ^ n).to_bytes(4, "little"), page) for n, page in enumerate(self.pages) if n]

    def slot(self, pointer):
        """(flags, bytes) of a row."""
        page, row = self.pages[pointer >> 8], pointer & 0xFF
        offset = U16(page, 14 + 2 * row)
        return offset & 0xC000, page[offset & 0x1FFF:U16(page, 12 + 2 * row) & 0x1FFF if row else PAGE_BYTES]

    def map(self, pointer):
        row = self.slot(pointer)[1]
        pieces = [(U32(row, 1), row[5:])]
        if row[0] == 1:
            pages = [U32(row, at) for at in range(1, len(row) - 3, 4)]
            pieces = [(n * 32736, self.pages[page][4:]) for n, page in enumerate(pages) if page]
        return {first + 8 * at + bit for first, bits in pieces for at, byte in enumerate(bits) if byte for bit in range(8) if byte >> bit & 1}

    def definition(self, number):
        data, following = self.pages[number], U32(self.pages[number], 4)
        while following:
            data, following = data + self.pages[following][8:], U32(self.pages[following], 4)
        columnCount, nameCount, indexCount = U16(data, 45), U32(data, 47), U32(data, 51)
        at, columns, indexes = 63 + 12 * indexCount, [], []
        for place in range(at, at + 25 * columnCount, 25):
            columns.append({"type": data[place], "number": U16(data, place + 5), "variable": U16(data, place + 7),
                            "lcid": U16(data, place + 11), "order": U16(data, place + 11) | data[place + 14] << 16,
                            "isFixed": data[place + 15] & 1, "offset": U16(data, place + 21) + 2, "length": U16(data, place + 23)})
        at += 25 * columnCount
        for column in columns:
            length = U16(data, at)
            column["name"] = data[at + 2:at + 2 + length].decode("utf-16-le")
            at += 2 + length
        for place in range(at, at + 52 * indexCount, 52):
            parts = [(U16(data, entry), data[entry + 2] & 1) for entry in range(place + 4, place + 34, 3) if U16(data, entry) != 0xFFFF]
            indexes.append({"parts": parts, "map": U32(data, place + 34), "root": U32(data, place + 38), "flags": data[place + 46]})
        return {"page": number, "rows": U32(data, 16), "variable": U16(data, 43), "owned": U32(data, 55),
                "columns": {column["number"]: column for column in columns}, "indexes": indexes}

    def rows(self, table):
        """Maps the row pointer of each live row to its bytes."""
        for page in sorted(self.map(table["owned"])):
            for row in range(U16(self.pages[page], 12)):
                flags, data = self.slot(page << 8 | row)
                while flags == 0x4000:
                    moved, data = self.slot(U32(data, 0))
                    flags = 0 if moved == 0x8000 else moved
                if flags == 0:
                    yield page << 8 | row, data

    def tables(self):
        catalog = self.definition(2)
        place = {column["name"]: column for column in catalog["columns"].values()}
        for _, row in self.rows(catalog):
            value = lambda name: valueOf(catalog, place[name], row)
            if int.from_bytes(value("Type"), "little") == 1:
                name = bytes(value("Name"))
                yield "".join(map(chr, decodedUnits(name))), self.definition(U32(value("Id"), 0))


def valueOf(table, column, row):
    """The bytes of a value, or None for null; for a Boolean: whether it is set."""
    count, number = U16(row, 0), column["number"]
    mask = row[-((count + 7) // 8):]
    isSet = number < count and mask[number >> 3] >> (number & 7) & 1
    if column["type"] == BOOLEAN:
        return bool(isSet)
    if not isSet:
        return None
    if column["isFixed"]:
        return row[column["offset"]:column["offset"] + column["length"]]
    end = len(row) - len(mask) - 2
    if column["variable"] >= U16(row, end):
        return None
    at = end - 2 - 2 * column["variable"]
    return row[U16(row, at):U16(row, at - 2)]


def entriesOf(page, tail):
    """Each entry of an index page, without prefix compression, as (key and row, the bytes after them)."""
    mask, prefix, first, start, entries = page[27:480], U16(page, 24), b"", 0, []
    for bit in range(len(mask) * 8):
        if mask[bit >> 3] >> (bit & 7) & 1:
            entry = page[480 + start:480 + bit]
            entry = entry if not entries else first[:prefix] + entry
            first, start = first or entry, bit
            entries.append((entry[:len(entry) - tail], entry[len(entry) - tail:]))
    return entries


def leavesBelow(file, number, pages):
    """The leaf pages from left to right. Also compares nodes with the pages below them."""
    pages.append(number)
    page = file.pages[number]
    if page[0] == 4:
        return [number]
    leaves = []
    for entry, child in entriesOf(page, 4):
        below = leavesBelow(file, int.from_bytes(child, "big"), pages)
        last = entriesOf(file.pages[below[-1]], 0)
        if last and last[-1][0] > entry:
            raise ValueError(f"the node on page {number} is less than an entry below it")
        leaves += below
    return leaves + (leavesBelow(file, U32(page, 20), pages) if U32(page, 20) else [])


def indexFault(file, table, index, rows):
    pages, expected, unknown = [], {}, set()
    leaves = leavesBelow(file, index["root"], pages)
    if sorted(pages) != sorted(file.map(index["map"])):
        return "its map names other pages than its tree"
    entries = [entry for leaf in leaves for entry, _ in entriesOf(file.pages[leaf], 0)]
    if [(U32(file.pages[leaf], 12), U32(file.pages[leaf], 16)) for leaf in leaves] != list(
            zip([0] + leaves[:-1], leaves[1:] + [0], strict=True)):
        return "its leaves are linked in another order"
    if any(a >= b for a, b in zip(entries, entries[1:])):
        return "its entries do not ascend"
    for pointer, row in rows:
        values = [(table["columns"][number], valueOf(table, table["columns"][number], row), up) for number, up in index["parts"]]
        if index["flags"] & 2 and all(value is None for _, value, _ in values):
            continue
        keys = [columnKey(column, value, up) for column, value, up in values]
        if None in keys or sum(map(len, keys)) > LONGEST_KEY:
            unknown.add(pointer.to_bytes(4, "big"))
        else:
            expected[pointer.to_bytes(4, "big")] = b"".join(keys)
    found = {entry[-4:]: entry[:-4] for entry in entries}
    if len(found) != len(entries) or found.keys() != expected.keys() | unknown:
        return f"{len(entries)} entries for {len(expected) + len(unknown)} rows, or of other rows"
    wrong = next((row for row, key in expected.items() if found[row] != key), None)
    return f"row {wrong.hex()} has the key {found[wrong].hex()}, wanted is {expected[wrong].hex()}" if wrong else None


def faultsOf(path):
    """@return the faults, and how many entries were compared"""
    file, faults, count = File(pathlib.Path(path)), [], 0
    for name, table in file.tables():
        rows = list(file.rows(table))
        for index in table["indexes"]:
            columns = [table["columns"][number] for number, _ in index["parts"]]
            if any(column["type"] == MEMO for column in columns):
                continue
            fault = indexFault(file, table, index, rows)
            count += len(rows)
            if fault:
                faults.append(f"{name}, index over {', '.join(column['name'] for column in columns)}: {fault}")
    return faults, count
