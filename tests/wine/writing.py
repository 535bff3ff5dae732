"""Journeys through the account window's commands that write, and those that try to write but must not.

At the end of each, the account file must be sound and hold exactly the rows that the journey expects, in all columns.
"""
import contextlib
import fcntl
import functools
import os
import struct
import time

from account_window import answer, can_reset, error_box_ends_the_program, fill, is_clean, is_red, names, press, toggled
from driver import (BOX_CLASS, SETTLE_SECONDS, TITLE, VK_DOWN, WM_ENDSESSION, WM_KEYDOWN, WM_QUERYENDSESSION, check,
                    default_buttons, equal, journey, until)

GREY = 0xC0C0C0
INITIAL = "a4c123b1612dd272d1371c17149d439536b3216fdaeeb975729fae923d5a4fd1"
END_OF_NOTICE = "\r\n\r\nMNwelKOP\r\n\r\nDer Anwender wird beim ersten Login aufgefordert dieses zu ändern."

# How programs lock each other out of the account file (docs/file-format.md, "Sharing").
LOCK_BYTE = 0x400000000000
FIRST_USER_BYTE = 0x10000001


def writing(file="twelve"):
    """A journey on a copy of that file. It gets the account window and the rows by id as they are at the start,
    and changes these rows to what the file must contain at the end."""
    def register(function):
        @functools.wraps(function)
        def run(scene):
            with scene.tool(file) as tool:
                accounts = tool.accounts()
                rows = stored_rows(scene, tool)
                function(scene, accounts, rows)
                compare_rows(scene, tool, rows)
        return journey(run)
    return register


def stored_rows(scene, tool):
    return {row["BenKTO_ID"]: row for row in scene.files.rows(tool.database)}


def compare_rows(scene, tool, expected):
    scene.files.check(tool.database)
    stored = stored_rows(scene, tool)
    for number in sorted(stored.keys() | expected.keys()):
        equal(stored.get(number), expected.get(number), f"account {number} in the file")


def row_named(rows, name):
    """The row whose name is shown as this; a row without a name is shown as the empty text."""
    return next(row for row in rows.values() if (row["BenKTO_Name"] or "") == name)


def add_row(rows, name, path, password=INITIAL, update=False):
    number = max(rows, default=0) + 1
    rows[number] = {"BenKTO_ID": number, "BenKTO_Name": name, "BenKTO_Pass": password, "BenKTO_ServerPath": path,
                    "BenKTO_R_ProgUpdate": update}


def change_row(row, **columns):
    """Changes a row as a save does: the path is stored as it is shown, without its trailing backslash."""
    row["BenKTO_ServerPath"] = (row["BenKTO_ServerPath"] or "").removesuffix("\\")
    row.update({f"BenKTO_{name}": value for name, value in columns.items()})


def save(accounts, notice=None, **options):
    """Presses Ctrl+S and answers the notice; afterwards the list has the focus, and shows the account in its visible
    part."""
    accounts.tool.key("ctrl+s")
    if notice:
        answer(accounts, notice, **options)
    until(lambda: is_clean(accounts), "a clean button")
    row = names(accounts).index(accounts.shown()[0])
    accounts.until_selected(row)
    equal(accounts.focus(), "lvwBenKto", "the focus after saving")
    rows = accounts.list()
    check(rows["top"] <= row < rows["top"] + rows["perPage"], f"row {row} is out of view: {rows['top']} is on top")


# New accounts, changes, deletions, resets

def enter_new_account(accounts, name, path):
    press(accounts, "cmbAddNew")
    until(lambda: toggled(accounts), "the button pressed")
    fill(accounts, name, path)
    return f"Das Benutzerkonto '{name.strip()}' wurde mit folgendem Initialpasswwort angelegt:" + END_OF_NOTICE


def delete(accounts, key="j", meanwhile=None):
    press(accounts, "cmdDel")
    answer(accounts, f"Soll das Benutzerkonto '{accounts.shown()[0]}' jetzt gelöscht werden?", "question", key, meanwhile)


@writing()
def an_account_with_a_name_in_any_script_is_created_announced_and_changed(scene, accounts, rows):
    first, second, path = "Łukasz & Śmigły 李", "&Ωmega && Co", "D:\\Łódź & 李"
    notice = enter_new_account(accounts, f" {first} ", f" {path}\\ ")
    press(accounts, "chbProgrammupdate")
    save(accounts, notice, picture=lambda: scene.picture("announced"))
    equal(accounts.shown(), (first, path), "the account shown")
    equal((toggled(accounts), accounts.controls()["cmbResetPWD"]["enabled"]), (False, False), "the buttons on or enabled")
    add_row(rows, first, path + "\\", update=True)
    compare_rows(scene, accounts.tool, rows)
    fill(accounts, second)
    save(accounts)
    change_row(row_named(rows, first), Name=second)
    delete(accounts, "n", lambda: scene.picture("question"))


@writing("empty")
def the_first_account_of_an_empty_file_is_created_and_deleted(scene, accounts, rows):
    def path_is_grey():
        left, top, right, bottom = accounts.controls()["txtPathGlobal"]["rect"]
        return scene.session.colours((left + right) // 2, (top + bottom) // 2) == {GREY}
    until(path_is_grey, "a grey box")
    scene.picture("empty")
    save(accounts, enter_new_account(accounts, "Erster", "C:\\Erster"))
    add_row(rows, "Erster", "C:\\Erster")
    compare_rows(scene, accounts.tool, rows)
    delete(accounts)
    until(lambda: accounts.list()["count"] == 0 and path_is_grey(), "no row and a grey box")
    rows.clear()


@writing()
def a_reset_by_keyboard_and_four_more_enters_delete_nothing(scene, accounts, rows):
    tool = accounts.tool
    next(i for i in range(len(rows)) if can_reset(accounts, i))
    name = accounts.shown()[0]
    for stop in ("cmbAddNew", "txtUserNameDexo", "txtPathGlobal", "cmdGlobal", "chbProgrammupdate", "cmbResetPWD"):
        tool.key("Tab")
        until(lambda: accounts.focus() == stop, f"the focus on {stop}")
    tool.key("Return")
    answer(accounts, f"Soll das Passwort für '{name}' jetzt zurückgesetzt werden?", "question", "j")
    answer(accounts, f"Das Passwort für '{name}' wurde auf folgendes Initialpasswwort zurückgesetzt:" + END_OF_NOTICE,
           picture=lambda: scene.picture("reset"))
    until(lambda: not accounts.controls()["cmbResetPWD"]["enabled"], "the button disabled")
    equal(accounts.focus(), "lvwBenKto", "the focus")
    equal(default_buttons(accounts.controls()), [], "the buttons drawn as default buttons")
    tool.key("Return", "Return", "Return", "Return")
    time.sleep(SETTLE_SECONDS)
    tool.window(TITLE)
    row_named(rows, name)["BenKTO_Pass"] = INITIAL


# Boxes, and other programs

@writing()
def the_window_cannot_be_closed_while_a_box_is_open(scene, accounts, rows):
    tool = accounts.tool

    def others_try():
        before = accounts.selected(), accounts.shown()
        tool.session.ask("post", accounts.list_handle, WM_KEYDOWN, VK_DOWN)
        tool.ask_it_to_close(accounts.window, accounts.controls()["cmdAbbrechen"]["handle"])
        check(any(w["handle"] == accounts.window for w in tool.windows()), "the window was closed while a box was open")
        equal((accounts.selected(), accounts.shown()), before, "the selected row and the fields while a box is open")

    path = accounts.shown()[1]
    press(accounts, "cmdGlobal")
    until(lambda: any(w["class"] == BOX_CLASS and w["front"] for w in tool.windows()), "the folder chooser")
    scene.picture("chooser")
    check(not accounts.tree()["enabled"], "its owner is enabled")
    others_try()
    tool.key("Return")
    tool.window(TITLE)
    until(lambda: is_red(accounts), "a red button after choosing a folder")
    chosen = accounts.shown()[1]
    check(chosen[1:3] == ":\\" and chosen != path and not chosen.endswith("\\"), f"the path is {chosen!r}")

    delete(accounts, "n", others_try)
    save(accounts, enter_new_account(accounts, "Neu", "C:\\Neu"), picture=others_try)
    add_row(rows, "Neu", "C:\\Neu")

    equal(tool.session.ask("send", accounts.window, WM_QUERYENDSESSION), 1, "the answer without a box")
    tool.session.ask("send", accounts.window, WM_ENDSESSION, 0)  # another program has stopped the end of the session
    tool.window(TITLE)
    tool.session.ask("send", accounts.window, WM_ENDSESSION, 1)
    tool.ended()


@contextlib.contextmanager
def locked(path, byte):
    """Locks the byte as another process would: the lock belongs to the open file."""
    with open(path, "r+b") as file:
        fcntl.fcntl(file, fcntl.F_OFD_SETLK, struct.pack("hhqqi", fcntl.F_WRLCK, os.SEEK_SET, byte, 1, 0))
        yield


@writing()
def a_save_while_another_program_writes_ends_the_program(scene, accounts, rows):
    fill(accounts, "Anders", "C:\\anders")  # the first account of a foreign file may have no name
    with locked(accounts.tool.database, LOCK_BYTE):
        accounts.tool.key("ctrl+s")
        error_box_ends_the_program(scene, accounts.tool, "'-2147467259", "BenKTO.mdb", "wird bereits benutzt")


@writing()
def a_new_account_is_refused_before_it_is_announced_if_the_original_engine_has_the_file(scene, accounts, rows):
    slot = accounts.tool.database.with_suffix(".ldb")
    slot.write_bytes(b"PC17".ljust(32, b"\0") + b"Meier".ljust(32, b"\0"))
    enter_new_account(accounts, "Neu", "C:\\Neu")
    with locked(slot, FIRST_USER_BYTE):
        accounts.tool.key("ctrl+s")
        error_box_ends_the_program(scene, accounts.tool, "gesperrt", "Meier", "PC17")
