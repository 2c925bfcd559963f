#include "TermEngine/ImagePlaceholders.h"
#include "TermEngine/TextRange.h"
#include "TerminalFixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <limits>
#include <map>
#include <random>

namespace term {
namespace {

using namespace std::string_literals;
using Clock = std::chrono::steady_clock;

struct Session {
    RecordingHost host;
    Terminal terminal;
    explicit Session(TerminalOptions options = {}) : terminal(host, std::move(options)) {}
    std::string ask(std::string_view bytes) {
        terminal.feed(bytes);
        return host.takeReplies();
    }
};

TEST(Terminal, ClaimsTheIdentityOfItsName) {
    struct Case {
        const char* name;
        bool sixel;
        const char* primary;
        const char* secondary;
    };
    const std::vector<Case> cases = {
        {"xterm-256color", true, "\x1B[?65;4;1;2;6;21;22;17;28c", "\x1B[>0;276;0c"},
        {"xterm", false, "\x1B[?65;1;2;6;21;22;17;28c", "\x1B[>0;276;0c"},
        {"screen-256color", true, "\x1B[?1;2c", "\x1B[>83;40003;0c"},
        {"rxvt-unicode", true, "\x1B[?1;2c", "\x1B[>85;95;0c"},
        {"linux", true, "\x1B[?6c", "\x1B[0c"},
        {"vt100", true, "", ""},
    };
    for (const Case& test : cases) {
        TerminalOptions options;
        options.termName = test.name;
        options.enableSixelReported = test.sixel;
        Session session(options);
        EXPECT_EQ(session.ask("\x1B[c"), test.primary) << test.name;
        EXPECT_EQ(session.ask("\x1B[>c"), test.secondary) << test.name;
    }
}

TEST(Terminal, ReportsWhatTheHostKnowsAndAllows) {
    Session session;
    session.host.cellSize = CellSize{8, 16};
    session.host.allowsTitles = true;
    session.host.allowsSizes = true;
    session.terminal.setXtVersionIdentity("engine");
    EXPECT_EQ(session.ask("\x1B[>q"), "\x1BP>|engine(v1.99.1)\x1B\\");
    EXPECT_EQ(session.ask("\x1B[16t"), "\x1B[6;16;8t");
    EXPECT_EQ(session.ask("\x1B[14t"), "\x1B[4;400;640t");
    EXPECT_EQ(session.ask("\x1B]2;a name\x07\x1B[21t"), "\x1B]la name\x1B\\");
    EXPECT_EQ(session.ask("\x1B[>1t\x1B[21t"), "\x1B]l61206E616D65\x1B\\");
    EXPECT_EQ(session.ask("\x1B[>0;1T\x1B[>0t\x1B]2;6869\x07\x1B[>0T\x1B[21t"), "\x1B]lhi\x1B\\");
    EXPECT_EQ(session.ask("\x1B[?2048h"), "\x1B[48;25;80;400;640t");
    EXPECT_EQ(session.ask("\x1B[?40h\x1B[?3h\x1B[18t"), "\x1B[48;25;132;400;1056t\x1B[8;25;132t");
    // RIS goes back, where columns may be changed; else it is still so.
    EXPECT_EQ(
        session.ask("\x1B[?40l\x1B"
                    "c\x1B[18t\x1B[?3$p"),
        "\x1B[8;25;132t\x1B[?3;1$y");
    EXPECT_EQ(
        session.ask("\x1B[?40h\x1B"
                    "c\x1B[18t\x1B[?3$p"),
        "\x1B[8;25;80t\x1B[?3;2$y");
    session.terminal.feed("\x1B[?2031h");
    session.terminal.setColorScheme(ColorScheme::light);
    session.terminal.setColorScheme(ColorScheme::light);
    EXPECT_EQ(session.host.takeReplies(), "\x1B[?997;2n");
    session.terminal.setVisibility(TerminalVisibility::notVisible);
    EXPECT_EQ(session.ask("\x1B[?998n"), "\x1B[?999;2n");
}

TEST(Terminal, ShowsImagesAtTheCursorAndLetsThemGoWithTheirLines) {
    Session session;
    session.host.cellSize = CellSize{10, 20};
    // 20 by 40 pixels of kitty's protocol, two by two cells; then a sixel picture.
    const std::string pixels((20 * 40 * 3 + 2) / 3 * 4, 'A');
    EXPECT_EQ(session.ask("\r\n \x1B_Ga=T,f=24,s=20,v=40,i=7;" + pixels + "\x1B\\"), "\x1B_Gi=7;OK\x1B\\");
    ASSERT_EQ(session.terminal.images().placements().size(), 1U);
    EXPECT_EQ(session.terminal.images().placements()[0].row, 1);
    EXPECT_EQ(session.terminal.images().placements()[0].column, 1);
    EXPECT_EQ(session.terminal.buffer().y(), 2);
    session.terminal.feed("\x1BPq#1;2;100;0;0~~~\x1B\\");
    EXPECT_EQ(session.terminal.images().placements().size(), 2U);
    session.terminal.feed(std::string(600, '\n') + "\x1B_Ga=q,i=1;\x1B\\");
    EXPECT_TRUE(session.terminal.images().placements().empty());
    session.terminal.feed("\x1BPq~\x1B\\\x1B[2J");
    EXPECT_TRUE(session.terminal.images().placements().empty());
}

TEST(Terminal, KeepsToItsOptionsWithinBounds) {
    Session session({.scrollback = std::numeric_limits<int>::max(), .tabStopWidth = 4});
    session.terminal.resize(100, 30);
    EXPECT_EQ(session.terminal.options().scrollback, 10'000'000);
    session.terminal.feed("\t");
    EXPECT_EQ(session.terminal.buffer().x(), 4);
    session.terminal.feed("\x1B[?5W\t");
    EXPECT_EQ(session.terminal.buffer().x(), 8) << "DECST8C is every eight columns whatever the option";
}

TEST(Terminal, HasTheColoursOfItsOptionsBeforeAnyThemeIsAskedFor) {
    using enum Ansi256PaletteStrategy;
    EXPECT_EQ(Session().terminal.colors().color(231), makePalette(base16Lab, BaseColors::xterm())[231]);
    for (const auto strategy : {xterm, base16Lab, base16LabHarmonious}) {
        const Session session({.ansi256PaletteStrategy = strategy});
        const Palette palette = makePalette(strategy, BaseColors::xterm());
        for (int index = 0; index < ColorTable::paletteSize; ++index) {
            ASSERT_EQ(session.terminal.colors().color(index), palette[static_cast<std::size_t>(index)]) << index;
        }
    }
}

TEST(Terminal, EndsSynchronizedOutputWhenTheTimeIsOver) {
    Session session;
    session.terminal.feed("\x1B[?2026h");
    EXPECT_TRUE(session.terminal.modes().synchronizedOutput);
    session.terminal.synchronizedOutputTimedOut();
    session.terminal.synchronizedOutputTimedOut();
    EXPECT_EQ(session.host.calls, (std::vector<std::string>{"watchdog", "hold", "release"}));
}

TEST(Terminal, KeepsTextAndAttributesThroughAResizeThereAndBack) {
    TerminalOptions options;
    options.scrollback = 10'000;
    Session session(options);
    std::mt19937 random(7);
    for (int line = 0; line < 300; ++line) {
        std::string text;
        for (auto words = random() % 40; words > 0; --words) {
            text += "\x1B[3" + std::to_string(random() % 8) + "m" + (random() % 5 == 0 ? "漢字" : "word ");
        }
        session.terminal.feed(text + "\x1B[m\r\n");
    }
    const std::string before = describe(session.terminal, true);
    for (const int cols : {120, 33, 7, 80}) {
        session.terminal.resize(cols, 25);
    }
    EXPECT_EQ(describe(session.terminal, true), before);
}

TEST(Terminal, KeepsTheNewestOfWhatANarrowWidthMakesTooLong) {
    std::mt19937 random(11);
    for (int round = 0; round < 60; ++round) {
        std::string text;
        for (int line = 0; line < 60; ++line) {
            // One makes more rows of few columns than there is room for.
            for (std::size_t n = line == 55 ? 200 + random() % 150 : random() % 40; n > 0; --n) {
                text += random() % 5 == 0 ? "\u6f22" : std::string(1, static_cast<char>('a' + random() % 26));
            }
            text += random() % 9 == 0 ? "\x1B#6\r\n" : "\r\n";
        }
        const int cols = 1 + static_cast<int>(random() % 12);
        const int rows = 2 + static_cast<int>(random() % 8);
        const auto rowsAfter = [&](int scrollback) {
            RecordingHost host;
            Terminal terminal(host, {.cols = 16, .rows = 4, .scrollback = scrollback});
            terminal.feed(text);
            terminal.resize(cols, rows);
            std::vector<std::string> shown;
            const Buffer& buffer = terminal.buffer();
            for (int line = std::max(buffer.yBase() + buffer.rows() - 30, 0); line < buffer.yBase() + buffer.rows();
                 ++line) {
                shown.push_back(buffer.lineAt(line).translateToString(buffer.cellArena(), true));
            }
            shown.push_back(std::to_string(buffer.x()) + "," + std::to_string(buffer.y()));
            return shown;
        };
        // With room for everything nothing is left out.
        EXPECT_EQ(rowsAfter(40), rowsAfter(100'000)) << "round " << round << ", " << cols << " by " << rows;
    }
}

/// Lines exchange what they have where the margins are most of the screen, and copy it where they are not.
TEST(Terminal, MovesLinesBetweenMarginsTheSameHoweverWideTheScreenIs) {
    std::mt19937 random(12);
    const auto upTo = [&random](int most) { return 1 + static_cast<int>(random() % static_cast<unsigned>(most)); };
    const auto place = [](int row, int col) { return "\x1B[" + std::to_string(row) + ";" + std::to_string(col) + "H"; };
    for (int round = 0; round < 300; ++round) {
        std::string text;
        for (int row = 1; row <= 8; ++row) {
            const bool isDouble = upTo(5) == 1;
            text +=
                place(row, 1) + (upTo(4) == 1 ? "\x1B]133;A\a" : "") + place(row, upTo(2)) + (isDouble ? "\x1B#6" : "");
            for (int left = isDouble ? 12 : upTo(28); left > 1; left -= 2) {
                const int kind = upTo(4);
                text += "\x1B]8;;" + std::string(kind == 1 ? "a:" + std::to_string(row) : "") + "\a" +
                        (kind == 2      ? std::string("xy")
                         : upTo(9) == 1 ? std::string("z\u0301 ")
                                        : "\u6f22");
            }
        }
        text += "\x1B[?69h\x1B[3;28s\x1B[2;7r";
        for (int step = upTo(5); step > 0; --step) {
            const std::vector<std::string> moves = {"[2S", "[S", "[T", "[3T", "[2L", "[M", "M", "D", "E", "6", "9"};
            text += "\x1B[4" + std::to_string(upTo(9)) + "m" + place(1 + upTo(6), upTo(3) == 1 ? 28 : 2 + upTo(2)) +
                    "\x1B" + moves[static_cast<std::size_t>(upTo(11) - 1)];
        }
        RecordingHost host;
        Terminal narrow(host, {.cols = 30, .rows = 8});
        Terminal wide(host, {.cols = 60, .rows = 8});
        narrow.feed(text);
        wide.feed(text);
        for (int row = 0; row < 8; ++row) {
            const BufferLine& line = narrow.buffer().line(row);
            const BufferLine& other = wide.buffer().line(row);
            EXPECT_EQ(line.semanticMarks(), other.semanticMarks()) << "round " << round << ", row " << row;
            EXPECT_EQ(line.renderMode(), other.renderMode()) << "round " << round << ", row " << row;
            for (int col = 0; col < 30; ++col) {
                ASSERT_EQ(narrow.arena().unpack(line[col]), wide.arena().unpack(other[col]))
                    << "round " << round << ", row " << row << ", column " << col;
            }
        }
    }
}

TEST(Terminal, StaysWithinItsBoundsOnHostileInput) {
    struct Case {
        const char* label;
        std::string bytes;
    };
    const auto repeated = [](int count, const std::function<std::string(int)>& make) {
        std::string all;
        for (int i = 0; i < count; ++i) {
            all += make(i);
        }
        return all;
    };
    const auto same = [&](int count, const std::string& text) { return repeated(count, [&](int) { return text; }); };
    const std::vector<Case> cases = {
        {"repeats", "x" + same(20, "\x1B[65535b")},
        {"huge counts", same(200, "\x1B[65535@\x1B[65535P\x1B[65535L\x1B[65535M\x1B[65535S\x1B[65535T\x1B[65535X")},
        {"tabs", same(500, "\x1B[65535I\x1B[65535Z")},
        {"backwards around the screen", "\x1B[?45;1045h" + same(200, "\x1B[65535D")},
        {"rectangles", same(50, "\x1B[65;1;1;65535;65535$x\x1B[1;1;65535;65535;1;1;1;1$v\x1B[1;1;65535;65535;1$r")},
        {"columns", same(100, "\x1B[65535'}\x1B[65535'~")},
        {"parameters", same(200, "\x1B[" + same(500, "1;") + "m")},
        {"collected bytes", "\x1B[" + std::string(100'000, '!') + "m\x1B" + std::string(100'000, '#') + "8"},
        {"title stack", same(5000, "\x1B[22t")},
        {"SGR stack", same(5000, "\x1B[#{")},
        {"keyboard stack", same(5000, "\x1B[>31u")},
        {"long cluster", "a" + same(20'000, "\xCC\x81")},
        {"joined emoji", same(5000, "👩\xE2\x80\x8D")},
        {"links", repeated(5000, [](int i) { return "\x1B]8;;http://" + std::to_string(i) + "\x07x"; })},
        {"long link", "\x1B]8;;http://" + std::string(100'000, 'a') + "\x07x"},
        {"nested resets", same(
                              300, "\x1B"
                                   "c\x1B[!p\x1B[?1049h")},
        {"screens", same(1000, "\x1B[?1049h\x1B[?1049l\x1B[?47h\x1B[?1047l")},
        {"modes",
         repeated(3000, [](int i) { return "\x1B[?" + std::to_string(i) + "s\x1B[?" + std::to_string(i) + "h"; })},
        {"unfinished strings", "\x1B]2;" + std::string(200'000, 'a') + "\x1B_" + std::string(200'000, 'b') + "\x1BPq"},
    };
    for (const Case& test : cases) {
        Session session;
        const auto start = Clock::now();
        session.terminal.feed(test.bytes);
        session.terminal.feed("\x18\x1B\\\x1B"
                              "cstill here");
        const std::chrono::duration<double> took = Clock::now() - start;
        EXPECT_EQ(session.terminal.lineText(0), "still here") << test.label;
        EXPECT_LT(took.count(), 5.0) << test.label;
        EXPECT_LT(session.terminal.arena().linkCount(), 6000U) << test.label;
        EXPECT_LT(session.terminal.title().size(), Terminal::maximumTextBytes + 1) << test.label;
    }
}

/// A colour of its own for each number.
Color colorOf(std::uint32_t number) {
    return Color::fromRaw(1U << 24 | (number * 0x9E3779 & 0xFFFFFF));
}

/// What has become of a cell's two colours, which its character names: nothing, coarser ones, or the default ones.
enum class Seen : std::uint8_t { exact, coarse, none, wrong };
Seen seen(const CellArena& arena, PackedCell cell) {
    const auto isNear = [](Color a, Color b) {
        const auto channel = [](Color some, int shift) { return static_cast<int>(some.value() >> shift & 0xFF); };
        return a.kind() == b.kind() && std::abs(channel(a, 16) - channel(b, 16)) <= 64 &&
               std::abs(channel(a, 8) - channel(b, 8)) <= 64 && std::abs(channel(a, 0) - channel(b, 0)) <= 64;
    };
    const Attribute attribute = arena.attributeOf(cell);
    const std::uint32_t number = cell.content() - 0xF0000;
    const Color fg = colorOf(number * 2);
    const Color bg = colorOf(number * 2 + 1);
    return attribute.fg == fg && attribute.bg == bg               ? Seen::exact
           : isNear(attribute.fg, fg) && isNear(attribute.bg, bg) ? Seen::coarse
           : attribute.fg == Color() && attribute.bg == Color()   ? Seen::none
                                                                  : Seen::wrong;
}

/// Cells with two colours each that name their numbers.
std::string pictureOf(std::uint32_t number, int columns, int rows) {
    const auto sgr = [](Color color, const char* ground) {
        return ground + std::to_string(color.value() >> 16) + ";" + std::to_string(color.value() >> 8 & 0xFF) + ";" +
               std::to_string(color.value() & 0xFF) + "m";
    };
    std::string text;
    for (int cell = 0; cell < columns * rows; ++cell, ++number) {
        text += (cell % columns == 0 ? "\x1B[m\r\n\x1B[" : "\x1B[") + sgr(colorOf(number * 2), "38;2;") + "\x1B[" +
                sgr(colorOf(number * 2 + 1), "48;2;");
        unicode::appendUtf8(text, 0xF0000 + number);
    }
    return text;
}

/// Pictures of cells with two true colours each, more than there are numbers for.
TEST(Terminal, TakesColoursFromItsOldestLinesWhenThereAreTooMany) {
    constexpr int columns = 120;
    constexpr int rows = 45;
    Session session({.cols = columns, .rows = rows, .scrollback = 700});
    Terminal& terminal = session.terminal;
    struct Drawn {
        std::uint64_t generation;
        std::vector<Attribute> attributes;
    };
    std::map<std::uint64_t, Drawn> drawn;
    std::uint32_t number = 0;
    for (int picture = 0; picture < 24; ++picture) {
        if (picture == 16) {
            terminal.resize(columns, rows + 20);
            terminal.feed("\x1B[H\x1B[J\x1B[?1049h");
        } else if (picture == 17) {
            terminal.feed("\x1B[?1049l");
            terminal.resize(columns + 1, rows);
        }
        terminal.feed(pictureOf(number, columns, rows));
        number += columns * rows;
        std::array<int, 4> counts{};
        int last = 0;
        for (int index = 0; index < terminal.buffer().lineCount(); ++index) {
            const BufferLine& line = terminal.buffer().lineAt(index);
            Drawn now{line.generation(), {}};
            for (const PackedCell cell : line.usedCells()) {
                now.attributes.push_back(terminal.arena().attributeOf(cell));
                if (cell.content() >= 0xF0000) {
                    const Seen what = seen(terminal.arena(), cell);
                    ++counts[static_cast<std::size_t>(what)];
                    last = what == Seen::exact ? last : index;
                }
            }
            auto& before = drawn[line.renderIdentity()];
            ASSERT_TRUE(before.generation != now.generation || before.attributes == now.attributes)
                << "line " << index << ", picture " << picture;
            before = std::move(now);
        }
        ASSERT_EQ(counts[static_cast<std::size_t>(Seen::wrong)], 0) << "picture " << picture;
        ASSERT_LT(last, std::max(terminal.buffer().yBase() - 5 * rows, 1)) << "picture " << picture;
        ASSERT_LT(terminal.arena().attributeCount(), CellArena::styleCapacity()) << "picture " << picture;
        if (picture == 19) {
            EXPECT_GT(counts[static_cast<std::size_t>(Seen::exact)], 0xFFFF / 2);
            EXPECT_GT(counts[static_cast<std::size_t>(Seen::coarse)], counts[static_cast<std::size_t>(Seen::none)]);
        }
        // Whatever the screen has, what comes then is shown as it is said.
        terminal.feed("\r\n\x1B[0;4;7;31mX\x1B[m");
        ASSERT_EQ(terminal.attribute(), Attribute()) << "picture " << picture;
        const Buffer& buffer = terminal.buffer();
        const PackedCell cell = buffer.line(buffer.y())[0];
        ASSERT_EQ(terminal.arena().attributeOf(cell).toSgr(), "0;4;7;31") << "picture " << picture;
    }
}

/// More links than there are numbers for, each on a cell that names it.
TEST(Terminal, TakesLinksFromItsOldestLinesWhenThereAreTooMany) {
    Session session({.cols = 120, .rows = 30, .scrollback = 2000});
    Terminal& terminal = session.terminal;
    constexpr std::uint32_t names = 60'000;
    std::string text = "\x1B]8;;of:all\x1B\\!";
    for (std::uint32_t i = 0; i < 100'000; ++i) {
        text += "\x1B]8;;" + std::to_string(i / names) + ":" + std::to_string(i % names) + "\x1B\\";
        unicode::appendUtf8(text, 0xF0000 + i % names);
    }
    terminal.feed(text + "\x1B]8;;of:all\x1B\\!");
    const Buffer& buffer = terminal.buffer();
    std::array<int, 2> counts{};
    bool isLinked = false;
    for (int index = 0; index < buffer.lineCount(); ++index) {
        for (const PackedCell cell : buffer.lineAt(index).usedCells()) {
            ASSERT_FALSE(isLinked && cell.payload() == 0) << "line " << index << " has lost links, older ones have not";
            isLinked = cell.payload() != 0 && cell.content() != '!';
            ++counts[isLinked ? 1 : 0];
            if (isLinked) {
                const std::string end = ":" + std::to_string(cell.content() - 0xF0000);
                ASSERT_TRUE(terminal.arena().link(cell.payload()).ends_with(end)) << "line " << index;
            }
        }
    }
    EXPECT_GT(counts[1], 0xFFFF / 2);
    EXPECT_GT(counts[0], 0xFFFF / 8);
    EXPECT_TRUE(terminal.arena().link(buffer.line(buffer.y())[buffer.x() - 1].payload()).ends_with("of:all"));
}

/// The colours of such cells say which image they show.
TEST(Terminal, ShowsNoOtherImagesWhenColoursAreTakenFromItsOldestLines) {
    struct Row {
        const char* label;
        std::uint32_t images;
        bool keepsAll;
    };
    for (const Row& row : std::to_array<Row>({{"some", 3000, true}, {"too many", 20'000, false}})) {
        Session session({.cols = 100, .rows = 40, .scrollback = 1500});
        Terminal& terminal = session.terminal;
        const auto idOf = [](std::uint32_t i) { return 0x010203 + i * 0x21; };
        std::string text;
        for (std::uint32_t i = 0; i < row.images; ++i) {
            const std::uint32_t id = idOf(i);
            text += "\x1B[38;2;" + std::to_string(id >> 16) + ";" + std::to_string(id >> 8 & 0xFF) + ";" +
                    std::to_string(id & 0xFF) + "m\U0010EEEE\u0305\u0305";
        }
        terminal.feed(text + "\x1B[m\r\n");
        for (std::uint32_t picture = 0; picture < 20; ++picture) {
            terminal.feed(pictureOf(picture * 4000, 100, 40));
        }
        std::uint32_t shown = 0;
        for (int index = 0; index < terminal.buffer().lineCount(); ++index) {
            for (const PlaceholderRun& run : placeholdersIn(terminal.buffer().lineAt(index), terminal.arena())) {
                ++shown;
                const auto place = static_cast<std::uint32_t>(index * 100 + run.column);
                ASSERT_TRUE(run.imageId == idOf(place) && run.count == 1) << row.label << ", image " << place;
            }
        }
        EXPECT_TRUE(row.keepsAll ? shown == row.images : shown > 1000 && shown < row.images) << row.label << shown;
    }
}

TEST(Terminal, TakesAnyNoiseAndAnySize) {
    std::mt19937 random(99);
    const std::vector<std::string> pieces = {
        "\x1B[",
        "\x1B]8;;x\x07",
        "\x1B]133;A\x07",
        "\x1B#",
        "漢",
        "é",
        "👩‍👧",
        "\r\n",
        "\t",
        "\x08",
        "\x1B(0",
        "\x1BM",
        "\x1B"
        "D",
        "\x1B"
        "7",
        "\x1B"
        "8",
        "\x1B[?69h",
        "\x1B[?6h",
        "\x1B[?1049h",
        "\x1B[?1049l",
        "\x1B[4h",
        "\x1B[?7l",
        "\x1B[?7h",
        "\x1B[?45h",
        "\x1B"
        "6",
        "\x1B"
        "9",
        "\x1B#6",
        "\x1B#5",
        "abcdefghij",
        "\x1B[1\"q",
        "\x1B"
        "V"};
    const std::string finals = "@ABCDEFGHIJKLMPSTXZ`abdefghlmnrstuvxyz{}~";
    for (int round = 0; round < 60; ++round) {
        TerminalOptions options;
        options.cols = 1 + static_cast<int>(random() % 12);
        options.rows = 1 + static_cast<int>(random() % 6);
        options.scrollback = static_cast<int>(random() % 10);
        Session session(options);
        for (int step = 0; step < 400; ++step) {
            std::string bytes = pieces[random() % pieces.size()];
            if (random() % 2 == 0) {
                bytes = "\x1B[";
                for (auto count = random() % 6; count > 0; --count) {
                    bytes += std::to_string(random() % 14) + ";";
                }
                bytes += std::string(random() % 4 == 0 ? "$" : random() % 8 == 0 ? "'" : "");
                bytes += finals[random() % finals.size()];
            }
            session.terminal.feed(bytes);
            if (random() % 40 == 0) {
                session.terminal.resize(1 + static_cast<int>(random() % 12), 1 + static_cast<int>(random() % 6));
            }
            const Buffer& buffer = session.terminal.buffer();
            ASSERT_LT(buffer.x(), buffer.cols());
            ASSERT_LT(buffer.y(), buffer.rows());
            ASSERT_EQ(buffer.lineCount(), buffer.yBase() + buffer.rows());
            for (int row = 0; row < buffer.rows(); ++row) {
                const BufferLine& line = buffer.line(row);
                ASSERT_EQ(line.size(), buffer.cols());
                for (int col = 0; col < line.size(); ++col) {
                    ASSERT_TRUE(line[col].hasValidEncoding());
                    const bool isSpacer = col + 1 < line.size() && line[col + 1].isSpacer();
                    ASSERT_EQ(line[col].isWide(), isSpacer)
                        << "round " << round << ", step " << step << ", after " << escaped(bytes) << "\n"
                        << describe(session.terminal);
                }
            }
        }
    }
}

/// Whole sequences and runs have ways of their own; a byte at a time has none of them.
TEST(Terminal, ShowsTheSameByteForByte) {
    std::mt19937 random(20241121);
    const auto number = [&random](unsigned most) { return std::to_string(random() % (most + 1)); };
    const std::vector<std::function<std::string()>> pieces = {
        [&] { return "\x1B[" + number(110) + "m"; },
        [&] { return "\x1B[" + number(60) + ";" + (random() % 4 == 0 ? "" : number(60)) + "m"; },
        [&] {
            return "\x1B[" + std::string(random() % 2 == 0 ? "38" : "48") + ";5;" + number(300) +
                   (random() % 4 == 0 ? ";1m" : "m");
        },
        [&] { return "\x1B[" + number(1) + ";48;2;" + number(300) + ";" + number(255) + ";" + number(255) + "m"; },
        [&] {
            const std::string green = random() % 5 == 0 ? "" : number(random() % 4 == 0 ? 70000 : 255);
            return "\x1B[" + std::string(random() % 2 == 0 ? "38" : "48") + ";2;" + number(300) + ";" + green + ";" +
                   number(255) + (random() % 4 == 0 ? ";1m" : "m");
        },
        [&] { return "\x1B" + std::string(1, "78MDE=>\\"[random() % 8]) + (random() % 3 == 0 ? "\x7F" : ""); },
        [] { return "\x1B(0qx\x1B(B"s; },
        [&] { return "\x1B[4:" + number(6) + ";58:2::1:2:" + number(255) + "m\x1B[;" + number(9) + ";m"; },
        [&] { return "\x1B[38;" + number(6) + "m\x1B[48;2;" + number(9) + "m\x1B[m"; },
        [&] { return "\x1B[" + number(12) + ";" + number(70000) + "H"; },
        [&] { return "\x1B[" + number(99999) + "C\x1B[0000000000" + number(9) + "D"; },
        [&] { return "\x1B[?" + number(7) + (random() % 2 == 0 ? "h" : "l") + "\x1B[?7;25h"; },
        [&] { return "\x1B[" + number(3) + std::string(1, "JKLMPX@ST"[random() % 9]); },
        [&] { return std::string(random() % 50, static_cast<char>('a' + random() % 26)); },
        [&] { return unicode::toUtf8(std::u32string(random() % 30, U'漢')) + "\r\n"; },
        [] { return "éàü漢字カナ😀👍🏽e\u0301❤\uFE0F한국어─│"s; },
        [] {
            return "\xE6\xBC"
                   "a\xFF\xF0\x9F\x98"s;
        }};
    for (int round = 0; round < 150; ++round) {
        TerminalOptions options;
        options.cols = 5 + static_cast<int>(random() % 40);
        options.rows = 12;
        Session whole(options);
        Session bytes(options);
        std::string text;
        for (int count = 0; count < 40; ++count) {
            text += pieces[random() % pieces.size()]();
        }
        whole.terminal.feed(text);
        for (const char& byte : text) {
            bytes.terminal.feed({&byte, 1});
        }
        ASSERT_EQ(describe(whole.terminal, true), describe(bytes.terminal, true)) << escaped(text);
        ASSERT_EQ(whole.terminal.attribute(), bytes.terminal.attribute()) << escaped(text);
    }
}

} // namespace
} // namespace term
