// What the benchmarks of terminal engines have in common:
//
//     PROGRAM COLS ROWS FILE         prints the speed of up to three rounds in MB/s, a line each; no new one begins
//     after
//                                    two seconds
//     PROGRAM --text COLS ROWS FILE  prints the screen after the last byte, the blanks at the ends of its lines left
//     out
//
// An engine is a class that is made from columns and rows, with 500 lines of history, and has feed(data, size) and
// text(). It gets the bytes from memory in pieces of 64 KiB.

#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <string>

namespace bench {

constexpr std::size_t pieceSize = 64 * 1024;
constexpr int rounds = 3;
constexpr double enoughSeconds = 2;
constexpr std::size_t warmUpSize = 2'000'000;
constexpr int historyLines = 500;

/// The time that the processor gave to this thread: what else runs on the machine does not count.
inline double now() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

inline std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        std::fprintf(stderr, "bench: %s can't be read\n", path.c_str());
        std::exit(1);
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

template <typename Engine>
void feedAll(Engine& engine, const std::string& data) {
    for (std::size_t at = 0; at < data.size(); at += pieceSize) {
        engine.feed(data.data() + at, std::min(pieceSize, data.size() - at));
    }
}

template <typename Engine>
int measure(int argc, char** argv) {
    const bool showsText = argc == 5 && std::string(argv[1]) == "--text";
    if (argc != (showsText ? 5 : 4)) {
        std::fprintf(stderr, "usage: %s [--text] COLS ROWS FILE\n", argv[0]);
        return 2;
    }
    char** const words = argv + (showsText ? 2 : 1);
    const int cols = std::atoi(words[0]);
    const int rows = std::atoi(words[1]);
    const std::string data = contentsOf(words[2]);
    if (showsText) {
        Engine engine(cols, rows);
        feedAll(engine, data);
        std::fputs(engine.text().c_str(), stdout);
        return 0;
    }
    {
        Engine engine(cols, rows);
        feedAll(engine, data.substr(0, warmUpSize));
    }
    double total = 0;
    for (int round = 0; round < rounds && total < enoughSeconds; ++round) {
        Engine engine(cols, rows);
        const double start = now();
        feedAll(engine, data);
        const double seconds = now() - start;
        total += seconds;
        std::printf("%.1f\n", static_cast<double>(data.size()) / 1e6 / seconds);
    }
    return 0;
}

/// Without the blanks at the end, with a line feed instead.
inline std::string lineOf(std::string text) {
    text.resize(text.find_last_not_of(' ') + 1);
    return text + '\n';
}

} // namespace bench
