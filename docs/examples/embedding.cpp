#include "TermEngine/Terminal.h"

#include <cstdio>
#include <string>

/// A host has to take the bytes for the program; all else it may leave out.
class Host final : public term::TerminalDelegate {
public:
    std::string replies;
    void send(term::Terminal&, term::Bytes data) override { replies.append(data.begin(), data.end()); }
    void setTerminalTitle(term::Terminal&, const std::string& title) override {
        std::printf("title: %s\n", title.c_str());
    }
};

int main() {
    Host host;
    term::TerminalOptions options;
    options.cols = 40;
    options.rows = 3;
    term::Terminal terminal(host, options);

    // What a program wrote, in any pieces.
    terminal.feed("\x1B]2;hello\x07\x1B[1;31mred\x1B[m and plain\r\n\x1B[6");
    terminal.feed("n");

    for (int row = 0; row < terminal.rows(); ++row) {
        std::printf("%s\n", terminal.lineText(row).c_str());
    }
    const term::PackedCell cell = terminal.buffer().line(0)[0];
    const bool isRed = terminal.arena().attributeOf(cell).fg == term::Color::palette(1);
    return isRed && host.replies == "\x1B[2;1R" ? 0 : 1;
}
