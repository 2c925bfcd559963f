"""What the benchmarks have in common: running a program once with what it cost, and tables."""

import os
import statistics
import sys
import time
from dataclasses import dataclass


@dataclass
class Run:
    milliseconds: float
    cpu_milliseconds: float
    peak_kib: int
    output: str


def run(*command, environment=None, keep_output=False):
    """The whole process from its start to its end; its standard output is kept or goes to /dev/null."""
    words = [os.fspath(word) for word in command]
    reader, writer = os.pipe()
    target = (os.POSIX_SPAWN_DUP2, writer, 1) if keep_output else (os.POSIX_SPAWN_OPEN, 1, "/dev/null", os.O_WRONLY, 0)
    actions = [(os.POSIX_SPAWN_OPEN, 0, "/dev/null", os.O_RDONLY, 0), target, (os.POSIX_SPAWN_CLOSE, reader)]
    start = time.perf_counter()
    pid = os.posix_spawnp(words[0], words, environment or os.environ, file_actions=actions)
    os.close(writer)
    with os.fdopen(reader, encoding="utf-8", errors="replace") as pipe:
        output = pipe.read()
    _, status, usage = os.wait4(pid, 0)
    elapsed = time.perf_counter() - start
    code = os.waitstatus_to_exitcode(status)
    if code != 0:
        sys.exit(f"bench: exit code {code} from {' '.join(words)}\n{output}")
    # Kilobytes on Linux, bytes on macOS.
    peak = usage.ru_maxrss // 1024 if sys.platform == "darwin" else usage.ru_maxrss
    return Run(elapsed * 1e3, (usage.ru_utime + usage.ru_stime) * 1e3, peak, output)


def alternate(rounds, subjects):
    """Runs every subject (name -> function) once a round, after one round that does not count; name -> its results.

    The order turns by one each round, so that none always runs after the same other one.
    """
    results = {name: [] for name in subjects}
    names = list(subjects)
    for number in range(rounds + 1):
        print(f"bench: round {number} of {rounds}", file=sys.stderr)
        for name in names:
            result = subjects[name]()
            if number > 0:
                results[name].append(result)
        names.append(names.pop(0))
    return results


def median(values):
    return statistics.median(values)


def spread(values, unit="ms"):
    """The median, with the smallest and the largest beside it."""
    return f"{median(values):.0f} {unit} ({min(values):.0f}–{max(values):.0f})"


def print_table(header, rows):
    print("| " + " | ".join(header) + " |")
    print("|" + "---|" * len(header))
    for row in rows:
        print("| " + " | ".join(str(cell) for cell in row) + " |")


def need(name):
    value = os.environ.get(name)
    if not value:
        sys.exit(f"bench: {name} is not set; please call scripts/bench")
    return value
