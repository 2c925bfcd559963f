#include "TermEngine/RegularExpression_p.h"
#include "TermEngine/ScreenSnapshot.h"
#include "TermEngine/TextRange.h"
#include "TermEngine/TextSearch.h"
#include "TerminalFixture.h"

#include <gtest/gtest.h>

namespace term {
namespace {

struct Screen {
    RecordingHost host;
    Terminal terminal;
    explicit Screen(std::string_view bytes, int cols = 10, int rows = 4, int scrollback = 10)
        : terminal(host, {.cols = cols, .rows = rows, .scrollback = scrollback}) {
        terminal.feed(bytes);
    }
    [[nodiscard]] const Buffer& buffer() const { return terminal.buffer(); }
};

TEST(TextRange, GivesTextWithoutPaddingAndWithSoftWrapsJoined) {
    const Screen screen("one  \r\n\x1B[3;3Htwo\r\n漢字漢字漢字x\r\n");
    struct Case {
        const char* label;
        TextRange range;
        RangeShape shape;
        const char* text;
    };
    // Four rows: the first went to the history.
    const std::vector<Case> cases = {
        {"everything", {{0, 0}, {9, 10}}, RangeShape::flowing, "one  \n\n  two\n漢字漢字漢字x\n"},
        {"over a soft wrap", {{3, 8}, {4, 2}}, RangeShape::flowing, "漢字"},
        {"half of a wide character", {{3, 1}, {3, 5}}, RangeShape::flowing, "字漢"},
        {"a rectangle", {{2, 3}, {0, 1}}, RangeShape::rectangle, "ne\n\n t"},
        {"before the first line", {{-5, 3}, {0, 2}}, RangeShape::flowing, "on"},
        {"nothing", {{2, 3}, {2, 3}}, RangeShape::flowing, ""},
        {"above all", {{-3, 0}, {-1, 3}}, RangeShape::flowing, ""},
        {"a rectangle above all", {{-3, 0}, {-1, 3}}, RangeShape::rectangle, ""},
        {"below all", {{7, 0}, {9, 3}}, RangeShape::flowing, ""},
        {"beyond the last line", {{4, 0}, {9, 1}}, RangeShape::flowing, "字x\n"},
        {"past the end of a line", {{2, 8}, {3, 2}}, RangeShape::flowing, "\n漢"},
    };
    for (const Case& test : cases) {
        EXPECT_EQ(textIn(screen.buffer(), test.range, test.shape), test.text) << test.label;
    }
}

TEST(TextRange, FindsWordsAndLinesOverSoftWraps) {
    struct Case {
        const char* bytes;
        TextPlace place;
        const char* word;
    };
    constexpr auto text = "see http://a.b/cdef gh (漢字)\r\nend";
    constexpr auto japanese = "Gitでリポジトリを初期化。第3章";
    constexpr auto table = "│ab│\xC2\xA0\xC2\xA0“c-d”";
    const std::vector<Case> cases = {
        {text, {0, 1}, "see"},
        {text, {0, 3}, " "},
        {text, {0, 9}, "http://a.b/cdef"},
        {text, {1, 0}, "http://a.b/cdef"},
        {text, {2, 3}, "("},
        {text, {2, 5}, "漢字"},
        {text, {3, 9}, ""},
        {table, {0, 1}, "ab"},
        {table, {0, 3}, "│"},
        {table, {0, 5}, "\xC2\xA0\xC2\xA0"},
        {table, {0, 8}, "c-d"},
        {"\xEE\x82\xB0 main \xEE\x82\xB0", {0, 3}, "main"},
        {"x\xEE\x82\xB0main", {0, 1}, "\xEE\x82\xB0"},
        {"a --opt=né\u0301e", {0, 4}, "--opt=né\u0301e"},
        {"=дом/2², ok", {0, 5}, "=дом/2²"},
        {"~/文档/ab報告.txt", {0, 3}, "~/文档/ab"},
        {"~/文档/ab報告.txt", {1, 1}, "報告.txt"},
        {japanese, {0, 1}, "Git"},
        {japanese, {0, 3}, "で"},
        {japanese, {0, 7}, "リポジトリ"},
        {japanese, {1, 1}, "リポジトリ"},
        {japanese, {1, 9}, "初期化"},
        {japanese, {2, 4}, "。"},
        {japanese, {2, 7}, "第3章"},
    };
    for (const Case& test : cases) {
        const Screen screen(test.bytes);
        EXPECT_EQ(textIn(screen.buffer(), wordAt(screen.buffer(), test.place)), test.word)
            << test.bytes << ", line " << test.place.line << ", column " << test.place.col;
    }
    const Screen screen(text);
    EXPECT_EQ(textIn(screen.buffer(), lineAt(screen.buffer(), {1, 4})), "see http://a.b/cdef gh (漢字)");
}

TEST(TextRange, FindsThePartsThatTheShellMarked) {
    const std::string prompt = "\x1B]133;A\x07$ \x1B]133;B\x07";
    const auto ran = [&](const std::string& output) {
        return prompt + "ls\x1B]133;C\x07\r\n" + output + "\x1B]133;D;3\x07" + prompt;
    };
    struct Case {
        const char* label;
        std::string bytes;
        TextPlace place;
        const char* text;
    };
    const std::vector<Case> cases = {
        {"prompt", ran("out\r\n"), {0, 0}, "$ "},
        {"input", ran("out\r\n"), {0, 3}, "ls"},
        {"output", ran("out\r\nmore\r\n"), {1, 1}, "out\nmore"},
        {"behind its end", ran("out\r\nmore\r\n"), {2, 9}, "none"},
        {"behind one of its lines", ran("out\r\nmore\r\n"), {1, 9}, "out\nmore"},
        {"over tabs", ran("a\tb\r\n\tc\r\n"), {1, 0}, "a       b\n        c"},
        {"on a tab", ran("a\tb\r\n\tc\r\n"), {2, 1}, "a       b\n        c"},
        {"on a tab behind the input", ran("\tb\r\n"), {1, 1}, "        b"},
        {"over what was skipped, erased and inserted", ran("a\x1B[2Cb\x1B[2D\x1B[X\x1B[@"), {1, 0}, "a   b"},
        {"an empty line", ran("a\r\n\r\nb\r\n"), {2, 0}, "a\n\nb"},
        {"up to text that is no part", prompt + "ls\x1B]133;C\x07\r\na\r\n\x1B]133;D\x07x", {1, 0}, "a"},
        {"of two prompts the first", prompt + "\r\n" + prompt, {0, 1}, "$ "},
        {"of two prompts the second", prompt + "\r\n" + prompt, {1, 0}, "$ "},
    };
    for (const Case& test : cases) {
        const Screen screen(test.bytes, 20, 6);
        const auto range = semanticRangeAt(screen.buffer(), test.place);
        EXPECT_EQ(range ? textIn(screen.buffer(), *range) : "none", test.text) << test.label;
    }
}

TEST(TextRange, GoesFromPromptToPrompt) {
    const Screen screen(
        "\x1B]133;A\x07$ \x1B]133;B\x07ls\x1B]133;C\x07\r\nout\r\nmore\r\n\x1B]133;D;3\x07\x1B]133;A\x07$ "
        "\x1B]133;B\x07");
    const Buffer& buffer = screen.buffer();
    EXPECT_EQ(promptFrom(buffer, 3, -1), 0);
    EXPECT_EQ(promptFrom(buffer, 0, 1), 3);
    EXPECT_EQ(promptFrom(buffer, 3, 1), std::nullopt);
    EXPECT_EQ(buffer.lineAt(3).semanticMarks().exitCode, 3);
}

TEST(TextSelection, GrowsByItsUnitInBothDirections) {
    using Unit = TextSelection::Unit;
    const Screen screen("alpha beta\r\ngamma delt\r\nend");
    struct Case {
        Unit unit;
        TextPlace from;
        TextPlace to;
        const char* text;
    };
    const std::vector<Case> cases = {
        {Unit::character, {0, 2}, {1, 3}, "pha beta\ngam"},
        {Unit::character, {1, 3}, {0, 2}, "pha beta\ngam"},
        {Unit::word, {0, 7}, {1, 1}, "beta\ngamma"},
        {Unit::word, {1, 1}, {0, 7}, "beta\ngamma"},
        {Unit::line, {1, 4}, {0, 9}, "alpha beta\ngamma delt"},
        {Unit::rectangle, {0, 1}, {1, 3}, "lp\nam"},
    };
    for (const Case& test : cases) {
        TextSelection selection;
        selection.start(screen.buffer(), test.from, test.unit);
        selection.extend(screen.buffer(), test.to);
        EXPECT_EQ(selection.text(screen.buffer()), test.text);
        EXPECT_TRUE(selection.contains(std::min(test.from, test.to)));
        EXPECT_FALSE(selection.contains({2, 1}));
    }
}

TEST(TextSelection, StaysOnItsTextThroughResizes) {
    using Unit = TextSelection::Unit;
    const std::string lines = "one 0123456789 two\r\n\r\n漢字漢字漢字漢字\r\nthe end";
    struct Case {
        const char* label;
        Unit unit;
        TextPlace from;
        TextPlace to;
    };
    const std::vector<Case> cases = {
        {"within a line", Unit::character, {0, 2}, {0, 6}},
        {"up to the end of a full row", Unit::character, {0, 4}, {0, 10}},
        {"over a soft wrap and lines", Unit::character, {0, 5}, {5, 3}},
        {"backwards", Unit::character, {3, 4}, {1, 1}},
        {"words", Unit::word, {1, 0}, {4, 1}},
        {"lines", Unit::line, {3, 1}, {5, 1}},
    };
    for (const Case& test : cases) {
        Screen screen(lines, 10, 8, 30);
        Buffer& buffer = screen.terminal.buffer();
        TextSelection selection;
        selection.start(buffer, test.from, test.unit);
        selection.extend(buffer, test.to);
        const std::string before = selection.text(buffer);
        ASSERT_FALSE(before.empty()) << test.label;
        for (const int cols : {4, 33, 7, 10}) {
            std::vector<TextPlace> places = selection.places();
            buffer.resize(cols, 8, places);
            selection.setPlaces(places);
            EXPECT_EQ(selection.text(buffer), before) << test.label << ", " << cols << " columns";
        }
    }
}

TEST(Reflow, KeepsTheMarksOfTheShellOnTheirText) {
    // A prompt that fills its line, so that the input stands in a row that a soft wrap made.
    const std::string session = "abcdefgh\r\n\x1B]133;A\x07"
                                "12345678ls\r\x1B]133;B\x07\r\n\x1B]133;D;3\x07\x1B]133;A\x07$ ";
    struct Case {
        int cols;
        std::vector<std::string> marks;
    };
    const std::vector<Case> cases = {
        {8, {"", "A", "B", "AD3"}},
        {20, {"", "AB", "AD3"}},
        {4, {"", "", "A", "", "B", "AD3"}},
        {6, {"", "", "A", "B", "AD3"}},
    };
    for (const Case& test : cases) {
        Screen screen(session, 8, 6, 30);
        screen.terminal.resize(test.cols, 6);
        for (std::size_t i = 0; i < test.marks.size(); ++i) {
            const SemanticMarks& found = screen.buffer().lineAt(static_cast<int>(i)).semanticMarks();
            const std::string marks = std::string(found.promptStart ? "A" : "") + (found.inputStart ? "B" : "") +
                                      (found.commandEnd ? "D" + std::to_string(found.exitCode.value_or(-1)) : "");
            EXPECT_EQ(marks, test.marks[i]) << test.cols << " columns, line " << i;
        }
    }
}

/// All matches, the oldest first, of a search that goes on for so many steps at once.
std::optional<std::vector<TextRange>> search(
    const Buffer& buffer, std::string_view pattern, const SearchOptions& options = {},
    std::uint64_t steps = 1'000'000) {
    std::optional<TextSearch> searcher = TextSearch::of(pattern, options);
    if (!searcher) {
        return {};
    }
    std::vector<TextRange> found;
    for (searcher->start(buffer); !searcher->isDone();) {
        const std::vector<TextRange> more = searcher->advance(buffer, steps);
        found.insert(found.end(), more.begin(), more.end());
    }
    SearchOptions further = options;
    ++further.limit;
    const bool isAll = found.size() < options.limit || search(buffer, pattern, further)->size() == found.size();
    EXPECT_EQ(searcher->isComplete(), isAll) << pattern;
    std::ranges::reverse(found);
    return found;
}

TEST(TextSearch, FindsOverSoftWrapsInScreenAndHistory) {
    const Screen screen("a needle in\r\nNEEDLE 漢字needle\r\nneedles\r\nx\r\ny\r\nzz-z-z");
    struct Case {
        const char* pattern;
        SearchOptions options;
        std::vector<TextRange> found;
    };
    const std::vector<Case> cases = {
        {"needle", {}, {{{0, 2}, {0, 8}}, {{2, 0}, {2, 6}}, {{3, 2}, {3, 8}}, {{4, 0}, {4, 6}}}},
        {"needle", {.limit = 4}, {{{0, 2}, {0, 8}}, {{2, 0}, {2, 6}}, {{3, 2}, {3, 8}}, {{4, 0}, {4, 6}}}},
        {"Needle", {.ignoresCase = false}, {}},
        {"needle", {.wholeWords = true}, {{{0, 2}, {0, 8}}, {{2, 0}, {2, 6}}, {{3, 2}, {3, 8}}}},
        {"字n", {}, {{{3, 0}, {3, 3}}}},
        {"needle|needles", {.isRegularExpression = true, .wholeWords = true, .limit = 1}, {{{4, 0}, {4, 7}}}},
        {"z-z", {.wholeWords = true}, {{{7, 3}, {7, 6}}}},
        {"n[a-z]+s$", {.isRegularExpression = true}, {{{4, 0}, {4, 7}}}},
        {"x*", {.isRegularExpression = true}, {{{5, 0}, {5, 1}}}},
        {"e", {.limit = 3}, {{{4, 1}, {4, 2}}, {{4, 2}, {4, 3}}, {{4, 5}, {4, 6}}}},
        {"e+d?", {.isRegularExpression = true, .limit = 1}, {{{4, 5}, {4, 6}}}},
        {"", {}, {}},
    };
    for (const Case& test : cases) {
        for (const std::uint64_t steps : {1U, 7U, 1'000'000U}) {
            EXPECT_EQ(search(screen.buffer(), test.pattern, test.options, steps), test.found)
                << test.pattern << ", " << steps << " steps at once";
        }
    }
    EXPECT_FALSE(search(screen.buffer(), "(", {.isRegularExpression = true}).has_value());
}

TEST(TextSearch, LooksThroughLinesOfAnyLength) {
    const Screen wide(std::string(20'000, 'a') + "bc", 100, 50, 500);
    const std::vector<TextRange> atTheEnd = {{{199, 99}, {200, 2}}};
    EXPECT_EQ(search(wide.buffer(), "(a|b)?bc$", {.isRegularExpression = true}), atTheEnd);
    EXPECT_EQ(search(wide.buffer(), std::string(500, 'a') + "bd"), std::vector<TextRange>());
    EXPECT_EQ(
        search(wide.buffer(), "a+c|^a{5}a*bc$", {.isRegularExpression = true}),
        (std::vector<TextRange>{{{0, 0}, {200, 2}}}));
    // Each of these takes a library that tries again for ever.
    EXPECT_TRUE(search(wide.buffer(), "(a*)*d", {.isRegularExpression = true})->empty());
    EXPECT_TRUE(search(wide.buffer(), "(a|aa)+$", {.isRegularExpression = true})->empty());
    EXPECT_TRUE(search(wide.buffer(), "((a{0,3}){0,3}){0,3}x", {.isRegularExpression = true})->empty());
}

TEST(TextSearch, GoesOnWhileLinesComeAndGo) {
    Screen screen("x1\r\nx2\r\nx3\r\nx4\r\nx5\r\nx6", 10, 2, 4);
    TextSearch search = TextSearch::of("x").value();
    search.start(screen.buffer(), 1);
    EXPECT_EQ(search.advance(screen.buffer(), 1).size(), 0U) << "only a part of the line was read";
    EXPECT_EQ(search.advance(screen.buffer(), 3), (std::vector<TextRange>{{{5, 0}, {5, 1}}}));
    EXPECT_EQ(search.searchedTo(), 5);
    screen.terminal.feed("\r\nx7\r\nx8");
    std::vector<TextRange> found;
    while (!search.isDone()) {
        const std::vector<TextRange> more = search.advance(screen.buffer(), 2);
        found.insert(found.end(), more.begin(), more.end());
    }
    EXPECT_EQ(found, (std::vector<TextRange>{{{4, 0}, {4, 1}}, {{3, 0}, {3, 1}}, {{2, 0}, {2, 1}}}));
    screen.terminal.feed("\x1B[3J");
    search.start(screen.buffer(), 7);
    EXPECT_EQ(search.advance(screen.buffer(), 1000), (std::vector<TextRange>{{{7, 0}, {7, 1}}}));
    EXPECT_TRUE(search.isComplete());

    Screen full("x-12345678x-12345678x-1234\r\ny", 10, 2, 3);
    search.start(full.buffer());
    EXPECT_TRUE(search.advance(full.buffer(), 2).empty()) << "the last line, and nothing of the one above";
    full.terminal.feed("\r\n\r\n");
    EXPECT_EQ(full.buffer().trimmedCount(), 1U);
    EXPECT_EQ(search.advance(full.buffer(), 1000), (std::vector<TextRange>{{{2, 0}, {2, 1}}, {{1, 0}, {1, 1}}}));
}

TEST(TextSearch, FoldsAllLettersAndCountsWholeCharacters) {
    const Screen screen("STRASSE Ärger ΣΑΣ e\xCC\x81x │ab│ abé漢ab Å", 40, 2);
    struct Case {
        const char* pattern;
        SearchOptions options;
        std::vector<TextRange> found;
    };
    const std::vector<Case> cases = {
        {"äRG", {}, {{{0, 8}, {0, 11}}}},
        {"äRG", {.ignoresCase = false}, {}},
        {"σας", {}, {{{0, 14}, {0, 17}}}},
        {"[α-ω]+", {.isRegularExpression = true}, {{{0, 14}, {0, 17}}}},
        {"[\\W][rt]", {.isRegularExpression = true}, {{{0, 8}, {0, 10}}}},
        {"[^\\W_]{5}", {.isRegularExpression = true}, {{{0, 0}, {0, 5}}}},
        {"[\\x80-\\uFFFF][rt]", {.isRegularExpression = true}, {{{0, 8}, {0, 10}}}},
        {"[\\u0100-\\u212B]$", {.isRegularExpression = true}, {{{0, 34}, {0, 35}}}},
        {"e", {.ignoresCase = false}, {{{0, 11}, {0, 12}}, {{0, 18}, {0, 19}}}},
        {"\xCC\x81x", {}, {{{0, 18}, {0, 20}}}},
        {"ab", {.wholeWords = true}, {{{0, 22}, {0, 24}}, {{0, 31}, {0, 33}}}},
    };
    for (const Case& test : cases) {
        EXPECT_EQ(search(screen.buffer(), test.pattern, test.options), test.found) << test.pattern;
    }
}

TEST(RegularExpression, MatchesAsItsGrammarSays) {
    struct Case {
        std::u32string_view pattern;
        std::u32string_view text;
        std::u32string_view match; ///< empty: none
    };
    const std::vector<Case> cases = {
        {U"b+", U"abbbc", U"bbb"},
        {U"b+?", U"abbbc", U"b"},
        {U"a|ab|abc", U"xabc", U"a"},
        {U"(?:ab|a)(c|bcd)", U"abcd", U"abc"},
        {U"a{2,3}", U"aaaa", U"aaa"},
        {U"a{2,3}?", U"aaaa", U"aa"},
        {U"(ab){2}", U"ababab", U"abab"},
        {U"a{0,}b", U"aab", U"aab"},
        {U"^b", U"ab", U""},
        {U"a$", U"ab", U""},
        {U"\\bcat\\b", U"concat cat", U"cat"},
        {U"\\Bcat", U"cat concat", U"cat"},
        {U"[a-c\\d-]+", U"x-b2y", U"-b2"},
        {U"[^a-c]+", U"abxyc", U"xy"},
        {U"[\\D]+", U"12ab3", U"ab"},
        {U"[]x", U"]x", U""},
        {U"\\S+\\s\\w+", U"é_1 z9-", U"é_1 z9"},
        {U"\\x41\\u00e9\\u{1F600}\\t", U"Aé😀\t", U"Aé😀\t"},
        {U"a.c", U"a\nc abc", U"abc"},
        {U"\\.\\*\\/", U"x.*/", U".*/"},
        {U"(a*)*", U"b", U""},
        {U"x*", U"yx", U"x"},
        {U"(|a)+b", U"aab", U"aab"},
    };
    for (const Case& test : cases) {
        auto expression = RegularExpression::compile(test.pattern);
        ASSERT_TRUE(expression.has_value()) << unicode::toUtf8(test.pattern);
        std::uint64_t budget = 100'000;
        const auto match = expression->find(test.text, 0, budget);
        const auto text = match ? test.text.substr(match->first, match->end - match->first) : U"";
        EXPECT_EQ(unicode::toUtf8(text), unicode::toUtf8(test.match)) << unicode::toUtf8(test.pattern);
    }
    for (const std::u32string_view broken :
         {U"(", U")", U"[a", U"[b-a]", U"*", U"a**", U"a{", U"a{3,2}", U"a{1001}", U"\\", U"\\1", U"\\q", U"(?=a)",
          U"\\x4", U"\\u{110000}", U"((a{1000}){1000}){1000}"}) {
        EXPECT_FALSE(RegularExpression::compile(broken).has_value()) << unicode::toUtf8(broken);
    }
    EXPECT_FALSE(RegularExpression::compile(std::u32string(200, U'(') + U"a" + std::u32string(200, U')')).has_value());
    EXPECT_FALSE(RegularExpression::compile(std::u32string(100'000, U'|')).has_value());
}

TEST(ScreenSnapshot, SharesWhatHasNotChangedAndNothingElse) {
    Screen screen("\x1B[31mred\r\nblue");
    const ScreenSnapshot first = takeSnapshot(screen.terminal);
    screen.terminal.feed("\x1B[38;2;1;2;3me\xCC\x81\x1B[?25l");
    const ScreenSnapshot second = takeSnapshot(screen.terminal, &first);
    EXPECT_EQ(first.lines[0], second.lines[0]);
    EXPECT_NE(first.lines[1], second.lines[1]);
    EXPECT_EQ(first.lines[1]->translateToString(*first.arena, true), "blue");
    EXPECT_EQ(second.lines[1]->translateToString(*second.arena, true), "bluee\u0301");
    EXPECT_EQ(second.arena->attributeOf((*second.lines[1])[4]).fg, Color::rgb(1, 2, 3));
    EXPECT_FALSE(second.isCursorVisible);
    EXPECT_EQ(takeSnapshot(screen.terminal, &second).arena, second.arena);

    Screen other("A");
    const ScreenSnapshot normal = takeSnapshot(other.terminal);
    other.terminal.feed("\x1B[?1049h");
    const ScreenSnapshot alternate = takeSnapshot(other.terminal, &normal);
    EXPECT_EQ(alternate.lines[0]->translateToString(*alternate.arena, true), "") << "no line of the other screen";

    Screen wrapped(std::string(static_cast<std::size_t>(other.terminal.cols()) + 1, 'x'));
    const ScreenSnapshot before = takeSnapshot(wrapped.terminal);
    wrapped.terminal.feed("\x1B[H\x1B[K");
    EXPECT_TRUE(before.lines[1]->isWrapped());
    EXPECT_FALSE(takeSnapshot(wrapped.terminal, &before).lines[1]->isWrapped());
}

} // namespace
} // namespace term
