"""Journeys through the exe that reaches a double of ADO through COM, with a provider that fails (tests/comdouble).

Each failure is shown with its number and its German description and ends the tool. Nothing is written unless the user
has asked for it, and nothing is written twice. When the box is shown, the tool holds no more objects of the provider
than while it waited for input.
"""
import itertools

from account_window import answer, fill, go_to, is_clean, ordinary, press, toggled
from driver import BOX_CLASS, TITLE, Failure, check, equal, until
from writing import INITIAL, add_row, change_row, compare_rows, row_named, stored_rows

PROVIDER_FAULTS = {}
NOT_SO, DIED = "Das darf nicht sein.", "Datenträger- oder Netzwerkfehler."
NO_ROW = "Entweder BOF oder EOF ist True"
NO_ITEM, NO_TYPE = "kann nicht gefunden werden", "Typen unverträglich"


def provider_fault(function):
    PROVIDER_FAULTS[function.__name__] = function
    return function


def see_error_box(scene, tool, number, words, held):
    box = tool.box()
    scene.picture(f"error{number}")
    equal((box["icon"], box["title"], [b[1] for b in box["buttons"]]), ("critical", TITLE, ["OK"]), "the box")
    shown = f"{number} ({number & 0xFFFFFFFF:08x})" if number < 0 else f"{number}"
    check(box["text"].startswith(f"Laufzeitfehler '{shown}':") and words in box["text"],
          f"the box says {box['text']!r}, wanted {shown} and {words}")
    equal(scene.session.ask("held"), held, "the number of the provider's objects that are held")
    tool.key("Return")
    tool.ended(1)


@provider_fault
def a_failure_while_signing_in_is_shown_and_changes_nothing(scene):
    connection = 3  # and its two properties
    for fault, number, words, held in (
            (("call", "Connection.Provider", -2146824582, NOT_SO), 3706, NOT_SO, 0),
            (("property", "Data Source", -2147217887, NOT_SO), -2147217887, NOT_SO, 0),
            (("call", "Connection.Open", -2147467259, NOT_SO), -2147467259, NOT_SO, 0),
            (("statements", 0), -2147467259, DIED, connection),  # when the list is filled
            (("statements", 1), -2147467259, DIED, connection),  # when the first account is loaded
            (("missing-rows", 1), 3021, NO_ROW, connection),
            (("missing-field", "BenKTO_ServerPath"), 3265, NO_ITEM, connection),
            (("missing-field", "BenKTO_Pass"), 3265, NO_ITEM, connection),
            (("no-value", "BenKTO_Name"), 13, NO_TYPE, connection),
            (("text", "BenKTO_ID", "eins"), 13, NO_TYPE, connection)):
        with scene.tool(faults=[fault]) as tool:
            before = tool.database.read_bytes()
            tool.sign_in()
            try:
                see_error_box(scene, tool, number, words, held)
            except Failure as failure:
                raise Failure(f"{fault}: {failure}") from failure
            check(tool.database.read_bytes() == before, f"{fault}: the file changed")


@provider_fault
def a_close_that_fails_at_the_end_is_shown_too(scene):
    with scene.tool(faults=[("call", "Connection.Close", -2147467259, NOT_SO)]) as tool:
        tool.accounts()
        held = scene.session.ask("held")
        tool.key("Escape")
        see_error_box(scene, tool, -2147467259, NOT_SO, held)


# Commands: each returns the last key to press, and a check of the window for when the command is done.

def change_of_an_account(accounts, rows):
    name = ordinary(accounts)[0]
    go_to(accounts, name)
    change_row(row_named(rows, name), ServerPath="C:\\anders")
    fill(accounts, path="C:\\anders")
    return "ctrl+s", lambda: is_clean(accounts) and accounts.agrees()


def new_account(accounts, rows):
    add_row(rows, "Neu", "C:\\Neu")
    press(accounts, "cmbAddNew")
    until(lambda: toggled(accounts), "the button pressed")
    fill(accounts, "Neu", "C:\\Neu")
    return "ctrl+s", lambda: not toggled(accounts) and is_clean(accounts) and accounts.agrees()


def deletion(accounts, rows):
    del rows[row_named(rows, accounts.shown()[0])["BenKTO_ID"]]
    press(accounts, "cmdDel")
    accounts.tool.box()
    return "j", lambda: accounts.list()["count"] == len(rows) and accounts.agrees()


def reset_of_a_password(accounts, rows):
    name = next(name for name in ordinary(accounts) if row_named(rows, name)["BenKTO_Pass"] != INITIAL)
    go_to(accounts, name)
    row_named(rows, name)["BenKTO_Pass"] = INITIAL
    press(accounts, "cmbResetPWD")
    accounts.tool.box()
    return "j", lambda: not accounts.controls()["cmbResetPWD"]["enabled"] and accounts.agrees()


def ends_well(accounts, is_done):
    """Whether the command ends with the window in the expected state and not with an error box."""
    tool = accounts.tool

    def seen():
        boxes = [window["handle"] for window in tool.windows() if window["class"] == BOX_CLASS]
        if not boxes:
            return "well" if is_done() else None
        box = tool.session.ask("box", boxes[0])
        if box["icon"] == "information":
            answer(accounts, box["text"])
        return "error" if box["icon"] == "critical" else None
    return until(seen, "the end of the command") == "well"


def done_once_or_not_at_all(command, refused, statements):
    """@param refused     the call that writes; in the first run the provider refuses it
    @param statements  those before the command: in each run the connection dies one later, until the command works"""
    def journey(scene):
        deaths = ((("statements", left), -2147467259, DIED) for left in itertools.count(statements))
        was_done = False
        for fault, number, words in itertools.chain([(("call", refused, -2147217887, NOT_SO), -2147217887, NOT_SO)],
                                                    deaths):
            with scene.tool(faults=[fault]) as tool:
                accounts = tool.accounts()
                held = scene.session.ask("held")
                before, rows = stored_rows(scene, tool), stored_rows(scene, tool)
                key, is_done = command(accounts, rows)
                tool.key(key)
                if ends_well(accounts, is_done):
                    compare_rows(scene, tool, rows)
                    break
                see_error_box(scene, tool, number, words, held)
                is_written = stored_rows(scene, tool) == rows
                compare_rows(scene, tool, rows if is_written else before)
                check(is_written or not was_done, f"undone again with {fault}")
                was_done = is_written
        check(was_done, "no connection died behind the write")
    PROVIDER_FAULTS[f"{command.__name__}_is_done_once_or_not_at_all"] = journey


# Signing in needs two statements, moving to another account one more.
done_once_or_not_at_all(change_of_an_account, "Recordset.Update", 3)
done_once_or_not_at_all(new_account, "Recordset.Update", 2)
done_once_or_not_at_all(deletion, "Connection.Execute", 2)
done_once_or_not_at_all(reset_of_a_password, "Connection.Execute", 3)
