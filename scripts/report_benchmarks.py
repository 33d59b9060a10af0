#!/usr/bin/env python3
"""Runs the benchmarks and prints each figure beside its reference from the same run.

Usage: report_benchmarks.py BINARY_FOLDER [FILTER]
Needs an X display for the starts. Times are medians; the exit code says nothing about them.
"""

import json
import os
import shutil
import statistics
import subprocess
import sys
import tempfile

REPETITIONS = 7
STARTS = 9

# name in the benchmarks: (what, reference, how many times as long it may take)
LIMITS = {
    "decode": ("decode a 50 MB document of 2,000 styles", "simdjson's parse to its DOM", 2.0),
    "encode": ("encode it whole", "memcpy into fresh memory", 3.0),
    "save": ("save after one toggle in it", "write, fsync and rename of the same bytes", 1.3),
    "parseUserCSS": ("parseUserCSS on a 600 KB file", "memchr of an absent byte over it", 30.0),
    "sectionsFromCSS": ("sectionsFromCSS on it", "memchr of an absent byte over it", 30.0),
    "compileLess": ("compile a small Less style", "the same, scripts loaded beforehand", 1.5),
    "compileStylus": ("compile a small Stylus style", "the same, scripts loaded beforehand", 1.5),
    "editorText": ("a further editor until 200 KB are in it", "an empty page in the same engine", 2.5),
    "openStyleEditor": ("open a Style Editor, 200 KB of Less", "the bare code editor with them", 1.3),
    "saveStyle": ("save in it until stored, 200 KB of Less", "compile and write them alone", 1.3),
    "mergeFirst": ("merge at the start of a sync, 10,000 a side", "decode one of the documents", 1.0),
    "mergeChange": ("merge what another machine saved, the same", "decode one of the documents", 1.0),
    "syncSqlite": ("a save until another window's row, 10 MB, SQLite", "send and fetch the document alone", 8.0),
    "syncPostgres": ("the same by PostgreSQL", "send and fetch the document alone", 4.0),
    "updateAll": ("update 200 styles, 20 ms each", "download them one after another", 0.25),
    "buildList": ("build the list's rows, 10,000 styles", "decode their document of 50 MB", 1.0),
}
# name in the benchmarks: (what, how many milliseconds it may take)
ABSOLUTE_LIMITS = {
    "callersShare": ("the calling thread in that save", 1.0),
    "listToggle": ("toggle one of 10,000 in the list", 2.0),
    "listRename": ("rename one of them", 2.0),
    "listMove": ("move one past all others", 2.0),
    "listFilter": ("filter them, per key press", 10.0),
    "styleEditorKey": ("a key press in a Style Editor, 200 KB", 5.0),
    "updatePause": ("the longest pause while 200 are updated", 16.0),
}
MILLISECONDS = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}


def measure(program, chosen):
    """Median milliseconds by benchmark name."""
    command = [
        program,
        f"--benchmark_filter={chosen}",
        f"--benchmark_repetitions={REPETITIONS}",
        "--benchmark_enable_random_interleaving=true",
        "--benchmark_format=json",
    ]
    output = subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout
    times = {}
    for run in json.loads(output)["benchmarks"] if output else []:
        if run.get("aggregate_name", "") != "median":
            continue
        parts = run["run_name"].split("/")  # the name, then how it was run
        name = "/".join(part for part in parts if ":" not in part and part not in ("real_time", "manual_time"))
        times[name] = run["real_time"] * MILLISECONDS[run["time_unit"]]
    return times


def start_time(binaries, program):
    times = []
    for _ in range(STARTS):
        command = [os.path.join(binaries, "tessaril_bench_start"), os.path.join(binaries, program)]
        times.append(float(subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout))
    return statistics.median(times)


def measure_starts(binaries):
    """Median milliseconds to the first picture: the application's, an empty window's."""
    home = tempfile.mkdtemp()
    try:
        for name in ("DATA", "CONFIG", "RUNTIME"):
            folder = os.path.join(home, name)
            os.mkdir(folder, 0o700)
            os.environ["XDG_RUNTIME_DIR" if name == "RUNTIME" else f"XDG_{name}_HOME"] = folder
        os.environ["HOME"] = home
        container = os.path.join(home, "DATA", "7RX2KD84QM.group.com.tessaril.shared")
        os.mkdir(container, 0o700)
        document = os.path.join(container, "styledb.sdb")
        subprocess.run([os.path.join(binaries, "tessaril_bench_document"), document], check=True)
        os.mkdir(os.path.join(home, "CONFIG", "tessaril"))
        with open(os.path.join(home, "CONFIG", "tessaril", "tessaril.conf"), "w") as preferences:
            preferences.write("[General]\nFetchSiteIcons=false\n")  # the sites do not exist
        return start_time(binaries, "tessaril"), start_time(binaries, "tessaril_bench_empty_window")
    finally:
        shutil.rmtree(home)


def row(what, reference, figure, base, limit):
    verdict = "reached" if figure <= base * limit else "MISSED"
    print(
        f"{what:42} {figure:10.3f} ms   {reference:42} {base:10.3f} ms   "
        f"{figure / base:6.2f} x, to reach {limit:4.2f} x: {verdict}"
    )


def main():
    binaries = sys.argv[1]
    chosen = sys.argv[2] if len(sys.argv) > 2 else "."
    times = measure(os.path.join(binaries, "tessaril_bench"), chosen)
    times |= measure(os.path.join(binaries, "tessaril_bench_editor"), chosen)
    times |= measure(os.path.join(binaries, "tessaril_bench_style_editor"), chosen)
    times |= measure(os.path.join(binaries, "tessaril_bench_list"), chosen)
    times |= measure(os.path.join(binaries, "tessaril_bench_update"), chosen)
    times |= measure(os.path.join(binaries, "tessaril_bench_sync"), chosen)
    for name, (what, reference, limit) in LIMITS.items():
        if f"{name}/figure" in times and f"{name}/reference" in times:
            row(what, reference, times[f"{name}/figure"], times[f"{name}/reference"], limit)
    for name, (what, limit) in ABSOLUTE_LIMITS.items():
        figure = times.get(f"{name}/figure")
        if figure is not None:
            verdict = "reached" if figure < limit else "MISSED"
            print(f"{what:42} {figure:10.3f} ms   to reach {limit:.0f} ms: {verdict}")
    for name in sorted(times):
        if not name.endswith(("/figure", "/reference")):
            print(f"{name:42} {times[name]:10.3f} ms   for comparison")
    if chosen == ".":
        application, empty = measure_starts(binaries)
        allowed = 2 * empty + times["decode/figure"]
        verdict = "reached" if application <= allowed else "MISSED"
        print(
            f"{'start to a listed window, 2,000 styles':42} {application:10.3f} ms   "
            f"{'start of an empty Qt window':42} {empty:10.3f} ms   "
            f"to reach 2 x and the decode, {allowed:.0f} ms: {verdict}"
        )


main()
