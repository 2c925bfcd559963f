#!/usr/bin/env python3
"""Writes the loads of the terminal benchmark: bench/term/loads.py FOLDER [MEGABYTES]

The same bytes every time. ascii.txt has plain lines; utf8.txt CJK, accents and emoji; color.txt dense colour of 16, 256
and 16 million; motion.txt cursor motion, regions, erases and inserts, as full-screen programs make them; build.txt the
coloured output of cmake, ninja, gcc and a test runner over the sources of this tree; images.txt pictures in pieces of
4096 characters, as kitty's protocol sends them.
"""

import base64
import random
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
WORDS = ("the of and a to in is it you that he was for on are with as his they be at one have this from or had by hot "
         "word but what some we can out other were all there when up use your how said an each she").split()


def words(rng, count):
    return " ".join(rng.choice(WORDS) for _ in range(count))


def ascii_line(rng):
    return words(rng, rng.randint(4, 22))[:110] + "\r\n"


def utf8_line(rng):
    parts = []
    for _ in range(rng.randint(4, 12)):
        kind = rng.random()
        if kind < 0.45:
            parts.append("".join(chr(rng.randint(0x4E00, 0x9FA0)) for _ in range(rng.randint(2, 8))))
        elif kind < 0.65:
            parts.append("".join(rng.choice("àéîõüçñøßåæþðýœ") if rng.random() < 0.5 else rng.choice("aeiourst")
                                 for _ in range(rng.randint(3, 9))))
        elif kind < 0.75:
            parts.append("".join(chr(rng.randint(0x430, 0x44F)) for _ in range(rng.randint(3, 9))))
        elif kind < 0.83:
            parts.append("".join(chr(rng.randint(0x1F600, 0x1F64F)) for _ in range(rng.randint(1, 3))))
        elif kind < 0.87:
            parts.append(rng.choice(("👩‍👩‍👧", "👍🏽", "🇩🇪", "❤️", "e\u0301", "n\u0303")))
        else:
            parts.append(rng.choice(WORDS))
    return " ".join(parts) + "\r\n"


def color_line(rng):
    parts = []
    for _ in range(rng.randint(6, 18)):
        kind = rng.random()
        if kind < 0.4:
            parts.append(f"\x1b[{rng.choice((1, 3, 4, 22, 7, 27))};{rng.choice((30, 40, 90)) + rng.randint(0, 7)}m")
        elif kind < 0.7:
            parts.append(f"\x1b[38;5;{rng.randint(0, 255)}m")
        else:
            parts.append(f"\x1b[{rng.choice((38, 48))};2;{rng.randint(0, 255)};{rng.randint(0, 255)};{rng.randint(0, 255)}m")
        parts.append(words(rng, rng.randint(1, 2)) + " ")
    return "".join(parts) + "\x1b[0m\r\n"


def motion_piece(rng):
    row, col = rng.randint(1, 25), rng.randint(1, 80)
    kind = rng.random()
    if kind < 0.40:
        return f"\x1b[{row};{col}H{rng.choice(WORDS)}"
    if kind < 0.50:
        return f"\x1b[{row};1H\x1b[K\x1b[7m{words(rng, 3)}\x1b[m"
    if kind < 0.60:
        return rng.choice(("\x1b[A", "\x1b[B", "\x1b[5C", "\x1b[3D", "\r", "\x1b[10G", f"\x1b[{row}d")) + rng.choice(WORDS)
    if kind < 0.66:
        top = rng.randint(1, 12)
        return f"\x1b[{top};{top + rng.randint(3, 12)}r\x1b[{top};1H\x1bM\x1b[r"
    if kind < 0.74:
        return f"\x1b[{row};1H\x1b[{rng.randint(1, 3)}{rng.choice('LM')}"
    if kind < 0.84:
        return f"\x1b[{row};{col}H\x1b[{rng.randint(1, 5)}{rng.choice('@PX')}"
    if kind < 0.88:
        return f"\x1b7\x1b[{row};{col}H\x1b[1;32m{rng.choice(WORDS)}\x1b[0m\x1b8"
    if kind < 0.92:
        return "\x1b[?25l\x1b[1;24r\x1b[24;1H\n\x1b[r\x1b[25;1H-- INSERT --\x1b[K\x1b[?25h"
    return f"\x1b[{row};{col}H\x1b[{rng.randint(0, 1)}{rng.choice('JK')}"


def build_lines(rng):
    """The lines of one build, without end."""
    sources = sorted(str(path.relative_to(ROOT)) for path in ROOT.glob("Orv*/*.cpp")) or ["src/main.cpp"]
    while True:
        for number, source in enumerate(sources, 1):
            yield (f"\x1b[K\x1b[32m[{100 * number // len(sources):3d}%] \x1b[0m\x1b[32mBuilding CXX object "
                   f"CMakeFiles/app.dir/{source}.o\x1b[0m\r\n")
            text = (ROOT / source).read_text(encoding="utf-8").splitlines() if (ROOT / source).exists() else ["int x;"]
            at = rng.randrange(len(text))
            if rng.random() < 0.3:
                code = text[at].strip() or "return result;"
                yield (f"\x1b[01m\x1b[K{source}:{at + 1}:9:\x1b[m\x1b[K \x1b[01;35m\x1b[Kwarning: \x1b[m\x1b[Kunused variable "
                       f"‘\x1b[01m\x1b[Kresult\x1b[m\x1b[K’ [\x1b[01;35m\x1b[K-Wunused-variable\x1b[m\x1b[K]\r\n")
                yield f"  {at + 1} |     {code}\r\n"
                yield f"      |     \x1b[01;35m\x1b[K^{'~' * min(len(code), 40)}\x1b[m\x1b[K\r\n"
            if rng.random() < 0.2:
                yield f"\x1b[1;33mwarn\x1b[0m  \x1b[2m{source}\x1b[0m took \x1b[36m{rng.randint(1, 9000)}ms\x1b[39m\r\n"
        yield f"\x1b[32m\x1b[1mLinking CXX executable app\x1b[0m\r\n[100%] Built target app\r\n"
        for source in sources:
            verdict = "\x1b[0;32m[       OK ]\x1b[0m" if rng.random() < 0.95 else "\x1b[0;31m[  FAILED  ]\x1b[0m"
            yield f"\x1b[0;32m[ RUN      ]\x1b[0m {source}\r\n{verdict} {source} ({rng.randint(0, 300)} ms)\r\n"


def images(rng):
    """Pictures of 256 by 256 pixels, one after another, each in the place of one before it."""
    pictures = [base64.b64encode(rng.randbytes(256 * 256 * 4)).decode() for _ in range(8)]
    while True:
        for number, data in enumerate(pictures, 1):
            pieces = [data[at:at + 4096] for at in range(0, len(data), 4096)]
            yield f"\x1b[H\x1b_Ga=T,f=32,s=256,v=256,i={number},q=2,m=1;{pieces[0]}\x1b\\" + "".join(
                f"\x1b_Gm={int(at < len(pieces) - 1)};{piece}\x1b\\" for at, piece in enumerate(pieces[1:], 1))


def generate(make, size):
    data, total = [], 0
    while total < size:
        piece = make().encode()
        data.append(piece)
        total += len(piece)
    return b"".join(data)


def main():
    folder = Path(sys.argv[1])
    size = int(float(sys.argv[2] if len(sys.argv) > 2 else "16") * 1_000_000)
    folder.mkdir(parents=True, exist_ok=True)
    for name, make in (("ascii", ascii_line), ("utf8", utf8_line), ("color", color_line), ("motion", motion_piece)):
        rng = random.Random(name)
        (folder / f"{name}.txt").write_bytes(generate(lambda: make(rng), size))
    for name, make in (("build", build_lines), ("images", images)):
        pieces = make(random.Random(name))
        (folder / f"{name}.txt").write_bytes(generate(lambda: next(pieces), size))


if __name__ == "__main__":
    main()
