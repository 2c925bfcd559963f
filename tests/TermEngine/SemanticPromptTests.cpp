#include "TerminalFixture.h"

#include <gtest/gtest.h>

namespace term {
namespace {

std::string mark(const std::string& body) {
    return "\x1B]133;" + body + "\x1B\\";
}

class Shell : public RecordingHost {
public:
    bool typesWhenItRings = false;
    void bell(Terminal& source) override {
        calls.emplace_back("bell");
        if (typesWhenItRings) {
            source.sendKey({.code = 'z', .text = "z\a"});
        }
    }
    void setTerminalTitle(Terminal& source, const std::string& title) override { source.feed(title); }
    void textWritten(Terminal&, const std::string& text) override { calls.push_back(text); }
};

struct Session {
    Shell host;
    Terminal terminal;
    explicit Session(TerminalOptions options = {.cols = 20, .rows = 6, .scrollback = 10}) : terminal(host, options) {}
    std::string click(std::int64_t line, int col) {
        host.replies.clear();
        terminal.clickPrompt({line, col});
        return host.takeReplies();
    }
};

} // namespace

TEST(SemanticPrompt, ReadsTheOptionsOfAMark) {
    using Kind = SemanticReport::Kind;
    using Mode = SemanticClickMode;
    struct Row {
        std::string payload;
        std::optional<SemanticReport> expected;
    };
    for (const Row& row : std::vector<Row>{
             {"A", SemanticReport{.kind = Kind::prompt}},
             {"A;aid=a\x01;cl=line",
              SemanticReport{.kind = Kind::prompt, .applicationId = "a", .clickMode = Mode::line}},
             {"A;click_events=1;cl=m", SemanticReport{.kind = Kind::prompt, .clickMode = Mode::events}},
             {"A;cl=strange", SemanticReport{.kind = Kind::prompt, .clickMode = Mode::none}},
             {"P;k=s;special_key=1",
              SemanticReport{.kind = Kind::promptPart, .continuesPrompt = true, .usesSpecialCursorKeys = true}},
             {"D;7;aid=x", SemanticReport{.kind = Kind::end, .exitCode = 7, .applicationId = "x"}},
             {"D;aid=x;7", SemanticReport{.kind = Kind::end, .applicationId = "x"}},
             {"D;many", SemanticReport{.kind = Kind::end}},
             {"C;cmdline=" + std::string(20'000, 'x') + ";aid=x",
              SemanticReport{.kind = Kind::output, .applicationId = "x"}},
             {"A" + std::string(100'000, ';') + "aid=x", SemanticReport{.kind = Kind::prompt}},
             {"Z", {}},
             {"AB", {}},
             {"", {}}}) {
        EXPECT_EQ(parseSemanticPrompt(row.payload), row.expected) << row.payload;
    }
}

TEST(SemanticPrompt, EndsCommandsByTheirApplication) {
    Session session;
    const SemanticState& state = session.terminal.buffer().semantic;
    session.terminal.feed(mark("A;aid=1") + mark("C") + mark("A;aid=2") + mark("C"));
    const std::uint32_t inner = state.activeGroup();
    EXPECT_NE(inner, 0U);
    session.terminal.feed("x" + mark("D;3;aid=strange"));
    EXPECT_EQ(state.activeGroup(), inner);
    EXPECT_EQ(session.terminal.buffer().line(0).semanticMarks().commandEnd, false) << "of nobody that is there";
    session.terminal.feed(mark("D;3;aid=1"));
    EXPECT_EQ(state.activeGroup(), 0U) << "with all that it started";
    EXPECT_EQ(session.terminal.buffer().line(0).semanticMarks().exitCode, 3);
    for (int i = 0; i < 100; ++i) {
        session.terminal.feed(mark("A;aid=" + std::to_string(i)));
    }
    EXPECT_EQ(state.commands.size(), SemanticState::mostCommands);
}

TEST(SemanticPrompt, EndsTheInputOfALineWithTheLine) {
    Session session;
    session.terminal.feed(mark("A") + "$ " + mark("I") + "ls\r\nout");
    const Buffer& buffer = session.terminal.buffer();
    EXPECT_EQ(buffer.line(0)[2].semanticCode(), static_cast<int>(SemanticContent::input));
    EXPECT_EQ(buffer.line(1)[0].semanticCode(), static_cast<int>(SemanticContent::output));
    EXPECT_TRUE(buffer.line(1).semanticMarks().outputStart);
    // The screen of a program has a state of its own.
    session.terminal.feed(mark("A") + mark("B") + "\x1B[?1049hx\x1B[?1049ly");
    EXPECT_EQ(buffer.line(2)[0].semanticCode(), static_cast<int>(SemanticContent::input));
}

TEST(SemanticPrompt, GoesWithTheTextThatEDErases) {
    struct Row {
        const char* label;
        std::string erase;
        std::string marked; ///< rows, of which 0 to 2 had marks
    };
    for (const Row& row : std::vector<Row>{
             {"all", "\x1B[2J", ""},
             {"below: the line of the cursor is being prepared for its prompt", "\x1B[2;1H\x1B[J", "01"},
             {"above", "\x1B[2;9H\x1B[1J", "12"},
             {"a line alone keeps them", "\x1B[2;1H\x1B[2K", "012"},
             {"selective erase too", "\x1B[?2J", "012"},
             {"where a picture stands", "\x1BPq~\x1B\\\x1B[2J", ""}}) {
        Session session;
        const Buffer& buffer = session.terminal.buffer();
        session.terminal.feed(mark("A") + "$ " + mark("B") + "a\r\n" + mark("C") + "b\r\n" + mark("D;1") + "c");
        session.terminal.feed(row.erase);
        std::string marked;
        for (int line = 0; line < 3; ++line) {
            marked += buffer.line(line).semanticMarks().any() ? std::to_string(line) : "";
        }
        EXPECT_EQ(marked, row.marked) << row.label;
    }
    Session session({.cols = 20, .rows = 6, .scrollback = 10});
    session.terminal.feed("x" + mark("A;cl=m") + "$ " + mark("B") + "ab\r\ncd\x1B[H\x1B[2Jef");
    EXPECT_EQ(session.terminal.buffer().line(2).semanticHardContinuationGroup(), 0U);
}

TEST(SemanticPrompt, BringsTheCursorOfAShellToAClick) {
    // Three lines, of which the second is wrapped: "$ ab", "cdefghijklmnopqrstuv" and "漢x", then "yz".
    const std::string input = "$ " + mark("B") + "ab\r\ncdefghijklmnopqrstuv漢x\r\nyz";
    struct Row {
        const char* label;
        std::string options;
        std::int64_t line;
        int col;
        std::string sent;
    };
    const std::string left = "\x1B[D";
    for (const Row& row : std::vector<Row>{
             {"nothing was said", "A", 3, 0, ""},
             {"the same line", "A;cl=line", 3, 0, left + left},
             {"behind its end", "A;cl=line", 3, 15, ""},
             {"another line, of which it knows none", "A;cl=line", 2, 0, ""},
             {"the line above, over its end", "A;cl=m", 2, 2, left + left + left + left},
             {"a half of a wide character", "A;cl=m", 2, 1, left + left + left + left + left},
             {"into the prompt", "A;cl=v", 0, 0, left + left + "\x1B[A\x1B[A"},
             {"up, from the first column", "A;cl=v", 0, 3, left + left + "\x1B[A\x1B[A\x1B[C"},
             {"up, in the same column", "A;cl=w", 0, 3, "\x1B[A\x1B[A" + left},
             {"above", "A;cl=m", -1, 0, ""},
             {"below", "A;cl=m", 4, 0, ""},
             {"keys of its own", "A;cl=m;special_key=1", 3, 0, ""},
             {"the click itself", "A;click_events=1", 1, 4, "\x1B[<0;5;2M"}}) {
        Session session;
        session.terminal.feed(mark(row.options) + input);
        EXPECT_EQ(escaped(session.click(row.line, row.col)), escaped(row.sent)) << row.label;
        session.terminal.feed("\x1B[?1000h");
        EXPECT_EQ(session.click(row.line, row.col), "") << "the mouse is the program's";
        session.terminal.feed("\x1B[?1000l" + mark("C"));
        EXPECT_EQ(session.click(row.line, row.col), "") << "a program runs";
    }
    Session resized;
    resized.terminal.feed(mark("A;cl=m") + input);
    resized.terminal.resize(40, 6);
    EXPECT_EQ(resized.click(1, 22), left + left + left + left) << "lines are still known after a reflow";
    Session fresh;
    fresh.terminal.feed("old\r\n" + mark("A;cl=m") + "$ " + mark("B"));
    EXPECT_EQ(fresh.click(0, 0), "") << "what stands above belongs to another one";
}

TEST(ScreenReader, IsToldOfAllTextThatIsWritten) {
    struct Row {
        const char* label;
        std::vector<std::string> fed;
        std::vector<std::string> told;
    };
    for (const Row& row : std::vector<Row>{
             {"text without its attributes", {"a\x1B[1mb\x1B[m漢"}, {"ab漢"}},
             {"in pieces", {"one", "two"}, {"one", "two"}},
             {"a new line, when there is something on it", {"a\r\n", "b"}, {"a", "\nb"}},
             {"another place on the line", {"a\x1B[10Gb"}, {"a b"}},
             {"a soft wrap is none", {std::string(25, 'x') + "y"}, {std::string(25, 'x') + "y"}},
             {"what a set makes of it", {"\x1B(0qx"}, {"─│"}},
             {"nothing but motion", {"\x1B[H\x1B[J\r\n"}, {}},
             {"a flood", {std::string(10'000, 'x') + "\r\n", "y"}, {std::string(4096, 'x'), "\ny"}}}) {
        Session session({.cols = 20, .rows = 6, .screenReaderMode = true, .scrollback = 10});
        for (const std::string& bytes : row.fed) {
            session.terminal.feed(bytes);
        }
        EXPECT_EQ(session.host.calls, row.told) << row.label;
    }
    Session seeing;
    seeing.terminal.feed("text");
    EXPECT_TRUE(seeing.host.calls.empty());
}

TEST(Feeding, FromWithinACallComesAfterWhatIsBeingFed) {
    Session session;
    session.terminal.feed("a\x1B]2;b\a\x1B]2;c\ad");
    EXPECT_EQ(session.terminal.lineText(0), "adbc");
}

TEST(Feeding, EchoesWhatIsSentFromWithinACallAndNotWhatTheEchoBrings) {
    Session session;
    session.host.typesWhenItRings = true;
    session.terminal.feed("\x1B[12l");
    session.terminal.sendKey({.code = 'a', .text = "a"});
    EXPECT_EQ(session.terminal.lineText(0), "a");
    session.terminal.feed("b\ac");
    EXPECT_EQ(session.terminal.lineText(0), "abcz");
    EXPECT_EQ(session.host.replies, "az\az\a") << "the bell of the echo types once more, which is not echoed";
    EXPECT_EQ(session.host.calls.size(), 2U);
}

} // namespace term
