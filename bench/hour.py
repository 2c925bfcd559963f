"""The memory of the window with 200 projects and five services that print as many lines as in an hour, beside an empty Qt
Quick window and a Chromium window with one page, on a screen of Xvfb.

The services print them faster than in an hour: 2,000 lines a second each.
"""

import json
import os
import subprocess
import sys
import time
from dataclasses import dataclass
from pathlib import Path

from desktop import add_projects, display, make_support, memory
from rounds import need, print_table

PROJECTS = 200
SERVICES = 5
LINES_AT_ONCE = 200  # ten times a second
MINUTES = int(os.environ.get("ORV_BENCH_HOUR_MINUTES", "6"))
SETTLE_SECONDS = 10
COMMAND = "n=0; while :; do cat lines; n=$((n + 1)); echo $n >count; sleep 0.1; done"
LINE = "10:42:17.318 \033[32mINFO\033[0m request GET /api/orders/48213?page=3 \033[1m200\033[0m in 12 ms\n"
PAGE = "<!doctype html><title>Page</title><h1>One page</h1><p>" + "With a paragraph of words. " * 50

build = Path(need("ORV_BENCH_BUILD"))
work = Path(need("ORV_BENCH_WORK"))
launcher = build / "OrvLauncher" / "orvlauncher"


def prepare():
    """The folders of the services, and the support folder with what they run."""
    root, support = work / "hour-projects", work / "hour-support"
    add_projects(root, PROJECTS)
    make_support(support, root)
    loud = [root.resolve() / f"project-{number}" for number in range(SERVICES)]
    for folder in loud:
        (folder / "lines").write_text(LINE * LINES_AT_ONCE)
        (folder / "count").write_text("0")
    overrides = {f"{folder}|frontend": {"command": COMMAND} for folder in loud}
    (support / "overrides.json").write_text(json.dumps(overrides))
    return support, loud


def family(pid):
    """The process and all below it."""
    parents = {}
    for status in Path("/proc").glob("[0-9]*/stat"):
        try:
            parents[int(status.parent.name)] = int(status.read_text().rpartition(")")[2].split()[1])
        except OSError:
            pass  # it has just ended
    found = [pid]
    for parent in found:
        found += [child for child, of in parents.items() if of == parent]
    return found


@dataclass
class Sample:
    rss_mib: float
    pss_mib: float
    processes: int


def sample(pids):
    sizes = [memory(pid) for pid in pids]
    return Sample(sum(rss for rss, _ in sizes), sum(pss for _, pss in sizes), len(sizes))


def printed(loud):
    # The file is empty while it is being written.
    return sum(int((folder / "count").read_text() or 0) for folder in loud) * LINES_AT_ONCE


def start_services(loud, environment):
    for folder in loud:
        subprocess.run([launcher, f"orvlauncher://run?project={folder}"], env=environment, check=True, timeout=30)
    deadline = time.monotonic() + 60
    while any((folder / "count").read_text() in ("", "0") for folder in loud):
        if time.monotonic() > deadline:
            sys.exit("bench: not all services print")
        time.sleep(0.1)


def hour(environment, loud):
    """A row for each minute, and the last sample."""
    window = subprocess.Popen([launcher], env=environment, stdout=subprocess.DEVNULL)
    try:
        time.sleep(SETTLE_SECONDS)
        last = sample([window.pid])
        rows = [["before", 0, f"{last.rss_mib:.1f} MiB", f"{last.pss_mib:.1f} MiB"]]
        start_services(loud, environment)
        begin = time.monotonic()
        for minute in range(1, MINUTES + 1):
            time.sleep(max(0, begin + minute * 60 - time.monotonic()))
            print(f"bench: minute {minute} of {MINUTES}", file=sys.stderr)
            last = sample([window.pid])
            rows.append([minute, f"{printed(loud):,}", f"{last.rss_mib:.1f} MiB", f"{last.pss_mib:.1f} MiB"])
        return rows, last, printed(loud)
    finally:
        window.terminate()
        window.wait()


def beside(command, environment):
    """The memory of a window that was left alone, with all its processes."""
    window = subprocess.Popen(command, env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        time.sleep(SETTLE_SECONDS)
        if window.poll() is not None:
            sys.exit(f"bench: {command[0]} ended with {window.returncode}")
        return sample(family(window.pid))
    finally:
        window.terminate()
        window.wait()


def main():
    support, loud = prepare()
    page = work / "hour-page.html"
    page.write_text(PAGE)
    chromium = ["chromium", "--no-first-run", f"--user-data-dir={work / 'hour-chromium'}", f"--app={page.resolve().as_uri()}"]
    if os.geteuid() == 0:
        chromium.append("--no-sandbox")
    xvfb, name = display()
    try:
        environment = os.environ | {"DISPLAY": name, "ORV_SUPPORT_DIR": str(support)}
        rows, last, lines = hour(environment, loud)
        empty = beside([build / "bench" / "orv-bench-start-empty"], environment | {"QT_QUICK_BACKEND": "software"})
        web = beside(chromium, environment)
    finally:
        xvfb.terminate()
        xvfb.wait()
    print_table(["Minute", "Lines", "RSS", "PSS"], rows)
    print()
    print_table(["Window", "Processes", "RSS", "PSS"],
                [[title, found.processes, f"{found.rss_mib:.0f} MiB", f"{found.pss_mib:.0f} MiB"]
                 for title, found in [("OrvLauncher, at the end", last), ("empty Qt Quick window", empty),
                                      ("Chromium with one page", web)]])
    print(f"\n{PROJECTS} projects; {SERVICES} services printed {lines:,} lines in {MINUTES} minutes, as many as in an hour of "
          f"{lines / 3600:.0f} lines a second. RSS and PSS of all processes of a window added up, without the services "
          "themselves; on Xvfb, all drawn by the processor.")


main()
