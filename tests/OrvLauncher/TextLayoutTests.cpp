#include "../../OrvLauncher/TextLayout.h"
#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

namespace orv {

using namespace Qt::StringLiterals;

TEST(TextLayout, CutsToColumnsOfATerminal) {
    struct Case {
        const char* label;
        QString text;
        int width;
        Elide where;
        QString expected;
    };
    const Case cases[] = {
        {"fits", u"shop"_s, 4, Elide::end, u"shop"_s},
        {"end", u"storefront"_s, 6, Elide::end, u"store…"_s},
        {"middle", u"~/Projects/shop"_s, 8, Elide::middle, u"~/P…shop"_s},
        {"wide characters take two columns", u"日本語"_s, 5, Elide::end, u"日本…"_s},
        {"a wide one that does not fit goes whole", u"日本語"_s, 4, Elide::end, u"日…"_s},
        {"combining marks take none", u"cafe\u0301"_s, 4, Elide::end, u"cafe\u0301"_s},
        {"a pair of surrogates is not cut", u"🚀🚀🚀"_s, 3, Elide::end, u"🚀…"_s},
        {"no room at all", u"shop"_s, 0, Elide::end, QString()},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(elided(c.text, c.width, c.where), c.expected) << c.label;
    }
}

TEST(TextLayout, LetsOnlyColoursOfAProgramReachTheTerminal) {
    struct Case {
        const char* label;
        QString line;
        QString inColor;
        QString plain;
    };
    const Case cases[] = {
        {"colour", u"\x1b[32mready\x1b[39m in 3 ms"_s, u"\x1b[32mready\x1b[39m in 3 ms\x1b[0m"_s, u"ready in 3 ms"_s},
        {"clearing the screen", u"\x1b[2J\x1b[3J\x1b[Hready"_s, u"ready"_s, u"ready"_s},
        {"a title, ended by BEL or ST",
         u"a\x1b]0;t\x07"
         "b\x1b]0;t\x1b\\c"_s,
         u"abc"_s, u"abc"_s},
        {"charset and reset",
         u"\x1b(Bx\x1b"
         "cy"_s,
         u"xy"_s, u"xy"_s},
        {"cut short", u"x\x1b[3"_s, u"x"_s, u"x"_s},
        {"bell and tab", u"a\x07\tb"_s, u"a\tb"_s, u"a\tb"_s},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(safeOutputLine(c.line, true), c.inColor) << c.label;
        EXPECT_EQ(safeOutputLine(c.line, false), c.plain) << c.label;
    }
}

TEST(TextLayout, LetsTheWidestColumnsOfATableGiveWay) {
    Table table({{u"NAME"_s}, {u"FOLDER"_s, Style::plain, Elide::middle}});
    table.add({u"shop"_s, u"/home/sam/Projects/clients/shop"_s});
    table.add({u"a\nb\x1b[2J"_s, u"/x"_s});
    EXPECT_EQ(
        table.text(0, false), u"NAME     FOLDER\n"
                              "shop     /home/sam/Projects/clients/shop\n"
                              "a\uFFFDb\uFFFD[2J  /x\n"_s);
    EXPECT_EQ(
        table.text(24, false), u"NAME     FOLDER\n"
                               "shop     /home/s…ts/shop\n"
                               "a\uFFFDb\uFFFD[2J  /x\n"_s);
}

} // namespace orv
