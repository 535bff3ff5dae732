#!/usr/bin/python3
"""clang-tidy over every C++ source, two at a time; what was clean is not looked at again until it changes.

The commands come from the native preset, and from the Windows one for what only that compiles. A clean result is
remembered under the hash of all it depends on (the tool, its settings, the command, the source and every header of
ours that it reaches), outside the work tree, so that a fresh clone finds it too.
"""
import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
MEMORY = pathlib.Path(os.environ.get("XDG_CACHE_HOME", pathlib.Path.home() / ".cache")) / "prjDexoBenutzerkonten/tidy"
KEEP_DAYS = 60
NATIVE, WINDOWS = "native-debug", "windows-x64"


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True, stdin=subprocess.DEVNULL)


def mingwArguments():
    """clang does not find the cross-compiler's headers by itself."""
    listing = output("x86_64-w64-mingw32-g++-posix", "-xc++", "-E", "-v", "/dev/null").stderr
    folders = listing.partition("<...> search starts here:")[2].partition("End of search list")[0].split()
    own = [folder for folder in map(os.path.realpath, folders) if not re.search(r"/12-\w+/include(-fixed)?$", folder)]
    return ["--target=x86_64-w64-mingw32", "-nostdinc++", "-nostdlibinc"] + [w for f in own for w in ("-isystem", f)]


def database(preset):
    """The compile commands of a preset with every source for itself."""
    folder = ROOT / "out/tidy" / preset
    output("cmake", "-S", str(ROOT), "--preset", preset, "-B", str(folder), "-DTOLV_TOGETHER=OFF")
    return json.loads((folder / "compile_commands.json").read_text())


def commands():
    """Source to compiler arguments: those that say what the source means, not how it is compiled."""
    found = {}
    for preset, extra in ((WINDOWS, mingwArguments()), (NATIVE, [])):
        for entry in database(preset):
            source = os.path.relpath(os.path.join(entry["directory"], entry["file"]), ROOT)
            words, kept = shlex.split(entry["command"]), []
            for word, following in zip(words, words[1:] + [""]):
                if word.startswith(("-I", "-D", "-std=", "-W")) and word != "-Werror":
                    kept.append(word)
                elif word == "-isystem":
                    kept += [word, following]
            if not source.startswith("..") and not source.startswith("out/"):
                found[source] = kept + extra
    return found


def reached(source, seen):
    """The source and every file of ours it includes, by the two ways such an include is written."""
    if source in seen or not (ROOT / source).is_file():
        return seen
    seen[source] = (ROOT / source).read_bytes()
    for name in re.findall(rb'^\s*#\s*include\s+"([^"]+)"', seen[source], re.M):
        for folder in (ROOT, (ROOT / source).parent):
            reached(os.path.relpath(folder / name.decode(), ROOT), seen)
    return seen


def check(source, arguments, version):
    key = hashlib.sha256(repr((version, " ".join(arguments).replace(str(ROOT), ""))).encode())
    for name, content in sorted(reached(source, {}).items()):
        key.update(name.encode() + b"\0" + content + b"\0")
    remembered = MEMORY / key.hexdigest()
    if remembered.exists():
        remembered.touch()
        return ""
    done = subprocess.run(["clang-tidy", "--quiet", source, "--", *arguments], cwd=ROOT, capture_output=True, text=True,
                          stdin=subprocess.DEVNULL)
    if done.returncode == 0:
        remembered.touch()
        return ""
    return done.stdout + done.stderr


def main():
    MEMORY.mkdir(parents=True, exist_ok=True)
    for old in MEMORY.iterdir():
        if old.stat().st_mtime < time.time() - KEEP_DAYS * 86400:
            old.unlink()
    version = output("clang-tidy", "--version").stdout + output("g++", "--version").stdout
    version += "".join((ROOT / folder / ".clang-tidy").read_text() for folder in ("", "tests"))
    todo = commands()
    chosen = {source: todo[source] for source in sorted(todo) if source.startswith(tuple(sys.argv[1:]) or "")}
    with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
        results = pool.map(lambda item: (item[0], check(*item, version)), chosen.items())
        failed = [source for source, text in results if text and not print(text, f"FAIL tidy: {source}", sep="\n")]
    if not failed:
        print("PASS tidy")
    return bool(failed) or not chosen


sys.exit(main())
