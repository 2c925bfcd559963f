// Our engine, measured as BenchTerm.h says; with --memory, what terminals and a resize cost; and with --snapshots, what
// it costs to hand the screen to a thread that draws.

#include "BenchTerm.h"

#include "TermEngine/ScreenSnapshot.h"
#include "TermEngine/Terminal.h"

#include <malloc.h>

namespace {

class Host final : public term::TerminalDelegate {
public:
    void send(term::Terminal&, term::Bytes) override {}
};

class Engine {
public:
    Engine(int cols, int rows) : m_terminal(m_host, optionsOf(cols, rows)) {}
    void feed(const char* data, std::size_t size) { m_terminal.feed(std::string_view(data, size)); }
    [[nodiscard]] std::string text() const {
        std::string text;
        for (int row = 0; row < m_terminal.rows(); ++row) {
            text += bench::lineOf(m_terminal.lineText(row));
        }
        return text;
    }

private:
    static term::TerminalOptions optionsOf(int cols, int rows) {
        term::TerminalOptions options;
        options.cols = cols;
        options.rows = rows;
        options.scrollback = bench::historyLines;
        return options;
    }

    Host m_host;
    term::Terminal m_terminal;
};

std::size_t memoryInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

int measureMemory() {
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
        const double start = bench::now();
        terminal.resize(cols, 25);
        std::printf("resize to %d columns: %.1f ms\n", cols, (bench::now() - start) * 1e3);
    }
    return 0;
}

/// A frame each: one more colour and one more cluster, and the screen is handed on. First in a terminal that has few
/// colours, then in one that has them all.
int measureSnapshots() {
    constexpr int frames = 2000;
    Host host;
    for (const int colors : {100, 60'000}) {
        term::TerminalOptions options;
        options.cols = 200;
        options.rows = 50;
        options.scrollback = 2000;
        term::Terminal terminal(host, options);
        int color = 0;
        const auto writeNext = [&] {
            ++color;
            terminal.feed(
                "\x1B[38;2;" + std::to_string(color >> 16) + ";" + std::to_string(color >> 8 & 255) + ";" +
                std::to_string(color & 255) + "mxe\u0301" + "\xF0\x9F\x91\x8D" + "\xF0\x9F\x8F\xBD");
        };
        while (color < colors) {
            writeNext();
        }
        term::ScreenSnapshot snapshot = term::takeSnapshot(terminal);
        double seconds = 0;
        for (int frame = 0; frame < frames; ++frame) {
            writeNext();
            const double start = bench::now();
            snapshot = term::takeSnapshot(terminal, &snapshot);
            seconds += bench::now() - start;
        }
        std::printf("a snapshot of 200x50 with %d colours: %.1f us\n", colors, seconds * 1e6 / frames);
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const std::string what = argc == 2 ? argv[1] : "";
    return what == "--memory"      ? measureMemory()
           : what == "--snapshots" ? measureSnapshots()
                                   : bench::measure<Engine>(argc, argv);
}
