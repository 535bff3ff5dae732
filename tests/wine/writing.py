"""Journeys through the account window's commands that write, and those that try to write but must not.

At the end of each, the account file must be sound and hold exactly the rows that the journey expects, in all columns.
"""
import contextlib
import fcntl
import functools
import os
import struct
import time

from account_window import answer, can_reset, fill, go_to, is_clean, names, ordinary, press, toggled
from driver import (BOX_CLASS, SETTLE_SECONDS, TITLE, VK_DOWN, WM_ENDSESSION, WM_KEYDOWN, WM_QUERYENDSESSION, check,
                    equal, journey, looking_default, until)

GREY = 0xC0C0C0
INITIAL = "a4c123b1612dd272d1371c17149d439536b3216fdaeeb975729fae923d5a4fd1"
END_OF_NOTICE = "\r\n\r\nMNwelKOP\r\n\r\nDer Anwender wird beim ersten Login aufgefordert dieses zu ändern."

# How programs lock each other out of the account file (docs/file-format.md, "Sharing").
LOCK_BYTE = 0x400000000000
FIRST_USER_BYTE = 0x10000001


def writing(file="twelve"):
    """A journey on a copy of that file. It gets the account window and the rows by number as they are at the start,
    and changes these rows to what the file must hold at the end."""
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
    until_shown_in(accounts, names(accounts).index(accounts.shown()[0]))
    equal(accounts.focus(), "lvwBenKto", "the focus after saving")


def until_shown_in(accounts, row):
    accounts.until_selected(row)
    rows = accounts.list()
    check(rows["top"] <= row < rows["top"] + rows["perPage"], f"row {row} is out of view: {rows['top']} is on top")


def error_box_ends_the_program(scene, accounts, *words):
    tool = accounts.tool
    box = tool.box()
    scene.picture("error")
    equal((box["icon"], box["title"], box["buttons"]), ("critical", TITLE, ["OK"]), "the box")
    check(all(word in box["text"] for word in words), f"the box says {box['text']!r}, wanted {words}")
    tool.key("Return")
    tool.ended(1)


# New accounts, changes, deletions, resets

def enter_new_account(accounts, name, path):
    press(accounts, "cmbAddNew")
    until(lambda: toggled(accounts), "the button pressed")
    fill(accounts, name, path)
    return f"Das Benutzerkonto '{name.strip()}' wurde mit folgendem Initialpasswwort angelegt:" + END_OF_NOTICE


def delete(accounts, key="j", picture=None):
    press(accounts, "cmdDel")
    answer(accounts, f"Soll das Benutzerkonto '{accounts.shown()[0]}' jetzt gelöscht werden?", "question", key, picture)


@writing()
def a_new_account_is_created_and_announced(scene, accounts, rows):
    notice = enter_new_account(accounts, " Müller & Söhne ", " C:\\Neu\\ ")
    press(accounts, "chbProgrammupdate")
    save(accounts, notice, picture=lambda: scene.picture("announced"))
    equal(accounts.list()["count"], len(rows) + 1, "the number of rows")
    equal(accounts.shown(), ("Müller & Söhne", "C:\\Neu"), "the account shown")
    equal((toggled(accounts), accounts.controls()["cmbResetPWD"]["enabled"]), (False, False), "the buttons on or enabled")
    add_row(rows, "Müller & Söhne", "C:\\Neu\\", update=True)


@writing("empty")
def the_first_account_of_an_empty_file_is_created_and_deleted(scene, accounts, rows):
    def fields_are_locked():
        controls = accounts.controls()
        left, top, right, bottom = controls["txtPathGlobal"]["rect"]
        equal(scene.session.colours((left + right) // 2, (top + bottom) // 2), {GREY}, "the colour of a locked box")
        locked = ("txtUserNameDexo", "txtPathGlobal", "chbProgrammupdate", "cmdGlobal", "cmdSpeichern")
        equal([name for name in locked if controls[name]["enabled"]], [], "what is enabled in the empty window")
    fields_are_locked()
    scene.picture("empty")
    save(accounts, enter_new_account(accounts, "Erster", "C:\\Erster"))
    equal(accounts.list()["count"], 1, "the number of rows")
    add_row(rows, "Erster", "C:\\Erster")
    compare_rows(scene, accounts.tool, rows)
    delete(accounts)
    until(lambda: accounts.list()["count"] == 0, "no row")
    fields_are_locked()
    rows.clear()


@writing()
def names_of_any_script_are_stored_shown_and_asked_for(scene, accounts, rows):
    first, second, path = "Łukasz & Śmigły 李", "&Ωmega && Co", "D:\\Łódź & 李"
    save(accounts, enter_new_account(accounts, first, path))
    add_row(rows, first, path)
    compare_rows(scene, accounts.tool, rows)
    fill(accounts, second)
    save(accounts)
    change_row(row_named(rows, first), Name=second)
    delete(accounts, "n", lambda: scene.picture("question"))


def reset(accounts, first=None, second=None):
    """Answers the two boxes of the command."""
    name = accounts.shown()[0]
    answer(accounts, f"Soll das Passwort für '{name}' jetzt zurückgesetzt werden?", "question", "j", first)
    answer(accounts, f"Das Passwort für '{name}' wurde auf folgendes Initialpasswwort zurückgesetzt:" + END_OF_NOTICE,
           picture=second)


@writing()
def a_reset_by_keyboard_and_four_more_enters_delete_nothing(scene, accounts, rows):
    tool = accounts.tool
    next(i for i in range(len(rows)) if can_reset(accounts, i))
    name = accounts.shown()[0]
    for stop in ("cmbAddNew", "txtUserNameDexo", "txtPathGlobal", "cmdGlobal", "chbProgrammupdate", "cmbResetPWD"):
        tool.key("Tab")
        until(lambda: accounts.focus() == stop, f"the focus on {stop}")
    tool.key("Return")
    reset(accounts, second=lambda: scene.picture("reset"))
    until(lambda: not accounts.controls()["cmbResetPWD"]["enabled"], "the button disabled")
    equal(accounts.focus(), "lvwBenKto", "the focus")
    equal(looking_default(accounts.controls()), [], "buttons that look as if Enter pressed them")
    tool.key("Return", "Return", "Return", "Return")
    time.sleep(SETTLE_SECONDS)
    tool.window(TITLE)
    row_named(rows, name)["BenKTO_Pass"] = INITIAL


# Boxes, and other programs

@writing()
def nobody_closes_the_window_while_a_box_is_open(scene, accounts, rows):
    tool = accounts.tool

    def others_try():
        before = accounts.selected(), accounts.shown()
        tool.session.ask("post", accounts.list_handle, WM_KEYDOWN, VK_DOWN)
        tool.others_want_it_closed(accounts.window, accounts.controls()["cmdAbbrechen"]["handle"])
        check(any(w["handle"] == accounts.window for w in tool.windows()), "the window is gone under a box")
        equal((accounts.selected(), accounts.shown()), before, "the selected row and the fields under a box")

    press(accounts, "cmdGlobal")
    until(lambda: any(w["class"] == BOX_CLASS and w["front"] for w in tool.windows()), "the folder chooser")
    others_try()
    tool.key("Escape")
    tool.window(TITLE)
    check(is_clean(accounts), "cancelling marks the account as changed")

    tool.click(*accounts.row_middle(0))  # the keys go to the list again
    next(i for i in range(len(rows)) if can_reset(accounts, i))
    row_named(rows, accounts.shown()[0])["BenKTO_Pass"] = INITIAL
    press(accounts, "cmbResetPWD")
    reset(accounts, others_try, others_try)
    save(accounts, enter_new_account(accounts, "Neu", "C:\\Neu"), picture=others_try)
    add_row(rows, "Neu", "C:\\Neu")

    equal(tool.session.ask("send", accounts.window, WM_QUERYENDSESSION), 1, "the answer without a box")
    tool.session.ask("send", accounts.window, WM_ENDSESSION, 0)  # another program has stopped the end of the session
    tool.window(TITLE)
    tool.session.ask("send", accounts.window, WM_ENDSESSION, 1)
    tool.ended()


@writing()
def names_given_meanwhile_are_taken_or_replaced_and_a_deleted_account_is_saved_anew(scene, accounts, rows):
    shown, other = (row_named(rows, name) for name in ordinary(accounts)[1:3])
    execute = lambda statement: scene.files.execute(accounts.tool.database, statement)
    go_to(accounts, shown["BenKTO_Name"])
    for row, name in ((shown, "Zwischenzeit"), (other, "Anderswo")):
        execute(f"UPDATE Benutzerkonto SET BenKTO_Name = '{name}' WHERE BenKTO_ID = {row['BenKTO_ID']}")
    other["BenKTO_Name"] = "Anderswo"
    own = accounts.shown()[0]
    fill(accounts, "Anderswo")
    accounts.tool.key("ctrl+s")
    answer(accounts, "Es existiert bereits ein Benutzerkonto mit dieser Bezeichnung.")
    until(lambda: accounts.focus() == "txtUserNameDexo", "the focus back in the box")
    fill(accounts, own)
    save(accounts)
    check("Anderswo" in names(accounts) and "Zwischenzeit" not in names(accounts), "the list does not show the change")

    execute(f"DELETE FROM Benutzerkonto WHERE BenKTO_ID = {shown['BenKTO_ID']}")
    del rows[shown["BenKTO_ID"]]
    fill(accounts, path="C:\\anders")
    add_row(rows, own, "C:\\anders", None, shown["BenKTO_R_ProgUpdate"])
    save(accounts)


@contextlib.contextmanager
def locked(path, byte):
    """Locks the byte as another process would: the lock belongs to the open file."""
    with open(path, "r+b") as file:
        fcntl.fcntl(file, fcntl.F_OFD_SETLK, struct.pack("hhqqi", fcntl.F_WRLCK, os.SEEK_SET, byte, 1, 0))
        yield


@writing()
def a_save_beside_a_writer_ends_the_program(scene, accounts, rows):
    fill(accounts, "Anders", "C:\\anders")  # the first account of a foreign file may have no name
    with locked(accounts.tool.database, LOCK_BYTE):
        accounts.tool.key("ctrl+s")
        error_box_ends_the_program(scene, accounts, "'-2147467259", "BenKTO.mdb", "wird bereits benutzt")


@writing()
def a_new_account_beside_a_user_of_the_original_engine_is_refused_before_it_is_announced(scene, accounts, rows):
    slot = accounts.tool.database.with_suffix(".ldb")
    slot.write_bytes(b"PC17".ljust(32, b"\0") + b"Meier".ljust(32, b"\0"))
    enter_new_account(accounts, "Neu", "C:\\Neu")
    with locked(slot, FIRST_USER_BYTE):
        accounts.tool.key("ctrl+s")
        error_box_ends_the_program(scene, accounts, "gesperrt", "Meier", "PC17")
