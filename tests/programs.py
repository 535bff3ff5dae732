#!/usr/bin/python3
"""Runs the test programs of one build folder and prints one line for each of their cases.

usage: tests/programs.py BUILD [--wine]

It runs the programs that ctest knows, two at a time; with --wine through the command in TOLV_WINE (see
tests/wine/wine-env.sh). A skipped case counts as failed: the script that runs the tests must say what the machine
lacks.
"""
import concurrent.futures
import json
import os
import re
import subprocess
import sys
import tempfile

LIMIT_SECONDS = 600
CASE = re.compile(r"^\[ +(OK|FAILED|SKIPPED) +\] (\S+?)(?:, where .*?)?(?: \(\d+ ms\))?\r?$")


def programs(build):
    listing = subprocess.run(["ctest", "--test-dir", build, "--show-only=json-v1"],
                             capture_output=True, check=True, stdin=subprocess.DEVNULL).stdout
    for test in json.loads(listing)["tests"]:
        properties = {p["name"]: p["value"] for p in test.get("properties", [])}
        environment = dict(line.split("=", 1) for line in properties.get("ENVIRONMENT", []))
        yield test["name"], test.get("command", [test["name"]]), environment, properties.get("WORKING_DIRECTORY", build)


def run(name, command, environment, folder, wine):
    if wine:
        program = [index for index, word in enumerate(command) if word.endswith(".exe")]
        command = os.environ["TOLV_WINE"].split() + command[program[0] if program else 0:]
    # The output goes to a file, because Wine's own processes keep a pipe open for a minute after the program has ended.
    with tempfile.TemporaryFile() as printed:
        try:
            code = subprocess.run(command, cwd=folder, env={**os.environ, **environment}, stdin=subprocess.DEVNULL,
                                  stdout=printed, stderr=subprocess.STDOUT, timeout=LIMIT_SECONDS).returncode
        except subprocess.TimeoutExpired:
            code = "a timeout"
        except OSError as error:
            code = error
        printed.seek(0)
        output = printed.read().decode("utf-8", "replace")
    lines = output.splitlines()
    end = next((i for i, line in enumerate(lines) if line.startswith("[==========]") and " ran." in line), None)
    cases = {match[2]: match[1] for match in map(CASE.match, lines[:end]) if match and "." in match[2]}
    said = {"OK": "PASS {}", "FAILED": "FAIL {}: see above", "SKIPPED": "FAIL {}: skipped"}
    results = [said[word].format(f"{name} {case}") for case, word in cases.items()]
    if not cases or end is None or (code != 0 and set(cases.values()) == {"OK"}):
        results.append(f"FAIL {name}: ended with {code} after {len(cases)} cases")
    return (lines if any(result.startswith("FAIL") for result in results) else []) + results


def main():
    build, wine = sys.argv[1], "--wine" in sys.argv[2:]
    with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
        for output in pool.map(lambda program: run(*program, wine), list(programs(build))):
            print("\n".join(output), flush=True)


main()
