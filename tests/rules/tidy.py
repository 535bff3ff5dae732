#!/usr/bin/python3
"""Runs clang-tidy over every C++ source, two processes at a time; a source found clean is skipped until it changes.

usage: tests/rules/tidy.py [PREFIX...]     only groups with a source whose path begins with a PREFIX

Sources are checked in the groups in which the builds compile them together: most of the time goes into the headers,
which are then read once for many sources. They are copied into one file, because the analyzer skips what a file
includes. Because a group hides an include that one of its sources lacks, each source of the product is also compiled
alone, without generating code. The commands come from the native build, and for sources that only the Windows build
compiles, from there. A clean result is stored under the hash of everything that it depends on (clang-tidy, its
settings, the command, the sources and all headers of the project that they reach), outside the work tree, so that a
fresh clone can use it.
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

ROOT = pathlib.Path(__file__).resolve().parents[2]
MEMORY = pathlib.Path(os.environ.get("XDG_CACHE_HOME", pathlib.Path.home() / ".cache")) / "prjDexoBenutzerkonten/tidy"
NATIVE, WINDOWS = ROOT / "out/build/native-debug", ROOT / "out/build/windows-x64"
# The shallow mode takes half of the time and still follows calls. Tests are not analyzed: in the test library's macros
# the analyzer takes longer than everything else together, and tests run under the sanitizers.
ANALYZER = ["-Xclang", "-analyzer-config", "-Xclang", "mode=shallow"]
INCLUDE = re.compile(rb'^\s*#\s*include\s+"([^"]+)"', re.M)


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True, stdin=subprocess.DEVNULL)


def mingw_arguments():
    """The headers of the cross-compiler, which clang does not find by itself."""
    listing = output("x86_64-w64-mingw32-g++-posix", "-xc++", "-E", "-v", "/dev/null").stderr
    folders = listing.partition("<...> search starts here:")[2].partition("End of search list")[0].split()
    own = [folder for folder in map(os.path.realpath, folders) if not re.search(r"/12-\w+/include(-fixed)?$", folder)]
    return ["--target=x86_64-w64-mingw32", "-nostdinc++", "-nostdlibinc"] + [w for f in own for w in ("-isystem", f)]


def sources_of(file):
    """The project's sources that a generated file includes, or the file itself if it is not generated."""
    included = [name.decode() for name in INCLUDE.findall(file.read_bytes()) if name.endswith(b".cpp")]
    return included if file.is_relative_to(ROOT / "out") else [os.path.relpath(file, ROOT)]


def groups():
    """Yields (sources, compiler, those of its arguments that clang needs, more arguments for clang)."""
    seen = set()
    for build, extra in ((NATIVE, []), (WINDOWS, mingw_arguments())):
        for entry in json.loads((build / "compile_commands.json").read_text()):
            file = pathlib.Path(entry["directory"], entry["file"])
            if not file.is_relative_to(ROOT):
                continue
            words, kept = shlex.split(entry["command"]), []
            for word, following in zip(words, words[1:] + [""]):
                if word.startswith(("-I", "-D", "-std=", "-W")) and word != "-Werror":
                    kept.append(word)
                elif word == "-isystem":
                    kept += [word, following]
            sources = sources_of(file)
            if not seen.issuperset(sources):
                seen.update(sources)
                yield sources, next(w for w in words if re.search(r"[gc](\+\+|c|lang)[^/]*$", w)), kept, extra


def reached(source, seen):
    """The source and all files of the project that it includes, relative to the root or to the including file."""
    if source in seen or not (ROOT / source).is_file():
        return seen
    seen[source] = (ROOT / source).read_bytes()
    for name in INCLUDE.findall(seen[source]):
        for folder in (ROOT, (ROOT / source).parent):
            reached(os.path.relpath(folder / name.decode(), ROOT), seen)
    return seen


def remembered(command, sources, version):
    """Runs the command unless an earlier success is stored. @return its output, empty if there is nothing to report"""
    key = hashlib.sha256(repr((version, " ".join(command).replace(str(ROOT), ""))).encode())
    content = {}
    for source in sources:
        reached(source, content)
    for name in sorted(content):
        key.update(name.encode() + b"\0" + content[name] + b"\0")
    memory = MEMORY / key.hexdigest()
    if not memory.exists():
        done = subprocess.run(command, cwd=ROOT, capture_output=True, text=True, stdin=subprocess.DEVNULL)
        if done.returncode != 0:
            return done.stdout + done.stderr or f"ended with {done.returncode}"
    memory.touch()
    return ""


def settings_for(source):
    """The settings of the nearest folder: for a generated file clang-tidy does not find them by itself."""
    return next(folder / ".clang-tidy" for folder in (ROOT / source).parents if (folder / ".clang-tidy").is_file())


def joined(sources):
    """@return a file with the text of all these sources, and the place of each of its lines"""
    texts = [(source, (ROOT / source).read_text().splitlines(keepends=True)) for source in sources]
    file = ROOT / "out/lint" / sources[0]
    file.parent.mkdir(parents=True, exist_ok=True)
    file.write_text("".join(line for _, lines in texts for line in lines))
    return file, [f"{source}:{number}" for source, lines in texts for number, _ in enumerate(lines, 1)]


def check(sources, compiler, arguments, extra, version):
    tests = all(source.startswith("tests/") for source in sources)
    file, places = joined(sources)
    printed = remembered(["clang-tidy", "--quiet", *(["--checks=-clang-analyzer-*"] if tests else []),
                          f"--config-file={settings_for(sources[0])}", str(file), "--", *arguments, *extra,
                          *([] if tests else ANALYZER)], sources, version)
    printed = re.sub(re.escape(str(file)) + r":(\d+)", lambda match: places[int(match[1]) - 1], printed)
    for source in sources if len(sources) > 1 and not tests else []:
        printed += remembered([compiler, "-fsyntax-only", *arguments, source], [source], version)
    return printed


def main():
    MEMORY.mkdir(parents=True, exist_ok=True)
    version = output("clang-tidy", "--version").stdout + output("g++", "--version").stdout
    version += "".join(settings.read_text() for settings in sorted(ROOT.glob("*/.clang-tidy")) + [ROOT / ".clang-tidy"])
    wanted = tuple(sys.argv[1:]) or ("",)
    todo = [group for group in groups() if any(source.startswith(wanted) for source in group[0])]
    with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
        results = pool.map(lambda group: (group[0], check(*group, version)), todo)
        failed = [sources for sources, text in results
                  if text and not print(text, f"FAIL tidy: {' '.join(sources)}", sep="\n", flush=True)]
    if not failed:
        print("PASS tidy")
    return bool(failed) or not todo


sys.exit(main())
