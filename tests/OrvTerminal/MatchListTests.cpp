#include "OrvTerminal/View/MatchList.h"
#include "TermEngine/Terminal.h"

#include <gtest/gtest.h>

namespace orv {
namespace {

class SilentHost : public term::TerminalDelegate {
public:
    void send(term::Terminal&, term::Bytes) override {}
};

void finish(MatchList& matches, const term::Buffer& buffer) {
    do {
        matches.update(buffer);
        matches.advance(buffer);
    } while (!matches.isDone() || matches.isStale());
}

TEST(MatchList, FindsWhileOutputComesWhatANewSearchFinds) {
    SilentHost host;
    term::Terminal terminal(host, {.cols = 20, .rows = 5, .scrollback = 3000});
    const auto lines = [](int count, const std::string& text) {
        std::string all;
        for (int i = 0; i < count; ++i) {
            all += text + std::to_string(i) + "\r\n";
        }
        return all;
    };
    terminal.feed(lines(4000, "some text here "));
    const term::SearchOptions options{.isRegularExpression = true};
    const std::string pattern = "e+|x1$";
    MatchList kept;
    ASSERT_TRUE(kept.start(terminal.buffer(), pattern, options));
    kept.advance(terminal.buffer());
    EXPECT_FALSE(kept.isDone()) << "the rest is for further slices";
    struct Row {
        const char* label;
        std::string output;
    };
    const std::vector<Row> rows = {
        {"while the first search goes on", lines(7, "e")},
        {"text that is written over", "\x1B[Hxxx1\x1B[3;4Heee"},
        {"lines that come and go on the screen", "\x1B[2;1H\x1B[2Lx1\r\n\x1B[M"},
        {"soft wraps that begin in the history", std::string(150, 'e') + "\r\n"},
        {"and go on", "\x1B[A" + std::string(50, 'x') + "1\r\n"},
        {"more than the history holds", lines(3100, "x")},
        {"no history", "\x1B[3J"},
        {"a history that grows again", lines(20, "ex")},
        {"nothing", "\x1B[2J\x1B[3J"},
        {"all as at the beginning", "\x1B"
                                    "cee"},
    };
    for (const Row& row : rows) {
        terminal.feed(row.output);
        kept.noteOutput();
        finish(kept, terminal.buffer());
        MatchList anew;
        anew.start(terminal.buffer(), pattern, options);
        finish(anew, terminal.buffer());
        EXPECT_EQ(kept.matches(), anew.matches()) << row.label;
        EXPECT_TRUE(kept.isComplete()) << row.label;
    }
    EXPECT_TRUE(kept.isValidFor(terminal.buffer()));
    terminal.feed("\x1B[?1049h");
    EXPECT_FALSE(kept.isValidFor(terminal.buffer()));
    EXPECT_FALSE(kept.start(terminal.buffer(), "(", options));
}

} // namespace
} // namespace orv
