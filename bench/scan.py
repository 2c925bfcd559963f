"""Times the scan of made trees beside `find` walking the same folders, alternating, with a warm cache."""

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
    return ["find", root, "-mindepth", "1", "-maxdepth", str(FIND_DEPTH), "-type", "d", "(", *names, ")", "-prune",
            "-false"]


def opened_folders(command):
    """How many directories below the work folder the command lists: each listing ends with a call that gives nothing."""
    log = work / "strace.log"
    strace = ["strace", "-f", "--seccomp-bpf", "-qq", "-e", "trace=getdents64", "-e", "signal=none", "-o", log]
    subprocess.run([*strace, *command], check=True, stdout=subprocess.DEVNULL)
    return sum(1 for line in log.read_text().splitlines() if re.search(r"getdents64.* = 0$", line))


def opened_by_both(root):
    if not shutil.which("strace"):
        return "not counted"
    scanned, found = (opened_folders(command(root)) for command in (scan_command, find_command))
    if scanned != found:
        sys.exit(f"bench: the scan listed {scanned} folders and find {found}: the comparison is not a fair one")
    return f"{scanned:,} / {found:,}"


def timed_scan(tree, root):
    result = run(*scan_command(root), keep_output=True)
    projects, inside = result.output.split()
    if int(projects) != tree.projects:
        sys.exit(f"bench: {projects} projects were found in the tree of {tree.name}")
    return result, float(inside)


def main():
    roots = {tree.name: root_of(tree) for tree in TREES}
    subjects = {}
    for tree in TREES:
        root = roots[tree.name]
        find = find_command(root)
        subjects[tree.name, "scan"] = lambda tree=tree, root=root: timed_scan(tree, root)
        subjects[tree.name, "find"] = lambda find=find: (run(*find), None)
    results = alternate(ROUNDS, subjects)

    rows = []
    for name, root in roots.items():
        scans, finds = results[name, "scan"], results[name, "find"]
        whole, found = ([one.milliseconds for one, _ in runs] for runs in (scans, finds))
        rows.append([
            name,
            opened_by_both(root),
            spread([inside for _, inside in scans]),
            spread(whole),
            spread(found),
            f"{median(whole) / median(found):.2f}",
            " / ".join(f"{median(one.cpu_milliseconds for one, _ in runs):.0f}" for runs in (scans, finds)) + " ms",
        ])
    single, double = (results[tree.name, "scan"] for tree in TREES[:2])
    longer = median(inside for _, inside in double) / median(inside for _, inside in single)
    busier = median(one.cpu_milliseconds for one, _ in double) / median(one.cpu_milliseconds for one, _ in single)
    print_table(["Tree", "Folders listed, scan / `find`", "Scan", "Scan as a process", "`find`", "Process / `find`",
                 "CPU, scan / `find`"], rows)
    print()
    print(f"Medians of {ROUNDS} rounds, smallest and largest in brackets. \"Scan\" is timed inside the program, \"as a "
          "process\" includes its start and its end, as the time of `find` does. "
          f"Twice the folders take {longer:.2f} times as long and {busier:.2f} times the CPU.\n\n"
          f"`find` prints nothing, prunes hidden folders and the skipped names, and goes {FIND_DEPTH} levels deep, because "
          "a scan lists the folders of the first four. The folders that each listed are counted with `strace`.")


main()
