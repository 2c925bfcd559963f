"""Times how long a child that prints a million lines takes until its last line is in, alternating with its peers."""

import os
import shlex
import subprocess
from dataclasses import dataclass
from pathlib import Path

from rounds import alternate, median, need, print_table, run, spread

ROUNDS = 7
LINES = 1_000_000

bench = Path(need("ORV_BENCH_BUILD")) / "bench"
peers = Path(need("ORV_BENCH_PEERS"))
lines_program = bench / "orv-bench-lines"
capture_program = bench / "orv-bench-capture"
environment = os.environ | {"PM2_HOME": str(Path(need("ORV_BENCH_WORK")) / "pm2")}
shell = subprocess.run([capture_program, "shell"], check=True, capture_output=True, text=True).stdout.strip()


@dataclass
class Taken:
    milliseconds: float
    peak_kib: int | None = None
    stall: float | None = None
    cpu_milliseconds: float | None = None


def by_manager(count, *words):
    result = run(capture_program, str(count), lines_program, str(count), *words, keep_output=True)
    taken, stall = map(float, result.output.split())
    return Taken(taken, result.peak_kib, stall, result.cpu_milliseconds)


def by_cat(count):
    line = f"{shlex.quote(str(lines_program))} {count} | cat >/dev/null"
    result = run(shell, "-lc", line)
    return Taken(result.milliseconds, cpu_milliseconds=result.cpu_milliseconds)


def by_peer(peer, count):
    script = Path(__file__).with_name("capture-peers.cjs")
    result = run("node", script, peer, str(count), lines_program, environment=environment, keep_output=True)
    # A peer may print lines of its own before.
    _, taken, peak = result.output.split("\n")[-2].split()
    return Taken(float(taken), int(peak))


SUBJECTS = {
    "process manager": by_manager,
    "process manager, port announced first": lambda count: by_manager(count, "--announce"),
    "`cat >/dev/null`": by_cat,
    "`concurrently`": lambda count: by_peer("concurrently", count),
    "`pm2`": lambda count: by_peer("pm2", count),
}


def main():
    os.makedirs(environment["PM2_HOME"], exist_ok=True)
    try:
        whole = alternate(ROUNDS, {name: lambda take=take: take(LINES) for name, take in SUBJECTS.items()})
        start = alternate(ROUNDS, {name: lambda take=take: take(1) for name, take in SUBJECTS.items()})
    finally:
        subprocess.run([peers / "pm2", "kill"], env=environment, check=False, stdout=subprocess.DEVNULL)
    times = {name: median(one.milliseconds for one in results) for name, results in whole.items()}
    cat = times["`cat >/dev/null`"]
    rows = []
    for name, results in whole.items():
        peaks = [one.peak_kib for one in results if one.peak_kib is not None]
        stalls = [one.stall for one in results if one.stall is not None]
        cpu = [one.cpu_milliseconds for one in results if one.cpu_milliseconds is not None]
        rows.append([
            name,
            spread([one.milliseconds for one in results]),
            f"{median(one.milliseconds for one in start[name]):.0f} ms",
            f"{times[name] / cat:.2f}",
            f"{median(cpu):.0f} ms" if cpu else "",
            f"{max(peaks) / 1024:.0f} MB" if peaks else "",
            f"{median(stalls):.1f} ms (at most {max(stalls):.1f})" if stalls else "",
        ])
    print_table(["Taken in by", "1,000,000 lines", "One line", "Beside `cat`", "CPU", "Peak memory", "Longest stall"], rows)
    print()
    print(f"Medians of {ROUNDS} rounds, smallest and largest in brackets; the peak is the largest of all rounds.\n\n"
          f"The process manager and `cat` run the child under `{shell} -lc`, which is in their times (\"one line\" shows how "
          "much), the others as they do by default; CPU is that of the child and all who handle its output. In the first "
          "row no line names a port, so one is looked for in every line. That the newest 5000 lines are kept, each in its "
          "place, is checked in every round.\n\n"
          "The peers are called through their own interfaces in a Node.js that has started already, pm2's daemon is up. "
          "`concurrently` writes to a stream that drops everything. pm2 writes to its log file and is done when all of it "
          "is there; its child is kept waiting at the end, because pm2 drops what is not yet written when a child ends.")


main()
