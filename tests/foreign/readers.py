"""The readers that are compared, ours and two foreign ones. All give rows in the same form: tuples of plain texts."""
import csv
import decimal
import io
import json
import pathlib
import subprocess

HERE = pathlib.Path(__file__).resolve().parent
KONTODB = HERE.parents[1] / "out/linux/bin/kontodb"
NULL = "\\N"


def run(*words, mayFail=False):
    """@return the finished process; its output is decoded, and carriage returns are kept"""
    done = subprocess.run([str(word) for word in words], capture_output=True, stdin=subprocess.DEVNULL, timeout=300)
    done.stdout, done.stderr = done.stdout.decode("utf-8"), done.stderr.decode("utf-8", "replace")
    if done.returncode != 0 and not mayFail:
        raise RuntimeError(f"{words[0]}: {done.returncode}: {done.stderr.strip()[-300:]}")
    return done


def kontodb(command, path, password, *words, **options):
    return run(KONTODB, command, path, *words, *(["--password", password] if password else []), **options)


def plain(value, kind):
    """Converts a value from any of the readers to their common form."""
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
    """The value as mdb-export gives it: an empty text becomes null, a text ends at its first zero character,
    bytes end at the first zero byte."""
    if kind in ("binary", "ole"):
        pairs = [text[i:i + 2] for i in range(0, len(text), 2)]
        text = "".join(pairs[:pairs.index("00")]) if "00" in pairs and text != NULL else text
    text = text.split("\0")[0]
    return NULL if text == "" else text


def byMdbReader(path, password, modules):
    """@return a list of (table, names of the columns, their types, rows)"""
    tables = []
    printed = run("node", HERE / "read.mjs", modules, path, *([password] if password else [])).stdout
    for table in map(json.loads, filter(None, printed.split("\n"))):
        kinds = [column["type"] for column in table["columns"]]
        rows = [tuple(map(plain, row, kinds)) for row in table["rows"]]
        tables.append((table["table"], [column["name"] for column in table["columns"]], kinds, rows))
    return tables


def byKontodb(path, password, table, names, kinds):
    columns = ", ".join(f"[{name}]" for name in names)
    lines = kontodb("query", path, password, f"SELECT {columns} FROM [{table}]", "--json").stdout.split("\n")
    return [tuple(plain(row[name], kind) for name, kind in zip(names, kinds, strict=True))
            for row in map(json.loads, filter(None, lines))]


def byMdbExport(path, table, kinds):
    times = "%Y-%m-%dT%H:%M:%S"
    text = run("mdb-export", "-H", "-b", "hex", "-0", NULL, "-D", times, "-T", times, path, table).stdout
    rows = csv.reader(io.StringIO(text, newline=""), strict=True)
    return [tuple(plain(None if cell == NULL else cell, kind) for cell, kind in zip(row, kinds, strict=True))
            for row in rows]
