#!/usr/bin/python3
"""What a user's actions cost in the real window: native_window.py FILE... (account files, the smallest first).

Keys and clicks reach the exe like those of a user, on a display of its own. Prints the processor time of the exe's
process: other programs influence it less than the time until an action is finished. Ends with 1 if an arrow key
costs more than four times as much as in the first file's list.
"""
import argparse
import pathlib
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests/wine"))

from account_window import fill, is_clean, is_red  # noqa: E402  (the path is set above)
from driver import PASSWORD, TITLE, Accounts, Session, Tool, until  # noqa: E402

MOVES = 50
HELD_MOVES_A_SECOND = 30
AT_MOST = 4  # times the processor time of an arrow key in the shortest list
PATIENCE_SECONDS = 120


def processor_seconds(tool):
    """Of all threads that the exe's process has at present."""
    tasks = pathlib.Path(f"/proc/{tool.process.pid}/task").iterdir()
    return sum(int((task / "schedstat").read_text().split()[0]) for task in tasks) / 1e9


def spent(tool, deed, is_done):
    """Processor time of the action and of everything that it causes."""
    before = processor_seconds(tool)
    deed()
    until(is_done, "the deed is done", PATIENCE_SECONDS)
    last = before
    while processor_seconds(tool) - last > 0.001:
        last = processor_seconds(tool)
        time.sleep(0.3)
    return last - before


def move(accounts, key, wanted):
    """A key held down: it repeats at the rate of a keyboard, however long the tool takes for each repeat."""
    keys = ["--repeat", MOVES, "--delay", 1000 // HELD_MOVES_A_SECOND, key]
    seconds = spent(accounts.tool, lambda: accounts.tool.session.xdotool("key", *keys),
                    lambda: accounts.selected() == wanted)
    accounts.until_selected(wanted)
    return seconds / MOVES


def sort(accounts):
    left, top, _, _ = accounts.controls()["lvwBenKto"]["rect"]
    width = accounts.list()["columns"][0]["width"]
    return spent(accounts.tool, lambda: accounts.tool.click(left + width + 30, top + 10),
                 lambda: accounts.list()["columns"][1]["image"] >= 0)


def save(accounts, path):
    fill(accounts, path=path)
    until(lambda: is_red(accounts), "the save button red")
    return spent(accounts.tool, lambda: accounts.tool.key("ctrl+s"), lambda: is_clean(accounts))


def measure(tool):
    login = tool.login()
    login.type_password(PASSWORD)
    loading = spent(tool, lambda: tool.key("Return"), lambda: tool.window(TITLE, PATIENCE_SECONDS))
    accounts = Accounts(tool, tool.window(TITLE))
    rows = accounts.list()["count"]
    at_the_top = move(accounts, "Down", MOVES)
    tool.key("End")
    accounts.until_selected(rows - 1)
    return rows, {"arrow key": at_the_top, "near the end": move(accounts, "Up", rows - 1 - MOVES), "open": loading,
                  "save": save(accounts, "C:\\eins"), "sort": sort(accounts),
                  "save while sorted": save(accounts, "C:\\zwei")}


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("files", metavar="FILE", nargs="+", type=pathlib.Path)
    parser.add_argument("--exe", type=pathlib.Path,
                        default=ROOT / "out/windows-x64/bin/prjDexoBenutzerkonten.exe")
    parser.add_argument("--probe", type=pathlib.Path,
                        default=ROOT / "out/build/windows-x64/tests/wine/probe/probe.exe")
    arguments = parser.parse_args()
    session = Session("x64", 96, arguments.exe, arguments.probe, None)
    lines = []
    try:
        for number, file in enumerate(arguments.files):
            with Tool(session, session.folder / f"{number}", file) as tool:
                lines.append(measure(tool))
    finally:
        session.close()
    deeds = list(lines[0][1])
    print("account window under Wine, milliseconds of processor time (and how often that of the line above):")
    print(" accounts " + "".join(f"{deed:>22}" for deed in deeds))
    last = None
    for rows, spent_on in lines:
        growth = {deed: f" ({spent_on[deed] / last[deed]:6.1f})" if last else " " * 9 for deed in deeds}
        print(f"{rows:9,} " + "".join(f"{spent_on[deed] * 1000:13.1f}{growth[deed]}" for deed in deeds))
        last = spent_on
    few = lines[0][1]
    moves = ("arrow key", "near the end")
    sys.exit(any(spent_on[deed] > AT_MOST * few[deed] for _, spent_on in lines for deed in moves))


main()
