#include "TermEngine/Buffer.h"
#include "TermEngine/Diagnostics.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

namespace term {
namespace {

Attribute styled(Color fg, Color bg = {}) {
    Attribute made;
    made.fg = fg;
    made.bg = bg;
    return made;
}

TEST(PackedCell, ComesBackAsItWasPacked) {
    Attribute full = styled(Color::rgb(1, 2, 3), Color::palette(200));
    full.style = CharacterStyle(0xFF);
    full.underlineStyle = UnderlineStyle::curly;
    full.underlineColor = Color::inverted();
    full.overline = true;
    const std::vector<CharData> cells = {
        {},
        {.code = 'a', .attribute = full},
        {.code = 0x10FFFF, .payload = 0xFFFF, .semanticContentCode = SemanticContent::output, .isProtected = true},
        {.code = U'漢', .width = 2, .widthStateCode = WidthState::wide},
        {.code = 0, .width = 0, .widthStateCode = WidthState::spacer, .attribute = full},
        {.code = 'e', .graphemeScalarValues = U"e\u0301", .attribute = full},
        {.attribute = styled({}, Color::palette(4))},
        {.attribute = styled({}, Color::rgb(9, 8, 7))},
        {.attribute = styled(Color::palette(1), Color::palette(4))},
    };
    CellArena arena;
    for (const CharData& cell : cells) {
        const std::optional<PackedCell> packed = arena.pack(cell);
        ASSERT_TRUE(packed.has_value());
        EXPECT_TRUE(packed->hasValidEncoding());
        EXPECT_EQ(arena.unpack(*packed), cell) << cell.code;
    }
}

TEST(PackedCell, HasTheEncodingThatIsWrittenDown) {
    CellArena arena;
    const auto packed = [&](const CharData& cell) { return arena.pack(cell).value_or(PackedCell(~0ULL)); };
    EXPECT_EQ(packed({.attribute = styled({}, Color::palette(4))}).rawValue, 2U | 4U << 2);
    EXPECT_EQ(packed({.attribute = styled({}, Color::rgb(1, 2, 3))}).rawValue, 3U | 0x010203U << 2);
    EXPECT_EQ(packed({.code = 'A'}).rawValue, std::uint64_t{'A'} << 2);
    EXPECT_EQ(packed({.code = 'A', .isProtected = true}).rawValue, std::uint64_t{'A'} << 2 | 1ULL << 44);
    EXPECT_FALSE(arena.pack({.code = 0xD800}).has_value());
    EXPECT_FALSE(arena.pack({.code = 0x110000}).has_value());
    EXPECT_FALSE(arena.pack({.code = 'a', .semanticContentCode = static_cast<SemanticContent>(7)}).has_value());
    EXPECT_EQ(arena.unpack(packed({.graphemeScalarValues = {char32_t{0xDC00}, U'a'}})).code, 0xFFFD);
    const std::vector<std::uint64_t> invalid = {
        std::uint64_t{0xD800} << 2, std::uint64_t{0x110000} << 2, 1, 2U | 256U << 2, 7ULL << 61};
    for (const std::uint64_t raw : invalid) {
        EXPECT_FALSE(PackedCell(raw).hasValidEncoding()) << raw;
    }
}

TEST(Attribute, WritesItselfAsSgr) {
    Attribute attribute = styled(Color::palette(9), Color::palette(3));
    attribute.style = CharacterStyle(0x1F);
    EXPECT_EQ(attribute.toSgr(), "0;1;4;5;7;8;91;43");
    EXPECT_EQ(styled(Color::rgb(1, 2, 3), Color::palette(100)).toSgr(), "0;38;2;1;2;3;48;5;100");
    EXPECT_EQ(styled(Color::palette(7), Color::palette(15)).toSgr(), "0;37;107");
}

TEST(CellArena, GivesNumbersBackThatNoCellUses) {
    auto arena = std::make_shared<CellArena>();
    Buffer buffer(arena, {.cols = 80, .rows = 25, .scrollback = 100, .hasScrollback = true});
    arena->setRoots([&](CellArena::Marker& marker) { buffer.mark(marker); });
    for (int i = 0; i < 1'000'000; ++i) {
        const auto byte = [i](int shift) { return static_cast<std::uint8_t>(i >> shift); };
        const Pen pen{
            std::uint64_t{arena->intern(styled(Color::rgb(byte(16), byte(8), byte(0))))} << PackedCell::attributeShift,
            {}};
        const std::uint32_t cluster = arena->intern(std::u32string{U'a', U'\u0301', char32_t(0x10000 + i)});
        ASSERT_NE(pen.bits, 0U);
        ASSERT_NE(cluster, 0U);
        buffer.insertCharacter(PackedCell::make(PackedCell::Kind::cluster, cluster, pen.bits), pen);
        if (i % 1000 == 0) {
            ASSERT_NE(arena->internLink(";http://" + std::to_string(i)), 0);
        }
    }
    EXPECT_LT(arena->graphemeCount(), 40'000U);
    // The last column was written last, and the cursor waits there.
    const PackedCell last = buffer.line(buffer.y())[buffer.x()];
    EXPECT_EQ(arena->attributeOf(last).fg, Color::rgb(999'999 >> 16, (999'999 >> 8) & 0xFF, 999'999 & 0xFF));
    EXPECT_EQ(arena->grapheme(last.content()).back(), char32_t(0x10000 + 999'999));
}

TEST(CellArena, KeepsWhatIsWrittenOverACoarseLineThatCameBack) {
    constexpr int cols = 9000;
    auto arena = std::make_shared<CellArena>();
    Buffer buffer(arena, {.cols = cols, .rows = 5, .scrollback = 40, .hasScrollback = true});
    arena->setRoots([&](CellArena::Marker& marker) { buffer.mark(marker); });
    arena->setCoarsening([&](CellArena::Coarsening& coarsening) { buffer.coarsen(coarsening); });
    const auto write = [&](char32_t scalar, Color color) {
        const Pen pen{std::uint64_t{arena->intern(styled(color))} << PackedCell::attributeShift, {}};
        buffer.insertCharacter(PackedCell::make(PackedCell::Kind::scalar, scalar, pen.bits), pen);
    };
    std::uint32_t number = 0;
    const auto writeMany = [&] {
        for (int i = 0; i < 14 * cols; ++i) {
            write('x', Color::fromRaw(1U << 24 | ++number));
        }
    };
    // The screen alone has what is kept at most.
    writeMany();
    buffer.resize(cols, 7);
    buffer.setCursor(0, 0);
    write('!', Color::palette(9));
    buffer.setCursor(0, 6);
    buffer.resize(cols, 5);
    writeMany();
    int found = 0;
    for (int index = 0; index < buffer.lineCount(); ++index) {
        if (const PackedCell cell = buffer.lineAt(index)[0]; cell.content() == '!') {
            ++found;
            EXPECT_EQ(arena->attributeOf(cell).fg, Color::palette(9));
        }
    }
    EXPECT_EQ(found, 1);
}

TEST(CellArena, FindsAllAttributesOfAFullTableAndLeavesTheDefaultOneToOthers) {
    CellArena arena;
    // Every other one differs from the one before it in its second word alone.
    const auto nth = [](std::uint32_t i) {
        Attribute made = styled(Color::rgb(0, static_cast<std::uint8_t>(i >> 9), static_cast<std::uint8_t>(i >> 1)));
        made.underlineColor = i % 2 == 0 ? std::optional<Color>() : Color::rgb(0, 0, 7);
        return made;
    };
    // So many do not go without some that belong to the same place.
    for (int round = 0; round < 2; ++round) {
        for (std::uint32_t i = 0; i < 0xFFFF; ++i) {
            ASSERT_EQ(arena.intern(nth(i)), i + 1);
            ASSERT_EQ(arena.attribute(static_cast<std::uint16_t>(i + 1)), nth(i));
        }
        EXPECT_EQ(arena.intern(styled(Color::palette(1))), 0);
    }
}

TEST(CellArena, GivesSnapshotsThatKeepTheirMeaning) {
    CellArena arena;
    const auto cell = [&arena](int i) {
        const std::u32string text = {U'a', char32_t(0x300 + i % 64), char32_t(0x10000 + i)};
        return arena.pack(
            {.code = 'a',
             .graphemeScalarValues = text,
             .payload = arena.internLink(std::to_string(i)),
             .attribute = styled(Color::rgb(1, static_cast<std::uint8_t>(i >> 8), static_cast<std::uint8_t>(i)))});
    };
    std::vector<PackedCell> cells;
    for (int i = 0; i < 300; ++i) {
        cells.push_back(cell(i).value_or(PackedCell()));
    }
    const auto first = CellArena::snapshotOf(arena);
    EXPECT_TRUE(arena.preservesEncoding(*first));
    const CharData before = first->unpack(cells[7]);
    const PackedCell next = cell(300).value_or(PackedCell());
    EXPECT_EQ(CellArena::snapshotOf(arena, first), first) << "a new value alone takes no copy";
    EXPECT_EQ(first->unpack(next), arena.unpack(next));

    // A sweep gives the numbers of all others to what comes next.
    arena.setRoots([&](CellArena::Marker& marker) { marker.mark(std::span(cells).first(1)); });
    arena.sweep();
    for (int i = 1000; i < 1300; ++i) {
        cell(i);
    }
    EXPECT_EQ(first->unpack(cells[7]), before);
    EXPECT_EQ(first->link(cells[7].payload()), "7");
    EXPECT_FALSE(arena.preservesEncoding(*first));
    const auto second = CellArena::snapshotOf(arena, first);
    EXPECT_NE(second, first);
    EXPECT_EQ(second->unpack(cells[0]), first->unpack(cells[0]));
    EXPECT_NE(second->unpack(cells[7]), before);
}

TEST(CellArena, ChangesTheTextOfACellAndNothingElse) {
    CellArena arena;
    ASSERT_EQ(arena.internLink("link"), 1);
    const Attribute blue = styled(Color::palette(1), Color::palette(4));
    const Attribute background = blue.background();
    struct Row {
        const char* label;
        CharData before;
        std::u32string text;
        CharData after;
    };
    for (const Row& row : std::vector<Row>{
             {"another",
              {.code = 'a', .payload = 1, .attribute = blue},
              U"b",
              {.code = 'b', .payload = 1, .attribute = blue}},
             {"a cluster",
              {.code = 'a', .isProtected = true},
              U"e\u0301",
              {.code = 'e', .graphemeScalarValues = U"e\u0301", .isProtected = true}},
             {"of a blank", {.attribute = background}, U"x", {.code = 'x', .attribute = background}},
             {"of a blank in a true colour",
              {.attribute = styled({}, Color::rgb(1, 2, 3))},
              U"x",
              {.code = 'x', .attribute = styled({}, Color::rgb(1, 2, 3))}},
             {"none", {.code = 'a', .attribute = background}, U"", {.attribute = background}},
             {"none, with more than a background", {.code = 'a', .attribute = blue}, U"", {.attribute = blue}}}) {
        const PackedCell changed = arena.replacingContent(arena.pack(row.before).value_or(PackedCell()), row.text);
        EXPECT_TRUE(changed.hasValidEncoding()) << row.label;
        EXPECT_EQ(arena.unpack(changed), row.after) << row.label;
        EXPECT_EQ(changed, arena.pack(row.after)) << row.label;
        CellArena other;
        EXPECT_EQ(other.unpack(other.adopt(changed, arena)).graphemeScalarValues, row.after.graphemeScalarValues);
    }
}

/// Text of one column and two, some of it protected, that may end before the line does.
BufferLine mixedLine(std::mt19937& random) {
    BufferLine line(24, PackedCell::make(PackedCell::Kind::paletteBlank, 3));
    for (int col = 0, end = static_cast<int>(random() % 24); col < end; ++col) {
        const std::uint64_t guard = std::uint64_t{random() % 3 == 0} << PackedCell::protectedShift;
        const auto scalar = static_cast<std::uint32_t>('a' + col);
        if (random() % 2 == 0) {
            PackedCell* const cells = line.write(col++, 2);
            cells[0] = PackedCell::make(PackedCell::Kind::scalar, scalar, guard, WidthState::wide);
            cells[1] = PackedCell::make(PackedCell::Kind::scalar, 0, guard, WidthState::spacer);
            line.noteWide();
        } else {
            line.set(col, PackedCell::make(PackedCell::Kind::scalar, scalar, guard));
        }
    }
    return line;
}

TEST(BufferLine, CopiesWithinItselfAndMovesAsFromAnotherLine) {
    std::mt19937 random(11);
    const auto upTo = [&random](int most) { return static_cast<int>(random() % static_cast<unsigned>(most + 1)); };
    for (int round = 0; round < 3000; ++round) {
        const BufferLine line = mixedLine(random);
        const int len = 1 + upTo(23);
        const int from = upTo(24 - len);
        const int to = upTo(24 - len);
        BufferLine expected(line);
        expected.copyFrom(line, from, to, len);
        BufferLine copied(line);
        copied.copyFrom(copied, from, to, len);
        for (int col = 0; col < 24; ++col) {
            ASSERT_EQ(copied[col], expected[col]) << from << " to " << to << ", " << len << ": " << col;
        }
    }
}

TEST(BufferLine, ErasesAllThatIsNotProtected) {
    std::mt19937 random(12);
    for (int round = 0; round < 3000; ++round) {
        const BufferLine line = mixedLine(random);
        const int first = static_cast<int>(random() % 12);
        const int end = first + static_cast<int>(random() % 12);
        const PackedCell blank = PackedCell::make(PackedCell::Kind::paletteBlank, 1);
        BufferLine expected(line);
        for (int col = first; col < end; ++col) {
            if (!line[col].isProtected()) {
                expected.set(col, blank);
            }
        }
        BufferLine erased(line);
        erased.fillUnprotected(first, end, blank);
        for (int col = 0; col < 24; ++col) {
            ASSERT_EQ(erased[col], expected[col]) << first << " to " << end << ": " << col;
        }
    }
}

TEST(Buffer, ReportsWhatIsUsedPastItsEnds) {
    static std::vector<std::string> messages;
    setDiagnosticSink([](std::string_view message) { messages.emplace_back(message); });
    Buffer buffer(std::make_shared<CellArena>(), {.cols = 4, .rows = 3});
    buffer.line(0).set(3, PackedCell::make(PackedCell::Kind::scalar, 'z'));
    EXPECT_EQ(buffer.line(0)[2], PackedCell());
    EXPECT_EQ(messages.size(), 0U);
    EXPECT_EQ(buffer.line(0)[4].content(), 'z');
    EXPECT_EQ(buffer.line(0)[-1], PackedCell());
    EXPECT_EQ(&buffer.lineAt(99), &buffer.line(2));
    EXPECT_EQ(&buffer.lineAt(-1), &buffer.line(0));
    EXPECT_EQ(
        std::ranges::count(
            messages, "BufferLine: You passed an index out of range, adjusting to prevent crash, but you should debug"),
        2);
    EXPECT_EQ(messages.size(), 4U);
    struct Write {
        const char* label;
        std::function<void(BufferLine&)> act;
        std::string text; ///< of the line, which was "abcd"
    };
    const PackedCell x = PackedCell::make(PackedCell::Kind::scalar, 'x');
    for (const Write& write : std::vector<Write>{
             {"set", [&](BufferLine& line) { line.set(4, x); }, "abcx"},
             {"set before", [&](BufferLine& line) { line.set(-3, x); }, "xbcd"},
             {"replace", [&](BufferLine& line) { line.replace(1'000'000, x); }, "abcx"},
             {"replace before", [&](BufferLine& line) { line.replace(-1, x); }, "xbcd"},
             {"write", [&](BufferLine& line) { std::fill_n(line.write(3, 2), 2, x); }, "abxx"},
             {"write more than there is", [&](BufferLine& line) { std::fill_n(line.write(2, 99), 99, x); }, "xxxx"},
             {"fill", [&](BufferLine& line) { line.fill(3, 9, x); }, "abcx"},
             {"fill before", [&](BufferLine& line) { line.fill(-9, 1, x); }, "xbcd"},
             {"fill behind", [&](BufferLine& line) { line.fill(4, 9, PackedCell()); }, "abcd"}}) {
        BufferLine line(4);
        for (int col = 0; col < 4; ++col) {
            line.set(col, PackedCell::make(PackedCell::Kind::scalar, static_cast<std::uint32_t>('a' + col)));
        }
        messages.clear();
        write.act(line);
        EXPECT_EQ(line.translateToString(buffer.cellArena(), true), write.text) << write.label;
        EXPECT_EQ(line.usedLength(), 4) << write.label;
        EXPECT_EQ(messages.size(), 1U) << write.label;
    }
    buffer.line(1).resize(2);
    buffer.resize(4, 2);
    EXPECT_EQ(messages.back(), "A resized line is shorter than the buffer width");
    EXPECT_EQ(buffer.line(1).size(), 4);
    setDiagnosticSink(nullptr);
}

TEST(Buffer, DropsTheOldestLinesWhenTheHistoryShrinks) {
    Buffer buffer(std::make_shared<CellArena>(), {.cols = 4, .rows = 2, .scrollback = 10, .hasScrollback = true});
    for (char c = 'a'; c <= 'j'; ++c) {
        const auto byte = static_cast<std::uint8_t>(c);
        buffer.insertAsciiRun({&byte, 1}, {});
        buffer.setX(0);
        buffer.index({});
    }
    ASSERT_EQ(buffer.yBase(), 9);
    buffer.setYDisp(5);
    buffer.changeHistorySize(3);
    EXPECT_EQ(buffer.yBase(), 3);
    EXPECT_EQ(buffer.yDisp(), 0);
    EXPECT_EQ(buffer.trimmedCount(), 6U);
    EXPECT_EQ(buffer.lineAt(0).translateToString(buffer.cellArena(), true), "g");
    buffer.changeHistorySize(0);
    EXPECT_EQ(buffer.lineCount(), 2);
    EXPECT_EQ(buffer.line(0).translateToString(buffer.cellArena(), true), "j");
}

TEST(Buffer, KeepsTheViewOnItsLinesWhileOutputScrolls) {
    Buffer buffer(std::make_shared<CellArena>(), {.cols = 4, .rows = 2, .scrollback = 4, .hasScrollback = true});
    buffer.setCursor(0, 1);
    const auto scroll = [&](int count) {
        for (int i = 0; i < count; ++i) {
            buffer.index({});
        }
    };
    scroll(3);
    EXPECT_EQ(buffer.yDisp(), 3);
    buffer.setYDisp(2);
    scroll(1);
    EXPECT_EQ(buffer.yDisp(), 2);
    scroll(1);
    EXPECT_EQ(buffer.yDisp(), 1) << "the ring is full: the lines have moved down by one";
    scroll(5);
    EXPECT_EQ(buffer.yDisp(), 0);
}

TEST(Buffer, TellsWhatChangedByGenerationAndIdentity) {
    Buffer buffer(std::make_shared<CellArena>(), {.cols = 4, .rows = 3});
    const std::uint8_t text = 'x';
    const std::uint64_t before = buffer.line(0).generation();
    const std::uint64_t other = buffer.line(1).generation();
    buffer.insertAsciiRun({&text, 1}, {});
    EXPECT_NE(buffer.line(0).generation(), before);
    EXPECT_EQ(buffer.line(1).generation(), other);
    const std::uint64_t second = buffer.line(1).renderIdentity();
    const std::uint64_t first = buffer.line(0).renderIdentity();
    buffer.scrollUp(1, {});
    EXPECT_EQ(buffer.line(0).renderIdentity(), second);
    EXPECT_NE(buffer.line(2).renderIdentity(), first) << "a line that is reused is another one";
}

} // namespace
} // namespace term
