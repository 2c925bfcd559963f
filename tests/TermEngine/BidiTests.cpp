#include "TermEngine/Bidi.h"
#include "TermEngine/Terminal.h"
#include "TermEngine/Unicode.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace term {
namespace {

std::vector<std::string> fieldsOf(const std::string& line) {
    std::vector<std::string> fields;
    std::istringstream stream(line);
    for (std::string field; std::getline(stream, field, ';');) {
        fields.push_back(field);
    }
    return fields;
}

/// The text, the direction, the paragraph's level, the levels, the order: BidiCharacterTest.txt says how.
TEST(Bidi, ResolvesAndOrdersAsTheStandardDoes) {
    std::ifstream file(TERM_TEST_DATA "/BidiCharacterTest.txt");
    int cases = 0;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == '#') {
            continue;
        }
        const std::vector<std::string> fields = fieldsOf(line);
        std::u32string text;
        std::istringstream scalars(fields[0]);
        for (std::string word; scalars >> word;) {
            text.push_back(static_cast<char32_t>(std::stoul(word, nullptr, 16)));
        }
        const int wanted = std::stoi(fields[1]);
        bidi::Levels levels =
            bidi::levelsOf(text, wanted == 2 ? std::nullopt : std::optional(static_cast<BidiDirection>(wanted)));
        EXPECT_EQ(levels.paragraph, std::stoi(fields[2])) << line;
        bidi::resetTrailing(levels.scalars, text, levels.paragraph);
        std::string given;
        std::vector<std::uint8_t> kept;
        std::vector<std::size_t> indices;
        std::istringstream expected(fields[3]);
        std::size_t index = 0;
        for (std::string level; expected >> level; ++index) {
            if (level != "x") {
                kept.push_back(levels.scalars[index]);
                indices.push_back(index);
            }
            given += (index == 0 ? "" : " ") + (level == "x" ? level : std::to_string(levels.scalars[index]));
        }
        EXPECT_EQ(given, fields[3]) << line;
        std::string order;
        for (const int at : bidi::visualOrder(kept)) {
            order += (order.empty() ? "" : " ") + std::to_string(indices[static_cast<std::size_t>(at)]);
        }
        EXPECT_EQ(order, fields.size() > 4 ? fields[4] : "") << line;
        ++cases;
    }
    EXPECT_GT(cases, 1500);
}

class Silent final : public TerminalDelegate {
public:
    void send(Terminal&, Bytes) override {}
};

/// The row as a person sees it.
std::string shown(const Terminal& terminal, int row) {
    const Buffer& buffer = terminal.buffer();
    const PresentedRow presented = terminal.presentedRow(row);
    const auto boxes = terminal.bidiState(row).mirrorsBoxDrawing ? bidi::BoxDrawing::mirrored : bidi::BoxDrawing::kept;
    std::string text;
    for (int i = 0; i < buffer.cols(); ++i) {
        const int col = presented.columns.empty() ? i : presented.columns[static_cast<std::size_t>(i)];
        const PackedCell cell = buffer.line(row)[col];
        char32_t memory = 0;
        const auto scalars = buffer.cellArena().scalarValues(cell, memory);
        char32_t scalar = scalars.empty() ? U' ' : scalars.front();
        if (!presented.columns.empty() && presented.isRightToLeft[static_cast<std::size_t>(col)]) {
            scalar = bidi::mirrored(scalar, boxes);
        }
        if (!cell.isSpacer()) {
            unicode::appendUtf8(text, scalar);
        }
    }
    return text;
}

TEST(Bidi, PresentsRowsWithinTheirParagraph) {
    struct Case {
        const char* label;
        const char* bytes;
        std::vector<std::string> rows; ///< of eight columns
    };
    const std::vector<Case> cases = {
        {"no such text", "abc", {"abc     "}},
        {"a word", "ab אבג", {"ab גבא  "}},
        {"numbers and brackets", "א(12)ב", {"ב(12)א  "}},
        {"a wide character between", "א漢ב", {"א漢ב    "}},
        {"SCP: the line and the next ones", "x\r\n\x1B[2 kab\r\ncd", {"x       ", "      ab", "      cd"}},
        {"SPD: the screen", "ab\r\ncd\x1B[3 S", {"      ab", "      cd"}},
        {"SPD back", "ab\x1B[3 S\x1B[0 S", {"ab      "}},
        {"found by itself (2501)", "\x1B[?2501hאב c\r\nab א", {"    c בא", "ab א    "}},
        {"a paragraph of two rows", "\x1B[?2501habcdefghאב", {"abcdefgh", "בא      "}},
        {"boxes (2500)", "\x1B[?2500h\x1B[2 kא┌─", {"     ─┐א"}},
        {"RIS",
         "\x1B[2 k\x1B[?2501h\x1B"
         "cab",
         {"ab      "}},
    };
    for (const Case& test : cases) {
        Silent host;
        Terminal terminal(host, {.cols = 8, .rows = 3});
        terminal.feed(test.bytes);
        for (std::size_t row = 0; row < test.rows.size(); ++row) {
            EXPECT_EQ(shown(terminal, static_cast<int>(row)), test.rows[row]) << test.label;
        }
    }
    Silent host;
    TerminalOptions options{.cols = 4, .rows = 4};
    options.maximumBidiParagraphRows = 2;
    options.initialBidiState.paragraph = BidiDirection::rightToLeft;
    Terminal terminal(host, options);
    terminal.feed("אבגדה\r\nוזחט");
    EXPECT_EQ(shown(terminal, 0), "דגבא");
    EXPECT_EQ(shown(terminal, 1), "   ה");
    terminal.feed("\x1B[H\x1B[Jאבגדהוזחט");
    EXPECT_EQ(shown(terminal, 0), "אבגד") << "too long a paragraph";
}

} // namespace
} // namespace term
