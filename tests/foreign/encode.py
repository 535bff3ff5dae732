"""Writes an encoded copy of an account file.

It shares no code with the engine, on purpose, because it tests how the engine reads such files. An encoded file differs
from the plain one in two points. Its header has a key, in the part that is masked with a fixed stream. And every page
except the first is masked with a stream that depends on the page number and this key.
"""
import pathlib

PAGE_BYTES = 4096
HEADER_COVER = (0x18, 0x98, bytes.fromhex("c7da396b"))
KEY_OFFSET = 0x3E


def covered(key, data):
    """RC4. The same call encodes and decodes."""
    box, swap = list(range(256)), 0
    for index in range(256):
        swap = (swap + box[index] + key[index % len(key)]) % 256
        box[index], box[swap] = box[swap], box[index]
    result, first, second = bytearray(), 0, 0
    for byte in data:
        first = (first + 1) % 256
        second = (second + box[first]) % 256
        box[first], box[second] = box[second], box[first]
        result.append(byte ^ box[(box[first] + box[second]) % 256])
    return bytes(result)


def encode(source, target, key):
    data = bytearray(pathlib.Path(source).read_bytes())
    start, end, stream = HEADER_COVER
    header = bytearray(data[:PAGE_BYTES])
    header[start:end] = covered(stream, header[start:end])
    if int.from_bytes(header[KEY_OFFSET:KEY_OFFSET + 4], "little") != 0:
        raise SystemExit("the file is encoded already")
    header[KEY_OFFSET:KEY_OFFSET + 4] = key.to_bytes(4, "little")
    header[start:end] = covered(stream, header[start:end])
    data[:PAGE_BYTES] = header
    for page in range(1, len(data) // PAGE_BYTES):
        place = slice(page * PAGE_BYTES, (page + 1) * PAGE_BYTES)
        data[place] = covered((key ^ page).to_bytes(4, "little"), data[place])
    pathlib.Path(target).write_bytes(data)
