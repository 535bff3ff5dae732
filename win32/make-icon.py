#!/usr/bin/env python3
"""Draws tool.ico: a person with a key on a blue ground, at every size Windows asks for.

The picture is described once, in units of the whole (0 to 1), and sampled 8 by 8 times a pixel. Sizes up to
64 are bitmaps, the largest is a PNG. Run it after changing the picture: make-icon.py tool.ico
"""
import struct
import sys
import zlib

SIZES = [16, 20, 24, 32, 40, 48, 64, 256]
SAMPLES = 8

GROUND = (0x1F, 0x5F, 0xA8)
PERSON = (0xFF, 0xFF, 0xFF)
KEY = (0xFF, 0xC8, 0x3D)


def in_circle(x, y, cx, cy, r):
    return (x - cx) ** 2 + (y - cy) ** 2 <= r * r


def in_rounded(x, y, left, top, right, bottom, r):
    dx = max(left + r - x, 0, x - (right - r))
    dy = max(top + r - y, 0, y - (bottom - r))
    return left <= x <= right and top <= y <= bottom and dx * dx + dy * dy <= r * r


def key(x, y, grow):
    """The key, or with grow > 0 its surroundings."""
    ring = in_circle(x, y, 0.68, 0.62, 0.135 + grow) and (grow > 0 or not in_circle(x, y, 0.68, 0.62, 0.06))
    stem = 0.645 - grow <= x <= 0.715 + grow and 0.72 <= y <= 0.94 + grow
    teeth = 0.70 <= x <= 0.79 + grow and (0.80 - grow <= y <= 0.845 + grow or 0.88 - grow <= y <= 0.925 + grow)
    return ring or stem or teeth


def colour_at(x, y):
    if not in_rounded(x, y, 0.02, 0.02, 0.98, 0.98, 0.16):
        return None
    if key(x, y, 0):
        return KEY
    if key(x, y, 0.045):
        return GROUND
    head = in_circle(x, y, 0.42, 0.32, 0.17)
    shoulders = y <= 0.86 and ((x - 0.42) / 0.30) ** 2 + ((y - 0.86) / 0.32) ** 2 <= 1
    return PERSON if head or shoulders else GROUND


def draw(size):
    """Rows from the top, each pixel (red, green, blue, alpha)."""
    rows = []
    for py in range(size):
        row = []
        for px in range(size):
            total, seen = [0, 0, 0], 0
            for sy in range(SAMPLES):
                for sx in range(SAMPLES):
                    c = colour_at((px + (sx + 0.5) / SAMPLES) / size, (py + (sy + 0.5) / SAMPLES) / size)
                    if c is not None:
                        seen += 1
                        total = [t + v for t, v in zip(total, c)]
            row.append(tuple(t // seen for t in total) + (seen * 255 // SAMPLES**2,) if seen else (0, 0, 0, 0))
        rows.append(row)
    return rows


def as_bitmap(rows):
    size = len(rows)
    header = struct.pack("<IiiHHIIiiII", 40, size, size * 2, 1, 32, 0, 0, 0, 0, 0, 0)
    pixels = b"".join(bytes((b, g, r, a)) for row in reversed(rows) for r, g, b, a in row)
    stride = (size + 31) // 32 * 4
    mask = bytearray()
    for row in reversed(rows):
        line = bytearray(stride)
        for x, pixel in enumerate(row):
            if pixel[3] == 0:
                line[x // 8] |= 0x80 >> (x % 8)
        mask += line
    return header + pixels + bytes(mask)


def as_png(rows):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    size = len(rows)
    raw = b"".join(b"\0" + b"".join(bytes(p) for p in row) for row in rows)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b""))


def main():
    images = [as_png(draw(s)) if s == 256 else as_bitmap(draw(s)) for s in SIZES]
    out = struct.pack("<HHH", 0, 1, len(SIZES))
    offset = 6 + 16 * len(SIZES)
    for size, image in zip(SIZES, images):
        out += struct.pack("<BBBBHHII", size % 256, size % 256, 0, 0, 1, 32, len(image), offset)
        offset += len(image)
    with open(sys.argv[1], "wb") as file:
        file.write(out + b"".join(images))


main()
