#!/usr/bin/env python3
"""Runs every benchmark of a build and prints one table: figure, value, peer or floor, ratio, goal.

    python3 bench/run_all.py BUILD_DIR [--only calldb,decode,mainwindow,editor,stationview,startup] [--json FILE]

The Google Benchmark programs (build/bench/*_bench) run with JSON output; the start-up
benchmark (bench/startup_bench.py) needs an X server and runs under `xvfb-run -a` when DISPLAY
is not set; the station-view benchmark runs on a private X server with a window manager
(tools/with-wm.sh). The editor and station-view benchmarks are included when they are built. A program that fails is reported
in the table and makes the exit status 1; a goal that is missed is marked "MISSED" but is no
failure of the run (the figures are what this is for).
"""
import argparse
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
UNIT_TO_MS = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1000.0}


def log(text):
    print(text, file=sys.stderr, flush=True)


def run_google_benchmark(program, extra=(), wrapper=()):
    """Runs one Google Benchmark program (after wrapper, a command that runs it); name -> real
    time per iteration in ms (the median of repetitions where the benchmark repeats). None when
    the program failed."""
    with tempfile.TemporaryDirectory() as tmp:
        out = os.path.join(tmp, "out.json")
        cmd = [*wrapper, program, "--benchmark_out=" + out, "--benchmark_out_format=json", *extra]
        log("running " + " ".join(cmd))
        done = subprocess.run(cmd, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        if done.returncode != 0 or not os.path.exists(out):
            log(done.stderr[-2000:])
            return None
        with open(out) as f:
            report = json.load(f)
    times, medians = {}, {}
    for b in report.get("benchmarks", []):
        if b.get("error_occurred"):
            log("%s: %s" % (b["name"], b.get("error_message", "error")))
            continue
        ms = b["real_time"] * UNIT_TO_MS[b.get("time_unit", "ns")]
        run_name = b.get("run_name", b["name"])
        if b.get("run_type") == "aggregate":
            if b.get("aggregate_name") == "median":
                medians[run_name] = ms
        else:
            times.setdefault(run_name, []).append(ms)
    result = {name: sorted(v)[len(v) // 2] for name, v in times.items()}
    result.update(medians)
    return result


def find(results, prefix):
    """The figure of the one benchmark whose name starts with prefix (the suffixes such as
    "/min_time:0.300/real_time" differ with the registration)."""
    for name, value in results.items():
        if name == prefix or name.startswith(prefix + "/"):
            return value
    return None


class Table:
    def __init__(self):
        self.rows = []
        self.failed = []

    def add(self, figure, value, peer, ratio, goal, met):
        self.rows.append((figure, value, peer, ratio, goal, met))

    def print(self):
        head = ("figure", "value", "peer / floor", "ratio", "goal", "")
        widths = [max(len(str(r[i])) for r in self.rows + [head]) for i in range(5)]
        line = "  ".join("%-" + str(w) + "s" for w in widths) + "  %s"
        print(line % head)
        print("  ".join("-" * w for w in widths))
        for r in self.rows:
            met = "" if r[5] is None else ("ok" if r[5] else "MISSED")
            print(line % (r[0], r[1], r[2], r[3], r[4], met))
        for name in self.failed:
            print("FAILED: " + name)


def ms_text(ms):
    if ms is None:
        return "-"
    if ms < 1:
        return "%.2f us" % (ms * 1000)
    if ms >= 1000:
        return "%.3f s" % (ms / 1000)
    return "%.2f ms" % ms


def calldb_rows(table, r):
    for size, label in ((1000000, "1M"),):
        ours, peer = find(r, "BM_Find/ours/%d" % size), find(r, "BM_Find/sqlite/%d" % size)
        table.add("calldb find @%s" % label, ms_text(ours), "SQLite " + ms_text(peer),
                  "%.2fx" % (ours / peer) if ours and peer else "-", "<= 20 us",
                  ours is not None and ours <= 0.020)
    for size, label, goal_ms in ((100000, "100k", 100.0), (1000000, "1M", 1500.0)):
        ours, peer = find(r, "BM_AppendSort/ours/%d" % size), find(r, "BM_AppendSort/sqlite/%d" % size)
        table.add("calldb append+sort @%s" % label, ms_text(ours), "SQLite " + ms_text(peer),
                  "%.2fx" % (ours / peer) if ours and peer else "-", "<= " + ms_text(goal_ms),
                  ours is not None and ours <= goal_ms)
    for op, what in (("BM_Update", "update"), ("BM_Delete", "delete"), ("BM_List", "list")):
        ours, peer = find(r, "%s/ours/1000000" % op), find(r, "%s/sqlite/1000000" % op)
        table.add("calldb %s @1M" % what, ms_text(ours), "SQLite " + ms_text(peer),
                  "%.2fx" % (ours / peer) if ours and peer else "-", "-", None)


def decode_rows(table, r):
    ours = find(r, "BM_LongPage/ours")
    for peer_name, label, goal in (("qtextdocument", "QTextDocument", 5.0), ("webengine", "WebEngine", 20.0)):
        peer = find(r, "BM_LongPage/" + peer_name)
        if peer is None and peer_name == "webengine":
            table.add("decode 200 KB page vs " + label, ms_text(ours), "not built", "-", ">= 20x faster", None)
            continue
        speedup = peer / ours if ours and peer else None
        table.add("decode 200 KB page vs " + label, ms_text(ours), label + " " + ms_text(peer),
                  "%.1fx faster" % speedup if speedup else "-", ">= %gx faster" % goal,
                  speedup is not None and speedup >= goal)


def mainwindow_rows(table, r):
    f8 = find(r, "BM_F8KnownCall_1M")
    table.add("F8 known call @1M", ms_text(f8), "-", "-", "<= 5 ms", f8 is not None and f8 <= 5.0)
    server = find(r, "BM_WebPage_ServerOnly")
    for size, label in ((10000, "10k"), (1000000, "1M")):
        lookup = find(r, "BM_WebLookup/%d" % size)
        extra = lookup - server if lookup is not None and server is not None else None
        table.add("web lookup @%s" % label, ms_text(lookup), "server alone " + ms_text(server),
                  "+" + ms_text(extra) if extra is not None else "-", "<= server + 20 ms",
                  extra is not None and extra <= 20.0)


def editor_rows(table, r):
    for name in sorted(r):
        m = re.match(r"(BM_\w+)/(\d+)", name)
        if m:
            table.add("editor %s @%s" % (m.group(1)[3:], "1M" if m.group(2) == "1000000" else
                                         "%dk" % (int(m.group(2)) // 1000)), ms_text(r[name]), "-", "-", "-", None)


def stationview_rows(table, r):
    for name, label in (("BM_OpenToPageShown_First", "station view menu to page shown, first"),
                        ("BM_OpenToPageShown_Again", "station view menu to page shown, again")):
        table.add(label, ms_text(find(r, name)), "-", "-", "-", None)
    capture, grab = find(r, "BM_CaptureView"), find(r, "BM_PlainWidgetGrab")
    table.add("station view capture 800x600", ms_text(capture), "plain widget grab " + ms_text(grab),
              "-", "-", None)


def startup_rows(table, build):
    cmd = [sys.executable, os.path.join(HERE, "startup_bench.py"), build]
    if not os.environ.get("DISPLAY"):
        if not shutil.which("xvfb-run"):
            return False
        cmd = ["xvfb-run", "-a", "-s", "-screen 0 1280x1024x24"] + cmd
    log("running " + " ".join(cmd))
    done = subprocess.run(cmd, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    if done.returncode != 0:
        log(done.stderr[-2000:])
        return False
    found = False
    for line in done.stdout.splitlines():
        m = re.match(r"(start-up to window shown|idle memory \(Pss\))\s+([\d.]+) (ms|MB)\s+([\d.]+) (ms|MB)\s+([\d.]+)x", line)
        if m:
            found = True
            ratio = float(m.group(6))
            table.add(m.group(1), "%s %s" % (m.group(2), m.group(3)), "empty Qt window %s %s" % (m.group(4), m.group(5)),
                      "%.2fx" % ratio, "<= 1.5x", ratio <= 1.5)
    return found


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", help="the build folder, e.g. build")
    parser.add_argument("--only", default="calldb,decode,mainwindow,editor,stationview,startup",
                        help="comma-separated subset of calldb,decode,mainwindow,editor,stationview,startup")
    parser.add_argument("--json", help="also write the raw figures (ms) to this file")
    args = parser.parse_args()
    build = os.path.abspath(args.build)
    only = set(args.only.split(","))
    table, raw = Table(), {}

    programs = (("calldb", "calldb_bench", calldb_rows), ("decode", "decode_bench", decode_rows),
                ("mainwindow", "mainwindow_bench", mainwindow_rows), ("editor", "editor_bench", editor_rows),
                ("stationview", "stationview_bench", stationview_rows))
    with_wm = [os.path.join(HERE, "..", "tools", "with-wm.sh")]
    for key, program, rows in programs:
        if key not in only:
            continue
        path = os.path.join(build, "bench", program)
        if not os.path.exists(path):
            if key not in ("editor", "stationview"):
                table.failed.append(program + " (not built)")
            continue
        results = run_google_benchmark(path, wrapper=with_wm if key == "stationview" else ())
        if results is None:
            table.failed.append(program)
            continue
        raw[program] = results
        rows(table, results)
    if "startup" in only and not startup_rows(table, build):
        table.failed.append("startup_bench.py")

    table.print()
    if args.json:
        with open(args.json, "w") as f:
            json.dump(raw, f, indent=1)
    return 1 if table.failed else 0


if __name__ == "__main__":
    sys.exit(main())
