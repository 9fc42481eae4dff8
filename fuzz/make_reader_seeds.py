#!/usr/bin/env python3
"""Writes the base seeds of the reader targets into fuzz/corpus/<target>/ from the shipped data
folder (data/) and a few hand-made files: call_file (fuzz_call_file), language, appcfg,
nicknames, call_text. Seeds the fuzzer found are kept in the same folders under their hash
names; this script only writes files named seed-*.

call_file seeds start with the eight header bytes of fuzz_call_file.cpp: key choice, flags, and
the six bytes of the appended record's call."""

import os

HERE = os.path.dirname(os.path.abspath(__file__))
DATA = os.path.join(HERE, "..", "data")
CORPUS = os.path.join(HERE, "corpus")


def write(target, name, data):
    folder = os.path.join(CORPUS, target)
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, "seed-" + name), "wb") as f:
        f.write(data)


def record(call, name=b"Someone", ctry=b"Somewhere"):
    fields = [(call, 6), (name, 25), (b"", 30), (b"", 30), (ctry, 30), (b"52.1", 15), (b"5.1", 15), (b"A", 12), (b"1961", 4)]
    return b"".join(v[:w].ljust(w) for v, w in fields)


def call_file():
    db = open(os.path.join(DATA, "Norvane-DB.db"), "rb").read()
    write("call_file", "shipped", bytes([0, 0]) + b"PA3ABC" + db)
    write("call_file", "shipped-literal-key", bytes([0x80, 1]) + b"G4ABC " + db)
    write("call_file", "shipped-tail", bytes([3, 0]) + b"ZZ9ZZZ" + db + b"partial record")
    write("call_file", "shipped-long-tail", bytes([3, 0]) + b"A1    " + db + b"x" * 120)
    unsorted = record(b"W1XYZ") + record(b"G4ABC") + record(b" K1AB") + record(b"G4ABC") + record(b"A1")
    write("call_file", "unsorted-duplicates", bytes([1, 0]) + b"G4ABC " + unsorted)
    write("call_file", "plain-calls", bytes([2, 2]) + b"M0ABC " + unsorted)
    write("call_file", "missing", bytes([0, 4]) + b"G4ABC ")
    write("call_file", "empty", bytes([0, 0]) + b"G4ABC ")
    write("call_file", "one-record", bytes([0, 0]) + b"      " + record(b"G4ABC"))
    write("call_file", "cp1252-calls", bytes([0, 0]) + b"\xd8\xe9\x81 A " + record(b"\xe9\x80") + record(b"\x00\x01"))


def language():
    for name in sorted(os.listdir(os.path.join(DATA, "Languages"))):
        text = open(os.path.join(DATA, "Languages", name), "rb").read()
        lang = name.split("_")[1].split(".")[0].lower()
        if lang in ("english", "dutch", "russian", "japanese"):
            write("language", lang, text)
    english = open(os.path.join(DATA, "Languages", "Norvane_English.Language"), "rb").read()
    lines = english.split(b"\r")
    write("language", "cut-short", b"\r".join(lines[:100]))
    broken = list(lines)
    broken[136] = broken[136].replace(b"=", b":")
    write("language", "no-equals", b"\r".join(broken))
    wrong = list(lines)
    wrong[134] = b"\nVersion= 2"
    write("language", "wrong-version", b"\r".join(wrong))
    write("language", "lf-only", english.replace(b"\r\n", b"\n"))
    write("language", "empty", b"")


def appcfg():
    lines = [b"PA3XYZ"] + [b"0"] * 57 + [b"5", b"0"]
    write("appcfg", "crlf", b"\r\n".join(lines) + b"\r\n")
    write("appcfg", "lf", b"\n".join(lines))
    write("appcfg", "cr-mixed", b"\r".join(lines[:30]) + b"\n" + b"\r\n".join(lines[30:]))
    write("appcfg", "short", b"\r\n".join(lines[:58]) + b"\r\n")
    write("appcfg", "language-name", b"\r\n".join(lines[:58] + [b"Klingon"]))
    write("appcfg", "empty", b"")


def nicknames():
    write("nicknames", "shipped", open(os.path.join(DATA, "nicknames.txt"), "rb").read())
    write("nicknames", "odd-separators", b'\t"PA3XYZ*Jan" ;junk, ,G4ABC*Ally\t\r\r\n\n  W1XYZ*Bob;Rob  ,"JA1XYZ*Ken, Jr"')
    write("nicknames", "unterminated", b'G4ABC*Al,"W1AW*Hiram')
    write("nicknames", "cp1252", b"F5XYZ*Andr\xe9\r\nDL1ABC*J\xfcrgen*x\r\n")


def call_text():
    for i, text in enumerate([b"de g4abc rest", b"ea8/dl1abc/p", b"DL1ABC/P", b"w1xyz", b"\xc3\x98Z1ABC",
                              b"pa\xd8xyz", b"DLABC/1", b"  ja1xyz  ", b"DE DE 0", b"\xe9a1b\xc3\x9f"]):
        write("call_text", "%02d" % i, text)


if __name__ == "__main__":
    call_file()
    language()
    appcfg()
    nicknames()
    call_text()
