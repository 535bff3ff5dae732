#!/usr/bin/python3
"""Makes the handbook's pictures in docs/bilder from the real windows, on invented accounts.

Needs the tool and the probe of windows-x64 and kontodb of native-release, see tests/wine/journeys.py. Beside the pictures it
leaves `stand.txt`, by which tests/rules/handbook.py sees that layout or captions have changed since.
"""
import contextlib
import pathlib
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path[:0] = [str(ROOT / "tests/wine"), str(ROOT / "tests/rules")]

from account_window import fill, go_to, names, press, toggled  # noqa: E402
from driver import SETTLE_SECONDS, Session, Tool, until  # noqa: E402
from handbook import PICTURES, STATE, windows_state  # noqa: E402

BUILT = ROOT / "out/build/windows-x64"


def shoot(session, name):
    """The window and the box before it; what is beside them on the display is its empty ground."""
    time.sleep(SETTLE_SECONDS)
    picture = PICTURES / f"{name}.png"
    subprocess.run(["import", "-silent", "-window", "root", picture], env=session.environment, check=True)
    subprocess.run(["convert", picture, "-trim", "+repage", "+dither", "-colors", "48", "-strip", "-define",
                    "png:exclude-chunks=date,time", "-define", "png:compression-level=9", f"PNG8:{picture}"], check=True)


def login(session, accounts_file):
    with Tool(session, session.folder / "login", accounts_file) as tool:
        tool.login()
        shoot(session, "anmeldung")


@contextlib.contextmanager
def window(session, accounts_file, name):
    with Tool(session, session.folder / name, accounts_file) as tool:
        yield tool.accounts()


def edited(session, accounts_file):
    with window(session, accounts_file, "edited") as accounts:
        shoot(session, "kontenfenster")
        go_to(accounts, names(accounts)[3])
        fill(accounts, path=r"\\SRV02\Tolv\Archiv")
        shoot(session, "geaendert")


def commands(session, accounts_file):
    with window(session, accounts_file, "commands") as accounts:
        tool = accounts.tool

        def question(button, picture):
            press(accounts, button)
            tool.box()
            shoot(session, picture)
            tool.key("Escape")  # a question has no way out but its buttons
            tool.key("n")
            until(lambda: accounts.tree()["enabled"], "the window after the question")

        row = 0
        while not accounts.controls()["cmbResetPWD"]["enabled"]:
            row += 1
            go_to(accounts, names(accounts)[row])
        question("cmbResetPWD", "zuruecksetzen")
        question("cmdDel", "loeschen")
        press(accounts, "cmbAddNew")
        until(lambda: toggled(accounts), "the state for a new account")
        shoot(session, "neu")
        fill(accounts, "Wiebke Sandmann", r"\\SRV01\Tolv\Daten")
        press(accounts, "cmdSpeichern")
        tool.box()
        shoot(session, "angelegt")


def failures(session, accounts_file):
    with window(session, accounts_file, "quote") as accounts:
        fill(accounts, "O'Neil")
        press(accounts, "cmdSpeichern")
        accounts.tool.box()
        shoot(session, "fehler")
    settings = "[SETTINGS]\r\nBenKtoPath=D:\\Büro\\Konten\r\n".encode()  # not as Windows' own functions read it
    with Tool(session, session.folder / "settings", settings=settings) as tool:
        tool.sign_in()
        tool.box()
        shoot(session, "ini-utf8")


def main():
    PICTURES.mkdir(exist_ok=True)
    with tempfile.TemporaryDirectory() as folder:
        accounts_file = pathlib.Path(folder) / "BenKTO.mdb"
        subprocess.run([ROOT / "out/linux/bin/kontodb", "create", accounts_file, "--accounts", "12", "--seed", "7"],
                       check=True, stdout=subprocess.DEVNULL)
        session = Session("x64", 96, ROOT / "out/windows-x64/bin/prjDexoBenutzerkonten.exe",
                          BUILT / "tests/wine/probe/probe.exe", None)
        try:
            for pictures in (login, edited, commands, failures):
                pictures(session, accounts_file)
        finally:
            session.close()
    STATE.write_text(windows_state() + "\n")


if __name__ == "__main__":
    main()
