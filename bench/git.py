"""Times badges beside `git status` run by hand, and the parsers of a status and a log beside git's own time for them."""

import os
import shutil
import subprocess
import sys
from pathlib import Path

from rounds import alternate, median, need, print_table, run, spread

ROUNDS = 7
REPOSITORIES, FILES, CHANGED = 100, 500, 5
CHANGES = COMMITS = 100_000

bench_git = Path(need("ORV_BENCH_BUILD")) / "bench" / "orv-bench-git"
work = Path(need("ORV_BENCH_WORK"))
STATUS = ["status", "--porcelain=v2", "--branch", "-z", "--untracked-files=all"]


def git(folder, *words, data=None):
    subprocess.run(["/usr/bin/git", *words], cwd=folder, input=data, check=True, stdout=subprocess.DEVNULL)


def made(name, make):
    """The folder, made when it is not there yet."""
    folder = work / name
    if not folder.exists():
        print(f"bench: making {name}", file=sys.stderr)
        unfinished = folder.with_suffix(".new")
        shutil.rmtree(unfinished, ignore_errors=True)
        unfinished.mkdir(parents=True)
        make(unfinished)
        unfinished.rename(folder)
    return folder


def fill(folder, count):
    for i in range(count):
        file = folder / f"d{i // 100}" / f"file{i}.txt"
        file.parent.mkdir(exist_ok=True)
        file.write_text(f"{i}\n" * 20)


def make_repositories(folder):
    for i in range(REPOSITORIES):
        repository = folder / f"r{i}"
        repository.mkdir()
        git(repository, "init", "-q")
        fill(repository, FILES)
        git(repository, "add", "-A")
        git(repository, "-c", "user.name=A", "-c", "user.email=a@b", "commit", "-q", "-m", "x")
        for j in range(CHANGED):
            (repository / "d0" / f"file{j}.txt").write_text("changed\n")


def make_changes(folder):
    git(folder, "init", "-q")
    fill(folder, CHANGES)


def make_history(folder):
    git(folder, "init", "-q")
    lines = []
    for i in range(COMMITS):
        message = f"Change number {i} of what a history of ordinary length has\n"
        lines.append(f"commit refs/heads/main\ncommitter Ada Example <ada@example.org> {1_600_000_000 + i} +0000\n"
                     f"data {len(message)}\n{message}\n")
    git(folder, "fast-import", "--quiet", data="".join(lines).encode())
    git(folder, "symbolic-ref", "HEAD", "refs/heads/main")


def inside(verb, folder, expected):
    """What the program says beside how many there were."""
    output = run(bench_git, verb, folder, keep_output=True).output.split()
    if int(output[0]) != expected:
        sys.exit(f"bench: {verb}: {output[0]} instead of {expected}")
    return [float(word) for word in output[1:]]


def main():
    os.environ.update(GIT_CONFIG_NOSYSTEM="1", GIT_CONFIG_GLOBAL=os.devnull, GIT_OPTIONAL_LOCKS="0")
    repositories = made("git-repositories-1", make_repositories)
    changes = made("git-changes-1", make_changes)
    history = made("git-history-1", make_history)
    loop = "for r in r*; do /usr/bin/git -C $r " + " ".join(STATUS) + "; done"
    parallel = "ls -d r* | xargs -P2 -I{} /usr/bin/git -C {} " + " ".join(STATUS)
    results = alternate(ROUNDS, {
        "badges": lambda: inside("badges", repositories, REPOSITORIES),
        "loop": lambda: run("/bin/sh", "-c", f"cd '{repositories}' && {loop}").milliseconds,
        "xargs": lambda: run("/bin/sh", "-c", f"cd '{repositories}' && {parallel}").milliseconds,
        "status": lambda: inside("status", changes, CHANGES),
        "log": lambda: inside("log", history, COMMITS),
    })
    found = {round[0] for round in results["badges"]}
    if found != {REPOSITORIES * CHANGED}:
        sys.exit(f"bench: the badges count {found} changes")
    badges = [round[1] for round in results["badges"]]
    xargs = median(results["xargs"])
    print_table(["Status of 100 repositories of 500 files each", "Time", "Beside `xargs -P2`"], [
        ["badges", spread(badges), f"{median(badges) / xargs:.2f}"],
        ["`git status` two at a time by `xargs -P2`", spread(results["xargs"]), "1.00"],
        ["`git status` one after another", spread(results["loop"]), f"{median(results['loop']) / xargs:.2f}"],
    ])
    stalls = [round[2] for round in results["badges"]]
    print(f"\nThe longest stall of the event loop meanwhile: {median(stalls):.1f} ms (at most {max(stalls):.1f}).\n")
    rows = []
    for name, what in (("status", "100,000 changes"), ("log", "100,000 commits")):
        own, parsed = ([round[column] for round in results[name]] for column in (0, 1))
        rows.append([what, spread(own), spread(parsed), f"{median(parsed) / median(own):.3f}"])
    print_table(["Parsed", "CPU of git", "CPU of the parser", "Parser / git"], rows)
    print(f"\nMedians of {ROUNDS} rounds, smallest and largest in brackets.")


main()
