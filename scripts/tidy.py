#!/usr/bin/env python3
"""Runs clang-tidy over our own sources, and only over those that changed since they last passed.

A source has passed when clang-tidy had nothing to say about exactly this content of it and of every header of ours that
it includes, with this command line, these checks and this version of clang-tidy. The marks are empty files below
<build>/tidy-passed, named after the hash of all that.
"""

import argparse
import concurrent.futures
import hashlib
import json
import os
import re
import shlex
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
WITHOUT_VALUE = ("-c",)
WITH_VALUE = ("-o", "-MF", "-MT", "-MQ")


def sources(build):
    """The entries of the compilation database that are files of the tree and not generated ones."""
    entries = {}
    for entry in json.loads((build / "compile_commands.json").read_text()):
        file = Path(entry["file"]).resolve()
        if file.is_relative_to(ROOT) and not file.is_relative_to(ROOT / "build"):
            entries[file] = entry
    return entries


def compiler_arguments(entry):
    """The compiler and its flags without what names the output and the input."""
    words = shlex.split(entry["command"])
    if Path(words[0]).name == "ccache":
        words = words[1:]
    result = []
    skip = False
    for word in words:
        if skip:
            skip = False
        elif word in WITH_VALUE:
            skip = True
        elif word not in WITHOUT_VALUE and word != entry["file"]:
            result.append(word)
    return result


def fingerprint(file, entry, common):
    """The hash of what the outcome depends on; absent when the preprocessor can't list it."""
    arguments = compiler_arguments(entry)
    listing = subprocess.run([*arguments, "-MM", "-MG", str(file)], cwd=entry["directory"], capture_output=True,
                             text=True)
    if listing.returncode != 0:
        return None
    dependencies = shlex.split(listing.stdout.partition(":")[2].replace("\\\n", " "))
    digest = hashlib.sha256(common)
    digest.update("\0".join(arguments).encode())
    for name in sorted(set(dependencies)):
        path = Path(entry["directory"], name)
        digest.update(name.encode() + b"\0")
        digest.update(path.read_bytes() if path.is_file() else b"")
    return digest.hexdigest()


def check(file, entry, options, common):
    """(whether it passed, whether clang-tidy had to run, what it printed)"""
    mark = None
    print_of = fingerprint(file, entry, common)
    if print_of:
        mark = options.build / "tidy-passed" / print_of
        if mark.exists():
            mark.touch()
            return True, False, ""
    command = [options.clang_tidy, "--quiet", "--warnings-as-errors=*", "--exclude-header-filter=.*/(moc_|ui_|qrc_).*",
               "--extra-arg=-Wno-unknown-warning-option"]
    if options.fix:
        command.append("--fix")
    command += [str(file), "--", *compiler_arguments(entry)[1:]]
    run = subprocess.run(command, cwd=entry["directory"], capture_output=True, text=True)
    if run.returncode == 0:
        if mark:
            mark.touch()
        return True, True, ""
    errors = [line for line in run.stderr.splitlines() if not re.search(r"^\d+ (warning|error)", line)]
    return False, True, "\n".join([run.stdout.rstrip(), *errors]).strip()


def drop_old_marks(folder, days=30):
    for mark in folder.iterdir():
        if mark.stat().st_mtime < time.time() - days * 24 * 3600:
            mark.unlink()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--clang-tidy", default="clang-tidy-19")
    parser.add_argument("--build", type=Path, default=ROOT / "build/tidy", help="folder of compile_commands.json")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--fix", action="store_true")
    parser.add_argument("files", nargs="*", type=Path, help="only these")
    options = parser.parse_args()
    options.build = options.build.resolve()
    (options.build / "tidy-passed").mkdir(exist_ok=True)
    drop_old_marks(options.build / "tidy-passed")

    version = subprocess.run([options.clang_tidy, "--version"], capture_output=True, check=True).stdout
    common = version + (ROOT / ".clang-tidy").read_bytes() + Path(__file__).read_bytes()
    entries = sources(options.build)
    if options.files:
        only = {file.resolve() for file in options.files}
        entries = {file: entry for file, entry in entries.items() if file in only}
    if not entries:
        sys.exit("tidy: no source of ours is in the compilation database")

    failed = ran = 0
    # One at a time when mending: two runs would mend one header twice.
    with concurrent.futures.ThreadPoolExecutor(1 if options.fix else options.jobs) as pool:
        runs = {pool.submit(check, file, entry, options, common): file for file, entry in entries.items()}
        for run in concurrent.futures.as_completed(runs):
            passed, was_run, output = run.result()
            ran += was_run
            if not passed:
                failed += 1
                print(f"{runs[run].relative_to(ROOT)}:\n{output}\n", flush=True)
    print(f"tidy: {len(entries)} files, {ran} looked at, {failed} with findings")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
