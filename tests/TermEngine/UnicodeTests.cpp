#include "TermEngine/Unicode.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace term::unicode {
namespace {

TEST(Unicode, BreaksClustersWhereTheStandardDoes) {
    std::ifstream file(TERM_TEST_DATA "/GraphemeBreakTest.txt");
    int cases = 0;
    for (std::string line; std::getline(file, line);) {
        const std::string test = line.substr(0, line.find('#'));
        std::istringstream words(test);
        GraphemeBreaker breaker;
        bool expected = true;
        std::u32string before;
        for (std::string word; words >> word;) {
            if (word == "÷" || word == "×") {
                expected = word == "÷";
                continue;
            }
            const auto scalar = static_cast<char32_t>(std::stoul(word, nullptr, 16));
            EXPECT_EQ(breaker.startsCluster(scalar), expected) << line;
            EXPECT_EQ(continuesCluster(before, scalar), !before.empty() && !expected) << line;
            before = expected ? std::u32string(1, scalar) : before + scalar;
        }
        cases += before.empty() ? 0 : 1;
    }
    EXPECT_EQ(cases, 602);
}

TEST(Unicode, MeasuresScalars) {
    struct Case {
        const char* label;
        char32_t scalar;
        int width;
    };
    const std::vector<Case> cases = {
        {"letter", U'a', 1},
        {"NUL", 0, 0},
        {"C1 control", 0x85, 0},
        {"soft hyphen", 0xAD, 1},
        {"combining acute", 0x301, 0},
        {"ambiguous", U'§', 1},
        {"Hangul initial", 0x1100, 2},
        {"Hangul vowel", 0x1161, 0},
        {"Hangul syllable", U'한', 2},
        {"ideograph", U'漢', 2},
        {"last of plane 2", 0x2FFFD, 2},
        {"fullwidth A", 0xFF21, 2},
        {"halfwidth katakana", 0xFF76, 1},
        {"circled ten on a black square", 0x3248, 2},
        {"joiner", zeroWidthJoiner, 0},
        {"selector", emojiSelector, 0},
        {"heart, text by default", U'❤', 1},
        {"rocket", U'🚀', 2},
        {"skin tone", 0x1F3FB, 2},
        {"half a flag", 0x1F1E6, 1},
        {"private use", 0xE000, 1},
        {"past the last", 0x110000, 1},
        {"bidi isolate", 0x2066, 0},
        {"Arabic number sign", 0x600, 1},
    };
    for (const Case& test : cases) {
        EXPECT_EQ(properties(test.scalar).width(), test.width) << test.label;
    }
    EXPECT_TRUE(properties(U'❤').takesEmojiSelector());
    EXPECT_FALSE(properties(U'a').takesEmojiSelector());
}

TEST(Unicode, ReplacesWhatIsNoUtf8) {
    struct Case {
        const char* bytes;
        std::u32string scalars;
    };
    const std::vector<Case> cases = {
        {"a\xC3\xA9\xE6\xBC\xA2\xF0\x9F\x9A\x80", U"aé漢🚀"},
        {"\xC0\x80", U"\uFFFD\uFFFD"},
        {"\xE0\x80\x80", U"\uFFFD\uFFFD\uFFFD"},
        {"\xED\xA0\x80", U"\uFFFD\uFFFD\uFFFD"},
        {"\xF0\x9F\x9Aq", U"\uFFFDq"},
        {"\xF4\x90\x80\x80", U"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xE6\xBC", U"\uFFFD"},
        {"\x80\xFF", U"\uFFFD\uFFFD"},
    };
    for (const Case& test : cases) {
        EXPECT_EQ(fromUtf8(test.bytes), test.scalars) << test.bytes;
    }
    EXPECT_EQ(toUtf8(U"aé漢🚀"), "aé漢🚀");
}

} // namespace
} // namespace term::unicode
