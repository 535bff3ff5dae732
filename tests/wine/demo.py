#!/usr/bin/python3
"""Signs in to the tool of a demo folder with real keys, leaves a picture of its account window there and closes it."""
import pathlib
import subprocess
import sys

from driver import ROOT, Session, Tool

folder = pathlib.Path(sys.argv[1])
session = Session("x64", 96, folder / "prjDexoBenutzerkonten.exe",
                  ROOT / "out/build/windows-x64/tests/wine/probe/probe.exe", folder)
try:
    with Tool(session, session.folder / "demo", folder / "BenKTO.mdb") as tool:
        tool.accounts()
        session.picture("window")
        tool.key("Escape")
        tool.ended()
finally:
    session.close()
# The screen beside the window is empty and is cut off.
subprocess.run(["convert", folder / "window-96.png", "-trim", "+repage", folder / "window.png"], check=True)
(folder / "window-96.png").unlink()
