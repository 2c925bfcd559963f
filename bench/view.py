"""The view of a terminal on a real window, beside other terminals; see scripts/bench.

Each terminal runs the same script. Output counts as taken in when the terminal has answered a question that stands
behind it. A key is pressed by XTEST, and the window's pixels are read until they change.
"""

import ctypes
import ctypes.util
import os
import random
import shutil
import signal
import statistics
import subprocess
import sys
import tempfile
import time

build = os.environ["ORV_BENCH_BUILD"]
program = os.path.join(build, "bench", "orv-bench-view")
megabytes = int(os.environ.get("ORV_BENCH_VIEW_MB", "100"))
rounds = int(os.environ.get("ORV_BENCH_VIEW_ROUNDS", "3"))
wanted = os.environ.get("ORV_BENCH_VIEW_ONLY", "")  # names of terminals, parted by ";"
keys = 60  # with those before them they fit into the pixels that are read
grid = "124x31"

work = tempfile.mkdtemp(dir=os.environ["ORV_BENCH_WORK"])
children = []


def start(command, **options):
    child = subprocess.Popen(command, stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL, **options)
    children.append(child)
    return child


def terminals():
    """Name, command before that of the script, variables."""
    ours = [program, "run"]
    known = [
        ("OrvLauncher", ours, {"QT_QUICK_BACKEND": "software"}),
        ("OrvLauncher, OpenGL", ours, {"QT_QUICK_BACKEND": "rhi"}),
        ("xterm", ["xterm", "-fa", "DejaVu Sans Mono", "-fs", "10", "-sl", "10000", "-geometry", grid, "-e"], {}),
        ("xterm, bitmap font", ["xterm", "-sl", "10000", "-geometry", grid, "-e"], {}),
        ("st", ["st", "-g", grid, "-e"], {}),
        ("urxvt", ["urxvt", "-fn", "xft:DejaVu Sans Mono:size=10", "-sl", "10000", "-geometry", grid, "-e"], {}),
        ("kitty, OpenGL", ["kitty", "--config", "NONE", "-o", "scrollback_lines=10000", "-o", "update_check_interval=0",
                           "-o", "remember_window_size=no", "-o", "initial_window_width=124c",
                           "-o", "initial_window_height=31c"], {}),
    ]
    return [entry for entry in known
            if shutil.which(entry[1][0]) and (not wanted or entry[0] in wanted.split(";"))]


def write_loads():
    random.seed(1)
    words = "the of error warning building module src/main.cpp linking done 127.0.0.1 GET 200".split()
    piece_plain, piece_coloured = [], []
    for _ in range(20000):
        line = [random.choice(words) for _ in range(random.randint(3, 14))]
        piece_plain.append(" ".join(line) + "\n")
        piece_coloured.append(
            " ".join(f"\033[{random.choice((0, 1, 31, 32, 33, 36, 90))}m{word}\033[m" for word in line) + "\n")
    for name, piece in (("plain", piece_plain), ("coloured", piece_coloured)):
        data = "".join(piece).encode()
        with open(os.path.join(work, name), "wb") as file:
            for _ in range(megabytes * 1_000_000 // len(data) + 1):
                file.write(data)


def script(name, text):
    path = os.path.join(work, name)
    with open(path, "w") as file:
        file.write("#!/bin/bash\n" + text)
    os.chmod(path, 0o755)
    return path


def run(terminal, path, seconds=180):
    """Ends with the script."""
    _, command, variables = terminal
    child = start(command + [path], env={**os.environ, **variables}, stdout=subprocess.DEVNULL)
    try:
        child.wait(seconds)
    except subprocess.TimeoutExpired:
        child.kill()
        child.wait()
        return False
    return True


def throughput(terminal, load):
    """Megabytes a second of the best round and of the median; None where it did not end in time."""
    file = os.path.join(work, load)
    result = os.path.join(work, "time")
    speeds = []
    for _ in range(rounds):
        path = script("cat.sh", f"""
ask() {{ printf '\\033[6n'; IFS= read -rs -d R answer; }}
stty -echo; ask
begin=$(date +%s%N)
cat '{file}'; ask
end=$(date +%s%N)
echo $((end - begin)) >'{result}'
""")
        if os.path.exists(result):
            os.remove(result)
        if not run(terminal, path) or not os.path.exists(result):
            return None
        with open(result) as file_:
            speeds.append(os.path.getsize(file) / 1e6 / (int(file_.read()) / 1e9))
    return max(speeds), statistics.median(speeds)


class Screen:
    """What of Xlib and XTEST the latency needs."""

    def __init__(self):
        self.x = ctypes.CDLL(ctypes.util.find_library("X11") or "libX11.so.6")
        self.test = ctypes.CDLL(ctypes.util.find_library("Xtst") or "libXtst.so.6")
        x = self.x
        x.XOpenDisplay.restype = ctypes.c_void_p
        x.XDefaultRootWindow.restype = ctypes.c_ulong
        x.XGetImage.restype = ctypes.c_void_p
        x.XGetImage.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.c_int, ctypes.c_int, ctypes.c_uint,
                                ctypes.c_uint, ctypes.c_ulong, ctypes.c_int]
        x.XInternAtom.restype = ctypes.c_ulong
        x.XKeysymToKeycode.restype = ctypes.c_ubyte
        self.display = ctypes.c_void_p(x.XOpenDisplay(None))
        self.root = x.XDefaultRootWindow(self.display)

    def active(self):
        x = self.x
        atom = x.XInternAtom(self.display, b"_NET_ACTIVE_WINDOW", 0)
        kind, form = ctypes.c_ulong(), ctypes.c_int()
        count, rest = ctypes.c_ulong(), ctypes.c_ulong()
        data = ctypes.POINTER(ctypes.c_ulong)()
        x.XGetWindowProperty(self.display, ctypes.c_ulong(self.root), ctypes.c_ulong(atom), ctypes.c_long(0),
                             ctypes.c_long(1), 0, ctypes.c_ulong(33), ctypes.byref(kind), ctypes.byref(form),
                             ctypes.byref(count), ctypes.byref(rest), ctypes.byref(data))
        window = data[0] if count.value else 0
        if data:
            x.XFree(data)
        return window

    def pixels(self, window):
        """The first lines of a window."""
        width, height = 700, 40
        image = self.x.XGetImage(self.display, window, 0, 0, width, height, 0xFFFFFFFF, 2)
        # struct XImage: four int, then char* data
        data = ctypes.cast(image + 16, ctypes.POINTER(ctypes.c_void_p))[0]
        content = ctypes.string_at(data, width * height * 4)
        self.x.XDestroyImage(ctypes.c_void_p(image))
        return content

    def press(self, keysym):
        code = self.x.XKeysymToKeycode(self.display, ctypes.c_ulong(keysym))
        for down in (1, 0):
            self.test.XTestFakeKeyEvent(self.display, code, down, ctypes.c_ulong(0))
        self.x.XFlush(self.display)


def latency(screen, terminal):
    """Median and the time that 95 of 100 keys keep, in milliseconds."""
    path = script("keys.sh", "stty -icanon; printf '\\033[2 q\\033[?12l\\033c\\033[2 q'; exec cat >/dev/null\n")
    _, command, variables = terminal
    before = screen.active()
    child = start(command + [path], env={**os.environ, **variables}, stdout=subprocess.DEVNULL)
    times = []
    try:
        deadline = time.monotonic() + 15
        while screen.active() in (0, before) and time.monotonic() < deadline:
            time.sleep(0.1)
        window = screen.active()
        time.sleep(4)
        random.seed(2)
        # The first keys find out when the terminal is there.
        for key in range(-10, keys):
            seen = screen.pixels(window)
            begin = time.perf_counter()
            screen.press(ord("x"))
            while screen.pixels(window) == seen and time.perf_counter() - begin < 2:
                time.sleep(0.0003)  # the server has other things to do
            if key >= 0:
                times.append((time.perf_counter() - begin) * 1000)
            time.sleep(random.uniform(0.04, 0.09))
    finally:
        child.terminate()
        child.wait()
        time.sleep(0.5)
    times.sort()
    if times[len(times) // 2] > 1000:
        return None
    return statistics.median(times), times[len(times) * 95 // 100]


def ask_lines(*words, backend="software"):
    child = start([program, *words], env={**os.environ, "QT_QUICK_BACKEND": backend}, stdout=subprocess.PIPE, text=True)
    output, _ = child.communicate(timeout=180)
    return output


def ask(*words, backend="software"):
    return ask_lines(*words, backend=backend).split()


def speed(found):
    return "" if found is None else f"{found[0]:.0f} ({found[1]:.0f})"


def open_screen():
    server = start(["Xvfb", "-displayfd", "1", "-screen", "0", "1280x832x24", "-nolisten", "tcp"],
                   stdout=subprocess.PIPE)
    os.environ.update(DISPLAY=":" + server.stdout.readline().decode().strip(), HOME=work, LANG="C.UTF-8",
                      ORV_SUPPORT_DIR=work, XDG_RUNTIME_DIR=work, PS1="$ ")
    for name in (".zshrc", ".profile"):
        with open(os.path.join(work, name), "w") as file:
            file.write("PS1='$ '\n")
    start(["openbox"], stdout=subprocess.DEVNULL)
    time.sleep(1)
    return Screen()


def main():
    screen = open_screen()
    write_loads()
    print("| Terminal | plain | coloured | key to pixel |")
    print("|---|---:|---:|---:|")
    for terminal in terminals():
        row = [throughput(terminal, load) for load in ("plain", "coloured")]
        delay = latency(screen, terminal)
        print(f"| {terminal[0]} | {speed(row[0])} | {speed(row[1])} | "
              + ("" if delay is None else f"{delay[0]:.1f} ({delay[1]:.1f}) ms") + " |", flush=True)
    print(f"\n`cat` of {megabytes} MB in MB/s, the best of {rounds} rounds and in brackets the median; the median of {keys} keys, and in "
          f"brackets what 95 of 100 keep. {grid.replace('x', ' by ')} cells, 10,000 lines of history, on Xvfb.")
    print("\n| Scrolling by whole screens | frames a second | 99 of 100 take at most |\n|---|---:|---:|")
    for name, _, variables in terminals():
        if name.startswith("OrvLauncher"):
            pace, longest = ask("scroll", backend=variables["QT_QUICK_BACKEND"])
            print(f"| {name} | {int(pace)} | {float(longest):.1f} ms |")
    print("\nA display shows 60 of them.")
    kilobytes, busy = ask("tabs", "20")
    print(f"\n20 terminals with idle shells: {int(kilobytes)} KB each, beyond the first; {float(busy):.0f} ms of processor "
          "time in 10 s, of all together.")
    floods = []
    for name in ("plain", "coloured"):
        file = os.path.join(work, name)
        floods += [f"`cat` of {name} lines", f"while :; do cat {file}; done"]
    print("\nA frame, while a flood comes, from its request until the X server has it, and the stalls of the event loop:\n")
    print(ask_lines("flood", "`yes`", "yes", *floods))
    print("\n| Ctrl-C while it runs | median | longest of 20 |\n|---|---:|---:|")
    coloured = os.path.join(work, "coloured")
    for label, command in (("`yes`", "yes"), ("`cat` of coloured lines", f"cat {' '.join([coloured] * 20)}")):
        middle, longest = (float(figure) for figure in ask("interrupt", command))
        print(f"| {label} | {middle:.0f} ms | {longest:.0f} ms |")


def finish():
    for child in reversed(children):
        if child.poll() is None:
            child.terminate()
            child.wait()
    shutil.rmtree(work, ignore_errors=True)


if __name__ == "__main__":
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    try:
        main()
    finally:
        finish()
