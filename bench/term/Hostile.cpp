// orv-bench-hostile: what the engine does with input that wants to harm it, in time and in memory.
//
//     orv-bench-hostile                  every hostile input, with the milliseconds that the processor gave it; fails
//                                        when one takes over 100; likewise each piece of colours without end
//     orv-bench-hostile --soak [MB]      mixed output that never repeats (1000 MB): memory on the way

#include "BenchTerm.h"
#include "TermEngine/Terminal.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include <malloc.h>
#include <unistd.h>

namespace {

class Host final : public term::TerminalDelegate {
public:
    std::size_t replyBytes = 0;
    void send(term::Terminal&, term::Bytes data) override { replyBytes += data.size(); }
    std::optional<term::CellSize> cellSizeInPixels(term::Terminal&) override { return term::CellSize{10, 20}; }
    bool allowsTitleReports(term::Terminal&) override { return true; }
};

std::size_t residentKiB() {
    std::ifstream file("/proc/self/statm");
    std::size_t pages = 0;
    file >> pages >> pages;
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) / 1024;
}

std::size_t allocatedBytes() {
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

std::string times(int count, const std::function<std::string(int)>& one) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += one(i);
    }
    return text;
}

std::string repeated(int count, const std::string& text) {
    return times(count, [&](int) { return text; });
}

std::string utf8(char32_t scalar) {
    const auto byte = [](char32_t bits) { return static_cast<char>(bits); };
    if (scalar < 0x800) {
        return {byte(0xC0 | scalar >> 6), byte(0x80 | (scalar & 63))};
    }
    return {byte(0xE0 | scalar >> 12), byte(0x80 | (scalar >> 6 & 63)), byte(0x80 | (scalar & 63))};
}

std::string color(int i) {
    return "\x1B[38;2;" + std::to_string(i >> 16 & 255) + ";" + std::to_string(i >> 8 & 255) + ";" +
           std::to_string(i & 255) + "mx";
}

std::string link(int i) {
    return "\x1B]8;;https://example.org/" + std::to_string(i) + "\x1B\\y";
}

std::string cluster(int i) {
    const auto mark = [i](int shift) { return utf8(0x300 + static_cast<char32_t>(i >> shift & 63)); };
    return "e" + mark(0) + mark(6) + mark(12) + mark(18);
}

struct Input {
    const char* name;
    std::string bytes;
};

/// Each is what a program could write at once; floods of short sequences have some tens of kilobytes.
std::vector<Input> inputs() {
    std::vector<Input> made;
    const auto add = [&made](const char* name, std::string bytes) { made.push_back({name, std::move(bytes)}); };
    const std::string full = repeated(60, std::string(300, 'x'));
    for (const char* final :
         {"@", "A", "B", "C", "D", "G", "I", "L", "M", "P", "S", "T", "X", "Z", "b", "d", " @", " A", "'}", "'~"}) {
        add(final, full + "\x1B[H" + repeated(1000, std::string("z\x1B[65535") + final));
    }
    add("ED", full + repeated(5000, "\x1B[J\x1B[1J\x1B[2J\x1B[3J"));
    add("rectangles", full + repeated(
                                 200, "\x1B[65;1;1;65535;65535$x\x1B[1;1;65535;65535;1;2;2;1$v\x1B[1;1;65535;65535;7$r"
                                      "\x1B[1;1;65535;65535;5$t\x1B[1;1;65535;65535${"));
    add("checksums", full + repeated(500, "\x1B[1;1;1;1;65535;65535*y"));
    add("reverse wraparound", "\x1B[?7;45;1045h" + repeated(2000, "\x1B[65535D"));
    add("RIS", repeated(
                   5000, "\x1B"
                         "cx"));
    add("DECSTR", repeated(20000, "\x1B[!p"));
    add("DECALN", repeated(2000, "\x1B#8"));
    add("alternate screens", repeated(5000, "\x1B[?1049hx\x1B[?1049l"));
    add("column modes", "\x1B[?40h" + repeated(2000, "\x1B[?3h\x1B[?3l"));
    add("parameters", repeated(200, "\x1B[" + repeated(1000, "1:2;") + "m"));
    add("long number", "\x1B[" + std::string(1'000'000, '9') + "m");
    add("intermediates", "\x1B[" + std::string(1'000'000, '!') + "m");
    add("queries", repeated(20000, "\x1B[c\x1B[6n\x1B[?2026$p\x1BP$qm\x1B\\"));
    add("stacks", repeated(
                      20000, "\x1B[22t\x1B[#{\x1B[>1u\x1B[?s\x1B"
                             "7"));
    add("saved modes", times(65535, [](int i) { return "\x1B[?" + std::to_string(i) + "s"; }));
    add("titles", repeated(200, "\x1B]2;" + std::string(4000, 't') + "\a"));
    add("long string", "\x1B]2;" + std::string(60'000'000, 't') + "\a");
    add("too long string", "\x1B_" + std::string(80'000'000, 't') + "\x1B\\");
    add("open strings", repeated(100'000, "\x1B]0;\x1BP\x1B_G\x1BX"));
    add("colours", times(100'000, color));
    add("links", times(30'000, link));
    add("clusters", times(50'000, cluster));
    add("long cluster", "e" + repeated(500'000, utf8(0x301)));
    add("joined emoji", repeated(100'000, "\xF0\x9F\x91\xA9\xE2\x80\x8D"));
    add("flags", repeated(100'000, "\xF0\x9F\x87\xA6"));
    add("broken UTF-8", std::string(1'000'000, '\xF4') + std::string(1'000'000, '\x80'));
    add("palette", times(20'000, [](int i) { return "\x1B]4;" + std::to_string(i % 256) + ";rgb:12/34/56;1;?\a"; }));
    add("palette questions", "\x1B]4;" + repeated(1'000'000, "0;?;") + "\a");
    add("colour questions", "\x1B]21;" + repeated(1'000'000, "0=?;") + "\a");
    add("termcap", "\x1BP+q" + repeated(50'000, "544E;") + "\x1B\\");
    add("marks", repeated(30'000, "\x1B]133;A\a$ \x1B]133;C\ao\r\n\x1B]133;D;1\a"));
    add("clipboard", "\x1B]52;c;" + std::string(10'000'000, 'A') + "\a");
    add("sixel size", repeated(20, "\x1BPq\"1;1;65535;65535#0;2;9;9;9!65535~\x1B\\"));
    add("sixel lines", "\x1BPq" + repeated(20'000, "!9999~-") + "\x1B\\");
    add("images",
        times(5000, [](int i) { return "\x1B_Ga=T,i=" + std::to_string(i + 1) + ",f=24,s=1,v=1;AAAA\x1B\\"; }));
    add("image size", repeated(50, "\x1B_Ga=T,f=32,s=10000,v=10000,o=z;eJztwTEBAAAAwqD1T+1vBqAAAAA=\x1B\\"));
    add("placements", "\x1B_Ga=t,i=1,f=24,s=1,v=1;AAAA\x1B\\" + times(5000, [](int i) {
                          return "\x1B_Ga=p,i=1,p=" + std::to_string(i + 1) + ",c=99,r=99\x1B\\";
                      }));
    add("notifications", times(20'000, [](int i) { return "\x1B]99;i=" + std::to_string(i) + ":d=0;x\x1B\\"; }));
    return made;
}

/// Pieces of 64 KiB, each cell in a colour of its own, above a long history: many times more than there are numbers
/// for. The milliseconds of the slowest piece.
double slowestOfColors(int cols, int lines) {
    constexpr std::size_t piece = 64 * 1024;
    Host host;
    term::TerminalOptions options;
    options.cols = cols;
    options.scrollback = lines;
    term::Terminal terminal(host, options);
    terminal.feed(repeated(lines, std::string(static_cast<std::size_t>(cols), 'x') + "\r\n"));
    double slowest = 0;
    std::string text;
    for (int i = 1; i < 2'000'000; ++i) {
        text += color(i);
        if (text.size() >= piece) {
            const double start = bench::now();
            terminal.feed(text);
            slowest = std::max(slowest, (bench::now() - start) * 1e3);
            text.clear();
        }
    }
    return slowest;
}

int runInputs() {
    bool isSlow = false;
    for (const auto& [cols, rows] : {std::pair(80, 25), std::pair(300, 100)}) {
        std::printf("%dx%d: milliseconds, KiB more than before\n", cols, rows);
        for (const Input& input : inputs()) {
            Host host;
            term::TerminalOptions options;
            options.cols = cols;
            options.rows = rows;
            term::Terminal terminal(host, options);
            const std::size_t before = allocatedBytes();
            const double start = bench::now();
            terminal.feed(input.bytes);
            const double milliseconds = (bench::now() - start) * 1e3;
            const auto grown = (static_cast<long long>(allocatedBytes()) - static_cast<long long>(before)) / 1024;
            std::printf(
                "  %-20s %8.1f %8lld   of %zu bytes, %zu of replies%s\n", input.name, milliseconds, grown,
                input.bytes.size(), host.replyBytes, milliseconds > 100 ? "  SLOW" : "");
            isSlow = isSlow || milliseconds > 100;
        }
    }
    for (const int lines : {500, 10'000, 100'000}) {
        const double milliseconds = slowestOfColors(120, lines);
        std::printf(
            "  slowest 64 KiB of new colours, %d lines: %.1f%s\n", lines, milliseconds,
            milliseconds > 100 ? "  SLOW" : "");
        isSlow = isSlow || milliseconds > 100;
    }
    Host host;
    term::TerminalOptions options;
    options.scrollback = 100'000;
    term::Terminal terminal(host, options);
    for (int i = 0; i < 1000; ++i) {
        terminal.feed(
            repeated(100, "a line of some eighty columns that is long enough to be cut by the narrow sizes\r\n"));
    }
    for (const auto& [cols, rows] :
         {std::pair(120, 25), std::pair(80, 25), std::pair(1, 1), std::pair(10'000, 10'000), std::pair(1, 10'000),
          std::pair(80, 25)}) {
        const double start = bench::now();
        terminal.resize(cols, rows);
        const double milliseconds = (bench::now() - start) * 1e3;
        std::printf("  resize to %dx%d, 100,000 lines: %.1f\n", cols, rows, milliseconds);
    }
    return isSlow ? 1 : 0;
}

/// About a megabyte, each with colours, links, clusters and images that were not there before.
std::string mixed(int number) {
    std::string text;
    for (int line = 0; text.size() < 1'000'000; ++line) {
        const int i = number * 20'000 + line;
        text += color(i * 7919) + " text of line " + std::to_string(i) + " " + link(i) + "\x1B]8;;\x1B\\" + cluster(i) +
                "\x1B[48;5;" + std::to_string(i % 256) + "m\x1B[K\x1B[m\xE6\xBC\xA2\xE5\xAD\x97\r\n";
        if (line % 500 == 0) {
            text += "\x1B_Ga=T,f=24,s=20,v=20,i=" + std::to_string(i + 1) + ";" + std::string(1600, 'A') + "\x1B\\";
        }
        if (line % 700 == 0) {
            text += "\x1B[?1049h\x1B[2J\x1B[5;5Hfull screen\x1B[?1049l";
        }
    }
    return text;
}

int soak(int megabytes) {
    Host host;
    term::Terminal terminal(host);
    constexpr int looks = 5;
    for (int i = 0; i < megabytes; ++i) {
        terminal.feed(mixed(i));
        terminal.resize(60 + i % 100, 20 + i % 30);
        if ((i + 1) % (megabytes / looks) == 0) {
            // At the same size each time.
            terminal.resize(120, 40);
            terminal.feed(mixed(i));
            std::printf("%zu KiB resident after %d MB\n", residentKiB(), i + 1);
        }
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const std::string what = argc > 1 ? argv[1] : "";
    if (what == "--soak") {
        return soak(argc > 2 ? std::max(std::atoi(argv[2]), 20) : 1000);
    }
    return runInputs();
}
