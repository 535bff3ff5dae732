#!/usr/bin/python3
"""Compares our reading of files with that of two foreign readers, before and after kontodb has changed them at random.

usage: tests/foreign/compare.py FOLDER-OF-MODULES [STATEMENTS [SEED]]

Each file must have the same rows for kontodb, mdb-export and mdb-reader, and so must its compacted copy; indexes.py must
find no fault in it. The files are fresh ones and encoded copies of them and, with TOLV_CORPUS set to a folder, copies of
its Jet 4 files; those of other formats must be refused. kontodb may refuse a random statement, but not all of them. The
native tests check that a statement writes the right values; they use the reader that is compared here.
The order of rows does not count, because mdb-export lists moved rows elsewhere than the others.
"""
import csv
import decimal
import os
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile

from encode import encode
from indexes import faultsOf
from readers import NULL, byKontodb, byMdbExport, byMdbReader, kontodb, lossy

MODULES = os.path.abspath(sys.argv[1])
STATEMENTS = int(sys.argv[2]) if len(sys.argv) > 2 else 100
SEED = int(sys.argv[3]) if len(sys.argv) > 3 else random.randrange(1 << 30)
PASSWORD = "Wurzelgnom-äß7"
CORPUS_PASSWORD = "HwendorpliqZ"
FRESH = [(0, 0x1A2B3C4D), (1, 0x00000101), (60, 0xFFFFFFFF), (2500, 0x1A2B3C4D)]  # accounts, key of the encoded copy
LETTERS = "abcxyzÄöüßéABC 019-.\u0159\u4e2d"
WHOLE = {"byte": 255, "integer": 32767, "long": 2**31 - 1, "currency": 10**9}


def report(label, faults, said):
    print("\n".join(f"FAIL {label}: {fault}" for fault in faults) or f"PASS {label}: {said}", flush=True)


def difference(ours, theirs):
    left, right = sorted(ours), sorted(theirs)
    first = next((pair for pair in zip(left, right) if pair[0] != pair[1]), ((len(left),), (len(right),)))
    cell = next(((a, b) for a, b in zip(*first) if a != b), first)
    return left != right and f"{len(left)} and {len(right)} rows, first difference {cell}"[:400]


def rowFaults(path, password, tables):
    for table, names, kinds, theirs in tables:
        ours = byKontodb(path, password, table, names, kinds)
        exported = [tuple(map(lossy, row, kinds)) for row in byMdbExport(path, table, kinds)]
        for reader, fault in (("mdb-reader", difference(ours, theirs)),
                              ("mdb-export", difference([tuple(map(lossy, row, kinds)) for row in ours], exported))):
            if fault:
                yield f"{table}, {reader}: {fault}"


def compactFaults(path, password, tables):
    """A file with faults must be refused."""
    copy = path.with_name(f"compact-{path.name}")
    copy.unlink(missing_ok=True)
    if kontodb("check", path, password, mayFail=True).returncode == 1:
        done = kontodb("compact", path, password, copy, mayFail=True)
        if done.returncode != 2 or "nicht verkleinert" not in done.stderr or copy.exists():
            yield "was compacted although it has faults"
        return
    kontodb("compact", path, password, copy)
    ours, theirs = ([(*table, sorted(rows)) for *table, rows in each]
                    for each in (byMdbReader(copy, password, MODULES), tables))
    if ours != theirs:
        yield "has other rows after it was compacted"


def examine(label, path, password):
    try:
        tables = byMdbReader(path, password, MODULES)
        faults, entries = faultsOf(path)
        faults += [*rowFaults(path, password, tables), *compactFaults(path, password, tables)]
        said = f"{len(tables)} tables, {entries} entries of indexes"
    except (RuntimeError, ValueError, KeyError, csv.Error, decimal.InvalidOperation, subprocess.TimeoutExpired) as error:
        faults, said = [f"{type(error).__name__}: {error}"], ""
    report(label, faults, said)


def text(longest):
    return "".join(random.choices(LETTERS, k=random.randint(1, longest)))


def literal(value):
    if value is None or isinstance(value, bool):
        return {None: "NULL", True: "TRUE", False: "FALSE"}[value]
    return f"'{value}'" if isinstance(value, str) else str(value)


def someValue(kind):
    if kind in WHOLE:
        return random.choice([random.randrange(100), random.randint(0, WHOLE[kind])])
    return {"boolean": random.random() < 0.5, "float": random.randrange(1000) / 8,
            "double": random.randrange(10**6) / 64, "numeric": random.randrange(1000),
            "text": text(random.choice([5, 50])), "memo": text(random.choice([30, 3000]))}.get(kind)


def statementOn(table, names, kinds, rows):
    """Makes a statement; None if no column of the table fits. If no condition can name a row, it adds one."""
    places = [i for i, kind in enumerate(kinds) if someValue(kind) is not None]
    keys = [(i, row[i]) for row in random.sample(rows, min(len(rows), 5)) for i, kind in enumerate(kinds)
            if kind in ("long", "integer", "text") and row[i] != NULL and row[i].isprintable() and "'" not in row[i]]
    if not places:
        return None
    chosen = random.sample(places, random.randint(1, len(places)))
    literals = {f"[{names[i]}]": literal(random.choice([someValue(kinds[i])] * 4 + [None])) for i in chosen}
    kind = random.randrange(6) if keys else 0
    if kind < 2:
        return f"INSERT INTO [{table}] ({', '.join(literals)}) VALUES ({', '.join(literals.values())})"
    key, value = random.choice(keys)
    where = f" WHERE [{names[key]}] = " + (f"'{value}'" if kinds[key] == "text" else value)
    if kind == 2:
        return f"DELETE FROM [{table}]" + where
    return f"UPDATE [{table}] SET " + ", ".join(f"{name} = {value}" for name, value in literals.items()) + where


def change(path, password):
    faults, counts = [], [0, 0]
    for _ in range(5):
        tables = byMdbReader(path, password, MODULES)
        for _ in range(STATEMENTS // 5 if tables else 0):
            statement = statementOn(*random.choice(tables))
            if statement:
                done = kontodb("exec", path, password, statement, mayFail=True)
                counts[done.returncode != 0] += 1
                if done.returncode != 0 and not (done.returncode == 2 and done.stderr.startswith("kontodb: -")):
                    faults.append(f"{statement[:200]}: {done.returncode} {done.stderr[-300:]}")
    if path.name.startswith("BenKTO") and not counts[0]:
        faults.append("all statements are refused")
    report(f"{path.name} changed", faults, f"{counts[0]} statements done, {counts[1]} refused")


def examineAndChange(path, password):
    examine(path.name, path, password)
    change(path, password)
    examine(f"{path.name} changed", path, password)


def fresh(folder):
    for accounts, key in FRESH:
        path, encoded = folder / f"BenKTO-fresh-{accounts}.mdb", folder / f"BenKTO-encoded-{accounts}.mdb"
        kontodb("create", path, PASSWORD, "--accounts", accounts, "--seed", accounts)
        encode(path, encoded, key)
        examineAndChange(path, PASSWORD)
        examineAndChange(encoded, PASSWORD)


def corpus(source, path):
    password = CORPUS_PASSWORD if source.name.startswith("BenKTO") else ""
    shutil.copyfile(source, path)
    if path.read_bytes()[0x14] == 1:
        return examineAndChange(path, password)
    done = kontodb("query", path, password, "SELECT * FROM [Table1]", mayFail=True)
    isRefused = done.returncode == 2 and done.stdout == "" and done.stderr.startswith("kontodb: -")
    report(path.name, [] if isRefused else [f"{done.returncode} {done.stderr}"], "refused")


random.seed(SEED)
print(f"seed {SEED}")
with tempfile.TemporaryDirectory() as work:
    fresh(pathlib.Path(work))
    if os.environ.get("TOLV_CORPUS"):
        for each in sorted(pathlib.Path(os.environ["TOLV_CORPUS"]).glob("*.mdb")):
            corpus(each, pathlib.Path(work) / each.name)
