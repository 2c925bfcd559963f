// Our engine, measured as BenchTerm.h says; and with --memory, what terminals and a resize cost.

#include "BenchTerm.h"

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

} // namespace

int main(int argc, char** argv) {
    return argc == 2 && std::string(argv[1]) == "--memory" ? measureMemory() : bench::measure<Engine>(argc, argv);
}
