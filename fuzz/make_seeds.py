#!/usr/bin/env python3
"""Writes the base seeds of fuzz_callbook_page into fuzz/corpus/callbook_page/: every fixture page
under tests/fixtures/pages with the two header bytes that select its service and call (the long
pages cut down to a few repeats of each line), plus a few small hand-made pages for the decoder
and the renderer. Writes the seeds of fuzz_html_paths into fuzz/corpus/html_paths/: the same
pages without header bytes, and every page of tests/conformance/cases.json. Seeds the fuzzer
found are kept in the same folders under their hash names; this script leaves them alone.

Header bytes (see fuzz_callbook_page.cpp): byte 0 = service | call index << 3,
byte 1 = content type | order seed << 2."""

import json
import os
import re

HERE = os.path.dirname(os.path.abspath(__file__))
PAGES = os.path.join(HERE, "..", "tests", "fixtures", "pages")
OUT = os.path.join(HERE, "corpus", "callbook_page")
PATHS_OUT = os.path.join(HERE, "corpus", "html_paths")
CASES = os.path.join(HERE, "..", "tests", "conformance", "cases.json")

CALLS = ["", "G4ABC", "LA1ABC", "DL1ABC", "DL2XYZ", "LU1ABC", "F5ABC", "W1XYZ", "KP4ABC", "EA4ABC", "XX9XYZ"]
PAGE_WORD = 11  # the call is the first word of the page text
SERVICES = {"eham": 1, "qrz": 2, "qrzcq": 3, "callook": 4, "hamcall": 5}
CT_NONE, CT_UTF8, CT_LATIN1, CT_UTF16LE = 0, 1, 2, 3

# The call each fixture page is about (the not-found pages and home pages: the call looked up).
FIXTURE_CALLS = {
    ("eham", "accented-cp1252.html"): "LA1ABC", ("eham", "accented-utf8.html"): "LA1ABC",
    ("eham", "notfound.html"): "XX9XYZ",
    ("qrz", "accented-cp1252.html"): "DL2XYZ", ("qrz", "accented-utf8.html"): "DL2XYZ",
    ("qrz", "long.html"): "LU1ABC", ("qrz", "notfound.html"): "XX9XYZ",
    ("qrzcq", "accented-cp1252.html"): "F5ABC", ("qrzcq", "accented-utf8.html"): "F5ABC",
    ("qrzcq", "notfound.html"): "XX9XYZ",
    ("callook", "accented-cp1252.html"): "KP4ABC", ("callook", "accented-utf8.html"): "KP4ABC",
    ("callook", "notfound.html"): "XX9XYZ",
    ("hamcall", "accented-cp1252.html"): "EA4ABC", ("hamcall", "accented-utf8.html"): "EA4ABC",
    ("hamcall", "long.html"): "LU1ABC", ("hamcall", "notfound.html"): "XX9XYZ",
}
DEFAULT_CALL = {"eham": "G4ABC", "qrz": "DL1ABC", "qrzcq": "DL1ABC", "callook": "W1XYZ", "hamcall": "DL1ABC"}


def header(service, call_index, content_type=CT_NONE, order=0):
    return bytes([service | call_index << 3, content_type | order << 2])


def cut_down(data, keep=3):
    """The page with every kind of line kept at most `keep` times (the long pages repeat their
    log rows and paragraphs hundreds of times)."""
    seen = {}
    out = []
    for line in data.split(b"\n"):
        # Log rows differ in their dates, calls and reports, the long paragraphs in their
        # endings: lines count as repeats by their kind and start.
        key = b"<log row>" if re.match(rb"<tr><td>\d{4}-", line) else line[:40]
        seen[key] = seen.get(key, 0) + 1
        if seen[key] <= keep:
            out.append(line)
    return b"\n".join(out)


def write(name, data, folder=OUT):
    with open(os.path.join(folder, name), "wb") as f:
        f.write(data)


def fixture_seeds():
    for service, number in SERVICES.items():
        folder = os.path.join(PAGES, service)
        for file in sorted(os.listdir(folder)):
            with open(os.path.join(folder, file), "rb") as f:
                data = f.read()
            if len(data) > 16384:
                data = cut_down(data)
            call = CALLS.index(FIXTURE_CALLS.get((service, file), DEFAULT_CALL[service]))
            stem = f"{service}-{file[:-5]}"
            write(stem, header(number, call) + data)
            # The same page with the charset in the header instead of (or against) its <meta>.
            if file == "accented-cp1252.html":
                write(stem + "-ct", header(number, call, CT_LATIN1, 5) + data)
            if file == "accented-utf8.html":
                write(stem + "-ct", header(number, call, CT_UTF8, 9) + data)
            if file == "found.html":
                utf16 = data.decode("utf-8").encode("utf-16-le")
                write(stem + "-utf16", header(number, call, CT_UTF16LE, 17) + utf16)
    with open(os.path.join(PAGES, "updates", "index.html"), "rb") as f:
        write("none-updates", header(0, 0) + f.read())


HAND_MADE = {
    # Station texts straight from markup, the call taken from the page's first word.
    "qrz-min": (2, PAGE_WORD, b"<div>K1AB</div><div>Jo Doe, K1AB</div><div>St 1</div><div>Town</div>"
                b"<div>USA</div><div>QRZ Record</div><div>Class A x</div><div>Latitude 1.5 N</div>"
                b"<div>Longitude -2.5 W</div><div>Born 1970</div><div>Grid Square AB12</div>"
                b"<div>Web Page http://x/</div>"),
    "eham-min": (1, PAGE_WORD, b"K1AB<br>Country<br>Search Results<br>K1AB<br>Jo Doe<br>St 1<br>Town<br>USA<br>"
                 b"License Class Extra<br>Latitude 12.5<br>Longitude -3<br>"),
    "qrzcq-buddy": (3, 3, b"<h1>DL1ABC - QRZCQ.com</h1><a>Buddy</a><div>  Hans</div><div>A</div><div>B</div>"
                    b"<div>C</div><div>Class: A</div><div>Latitude: 1 x</div><div>Longitude: 2 x</div>"),
    "callook-min": (4, PAGE_WORD, b"W1AW<br>Show Map JOHN<br>1 ST<br>TOWN<br>Class: EXTRA<br>"
                    b"Grid Square: FN31<br>Latitude: 41.7<br>Longitude: -72.7<br>"),
    "hamcall-min": (5, PAGE_WORD, b"<p>W1AW callsign database!</p><p>Jo, W1AW</p><p>1 St</p><p>Town XX</p>"
                    b"<p>USA</p><p>License Class: A</p><p>Birth Date: 1 Jan 1950</p>"
                    b"<p>Latitude 34.6 S, Longitude 58.3 W, x</p>"),
    "qrz-login": (2, 3, b"<p>Login is required</p>"),
    # The decoder: byte-order marks, declared charsets in the header and in <meta>.
    "bom-utf16be": (1, 0, b"\xfe\xff" + "<p>Grüße</p><br>x".encode("utf-16-be")),
    "bom-utf8": (2, 0, b"\xef\xbb\xbf<p>Gr\xc3\xbc\xc3\x9fe</p>"),
    "meta-koi8": (3, 0, b"<meta charset=koi8-r><p>\xf0\xd2\xc9\xd7\xc5\xd4</p>"),
    "meta-sjis": (4, 0, b"<meta http-equiv=\"Content-Type\" content=\"text/html; charset=shift_jis\">"
                  b"<p>\x82\xb1\x82\xf1</p>"),
    "meta-utf16": (5, 0, b"<!-- x --><meta charset='utf-16'><p>\xc3\xa9</p>"),
    "cp1252-guess": (0, 0, b"<p>Stra\xdfe \x80 \x81</p>"),
    # The renderer: nesting, tables, hidden parts, white space, entities.
    "deep-div": (0, 0, b"<div>" * 300 + b"x" + b"</div>" * 300),
    "deep-formatting": (0, 0, b"<b><i><table><tr><td>" * 40 + b"x</b></i>" * 40),
    "tables": (2, 0, b"<table>t<tr><td>a<td hidden>b<tr style='display:none'><td>c</table>"
               b"<table><caption>C</caption><tbody><tr><th>h<td><table><tr><td>n</table></table>"),
    "hidden": (0, 0, b"<details><summary>S</summary>m</details><details open><summary>A</summary>B</details>"
               b"<span style='visibility:hidden'>h</span><dialog open>d</dialog><dialog>e</dialog>"
               b"<script>s</script><template>t</template><input type=hidden><img><audio controls></audio>"),
    "pre": (0, 0, b"<pre>\n a\r\n\tb  </pre> x &#13;&#10;&amp;&nbsp;&NotEqualTilde;&#0;<svg><p>q</svg>"),
    "plaintext": (0, 0, b"a<plaintext><p>raw</p>\n\nx"),
    # Formatting elements left open, each cloned again at the text of every next paragraph.
    "reopening-formatting": (0, 0, b"<p>" + b"".join(b"<font style=%d>" % k for k in range(255)) + b"<p>x" * 2000),
}


def html_paths_seeds():
    """Pages alone, for fuzz_html_paths: the fixture pages (cut down), the hand-made ones and the
    small pages of cases.json, each as UTF-8."""
    for service in sorted(os.listdir(PAGES)):
        folder = os.path.join(PAGES, service)
        if not os.path.isdir(folder):
            continue
        for file in sorted(os.listdir(folder)):
            with open(os.path.join(folder, file), "rb") as f:
                data = f.read()
            write(f"page-{service}-{file[:-5]}", cut_down(data) if len(data) > 16384 else data, PATHS_OUT)
    for name, (_, _, body) in HAND_MADE.items():
        write(f"hand-{name}", body, PATHS_OUT)
    with open(CASES, encoding="utf-8") as f:
        for name, html in json.load(f):
            write(f"case-{name}", html.encode("utf-8"), PATHS_OUT)


def main():
    os.makedirs(OUT, exist_ok=True)
    fixture_seeds()
    for name, (service, call, body) in HAND_MADE.items():
        write(name, header(service, call) + body)
    os.makedirs(PATHS_OUT, exist_ok=True)
    html_paths_seeds()


if __name__ == "__main__":
    main()
