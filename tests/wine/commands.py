"""Journeys through the account window's commands."""
import time

from driver import BOX_CLASS, SETTLE_SECONDS, TITLE, Failure, check, equal, until

COMMANDS = {}
RED = [255, 0, 0]
INITIAL = "a4c123b1612dd272d1371c17149d439536b3216fdaeeb975729fae923d5a4fd1"
END_OF_NOTICE = "\r\n\r\nMNwelKOP\r\n\r\nDer Anwender wird beim ersten Login aufgefordert dieses zu ändern."


def command(function):
    COMMANDS[function.__name__] = function
    return function


# What a user does and sees

def go_to(accounts, name):
    """Selects the visible row of that name by a click."""
    rows = [row[0] for row in accounts.list(0, 100)["rows"]]
    accounts.tool.click(*accounts.row_middle(rows.index(name)))
    accounts.until_selected(rows.index(name))


def fill(accounts, name=None, path=None):
    for box, text in (("txtUserNameDexo", name), ("txtPathGlobal", path)):
        if text is None:
            continue
        accounts.tool.click_middle(accounts.controls()[box]["rect"])
        until(lambda: accounts.focus() == box, f"the focus in {box}")
        for attempt in range(3):  # a busy display may lose one of the two keys that make a backslash
            accounts.tool.key("ctrl+a", "Delete")
            if text:
                accounts.tool.type(text)
            try:
                until(lambda: accounts.controls()[box]["text"] == text, f"'{text}' in {box}", 5)
                break
            except Failure as failure:
                if attempt == 2:
                    raise Failure(f"{failure}, but '{accounts.controls()[box]['text']}'") from failure


def press(accounts, name):
    accounts.tool.click_middle(accounts.controls()[name]["rect"])


def is_red(accounts):
    save = accounts.controls()["cmdSpeichern"]
    left, top, right, bottom = save["rect"]
    seen = accounts.tool.session.ask("pixel", left + 6, (top + bottom) // 2)
    return save["text"] == "Speichern (Strg+S)" and save["enabled"] and seen == RED


def is_clean(accounts):
    save = accounts.controls()["cmdSpeichern"]
    return save["text"] == "Speichern" and not save["enabled"]


def answer(accounts, text, kind="information", key="Return", picture=None):
    """The box in front says the text; it is left by the key."""
    tool = accounts.tool
    box = tool.box()
    equal((box["title"], box["text"], box["icon"]), (TITLE, text, kind), "the box")
    equal([b[1].replace("&", "") for b in box["buttons"]], ["Ja", "Nein"] if kind == "question" else ["OK"], "its buttons")
    equal((box["owner"], box["ownerEnabled"]), (accounts.window, False), "its owner and whether that is enabled")
    if picture:
        picture()
    tool.key(key)
    until(lambda: all(tool.session.ask("box", w["handle"])["text"] != text for w in tool.windows()
                      if w["class"] == BOX_CLASS), "the box is gone")


def sort_text(text):
    return text.casefold().translate(str.maketrans("äöü", "aou"))


def toggled(accounts):
    return accounts.controls()["cmbAddNew"]["checked"]


def rows_of(scene, tool):
    scene.files.check(tool.database)
    return {row["BenKTO_Name"]: row for row in scene.files.rows(tool.database)}


# Without writing

@command
def the_list_is_sorted_by_its_headers(scene):
    with scene.tool() as tool:
        accounts = tool.accounts()
        expected = accounts.list(0, 12)["rows"]
        go_to(accounts, expected[4][0])
        left, top, _, _ = accounts.controls()["lvwBenKto"]["rect"]
        widths = [column["width"] for column in accounts.list()["columns"]]
        for step, (column, marks) in enumerate(((0, [1, -1]), (0, [0, -1]), (1, [-1, 1]), (1, [-1, 0]), (0, [1, -1]))):
            # At another place each time: two clicks on one place are a double click to the header.
            tool.click(left + 30 + 12 * step + column * widths[0], top + 10)
            until(lambda: [c["image"] for c in accounts.list()["columns"]] == marks, f"the marks {marks}")
            scene.picture(f"by-{column}-{marks[column]}")
            rows = accounts.list(0, 12)["rows"]
            keys = [sort_text(row[column]) for row in rows]
            equal(keys, sorted(keys, reverse=marks[column] == 1), f"the order by column {column}")
            equal(accounts.shown()[0], expected[4][0], "the account in the fields")
            equal(rows[accounts.selected()][0], expected[4][0], "the selected row")


@command
def edits_turn_the_save_button_red_until_they_are_dropped(scene):
    with scene.tool() as tool:
        accounts = tool.accounts()
        names = [row[0] for row in accounts.list(0, 12)["rows"]]
        scene.picture("viewing")
        for what in ("txtUserNameDexo", "txtPathGlobal", "chbProgrammupdate"):
            press(accounts, what)
            if what != "chbProgrammupdate":
                tool.key("End", "x")
            until(lambda: is_red(accounts), f"a red button after an edit of {what}")
            scene.picture(f"changed-{what}")
            go_to(accounts, names[2 if accounts.selected() != 2 else 3])
            until(lambda: is_clean(accounts), "a clean button after a click on another row")
        fill(accounts, name="anders")
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
        for keys in ("shift+ctrl+s", "ISO_Level3_Shift+s"):
            tool.key(keys)
            time.sleep(SETTLE_SECONDS)
            check(is_red(accounts) and accounts.selected() is not None, f"something happened after {keys}")
        before = tool.database.read_bytes()
        tool.key("Escape")
        tool.ended()
        check(tool.database.read_bytes() == before, "closing with unsaved edits changed the file")


@command
def new_account_mode_is_entered_and_left(scene):
    for file, count in (("twelve", 12), ("empty", 0)):
        with scene.tool(file) as tool:
            accounts = tool.accounts()
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
        other = accounts.list(3, 1)["rows"][0][0]
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
        row = next(i for i in range(12) if _can_reset(accounts, i))
        name = accounts.shown()[0]
        for button, text in (("cmdDel", f"Soll das Benutzerkonto '{name}' jetzt gelöscht werden?"),
                             ("cmbResetPWD", f"Soll das Passwort für '{name}' jetzt zurückgesetzt werden?")):
            press(accounts, button)
            answer(accounts, text, "question", "n", lambda: scene.picture(button))
            equal(accounts.selected(), row, "the selected row")
            until(lambda: accounts.focus() == button, "the focus on the button")
        check(tool.database.read_bytes() == before, "the file changed")


def _can_reset(accounts, row):
    if row:
        accounts.tool.key("Down")
    accounts.until_selected(row)
    return accounts.controls()["cmbResetPWD"]["enabled"]


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


# With writing

@command
def a_new_account_is_created_and_announced(scene):
    with scene.tool() as tool:
        accounts = tool.accounts()
        press(accounts, "cmbAddNew")
        until(lambda: toggled(accounts), "the button pressed")
        fill(accounts, " Müller & Söhne ", " C:\\Neu\\ ")
        press(accounts, "chbProgrammupdate")
        tool.key("ctrl+s")
        answer(accounts, "Das Benutzerkonto 'Müller & Söhne' wurde mit folgendem Initialpasswwort angelegt:" +
               END_OF_NOTICE, picture=lambda: scene.picture("announced"))
        until(lambda: accounts.list()["count"] == 13, "a thirteenth row")
        rows = [row[0] for row in accounts.list(0, 13)["rows"]]
        accounts.until_selected(rows.index("Müller & Söhne"))
        equal(accounts.shown()[1], "C:\\Neu", "the path shown")
        check(is_clean(accounts) and not toggled(accounts), "the window is not in its viewing state")
        equal(accounts.focus(), "lvwBenKto", "the focus")
        equal(accounts.controls()["cmbResetPWD"]["enabled"], False, "whether the password can be reset")
        stored = rows_of(scene, tool)["Müller & Söhne"]
        equal((stored["BenKTO_Pass"], stored["BenKTO_ServerPath"]), (INITIAL, "C:\\Neu\\"), "the row in the file")
        check(stored["BenKTO_R_ProgUpdate"] in (True, -1), "the right to program updates is not stored")


@command
def an_account_is_renamed_where_the_list_is_sorted(scene):
    with scene.tool() as tool:
        accounts = tool.accounts()
        left, top, _, _ = accounts.controls()["lvwBenKto"]["rect"]
        tool.click(left + 30, top + 10)
        until(lambda: accounts.list()["columns"][0]["image"] == 1, "the mark of a descending order")
        before = rows_of(scene, tool)
        old = accounts.list(4, 1)["rows"][0][0]
        go_to(accounts, old)
        fill(accounts, "Zzz & Co")
        tool.key("ctrl+s")
        until(lambda: is_clean(accounts), "a clean button")
        accounts.until_selected(0)
        equal((accounts.shown()[0], accounts.focus()), ("Zzz & Co", "lvwBenKto"), "name and focus")
        after = rows_of(scene, tool)
        # The path goes into the file as it is shown: without its trailing backslash.
        expected = {**before[old], "BenKTO_Name": "Zzz & Co",
                    "BenKTO_ServerPath": before[old]["BenKTO_ServerPath"].removesuffix("\\")}
        equal(after["Zzz & Co"], expected, "the row in the file")
        equal(len(after), 12, "the number of rows")


@command
def accounts_are_deleted_down_to_the_last(scene):
    with scene.tool() as tool:
        accounts = tool.accounts()
        for left in range(11, -1, -1):
            name = accounts.shown()[0]
            press(accounts, "cmdDel")
            answer(accounts, f"Soll das Benutzerkonto '{name}' jetzt gelöscht werden?", "question", "j")
            until(lambda: accounts.list()["count"] == left, f"{left} rows")
            if left:
                accounts.until_selected(0)
            equal(len(rows_of(scene, tool)), left, "the number of rows in the file")
        equal([n for n in ("txtUserNameDexo", "txtPathGlobal", "chbProgrammupdate", "cmdGlobal", "cmdSpeichern")
               if accounts.controls()[n]["enabled"]], [], "what is enabled in the empty window")


@command
def a_reset_by_keyboard_and_four_more_enters_delete_nothing(scene):
    with scene.tool() as tool:
        accounts = tool.accounts()
        next(i for i in range(12) if _can_reset(accounts, i))
        name = accounts.shown()[0]
        for _ in range(8):
            if accounts.focus() == "cmbResetPWD":
                break
            before = accounts.focus()
            tool.key("Tab")
            until(lambda: accounts.focus() != before, "another focus")
        tool.key("Return")
        answer(accounts, f"Soll das Passwort für '{name}' jetzt zurückgesetzt werden?", "question", "j")
        answer(accounts, f"Das Passwort für '{name}' wurde auf folgendes Initialpasswwort zurückgesetzt:" +
               END_OF_NOTICE, picture=lambda: scene.picture("reset"))
        until(lambda: not accounts.controls()["cmbResetPWD"]["enabled"], "the button disabled")
        equal(accounts.focus(), "lvwBenKto", "the focus")
        tool.key("Return", "Return", "Return", "Return")
        time.sleep(SETTLE_SECONDS)
        tool.window(TITLE)
        rows = rows_of(scene, tool)
        equal((len(rows), rows[name]["BenKTO_Pass"]), (12, INITIAL), "rows and password value in the file")


@command
def an_apostrophe_ends_in_the_error_box_and_nothing_is_written(scene):
    with scene.tool() as tool:
        accounts = tool.accounts()
        before = tool.database.read_bytes()
        fill(accounts, "O'Neil")
        tool.key("ctrl+s")
        box = tool.box()
        scene.picture("box")
        equal((box["icon"], box["title"]), ("critical", TITLE), "the box")
        check("-2147217900" in box["text"] and "Neil" in box["text"], f"the box says {box['text']!r}")
        tool.key("Return")
        tool.ended(1)
        check(tool.database.read_bytes() == before, "the file changed")


@command
def an_account_deleted_meanwhile_is_saved_as_a_new_one(scene):
    with scene.tool() as tool:
        accounts = tool.accounts()
        name = accounts.shown()[0]
        fill(accounts, path="C:\\anders")
        old = rows_of(scene, tool)[name]["BenKTO_ID"]
        scene.files.execute(tool.database, f"DELETE FROM Benutzerkonto WHERE BenKTO_ID = {old}")
        tool.key("ctrl+s")
        until(lambda: is_clean(accounts), "a clean button")
        accounts.until_selected(0)
        stored = rows_of(scene, tool)[name]
        check(stored["BenKTO_ID"] != old and stored["BenKTO_Pass"] is None, f"the row is {stored}")
