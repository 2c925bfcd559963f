// orv-bench-hostile: what the engine does with input that wants to harm it, in time and in memory.
//
//     orv-bench-hostile [NAME]           every hostile input, or those with that in their name, with the milliseconds
//                                        that the processor gave it; fails when one takes over 100, leaves more
//                                        memory taken than it may, or gets bytes of its own in a reply
//     orv-bench-hostile --table          the slowest of them, as Markdown
//     orv-bench-hostile --soak [MB]      mixed output that never repeats (1000 MB): memory on the way

#include "BenchTerm.h"
#include "HostileInputs.h"
#include "TermEngine/Terminal.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include <malloc.h>
#include <unistd.h>

namespace {

constexpr double mostMilliseconds = 100;
/// A string that is still open, pictures, and the lines of a large history.
constexpr long long mostKiB = 96 * 1024;

class Host final : public term::TerminalDelegate {
public:
    std::string replies;
    void send(term::Terminal&, term::Bytes data) override { replies.append(data.begin(), data.end()); }
    std::optional<term::CellSize> cellSizeInPixels(term::Terminal&) override { return term::CellSize{10, 20}; }
};

std::size_t residentKiB() {
    std::ifstream file("/proc/self/statm");
    std::size_t pages = 0;
    file >> pages >> pages;
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) / 1024;
}

long long allocatedKiB() {
    const auto info = mallinfo2();
    return static_cast<long long>((info.uordblks + info.hblkhd) / 1024);
}

struct Figure {
    std::string name;
    double milliseconds = 0;
    long long kiB = 0; ///< more than before
    std::size_t bytes = 0;
    std::size_t replyBytes = 0;
    bool hasOwnBytes = false;

    [[nodiscard]] bool isGood() const { return milliseconds <= mostMilliseconds && kiB <= mostKiB && !hasOwnBytes; }
};

/// The faster of two rounds: a machine that is shared has pauses.
Figure measure(const bench::HostileInput& input, int cols, int rows) {
    Figure best;
    for (int round = 0; round < 2; ++round) {
        Host host;
        term::TerminalOptions options;
        options.cols = cols;
        options.rows = rows;
        term::Terminal terminal(host, options);
        terminal.feed(input.before);
        host.replies.clear();
        const long long before = allocatedKiB();
        const double start = bench::now();
        terminal.feed(input.bytes);
        const double milliseconds = (bench::now() - start) * 1e3;
        if (round == 0 || milliseconds < best.milliseconds) {
            best = {
                input.name,         milliseconds,        allocatedKiB() - before,
                input.bytes.size(), host.replies.size(), host.replies.find(bench::hostileMark) != std::string::npos};
        }
    }
    return best;
}

std::vector<Figure> measureResizes() {
    Host host;
    term::TerminalOptions options;
    options.scrollback = 100'000;
    term::Terminal terminal(host, options);
    for (int i = 0; i < 1000; ++i) {
        terminal.feed(bench::repeated(
            100, "a line of some eighty columns that is long enough to be cut by the narrow sizes\r\n"));
    }
    std::vector<Figure> figures;
    for (const auto& [cols, rows] :
         {std::pair(120, 25), std::pair(80, 25), std::pair(1, 1), std::pair(10'000, 10'000), std::pair(1, 10'000),
          std::pair(80, 25)}) {
        const double start = bench::now();
        terminal.resize(cols, rows);
        const std::string name = "resize to " + std::to_string(cols) + "x" + std::to_string(rows);
        figures.push_back({name + ", 100,000 lines", (bench::now() - start) * 1e3, 0, 0, 0, false});
    }
    return figures;
}

/// All of the history is one line that goes on.
std::vector<Figure> measureParagraphs() {
    std::vector<Figure> figures;
    for (const char* character : {"x", "\xE6\xBC\xA2"}) {
        Host host;
        term::TerminalOptions options;
        options.cols = 300;
        options.rows = 100;
        options.scrollback = 100'000;
        term::Terminal terminal(host, options);
        for (int i = 0; i < 1001; ++i) {
            terminal.feed(bench::repeated(15'000 * (character[1] == 0 ? 2 : 1), character));
        }
        for (const int cols : {340, 300, 150, 300, 2, 300}) {
            const double start = bench::now();
            terminal.resize(cols, 100);
            const std::string name = "resize to " + std::to_string(cols) + ", a paragraph of " + character;
            figures.push_back({name, (bench::now() - start) * 1e3, 0, 0, 0, false});
        }
    }
    return figures;
}

/// What could look at all lines of a large history, or at what stands in it.
std::vector<Figure> measureBehindHistory() {
    constexpr int lines = 100'000;
    std::vector<Figure> figures;
    for (const auto& [name, once] : std::to_array<std::pair<const char*, const char*>>(
             {{"ED 3", "\x1B[3J\n"},
              {"RIS", "\x1B"
                      "c\n"},
              {"alternate screens", "\x1B[?1049hx\x1B[?1049l"},
              {"marks", "\x1B]133;A\a$ \x1B]133;C\ao\r\n\x1B]133;D;1\a"},
              {"sixels", "\x1BPq~\x1B\\\n"},
              {"pictures", "\x1B_Ga=T,q=2,f=24,s=1,v=1;AAAA\x1B\\\n"}})) {
        Host host;
        term::TerminalOptions options;
        options.scrollback = lines;
        term::Terminal terminal(host, options);
        terminal.feed(bench::repeated(lines, std::string(79, 'x') + "\r\n"));
        const std::string bytes = bench::piecesOf(once);
        Figure figure{.name = name + std::string(", 100,000 lines"), .bytes = bytes.size()};
        // The second time behind what the first one left.
        for (int round = 0; round < 2; ++round) {
            const double start = bench::now();
            terminal.feed(bytes);
            figure.milliseconds = std::max(figure.milliseconds, (bench::now() - start) * 1e3);
        }
        figures.push_back(figure);
    }
    return figures;
}

/// The slowest of pieces of 64 KiB, each cell with a value of its own, above a long history: many times more of them
/// than there are numbers for.
Figure measureNew(const char* name, std::string (*one)(int), int lines) {
    constexpr std::size_t piece = 64 * 1024;
    constexpr int cols = 120;
    Host host;
    term::TerminalOptions options;
    options.cols = cols;
    options.scrollback = lines;
    term::Terminal terminal(host, options);
    terminal.feed(bench::repeated(lines, std::string(cols, 'x') + "\r\n"));
    Figure figure{.name = name + std::string(", ") + std::to_string(lines) + " lines", .bytes = piece};
    std::string text;
    for (int i = 1; i < 2'000'000; ++i) {
        text += one(i);
        if (text.size() >= piece) {
            const double start = bench::now();
            terminal.feed(text);
            figure.milliseconds = std::max(figure.milliseconds, (bench::now() - start) * 1e3);
            text.clear();
        }
    }
    return figure;
}

/// What one input on an empty screen does not show.
std::vector<Figure> measureHistories() {
    std::vector<Figure> figures = measureResizes();
    for (const auto& more : {measureParagraphs(), measureBehindHistory()}) {
        figures.insert(figures.end(), more.begin(), more.end());
    }
    for (const int lines : {500, 10'000, 100'000}) {
        figures.push_back(measureNew("new colours", bench::color, lines));
        figures.push_back(measureNew("new links", bench::link, lines));
        figures.push_back(measureNew("new clusters", bench::cluster, lines));
    }
    return figures;
}

void print(const Figure& figure) {
    std::printf(
        "  %-36s %8.1f %8lld   of %zu bytes, %zu of replies%s\n", figure.name.c_str(), figure.milliseconds, figure.kiB,
        figure.bytes, figure.replyBytes,
        figure.isGood()      ? ""
        : figure.hasOwnBytes ? "  OWN BYTES"
                             : "  BAD");
    std::fflush(stdout);
}

constexpr std::array sizes = {std::pair(80, 25), std::pair(300, 100)};

std::vector<bench::HostileInput> allInputs() {
    std::vector<bench::HostileInput> inputs = bench::hostileInputs();
    for (auto& more : {bench::hostileCellFloods(), bench::hostilePictureFloods()}) {
        inputs.insert(inputs.end(), more.begin(), more.end());
    }
    return inputs;
}

int printAll(const std::string& part) {
    bool isGood = true;
    const auto take = [&isGood](const Figure& figure) {
        print(figure);
        isGood = isGood && figure.isGood();
    };
    for (const auto& [cols, rows] : sizes) {
        std::printf("%dx%d: milliseconds, KiB more than before\n", cols, rows);
        for (const bench::HostileInput& input : allInputs()) {
            if (input.name.find(part) != std::string::npos) {
                take(measure(input, cols, rows));
            }
        }
    }
    if (part.empty()) {
        std::ranges::for_each(measureHistories(), take);
    }
    return isGood ? 0 : 1;
}

/// The slowest inputs of both sizes; how many there are, and how many miss the goal.
int printTable() {
    constexpr std::size_t shown = 12;
    std::vector<Figure> figures = measureHistories();
    for (const auto& [cols, rows] : sizes) {
        for (const bench::HostileInput& input : allInputs()) {
            figures.push_back(measure(input, cols, rows));
            figures.back().name += ", " + std::to_string(cols) + "x" + std::to_string(rows);
        }
    }
    std::ranges::sort(figures, std::greater(), &Figure::milliseconds);
    const auto missed = std::ranges::count(figures, false, &Figure::isGood);
    std::puts("| Input | ms | KiB more than before | Bytes | Bytes of replies |\n|---|---:|---:|---:|---:|");
    for (const Figure& figure : std::span(figures).first(shown)) {
        std::printf(
            "| %s | %.0f | %lld | %zu | %zu |\n", figure.name.c_str(), figure.milliseconds, figure.kiB, figure.bytes,
            figure.replyBytes);
    }
    std::printf(
        "\nThe slowest of %zu; %td of them take more than %.0f ms or leave more than %lld MiB. Of no input there is "
        "anything in its replies.\n",
        figures.size(), missed, mostMilliseconds, mostKiB / 1024);
    return std::ranges::any_of(figures, &Figure::hasOwnBytes) ? 1 : 0;
}

/// About a megabyte, each with colours, links, clusters and images that were not there before.
std::string mixed(int number) {
    std::string text;
    for (int line = 0; text.size() < 1'000'000; ++line) {
        const int i = number * 20'000 + line;
        text += bench::color(i * 7919) + " text of line " + std::to_string(i) + " " + bench::link(i) +
                "\x1B]8;;\x1B\\" + bench::cluster(i) + "\x1B[48;5;" + std::to_string(i % 256) +
                "m\x1B[K\x1B[m\xE6\xBC\xA2\xE5\xAD\x97\r\n";
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
    if (what == "--table") {
        return printTable();
    }
    return printAll(what);
}
