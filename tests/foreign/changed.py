#!/usr/bin/python3
"""Changes files by random statements of kontodb. Afterwards the readers of compare.py must agree, indexes.py must find
no fault, and account files must have the contents of a dictionary that was changed in the same way.

usage: tests/foreign/changed.py FOLDER-OF-MODULES [STATEMENTS [SEED]]
With TOLV_CORPUS set to a folder, copies of its Jet 4 files are changed, too, one table after the other. For these,
kontodb may refuse a statement.
"""
import os
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile

from compare import CORPUS_PASSWORD, KONTODB, NULL, PASSWORD, byMdbReader, compacted, compare, plain, run
from encode import encode
from indexes import faultsOf

STATEMENTS = int(sys.argv[2]) if len(sys.argv) > 2 else 150
SEED = int(sys.argv[3]) if len(sys.argv) > 3 else random.randrange(1 << 30)
LETTERS = "abcxyzÄöüßéABC 019-.\u0159\u4e2d"
COLUMNS = {"BenKTO_Name": "text", "BenKTO_Pass": "text", "BenKTO_ServerPath": "text", "BenKTO_R_ProgUpdate": "boolean"}
WHOLE = {"byte": 255, "integer": 32767, "long": 2**31 - 1, "currency": 10**9}


def text(longest):
    return "".join(random.choices(LETTERS, k=random.randint(1, longest)))


def literal(value):
    if value is None or isinstance(value, bool):
        return {None: "NULL", True: "TRUE", False: "FALSE"}[value]
    return f"'{value}'" if isinstance(value, str) else str(value)


def written(path, password, statement):
    """Whether kontodb has run the statement. If not, it must have refused it with a proper error."""
    done = subprocess.run([KONTODB, "exec", path, statement, *(["--password", password] if password else [])],
                          capture_output=True, text=True, stdin=subprocess.DEVNULL, timeout=60)
    if done.returncode != 0 and not (done.returncode == 2 and done.stderr.startswith("kontodb: -")):
        print(f"FAIL {path.name}: {statement[:200]}: {done.returncode} {done.stderr[-300:]}")
    return done.returncode == 0


def report(label, path, password):
    compare(label, path, password)
    compacted(label, path, password)
    faults, count = faultsOf(path)
    print("\n".join(f"FAIL {label}: {fault}" for fault in faults) or f"PASS {label}: {count} entries of indexes", flush=True)


def accountStatement(rows, last):
    """Makes a statement that must succeed, and changes `rows` in the same way. @return it and the last number given"""
    values = [f"{text(30)}#{random.random()}", random.choice([None, text(64)]), random.choice([None, text(255)]), random.random() < 0.5]
    forms = [plain(value, kind) for value, kind in zip(values, COLUMNS.values())]
    chosen, kind = random.choice(list(rows) or [0]), random.randrange(8) if rows else 0
    if kind < 3:
        rows[last + 1] = forms
        return f"INSERT INTO Benutzerkonto ({', '.join(COLUMNS)}) VALUES ({', '.join(map(literal, values))})", last + 1
    if kind < 5:
        del rows[chosen]
        return f"DELETE FROM Benutzerkonto WHERE BenKTO_ID = {chosen}", last
    places = random.sample(range(4), random.randint(1, 4))
    rows[chosen] = [forms[i] if i in places else rows[chosen][i] for i in range(4)]
    return f"UPDATE Benutzerkonto SET {', '.join(f'{list(COLUMNS)[i]} = {literal(values[i])}' for i in places)} WHERE BenKTO_ID = {chosen}", last


def accounts(path):
    stored = lambda: {int(row[0]): list(row[1:]) for _, _, _, table in byMdbReader(path, PASSWORD) for row in table}
    rows = stored()
    last = max(rows, default=0)
    for _ in range(STATEMENTS):
        statement, last = accountStatement(rows, last)
        if not written(path, PASSWORD, statement):
            print(f"FAIL {path.name}: refused: {statement[:200]}")
    print(f"PASS {path.name}: {len(rows)} rows" if stored() == rows else f"FAIL {path.name}: other rows than were written")
    report(f"{path.name} changed", path, PASSWORD)


def someValue(kind):
    if kind in WHOLE:
        return random.choice([random.randrange(100), random.randint(0, WHOLE[kind])])
    return {"boolean": random.random() < 0.5, "float": random.randrange(1000) / 8, "double": random.randrange(10**6) / 64,
            "numeric": random.randrange(1000), "text": text(random.choice([5, 50])), "memo": text(random.choice([30, 3000]))}.get(kind)


def corpusStatement(table, names, kinds, rows):
    """Makes a statement; None if no column of the table fits. If no condition can name a row, it adds one."""
    places = [i for i, kind in enumerate(kinds) if someValue(kind) is not None]
    keys = [(i, row[i]) for row in random.sample(rows, min(len(rows), 5)) for i, kind in enumerate(kinds)
            if kind in ("long", "integer", "text") and row[i] != NULL and row[i].isprintable() and "'" not in row[i]]
    if not places:
        return None
    chosen = random.sample(places, random.randint(1, len(places)))
    literals = {names[i]: literal(random.choice([someValue(kinds[i])] * 4 + [None])) for i in chosen}
    kind = random.randrange(6) if keys else 0
    if kind < 2:
        return f"INSERT INTO [{table}] ({', '.join(f'[{name}]' for name in literals)}) VALUES ({', '.join(literals.values())})"
    key, value = random.choice(keys)
    where = f" WHERE [{names[key]}] = " + (f"'{value}'" if kinds[key] == "text" else value)
    return (f"DELETE FROM [{table}]" if kind == 2 else
            f"UPDATE [{table}] SET " + ", ".join(f"[{name}] = {value}" for name, value in literals.items())) + where


def corpus(source, folder):
    password = CORPUS_PASSWORD if source.name.startswith("BenKTO") else ""
    path = folder / source.name
    shutil.copyfile(source, path)
    done = refused = 0
    for _ in range(5):
        tables = list(byMdbReader(path, password))
        for _ in range(STATEMENTS // 5 if tables else 0):
            statement = corpusStatement(*random.choice(tables))
            if statement and written(path, password, statement):
                done += 1
            elif statement:
                refused += 1
    report(f"{path.name}, {done} statements done, {refused} refused", path, password)


random.seed(SEED)
print(f"seed {SEED}")
with tempfile.TemporaryDirectory() as work:
    for count in (0, 60, 2500):
        file = pathlib.Path(work) / f"{count}.mdb"
        run(KONTODB, "create", file, "--password", PASSWORD, "--accounts", count)
        if count == 60:
            encode(file, file, 0x1A2B3C4D)
        accounts(file)
    if os.environ.get("TOLV_CORPUS"):
        for each in sorted(pathlib.Path(os.environ["TOLV_CORPUS"]).glob("*.mdb")):
            if each.read_bytes()[0x14] == 1:
                corpus(each, pathlib.Path(work))
