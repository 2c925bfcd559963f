"""Times the scan of made trees beside `find` walking the same folders, alternating, with a warm cache."""

import os
import re
import shutil
import subprocess
import sys
from dataclasses import dataclass
from pathlib import Path

from rounds import alternate, median, need, print_table, run, spread

ROUNDS = 9
# A scan lists no folder below the fourth level, so `find` looks at the entries of the fifth and opens none of them.
FIND_DEPTH = 5


@dataclass
class Tree:
    projects: int
    folders: int
    skipped_per_project: int

    @property
    def name(self):
        return f"{self.folders:,} folders, {self.projects:,} projects"


TREES = [Tree(200, 100_000, 240), Tree(400, 200_000, 240), Tree(2_000, 100_000, 18)]

bench_scan = Path(need("ORV_BENCH_BUILD")) / "bench" / "orv-bench-scan"
work = Path(need("ORV_BENCH_WORK"))


def root_of(tree):
    """The tree, made when it is not there yet."""
    root = work / f"tree-1-{tree.projects}-{tree.folders}-{tree.skipped_per_project}"
    if not root.exists():
        print(f"bench: making a tree of {tree.name}", file=sys.stderr)
        unfinished = root.with_suffix(".new")
        shutil.rmtree(unfinished, ignore_errors=True)
        shape = (tree.projects, tree.folders, tree.skipped_per_project)
        subprocess.run([bench_scan, "make", unfinished, *map(str, shape)], check=True)
        unfinished.rename(root)
    return root


def scan_command(root):
    return [bench_scan, "scan", root]


def find_command(root):
    """Prints nothing, which is the quickest that it can be."""
    skipped = subprocess.run([bench_scan, "skipped-names"], check=True, capture_output=True, text=True).stdout.split()
    names = ["-name", ".*"]
    for name in skipped:
        if not name.startswith("."):
            names += ["-o", "-name", name]
    return ["find", root, "-mindepth", "1", "-maxdepth", str(FIND_DEPTH), "-type", "d", "(", *names, ")", "-prune", "-false"]


def opened_folders(command):
    """How many directories below the work folder the command lists: each listing ends with a call that gives nothing."""
    log = work / "strace.log"
    subprocess.run(["strace", "-f", "-qq", "-e", "trace=getdents64", "-e", "signal=none", "-o", log, *command],
                   check=True, stdout=subprocess.DEVNULL)
    return sum(1 for line in log.read_text().splitlines() if re.search(r"getdents64.* = 0$", line))


def timed_scan(tree, root):
    result = run(*scan_command(root), keep_output=True)
    projects, inside = result.output.split()
    if int(projects) != tree.projects:
        sys.exit(f"bench: {projects} projects were found in the tree of {tree.name}")
    return result, float(inside)


def main():
    rows = []
    inside_medians = []
    for tree in TREES:
        root = root_of(tree)
        opened = [opened_folders(command(root)) if shutil.which("strace") else "?" for command in (scan_command, find_command)]
        find = find_command(root)
        results = alternate(ROUNDS, {"scan": lambda: timed_scan(tree, root), "find": lambda: run(*find)})
        whole = [result.milliseconds for result, _ in results["scan"]]
        inside = [milliseconds for _, milliseconds in results["scan"]]
        finds = [result.milliseconds for result in results["find"]]
        inside_medians.append(median(inside))
        rows.append([
            tree.name,
            " / ".join(f"{count:,}" if isinstance(count, int) else count for count in opened),
            spread(inside),
            spread(whole),
            spread(finds),
            f"{median(whole) / median(finds):.2f}",
            f"{median(r.cpu_milliseconds for r, _ in results['scan']):.0f} / "
            f"{median(r.cpu_milliseconds for r in results['find']):.0f} ms",
        ])
    print_table(["Tree", "Folders listed, scan / `find`", "Scan", "Scan as a process", "`find`", "Process / `find`",
                 "CPU, scan / `find`"], rows)
    print()
    print(f"Medians of {ROUNDS} rounds, smallest and largest in brackets. \"Scan\" is timed inside the program, \"as a process\" "
          "includes its start and its end, as the time of `find` does. "
          f"Twice the folders take {inside_medians[1] / inside_medians[0]:.2f} times as long. "
          f"`find` prints nothing, prunes hidden folders and the skipped names, and goes {FIND_DEPTH} levels deep, because a "
          "scan lists the folders of the first four. The folders that each listed are counted with `strace`.")


main()
