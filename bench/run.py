#!/usr/bin/python3
"""Benchmarks as ratios within one run: bench/run.py (after ./build linux).

Reading, ordering and printing 100,000 accounts against mdb-export and sort, and against reading the file's bytes;
the account window without native windows at 1,000, 100,000 and 1,000,000 accounts: opening it, going to another account,
refilling the list, sorting it, saving an account with all that follows; under Wine, the start of the tool against that of
an empty window (after ./build windows-x64 and ./test, else it is left out). Times are the best of several runs.
"""
import json
import os
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
KONTODB = os.path.join(ROOT, "out/linux/bin/kontodb")
BUILD = os.path.join(ROOT, "out/build/native-release")
WINDOWS = os.path.join(ROOT, "out/build/windows-x64")
TOOL = os.path.join(ROOT, "out/windows-x64/bin/prjDexoBenutzerkonten.exe")
PASSWORD = "HwendorpliqZ"
ORDERED = "SELECT * FROM Benutzerkonto ORDER BY BenKTO_Name"


def best(command, runs=5):
    times = []
    for _ in range(runs):
        start = time.perf_counter()
        subprocess.run(command, shell=True, check=True, stdout=subprocess.DEVNULL)
        times.append(time.perf_counter() - start)
    return min(times)


def reading(file):
    ours = best(f"'{KONTODB}' query '{file}' '{ORDERED}' --password {PASSWORD}")
    foreign = best(f"mdb-export -H '{file}' Benutzerkonto | LC_ALL=C sort")
    plain = best(f"cat '{file}'")
    print(f"100,000 accounts read, ordered and printed: {ours * 1000:.0f} ms")
    print(f"  mdb-export | LC_ALL=C sort takes {foreign / ours:.1f} times as long (wanted: 5 or more)")
    print(f"  reading the file's bytes alone: 1/{ours / plain:.1f} of it")


DEEDS = {"open": "open", "move": "go to another", "refill": "refill", "sort": "sort", "save": "save",
         "save_sorted": "save while sorted"}


def windows(files):
    print("account window, without native windows, in milliseconds (and how often the time of the line above):")
    print(" accounts " + "".join(f"{title:>19}" for title in DEEDS.values()) + "   at most")
    last = None
    for count, file in files.items():
        runs = [json.loads(subprocess.run([f"{BUILD}/bench/account_window", file], check=True,
                                          capture_output=True).stdout) for _ in range(3)]
        best_of = {deed: min(run[deed] for run in runs) for deed in DEEDS}
        growth = {deed: f" ({best_of[deed] / last[deed]:6.1f})" if last else " " * 9 for deed in DEEDS}
        print(f"{count:9,} " + "".join(f"{best_of[deed]:10.2f}{growth[deed]}" for deed in DEEDS) +
              f" {max(run['peak_kib'] for run in runs) / 1024:6.1f} MB")
        last = best_of


def starting():
    built = (f"{WINDOWS}/bench/start_window.exe", f"{WINDOWS}/tests/wine/probe/probe.exe", TOOL)
    missing = [file for file in built if not os.path.exists(file)]
    if missing:
        print(f"start to window: left out, not built: {', '.join(os.path.relpath(file, ROOT) for file in missing)}")
        return
    subprocess.run([sys.executable, f"{ROOT}/bench/start_window.py", "--arch", "x64"], check=True)


def main():
    sys.stdout.reconfigure(line_buffering=True)  # so that start_window.py's line stands where it belongs
    subprocess.run(["cmake", "--build", BUILD, "--target", "account_window"], check=True, stdout=subprocess.DEVNULL)
    with tempfile.TemporaryDirectory() as folder:
        files = {}
        for count in (1000, 100000, 1000000):
            files[count] = f"{folder}/{count}.mdb"
            start = time.perf_counter()
            subprocess.run([KONTODB, "create", files[count], "--accounts", str(count)], check=True,
                           stdout=subprocess.DEVNULL)
            print(f"{count:9,} accounts made in {(time.perf_counter() - start) * 1000:.0f} ms, "
                  f"{os.path.getsize(files[count]) / 1e6:.1f} MB")
        reading(files[100000])
        windows(files)
    starting()


main()
