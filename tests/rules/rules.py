#!/usr/bin/python3
"""The rules of the source tree that no compiler checks: allowed includes, no circles, file sizes, forbidden words."""
import graphlib
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
# The allowed includes come from the table in the documentation: | `room/` | duty | `room/`, `room/` |
MAY_USE = {row[1]: re.findall(r"`([\w/]+)/`", row[2]) for row in
           re.finditer(r"^\| `([\w/]+)/` \|[^|]*\|([^|]*)\|$", (ROOT / "docs/architecture.md").read_text(), re.M)}
TOOL = ["app", *MAY_USE["app"]]
FOR_EVERY_ROOM_OF_THE_TOOL = "app/mPublic.h"  # forward declarations and constants
ITS_USERS = TOOL + ["tools/kontodb"]
# Permitted circles: forms and controls know each other, and every room of the tool knows the shared objects.
CIRCLES_OF_THE_MODEL = re.compile(r"forms/(Form|ListView)\.h|app/mPublic\.h")
WINDOWS_ROOMS = ["win32", "ado/com"]
WINDOWS_FILES = re.compile(r"tools/kontodb/PasswordPrompt\.cpp|jet/storage/\w+Windows\.(cpp|h)")
C_RUNTIME_HEADERS = r"(conio|fcntl|io|poll|termios|unistd|sys/\w+)\.h"  # of the C runtime on either system
MAX_LINES = 600
SCRIPTS = ("build", "run", "test", "package")  # scripts without a file extension
# Paths of a machine, and hosts from which packages are fetched: the tree must build everywhere.
FORBIDDEN = re.compile(r"(?<![\w.$}~-])/(work|root|home|Users)/\w|\b(deb|security|registry|snapshot)\.\w+\.(org|com)\b")

tracked = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=ROOT, capture_output=True, text=True,
                         check=True).stdout.split("\n")
files = [name for name in tracked if name and (ROOT / name).is_file()]
texts = {name: (ROOT / name).read_text("utf-8", "replace") for name in files
         if not name.endswith((".ico", ".png", ".mdb", ".bin", ".gz"))}


def room(path):
    folder = path.rpartition("/")[0]
    return next((r for r in sorted(MAY_USE, key=len, reverse=True) if folder == r or folder.startswith(r + "/")), None)


def unit(path):
    """The name that a header shares with its sources, also with those for one system only."""
    return re.sub(r"(Posix|Windows)?\.(h|cpp)$", "", path)


faults = {"includes": [], "circles": [], "windows headers": [], "file sizes": [], "words": []}
uses, unit_uses = {}, {}
for name, text in texts.items():
    here = room(name)
    if here and name.endswith((".h", ".cpp")):
        for quoted in re.findall(r'^\s*#\s*include\s+"([^"]+)"', text, re.M):
            there = room(quoted) if "/" in quoted else here
            if there not in (here, *MAY_USE[here]) and not (quoted == FOR_EVERY_ROOM_OF_THE_TOOL and here in ITS_USERS):
                faults["includes"].append(f"{name} includes {quoted}")
            if unit(quoted) != unit(name) and not CIRCLES_OF_THE_MODEL.match(quoted):
                unit_uses.setdefault(unit(name), set()).add(unit(quoted))
            if there and there != here and quoted != FOR_EVERY_ROOM_OF_THE_TOOL:
                uses.setdefault(here, set()).add(there)
        if here not in WINDOWS_ROOMS and not WINDOWS_FILES.fullmatch(name):
            for header in re.findall(r"^\s*#\s*include\s+<([^>]+\.h)>", text, re.M):
                if not re.fullmatch(C_RUNTIME_HEADERS, header):
                    faults["windows headers"].append(f"{name} includes {header}")
    if name.endswith((".h", ".cpp", ".py", ".sh")) and text.count("\n") > MAX_LINES:
        faults["file sizes"].append(f"{name} has {text.count(chr(10))} lines")
    for match in FORBIDDEN.finditer(text):
        faults["words"].append(f"{name} contains {match[0]}")
if re.search(r'#\s*include\s+"(?!base/)', texts.get(FOR_EVERY_ROOM_OF_THE_TOOL, "")):
    faults["includes"].append(f"{FOR_EVERY_ROOM_OF_THE_TOOL} may have only forward declarations and includes of base/")


def code_lines(names):
    """Counts lines that are neither empty nor comments."""
    return sum(not re.fullmatch(r"\s*((//|#(?![a-z])).*)?", line) for name in names for line in texts[name].splitlines())


code = [name for name in texts if name.endswith((".cpp", ".h", ".py", ".sh")) or name.rpartition("/")[2] in SCRIPTS]
share = code_lines(name for name in code if name.startswith("tests/")) / code_lines(code)
print(f"tests: {share:.1%} of {code_lines(code)} lines of code (wanted: a quarter to a third)")

for graph in (uses, unit_uses):
    try:
        graphlib.TopologicalSorter(graph).prepare()
    except graphlib.CycleError as circle:
        faults["circles"].append(" <- ".join(circle.args[1]))
for rule, found in faults.items():
    for fault in found:
        print(f"FAIL {rule}: {fault}")
    if not found:
        print(f"PASS {rule}")
sys.exit(any(faults.values()))
