"""Times the start of the window with 200 projects beside an empty Qt Quick window, alternating, on a screen of Xvfb.

From the start of the process, seen from outside, to the first frame that was handed to the screen ("frame") and to the first
with the projects in it ("content"); then memory and wake-ups of both while nothing happens.
"""

import os
import subprocess
import sys
import time
from dataclasses import dataclass
from pathlib import Path

from desktop import add_projects, display, make_support, memory
from rounds import alternate, median, need, print_table, spread

ROUNDS = 15
PROJECTS = 200
SETTLE_SECONDS = 5
IDLE_SECONDS = 10
# Left to itself the launcher takes the software renderer where there is no graphics device, and OpenGL elsewhere.
BACKENDS = {"as it comes": {}, "software": {"QT_QUICK_BACKEND": "software"}, "OpenGL": {"QSG_RHI_BACKEND": "opengl"}}

build = Path(need("ORV_BENCH_BUILD"))
work = Path(need("ORV_BENCH_WORK"))
programs = {"empty window": build / "bench" / "orv-bench-start-empty", "OrvLauncher": build / "OrvLauncher" / "orvlauncher"}


def times(program, environment):
    """Milliseconds until each word that the program says."""
    start = time.perf_counter()
    process = subprocess.Popen([program], env=environment | {"ORV_BENCH_FIRST_FRAME": "1"}, stdout=subprocess.PIPE, text=True)
    found = {line.strip(): (time.perf_counter() - start) * 1e3 for line in process.stdout}
    if process.wait() != 0 or "frame" not in found:
        sys.exit(f"bench: {program} ended with {process.returncode} and drew no frame")
    return found


@dataclass
class Idle:
    rss_mib: float
    pss_mib: float
    wakeups: int
    cpu_milliseconds: float


def voluntary_switches(pid):
    total = 0
    for task in Path(f"/proc/{pid}/task").iterdir():
        for line in (task / "status").read_text().splitlines():
            if line.startswith("voluntary_ctxt_switches:"):
                total += int(line.split()[1])
    return total


def cpu_ticks(pid):
    fields = Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    return int(fields[11]) + int(fields[12])


def idle(program, environment):
    """What a process costs after its start has settled."""
    process = subprocess.Popen([program], env=environment, stdout=subprocess.DEVNULL)
    try:
        time.sleep(SETTLE_SECONDS)
        before, ticks = voluntary_switches(process.pid), cpu_ticks(process.pid)
        time.sleep(IDLE_SECONDS)
        after, later = voluntary_switches(process.pid), cpu_ticks(process.pid)
        return Idle(*memory(process.pid), after - before, (later - ticks) * 1000 / os.sysconf("SC_CLK_TCK"))
    finally:
        process.terminate()
        process.wait()


def main():
    root, support = work / f"start-projects-{PROJECTS}", work / "start-support"
    add_projects(root, PROJECTS)
    make_support(support, root)
    xvfb, name = display()
    try:
        rows = []
        for backend, extra in BACKENDS.items():
            environment = os.environ | {"DISPLAY": name, "ORV_SUPPORT_DIR": str(support)} | extra
            runs = alternate(ROUNDS, {key: lambda path=path: times(path, environment) for key, path in programs.items()})
            empty = median(run["frame"] for run in runs["empty window"])
            for key, path in programs.items():
                frames = [run["frame"] for run in runs[key]]
                contents = [run["content"] for run in runs[key] if "content" in run]
                rest = idle(path, environment)
                rows.append([backend, key, spread(frames), spread(contents) if contents else "",
                             f"{median(frames) - empty:+.0f} ms", f"{median(contents) - empty:+.0f} ms" if contents else "",
                             f"{rest.rss_mib:.0f} / {rest.pss_mib:.0f} MiB", rest.wakeups, f"{rest.cpu_milliseconds:.0f} ms"])
        print_table(["Drawing", "Program", "First frame", "First frame with the projects", "Beyond the empty window",
                     "With the projects", "RSS / PSS", f"Wake-ups in {IDLE_SECONDS} s", f"CPU in {IDLE_SECONDS} s"], rows)
        print()
        print(f"Medians of {ROUNDS} rounds, smallest and largest in brackets; {PROJECTS} projects, on Xvfb. There is no graphics "
              "card: OpenGL is computed by llvmpipe, which costs both programs most of their memory.")
    finally:
        xvfb.terminate()
        xvfb.wait()


main()
