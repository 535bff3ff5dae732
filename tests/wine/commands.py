"""Journeys through the account window's commands that write nothing."""
import subprocess
import time

from account_window import (answer, can_reset, check_order, fill, go_to, is_clean, is_red, names, ordinary, press,
                            toggled)
from driver import BOX_CLASS, LVM_SCROLL, LVM_SETCOLUMNWIDTH, SETTLE_SECONDS, TITLE, check, equal, until

COMMANDS = {}


def command(function):
    COMMANDS[function.__name__] = function
    return function


@command
def the_list_is_sorted_by_its_headers(scene):
    with scene.tool() as tool:
        accounts = tool.accounts()
        name = ordinary(accounts)[2]
        go_to(accounts, name)
        left, top, _, _ = accounts.controls()["lvwBenKto"]["rect"]
        widths = [column["width"] for column in accounts.list()["columns"]]
        for column, marks in (0, [1, -1]), (0, [0, -1]), (1, [-1, 1]), (1, [-1, 0]), (0, [1, -1]):
            # The header takes two clicks on the same place for a double click.
            tool.click(left + 30 + column * widths[0], top + 10)
            until(lambda: [c["image"] for c in accounts.list()["columns"]] == marks, f"the marks {marks}")
            scene.picture(f"by-{column}-{marks[column]}")
            rows = accounts.list(0, 100)["rows"]
            check_order([row[column] for row in rows], marks[column] == 1, f"the order by column {column}")
            equal(accounts.shown()[0], name, "the account in the fields")
            equal(rows[accounts.selected()][0], name, "the selected row")


@command
def a_second_click_on_a_header_turns_the_order_however_soon_it_comes(scene):
    with scene.tool() as tool:
        accounts = tool.accounts()
        left, top, _, _ = accounts.controls()["lvwBenKto"]["rect"]
        for clicks, mark in ((2, 0), (3, 1), (4, 1), (1, 0)):
            tool.session.xdotool("mousemove", left + 30, top + 10, "click", "--repeat", clicks, "--delay", 30, 1)
            until(lambda: accounts.list()["columns"][0]["image"] == mark, f"the mark {mark} after {clicks} clicks", 5)
            time.sleep(SETTLE_SECONDS)
            equal(accounts.list()["columns"][0]["image"], mark, f"the mark after {clicks} clicks")


@command
def a_resized_list_keeps_its_selected_row_in_sight_and_its_given_widths(scene):
    with scene.tool("thousand") as tool:
        accounts = tool.accounts()
        left, top, right, bottom = accounts.tree()["rect"]
        resize = lambda share: tool.session.ask("resize", accounts.window, right - left, int((bottom - top) * share))

        def in_sight():
            rows = accounts.list()
            return rows["top"] <= rows["selected"] < rows["top"] + rows["perPage"]

        last = accounts.list()["perPage"] - 1
        tool.click(*accounts.row_middle(last))
        accounts.until_selected(last)
        resize(0.7)
        until(lambda: accounts.list()["perPage"] <= last, "fewer rows in the list")
        check(in_sight(), "the selected row is out of sight in the smaller window")
        scene.picture("smaller")
        tool.session.ask("send", accounts.list_handle, LVM_SCROLL, 0, 3000)
        until(lambda: not in_sight(), "the list scrolled by the user")
        before = accounts.list()["top"]
        resize(0.71)
        equal(accounts.list()["top"], before, "the first row shown of a list that the user has scrolled away")

        for width in 60, 300:
            tool.session.ask("send", accounts.list_handle, LVM_SETCOLUMNWIDTH, 1, width)
            tool.session.ask("resize", accounts.window, right - left + width, bottom - top)
            equal(accounts.list()["columns"][1]["width"], width, "the width of the last column, given in pixels")


@command
def edits_turn_the_save_button_red_until_they_are_dropped(scene):
    with scene.tool() as tool:
        accounts = tool.accounts()
        others = ordinary(accounts)
        scene.picture("viewing")
        for what in ("txtUserNameDexo", "txtPathGlobal", "chbProgrammupdate"):
            press(accounts, what)
            if what != "chbProgrammupdate":
                tool.key("End", "x")
            until(lambda: is_red(accounts), f"a red button after an edit of {what}")
            scene.picture(f"changed-{what}")
            go_to(accounts, others[1 if accounts.shown()[0] != others[1] else 2])
            until(lambda: is_clean(accounts), "a clean button after a click on another row")
        fill(accounts, name="anders")
        red_in_every_state(scene, accounts)
        for keys in ("shift+ctrl+s", "ISO_Level3_Shift+s"):
            tool.key(keys)
            time.sleep(SETTLE_SECONDS)
            check(is_red(accounts) and accounts.selected() is not None, f"something happened after {keys}")
        before = tool.database.read_bytes()
        tool.key("Escape")
        tool.ended()
        check(tool.database.read_bytes() == before, "closing with unsaved edits changed the file")


def red_in_every_state(scene, accounts):
    tool = accounts.tool
    until(lambda: is_red(accounts), "a red button")
    save = accounts.controls()["cmdSpeichern"]["rect"]
    tool.session.xdotool("mousemove", (save[0] + save[2]) // 2, (save[1] + save[3]) // 2)
    time.sleep(SETTLE_SECONDS)
    check(is_red(accounts), "the button is not red under the pointer")
    scene.picture("hot")
    tool.session.xdotool("mousedown", 1)
    time.sleep(SETTLE_SECONDS)
    check(is_red(accounts), "the button is not red while pressed")
    scene.picture("pressed")
    tool.session.xdotool("mousemove", 5, 5, "mouseup", 1)
    until(lambda: accounts.focus() == "cmdSpeichern", "the focus on the button")
    check(is_red(accounts), "the button is not red with the focus")
    scene.picture("focused")
    tool.key("Tab", "shift+Tab")
    until(lambda: accounts.focus() == "cmdSpeichern", "the focus back on the button")
    check(is_red(accounts), "the button is not red with the focus got by the Tab key")


@command
def without_visual_styles_the_save_button_is_red_too(scene):
    def styles(on):
        key = "HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\ThemeManager"
        equal(scene.session.wine(["reg", "add", key, "/v", "ThemeActive", "/d", on, "/f"],
                                 stdout=subprocess.DEVNULL).wait(), 0, "the exit code of reg")
    styles("0")
    try:
        with scene.tool() as tool:
            accounts = tool.accounts()
            fill(accounts, name="anders")
            red_in_every_state(scene, accounts)
            press(accounts, "cmbAddNew")
            until(lambda: toggled(accounts) and is_clean(accounts), "new account mode")
            scene.picture("new")
    finally:
        styles("1")


@command
def new_account_mode_is_entered_and_left(scene):
    for file in ("twelve", "empty"):
        with scene.tool(file) as tool:
            accounts = tool.accounts()
            count = accounts.list()["count"]
            until(lambda: accounts.focus() == "lvwBenKto", "the focus on the list")
            press(accounts, "cmbAddNew")
            until(lambda: toggled(accounts), "the button pressed")
            equal(accounts.list()["count"], 0, "the number of rows")
            equal(accounts.shown(), ("", ""), "the fields")
            check(is_clean(accounts), "the save button is not clean")
            scene.picture(f"new-{file}")
            fill(accounts, "Neu & Söhne", "C:\\Neu")
            until(lambda: is_red(accounts), "a red button")
            scene.picture(f"new-changed-{file}")
            press(accounts, "cmbAddNew")
            until(lambda: accounts.list()["count"] == count, "the rows again")
            check(not toggled(accounts), "the button is still pressed")
            if count:
                accounts.until_selected(0)
            else:
                equal(accounts.controls()["txtUserNameDexo"]["enabled"], False, "the name box in the empty window")
            check(is_clean(accounts), "the save button is not clean")
            until(lambda: accounts.focus() == "cmbAddNew", "the focus on the button that was clicked")


@command
def refused_saves_say_why(scene):
    no_name, no_path = "Bitte geben Sie den Benutzernamen an.", "Bitte geben Sie den Datenbankpfad an."
    taken = "Es existiert bereits ein Benutzerkonto mit dieser Bezeichnung."
    with scene.tool() as tool:
        accounts = tool.accounts()
        other = ordinary(accounts)[1]
        before = tool.database.read_bytes()
        for name, path, text, focus in (("", "C:\\X", no_name, "txtUserNameDexo"), ("", "", no_name, "txtUserNameDexo"),
                                        ("   ", "C:\\X", no_name, "txtUserNameDexo"),
                                        ("Neu", "  ", no_path, "txtPathGlobal"),
                                        (other.swapcase(), "C:\\X", taken, "txtPathGlobal")):
            fill(accounts, name, path)
            tool.key("ctrl+s")
            answer(accounts, text, picture=lambda: scene.picture(text.split()[-2]))
            until(lambda: accounts.focus() == focus, f"the focus in {focus} after '{name}', '{path}'")
            check(is_red(accounts), "the save button is no longer red")
            equal(accounts.shown(), (name.strip(), path.strip()), "the fields")
        check(tool.database.read_bytes() == before, "a refused save changed the file")


@command
def questions_answered_no_change_nothing(scene):
    with scene.tool() as tool:
        accounts = tool.accounts()
        before = tool.database.read_bytes()
        row = next(i for i in range(len(names(accounts))) if can_reset(accounts, i))
        name = accounts.shown()[0]
        for button, text in (("cmdDel", f"Soll das Benutzerkonto '{name}' jetzt gelöscht werden?"),
                             ("cmbResetPWD", f"Soll das Passwort für '{name}' jetzt zurückgesetzt werden?")):
            press(accounts, button)
            answer(accounts, text, "question", "n", lambda: scene.picture(button))
            equal(accounts.selected(), row, "the selected row")
            until(lambda: accounts.focus() == button, "the focus on the button")
        check(tool.database.read_bytes() == before, "the file changed")


@command
def a_folder_is_chosen_or_not(scene):
    with scene.tool() as tool:
        accounts = tool.accounts()
        path = accounts.shown()[1]

        def chooser():
            press(accounts, "cmdGlobal")
            return until(lambda: next((w for w in tool.windows() if w["class"] == BOX_CLASS and w["front"]), None),
                         "the folder chooser")
        chooser()
        scene.picture("chooser")
        check(not next(w for w in tool.windows() if w["handle"] == accounts.window)["enabled"], "its owner is enabled")
        tool.key("Escape")
        tool.window(TITLE)
        equal(accounts.shown()[1], path, "the path after cancelling")
        check(is_clean(accounts), "cancelling marks the account as changed")
        chooser()
        time.sleep(SETTLE_SECONDS)
        tool.key("Return")
        tool.window(TITLE)
        until(lambda: is_red(accounts), "a red button after choosing a folder")
        chosen = accounts.shown()[1]
        check(chosen[1:3] == ":\\" and chosen != path and not chosen.endswith("\\"), f"the path is {chosen!r}")
        scene.picture("chosen")
