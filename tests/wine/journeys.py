#!/usr/bin/python3
"""Goes through the tool as a user does, with real key presses and clicks, and reads what the real windows show.

Each journey starts the exe in a folder of its own. Prints one line for each journey: PASS name, or FAIL name: why.
TOLV_CORPUS may name a folder with further account files (BenKTO-*.mdb) to use as well.
"""
import argparse
import json
import os
import pathlib
import queue
import shutil
import subprocess
import sys
import tempfile
import threading
import time
import traceback

from commands import COMMANDS
from driver import (BOX_CLASS, LOGIN_CONTROLS, LOGIN_TITLE, PASSWORD, ROOT, SETTLE_SECONDS, TITLE, Failure, Session,
                    Tool, check, enter_architecture, equal, looking_default, until)
from provider_faults import PROVIDER_FAULTS
from writing import WRITING

JOURNEYS = COMMANDS | WRITING
GREY = [192, 192, 192]


def journey(function):
    JOURNEYS[function.__name__] = function
    return function


class Scene:
    """What a journey can use: the session, the account files and a folder."""

    def __init__(self, session, files, name):
        self.session, self.files, self.name = session, files, name
        self._runs = 0

    def tool(self, account_file="twelve", settings=None, faults=()):
        self._runs += 1
        folder = self.session.folder / self.name / f"{self._runs}"
        return Tool(self.session, folder, self.files.path(account_file) if account_file else None, settings, faults)

    def picture(self, what):
        self.session.picture(f"{self.name}-{what}")


class Files:
    """The account files of a run, made once by kontodb."""

    def __init__(self, kontodb, folder, others):
        """@param others  files of other writers: each replaces the file with accounts or the empty one"""
        self._kontodb, self._folder = kontodb, folder
        for name, accounts, options in (("twelve", 12, []), ("thousand", 1000, []), ("empty", 0, []),
                                        ("foreign", 3, ["--password", "Andere"])):
            self._run("create", self.path(name), "--accounts", accounts, "--seed", 7, *options)
        for other in others:
            shutil.copy(other, self.path("twelve" if self.rows(other) else "empty"))
        whole = self.path("twelve").read_bytes()
        self.path("truncated").write_bytes(whole[:len(whole) // 2 + 100])
        self.path("text").write_bytes(b"Das ist keine Datenbank.\r\n" * 500)

    def path(self, name):
        return name if isinstance(name, pathlib.Path) else self._folder / f"{name}.mdb"

    def _run(self, *words):
        return subprocess.run([self._kontodb, *map(str, words)], check=True, capture_output=True).stdout

    def rows(self, name):
        """Accounts as dictionaries, ordered by name as the database does."""
        table = json.loads(self._run("schema", self.path(name), "Benutzerkonto", "--json", "--password", PASSWORD))
        columns = ", ".join(f"[{column['name']}]" for column in table["columns"])
        output = self._run("query", self.path(name), f"SELECT {columns} FROM Benutzerkonto ORDER BY BenKTO_Name",
                           "--json", "--password", PASSWORD)
        return [json.loads(line) for line in output.decode().splitlines()]

    def check(self, name):
        """Checks that the file is sound."""
        self._run("check", self.path(name), "--password", PASSWORD)

    def execute(self, name, statement):
        self._run("exec", self.path(name), statement, "--password", PASSWORD)


# Signing in

@journey
def wrong_password_is_refused_and_the_right_one_opens(scene):
    with scene.tool() as tool:
        login = tool.login()
        equal(login.controls()["txtPasswort"]["passwordChar"], ord("*"), "the password character")
        scene.picture("dialog")
        for wrong in (PASSWORD.lower(), PASSWORD + " ", ""):
            login.type_password(wrong)
            tool.key("Return")
            box = tool.box()
            scene.picture("box")
            equal((box["title"], box["text"], box["icon"]), (TITLE, "Falsches Passwort.", "critical"), "the box")
            equal([text for _, text in box["buttons"]], ["OK"], "its buttons")
            equal((box["owner"], box["ownerEnabled"]), (login.window, False), "its owner and whether that is enabled")
            tool.others_want_it_closed(login.window, login.controls()["cmdAbbrechen"]["handle"])
            tool.key("Return")
            equal(tool.window(LOGIN_TITLE), login.window, "the dialog afterwards")
            equal(login.typed(), wrong, "the text afterwards")
            until(lambda: login.controls()["txtPasswort"]["focus"], "the focus back in the password box")
        for default in ("cmdLogin", "cmdLogin", "cmdAbbrechen", "cmdLogin"):  # of the box, both buttons, the box again
            until(lambda: looking_default(login.controls()) == [default], f"{default} alone looks as if Enter pressed it")
            scene.picture(f"default-{default}")
            tool.key("Tab")
        tool.key("shift+Tab")
        login.type_password(PASSWORD)
        tool.click_middle(login.controls()["cmdLogin"]["rect"])
        tool.window(TITLE)


@journey
def cancelling_touches_nothing(scene):
    def by_button(tool, login):
        tool.click_middle(login.controls()["cmdAbbrechen"]["rect"])

    def by_tab_to_the_button(tool, login):
        tool.key("Tab", "Tab")
        until(lambda: login.controls()["cmdAbbrechen"]["focus"], "the focus on the button")
        tool.key("Return")

    ways = {"button": by_button, "Enter on the button": by_tab_to_the_button,
            "Escape": lambda tool, login: tool.key("Escape"), "close box": lambda tool, login: tool.key("alt+F4")}
    for way, cancel in ways.items():
        tool = scene.tool()
        # If the date of access is before the date of change, the next reading moves it on every kind of file system.
        os.utime(tool.database, (1_000_000_000, 1_100_000_000))
        before = state_of(tool.folder)
        with tool:
            login = tool.login()
            login.type_password("x")
            cancel(tool, login)
            tool.ended()
        equal(state_of(tool.folder), before, f"the folder after cancelling by {way}")
        equal(tool.database.stat().st_atime, 1_000_000_000, f"the date of access after cancelling by {way}")


def state_of(folder):
    return {path.name: (path.stat().st_mtime_ns, path.read_bytes() if path.suffix != ".mdb" else None)
            for path in sorted(folder.iterdir())}


@journey
def marker_file_fills_the_password(scene):
    marker = scene.session.drive_c / "mmtolvblankologin"
    marker.touch()
    try:
        with scene.tool() as tool:
            equal(tool.login().typed(), PASSWORD, "the password box with a marker file")
            tool.key("End")
            tool.type("x")
            tool.key("Return")
            equal(tool.box()["text"], "Falsches Passwort.", "the box after changing the text")
            tool.key("Return")
            tool.login()
            tool.key("BackSpace", "Return")
            tool.window(TITLE)
        marker.unlink()
        marker.mkdir()
        with scene.tool() as tool:
            equal(tool.login().typed(), "", "the password box with a folder of the marker's name")
    finally:
        marker.unlink() if marker.is_file() else marker.rmdir()


# The account window

@journey
def accounts_are_listed_in_order_and_the_first_is_shown(scene):
    with scene.tool() as tool:
        accounts = tool.accounts()
        compare_with_file(scene, accounts, "twelve")
        scene.picture("twelve")


def compare_with_file(scene, accounts, file):
    """Checks the whole list, and every account in the fields, with the arrow key from row to row."""
    expected = scene.files.rows(file)
    rows = accounts.list(0, len(expected) + 1)
    equal(rows["count"], len(expected), "the number of rows")
    equal([tuple(row) for row in rows["rows"]],
          [(row["BenKTO_Name"] or "", row["BenKTO_ServerPath"] or "") for row in expected], "the list")
    names = [column["text"] for column in rows["columns"]]
    equal(names, ["Benutzername", "ServerPath"], "the columns")
    equal([column["image"] for column in rows["columns"]], [0, -1], "the header marks")
    inner = accounts.controls()["lvwBenKto"]["client"][2]
    check(sum(column["width"] for column in rows["columns"]) >= inner, "the columns leave a part of the list empty")
    equal(accounts.focus(), "lvwBenKto", "the focus at the start")
    save = accounts.controls()["cmdSpeichern"]
    equal((save["text"], save["enabled"]), ("Speichern", False), "the save button")
    for index, row in enumerate(expected[:25]):
        if index > 0:
            accounts.tool.key("Down")
        accounts.until_selected(index)
        equal(accounts.controls()["chbProgrammupdate"]["checked"], row["BenKTO_R_ProgUpdate"] in (True, -1),
              f"the program-update box of row {index}")


def files_of_other_writers_are_listed(scene):
    for path in sorted(pathlib.Path(os.environ["TOLV_CORPUS"]).glob("BenKTO-*.mdb")):
        with scene.tool(path) as tool:
            accounts = tool.accounts()
            scene.picture(path.stem)
            if scene.files.rows(path):
                compare_with_file(scene, accounts, path)
            else:
                equal(accounts.list()["count"], 0, f"the number of rows of {path.name}")


if os.environ.get("TOLV_CORPUS"):
    journey(files_of_other_writers_are_listed)


@journey
def every_move_loads_the_account_once(scene):
    with scene.tool("thousand") as tool:
        accounts = tool.accounts()
        accounts.until_selected(0)
        scene.picture("thousand")
        page = accounts.list()["perPage"]
        names = [row[0] for row in accounts.list(0, 1000)["rows"]]
        first_of_letter = next(i for i, name in enumerate(names) if i > 1 and name[0].lower() in "bdfhkm")
        letter = names[first_of_letter][0].lower()
        for keys, row in ((["Down"], 1), (["End"], 999), (["Up"], 998), (["Home"], 0), (["Next"], page - 1),
                          (["Next"], 2 * (page - 1)), (["Prior"], None), (["Home"], 0), ([letter], first_of_letter)):
            before = accounts.selected()
            tool.key(*keys)
            if row is None:
                until(lambda: accounts.selected() != before, f"another row after {keys}")
                row = accounts.selected()
            accounts.until_selected(row)
        top = accounts.list()["top"]
        for row in (top, top + 5, top + 5, top + 3):
            tool.click(*accounts.row_middle(row))
            accounts.until_selected(row)
        # A click on the selected row loads its account once more; a move to that row must read as much, not twice as
        # much.
        again = [tool.bytes_read_by(lambda: tool.click(*accounts.row_middle(top + 3))) for _ in range(2)][1]
        for keys in ("Down", "Up"), ("Up", "Down"):
            tool.key(keys[0])
            until(lambda: accounts.selected() != top + 3, f"another row after {keys[0]}")
            moved = tool.bytes_read_by(lambda: tool.key(keys[1]))
            accounts.until_selected(top + 3)
            check(0.5 * again < moved < 1.5 * again, f"one load reads {again} bytes, a move by {keys[1]} {moved}")
        tool.click(*accounts.row_middle(top))
        accounts.until_selected(top)
        clicked = tool.bytes_read_by(lambda: tool.click(*accounts.row_middle(top + 3)))
        check(0.5 * again < clicked < 1.5 * again, f"one load reads {again} bytes, a move by click {clicked}")


@journey
def selection_cannot_be_emptied(scene):
    with scene.tool("twelve") as tool:
        accounts = tool.accounts()
        accounts.until_selected(0)
        tool.key("Down")
        accounts.until_selected(1)
        left, _, _, bottom = accounts.controls()["lvwBenKto"]["rect"]
        x, y = accounts.row_middle(1)
        for what, place, modifier in (("a click below the rows", (left + 40, bottom - 25), None),
                                      ("Ctrl+click on the selected row", (x, y), "ctrl"),
                                      ("Ctrl+click below the rows", (left + 40, bottom - 25), "ctrl")):
            tool.click(*place, modifier=modifier)
            time.sleep(SETTLE_SECONDS)
            equal(accounts.selected(), 1, f"the selected row after {what}")
            check(accounts.agrees(), f"the fields no longer show the selected row after {what}")
        tool.key("ctrl+space")
        time.sleep(SETTLE_SECONDS)
        equal(accounts.selected(), 1, "the selected row after Ctrl+Space")
        tool.key("Down")
        accounts.until_selected(2)


@journey
def empty_table_locks_the_fields(scene):
    with scene.tool("empty") as tool:
        accounts = tool.accounts()
        scene.picture("empty")
        equal(accounts.list()["count"], 0, "the number of rows")
        controls = accounts.controls()
        for name in ("txtUserNameDexo", "txtPathGlobal"):
            box = controls[name]
            equal((box["text"], box["enabled"]), ("", False), name)
            left, top, right, bottom = box["rect"]
            equal(scene.session.ask("pixel", (left + right) // 2, (top + bottom) // 2), GREY, f"the colour of {name}")
        box = controls["chbProgrammupdate"]
        equal((box["checked"], box["enabled"]), (False, False), "the program-update box")
        equal([name for name in ("cmdGlobal", "cmdSpeichern") if controls[name]["enabled"]], [], "enabled buttons")
        check(controls["lvwBenKto"]["enabled"] and controls["cmdAbbrechen"]["enabled"], "list or close button locked")
        tool.click_middle(controls["cmdAbbrechen"]["rect"])
        tool.ended()


@journey
def tab_walks_all_controls_in_order(scene):
    order = ["lvwBenKto", "cmbAddNew", "txtUserNameDexo", "txtPathGlobal", "cmdGlobal", "chbProgrammupdate",
             "cmdSpeichern", "cmbResetPWD", "cmdDel", "cmdAbbrechen"]
    with scene.tool() as tool:
        accounts = tool.accounts()
        until(lambda: accounts.focus() == "lvwBenKto", "the focus on the list")
        controls = accounts.controls()
        stops = [name for name in order if controls[name]["enabled"]]
        check(len(stops) >= 5, f"only {stops} are enabled")
        for keys, walk in ((["Tab"], stops[1:] + stops[:1]), (["shift+Tab"], stops[::-1])):
            for name in walk:
                before = accounts.focus()
                tool.key(*keys)
                until(lambda: accounts.focus() != before, f"another focus after {keys} on {before}", 5)
                equal(accounts.focus(), name, f"the focus after {keys} on {before}")


@journey
def windows_are_whole_at_any_size(scene):
    """What is drawn on a screen; tests/win32 shows that nothing is clipped at any size."""
    dpi = scene.session.dpi
    try:
        for percent in (200, 100):
            scene.session.ask("textsize", percent)
            with scene.tool() as tool:
                dialog = tool.tree(tool.login().window, LOGIN_CONTROLS)
                scene.picture(f"dialog-{percent}")
                width = dialog["client"][2]
                check(width == round(330 * dpi / 96) if percent == 100 else width > 500 * dpi / 96,
                      f"the dialog is {width} pixels wide with texts of {percent} %")
                accounts = tool.accounts()
                inspect(scene, accounts, f"opened-{percent}")
                check(scene.session.ask("resize", accounts.window, 200, 150), "the window cannot be resized")
                inspect(scene, accounts, f"smallest-{percent}")
                maximise(accounts)
                rows = inspect(scene, accounts, f"maximised-{percent}")["by"]["lvwBenKto"]["rect"]
                check(rows[2] - rows[0] > 1200, f"the list does not grow with the window: {rows}")
                to = 144 if dpi == 96 else 96
                check(scene.session.ask("dpi", accounts.window, dpi, to), "WM_DPICHANGED could not be sent")
                inspect(scene, accounts, f"moved-to-{to}-{percent}")
    finally:
        scene.session.ask("textsize", 100)


def maximise(accounts):
    """Clicks twice on the title. A busy machine may take that for two single clicks; then it is done again."""
    left, top, width, _ = accounts.tree()["client"]  # the window manager's title is directly above
    for _ in range(5):
        accounts.tool.session.xdotool("mousemove", left + width // 2, top - 8, "click", "--repeat", 2, "--delay", 50, 1)
        try:
            return until(lambda: accounts.tree()["rect"][2] > 1300, "the window maximised", 3)
        except Failure:
            continue
    raise Failure("two clicks on the title do not maximise the window")


def inspect(scene, accounts, what):
    tree = settled(accounts)
    scene.picture(what)
    for control in tree["children"]:
        if control["text"]:
            colours = scene.session.ask("colours", *control["rect"])
            check(colours > 5, f"{control['name']} is blank in the window {what}")
    return tree


def settled(accounts):
    """The window's tree once it no longer changes: the window manager may change sizes, and needs time for that."""
    def unchanged():
        before = accounts.tree()
        time.sleep(SETTLE_SECONDS)
        return before if accounts.tree() == before else None
    return until(unchanged, "the window comes to rest")


@journey
def reading_leaves_the_file_as_it_was(scene):
    for close in ("Escape", "alt+F4"):
        tool = scene.tool("thousand")
        os.utime(tool.database, ns=(10**18, 10**18))
        before, listing = tool.database.read_bytes(), sorted(p.name for p in tool.folder.iterdir())
        with tool:
            accounts = tool.accounts()
            accounts.until_selected(0)
            tool.key("Down", "Down", "End")
            accounts.until_selected(999)
            tool.key("Tab")
            until(lambda: accounts.focus() != "lvwBenKto", "the focus off the list")
            tool.key(close)
            tool.ended()
        equal(tool.database.stat().st_mtime_ns, 10**18, f"the file's date after {close}")
        check(tool.database.read_bytes() == before, f"the file's bytes changed, closed by {close}")
        equal(sorted(p.name for p in tool.folder.iterdir()), listing, f"the folder after {close}")


# The settings file, and files that cannot be opened

@journey
def settings_file_names_the_folder(scene):
    umlaut = scene.session.drive_c / "Büro Süd"
    umlaut.mkdir()
    try:
        shutil.copy(scene.files.path("twelve"), umlaut / "BenKTO.mdb")
        settings = "[Main]\r\nProgrammVersion=1.0\r\n[settings]\r\nBENKTOPATH=C:\\Büro Süd\r\n".encode("cp1252")
        with scene.tool("empty", settings) as tool:
            equal(tool.accounts().list()["count"], len(scene.files.rows("twelve")), "the number of rows")
    finally:
        shutil.rmtree(umlaut)


@journey
def a_file_that_cannot_be_opened_ends_the_program(scene):
    cases = {"missing file": (None, None, "BenKTO.mdb"),
             "missing folder": (None, b"[SETTINGS]\r\nBenKtoPath=C:\\gibt es nicht\r\n", "C:\\gibt es nicht"),
             "foreign password": ("foreign", None, "Kennwort"),
             "no database": ("text", None, ""),
             "truncated file": ("truncated", None, "")}
    for what, (file, settings, word) in cases.items():
        tool = scene.tool(file, settings)
        before = tool.database.read_bytes() if file else None
        with tool:
            tool.sign_in()
            box = tool.box()
            scene.picture(what.replace(" ", "-"))
            equal((box["title"], box["icon"], [b[1] for b in box["buttons"]]), (TITLE, "critical", ["OK"]),
                  f"title, icon and buttons of the box for a {what}")
            number, _, description = box["text"].partition("':")
            check(number.startswith("Laufzeitfehler '-2147") and number.endswith(")"), f"{what}: {box['text']!r}")
            check(len(description.strip()) > 20 and word in description, f"{what}: {box['text']!r}")
            check(all(w["class"] == BOX_CLASS or w["text"] != TITLE for w in tool.windows()),
                  f"the account window is there for a {what}")
            print(f"   {what}: {box['text']!r}")
            tool.key("Return")
            tool.ended(1)
        if file:
            check(tool.database.read_bytes() == before, f"the bytes of the {what} changed")
        else:
            check(not tool.database.exists(), f"a file appeared for a {what}")


# Running the journeys

def run_all(names, arguments, files):
    """Two sessions take the journeys from one queue."""
    waiting, failed, output = queue.Queue(), [], threading.Lock()
    for name in names:
        waiting.put(name)

    def worker():
        session = None
        try:
            while True:
                try:
                    name = waiting.get_nowait()
                except queue.Empty:
                    return
                session = session or Session(arguments.arch, arguments.dpi, arguments.exe, arguments.probe,
                                             arguments.keep_pictures)
                start = time.monotonic()
                result = run_one(name, session, files)
                with output:
                    print(result, f"({time.monotonic() - start:.1f} s)" if arguments.times else "", flush=True)
                    if result.startswith("FAIL"):
                        failed.append(name)
        finally:
            if session:
                session.close()

    workers = [threading.Thread(target=worker) for _ in range(min(2, len(names)))]
    for thread in workers:
        thread.start()
    for thread in workers:
        thread.join()
    if not waiting.empty():
        print(f"FAIL {waiting.qsize()} journeys: no session for them")
    return not failed and waiting.empty()


def run_one(name, session, files):
    try:
        JOURNEYS[name](Scene(session, files, name))
        return f"PASS {name}"
    except Failure as failure:
        session.picture(f"failed-{name}")
        return f"FAIL {name}: {failure}"
    except Exception:  # an error in the journey itself; the others still run
        return f"FAIL {name}: {traceback.format_exc()}"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--arch", choices=("x64", "x86"), default="x64")
    parser.add_argument("--dpi", type=int, default=96)
    parser.add_argument("--only", metavar="NAME", help="journeys whose name contains NAME")
    parser.add_argument("--keep-pictures", metavar="DIR", type=pathlib.Path)
    parser.add_argument("--times", action="store_true", help="say how long each took")
    parser.add_argument("--through", choices=("embedded", "com"), default="embedded", help="the engine behind the tool")
    parser.add_argument("--file", metavar="FILE", type=pathlib.Path, action="append", default=[],
                        help="an account file, with a dozen accounts or none, instead of our own like it")
    parser.add_argument("--exe", type=pathlib.Path)
    parser.add_argument("--probe", type=pathlib.Path)
    parser.add_argument("--kontodb", type=pathlib.Path, default=ROOT / "out/linux/bin/kontodb")
    arguments = parser.parse_args()
    enter_architecture(arguments.arch)
    built = ROOT / f"out/build/windows-{arguments.arch}"
    exes = {"embedded": ROOT / f"out/windows-{arguments.arch}/bin/prjDexoBenutzerkonten.exe",
            "com": built / "tests/comdouble/tool_through_com.exe"}
    arguments.exe = arguments.exe or exes[arguments.through]
    arguments.probe = arguments.probe or built / "tests/wine/probe/probe.exe"
    for needed in (arguments.exe, arguments.probe, arguments.kontodb):
        if not needed.exists():
            print(f"FAIL journeys: {needed} is missing")
            return 1
    if arguments.keep_pictures:
        arguments.keep_pictures.mkdir(parents=True, exist_ok=True)
    if arguments.through == "com":
        JOURNEYS.update(PROVIDER_FAULTS)
    names = [name for name in JOURNEYS if not arguments.only or arguments.only in name]
    with tempfile.TemporaryDirectory() as folder:
        return 0 if run_all(names, arguments, Files(arguments.kontodb, pathlib.Path(folder), arguments.file)) else 1


sys.exit(main())
