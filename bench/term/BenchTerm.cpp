// Bytes in memory through the engine: orv-bench-term FILE... prints, for each file and size of screen, the best of some
// rounds in MB/s; --memory what terminals and a resize cost.

#include "TermEngine/Terminal.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <iterator>
#include <string>

#include <malloc.h>

namespace {

/// The time that the processor gave to this thread: what else runs on the machine does not count.
double now() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

constexpr std::size_t pieceSize = 64 * 1024;
constexpr int rounds = 7;

class Host final : public term::TerminalDelegate {
public:
    void send(term::Terminal&, term::Bytes) override {}
};

std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void feedAll(term::Terminal& terminal, const std::string& data) {
    for (std::size_t at = 0; at < data.size(); at += pieceSize) {
        terminal.feed(std::string_view(data).substr(at, pieceSize));
    }
}

double megabytesASecond(const std::string& data, int cols, int rows) {
    Host host;
    term::TerminalOptions options;
    options.cols = cols;
    options.rows = rows;
    double best = 0;
    for (int round = 0; round < rounds; ++round) {
        term::Terminal terminal(host, options);
        const double start = now();
        feedAll(terminal, data);
        best = std::max(best, static_cast<double>(data.size()) / 1e6 / (now() - start));
    }
    return best;
}

std::size_t memoryInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

void measureMemory() {
    Host host;
    const std::size_t before = memoryInUse();
    {
        const term::Terminal terminal(host);
        std::printf("empty, 500 lines of history: %.1f KB\n", static_cast<double>(memoryInUse() - before) / 1e3);
    }
    term::TerminalOptions options;
    options.scrollback = 100'000;
    term::Terminal terminal(host, options);
    for (int line = 0; line < 100'100; ++line) {
        terminal.feed(std::string(80, static_cast<char>('a' + line % 26)) + "\r\n");
    }
    std::printf("100,000 lines of 80 columns: %.1f MB\n", static_cast<double>(memoryInUse() - before) / 1e6);
    for (const int cols : {120, 80, 60, 80}) {
        const double start = now();
        terminal.resize(cols, 25);
        std::printf("resize to %d columns: %.1f ms\n", cols, (now() - start) * 1e3);
    }
}

} // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--memory") {
            measureMemory();
            continue;
        }
        const std::string data = contentsOf(argument);
        const std::string name = argument.substr(argument.rfind('/') + 1);
        const double small = megabytesASecond(data, 80, 25);
        const double large = megabytesASecond(data, 200, 50);
        std::printf("%-12s %8.1f MB/s at 80x25 %8.1f MB/s at 200x50\n", name.c_str(), small, large);
        std::fflush(stdout);
    }
    return 0;
}
