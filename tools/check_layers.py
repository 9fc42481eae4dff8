#!/usr/bin/env python3
"""Checks that the layers link only what they may.

Configures the source tree afresh in a temporary folder, with the options of the given build
folder, and asks CMake for its link graph (--graphviz). Then:
  - every library px_* links directly only what the table below allows it (PUBLIC and PRIVATE
    alike: a static library's PRIVATE links end up in whatever links it);
  - every px_* library in the graph is in the table, so that a new layer cannot go unchecked;
  - the libraries and executables below the windows (the core, lookup and network tests, the
    fuzz targets, the command-line-only program of the sanitizer build) reach no Widgets, Gui,
    X11 or ALSA, however indirectly;
  - every quoted #include in src/ names its folder ("folder/file.h") and has no "..", so that no
    file reaches a header past the include roots that CMakeLists.txt gives each library.
Ends with 0 when all holds, 1 (and says why) otherwise.

    tools/check_layers.py BUILD_DIR
"""
import pathlib
import re
import subprocess
import sys
import tempfile

QT_CORE = "Qt6::Core"

# What each library may link directly. "*" : anything.
ALLOWED = {
    "px_common": {QT_CORE},
    "px_geo": {QT_CORE, "px_common"},
    "px_calldb": {QT_CORE, "px_common"},
    "px_maps": {QT_CORE, "px_common", "px_geo"},
    "px_lookup": {QT_CORE, "Qt6::Network", "PkgConfig::GUMBO", "px_common"},
    "px_system": {QT_CORE, "psapi", "shell32"},
    "px_platform": {QT_CORE, "px_system", "X11::X11", "X11::Xtst", "ALSA::ALSA", "user32"},
    "px_appcore": {QT_CORE, "px_common", "px_geo", "px_calldb", "px_lookup", "px_system"},
    "px_pictures": {QT_CORE, "Qt6::Gui", "px_common"},
    "px_cli": {QT_CORE, "px_common", "px_geo", "px_calldb", "px_maps", "px_lookup", "px_appcore", "px_system",
               "px_pictures"},
    "px_windows": {"*"},
}

# What the window-free targets must not reach through any chain of links.
FORBIDDEN = re.compile(r"^(Qt6::Widgets|Qt6::Gui|X11::.*|ALSA::.*|px_windows|px_platform)$|libX11|libasound")
# Qt Gui is reached only through the picture library, which uses it for images, never a window.
GUI = "Qt6::Gui"
GUI_THROUGH = "px_pictures"

# Targets that must stay window-free; those absent from a build (the fuzz targets outside the
# sanitizer build, the windows in it) are skipped, but the core suites must be there.
WINDOW_FREE_REQUIRED = ["core_tests", "lookup_tests", "network_tests"]
WINDOW_FREE_PATTERN = re.compile(r"^(fuzz_.*|px_(common|geo|calldb|maps|lookup|system|appcore|cli|pictures))$")

# Build edges that are no link: the moc and rcc tools of AUTOMOC/AUTORCC.
NOT_LINKS = {"Qt6::moc", "Qt6::rcc", "Qt6::uic"}

CACHE_OPTIONS = ["CMAKE_BUILD_TYPE", "CMAKE_C_COMPILER", "CMAKE_CXX_COMPILER", "PX_SANITIZE", "PX_FUZZ",
                 "PX_BUILD_TESTS", "PX_BUILD_BENCH", "PX_WITH_WEBENGINE"]


def cache_options(build):
    values = {}
    for line in (build / "CMakeCache.txt").read_text().splitlines():
        m = re.match(r"^([A-Za-z_0-9]+):[A-Z]+=(.*)$", line)
        if m and m.group(1) in CACHE_OPTIONS:
            values[m.group(1)] = m.group(2)
    return [f"-D{k}={v}" for k, v in values.items()]


def link_graph(source, build):
    """{target: set of targets it links directly}, from a fresh configure with the build's options."""
    with tempfile.TemporaryDirectory(prefix="check_layers-") as tmp:
        dot = pathlib.Path(tmp) / "layers.dot"
        cmd = ["cmake", "-S", str(source), "-B", str(pathlib.Path(tmp) / "build"), "-G", "Ninja",
               f"--graphviz={dot}"] + cache_options(build)
        run = subprocess.run(cmd, capture_output=True, text=True)
        if run.returncode != 0 or not dot.exists():
            sys.exit(f"check_layers: cmake failed:\n{run.stdout}{run.stderr}")
        text = dot.read_text()
    nodes = re.findall(r'^\s*"(node\d+)" \[ label = "([^"]*)", shape = (\w+)', text, re.M)
    labels = {node: label for node, label, _ in nodes}
    # An edge to an executable is an order of building (add_dependencies), never a link.
    executables = {node for node, _, shape in nodes if shape == "egg"}
    graph = {}
    for a, b in re.findall(r'^\s*"(node\d+)" -> "(node\d+)"', text, re.M):
        src, dst = labels[a], labels[b]
        graph.setdefault(src, set())
        if b in executables or src == dst or dst in NOT_LINKS:
            continue
        graph.setdefault(dst, set())
        graph[src].add(dst)
    return graph


def reach(graph, start):
    seen, todo, path = set(), [start], {start: [start]}
    while todo:
        node = todo.pop()
        for nxt in sorted(graph.get(node, ())):
            if nxt not in seen:
                seen.add(nxt)
                path[nxt] = path[node] + [nxt]
                todo.append(nxt)
    return seen, path


def check_includes(source):
    problems = []
    for f in sorted((source / "src").rglob("*")):
        if f.suffix not in (".cpp", ".h"):
            continue
        for n, line in enumerate(f.read_text(errors="replace").splitlines(), 1):
            m = re.match(r'\s*#\s*include\s*"([^"]*)"', line)
            if m and ("/" not in m.group(1) or ".." in m.group(1).split("/")):
                problems.append(f"{f.relative_to(source)}:{n}: #include \"{m.group(1)}\" must be \"folder/file.h\"")
    return problems


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: check_layers.py BUILD_DIR")
    build = pathlib.Path(sys.argv[1]).resolve()
    source = pathlib.Path(__file__).resolve().parent.parent
    graph = link_graph(source, build)
    problems = []

    # The objects of a library's Qt resources (qt_add_resources) belong to that library.
    layers = [t for t in graph if t.startswith("px_") and not re.search(r"_resources_\d+$", t)]
    for target in sorted(layers):
        if target not in ALLOWED:
            problems.append(f"{target}: a library that is not in the table of tools/check_layers.py")
            continue
        if "*" in ALLOWED[target]:
            continue
        for dep in sorted(graph[target] - ALLOWED[target]):
            problems.append(f"{target} links {dep}; it may link only {', '.join(sorted(ALLOWED[target]))}")
    for target in ALLOWED:
        if target not in graph and target not in ("px_windows", "px_platform"):
            problems.append(f"{target}: not in the link graph")

    window_free = [t for t in graph if WINDOW_FREE_PATTERN.match(t)]
    for t in WINDOW_FREE_REQUIRED:
        if t in graph:
            window_free.append(t)
        else:
            problems.append(f"{t}: not in the link graph")
    if "px_windows" not in graph and "pxcallsigns" in graph:
        window_free.append("pxcallsigns")  # the command line alone (sanitizer build)
    for t in sorted(set(window_free)):
        seen, path = reach(graph, t)
        for bad in sorted(n for n in seen if FORBIDDEN.search(n) and n != GUI):
            problems.append(f"{t} reaches {bad}: {' -> '.join(path[bad])}")
        if t != GUI_THROUGH:
            without = {k: v - {GUI_THROUGH} for k, v in graph.items() if k != GUI_THROUGH}
            seen, path = reach(without, t)
            if GUI in seen:
                problems.append(f"{t} reaches {GUI} other than through {GUI_THROUGH}: {' -> '.join(path[GUI])}")

    problems += check_includes(source)
    if problems:
        print("check_layers: the layering is broken:")
        for p in problems:
            print("  " + p)
        return 1
    print(f"check_layers: {len(layers)} libraries and "
          f"{len(set(window_free))} window-free targets as allowed")
    return 0


if __name__ == "__main__":
    sys.exit(main())
