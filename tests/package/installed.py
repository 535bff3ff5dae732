#!/usr/bin/python3
"""Uses the packages in out/packages as an administrator does, under Wine: unpacks or installs, starts, updates and
removes them. After each step it checks what must be left: settings and account file, byte for byte.

Wine has no users without an administrator's rights, so what the installer does for such a user is not tested here.
"""
import argparse
import contextlib
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import time
import traceback
import zipfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests/wine"))
from driver import Failure, Session, Tool, check, enter_architecture, equal, until  # noqa: E402

TITLE = "Tolv-Benutzerkontenverwaltung"
EXE, REMOVER = "prjDexoBenutzerkonten.exe", "Deinstallieren.exe"
FILES = {EXE, "kontodb.exe", "Handbuch.html", "Handbuch.pdf", "SHA256SUMS", "Tolv-Beispiel.ini"}
KEEP = {"Tolv.ini", "BenKTO.mdb"}
REMOVAL_KEY = r"\Software\Microsoft\Windows\CurrentVersion\Uninstall" + "\\"
ACCOUNTS = 12


class OfShortcut:
    """The tool's process if `start` has started it, which does not wait for the program of a shortcut."""

    returncode = 0  # not available here

    def __init__(self, session):
        def find():
            for comm in pathlib.Path("/proc").glob("[0-9]*/comm"):
                with contextlib.suppress(OSError):
                    if comm.read_text() == EXE[:15] + "\n" and prefix in (comm.parent / "environ").read_bytes():
                        return comm.parent
            return None
        prefix = b"WINEPREFIX=" + session.environment["WINEPREFIX"].encode() + b"\0"
        self._process = until(find, "the process that the entry starts")

    def poll(self):
        with contextlib.suppress(OSError):
            if "\nState:\tZ" not in (self._process / "status").read_text():
                return None
        return self.returncode

    def kill(self):
        os.kill(int(self._process.name), signal.SIGKILL)

    def wait(self):
        until(lambda: self.poll() is not None, "the process is gone")


class Started(Tool):
    """Runs the tool from the folder where it is, directly or through a shortcut of the start menu."""

    def __init__(self, session, folder, entry=None):
        self.session, self.folder, self.exe, self.entry, self.process = session, folder, folder / EXE, entry, None

    def __enter__(self):
        if self.entry:
            self.session.wine(["start", "/unix", str(self.entry)]).wait(60)
        self.process = OfShortcut(self.session) if self.entry else self.session.wine([str(self.exe)], cwd=self.folder)
        return self

    def shows_the_accounts(self):
        accounts = self.accounts()
        equal(accounts.list()["count"], ACCOUNTS, "the number of accounts")
        return accounts


def names(folder):
    with contextlib.suppress(FileNotFoundError):
        return set(os.listdir(folder))
    return set()


class Machine:
    """A Wine prefix with an account file in a folder that has an umlaut and a blank in its name."""

    def __init__(self, session, setup):
        self.session, self.setup = session, setup
        self.name = TITLE + (" (32 Bit)" if setup.name.endswith("x86-Setup.exe") else "")
        self.account_folder = session.folder / "Büro Süd"
        self.account_folder.mkdir()
        self.account_file = self.account_folder / "BenKTO.mdb"
        subprocess.run([ROOT / "out/linux/bin/kontodb", "create", self.account_file, "--accounts", str(ACCOUNTS)],
                       check=True, capture_output=True)
        self.windows_folder = "Z:" + str(self.account_folder).replace("/", "\\")
        self.settings = f"[SETTINGS]\r\nBenKtoPath={self.windows_folder}\r\n".encode("cp1252")

    def run(self, *command):
        return self.session.wine(list(map(str, command)), stdout=subprocess.DEVNULL).wait(60)

    def install(self, *options, code=0):
        equal(self.run(self.setup, "/S", *options), code, f"the installer's exit code with {options}")

    def entries(self):
        # os.walk passes over folders that an installer or remover deletes meanwhile; rglob fails at them.
        return {pathlib.Path(folder, file) for folder, _, files in os.walk(self.session.drive_c)
                for file in files if file == self.name + ".lnk"}

    def registered(self, root):
        return self.run("reg", "query", root + REMOVAL_KEY + self.name) == 0

    def removed(self, folder, root):
        equal(self.run(folder / REMOVER, "/S"), 0, "the remover's exit code")  # its copy goes on working
        until(lambda: names(folder) <= KEEP, f"only settings and accounts in {folder}")
        until(lambda: not self.entries() and not self.registered(root), "entry and registration are gone")


def the_zip(machine, archive):
    folder = machine.session.folder / "Werkzeug"
    with zipfile.ZipFile(archive) as packed:
        packed.extractall(folder)
        sample = (folder / "Tolv-Beispiel.ini").read_bytes()
        settings = sample.replace(b"D:\\Konten", machine.windows_folder.encode("cp1252"))
        (folder / "Tolv.ini").write_bytes(settings)
        before = machine.account_file.read_bytes()
        for _ in ("first", "updated"):
            with Started(machine.session, folder) as tool:
                tool.shows_the_accounts()
                tool.key("Escape")
                tool.ended()
            packed.extractall(folder)
        for name in packed.namelist():
            (folder / name).unlink()
    equal(names(folder), {"Tolv.ini"}, "what is left of the zip")
    check((folder / "Tolv.ini").read_bytes() == settings, "the settings have changed")
    check(machine.account_file.read_bytes() == before, "the account file has changed")


def what_the_installer_refuses(machine):
    folder = machine.session.drive_c / "Nichts"
    to = r"/D=C:\Nichts"
    machine.run("winecfg", "/v", "win7")
    machine.install("/CurrentUser", to, code=2)
    machine.run("winecfg", "/v", "win10")
    machine.install("/CurrentUser", "/PFAD=D:\\Łódź", to, code=2)  # not in the code page
    machine.install("/CurrentUser", "/PFAD=D:\\" + 252 * "x", to, code=2)
    equal((names(folder), machine.entries()), (set(), set()), "what a refused installation leaves")


def one_user(machine):
    folder = machine.session.drive_c / "Eigenes/Tölv"
    machine.install("/CurrentUser", f"/PFAD={machine.windows_folder}\\", r"/D=C:\Eigenes\Tölv")
    equal(names(folder), FILES | {REMOVER, "Tolv.ini"}, "what is installed")
    equal((folder / "Tolv.ini").read_bytes(), machine.settings, "the new settings")
    check(machine.registered("HKCU") and not machine.registered("HKLM"), "not registered for one user")
    entry, = machine.entries()
    check("ProgramData" not in str(entry), f"{entry} is for all users")

    shutil.copy(machine.account_file, folder)
    (folder / "Tolv.ini").write_bytes(machine.settings + b"; eigenes\r\n")
    before = {name: (folder / name).read_bytes() for name in KEEP}
    (folder / "Handbuch.html").write_bytes(b"alt")
    with Started(machine.session, folder, entry) as tool:
        tool.shows_the_accounts()
        machine.install("/PFAD=D:\\anders", code=2)
        equal(machine.run(folder / REMOVER, "/S", "_?=C:\\Eigenes\\Tölv"), 2, "the remover's exit code while it runs")
        equal((folder / "Handbuch.html").read_bytes(), b"alt", "the handbook after a refused update")
        equal(names(folder), FILES | KEEP | {REMOVER}, "what is there after a refused removal")
        tool.key("Escape")
        tool.ended()
    machine.install("/PFAD=D:\\anders")
    check((folder / "Handbuch.html").read_bytes() != b"alt", "the update did not go to the earlier folder")
    machine.removed(folder, "HKCU")
    equal({name: (folder / name).read_bytes() for name in names(folder)}, before, "settings and accounts at the end")


def all_users(machine):
    machine.install("/AllUsers")
    entry, = machine.entries()
    check("ProgramData" in str(entry) and machine.registered("HKLM"), f"{entry} is not for all users")
    folder, = (path for path in machine.session.drive_c.glob("Program Files*/*") if path.name == machine.name)
    equal(names(folder), FILES | {REMOVER}, "what is installed")
    machine.removed(folder, "HKLM")
    check(not folder.exists(), f"{folder} is left")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--arch", choices=("x64", "x86"), default="x64")
    arch = parser.parse_args().arch
    enter_architecture(arch)
    archive, = (ROOT / "out/packages").glob(f"*-{arch}.zip")
    setup, = (ROOT / "out/packages").glob(f"*-{arch}-Setup.exe")
    session = Session(arch, 96, setup, ROOT / f"out/build/windows-{arch}/tests/wine/probe/probe.exe", None)
    failed = False
    try:
        machine = Machine(session, setup)
        for step, more in ((the_zip, [archive]), (what_the_installer_refuses, []), (one_user, []), (all_users, [])):
            start = time.monotonic()
            try:
                step(machine, *more)
                print(f"PASS {arch} {step.__name__} ({time.monotonic() - start:.1f} s)", flush=True)
            except Exception as failure:  # so that the other steps still run
                failed = True
                if not isinstance(failure, Failure):
                    traceback.print_exc(file=sys.stdout)
                print(f"FAIL {arch} {step.__name__}: {failure!r}", flush=True)
    finally:
        session.close()
    return failed


sys.exit(main())
