"""What a user does at the account window, and what he sees of it."""
from driver import BOX_CLASS, TITLE, Failure, check, equal, until

RED = [255, 0, 0]


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
    buttons = ["Ja", "Nein"] if kind == "question" else ["OK"]
    equal([text.replace("&", "") for _, text in box["buttons"]], buttons, "its buttons")
    equal((box["owner"], box["ownerEnabled"]), (accounts.window, False), "its owner and whether that is enabled")
    if picture:
        picture()
    tool.key(key)
    until(lambda: all(tool.session.ask("box", w["handle"])["text"] != text for w in tool.windows()
                      if w["class"] == BOX_CLASS), "the box is gone")


def toggled(accounts):
    return accounts.controls()["cmbAddNew"]["checked"]


def can_reset(accounts, row):
    if row:
        accounts.tool.key("Down")
    accounts.until_selected(row)
    return accounts.controls()["cmbResetPWD"]["enabled"]
