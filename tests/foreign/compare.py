#!/usr/bin/python3
"""Reads new files and their encoded copies with kontodb, mdb-export and mdb-reader. All three must give the same rows.

usage: tests/foreign/compare.py FOLDER-OF-MODULES
With TOLV_CORPUS set to a folder, every Jet 4 file there is compared, too, table by table. Other files must be refused.
The order of rows does not count, because mdb-export lists moved rows in another place than the others.
"""
import csv
import decimal
import io
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

from encode import encode

HERE = pathlib.Path(__file__).resolve().parent
KONTODB = HERE.parents[1] / "out/linux/bin/kontodb"
MODULES = os.path.abspath(sys.argv[1])
PASSWORD = "Wurzelgnom-äß7"
CORPUS_PASSWORD = "HwendorpliqZ"
FRESH = [(0, 1), (1, 2), (37, 3), (2500, 4)]  # accounts and seed
KEYS = [0x1A2B3C4D, 0x00000101, 0xFFFFFFFF]
NULL = "\\N"


def run(*command):
    done = subprocess.run([str(word) for word in command], capture_output=True, stdin=subprocess.DEVNULL, timeout=300)
    if done.returncode != 0:
        raise RuntimeError(f"{command[0]}: {done.returncode}: {done.stderr.decode('utf-8', 'replace').strip()[-300:]}")
    return done.stdout.decode("utf-8")


def plain(value, kind):
    """The same form for a value from any of the readers."""
    if value is None:
        return NULL
    if kind == "boolean":
        return str(value in (True, "1", "true"))
    if kind in ("float", "double"):
        return f"%.{6 if kind == 'float' else 14}g" % float(value)
    if kind in ("byte", "integer", "long", "currency", "numeric"):
        return str(decimal.Decimal(str(value)).normalize() + 0)
    if kind in ("binary", "ole", "repid"):
        return str(value).strip("{}").replace("-", "").lower()
    return str(value)


def lossy(text, kind):
    """The value as far as mdb-export can give it: an empty text becomes null, a text ends at its first zero character,
    bytes end at the first zero byte."""
    if kind in ("binary", "ole"):
        pairs = [text[i:i + 2] for i in range(0, len(text), 2)]
        text = "".join(pairs[:pairs.index("00")]) if "00" in pairs and text != NULL else text
    text = text.split("\0")[0]
    return NULL if text == "" else text


def byMdbReader(path, password):
    for line in filter(None, run("node", HERE / "read.mjs", MODULES, path, *([password] if password else [])).split("\n")):
        table = json.loads(line)
        kinds = [column["type"] for column in table["columns"]]
        yield table["table"], [column["name"] for column in table["columns"]], kinds, [
            tuple(map(plain, row, kinds)) for row in table["rows"]]


def byKontodb(path, password, table, names, kinds):
    words = ["--password", password] if password else []
    columns = ", ".join(f"[{name}]" for name in names)
    rows = map(json.loads, filter(None, run(KONTODB, "query", path, f"SELECT {columns} FROM [{table}]", "--json", *words).split("\n")))
    return [tuple(plain(row[name], kind) for name, kind in zip(names, kinds, strict=True)) for row in rows]


def byMdbExport(path, table, kinds):
    text = run("mdb-export", "-H", "-b", "hex", "-0", NULL, "-D", "%Y-%m-%dT%H:%M:%S", "-T", "%Y-%m-%dT%H:%M:%S", path, table)
    rows = csv.reader(io.StringIO(text, newline=""), strict=True)
    return [tuple(plain(None if cell == NULL else cell, kind) for cell, kind in zip(row, kinds, strict=True)) for row in rows]


def difference(ours, theirs):
    left, right = sorted(ours), sorted(theirs)
    if left == right:
        return None
    first = next((pair for pair in zip(left, right) if pair[0] != pair[1]), (len(left), len(right)))
    cell = next(((a, b) for a, b in zip(*first) if a != b), first) if isinstance(first[0], tuple) else first
    return f"{len(left)} and {len(right)} rows, first difference {cell}"


def compare(label, path, password):
    try:
        tables = list(byMdbReader(path, password))
        faults = []
        for table, names, kinds, theirs in tables:
            ours = byKontodb(path, password, table, names, kinds)
            exported = [tuple(map(lossy, row, kinds)) for row in byMdbExport(path, table, kinds)]
            faults += [f"{table}, {reader}: {fault}" for reader, fault in (
                ("mdb-reader", difference(ours, theirs)),
                ("mdb-export", difference([tuple(map(lossy, row, kinds)) for row in ours], exported))) if fault]
    except (RuntimeError, ValueError, KeyError, csv.Error, decimal.InvalidOperation, subprocess.TimeoutExpired) as error:
        faults, tables = [f"{type(error).__name__}: {error}"], []
    print("\n".join(f"FAIL {label}: {fault}" for fault in faults) or f"PASS {label}: {len(tables)} tables", flush=True)


def compacted(label, path, password):
    """A foreign reader must find the same rows in the compacted file. A file with faults is refused."""
    copy = path.parent / f"compact-{path.name}"
    words = ["--password", password] if password else []
    try:
        if subprocess.run([KONTODB, "check", path, *words], capture_output=True, timeout=60).returncode == 1:
            done = subprocess.run([KONTODB, "compact", path, copy, *words], capture_output=True, text=True, timeout=60)
            same = done.returncode == 2 and "nicht verkleinert" in done.stderr and not copy.exists()
        else:
            run(KONTODB, "compact", path, copy, *words)
            tables = [[(*table, sorted(rows)) for *table, rows in byMdbReader(file, password)] for file in (path, copy)]
            same = tables[0] == tables[1]
    except (RuntimeError, subprocess.TimeoutExpired) as error:
        same, label = False, f"{label}: {error}"
    print(f"{'PASS' if same else 'FAIL'} {label}, compacted", flush=True)


def fresh(folder):
    for accounts, seed in FRESH:
        path = folder / f"{accounts}.mdb"
        run(KONTODB, "create", path, "--password", PASSWORD, "--accounts", accounts, "--seed", seed)
        compare(f"{accounts} accounts", path, PASSWORD)
        for key in KEYS if accounts == 37 else KEYS[:1]:
            encoded = folder / f"{accounts}-{key:08x}.mdb"
            encode(path, encoded, key)
            compare(f"{accounts} accounts, encoded with {key:08x}", encoded, PASSWORD)
        compacted(f"{accounts} accounts, encoded", encoded, PASSWORD)


def corpus(folder, work):
    for path in sorted(folder.glob("*.mdb")):
        password = CORPUS_PASSWORD if path.name.startswith("BenKTO") else ""
        if path.read_bytes()[0x14] == 1:
            compare(path.name, path, password)
            compacted(path.name, pathlib.Path(shutil.copyfile(path, work / path.name)), password)
            continue
        done = subprocess.run([KONTODB, "query", path, "SELECT * FROM [Table1]"], capture_output=True, text=True,
                              stdin=subprocess.DEVNULL, timeout=60)
        refused = done.returncode == 2 and done.stdout == "" and done.stderr.startswith("kontodb: -")
        print(f"PASS {path.name}: refused" if refused else f"FAIL {path.name}: {done.returncode} {done.stderr}")


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as work:
        fresh(pathlib.Path(work))
        if os.environ.get("TOLV_CORPUS"):
            corpus(pathlib.Path(os.environ["TOLV_CORPUS"]), pathlib.Path(work))
