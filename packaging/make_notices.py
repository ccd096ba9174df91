"""Writes THIRD-PARTY.txt anew: the notices that must go with the program, for what of others' work the toolchain put
into it. Everything is taken from the copyright files that Debian's packages of the toolchain bring.

Usage: make_notices.py                                  prints it
       make_notices.py check QUILLMONT.MAP THIRD-PARTY.TXT
                                                        names what the link map says is in the program and no notice
                                                        covers, and what of the notices the toolchain says otherwise
"""

import re
import sys
import textwrap
from pathlib import Path
from typing import NamedTuple

DOC = Path("/usr/share/doc")
MINGW = DOC / "mingw-w64-x86-64-dev" / "copyright"
GCC = DOC / "gcc-mingw-w64-base" / "copyright"
NSIS = DOC / "nsis" / "copyright"

HEAD = """\
© 2026 Quillmont. All rights reserved.

Quillmont PRO contains parts of others' work. These are their notices.
"""

# Title, and the licence in mingw-w64's copyright file.
MINGW_SECTIONS = [
    ("The mingw-w64 runtime", "ZPL-2.1"),
    ("The mingw-w64 runtime: printing", "Keith-Marshall"),
    ("The mingw-w64 runtime: number conversion (gdtoa)", "Lucent"),
    ("The mingw-w64 runtime: number conversion (gdtoa), two of its files", "David-Gay"),
    ("Threads (winpthreads)", "expat"),
    ("Threads (winpthreads): pthread.h", "BSD-3-clause-Lockless"),
]
RUNTIME = "mingw-w64-crt/"
THREADS = "mingw-w64-libraries/winpthreads/"
COVERED = {licence for _, licence in MINGW_SECTIONS} | {"public-domain"}

# Archives and objects of the link map, by their file names.
OURS = re.compile(r"CMakeFiles/.*|libquillmont_\w+\.a")
OF_GCC = {"crtbegin.o", "crtend.o", "libgcc.a", "libgcc_eh.a", "libstdc++.a"}
OF_RUNTIME = {"crt2u.o", "libmingw32.a", "libmingwex.a", "libmsvcrt.a"}
OF_THREADS = {"libpthread.a", "libwinpthread.a"}
# dlltool's: a function's name and the library of Windows' own that it is in, no code of anybody's.
IMPORT = re.compile(r"lib\w+?(?:h|t|s\d{5})\.o")
# The runtime's folder gdtoa/, which its copyright file names as a whole.
GDTOA = set(
    "arithchk dmisc dtoa g__fmt g_dfmt g_ffmt g_xfmt gd_arith gd_qnan gdtoa gethex gmisc hd_init hexnan misc qnan "
    "smisc strtodg strtodnrp strtof strtopx sum ulp".split()
)


class Stanza(NamedTuple):
    """Of a copyright file in Debian's format: the files, whose they are, and under what."""

    files: list
    copyright: list
    licence: str
    text: str


def unfold(lines):
    """A licence's text: one blank in front of each line, and a dot for an empty one."""
    return "\n".join("" if line.strip() == "." else line[1:].rstrip() for line in lines)


def read_stanzas(path):
    stanzas = []
    for paragraph in re.split(r"\n\s*\n", path.read_text(encoding="utf-8")):
        fields = {}
        for line in paragraph.strip("\n").split("\n"):
            name, colon, value = line.partition(":")
            if colon and not line[0].isspace():
                current = fields[name] = [value.strip()]
            elif fields:
                current.append(line)
        if "License" in fields:
            stanzas.append(
                Stanza(
                    " ".join(fields.get("Files", [])).split(),
                    [line.strip() for line in fields.get("Copyright", [])],
                    fields["License"][0],
                    unfold(fields["License"][1:]),
                )
            )
    return stanzas


def licence_text(stanzas, licence):
    return next(stanza.text for stanza in stanzas if stanza.licence == licence and stanza.text)


def ships(stanza):
    """Whether it speaks of what can be in a program: of the runtime or the threads, not of their tests and tools."""
    places = [file for file in stanza.files if file == "*" or file.startswith((RUNTIME, THREADS))]
    return any("/test" not in place and "/build-aux/" not in place for place in places)


def holders(stanzas, licence):
    lines = [line for stanza in stanzas if stanza.licence == licence and ships(stanza) for line in stanza.copyright]
    return "\n".join(dict.fromkeys(lines))


def gcc_section():
    text = GCC.read_text(encoding="utf-8")
    terms = re.search(r"^The following runtime libraries are licensed.*?:\n", text, re.M | re.S)[0]
    exception = re.search(r"^GCC RUNTIME LIBRARY EXCEPTION\n.*?requirements of the license of GCC\.\n", text, re.M | re.S)[0]
    return f"{terms}\n - libgcc\n - libstdc++-v3\n\n{exception}"


def sections():
    """(title, whose, text) of each."""
    mingw, nsis = read_stanzas(MINGW), read_stanzas(NSIS)
    found = [(title, holders(mingw, licence), licence_text(mingw, licence)) for title, licence in MINGW_SECTIONS]
    found.append(("libstdc++ and libgcc", "Free Software Foundation, Inc.", gcc_section()))
    found.append(("The installer, made with NSIS", "\n".join(nsis[0].copyright), licence_text(nsis, "Zlib")))
    return found


def section_text(title, whose, text):
    rule = "-" * 78
    return f"{rule}\n{title}\n{rule}\n\nCopyright:\n{textwrap.indent(whose, '  ')}\n\n{textwrap.dedent(text).strip()}\n"


def notices():
    return "\n".join([HEAD, *(section_text(*section) for section in sections())])


def read_origins(link_map):
    """(file, member or None) of everything that was linked: archive members, then objects named by themselves."""
    origins = []
    for line in link_map.splitlines():
        member = re.match(r"(\S.*\.a)\((.+)\)$", line)
        alone = re.match(r"LOAD (.+(?:\.o|\.obj|\.res))$", line)
        if member:
            origins.append((member[1], member[2]))
        elif alone:
            origins.append((alone[1], None))
    return list(dict.fromkeys(origins))


def runtime_licences(stem, stanzas):
    """Of a source file of the runtime, by its name alone: the link map does not tell its folder."""
    licences = {"Lucent"} if stem in GDTOA else set()
    for stanza in stanzas:
        names = {file.rpartition("/")[2].partition(".")[0] for file in stanza.files if file.startswith(RUNTIME)}
        if stem in names:
            licences.add(stanza.licence)
    return licences or {"ZPL-2.1"}


def licences_of(path, member, stanzas):
    """The licences of one origin, none for our own and for imports; None when it is not known at all."""
    name = path.rpartition("/")[2]
    if OURS.fullmatch(path) or name in OF_GCC:
        return set()
    if name in OF_THREADS:
        return {"expat", "BSD-3-clause-Lockless"}
    if member and IMPORT.fullmatch(member):
        return set()
    if name in OF_RUNTIME:
        stem = (member or name).removesuffix(".o").rpartition("_a-")[2]
        return runtime_licences(stem, stanzas)
    return None


def faults_of_map(link_map):
    stanzas = read_stanzas(MINGW)
    origins = read_origins(link_map)
    if len(origins) < 50:
        yield "the link map was not read"
    for path, member in origins:
        origin = f"{path}({member})" if member else path
        licences = licences_of(path, member, stanzas)
        if licences is None:
            yield f"in the program, from nobody known: {origin}"
        elif licences - COVERED:
            yield f"in the program, under {', '.join(sorted(licences - COVERED))}, which no notice covers: {origin}"


def normalized(text):
    """Without what differs between versions of the toolchain and changes no notice: breaks, and years."""
    return re.sub(r"\b(?:(?:19|20)\d\d[-, ]+)+", "", " ".join(text.split()))


def faults_of_notices(text):
    for section in sections():
        if normalized(section_text(*section)) not in normalized(text):
            yield f"not as the toolchain states it: {section[0]}"


def main(arguments):
    if not arguments:
        print(notices(), end="")
        return 0
    link_map, text = (Path(path).read_text(encoding="utf-8") for path in arguments[1:])
    faults = [*faults_of_map(link_map), *faults_of_notices(text)]
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
