"""Times terminal engines on the loads of bench/term/loads.py, a process an engine, a load and a size, alternating."""

import os
import shutil
import subprocess
import sys
from pathlib import Path

from rounds import alternate, median, need, print_table, run

ROUNDS = 3
MEGABYTES = 4
LOADS = {"ascii": "ASCII", "utf8": "UTF-8", "color": "colour", "motion": "motion", "build": "build log", "images": "images"}
SIZES = ((80, 25), (200, 50))
# What an engine of 0.17 is to be exceeded by, so many times.
GOALS = {"ascii": 7.5, "utf8": 3.6, "color": 3.1, "motion": 3.0, "build": 3.2}
REGISTRY = Path("/usr/share/cargo/registry")

here = Path(__file__).resolve().parent
programs = Path(need("ORV_BENCH_BUILD")) / "bench"
work = Path(need("ORV_BENCH_WORK")) / "term"


def alacritty():
    """Alacritty's engine, built from Debian's crates; nothing where they are not installed."""
    if shutil.which("cargo") is None or not any(REGISTRY.glob("alacritty_terminal-0.17*")):
        return None
    folder = work / "alacritty"
    # Beside Cargo.toml comes a file of cargo's own.
    shutil.copytree(here / "term" / "alacritty", folder, dirs_exist_ok=True)
    subprocess.run(["cargo", "build", "--release", "--offline", "--quiet",
                    "--config", 'source.crates-io.replace-with="debian"',
                    "--config", f'source.debian.directory="{REGISTRY}"'], cwd=folder, check=True, stdout=sys.stderr)
    return folder / "target" / "release" / "orv-bench-term-alacritty"


def check_text(engines, loads):
    """Whether all engines have the same screen at the end of the plain text: whether each of them did the work."""
    for cols, rows in SIZES:
        texts = {name: run(program, "--text", str(cols), str(rows), loads / "ascii.txt", keep_output=True).output
                 for name, program in engines.items()}
        ours = texts["TermEngine"]
        for name, text in texts.items():
            if text != ours or not text.strip():
                sys.exit(f"bench: at {cols} by {rows}, {name} shows\n{text}\nbut TermEngine\n{ours}")


def main():
    loads = work / "loads"
    subprocess.run([sys.executable, here / "term" / "loads.py", loads, str(MEGABYTES)], check=True)
    engines = {
        "TermEngine": programs / "orv-bench-term",
        "Alacritty's engine 0.17": alacritty(),
        "libvterm": programs / "orv-bench-term-libvterm",
        "libtsm": programs / "orv-bench-term-libtsm",
    }
    engines = {name: program for name, program in engines.items() if program and program.exists()}
    check_text(engines, loads)

    def timed(program, load, size):
        output = run(program, str(size[0]), str(size[1]), loads / f"{load}.txt", keep_output=True).output
        return [float(line) for line in output.split()]

    subjects = {(load, size, name): lambda cell=(program, load, size): timed(*cell)
                for load in LOADS for size in SIZES for name, program in engines.items()
                if load != "images" or name == "TermEngine"}
    figures = {key: [speed for results in rounds for speed in results] for key, rounds in alternate(ROUNDS, subjects).items()}
    peer = "Alacritty's engine 0.17"
    rows = []
    for load, label in LOADS.items():
        for size in SIZES:
            cells = [figures.get((load, size, name)) for name in engines]
            row = [label, f"{size[0]}x{size[1]}", *(f"{max(c):.0f} ({median(c):.0f})" if c else "" for c in cells)]
            if peer in engines:
                theirs = figures.get((load, size, peer))
                ours = figures[load, size, "TermEngine"]
                row.append(f"{max(ours) / max(theirs):.1f} ({median(ours) / median(theirs):.1f})" if theirs else "")
                row.append(GOALS.get(load, ""))
            rows.append(row)
    beside = ["Beside Alacritty's", "Goal"] if peer in engines else []
    print_table(["Load", "Screen", *engines, *beside], rows)
    print()
    print(f"MB/s, the best of {ROUNDS} rounds of up to three and in brackets the median, of the time that the processor gave. 500 lines "
          "of history, pieces of 64 KiB. After the plain text all engines show the same screen, which is checked. libvterm "
          "leaves the history to its host, which keeps its cells here. Only TermEngine knows images.")


main()
