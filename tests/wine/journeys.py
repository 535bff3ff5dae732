#!/usr/bin/python3
"""Goes through the tool as a user does, with real key presses and clicks, and reads what the real windows show.

Each journey starts the exe in a folder of its own. Prints one line for each journey: PASS name, or FAIL name: why.
TOLV_CORPUS may name a folder with further account files (BenKTO-*.mdb) to use as well.
"""
import argparse
import concurrent.futures
import json
import os
import pathlib
import queue
import shutil
import subprocess
import sys
import tempfile
import time
import traceback

import commands  # noqa: F401  (registers its journeys)
import writing  # noqa: F401
from account_window import error_box_ends_the_program
from driver import (BOX_CLASS, JOURNEYS, LOGIN_CONTROLS, LOGIN_TITLE, PASSWORD, ROOT, SC_MAXIMIZE, SETTLE_SECONDS, TITLE,
                    WM_SYSCOMMAND, Failure, Session, Tool, check, default_buttons, enter_architecture, equal, journey, until)


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

    def __init__(self, folder, others):
        """@param others  files of other writers: each replaces the file with accounts or the empty one"""
        self._folder = folder
        for name, accounts, options in (("twelve", 12, []), ("thousand", 1000, []), ("empty", 0, []),
                                        ("foreign", 3, ["--password", "Andere"])):
            self._run("create", self.path(name), "--accounts", accounts, "--seed", 7, *options)
        for other in others:
            shutil.copy(other, self.path("twelve" if self.rows(other) else "empty"))
        self.path("text").write_bytes(b"Das ist keine Datenbank.\r\n" * 500)

    def path(self, name):
        return name if isinstance(name, pathlib.Path) else self._folder / f"{name}.mdb"

    def _run(self, *words):
        return subprocess.run([ROOT / "out/linux/bin/kontodb", *map(str, words)], check=True, capture_output=True).stdout

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

# Signing in

@journey
def wrong_password_is_refused_and_the_right_one_opens(scene):
    with scene.tool() as tool:
        login = tool.login()
        equal(login.controls()["txtPasswort"]["passwordChar"], ord("*"), "the password character")
        scene.picture("dialog")
        for wrong in (PASSWORD.lower(), ""):
            login.type_password(wrong)
            tool.key("Return")
            box = tool.box()
            scene.picture("box")
            equal((box["title"], box["text"], box["icon"], box["buttons"]),
                  (TITLE, "Falsches Passwort.", "critical", ["OK"]), "the box")
            equal((box["owner"], box["ownerEnabled"]), (login.window, False), "its owner and whether that is enabled")
            tool.ask_it_to_close(login.window, login.controls()["cmdAbbrechen"]["handle"])
            tool.key("Return")
            equal(tool.window(LOGIN_TITLE), login.window, "the dialog afterwards")
            equal(login.typed(), wrong, "the text afterwards")
            until(lambda: login.controls()["txtPasswort"]["focus"], "the focus back in the password box")
        for default in ("cmdLogin", "cmdLogin", "cmdAbbrechen", "cmdLogin"):  # focus: box, both buttons, box
            until(lambda: default_buttons(login.controls()) == [default], f"only {default} looks like a default button")
            tool.key("Tab")
        tool.key("shift+Tab")
        login.type_password(PASSWORD)
        tool.click_middle(login.controls()["cmdLogin"]["rect"])
        tool.window(TITLE)


@journey
def cancelling_changes_nothing(scene):
    for keys in (["Tab", "Tab", "Return"], ["Escape"], ["alt+F4"]):
        tool = scene.tool()
        before = state_of(tool.folder)
        with tool:
            tool.login().type_password("x")
            tool.key(*keys)
            tool.ended()
        equal(state_of(tool.folder), before, f"the folder after cancelling by {keys}")


def state_of(folder):
    return {path.name: (path.stat().st_mtime_ns, path.read_bytes()) for path in folder.iterdir()}


# The account window

@journey
def accounts_are_listed_in_order_and_reading_them_leaves_the_file_as_it_was(scene):
    tool = scene.tool()
    before = state_of(tool.folder)
    with tool:
        compare_with_file(scene, tool.accounts(), "twelve")
        scene.picture("twelve")
        tool.key("Tab", "alt+F4")
        tool.ended()
    check(state_of(tool.folder) == before, "the folder changed")


def compare_with_file(scene, accounts, file):
    """Checks the whole list, and every account in the fields, with the arrow key from row to row."""
    expected = scene.files.rows(file)
    rows = accounts.list(0, len(expected) + 1)
    equal([tuple(row) for row in rows["rows"]],
          [(row["BenKTO_Name"] or "", row["BenKTO_ServerPath"] or "") for row in expected], "the list")
    equal([(column["text"], column["image"]) for column in rows["columns"]], [("Benutzername", 0), ("ServerPath", -1)],
          "the columns and their marks")
    inner = accounts.controls()["lvwBenKto"]["client"][2]
    check(sum(column["width"] for column in rows["columns"]) >= inner, "the columns leave a part of the list empty")
    equal(accounts.focus(), "lvwBenKto", "the focus at the start")
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
def the_selection_moves_with_keys_and_clicks_and_cannot_be_emptied(scene):
    with scene.tool("thousand") as tool:
        accounts = tool.accounts()
        accounts.until_selected(0)
        page = accounts.list()["perPage"]
        names = [row[0] for row in accounts.list(0, 1000)["rows"]]
        first_of_letter = next(i for i, name in enumerate(names) if i > 1 and name[0].lower() in "bdfhkm")
        letter = names[first_of_letter][0].lower()
        for key, row in (("Down", 1), ("End", 999), ("Up", 998), ("Home", 0), ("Next", page - 1),
                         ("Next", 2 * (page - 1)), ("Home", 0), (letter, first_of_letter)):
            tool.key(key)
            accounts.until_selected(row)
        top = accounts.list()["top"]
        for row in (top + 5, top + 5, top + 3):
            tool.click(*accounts.row_middle(row))
            accounts.until_selected(row)

    with scene.tool("twelve") as tool:
        accounts = tool.accounts()
        tool.key("Down")
        accounts.until_selected(1)
        left, _, _, bottom = accounts.controls()["lvwBenKto"]["rect"]
        below = left + 40, bottom - 25
        for what, act in (("a click below the rows", lambda: tool.click(*below)),
                          ("Ctrl+click on the selected row", lambda: tool.click(*accounts.row_middle(1), "ctrl")),
                          ("Ctrl+click below the rows", lambda: tool.click(*below, "ctrl")),
                          ("Ctrl+Space", lambda: tool.key("ctrl+space"))):
            act()
            time.sleep(SETTLE_SECONDS)
            equal(accounts.selected(), 1, f"the selected row after {what}")
            check(accounts.agrees(), f"the fields no longer show the selected row after {what}")
        tool.key("Down")
        accounts.until_selected(2)


@journey
def windows_are_drawn_completely(scene):
    """Checks what is drawn on the screen; tests/win32 checks that nothing is clipped at any size."""
    with scene.tool() as tool:
        width = tool.tree(tool.login().window, LOGIN_CONTROLS)["client"][2]
        equal(width, round(330 * scene.session.dpi / 96), "the width of the dialog in pixels")
        accounts = tool.accounts()
        expect_painted(scene, accounts, "opened")
        check(scene.session.ask("resize", accounts.window, 200, 150), "the window cannot be resized")
        expect_painted(scene, accounts, "smallest")
        scene.session.ask("send", accounts.window, WM_SYSCOMMAND, SC_MAXIMIZE)
        expect_painted(scene, accounts, "maximised")
        left, _, right, _ = accounts.controls()["lvwBenKto"]["rect"]
        check(right - left > 1200, "the list does not grow with the window")


def expect_painted(scene, accounts, what):
    """Waits until the window no longer changes: the window manager may change sizes, and needs time for that."""
    def unchanged():
        before = accounts.tree()
        time.sleep(SETTLE_SECONDS)
        return before if accounts.tree() == before else None
    tree = until(unchanged, "the window no longer changes")
    scene.picture(what)
    for control in tree["children"]:
        if control["text"]:
            check(len(scene.session.colours(*control["rect"])) > 5, f"{control['name']} is blank in the window {what}")


@journey
def a_file_that_cannot_be_opened_ends_the_program(scene):
    umlaut = "[SETTINGS]\r\nBenKtoPath=C:\\Büro Süd\r\n".encode("cp1252")
    for what, file, settings, word in (("missing folder", None, umlaut, "C:\\Büro Süd"),
                                       ("foreign password", "foreign", None, "Kennwort"), ("no database", "text", None, "")):
        tool = scene.tool(file, settings)
        before = state_of(tool.folder)
        with tool:
            tool.sign_in()
            check(len(tool.box()["text"]) > 60, f"no description for a {what}")
            check(all(w["class"] == BOX_CLASS or w["text"] != TITLE for w in tool.windows()),
                  f"the account window is there for a {what}")
            error_box_ends_the_program(scene, tool, "Laufzeitfehler '-2147", word)
        check(state_of(tool.folder) == before, f"the folder changed for a {what}")


# Running the journeys

def run_all(names, make_session, files):
    """Two sessions take the journeys from one queue. @return whether all passed"""
    waiting = queue.SimpleQueue()
    for name in names:
        waiting.put(name)

    def work(_):
        session = make_session()
        passed = True
        try:
            while True:
                start, name = time.monotonic(), waiting.get_nowait()
                why = why_failed(name, Scene(session, files, name))
                print(f"FAIL {name}: {why}" if why else f"PASS {name} ({time.monotonic() - start:.1f} s)", flush=True)
                passed = passed and not why
        except queue.Empty:
            return passed
        finally:
            session.close()

    with concurrent.futures.ThreadPoolExecutor() as pool:
        return all(list(pool.map(work, range(min(2, len(names))))))


def why_failed(name, scene):
    try:
        JOURNEYS[name](scene)
    except Failure as failure:
        scene.session.picture(f"failed-{name}")
        return str(failure)
    except Exception as error:  # an error in the journey itself; the others still run
        traceback.print_exc(file=sys.stdout)
        return repr(error)
    return None


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--arch", choices=("x64", "x86"), default="x64")
    parser.add_argument("--dpi", type=int, default=96)
    parser.add_argument("--only", metavar="NAME", help="journeys whose name contains NAME")
    parser.add_argument("--keep-pictures", metavar="DIR", type=pathlib.Path)
    parser.add_argument("--through", choices=("embedded", "com"), default="embedded", help="the engine behind the tool")
    parser.add_argument("--file", metavar="FILE", type=pathlib.Path, action="append", default=[],
                        help="an account file to use instead of the one made with twelve accounts, or with none")
    arguments = parser.parse_args()
    enter_architecture(arguments.arch)
    built = ROOT / f"out/build/windows-{arguments.arch}"
    exe = {"embedded": ROOT / f"out/windows-{arguments.arch}/bin/prjDexoBenutzerkonten.exe",
           "com": built / "tests/comdouble/tool_through_com.exe"}[arguments.through]
    session = lambda: Session(arguments.arch, arguments.dpi, exe, built / "tests/wine/probe/probe.exe",
                              arguments.keep_pictures)
    if arguments.keep_pictures:
        arguments.keep_pictures.mkdir(parents=True, exist_ok=True)
    if arguments.through == "com":
        import provider_faults  # noqa: F401
    names = [name for name in JOURNEYS if not arguments.only or arguments.only in name]
    with tempfile.TemporaryDirectory() as folder:
        return run_all(names, session, Files(pathlib.Path(folder), arguments.file))


sys.exit(not main())
