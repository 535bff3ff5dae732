#!/usr/bin/python3
"""Compares docs/Handbuch.md with the sources: the program must say what the handbook quotes, the handbook must have the
texts of the program, and its pictures must show the current windows."""
import hashlib
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
PICTURES = ROOT / "docs/bilder"
STATE = PICTURES / "stand.txt"
HOLE = "…"  # stands for a value that the program inserts, and for words that the handbook omits

SOURCES = [str(path.relative_to(ROOT)) for room in (
    "accounts", "ado", "app", "base", "db", "forms", "jet", "listutil", "platform", "settings", "tools", "ui", "win32")
    for path in sorted((ROOT / room).rglob("*")) if path.suffix in (".cpp", ".h")]
WINDOWS = [name for name in SOURCES if re.match("(ui|app|accounts)/(?!AccountTable)|win32/ErrorBox", name)]
ERRORS = ["jet/Errors.cpp", "jet/WriteErrors.cpp", "jet/expression/ExpressionErrors.cpp", "jet/sql/SqlError.cpp",
          "ado/embedded/AdoError.cpp", "ado/com/ComError.cpp", "base/RuntimeError.cpp", "jet/value/TextCodec.cpp",
          "jet/index/IndexKey.cpp"]
ERROR_TEXT = re.compile(r'\b(?:failure|RuntimeError)\(\s*u"|(?:return|throw|RuntimeError) ?\{-?\w+,\s*u"')
# Texts of those files that no user of the windows sees, or that would not help a user; grouped by reason.
LEFT_OUT = {
    "the default of an argument that is always given": ["Wählen Sie einen Ordner aus"],
    "a fault of the tool, or a file that only looks like one of accounts": [
        "Ungültiger Prozeduraufruf", "Überlauf", "Index außerhalb", "Typen unverträglich", "Objektvariable",
        "Unzulässige Ver", "Schlüssel ist in", "Ungültiger Schlüssel", "Die Argumente sind", "Der Vorgang ist in", "Das aktuelle Recordset",
        "Der Vorgang ist für ein geschl", "Der Vorgang ist für ein geöff", "Die Verbindung kann nicht"],
    "the tool passes neither another provider nor a user name": ["Der Provider kann", "Kein zulässiger Kontoname"],
    "only statements given to kontodb can have these errors": [
        "Syntaxfehler in ", "Die INSERT INTO", "Doppeltes", "Die Anzahl",
        "Unzulässige SQL", "Nach dem Ende", "Dieser Teil", "Die Abfrage ist", "Datentypenkonflikt"],
    "only kontodb makes files": ["existiert bereits."],
    "the account table cannot cause it": [
        "Der Datensatz ist zu groß", "Feld … kann keine leere", "Das Feld … kann nicht aktualisiert", "Die fortlaufenden",
        "Das Feld … kann nicht Teil"],
    "shown by Windows itself in its own words": ["Automatisierungsfehler"],
    "a secret": ["HwendorpliqZ"],
    "the name of a form": ["frmBenKto", "frmLogin"],
}
OF_WINDOWS = {"Ja", "(32 Bit)", "Weitere Informationen", "Trotzdem ausführen", "Schreibgeschützt", "Barrierefreiheit",
              "Erleichterte Bedienung", "Der Computer wurde durch Windows geschützt"}
CONSTANTS = {  # how the handbook must write a constant of a source
    ("settings/cINI.cpp", r"kReplySize = 255;"): "höchstens 254 Zeichen",
    ("settings/cINI.cpp", r'u"SETTINGS", u"BenKtoPath"'): "[SETTINGS]\nBenKtoPath=",
    ("settings/cINI.cpp", r"\\\\Tolv\.ini"): "`Tolv.ini`",
    ("db/cDB.cpp", r"\\\\BenKTO\.mdb"): "`BenKTO.mdb`",
    ("db/cDB.cpp", r"Microsoft\.Jet\.OLEDB\.4\.0"): "Provider Microsoft.Jet.OLEDB.4.0",
    ("accounts/AccountTable.h", r'kTable = u"Benutzerkonto"'): "Tabelle\n`Benutzerkonto`",
    ("app/frmLogin.cpp", r'kMarkerFile = u"C:\\\\mmtolvblankologin"'): r"`C:\mmtolvblankologin`",
    ("jet/storage/PageIo.h", r"kLockWait\{2000\}"): "bis zu zwei Sekunden",
    ("jet/storage/Storage.h", r'kJournalSuffix = u"-journal"'): "`BenKTO.mdb-journal`",
    ("jet/storage/NewFile.cpp", r'kNeighbourSuffix = u"-neu-"'): "`DATEI-neu-1`",
    ("ado/embedded/AdoError.h", r"NoCurrentRecord = 3021"): "(3021)",
    ("packaging/installer.nsi", r'"/PFAD="'): "`/PFAD=",
    ("packaging/installer.nsi", r"/AllUsers"): "`/AllUsers`",
    ("packaging/installer.nsi", r"REMOVER Deinstallieren\.exe"): "`Deinstallieren.exe /S`",
}
LITERAL = re.compile(r'u?"((?:[^"\\]|\\.)*)"')
CONSTANT = re.compile(r'TextView (k\w+) =\s*((?:u"(?:[^"\\]|\\.)*"\s*)+);')


def source(name):
    return re.sub(r"(?m)//.*$|^\s*#.*$", "", (ROOT / name).read_text())


def unescaped(literals):
    return re.sub(r"\\(.)", lambda m: {"r": "", "n": "\n"}.get(m[1], m[1]), literals)


def texts(name, constants):
    """The lines of text in a source: string literals, and a hole for each value between two of them."""
    code = re.sub(r"(?<!::)\b(k\w+)\b(?! =)", lambda m: f'u"{constants[m[1]]}"' if m[1] in constants else m[1], source(name))
    found, end = [], None
    for literal in LITERAL.finditer(code):
        between = ";" if end is None else code[end:literal.start()]
        glue = re.sub(r"base::Text\(|\bText\(|\.append\(|[\s+)]", "", between)
        if re.search(r"[;{}:?,](?!:)|case|return", between.replace("::", "")):
            found.append(unescaped(literal[1]))
        else:
            found[-1] += (HOLE if glue else "") + unescaped(literal[1])
        end = literal.end()
    return [part.strip() for text in found for part in text.split("\n") if re.search("[A-Za-z]{2}", part)]


def unquoted(text):
    """Removes the quotes that the program's quoted() puts around a value."""
    return text.replace(f"'{HOLE}'", HOLE)


def is_in(quotation, said):
    """Whether one of the texts has all the words of the quotation, in this order."""
    words = [re.escape(part.strip()) for part in unquoted(quotation).split(HOLE)]
    pattern = re.compile(".*".join(words) if any(words) else "$.")
    return any(pattern.search(text) for text in said)


def windows_state():
    """A checksum that changes if the windows may look different from the pictures."""
    parts = [source("win32/Layout.cpp"), *re.findall(r"set(?:Bounds|ClientSize)\(.*", source("app/frmLogin.cpp")),
             *(text for name in WINDOWS for text in texts(name, {})), source("tools/kontodb/InventedAccounts.cpp")]
    return hashlib.sha256("\0".join(re.sub(r"\s+", " ", part) for part in parts).encode()).hexdigest()


def main():
    handbook = (ROOT / "docs/Handbuch.md").read_text()
    flowing = re.sub(r"\s+", " ", handbook)
    constants = {m[1]: "".join(LITERAL.findall(m[2])) for name in SOURCES for m in CONSTANT.finditer(source(name))}
    own = {name: list(map(unquoted, texts(name, constants))) for name in SOURCES}
    said = [text for name in SOURCES for text in own[name]]
    quotations = [text.strip() for text in re.findall("„([^“]*)“", flowing)]
    headings = re.findall(r"^#+ (.*)", handbook, re.M)

    faults = {"what the handbook quotes": [
        f"„{text}“ is no text of the program" for text in quotations
        if text not in headings and text not in OF_WINDOWS and not is_in(text, said)]}

    names = {name for path in WINDOWS for name in re.findall(r'\*this, u"(\w+)"', source(path))} | {"cmbAddNew"}
    left_out = [text for group in LEFT_OUT.values() for text in group]
    shown = [text for name in WINDOWS + ERRORS for text in own[name] if text not in names]
    quoted = [unquoted(text) for text in quotations]

    def is_in_handbook(text):
        """As a whole, or in a quotation that leaves some of it out."""
        return (text in unquoted(flowing) or
                any(len(words) > 20 and is_in(words, [text]) for words in quoted))

    faults["what the program says"] = [
        f"'{text}' is not in the handbook" for text in shown
        if not is_in_handbook(text) and not any(text.startswith(start) or text.endswith(start) for start in left_out)]
    faults["what is left out"] = [f"'{start}' is no text of the program" for start in left_out
                                  if not any(start in text for text in shown)]
    faults["where errors are worded"] = [
        f"{name} has error texts but is on no list here" for name in SOURCES if ERROR_TEXT.search(source(name))
        and name not in ERRORS + WINDOWS and not name.startswith(("jet/fresh/", "jet/compact/", "jet/salvage/", "jet/storage/NewFile", "tools/"))]
    faults["constants"] = [f"{name}: {pattern}, and the handbook: {words}" for (name, pattern), words in CONSTANTS.items()
                           if not re.search(pattern, (ROOT / name).read_text()) or words not in handbook]
    calls = re.compile(r'^(?:.*R"\()?(kontodb \w+ DATEI.*)$', re.M)
    explained, listed = (set(calls.findall(text)) for text in ((ROOT / "tools/kontodb/Help.cpp").read_text(), handbook))
    faults["how kontodb is called"] = [f"'{call}' is only in one of help and handbook" for call in explained ^ listed]

    referred = set(re.findall(r"!\[[^\]]*\]\(bilder/([^)]*)\)", handbook))
    there = {path.name for path in PICTURES.glob("*.png")}
    faults["pictures"] = [f"{name} is only in one of text and folder" for name in referred ^ there]
    if not STATE.exists() or STATE.read_text().strip() != windows_state():
        faults["pictures"].append("layout or captions have changed since they were made: run docs/make-pictures.py")

    for rule, found in faults.items():
        print("\n".join(f"FAIL handbook, {rule}: {fault}" for fault in found) or f"PASS handbook, {rule}")
    return any(faults.values())


if __name__ == "__main__":
    sys.exit(main())
