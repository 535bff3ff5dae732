"""A user's actions at the account window, and what the user sees of it."""
import contextlib
import re

from driver import BOX_CLASS, TITLE, Failure, check, equal, until

RED = 0xFF0000


def names(accounts):
    return [row[0] for row in accounts.list(0, 100)["rows"]]


def ordinary(accounts):
    """Names, in the list's order, of accounts that can be saved unchanged and whose names can be written in another
    case; files of other writers have other accounts, too. The first account, shown at the start, is left out."""
    found = [name for name, path in accounts.list(0, 100)["rows"][1:]
             if path.strip() and re.fullmatch(r"[A-Za-zÄÖÜäöü ,.&()0-9-]+", name)]
    check(len(found) >= 4, f"only {found} are accounts like others")
    return found


def go_to(accounts, name):
    """Selects the visible row with this name by a click."""
    row = names(accounts).index(name)
    accounts.tool.click(*accounts.row_middle(row))
    accounts.until_selected(row)


def fill(accounts, name=None, path=None):
    for box, text in (("txtUserNameDexo", name), ("txtPathGlobal", path)):
        if text is None:
            continue
        accounts.tool.click_middle(accounts.controls()[box]["rect"])
        until(lambda: accounts.focus() == box, f"the focus in {box}")
        seen = lambda: accounts.controls()[box]["text"]
        for by_keys in (True, True, False):  # on a busy display, one of the two keys of a backslash may come too late
            accounts.tool.key("ctrl+a", "Delete")
            until(lambda: not seen(), f"{box} empty")
            if text:
                accounts.tool.type(text, by_keys)
            with contextlib.suppress(Failure):
                until(lambda: len(seen()) >= len(text), f"'{text}' in {box}", 5)
            if seen() == text:
                break
        equal(seen(), text, f"the text in {box}")


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
    equal([text.replace("&", "") for text in box["buttons"]], buttons, "its buttons")
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
