#!/usr/bin/env python3
"""A local stand-in for the five call-book services, the picture server and the update site.

Serves the fixture pages on 127.0.0.1 so that tests and the demo need no internet:

  /eham/               login-check page      /eham/callbook/CALL
  /qrz/                login-check page      /qrz/db/CALL
  /qrzcq/              login-check page      /qrzcq/call/CALL
  /callook/            login-check page      /callook/CALL
  /hamcall/call        login-check page      /hamcall/call?callsign=CALL
  /pictures/L/CALL/CALL.jpg                  station pictures (PICTURES/<call>.jpg)
  /updates/                                  the update page
  /qrz/login                                 the QRZ login form (GET) and its answer (POST)
  /blocks                                    four coloured blocks filling the window (captures)
  /webmaps/maps/place/PLACE/@LAT,LON,...     the web map's place page: the place and position
  /redirect/REST                             301 to /REST (as sites that moved answer)
  /delay/MS/REST                             /REST, answered MS milliseconds late

The page for CALL is the one PAGES/routes.json names for it, else PAGES/<service>/notfound.html.
The login-check page is home-loggedin.html or home.html by the service's login state; QRZ
answers every lookup with login.html while logged out. The state is set with
/_control/login?services=qrz,eham (an empty list logs out of all). QRZ also has a real login:
/qrz/login shows a form whose POST (user TEST1, password secret) sets the session cookie
"qrz_session", good for a day; a request that carries it is logged in to QRZ whatever the state
above says. Pages whose file name says
"cp1252" go out without a charset in the header, so that their own <meta> declares it.

Calls that make a fault instead of a page, on every service:
  ZZ404 -> 404, ZZ500 -> 500, ZZ1HNG -> accepts and never answers, ZZ1TRN -> body cut short,
  ZZ1BIG -> a 10 MB page, ZZ1JNK -> binary garbage, ZZ1LP -> a redirect loop.

Every request but those to /_control is logged: GET /_control/requests answers with the paths
asked for so far, one a line (?clear=1 empties the list after answering), and --log FILE
appends each path to FILE as it comes.

Prints the port it listens on as the first line of its output. Ends by itself after
--lifetime seconds.
"""
import argparse
import html
import json
import os
import random
import sys
import threading
import time
import urllib.parse
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

SERVICES = {
    "eham": ("/", "/callbook/"),
    "qrz": ("/", "/db/"),
    "qrzcq": ("/", "/call/"),
    "callook": ("/", "/"),
    "hamcall": ("/call", "/call?callsign="),
}


class State:
    logged_in = set(SERVICES)
    sessions = set()
    requests = []
    lock = threading.Lock()


LOGIN_FORM = b"""<html><head><title>QRZ login</title></head><body>
<form method="post" action="/qrz/login">
<input id="username" name="username"> <input id="password" name="password" type="password">
<input id="login" type="submit" value="Log in"></form></body></html>"""

# The corners of the window in four colours: red top left, lime top right, blue bottom left,
# yellow bottom right.
BLOCKS = b"""<html><head><style>
html, body { margin: 0; width: 100%; height: 100%; overflow: hidden; }
div { position: absolute; width: 50%; height: 50%; }
</style></head><body>
<div style="left:0;top:0;background:#ff0000"></div><div style="right:0;top:0;background:#00ff00"></div>
<div style="left:0;bottom:0;background:#0000ff"></div><div style="right:0;bottom:0;background:#ffff00"></div>
</body></html>"""

def place_page(path):
    """The web map's place page: what the link asked for, written out, on a map-coloured page."""
    rest = urllib.parse.unquote_plus(path[len("/webmaps/maps/place/"):])
    place, _, view = rest.partition("/@")
    position = ", ".join(view.split(",")[:2])
    parts = place.split(",")
    try:  # by position: the place is the position itself
        [float(part) for part in parts]
        parts = [place.replace(",", ", ")]
    except ValueError:
        pass
    rows = "".join("<p>%s</p>" % html.escape(part) for part in parts)
    return ("""<html><head><title>Web map stand-in</title><style>
body { margin: 0; height: 100vh; background: #cfe8c4; font-family: sans-serif; }
div { position: absolute; left: 40px; top: 40px; padding: 4px 16px; background: #ffffff; }
</style></head><body><div><h2>Web map stand-in</h2>%s<p>Shown at %s</p></div></body></html>"""
            % (rows, html.escape(position))).encode()


LOGIN_USER, LOGIN_PASSWORD = "TEST1", "secret"


def read(path):
    with open(path, "rb") as f:
        return f.read()


class Handler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    disable_nagle_algorithm = True  # headers and body go out at once, as a real server sends them
    server_version = "callbook-stand-in/1"

    def log_message(self, fmt, *args):
        if self.server.verbose:
            sys.stderr.write("%s\n" % (fmt % args))

    def send(self, status, body, content_type="text/html; charset=utf-8", headers=()):
        self.send_response(status)
        self.send_header("Content-Type", content_type)
        self.send_header("Content-Length", str(len(body)))
        for k, v in headers:
            self.send_header(k, v)
        self.end_headers()
        self.wfile.write(body)

    def page(self, service, name):
        path = os.path.join(self.server.pages, service, name)
        if not os.path.isfile(path):
            return None
        return read(path), "text/html" if "cp1252" in name else "text/html; charset=utf-8"

    def fault(self, call):
        if call == "ZZ404":
            self.send(404, b"<html><body>Not Found</body></html>")
        elif call == "ZZ500":
            self.send(500, b"<html><body>Internal Server Error</body></html>")
        elif call == "ZZ1HNG":
            # Hold the connection open without a byte of answer, until the client gives up.
            deadline = time.time() + self.server.lifetime
            self.connection.settimeout(0.5)
            while time.time() < deadline:
                try:
                    if self.connection.recv(1) == b"":
                        break
                except OSError:
                    continue
            self.close_connection = True
        elif call == "ZZ1TRN":
            self.send_response(200)
            self.send_header("Content-Type", "text/html")
            self.send_header("Content-Length", "100000")
            self.end_headers()
            self.wfile.write(b"<html><body><table><tr><td>Name</td><td>Cut Sh")
            self.wfile.flush()
            self.close_connection = True
        elif call == "ZZ1BIG":
            row = b"<tr><td>Padding</td><td>" + b"x" * 200 + b"</td></tr>\n"
            body = b"<html><body><table>" + row * (10 * 1024 * 1024 // len(row)) + b"</table></body></html>"
            self.send(200, body)
        elif call == "ZZ1JNK":
            rnd = random.Random(7)
            self.send(200, bytes(rnd.getrandbits(8) for _ in range(65536)), "text/html")
        elif call == "ZZ1LP":
            self.send(302, b"", headers=[("Location", self.path)])
        else:
            return False
        return True

    def session(self):
        """The QRZ session the request's cookie names, when the stand-in gave it out."""
        for part in self.headers.get("Cookie", "").split(";"):
            name, _, value = part.strip().partition("=")
            if name == "qrz_session":
                with State.lock:
                    if value in State.sessions:
                        return value
        return None

    def do_POST(self):
        length = min(int(self.headers.get("Content-Length", "0") or 0), 65536)
        fields = urllib.parse.parse_qs(self.rfile.read(length).decode("utf-8", "replace"))
        if urllib.parse.urlsplit(self.path).path != "/qrz/login":
            return self.send(404, b"<html><body>Not Found</body></html>")
        with State.lock:
            State.requests.append("POST " + self.path)
        if fields.get("username", [""])[0] != LOGIN_USER or fields.get("password", [""])[0] != LOGIN_PASSWORD:
            return self.send(200, LOGIN_FORM.replace(b"<form", b"<p>Wrong user or password</p><form"))
        token = "%016x" % random.getrandbits(64)
        with State.lock:
            State.sessions.add(token)
        cookie = "qrz_session=%s; Path=/; Max-Age=86400; HttpOnly" % token
        return self.send(303, b"", headers=[("Location", "/qrz/"), ("Set-Cookie", cookie)])

    def do_GET(self):
        url = urllib.parse.urlsplit(self.path)
        path = url.path
        if path == "/_control/requests":
            with State.lock:
                body = "".join(r + "\n" for r in State.requests).encode()
                if "clear=1" in url.query:
                    State.requests.clear()
            return self.send(200, body, "text/plain; charset=utf-8")
        if not path.startswith("/_control/"):
            with State.lock:
                State.requests.append(self.path)
                if self.server.log:
                    with open(self.server.log, "a") as log:
                        log.write(self.path + "\n")
        if path.startswith("/delay/"):
            # /delay/MS/REST: answers as /REST does, MS milliseconds late.
            _, _, ms, rest = path.split("/", 3)
            time.sleep(int(ms) / 1000)
            self.path = "/" + rest + (("?" + url.query) if url.query else "")
            url = urllib.parse.urlsplit(self.path)
            path = url.path
        if path.startswith("/redirect/"):
            target = path[len("/redirect"):] + (("?" + url.query) if url.query else "")
            return self.send(301, b"", headers=[("Location", target)])
        if path == "/_control/login":
            services = urllib.parse.parse_qs(url.query).get("services", [""])[0]
            with State.lock:
                State.logged_in = {s for s in services.split(",") if s}
            return self.send(200, b"ok", "text/plain")
        if path.startswith("/pictures/"):
            name = path.rsplit("/", 1)[-1]
            picture = os.path.join(self.server.pictures, name)
            if os.path.isfile(picture):
                return self.send(200, read(picture), "image/jpeg")
            return self.send(404, b"<html><body>Not Found</body></html>")
        if path == "/blocks":
            return self.send(200, BLOCKS)
        if path.startswith("/webmaps/maps/place/"):
            return self.send(200, place_page(path))
        if path == "/qrz/login":
            return self.send(200, LOGIN_FORM)
        if path in ("/updates", "/updates/"):
            found = self.page("updates", "index.html")
            return self.send(200, *found) if found else self.send(404, b"")
        parts = path.split("/", 2)
        service = parts[1] if len(parts) > 1 else ""
        if service not in SERVICES:
            return self.send(404, b"<html><body>Not Found</body></html>")
        rest = "/" + (parts[2] if len(parts) > 2 else "")
        login_path, lookup_path = SERVICES[service]
        if "?" in lookup_path:
            lookup_base, key = lookup_path.rstrip("=").split("?")
            call = urllib.parse.parse_qs(url.query).get(key, [None])[0] if rest == lookup_base else None
        else:
            call = urllib.parse.unquote(rest[len(lookup_path):]) if rest.startswith(lookup_path) else None
            if call == "":
                call = None
        with State.lock:
            logged_in = service in State.logged_in
        if service == "qrz" and self.session():
            logged_in = True
        if call is None and rest == login_path:
            found = (logged_in and self.page(service, "home-loggedin.html")) or self.page(service, "home.html")
            return self.send(200, *found) if found else self.send(404, b"")
        if call is None:
            return self.send(404, b"<html><body>Not Found</body></html>")
        call = call.upper()
        if self.fault(call):
            return None
        if service == "qrz" and not logged_in:
            found = self.page(service, "login.html")
        else:
            routed = self.server.routes.get(service, {}).get(call)
            found = (routed and self.page(service, routed)) or self.page(service, "notfound.html")
        return self.send(200, *found) if found else self.send(404, b"")


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    fixtures = os.path.join(here, "..", "tests", "fixtures")
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--port", type=int, default=0)
    ap.add_argument("--pages", default=os.path.join(fixtures, "pages"))
    ap.add_argument("--pictures", default=os.path.join(fixtures, "pictures"))
    ap.add_argument("--lifetime", type=float, default=900, help="seconds until the server stops by itself")
    ap.add_argument("--logged-out", action="store_true", help="start logged out of every service")
    ap.add_argument("--verbose", action="store_true")
    ap.add_argument("--log", help="append the path of every request to this file")
    args = ap.parse_args()
    if args.logged_out:
        State.logged_in = set()
    server = ThreadingHTTPServer(("127.0.0.1", args.port), Handler)
    server.daemon_threads = True
    server.pages, server.pictures, server.lifetime, server.verbose = args.pages, args.pictures, args.lifetime, args.verbose
    server.log = args.log
    routes_file = os.path.join(args.pages, "routes.json")
    server.routes = json.load(open(routes_file)) if os.path.isfile(routes_file) else {}
    print(server.server_address[1], flush=True)
    threading.Timer(args.lifetime, server.shutdown).start()
    server.serve_forever()


if __name__ == "__main__":
    main()
