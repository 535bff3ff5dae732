"""Drives the tool's real exe on a display of its own: real key presses and clicks go in, the probe reads what it shows.

No code waits a fixed time for something to happen: `until` asks the probe until the wanted state is there. Only a proof
that nothing happens takes a fixed time (`SETTLE_SECONDS`).
"""
import contextlib
import json
import os
import pathlib
import shutil
import subprocess
import sys
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
WITH_DISPLAY = ROOT / "tests/wine/with-display.sh"

TITLE = "Tolv-Benutzerkontenverwaltung"
LOGIN_TITLE = "Anmeldung"
BOX_CLASS = "#32770"
TEXT_ID, ICON_ID = 0xFFFF, 1088  # in a message box
WS_VISIBLE = 0x10000000
PASSWORD = "HwendorpliqZ"

WAIT_SECONDS = 30  # far more than anything takes, so that a busy machine makes no test fail
SETTLE_SECONDS = 0.4

# The native control ids and the controls' names: ids start at 1001 and follow a form's order of definition.
LOGIN_CONTROLS = dict(enumerate(["Label6", "txtPasswort", "cmdLogin", "cmdAbbrechen"], 1001))
ACCOUNT_CONTROLS = dict(enumerate(
    ["chbProgrammupdate", "Frame27", "cmbResetPWD", "txtUserNameDexo", "txtPathGlobal", "cmdGlobal", "Label1", "Label5",
     "cmdAbbrechen", "cmdDel", "cmbAddNew", "cmdSpeichern", "lvwBenKto"], 1001))


# Messages that other programs and the system send.
WM_CLOSE, WM_QUERYENDSESSION, WM_ENDSESSION = 0x10, 0x11, 0x16
WM_SYSCOMMAND, SC_CLOSE, SC_MAXIMIZE, BM_CLICK = 0x112, 0xF060, 0xF030, 0xF5
WM_KEYDOWN, VK_DOWN = 0x100, 0x28


JOURNEYS = {}


def journey(function):
    """Registers a function that gets a scene: the session, the account files and a folder (journeys.py)."""
    JOURNEYS[function.__name__] = function
    return function


class Failure(Exception):
    """A journey saw something other than what it should see."""


def check(condition, why):
    if not condition:
        raise Failure(why)


def equal(seen, wanted, what):
    check(seen == wanted, f"{what} is {seen!r}, not {wanted!r}")


def until(ask, what, seconds=WAIT_SECONDS):
    """Asks again and again; returns the first answer that is neither None nor False."""
    end = time.monotonic() + seconds
    while True:
        answer = ask()
        if answer is not None and answer is not False:
            return answer
        check(time.monotonic() < end, f"timed out: {what}")
        time.sleep(0.02)


def default_buttons(controls):
    """The names of the buttons that are drawn as default buttons."""
    kind, default = 0xF, 1  # bits of a button's style
    return [name for name, control in controls.items()
            if control["class"] == "Button" and control["style"] & kind == default]


def enter_architecture(arch):
    """Starts this program again in the environment that has 32-bit Wine, if it is needed and not installed here. If
    this machine cannot run 32-bit programs, prints a line that says so and ends with 77."""
    if arch != "x86" or os.path.exists("/usr/lib/wine/wine") or os.environ.get("TOLV_WINE_X86"):
        return
    code = subprocess.call([ROOT / "tests/wine32.sh", sys.executable, *sys.argv])
    if code == 77:
        print("SKIP x86: this machine cannot run 32-bit code")
    sys.exit(code)


class Session:
    """A display, a Wine prefix and a running probe; runs one journey after the other."""

    def __init__(self, arch, dpi, exe, probe, pictures):
        self.dpi, self.exe, self.pictures = dpi, exe, pictures
        tell = "import json, os; print(json.dumps(dict(os.environ)))"
        self._holder = subprocess.Popen(
            [WITH_DISPLAY, "--arch", arch, "--dpi", str(dpi), "--limit", "3600", "bash", "-c",
             f"/usr/bin/python3 -c '{tell}'; exec cat"], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        told = self._holder.stdout.readline()
        check(told, "no display or no Wine prefix")
        self.environment = json.loads(told)
        self._wine = self.environment["TOLV_WINE"].split()
        self.folder = pathlib.Path(self.environment["RUN"])
        self.drive_c = pathlib.Path(self.environment["WINEPREFIX"]) / "drive_c"
        self._lock = threading.Lock()
        self._probe = self.wine([str(probe)], stdin=subprocess.PIPE, stdout=subprocess.PIPE)

    def close(self):
        with contextlib.suppress(OSError):
            self._probe.stdin.close()
        self._probe.kill()
        self._probe.wait()
        self._holder.stdin.close()
        self._holder.wait()

    def wine(self, command, **options):
        options.setdefault("stdin", subprocess.DEVNULL)
        return subprocess.Popen(self._wine + command, env=self.environment, stderr=subprocess.DEVNULL, **options)

    def ask(self, *words):
        """Asks the probe one question."""
        with self._lock:
            self._probe.stdin.write("\t".join(map(str, words)).encode() + b"\n")
            self._probe.stdin.flush()
            line = self._probe.stdout.readline()
        check(line, f"the probe has ended at {words}")
        return json.loads(line)

    def colours(self, left, top, right=None, bottom=None):
        """The different colours on this part of the screen, or of one pixel."""
        return set(self.ask("colours", left, top, right or left + 1, bottom or top + 1))

    def xdotool(self, *words):
        subprocess.run(["xdotool", *map(str, words)], env=self.environment, check=True, stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL, timeout=WAIT_SECONDS)

    def has_keyboard(self, title):
        """Whether the display gives key presses to a window with this title. Windows reports a window in front a
        moment earlier, and keys pressed in between are lost."""
        return subprocess.run(["xdotool", "getwindowfocus", "getwindowname"], env=self.environment, text=True,
                              capture_output=True, timeout=WAIT_SECONDS).stdout.rstrip("\n") == title

    def picture(self, name):
        if self.pictures:
            time.sleep(SETTLE_SECONDS)
            subprocess.run(["import", "-silent", "-window", "root", f"{self.pictures}/{name}-{self.dpi}.png"],
                           env=self.environment, check=False)


class Tool:
    """One run of the exe, in a folder of its own."""

    def __init__(self, session, folder, account_file=None, settings=None, faults=()):
        """@param account_file  copied next to the exe as BenKTO.mdb
        @param settings      bytes of Tolv.ini; None: there is no such file
        @param faults        of the provider behind COM (tests/comdouble/EngineThroughCom.cpp), each as the words of a line"""
        self.session, self.folder = session, folder
        folder.mkdir(parents=True)
        self.exe = folder / session.exe.name
        shutil.copy(session.exe, self.exe)
        if settings is not None:
            (folder / "Tolv.ini").write_bytes(settings)
        if faults:
            lines = ["\t".join(map(str, fault)) + "\n" for fault in faults]
            (folder / "faults.txt").write_bytes("".join(lines).encode())
        self.database = folder / "BenKTO.mdb"
        if account_file is not None:
            shutil.copy(account_file, self.database)
        self.process = None

    def __enter__(self):
        self.process = self.session.wine([str(self.exe)], cwd=self.folder)
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
            # The server notices a moment later that a program was killed; its windows must not disturb the next
            # journey.
            with contextlib.suppress(Failure):
                until(lambda: not self.windows(), "the windows are gone")

    # What can be seen

    def windows(self):
        return self.session.ask("windows", self.exe.name)

    def window(self, title, seconds=WAIT_SECONDS):
        """Waits for the window with this title until it is in front and accepts input; returns it."""
        def ready():
            check(self.process.poll() is None, f"the exe has ended with {self.process.poll()}, no window '{title}'")
            found = [w for w in self.windows() if w["text"] == title and w["class"] != BOX_CLASS]
            if not found or not found[0]["front"] or not found[0]["enabled"] or not self.session.has_keyboard(title):
                return None
            return found[0]["handle"]
        return until(ready, f"a window '{title}' in front", seconds)

    def box(self):
        """Waits for a message box in front; returns it."""
        def ready():
            return next((box for box in self.boxes() if box["icon"] != "other" and box["front"]  # and painted
                         and self.session.has_keyboard(box["title"])), None)
        return until(ready, "a message box in front")

    def boxes(self):
        return [self.box_of(window) for window in self.windows() if window["class"] == BOX_CLASS]

    def box_of(self, window):
        parts = {part["id"]: part for part in window["children"]}
        if not {TEXT_ID, ICON_ID} <= parts.keys():  # the folder chooser, or a box that is just being closed
            return {"text": "", "icon": "other"}
        return {"title": window["text"], "text": parts[TEXT_ID]["text"], "front": window["front"], "owner": window["owner"],
                "ownerEnabled": self.session.ask("tree", window["owner"])["enabled"],
                "icon": self.session.ask("icon", *parts[ICON_ID]["rect"]),
                "buttons": [part["text"].replace("&", "") for part in window["children"]
                            if part["class"] == "Button" and part["style"] & WS_VISIBLE]}

    def ended(self, code=0):
        """Waits until the process has ended by itself."""
        until(lambda: self.process.poll() is not None, "the process ends")
        equal(self.process.returncode, code, "the exit code")

    def tree(self, window, names):
        """The window and its children, in native order and by name."""
        tree = self.session.ask("tree", window)
        for child in tree["children"]:
            child["name"] = names.get(child["id"], f"id {child['id']}")
        tree["by"] = {child["name"]: child for child in tree["children"]}
        return tree

    # What other programs do

    def ask_it_to_close(self, window, close_button):
        """Sends every message that asks a window to close. The window must not object to the end of the session."""
        for code, words in ((WM_CLOSE, []), (WM_SYSCOMMAND, [SC_CLOSE])):
            self.session.ask("post", window, code, *words)
        self.session.ask("post", close_button, BM_CLICK)
        equal(self.session.ask("send", window, WM_QUERYENDSESSION), 1, "the answer to the end of the session")
        self.session.ask("send", window, WM_ENDSESSION, 1)
        time.sleep(SETTLE_SECONDS)

    # What the user does

    def key(self, *keys):
        self.session.xdotool("key", "--delay", 30, *keys)

    def click(self, x, y, modifier=None):
        steps = ["mousemove", x, y] + (["keydown", modifier] if modifier else []) + ["click", 1]
        self.session.xdotool(*steps, *(["keyup", modifier] if modifier else []))

    def click_middle(self, rect):
        self.click((rect[0] + rect[2]) // 2, (rect[1] + rect[3]) // 2)

    def login(self):
        """The login dialog, ready for input."""
        window = self.window(LOGIN_TITLE)
        until(lambda: self.tree(window, LOGIN_CONTROLS)["by"]["txtPasswort"]["focus"], "the focus in the password box")
        return Login(self, window)

    def sign_in(self):
        login = self.login()
        login.type_password(PASSWORD)
        self.key("Return")

    def accounts(self):
        """The account window after signing in."""
        self.sign_in()
        return Accounts(self, self.window(TITLE))


class Login:
    def __init__(self, tool, window):
        self.tool, self.window = tool, window

    def controls(self):
        return self.tool.tree(self.window, LOGIN_CONTROLS)["by"]

    def typed(self):
        return self.controls()["txtPasswort"]["text"]

    def type_password(self, text):
        """Types the password; replaces any text in the box."""
        self.tool.key("ctrl+a") if self.typed() else None
        self.tool.session.xdotool("type", "--delay", 20, text) if text else self.tool.key("Delete")
        until(lambda: self.typed() == text, f"'{text}' in the password box")


class Accounts:
    """The account window."""

    def __init__(self, tool, window):
        self.tool, self.window = tool, window
        self.list_handle = until(lambda: self.controls().get("lvwBenKto"), "the list")["handle"]

    def tree(self):
        return self.tool.tree(self.window, ACCOUNT_CONTROLS)

    def controls(self):
        return self.tree()["by"]

    def focus(self):
        return next((c["name"] for c in self.tree()["children"] if c["focus"]), None)

    def list(self, first=0, count=0):
        return self.tool.session.ask("list", self.list_handle, first, count)

    def row_middle(self, row):
        """A point on the first column of a visible row."""
        rect = self.list(row, 1)["firstRect"]
        return rect[0] + 30, (rect[1] + rect[3]) // 2

    def selected(self):
        return self.list()["selected"]

    def until_selected(self, row):
        until(lambda: self.selected() == row, f"row {row} selected")
        until(self.agrees, f"the fields show row {row}", 5)

    def shown(self):
        controls = self.controls()
        return controls["txtUserNameDexo"]["text"], controls["txtPathGlobal"]["text"]

    def agrees(self):
        """Whether one row is selected and the fields show its account."""
        rows = self.list()
        if rows["selectedCount"] != 1 or rows["focused"] != rows["selected"]:
            return False
        name, path = self.list(rows["selected"], 1)["rows"][0]
        return self.shown() == (name, path[:-1] if path.endswith("\\") else path)
