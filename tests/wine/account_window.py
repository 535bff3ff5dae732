"""A user's actions at the account window, and what the user sees of it."""
from driver import TITLE, check, equal, until

RED = 0xFF0000


def names(accounts):
    return [row[0] for row in accounts.list(0, 100)["rows"]]


def go_to(accounts, name):
    """Selects the visible row with this name by a click."""
    row = names(accounts).index(name)
    accounts.tool.click(*accounts.row_middle(row))
    accounts.until_selected(row)


def fill(accounts, name=None, path=None):
    """Types into the text boxes as an input method does, because the keyboard lacks many characters."""
    tool = accounts.tool
    for box, text in (("txtUserNameDexo", name), ("txtPathGlobal", path)):
        if text is not None:
            tool.click_middle(accounts.controls()[box]["rect"])
            until(lambda: accounts.focus() == box, f"the focus in {box}")
            tool.key("ctrl+a", "Delete")
            until(lambda: not accounts.controls()[box]["text"], f"{box} empty")
            tool.session.ask("type", text)
            until(lambda: accounts.controls()[box]["text"] == text, f"'{text}' in {box}")


def press(accounts, name):
    accounts.tool.click_middle(accounts.controls()[name]["rect"])


def is_red(accounts):
    save = accounts.controls()["cmdSpeichern"]
    left, top, _, bottom = save["rect"]
    seen = accounts.tool.session.colours(left + 6, (top + bottom) // 2)
    return save["text"] == "Speichern (Strg+S)" and save["enabled"] and seen == {RED}


def is_clean(accounts):
    save = accounts.controls()["cmdSpeichern"]
    return save["text"] == "Speichern" and not save["enabled"]


def answer(accounts, text, kind="information", key="Return", picture=None):
    """Checks the text of the box in front and closes it with the key."""
    tool = accounts.tool
    box = tool.box()
    equal((box["title"], box["text"], box["icon"]), (TITLE, text, kind), "the box")
    buttons = ["Ja", "Nein"] if kind == "question" else ["OK"]
    equal(box["buttons"], buttons, "its buttons")
    equal((box["owner"], box["ownerEnabled"]), (accounts.window, False), "its owner and whether that is enabled")
    if picture:
        picture()
    tool.key(key)
    until(lambda: all(box["text"] != text for box in tool.boxes()), "the box is gone")


def error_box_ends_the_program(scene, tool, *words):
    box = tool.box()
    scene.picture("error")
    equal((box["title"], box["icon"], box["buttons"]), (TITLE, "critical", ["OK"]), f"the box for {words}")
    check(all(word in box["text"] for word in words), f"the box says {box['text']!r}, wanted {words}")
    tool.key("Return")
    tool.ended(1)


def toggled(accounts):
    return accounts.controls()["cmbAddNew"]["checked"]


def can_reset(accounts, row):
    if row:
        accounts.tool.key("Down")
    accounts.until_selected(row)
    return accounts.controls()["cmbResetPWD"]["enabled"]
