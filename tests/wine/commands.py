"""Journeys through the account window's commands that leave the account file as it is."""
import re
import subprocess
import time

from account_window import fill, go_to, is_red, names
from driver import SETTLE_SECONDS, check, equal, journey, until


@journey
def every_click_on_a_header_reverses_the_order_even_if_clicks_follow_fast(scene):
    with scene.tool() as tool:
        accounts = tool.accounts()
        name = names(accounts)[3]
        go_to(accounts, name)
        left, top, _, _ = accounts.controls()["lvwBenKto"]["rect"]
        widths = [column["width"] for column in accounts.list()["columns"]]
        marks = lambda: [column["image"] for column in accounts.list()["columns"]]
        # The header takes two clicks on the same place for a double click.
        for column, clicks, wanted in ((0, 1, [1, -1]), (1, 1, [-1, 0]), (1, 1, [-1, 1]), (0, 1, [0, -1]),
                                       (0, 2, [0, -1]), (0, 3, [1, -1])):
            tool.session.xdotool("mousemove", left + 30 + column * widths[0], top + 10, "click", "--repeat", clicks,
                                 "--delay", 30, 1)
            until(lambda: marks() == wanted, f"the marks {wanted} after {clicks} clicks")
            time.sleep(SETTLE_SECONDS if clicks > 1 else 0)
            equal(marks(), wanted, f"the marks after {clicks} clicks")
            rows = accounts.list(0, 100)["rows"]
            texts = [row[column].casefold().translate(str.maketrans("äöü", "aou")) for row in rows]
            plain = [text for text in texts if re.fullmatch(r"[a-z0-9 ,.&()$:\\-]*", text)]  # sorted alike everywhere
            check(len(plain) > 4, f"{rows} have too few texts of letters that sort alike everywhere")
            equal(plain, sorted(plain, reverse=wanted[column] == 1), f"the order by column {column}")
            equal((accounts.shown()[0], rows[accounts.selected()][0]), (name, name), "the account shown and selected")


@journey
def the_save_button_is_red_in_every_state_with_and_without_visual_styles(scene):
    key = "HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\ThemeManager"
    for styles in "0", "1":
        equal(scene.session.wine(["reg", "add", key, "/v", "ThemeActive", "/d", styles, "/f"],
                                 stdout=subprocess.DEVNULL).wait(), 0, "the exit code of reg")
        with scene.tool() as tool:
            accounts = tool.accounts()
            before = tool.database.read_bytes()
            fill(accounts, name="anders")
            red_in_every_state(scene, accounts)
            for keys in ("shift+ctrl+s", "ISO_Level3_Shift+s"):
                tool.key(keys)
                time.sleep(SETTLE_SECONDS)
                check(is_red(accounts) and accounts.selected() is not None, f"something happened after {keys}")
            tool.key("Escape")
            tool.ended()
            check(tool.database.read_bytes() == before, "closing with unsaved edits changed the file")


def red_in_every_state(scene, accounts):
    tool = accounts.tool
    until(lambda: is_red(accounts), "a red button")
    left, top, right, bottom = accounts.controls()["cmdSpeichern"]["rect"]
    for state, mouse in (("under the pointer", ["mousemove", (left + right) // 2, (top + bottom) // 2]),
                         ("while pressed", ["mousedown", 1]), ("with the focus", ["mousemove", 5, 5, "mouseup", 1])):
        tool.session.xdotool(*mouse)
        time.sleep(SETTLE_SECONDS)
        check(is_red(accounts), f"the button is not red {state}")
        scene.picture(state.replace(" ", "-"))
    tool.key("Tab", "shift+Tab")
    until(lambda: accounts.focus() == "cmdSpeichern", "the focus back on the button")
    check(is_red(accounts), "the button is not red with the focus got by the Tab key")
