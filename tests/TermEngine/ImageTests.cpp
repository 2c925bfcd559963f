#include "ImageFixture.h"
#include "TermEngine/Base64.h"

namespace term {
namespace {

const std::string sixels = "\x1BPq#1!4~\x1B\\";

struct Row {
    const char* label;
    std::string bytes;
    const char* expected;
};

void expectPictures(std::span<const Row> table, const std::string& before, int scrollback = 10) {
    for (const Row& row : table) {
        for (const bool inPieces : {false, true}) {
            Screen screen(scrollback);
            screen.feed(before + row.bytes, inPieces);
            EXPECT_EQ(pictureOf(screen.terminal), row.expected)
                << row.label << (inPieces ? ", byte by byte" : "") << ", scrollback " << scrollback;
        }
    }
}

} // namespace

TEST(Images, ScrollWithTheTextBetweenTheMargins) {
    const std::vector<Row> table{
        {"nothing", "", "......../..00..../..11..../..22..../......../......../"},
        {"line feed at the end", "\x1B[6H\n", "..00..../..11..../..22..../......../......../......../"},
        {"off the screen", "\x1B[6H\n\n\n", "..22..../......../......../......../......../......../"},
        {"away", "\x1B[6H\n\n\n\n", "......../......../......../......../......../......../"},
        {"wrapping", "\x1B[6Habcdefghi", "..00..../..11..../..22..../......../......../......../"},
        {"within a region, cut at its top", "\x1B[2;5r\x1B[5H\n",
         "......../..11..../..22..../......../......../......../"},
        {"not wholly within a region", "\x1B[3;6r\x1B[6H\n\n",
         "......../..00..../..11..../..22..../......../......../"},
        {"below a region at the top", "\x1B[1;1r\x1B[1H\n\n\n\x1B[r",
         "......../..00..../..11..../..22..../......../......../"},
        {"below a region with two rows more", "\x1B[H\x1B[L\x1B[1;2r\x1B[2H\n\n\n\x1B[r",
         "......../......../..00..../..11..../..22..../......../"},
        {"insert lines", "\x1B[2H\x1B[3L", "......../......../......../......../..00..../..11..../"},
        {"insert lines below its top", "\x1B[3H\x1B[L", "......../..00..../..11..../..22..../......../......../"},
        {"cut at the end for good", "\x1B[2H\x1B[3L\x1B[3M", "......../..00..../..11..../......../......../......../"},
        {"delete lines", "\x1B[1H\x1B[M", "..00..../..11..../..22..../......../......../......../"},
        {"delete lines of it", "\x1B[2H\x1B[2M", "......../..22..../......../......../......../......../"},
        {"reverse index", "\x1B[H\x1BM\x1BM", "......../......../......../..00..../..11..../..22..../"},
        {"scroll up", "\x1B[2S", "..11..../..22..../......../......../......../......../"},
        {"scroll down", "\x1B[T", "......../......../..00..../..11..../..22..../......../"},
        {"within left and right margins", "\x1B[?69h\x1B[2;6s\x1B[T",
         "......../......../..00..../..11..../..22..../......../"},
        {"cut by the left margin", "\x1B[?69h\x1B[4;6s\x1B[T",
         "......../..00..../..11..../..22..../......../......../"},
        {"erasing text", "\x1B[H\x1B[J\x1B[2H\x1B[2K\x1B[3X", "......../..00..../..11..../..22..../......../......../"},
        {"clearing the screen", "\x1B[2J", "......../......../......../......../......../......../"},
        {"a reset",
         "\x1B"
         "c",
         "......../......../......../......../......../......../"},
        {"the other screen", "\x1B[?47h", "......../......../......../......../......../......../"},
        {"and back", "\x1B[?1049h\x1B[2J\x1B[6H\n\n\x1B[?1049l",
         "......../..00..../..11..../..22..../......../......../"},
    };
    for (const int scrollback : {10, 0, 1}) {
        expectPictures(table, "\x1B[2;3H" + kitty(), scrollback);
    }
    // All but the ways to the other screen are the same there.
    expectPictures(std::span(table).first(table.size() - 3), "\x1B[?1049h\x1B[2;3H" + kitty());
}

TEST(Images, FollowTheirLineThroughResizesAndLeaveWithIt) {
    const std::string before = "abcdefghijkl\r\nm\r\n" + kitty() + "\r\nn";
    struct Case {
        const char* label;
        std::vector<std::pair<int, int>> sizes;
        const char* expected;
    };
    for (const Case& test : std::vector<Case>{
             {"narrower", {{4, 6}}, "..../..../..../..../00../11../"},
             {"wider", {{12, 6}}, "............/............/00........../11........../22........../............/"},
             {"and back", {{4, 6}, {8, 6}}, "......../......../......../00....../11....../22....../"},
             {"fewer rows", {{8, 3}}, "......../00....../11....../"},
             {"more rows", {{8, 3}, {8, 6}}, "......../......../......../00....../11....../22....../"}}) {
        Screen screen;
        screen.terminal.feed(before);
        for (const auto& [width, height] : test.sizes) {
            screen.terminal.resize(width, height);
        }
        EXPECT_EQ(pictureOf(screen.terminal), test.expected) << test.label;
    }
    Screen screen;
    screen.terminal.feed(kitty(",i=5") + std::string(rows + 10 + 1, '\n'));
    EXPECT_EQ(screen.terminal.images().placements().size(), 1U) << "its last line is in the history";
    screen.terminal.feed("\n\n");
    EXPECT_TRUE(screen.terminal.images().images().empty());
    for (const char* gone : {"\x1B[3J", "scrollback"}) {
        Screen other;
        other.terminal.feed(kitty() + std::string(rows + 3, '\n'));
        EXPECT_EQ(other.terminal.images().placements().size(), 1U);
        gone[0] == 's' ? other.terminal.setScrollback(0) : other.terminal.feed(gone);
        EXPECT_TRUE(other.terminal.images().placements().empty()) << gone;
    }
}

TEST(Images, OfSixelBelongToTheText) {
    struct Case {
        const char* label;
        std::string bytes;
        Position cursor;
        const char* expected;
    };
    const std::string tall = "\x1BPq#1!4~-!4~-!4~\x1B\\"; // 2 by 9 cells
    const std::vector<Case> table{
        // As xterm does: the last row, and the column where it began.
        {"the cursor", "\x1B[2;3H" + sixels, {2, 3}, "......../..00..../..11..../..22..../......../......../"},
        {"behind it",
         "\x1B[?8452h\x1B[2;3H" + sixels,
         {4, 3},
         "......../..00..../..11..../..22..../......../......../"},
        {"without scrolling",
         "\x1B[?80h\x1B[2;3H" + sixels,
         {2, 1},
         "00....../11....../22....../......../......../......../"},
        {"cut by the screen without scrolling",
         "\x1B[?80h" + tall,
         {0, 0},
         "00....../11....../22....../33....../44....../55....../"},
        {"scrolling", "\x1B[5;7H" + sixels, {6, 5}, "......../......../......../......00/......11/......22/"},
        {"taller than the screen",
         "\x1B[2;3H" + tall,
         {2, 5},
         "..33..../..44..../..55..../..66..../..77..../..88..../"},
        {"in a region", "\x1B[3;5r\x1B[4;3H" + tall, {2, 4}, "......../......../..66..../..77..../..88..../......../"},
        {"below a region",
         "\x1B[1;2r\x1B[5;3H" + tall,
         {2, 5},
         "......../......../......../......../..00..../..11..../"},
        {"text written over it", sixels + "\x1B[2Hx", {1, 1}, "00....../.1....../22....../......../......../......../"},
        {"half of what was written over it written over",
         sixels + "\x1B[H\u4E00\x1B[1;2Hx",
         {2, 0},
         "......../11....../22....../......../......../......../"},
        {"what was written over it lost with half of the line",
         "\x1B[1;6H" + sixels + "\x1B[1;6Hab\x1B[H\x1B#6",
         {0, 0},
         "......../.....11./.....22./......../......../......../"},
        {"what was written over it copied over",
         sixels + "\x1B[Hab\x1B[4;1;4;2;1;1;1;1$v",
         {2, 0},
         "......../11....../22....../......../......../......../"},
        {"a blank", sixels + "\x1B[2;2H ", {2, 1}, "00....../1......./22....../......../......../......../"},
        {"text that was there",
         "\x1B[2Habcd\x1B[H" + sixels,
         {0, 2},
         "00....../11....../22....../......../......../......../"},
        {"erased to the end of the line",
         sixels + "\x1B[2;2H\x1B[K",
         {1, 1},
         "00....../1......./22....../......../......../......../"},
        {"erased below", sixels + "\x1B[2H\x1B[J", {0, 1}, "00....../......../......../......../......../......../"},
        {"erased characters",
         sixels + "\x1B[H\x1B[X",
         {0, 0},
         ".0....../11....../22....../......../......../......../"},
        {"erased rectangle",
         sixels + "\x1B[1;2;2;9$z",
         {0, 2},
         "0......./1......./22....../......../......../......../"},
        {"changed attributes, from one corner to the other",
         sixels + "\x1B[1;2;2;1;1$r",
         {0, 2},
         "0......./.1....../22....../......../......../......../"},
        {"another one over it",
         sixels + "\x1B[2H" + sixels,
         {0, 3},
         "00....../00....../11....../22....../......../......../"},
        {"part of it scrolls",
         sixels + "\x1B[2;6r\x1B[6H\n",
         {0, 5},
         "00....../22....../......../......../......../......../"},
        {"part of it stays",
         "\x1B[4H" + sixels + "\x1B[1;5r\x1B[5H\n",
         {0, 4},
         "......../......../00....../11....../......../22....../"},
        {"inserted characters",
         sixels + "\x1B[2H\x1B[3@",
         {0, 1},
         "00....../...11.../22....../......../......../......../"},
        {"text in insert mode",
         sixels + "\x1B[2H\x1B[4hab",
         {2, 1},
         "00....../..11..../22....../......../......../......../"},
        {"deleted characters",
         sixels + "\x1B[2H\x1B[P",
         {0, 1},
         "00....../1......./22....../......../......../......../"},
        {"inserted columns",
         sixels + "\x1B[2;2H\x1B[2'}",
         {1, 1},
         "0..0..../1..1..../2..2..../......../......../......../"},
        {"RIS",
         sixels + "\x1B"
                  "c",
         {0, 0},
         "......../......../......../......../......../......../"},
    };
    for (const Case& test : table) {
        for (const bool inPieces : {false, true}) {
            Screen screen;
            screen.feed(test.bytes, inPieces);
            EXPECT_EQ(pictureOf(screen.terminal), test.expected) << test.label << (inPieces ? ", byte by byte" : "");
            const Buffer& b = screen.terminal.buffer();
            EXPECT_EQ((Position{b.x(), b.y()}), test.cursor) << test.label;
        }
    }
    Screen screen;
    for (int frame = 0; frame < 50; ++frame) {
        screen.terminal.feed("\x1B[H" + sixels);
    }
    EXPECT_EQ(screen.terminal.images().images().size(), 1U) << "a film keeps its last picture only";
    screen.terminal.feed("\x1B[H\x1B[J");
    EXPECT_TRUE(screen.terminal.images().images().empty()) << "what nothing is left of is forgotten";
}

/// Whatever happens to the screen, it happens to images in the same way however the bytes are cut.
TEST(Images, AreTheSameHoweverTheBytesAreCut) {
    const std::vector<std::string> pieces{
        sixels,
        sixels,
        kitty(),
        kitty(",i=1,p=1"),
        "ab",
        " ",
        "\n",
        "\x1B[2;3H",
        "\x1B[5;6H",
        "\x1B[6;1H",
        "\x1B[L",
        "\x1B[2M",
        "\x1B[@",
        "\x1B[2P",
        "\x1B[S",
        "\x1B[2T",
        "\x1BM",
        "\x1B[J",
        "\x1B[1J",
        "\x1B[K",
        "\x1B[2X",
        "\x1B[2;5r",
        "\x1B[1;3r",
        "\x1B[r",
        "\x1B[?69h\x1B[2;6s",
        "\x1B[?69l",
        "\x1B[2'}",
        "\x1B['~",
        "\x1B[?47h",
        "\x1B[?47l",
        "\x1B[?1049h",
        "\x1B[?1049l",
        "\x1B[?80h",
        "\x1B[?80l",
        "\x1B[3J",
        "\x1B[41m",
        "\x1B[m",
        "\x1B_Ga=d,q=2,d=p,x=3,y=3\x1B\\",
        "\x1B[2;2;4;5$z",
        "\x1B[2;2;4;5;0$r",
        "\x1B[1;1;3;3;1;2;4;1$v",
        "\u4E00",
        "\u4E00\u4E00",
        "\u263A",
        "\uFE0F",
        "\x1B[?7l",
        "\x1B[?7h",
        "\x1B[4h",
        "\x1B[4l",
        "\x1B#6"};
    // What comes together in one place comes more often.
    const std::vector<std::string> often{sixels, "\x1BP0;1q#1~??~\x1B\\", "ab", "\x1B[2;3H", "\x1B[2;4H"};
    std::uint32_t seed = 1;
    const auto random = [&seed](std::size_t below) {
        seed = seed * 1664525 + 1013904223;
        return (seed >> 8) % below;
    };
    for (int round = 0; round < 300; ++round) {
        std::vector<std::string> script;
        std::string all;
        for (int step = 0; step < 40; ++step) {
            const auto& from = random(2) == 0 ? often : pieces;
            script.push_back(from[random(from.size())]);
            all += script.back();
        }
        Screen whole(3);
        Screen split(3);
        whole.feed(all, false);
        split.feed(all, true);
        ASSERT_EQ(pictureOf(whole.terminal), pictureOf(split.terminal)) << round << testing::PrintToString(script);
        ASSERT_EQ(coverOf(whole.terminal), coverOf(split.terminal)) << round << testing::PrintToString(script);
        for (const ImagePlacement& some : whole.terminal.images().placements()) {
            ASSERT_TRUE(whole.terminal.images().images().contains(some.imageId)) << round;
            ASSERT_TRUE(some.rows > 0 && some.columns > 0 && some.sourceWidth > 0 && some.sourceHeight > 0) << round;
            ASSERT_TRUE(some.sourceX + some.sourceWidth <= 4 && some.sourceY + some.sourceHeight <= 6) << round;
        }
    }
}

} // namespace term
