#!/usr/bin/python3
"""Makes the manual page and the completion for bash from the texts of `kontodb help`, which are in Help.cpp:
make-pages.py [--check]. With --check it writes nothing and says whether they are up to date, and whether each option that
a command reads is explained."""
import pathlib
import re
import sys

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
PAGE, COMPLETION = ROOT / "docs/kontodb.1", ROOT / "packaging/kontodb.bash"
OPTION = re.compile(r"--[a-z][a-z-]*")
# The value of an option, and what completes it: names of files, or nothing.
VALUE = re.compile(r"(--[a-z][a-z-]*) ([A-Z]+)")
OF_FILES = {"DATEI", "SQLDATEI"}
PASSWORDS = ["--password", "--password-file"]


def texts():
    """The overview, and the text of each topic by its name, without the tables' outer lines."""
    source = (HERE / "Help.cpp").read_text()
    topics = dict(re.findall(r'\{u"(\w+)",\s*R"\((.*?)\n\)"\}', source, re.S))
    return re.search(r'kOverview = R"\((.*?)\n\)"', source, re.S)[1], topics


def roff(text):
    text = text.replace("\\", "\\e").replace("-", "\\-").replace("'", "\\(aq").replace("^", "\\(ha").replace('"', "\\(dq")
    return "\\&" + text if text.startswith(".") else text


def paragraphs(lines):
    """Flowing text, the description of options, and examples, told apart by how they are indented."""
    kind = None
    for line in lines:
        option = re.fullmatch(r"  (--\S.*?)(?:  +(\S.*))?", line)
        if not line:
            kind = None
        elif option:
            yield ".TP"
            yield ".B " + roff(option[1])
            yield roff(option[2] or "")
            kind = "option"
        elif line.startswith(" ") and kind == "option":
            yield roff(line.strip())
        elif line.startswith("  "):
            yield from ([] if kind == "example" else [".PP", ".EX"])
            yield roff(line)
            kind = "example"
        else:
            yield from ([] if kind == "text" else [".PP"])
            yield roff(line)
            if re.search(": kontodb [a-z ]+$", line):
                yield ".br"  # a call ends its sentence without a full stop
            kind = "text"


def body(lines):
    """With each example closed, and without the space that a heading brings along."""
    result, is_open = [], False
    for line in paragraphs(lines):
        if is_open and not line.startswith("  "):
            result.append(".EE")
            is_open = False
        is_open = is_open or line == ".EX"
        result.append(line)
    result = [line for line in result + [".EE"] * is_open if line]
    return result[1:] if result[0] == ".PP" else result


def page():
    overview, topics = texts()
    title, *rest = overview.split("\n")
    version = re.search(r"project\(\w+ VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text())[1]
    calls = [line.split("   ")[0].strip() for line in rest if line.startswith("  kontodb")]
    lines = ['.\\" Made from Help.cpp by make-pages.py; do not edit.',
             f'.TH KONTODB 1 "" "kontodb {version}" "Tolv\\-Benutzerkontenverwaltung"',
             ".SH NAME", roff(title), ".SH ÜBERSICHT"]
    for call in calls:
        lines += [".br", roff(call)] if lines[-1] != ".SH ÜBERSICHT" else [roff(call)]
    lines += [".SH OPTIONEN"] + body(rest[rest.index(next(line for line in rest if line.startswith("Optionen"))):])
    lines.append(".SH BEFEHLE")
    for name, text in topics.items():
        call, *rest = text.split("\n")
        if name == "sql":
            lines += [".SH ANWEISUNGEN"] + body(rest)
        else:
            lines += [f".SS {name}", ".B " + roff(call), ".PP"] + body(rest)
    return "\n".join(lines) + "\n"


def options(text):
    """What a command's text explains, without its examples."""
    lines = text.split("\n")
    found = [option for line in [lines[0]] + [line for line in lines if line.startswith("  --")]
             for option in OPTION.findall(line)]
    return sorted(set(found + ["--help"]))


def completion():
    overview, topics = texts()
    commands = [name for name in topics if name != "sql"]
    values = dict(pair for text in topics.values() for pair in VALUE.findall(text))
    plain = "|".join(sorted(name for name, value in values.items() if value not in OF_FILES))
    cases = "\n".join(f"        {name}) options='{' '.join(options(topics[name]))}' ;;" for name in commands)
    return f"""# Completes the calls of kontodb in bash. Made from Help.cpp by make-pages.py; do not edit.

_kontodb() {{
    local word=${{COMP_WORDS[COMP_CWORD]}} before=${{COMP_WORDS[COMP_CWORD - 1]}} options=
    COMPREPLY=()
    if [ "$COMP_CWORD" = 1 ]; then
        compopt +o default
        COMPREPLY=($(compgen -W '{' '.join(commands)} help --help --version' -- "$word"))
        return
    fi
    case $before in {plain})
        compopt +o default
        return ;;
    esac
    case ${{COMP_WORDS[1]}} in
        help)
            compopt +o default
            COMPREPLY=($(compgen -W '{' '.join(topics)}' -- "$word"))
            return ;;
{cases}
    esac
    # Everything else is the name of a file.
    case $word in -*)
        compopt +o default
        COMPREPLY=($(compgen -W "$options" -- "$word")) ;;
    esac
}}
complete -o bashdefault -o default -F _kontodb kontodb
"""


def unexplained():
    """Options that a command's file reads and its text does not name."""
    for name, text in texts()[1].items():
        source = HERE / f"{name}.cpp"
        read = re.findall(r'u"(--[a-z][a-z-]*)"', source.read_text()) if source.exists() else []
        yield from (f"{name} {option}" for option in read if option not in options(text))


def main():
    made = {PAGE: page(), COMPLETION: completion()}
    if "--check" not in sys.argv[1:]:
        for path, text in made.items():
            path.write_text(text)
        return 0
    faults = [f"{path.relative_to(ROOT)} is not what tools/kontodb/make-pages.py makes; run it again"
              for path, text in made.items() if not path.exists() or path.read_text() != text]
    faults += [f"not explained: {each}" for each in unexplained()]
    print("\n".join(f"FAIL pages: {fault}" for fault in faults) or "PASS pages")
    return bool(faults)


sys.exit(main())
