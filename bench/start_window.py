#!/usr/bin/python3
"""Time from the start of the exe to its login dialog, compared with a program that shows an empty window.

The two start by turns, in one prefix with a running server, so that other load on the machine affects both alike.
Prints the medians and their ratio; the difference is what the tool itself adds.
"""
import argparse
import pathlib
import shutil
import statistics
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests/wine"))

from driver import LOGIN_TITLE, Session, enter_architecture  # noqa: E402  (the path is set above)


def seconds_to_window(session, exe):
    start = time.perf_counter()
    process = session.wine([str(exe)])
    try:
        while not any(w["text"] == LOGIN_TITLE for w in session.ask("windows", exe.name)):
            if process.poll() is not None or time.perf_counter() - start > 60:
                sys.exit(f"{exe.name} shows no window")
            time.sleep(0.001)
        return time.perf_counter() - start
    finally:
        process.kill()
        process.wait()
        while session.ask("windows", exe.name):
            time.sleep(0.01)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--arch", choices=("x64", "x86"), default="x64")
    parser.add_argument("--rounds", type=int, default=15)
    parser.add_argument("--exe", type=pathlib.Path)
    parser.add_argument("--build", type=pathlib.Path, help="build folder of start_window and probe")
    arguments = parser.parse_args()
    enter_architecture(arguments.arch)
    build = arguments.build or ROOT / f"out/build/windows-{arguments.arch}"
    tool = arguments.exe or ROOT / f"out/windows-{arguments.arch}/bin/prjDexoBenutzerkonten.exe"
    session = Session(arguments.arch, 96, tool, build / "tests/wine/probe/probe.exe", None)
    try:
        programs = {}
        for exe in (build / "bench/start_window.exe", tool):
            programs[session.folder / exe.name] = []
            shutil.copy(exe, session.folder)
        for round_number in range(arguments.rounds + 1):
            for exe, seconds in programs.items():
                taken = seconds_to_window(session, exe)
                if round_number > 0:  # the first start of each only fills the caches
                    seconds.append(taken)
    finally:
        session.close()
    empty, own = (statistics.median(seconds) * 1000 for seconds in programs.values())
    print(f"start to window ({arguments.arch}, median of {arguments.rounds}): empty window {empty:.0f} ms, "
          f"login dialog {own:.0f} ms, ratio {own / empty:.2f}, difference {own - empty:.0f} ms")


main()
