#!/usr/bin/python3
"""Makes the packages and checks their contents: every file and its checksum, the same bytes under another locale, time
zone and umask, and valid signatures if a certificate is given."""
import hashlib
import io
import os
import pathlib
import re
import subprocess
import sys
import tarfile
import tempfile
import zipfile

import pefile

ROOT = pathlib.Path(__file__).resolve().parents[2]
EXES = {"prjDexoBenutzerkonten.exe", "kontodb.exe"}
FILES = EXES | {"Handbuch.html", "Handbuch.pdf", "SHA256SUMS", "Tolv-Beispiel.ini"}
MACHINES = {"x64": 0x8664, "x86": 0x14C}
failed = False


def rule(name, faults):
    global failed
    faults = [fault for fault in faults if fault]
    failed |= bool(faults)
    print("\n".join(f"FAIL {name}: {fault}" for fault in faults) or f"PASS {name}", flush=True)


def output(*command):
    return subprocess.run(command, check=True, capture_output=True).stdout


def make(folder, **environment):
    """The packages, by name."""
    run = subprocess.run(["bash", "-c", f"umask {environment.pop('umask', '022')}; exec ./package"], cwd=ROOT, text=True,
                         env=os.environ | environment | {"TOLV_PACKAGES": folder}, capture_output=True)
    if run.returncode:
        rule("packages are made", [run.stdout + run.stderr])
        sys.exit(1)
    return {path.name: path.read_bytes() for path in (ROOT / folder).iterdir()}


def sums(files):
    """SHA256SUMS names all other files, with the right checksums."""
    named = dict(reversed(line.split("  ")) for line in files["SHA256SUMS"].decode().splitlines())
    found = {name: hashlib.sha256(data).hexdigest() for name, data in files.items() if name != "SHA256SUMS"}
    return [f"{name}: {named.get(name)}, not {found.get(name)}" for name in named.keys() | found.keys()
            if named.get(name) != found.get(name)]


def sample(data):
    text = data.decode("cp1252")
    yield "no umlaut, or not in Windows-1252" if "ändern" not in text else None
    yield "a line that does not end in CR LF" if set(re.findall(r"\r?\n|\r", text)) != {"\r\n"} else None
    yield "no setting" if "\r\n[SETTINGS]\r\n" not in text or "\r\nBenKtoPath=D:\\Konten\r\n" not in text else None


def handbook(html, pdf, folder):
    source = (ROOT / "docs/Handbuch.md").read_text()
    headings = re.findall(r"^##+ (.*)", source, re.M)
    pictures = len(re.findall(r"!\[", source))
    (folder / "h.pdf").write_bytes(pdf)
    html = re.sub(r"\s+", " ", html)
    printed = re.sub(r"\s+", " ", output("pdftotext", folder / "h.pdf", "-").decode())
    images = re.findall(r"<img[^>]* src=\"([^\"]{0,5})", html)
    yield f"{len(images)} pictures, not {pictures}" if len(images) != pictures else None
    yield "pictures beside the page" if set(images) - {"data:"} else None
    yield "a style beside the page" if re.search(r"<link[^>]*stylesheet|@import|url\((?!data:)", html) else None
    yield from (f"the page lacks '{heading}'" for heading in headings if heading not in html)
    yield from (f"the print lacks '{heading}'" for heading in headings if heading not in printed)
    listed = output("pdfimages", "-list", folder / "h.pdf").decode().count(" image ")
    yield f"the print has {listed} pictures, not {pictures}" if listed < pictures else None


def edition(kind, packages, folder):
    name = next(n for n in packages if n.endswith(f"-{kind}.zip"))
    archive = zipfile.ZipFile(io.BytesIO(packages[name]))
    files = {entry: archive.read(entry) for entry in archive.namelist()}
    rule(f"{kind} zip", [f"holds {sorted(files)}"] * (files.keys() != FILES) + sums(files)
         + [f"{exe} is not the one built" for exe in EXES
            if files[exe] != (ROOT / f"out/windows-{kind}/bin" / exe).read_bytes()])
    rule(f"{kind} sample settings", sample(files["Tolv-Beispiel.ini"]))
    rule(f"{kind} handbook", handbook(files["Handbuch.html"].decode(), files["Handbuch.pdf"], folder))
    setup = packages[name.replace(".zip", "-Setup.exe")]
    rule(f"{kind} installer", ["is for another processor"] * (pefile.PE(data=setup).FILE_HEADER.Machine != MACHINES[kind])
         + ["asks for other rights than the user's own"] * (b'level="highestAvailable"' not in setup))


def signatures(folder):
    certificate, key = folder / "certificate.pem", folder / "key.pem"
    output("openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", "/CN=Test", "-addext",
           "extendedKeyUsage=codeSigning", "-keyout", key, "-out", certificate)
    packages = make("out/again/signed", TOLV_CERT=str(certificate), TOLV_KEY=str(key))
    for name, data in packages.items():
        signed = {name: data} if name.endswith(".exe") else {}
        if name.endswith(".zip"):
            archive = zipfile.ZipFile(io.BytesIO(data))
            signed = {exe: archive.read(exe) for exe in EXES}
        for exe, content in signed.items():
            (folder / exe).write_bytes(content)
            run = subprocess.run(["osslsigncode", "verify", "-CAfile", certificate, "-in", folder / exe], text=True,
                                 capture_output=True)
            yield f"{name} {exe}: {run.stdout}" if run.returncode or "verification: ok" not in run.stdout else None


with tempfile.TemporaryDirectory() as temporary:
    here = pathlib.Path(temporary)
    made = make("out/packages")
    rule("sums", sums(made))
    for architecture in MACHINES:
        edition(architecture, made, here)
    linux = next(name for name in made if name.endswith(".tar.gz"))
    tarfile.open(fileobj=io.BytesIO(made[linux])).extractall(here)
    program = here / linux.removesuffix(".tar.gz") / "kontodb"
    found = {path.name for path in program.parent.iterdir()}
    completed = output("bash", "-c", f"""compopt() {{ :; }}; . '{program}.bash'
        COMP_WORDS=(kontodb query BenKTO.mdb --cs) COMP_CWORD=3; _kontodb; echo "${{COMPREPLY[*]}}" """).decode()
    misnamed = subprocess.run([program, "check", b"M\xfcller.mdb"], capture_output=True)
    rule("linux", ["kontodb needs libraries"] * (b"INTERP" in output("readelf", "-lW", program))
         + [f"holds {sorted(found)}"] * (found != {"kontodb", "kontodb.1", "kontodb.bash", "Handbuch.html"})
         + [f"--cs is completed to {completed}"] * (completed != "--csv\n")
         + ["a name that is not UTF-8 is not refused"] * ("nicht in UTF-8" not in misnamed.stderr.decode()))
    elsewhere = make("out/again/packages", TZ="Pacific/Auckland", LC_ALL="de_DE.UTF-8", umask="077")
    rule("the same bytes", [f"{name} differs" for name in made if made[name] != elsewhere.get(name)])
    rule("signatures", signatures(here))
sys.exit(failed)
