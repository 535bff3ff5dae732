#!/usr/bin/python3
"""Checks the bytes of the built programs: imports, protection, versions, manifest, icon, no machine paths; and that the
same sources give the same bytes in a folder of another name and depth, without a compiler cache."""
import os
import pathlib
import re
import shutil
import struct
import subprocess
import xml.etree.ElementTree

import pefile

ROOT = pathlib.Path(__file__).resolve().parents[2]
# Windows loads these from its own folder, whatever is next to the program; other libraries must be loaded by full path.
SYSTEM_DLLS = {"kernel32.dll", "user32.dll", "gdi32.dll", "advapi32.dll", "shell32.dll", "ole32.dll", "oleaut32.dll",
               "comctl32.dll", "msvcrt.dll"}
# Functions through which the tool could take a switch from a user or an administrator; it must have none. Exceptions:
# the start-up code of every program reads command line and environment, and the registry is read for COM classes.
SWITCHES = re.compile(r"(?i)command_?line|getmainargs|cmdln|argv|environ|getenv|initenv|^Reg[A-Z]\w*(Key|Value)|^SHGetValue")
NEEDED = {"__wgetmainargs", "__winitenv", "_wcmdln", "__p__wcmdln", "RegGetValueW"}
KEYS = re.compile(r"(?i)software\\|hkey_|\\currentversion")
# A file next to the program could be a switch, too. The only one allowed is the settings file, which is documented.
FILES = re.compile(r"(?i)[\w-]{3,}\.(txt|ini|cfg|conf|json|xml|dat|log|csv)\b")
SETTINGS_FILE = "Tolv.ini"
MAX_BYTES = 1024 * 1024  # for the tool; its companion may be larger
ICON_SIZES = {16, 20, 24, 32, 40, 48, 64, 256}
GERMAN, UNICODE = 0x0407, 1200
WINDOWS_10 = "{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}"
VERSION_TEXTS = ("FileDescription", "FileVersion", "ProductVersion", "InternalName", "OriginalFilename")


def version():
    return re.search(r"project\(\w+ VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text())[1]


def resources(pe, kind):
    for entry in pe.DIRECTORY_ENTRY_RESOURCE.entries if hasattr(pe, "DIRECTORY_ENTRY_RESOURCE") else []:
        if entry.id == kind:
            for name in entry.directory.entries:
                for language in name.directory.entries:
                    place = language.data.struct
                    yield name.id, language.id & 0xFFFF, pe.get_data(place.OffsetToData, place.Size)


def header(pe, x64, windowed):
    optional, faults = pe.OPTIONAL_HEADER, []
    wanted = {"DYNAMIC_BASE": 0x40, "NX_COMPAT": 0x100, **({"HIGH_ENTROPY_VA": 0x20} if x64 else {})}
    faults += [f"{name} is not set" for name, bit in wanted.items() if not optional.DllCharacteristics & bit]
    if pe.FILE_HEADER.Machine != (0x8664 if x64 else 0x14C):
        faults.append("built for another processor")
    if optional.DATA_DIRECTORY[5].Size == 0:
        faults.append("no relocations")
    for what in ("Subsystem", "OperatingSystem"):
        found = (getattr(optional, f"Major{what}Version"), getattr(optional, f"Minor{what}Version"))
        if found != (10, 0):
            faults.append(f"{what} version {found}")
    if optional.Subsystem != (2 if windowed else 3):
        faults.append(f"subsystem {optional.Subsystem}")
    if pe.FILE_HEADER.TimeDateStamp != 0:
        faults.append("the header holds a date")
    return faults


def imports(pe):
    return [f"imports {entry.dll.decode()}" for entry in pe.DIRECTORY_ENTRY_IMPORT
            if entry.dll.decode().lower() not in SYSTEM_DLLS]


def switches(pe, data):
    names = [entry.name.decode() for dll in pe.DIRECTORY_ENTRY_IMPORT for entry in dll.imports if entry.name]
    texts = data.decode("latin-1"), data.decode("utf-16-le", "replace"), data[1:].decode("utf-16-le", "replace")
    return ([f"imports {name}" for name in names if SWITCHES.search(name) and name not in NEEDED]
            + [f"names the key {match[0]}" for text in texts for match in KEYS.finditer(text)]
            + [f"names the file {match[0]}" for text in texts for match in FILES.finditer(text)
               if match[0] != SETTINGS_FILE])


def traces(data, windowed):
    """No path of the machine that built the program, as bytes or as UTF-16."""
    found = [text for text in (str(ROOT), str(pathlib.Path.home()) + "/", "CMakeFiles", "/usr/include", "../base/", "../jet/")
             if text.encode() in data or text.encode("utf-16-le") in data]
    return [f"holds {text}" for text in found] + ([f"{len(data)} bytes"] if windowed and len(data) > MAX_BYTES else [])


def manifest(pe, windowed):
    texts = [data for name, _, data in resources(pe, 24) if name == 1]
    if not texts:
        return ["no manifest"]
    elements = list(xml.etree.ElementTree.fromstring(texts[0]).iter())
    named = lambda tag: [e for e in elements if e.tag.rpartition("}")[2] == tag]
    values = lambda tag: [(e.text or "").strip() for e in named(tag)]
    controls = [e for e in named("assemblyIdentity") if e.get("name") == "Microsoft.Windows.Common-Controls"]
    rules = {
        "version": elements[1].get("version") == version() + ".0",
        "long paths": values("longPathAware") == ["true"],
        "asInvoker": [e.get("level") for e in named("requestedExecutionLevel")] == ["asInvoker"],
        "supportedOS": WINDOWS_10 in [e.get("Id", "").lower() for e in named("supportedOS")],
        # It would turn the settings file's Windows-1252 into garbage.
        "no activeCodePage": not named("activeCodePage"),
    } | ({
        "common controls 6": any((e.get("version"), e.get("processorArchitecture")) == ("6.0.0.0", "*") for e in controls),
        "dpiAwareness": [v.replace(" ", "").lower() for v in values("dpiAwareness")] == ["permonitorv2,permonitor"],
        "dpiAware": [v.lower() for v in values("dpiAware")] == ["true/pm"],
    } if windowed else {})
    return [f"manifest: {rule}" for rule, holds in rules.items() if not holds]


def versionBlock(pe, name):
    faults = [f"version resource in language {language:#06x}" for _, language, _ in resources(pe, 16) if language != GERMAN]
    info = [part for block in getattr(pe, "FileInfo", []) for part in block]
    tables = [table for part in info if hasattr(part, "StringTable") for table in part.StringTable]
    translations = [value for part in info if hasattr(part, "Var") for var in part.Var for value in var.entry.values()]
    if [table.LangID.decode() for table in tables] != ["040704B0"] or translations != [f"{GERMAN:#06x} {UNICODE:#06x}"]:
        return faults + [f"version block: {[t.LangID for t in tables]} {translations}"]
    texts = {key.decode(): value.decode() for key, value in tables[0].entries.items()}
    faults += [f"version block lacks {key}" for key in VERSION_TEXTS if not texts.get(key)]
    if texts.get("OriginalFilename") != name:
        faults.append(f"OriginalFilename {texts.get('OriginalFilename')}")
    faults += [f"{key} {texts.get(key)}" for key in ("FileVersion", "ProductVersion")
               if not texts.get(key, "").startswith(version())]
    return faults


def icon(pe):
    images = {name: data for name, _, data in resources(pe, 3)}
    for _, _, group in list(resources(pe, 14))[:1]:
        sizes = {}
        for index in range(struct.unpack_from("<H", group, 4)[0]):
            entry = struct.unpack_from("<BBBBHHIH", group, 6 + 14 * index)
            sizes[entry[0] or 256] = images.get(entry[7], b"")
        missing = ICON_SIZES - set(sizes)
        png = sizes.get(256, b"").startswith(b"\x89PNG")
        return [f"icon without {sorted(missing)}"] * bool(missing) + ["the icon of 256 pixels is no PNG"] * (not png)
    return ["no icon"]


def builtAgain():
    """Builds the tool again, from a copy of the sources."""
    copy = ROOT / "out/again/of another name"
    shutil.rmtree(copy, ignore_errors=True)
    listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=ROOT, capture_output=True, text=True,
                            check=True).stdout.splitlines()
    for name in filter(lambda name: (ROOT / name).is_file(), listed):
        (copy / name).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(ROOT / name, copy / name)
    build = copy / "out/again"
    for command in (["cmake", "--preset", "windows-x64", "-B", build, "-DTOLV_CCACHE=OFF", f"-DTOLV_BIN={copy}/bin"],
                    ["cmake", "--build", build, "--parallel", str(os.cpu_count()), "--target", "prjDexoBenutzerkonten"]):
        run = subprocess.run(command, cwd=copy, capture_output=True, text=True)
        if run.returncode:
            return [f"the second build failed: {(run.stdout + run.stderr)[-2000:]}"]
    first, second = (folder / "bin" / PROGRAMS[0] for folder in (ROOT / "out/windows-x64", copy))
    return [] if first.read_bytes() == second.read_bytes() else [f"{first} and {second} differ"]


PROGRAMS = ("prjDexoBenutzerkonten.exe", "kontodb.exe")
for kind in ("x64", "x86"):
    folder = ROOT / f"out/windows-{kind}/bin"
    others = sorted(path.name for path in folder.glob("*") if path.name not in PROGRAMS)
    print("\n".join(f"FAIL {kind} folder: holds {name}" for name in others) or f"PASS {kind} folder")
    for name in PROGRAMS:
        path, windowed = folder / name, name.startswith("prj")
        if not path.exists():
            print(f"FAIL {kind} {name}: not built")
            continue
        pe = pefile.PE(str(path))
        results = {"header": header(pe, kind == "x64", windowed), "imports": imports(pe),
                   "size and traces": traces(path.read_bytes(), windowed), "manifest": manifest(pe, windowed),
                   "version block": versionBlock(pe, name), "icon": icon(pe)}
        if windowed:
            results["no switch"] = switches(pe, path.read_bytes())
        for rule, faults in results.items():
            print("\n".join(f"FAIL {kind} {name} {rule}: {fault}" for fault in faults) or f"PASS {kind} {name} {rule}")
faults = builtAgain()
print("\n".join(f"FAIL built again: {fault}" for fault in faults) or "PASS built again")
