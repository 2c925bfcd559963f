// Bytes in memory through the engine: orv-bench-term FILE... prints, for each file and size of screen, the best of some
// rounds in MB/s. With --resize, --memory: what those cost.

#include "TermEngine/Terminal.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <malloc.h>

namespace {

using Clock = std::chrono::steady_clock;
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

double seconds(Clock::time_point since) {
    return std::chrono::duration<double>(Clock::now() - since).count();
}

double megabytesASecond(const std::string& data, int cols, int rows) {
    Host host;
    term::TerminalOptions options;
    options.cols = cols;
    options.rows = rows;
    double best = 0;
    for (int round = 0; round < rounds; ++round) {
        term::Terminal terminal(host, options);
        const auto start = Clock::now();
        feedAll(terminal, data);
        best = std::max(best, static_cast<double>(data.size()) / 1e6 / seconds(start));
    }
    return best;
}

std::size_t memoryInUse() {
    return mallinfo2().uordblks + mallinfo2().hblkhd;
}

void measureMemory() {
    Host host;
    const std::size_t before = memoryInUse();
    {
        const term::Terminal terminal(host);
        std::printf("empty terminal, 500 lines of history: %.1f KB\n", static_cast<double>(memoryInUse() - before) / 1e3);
    }
    term::TerminalOptions options;
    options.scrollback = 100'000;
    term::Terminal terminal(host, options);
    for (int line = 0; line < 100'100; ++line) {
        terminal.feed(std::string(80, static_cast<char>('a' + line % 26)) + "\r\n");
    }
    std::printf("100,000 lines of 80 columns: %.1f MB\n", static_cast<double>(memoryInUse() - before) / 1e6);
    for (const int cols : {120, 80, 60, 80}) {
        const auto start = Clock::now();
        terminal.resize(cols, 25);
        std::printf("resize to %d columns: %.1f ms\n", cols, seconds(start) * 1e3);
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
        std::printf("%-12s %8.1f MB/s at 80x25 %8.1f MB/s at 200x50\n", name.c_str(), megabytesASecond(data, 80, 25),
                    megabytesASecond(data, 200, 50));
        std::fflush(stdout);
    }
    return 0;
}
