"""What the benchmarks of the window have in common: projects, a support folder, a screen, and the memory of processes."""

import json
import shutil
import subprocess
from pathlib import Path


def add_projects(root, count):
    """Side by side, each one of its own."""
    if root.exists():
        return
    for number in range(count):
        folder = root / f"project-{number}"
        (folder / "node_modules").mkdir(parents=True)
        package = {"name": folder.name, "scripts": {"dev": "vite"}, "dependencies": {"vite": "1"}}
        (folder / "package.json").write_text(json.dumps(package))


def make_support(support, root):
    """A support folder whose settings point to the projects, anew."""
    shutil.rmtree(support, ignore_errors=True)
    support.mkdir()
    settings = {"displayName": "Sam", "scanRoot": root.resolve().as_uri(), "showDockIcon": True, "pinnedProjectIDs": [],
                "onboardingCompleted": True}
    (support / "settings.json").write_text(json.dumps(settings))


def display():
    """An Xvfb on a free number; the process and the name of its display."""
    xvfb = subprocess.Popen(["Xvfb", "-displayfd", "1", "-screen", "0", "1400x1000x24", "-nolisten", "tcp"],
                            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    return xvfb, ":" + xvfb.stdout.readline().strip()


def memory(pid):
    """RSS and PSS of a process in MiB."""
    sizes = dict.fromkeys(["Rss:", "Pss:"], 0)
    for line in Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines():
        words = line.split()
        if words[0] in sizes:
            sizes[words[0]] = int(words[1]) / 1024
    return sizes["Rss:"], sizes["Pss:"]
