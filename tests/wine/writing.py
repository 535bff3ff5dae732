"""Journeys through the account window's commands that write, and those that try to write but must not.

At the end of each, the account file must be sound and hold exactly the rows that the journey expects, in all columns.
"""
import contextlib
import fcntl
import os
import struct
import time

from account_window import (answer, can_reset, check_order, fill, go_to, is_clean, is_red, names, ordinary, press,
                            toggled)
from driver import (BOX_CLASS, SETTLE_SECONDS, TITLE, VK_DOWN, WM_ENDSESSION, WM_KEYDOWN, WM_QUERYENDSESSION, check,
                    equal, looking_default, until)

WRITING = {}
INITIAL = "a4c123b1612dd272d1371c17149d439536b3216fdaeeb975729fae923d5a4fd1"
END_OF_NOTICE = "\r\n\r\nMNwelKOP\r\n\r\nDer Anwender wird beim ersten Login aufgefordert dieses zu ändern."

# How programs lock each other out of the account file (docs/file-format.md, "Sharing").
LOCK_BYTE = 0x400000000000
FIRST_USER_BYTE = 0x10000001


def writing(file="twelve"):
    """A journey on a copy of that file. It gets the account window and the rows by number as they are at the start,
    and changes these rows to what the file must hold at the end."""
    def register(function):
        def journey(scene):
            with scene.tool(file) as tool:
                accounts = tool.accounts()
                rows = stored_rows(scene, tool)
                function(scene, accounts, rows)
                compare_rows(scene, tool, rows)
        WRITING[function.__name__] = journey
        return journey
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


def save(accounts):
    """Presses Ctrl+S; afterwards the list has the focus, and shows the account in its visible part."""
    name = accounts.shown()[0]
    accounts.tool.key("ctrl+s")
    until(lambda: is_clean(accounts), "a clean button")
    until_shown_in(accounts, names(accounts).index(name))
    equal(accounts.focus(), "lvwBenKto", "the focus after saving")


def until_shown_in(accounts, row):
    accounts.until_selected(row)
    rows = accounts.list()
    check(rows["top"] <= row < rows["top"] + rows["perPage"], f"row {row} is out of view: {rows['top']} is on top")


def sort_by_path_descending(accounts):
    left, top, _, _ = accounts.controls()["lvwBenKto"]["rect"]
    accounts.tool.click(left + 30 + accounts.list()["columns"][0]["width"], top + 10)
    until(lambda: [c["image"] for c in accounts.list()["columns"]] == [-1, 1], "the mark of a descending order")


def error_box_ends_the_program(scene, accounts, *words):
    tool = accounts.tool
    box = tool.box()
    scene.picture("error")
    equal((box["icon"], box["title"], [b[1] for b in box["buttons"]]), ("critical", TITLE, ["OK"]), "the box")
    check(all(word in box["text"] for word in words), f"the box says {box['text']!r}, wanted {words}")
    tool.key("Return")
    tool.ended(1)


# New accounts

def announcement(name):
    return f"Das Benutzerkonto '{name}' wurde mit folgendem Initialpasswwort angelegt:" + END_OF_NOTICE


@writing()
def a_new_account_is_created_and_announced(scene, accounts, rows):
    press(accounts, "cmbAddNew")
    until(lambda: toggled(accounts), "the button pressed")
    fill(accounts, " Müller & Söhne ", " C:\\Neu\\ ")
    press(accounts, "chbProgrammupdate")
    accounts.tool.key("ctrl+s")
    answer(accounts, announcement("Müller & Söhne"), picture=lambda: scene.picture("announced"))
    until(lambda: accounts.list()["count"] == len(rows) + 1, "one row more")
    until_shown_in(accounts, names(accounts).index("Müller & Söhne"))
    equal(accounts.shown()[1], "C:\\Neu", "the path shown")
    check(is_clean(accounts) and not toggled(accounts), "the window is not in its viewing state")
    equal(accounts.focus(), "lvwBenKto", "the focus")
    equal(accounts.controls()["cmbResetPWD"]["enabled"], False, "whether the password can be reset")
    add_row(rows, "Müller & Söhne", "C:\\Neu\\", update=True)


@writing("empty")
def the_first_account_of_an_empty_file_is_created(scene, accounts, rows):
    press(accounts, "cmbAddNew")
    until(lambda: toggled(accounts), "the button pressed")
    fill(accounts, "Erster", "C:\\Erster")
    press(accounts, "cmdSpeichern")
    answer(accounts, announcement("Erster"))
    until(lambda: accounts.list()["count"] == 1, "a row")
    until_shown_in(accounts, 0)
    scene.picture("viewing")
    equal(accounts.focus(), "lvwBenKto", "the focus")
    add_row(rows, "Erster", "C:\\Erster")


@writing()
def names_of_any_script_are_stored_shown_and_asked_for(scene, accounts, rows):
    first, second, path = "Łukasz & Śmigły 李", "&Ωmega && Co", "D:\\Łódź & 李"
    press(accounts, "cmbAddNew")
    until(lambda: toggled(accounts), "the button pressed")
    fill(accounts, first, path)
    accounts.tool.key("ctrl+s")
    answer(accounts, announcement(first), picture=lambda: scene.picture("announced"))
    until(lambda: accounts.list()["count"] == len(rows) + 1, "one row more")
    accounts.until_selected(names(accounts).index(first))
    add_row(rows, first, path)
    compare_rows(scene, accounts.tool, rows)

    fill(accounts, second)
    accounts.tool.key("ctrl+s")
    until(lambda: is_clean(accounts), "a clean button")
    accounts.until_selected(names(accounts).index(second))
    scene.picture("renamed")
    change_row(row_named(rows, first), Name=second)
    press(accounts, "cmdDel")
    answer(accounts, f"Soll das Benutzerkonto '{second}' jetzt gelöscht werden?", "question", "n",
           lambda: scene.picture("question"))


# Changed accounts

@writing()
def an_account_is_renamed_where_the_list_is_sorted(scene, accounts, rows):
    left, top, _, _ = accounts.controls()["lvwBenKto"]["rect"]
    accounts.tool.click(left + 30, top + 10)
    until(lambda: accounts.list()["columns"][0]["image"] == 1, "the mark of a descending order")
    old = ordinary(accounts)[2]
    go_to(accounts, old)
    fill(accounts, "Zzz & Co")
    save(accounts)
    equal(accounts.shown()[0], "Zzz & Co", "the name shown")
    check_order(names(accounts), True, "the order by name")
    change_row(row_named(rows, old), Name="Zzz & Co")


@writing()
def an_account_may_keep_its_name_or_change_its_letters_case(scene, accounts, rows):
    for old, changed in zip(ordinary(accounts)[1:], (str, str.swapcase)):
        index = names(accounts).index(old)
        go_to(accounts, old)
        fill(accounts, changed(old))
        until(lambda: is_red(accounts), "a red button")
        save(accounts)
        equal(accounts.selected(), index, "the row of the account")
        equal(accounts.shown()[0], changed(old), "the name shown")
        change_row(row_named(rows, old), Name=changed(old))


@writing()
def save_and_delete_leave_the_list_sorted_by_path(scene, accounts, rows):
    sort_by_path_descending(accounts)
    order = names(accounts)
    name = next(name for name in reversed(order) if name in ordinary(accounts))
    go_to(accounts, name)
    fill(accounts, path="zzz")
    save(accounts)
    scene.picture("saved")
    order.remove(name)
    order.insert(0, name)
    equal(names(accounts), order, "the order after saving")
    change_row(row_named(rows, order[0]), ServerPath="zzz")
    compare_rows(scene, accounts.tool, rows)

    for place in (len(order) - 1, 0):
        accounts.tool.key("End" if place else "Home")
        accounts.until_selected(place)
        deleted = order.pop(place)
        press(accounts, "cmdDel")
        answer(accounts, f"Soll das Benutzerkonto '{deleted}' jetzt gelöscht werden?", "question", "j")
        until(lambda: accounts.list()["count"] == len(order), f"{len(order)} rows")
        until_shown_in(accounts, 0)
        equal(names(accounts), order, f"the order after deleting {deleted}")
        del rows[row_named(rows, deleted)["BenKTO_ID"]]
        compare_rows(scene, accounts.tool, rows)
    equal([c["image"] for c in accounts.list()["columns"]], [-1, 1], "the marks of the headers")


# Deleting, resetting

@writing()
def accounts_are_deleted_down_to_the_last(scene, accounts, rows):
    for left in reversed(range(len(rows))):
        name = accounts.shown()[0]
        press(accounts, "cmdDel")
        answer(accounts, f"Soll das Benutzerkonto '{name}' jetzt gelöscht werden?", "question", "j")
        until(lambda: accounts.list()["count"] == left, f"{left} rows")
        if left:
            accounts.until_selected(0)
        del rows[row_named(rows, name)["BenKTO_ID"]]
        compare_rows(scene, accounts.tool, rows)
    equal([n for n in ("txtUserNameDexo", "txtPathGlobal", "chbProgrammupdate", "cmdGlobal", "cmdSpeichern")
           if accounts.controls()[n]["enabled"]], [], "what is enabled in the empty window")


@writing()
def a_reset_by_keyboard_and_four_more_enters_delete_nothing(scene, accounts, rows):
    tool = accounts.tool
    next(i for i in range(len(rows)) if can_reset(accounts, i))
    name = accounts.shown()[0]
    for _ in range(8):
        if accounts.focus() == "cmbResetPWD":
            break
        before = accounts.focus()
        tool.key("Tab")
        until(lambda: accounts.focus() != before, "another focus")
    tool.key("Return")
    answer(accounts, f"Soll das Passwort für '{name}' jetzt zurückgesetzt werden?", "question", "j")
    answer(accounts, f"Das Passwort für '{name}' wurde auf folgendes Initialpasswwort zurückgesetzt:" + END_OF_NOTICE,
           picture=lambda: scene.picture("reset"))
    until(lambda: not accounts.controls()["cmbResetPWD"]["enabled"], "the button disabled")
    equal(accounts.focus(), "lvwBenKto", "the focus")
    equal(looking_default(accounts.controls()), [], "buttons that look as if Enter pressed them")
    scene.picture("done")
    tool.key("Return", "Return", "Return", "Return")
    time.sleep(SETTLE_SECONDS)
    tool.window(TITLE)
    row_named(rows, name)["BenKTO_Pass"] = INITIAL


# Errors, and changes by others meanwhile

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
    until(lambda: next((w for w in tool.windows() if w["class"] == BOX_CLASS and w["front"]), None), "the chooser")
    others_try()
    tool.key("Escape")
    tool.window(TITLE)

    tool.click(*accounts.row_middle(0))  # the keys go to the list again
    next(i for i in range(len(rows)) if can_reset(accounts, i))
    name = accounts.shown()[0]
    press(accounts, "cmbResetPWD")
    answer(accounts, f"Soll das Passwort für '{name}' jetzt zurückgesetzt werden?", "question", "j", others_try)
    answer(accounts, f"Das Passwort für '{name}' wurde auf folgendes Initialpasswwort zurückgesetzt:" + END_OF_NOTICE,
           picture=others_try)
    press(accounts, "cmdDel")
    answer(accounts, f"Soll das Benutzerkonto '{name}' jetzt gelöscht werden?", "question", "j", others_try)
    del rows[row_named(rows, name)["BenKTO_ID"]]
    press(accounts, "cmbAddNew")
    until(lambda: toggled(accounts), "the button pressed")
    fill(accounts, "Neu", "C:\\Neu")
    tool.key("ctrl+s")
    answer(accounts, announcement("Neu"), picture=others_try)
    until(lambda: accounts.list()["count"] == len(rows) + 1, "one row more")
    add_row(rows, "Neu", "C:\\Neu")

    equal(tool.session.ask("send", accounts.window, WM_QUERYENDSESSION), 1, "the answer without a box")
    tool.session.ask("send", accounts.window, WM_ENDSESSION, 0)  # another program has stopped the end of the session
    tool.window(TITLE)
    tool.session.ask("send", accounts.window, WM_ENDSESSION, 1)
    tool.ended()


@writing()
def an_apostrophe_ends_in_the_error_box_and_nothing_is_written(scene, accounts, rows):
    before = accounts.tool.database.read_bytes()
    fill(accounts, "O'Neil")
    accounts.tool.key("ctrl+s")
    error_box_ends_the_program(scene, accounts, "-2147217900", "Neil")
    check(accounts.tool.database.read_bytes() == before, "the file changed")


@writing()
def an_account_deleted_meanwhile_is_saved_as_a_new_one(scene, accounts, rows):
    name = ordinary(accounts)[1]
    go_to(accounts, name)
    fill(accounts, path="C:\\anders")
    old = rows.pop(row_named(rows, name)["BenKTO_ID"])
    scene.files.execute(accounts.tool.database, f"DELETE FROM Benutzerkonto WHERE BenKTO_ID = {old['BenKTO_ID']}")
    add_row(rows, name, "C:\\anders", None, old["BenKTO_R_ProgUpdate"])
    save(accounts)


@writing()
def an_account_deleted_meanwhile_cannot_be_gone_to(scene, accounts, rows):
    name = ordinary(accounts)[1]
    gone = rows.pop(row_named(rows, name)["BenKTO_ID"])
    scene.files.execute(accounts.tool.database, f"DELETE FROM Benutzerkonto WHERE BenKTO_ID = {gone['BenKTO_ID']}")
    accounts.tool.click(*accounts.row_middle(names(accounts).index(name)))
    error_box_ends_the_program(scene, accounts, "'3021'")


@writing()
def names_given_meanwhile_are_taken_or_replaced(scene, accounts, rows):
    shown, other = (row_named(rows, name) for name in ordinary(accounts)[1:3])
    go_to(accounts, shown["BenKTO_Name"])
    for row, name in ((shown, "Zwischenzeit"), (other, "Anderswo")):
        scene.files.execute(accounts.tool.database, f"UPDATE Benutzerkonto SET BenKTO_Name = '{name}' "
                                                    f"WHERE BenKTO_ID = {row['BenKTO_ID']}")
    other["BenKTO_Name"] = "Anderswo"
    own = accounts.shown()[0]
    fill(accounts, "Anderswo")
    accounts.tool.key("ctrl+s")
    answer(accounts, "Es existiert bereits ein Benutzerkonto mit dieser Bezeichnung.")
    fill(accounts, own)
    accounts.tool.key("ctrl+s")
    until(lambda: is_clean(accounts), "a clean button")
    check("Anderswo" in names(accounts) and "Zwischenzeit" not in names(accounts), "the list does not show the change")
    change_row(shown)


@contextlib.contextmanager
def locked(path, byte):
    """Locks the byte as another process would: the lock belongs to the open file."""
    with open(path, "r+b") as file:
        fcntl.fcntl(file, fcntl.F_OFD_SETLK, struct.pack("hhqqi", fcntl.F_WRLCK, os.SEEK_SET, byte, 1, 0))
        yield


def by_a_writer(tool):
    return locked(tool.database, LOCK_BYTE)


def by_a_user_of_the_original_engine(tool):
    slot = tool.database.with_suffix(".ldb")
    slot.write_bytes(b"PC17".ljust(32, b"\0") + b"Meier".ljust(32, b"\0"))
    return locked(slot, FIRST_USER_BYTE)


def _save_a_change(accounts):
    go_to(accounts, ordinary(accounts)[0])
    fill(accounts, path="C:\\anders")
    return lambda: accounts.tool.key("ctrl+s")


def _save_a_new_one(accounts):
    press(accounts, "cmbAddNew")
    until(lambda: toggled(accounts), "the button pressed")
    fill(accounts, "Neu", "C:\\Neu")
    return lambda: accounts.tool.key("ctrl+s")


def _delete(accounts):
    press(accounts, "cmdDel")
    accounts.tool.box()
    return lambda: accounts.tool.key("j")


def a_locked_file_ends_the_program_and_nothing_is_written(scene):
    for what, by, prepare, words in (
            ("save", by_a_writer, _save_a_change, ["'-2147467259", "BenKTO.mdb", "wird bereits benutzt"]),
            ("delete", by_a_writer, _delete, ["'-2147467259", "BenKTO.mdb", "gesperrt"]),
            # Others may still read, so only the write fails, and it fails before the account is announced.
            ("save", by_a_user_of_the_original_engine, _save_a_change, ["gesperrt", "Meier", "PC17"]),
            ("new", by_a_user_of_the_original_engine, _save_a_new_one, ["gesperrt", "Meier", "PC17"])):
        with scene.tool() as tool:
            accounts = tool.accounts()
            before, rows = tool.database.read_bytes(), stored_rows(scene, tool)
            command = prepare(accounts)
            with by(tool):
                command()
                error_box_ends_the_program(scene, accounts, *words)
            check(tool.database.read_bytes() == before, f"{what} changed the file")
            compare_rows(scene, tool, rows)


WRITING[a_locked_file_ends_the_program_and_nothing_is_written.__name__] = \
    a_locked_file_ends_the_program_and_nothing_is_written
