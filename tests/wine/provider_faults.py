"""Journeys through the exe that reaches a double of ADO through COM, with a provider that fails (tests/comdouble).

Each failure is shown with its number and its German description and ends the tool. Nothing is written unless the user
has asked for it, and nothing is written twice. When the box is shown, the tool holds no more objects of the provider
than while it waited for input.
"""
import itertools

from account_window import answer, error_box_ends_the_program
from driver import TITLE, check, equal, journey, until
from writing import add_row, compare_rows, enter_new_account, press, row_named, stored_rows

NOT_SO, DIED = "Das darf nicht sein.", "Datenträger- oder Netzwerkfehler."


def see_error_box(scene, tool, number, words, held, fault):
    tool.box()
    equal(scene.session.ask("held"), held, f"the number of the provider's objects that are held after {fault}")
    shown = f"{number} ({number & 0xFFFFFFFF:08x})" if number < 0 else f"{number}"
    error_box_ends_the_program(scene, tool, f"Laufzeitfehler '{shown}':", words)


@journey
def a_failure_at_the_start_or_at_the_end_is_shown_and_changes_nothing(scene):
    connection = 3  # and its two properties
    for fault, number, words, held in (
            (("Connection.Provider", -2146824582, NOT_SO), 3706, NOT_SO, 0),
            (("statements", 1), -2147467259, DIED, connection),  # when the first account is loaded
            (("Connection.Close", -2147467259, NOT_SO), -2147467259, NOT_SO, connection)):
        with scene.tool(faults=[fault]) as tool:
            before = tool.database.read_bytes()
            tool.sign_in()
            if "Connection.Close" in fault:
                tool.window(TITLE)
                tool.key("Escape")
            see_error_box(scene, tool, number, words, held, fault)
            check(tool.database.read_bytes() == before, f"{fault}: the file changed")


# Commands: each changes `rows` to what the file must contain afterwards, and returns the last key to press.

def new_account(accounts, rows):
    add_row(rows, "Neu", "C:\\Neu")
    enter_new_account(accounts, "Neu", "C:\\Neu")
    return "ctrl+s"


def deletion(accounts, rows):
    del rows[row_named(rows, accounts.shown()[0])["BenKTO_ID"]]
    press(accounts, "cmdDel")
    accounts.tool.box()
    return "j"


def ends_well(accounts, count):
    """Whether the command ends with `count` accounts in the list and not with an error box."""
    tool = accounts.tool

    def seen():
        boxes = tool.boxes()
        if not boxes:
            return "well" if accounts.list()["count"] == count and accounts.agrees() else None
        if boxes[0]["icon"] == "information":
            answer(accounts, boxes[0]["text"])
        return "error" if boxes[0]["icon"] == "critical" else None
    return until(seen, "the end of the command") == "well"


def done_once_or_not_at_all(command, refused):
    """@param refused  the call that writes. In the first run the provider refuses it. In the next runs the connection
    dies at the first statement after signing in, at the second, and so on, until the command succeeds."""
    def run(scene):
        deaths = ((("statements", left), -2147467259, DIED) for left in itertools.count(2))
        was_done = False
        for fault, number, words in itertools.chain([((refused, -2147217887, NOT_SO), -2147217887, NOT_SO)],
                                                    deaths):
            with scene.tool(faults=[fault]) as tool:
                accounts = tool.accounts()
                held = scene.session.ask("held")
                before, rows = stored_rows(scene, tool), stored_rows(scene, tool)
                tool.key(command(accounts, rows))
                if ends_well(accounts, len(rows)):
                    compare_rows(scene, tool, rows)
                    break
                see_error_box(scene, tool, number, words, held, fault)
                is_written = stored_rows(scene, tool) == rows
                compare_rows(scene, tool, rows if is_written else before)
                check(is_written or not was_done, f"undone again with {fault}")
                was_done = is_written
        check(was_done, "no connection died after the write")
    run.__name__ = f"{command.__name__}_is_done_once_or_not_at_all"
    journey(run)


done_once_or_not_at_all(new_account, "Recordset.Update")
done_once_or_not_at_all(deletion, "Connection.Execute")
