#!/usr/bin/env python3
"""Compiles our headers alone, with the flags of a source of their folder, and prints what does not stand alone.

A header that its own source includes before anything else is left out: the build has compiled it alone already, behind
nothing but the precompiled header. The others are compiled without that one.
"""

import argparse
import concurrent.futures
import os
import re
import subprocess
import sys
from pathlib import Path

from tidy import ROOT, compiler_arguments, sources


def is_first_in_its_source(header):
    source = header.with_suffix(".cpp")
    first = re.search(r'^#include [<"](.*)[>"]', source.read_text(), re.MULTILINE) if source.exists() else None
    return first is not None and Path(first[1]).name == header.name


def without_precompiled(words):
    at = next((place for place, word in enumerate(words) if word.endswith("cmake_pch.hxx")), None)
    return words if at is None else words[:at - 1] + words[at + 1:]


def check(header, entry):
    command = [*without_precompiled(compiler_arguments(entry)), "-fsyntax-only", "-x", "c++", "-include", str(header), os.devnull]
    run = subprocess.run(command, cwd=entry["directory"], capture_output=True, text=True)
    return run.returncode == 0, run.stderr


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", type=Path, required=True, help="folder of compile_commands.json")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    options = parser.parse_args()

    folders = {}
    for file, entry in sources(options.build.resolve()).items():
        folders.setdefault(file.parent, entry)
    headers = [header for folder in folders for header in folder.glob("*.h") if not is_first_in_its_source(header)]
    if not headers:
        sys.exit("headers: there is none beside the sources of the compilation database")
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        runs = {pool.submit(check, header, folders[header.parent]): header for header in headers}
        for run in concurrent.futures.as_completed(runs):
            stands_alone, output = run.result()
            if not stands_alone:
                failed += 1
                print(f"{runs[run].relative_to(ROOT)}:\n{output}", flush=True)
    print(f"headers: {len(headers)} compiled alone, of which {failed} do not stand alone")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
