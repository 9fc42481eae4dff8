#!/usr/bin/env python3
"""Start-up time and idle memory of the program beside an empty Qt Widgets window.

Both are started the same way on the same X server: for the time, until the window is on the
screen (PX_QUIT_WHEN_SHOWN makes them say so on standard output, then end), median of --runs runs each, taken in turns; for the
memory, the proportional set size (Pss) two seconds after start, median of a few runs.
The program runs on a prepared data folder, settings and stand-in Pictaro folder in a
temporary directory; its call-book hosts point at a closed local port, so nothing leaves the
machine. Prints one line per figure: name, value, peer, ratio, goal.
usage: startup_bench.py BUILD_DIR [--runs N]
"""
import argparse
import os
import shutil
import socket
import statistics
import subprocess
import sys
import tempfile
import time


def prepare(build, root):
    data = os.path.join(root, "data")
    config = os.path.join(root, "config")
    pictaro = os.path.join(root, "Pictaro")
    os.makedirs(config)
    os.makedirs(pictaro)
    shutil.copytree(os.path.join(build, "share", "Norvane"), os.path.join(data, "Norvane"))
    with open(os.path.join(pictaro, "app.cfg"), "w", newline="\r\n") as f:
        f.write("PA3XYZ\n" + "0\n" * 59)
    open(os.path.join(pictaro, "Pictaro.exe"), "w").write("stand-in")
    with socket.socket() as s:  # a port that nothing listens on
        s.bind(("127.0.0.1", 0))
        closed = "http://127.0.0.1:%d" % s.getsockname()[1]
    with open(os.path.join(config, "PX Callsigns.conf"), "w") as f:
        f.write("[Pictaro]\nInstall=%s/\n\n[Hosts]\n" % pictaro)
        for key in ("eHam", "QRZ", "QRZCQ", "Callook", "HamCall", "Pictures"):
            f.write("%s=%s\n" % (key, closed))
    env = dict(os.environ, XDG_DATA_HOME=data, XDG_CONFIG_HOME=config, HOME=root)
    return env


def time_to_shown(cmd, env):
    """From the start to the program's "shown" line; its ending is not counted."""
    start = time.perf_counter()
    p = subprocess.Popen(cmd, env=dict(env, PX_QUIT_WHEN_SHOWN="1"), stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    line = p.stdout.readline()
    elapsed = (time.perf_counter() - start) * 1000
    p.stdout.close()
    if p.wait(60) != 0 or line != b"shown\n":
        raise RuntimeError("%s did not say it was shown" % cmd[0])
    return elapsed


def idle_pss(cmd, env):
    p = subprocess.Popen(cmd, env=env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        time.sleep(2)
        with open("/proc/%d/smaps_rollup" % p.pid) as f:
            for line in f:
                if line.startswith("Pss:"):
                    return int(line.split()[1]) / 1024
    finally:
        p.kill()
        p.wait()
    raise RuntimeError("no Pss")


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("build")
    ap.add_argument("--runs", type=int, default=15)
    args = ap.parse_args()
    build = os.path.abspath(args.build)
    program = [os.path.join(build, "pxcallsigns")]
    empty = [os.path.join(build, "bench", "empty_window")]
    with tempfile.TemporaryDirectory() as root:
        env = prepare(build, root)
        ours, peer = [], []
        for _ in range(args.runs):
            ours.append(time_to_shown(program, env))
            peer.append(time_to_shown(empty, env))
        t_ours, t_peer = statistics.median(ours), statistics.median(peer)
        m_ours = statistics.median(idle_pss(program, env) for _ in range(3))
        m_peer = statistics.median(idle_pss(empty, env) for _ in range(3))
    print("%-28s %10s %10s %7s  %s" % ("figure", "value", "peer", "ratio", "goal"))
    print("%-28s %7.1f ms %7.1f ms %6.2fx  <= 1.5x" % ("start-up to window shown", t_ours, t_peer, t_ours / t_peer))
    print("%-28s %7.1f MB %7.1f MB %6.2fx  <= 1.5x" % ("idle memory (Pss)", m_ours, m_peer, m_ours / m_peer))


if __name__ == "__main__":
    sys.exit(main())
