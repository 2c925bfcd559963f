#include "TermEngine/Base64.h"
#include "TermEngine/ImagePlaceholders.h"
#include "TermEngine/ScreenSnapshot.h"
#include "TerminalFixture.h"

#include <gtest/gtest.h>

#include <ctime>

#include <png.h>

namespace term {
namespace {

constexpr int cols = 8;
constexpr int rows = 6;

/// A picture of 2 by 3 cells of 2 by 2 pixels.
const std::string kittyPixels = encodeBase64(std::string(4 * 6 * 4, 'x'));
const std::string sixels = "\x1BPq#1!4~\x1B\\";

std::string kitty(const std::string& keys = "") {
    return "\x1B_Ga=T,q=2,C=1,s=4,v=6" + keys + ";" + kittyPixels + "\x1B\\";
}

/// The screen with digits where an image is: the row of the picture, of two pixels each, that a cell shows.
std::string pictureOf(const Terminal& terminal) {
    const Buffer& b = terminal.buffer();
    const auto screen = terminal.isAlternateActive() ? ScreenId::alternate : ScreenId::normal;
    std::vector<ImagePlacement> placements = terminal.images().placements();
    std::ranges::sort(placements, isDrawnBefore);
    std::string out;
    for (int row = 0; row < b.rows(); ++row) {
        const auto line = static_cast<std::int64_t>(b.trimmedCount()) + b.yBase() + row;
        std::string text(static_cast<std::size_t>(b.cols()), '.');
        for (const ImagePlacement& some : placements) {
            for (int col = some.column;
                 some.screen == screen && !some.isVirtual && line >= some.row && line < some.row + some.rows &&
                 col < std::min(some.column + some.columns, b.cols());
                 ++col) {
                text[static_cast<std::size_t>(col)] = static_cast<char>('0' + some.sourceY / 2 + (line - some.row));
            }
        }
        out += text + "/";
    }
    return out;
}

/// How many images lie over each cell that is still there.
std::string coverOf(const Terminal& terminal) {
    std::map<std::pair<std::int64_t, int>, int> cover;
    for (const ImagePlacement& some : terminal.images().placements()) {
        const auto first =
            static_cast<std::int64_t>(some.screen == ScreenId::normal ? terminal.normalBuffer().trimmedCount() : 0);
        for (auto row = static_cast<int>(std::max<std::int64_t>(first - some.row, 0)); row < some.rows; ++row) {
            for (int col = 0; col < some.columns; ++col) {
                ++cover[{some.row + row, some.column + col + (some.screen == ScreenId::normal ? 0 : 1000)}];
            }
        }
    }
    return testing::PrintToString(cover);
}

struct Screen {
    RecordingHost host;
    Terminal terminal;

    explicit Screen(int scrollback = 10) : terminal(host, {.cols = cols, .rows = rows, .scrollback = scrollback}) {
        host.cellSize = CellSize{2, 2};
    }
    void feed(std::string_view bytes, bool inPieces) {
        for (std::size_t at = 0; inPieces && at < bytes.size(); ++at) {
            terminal.feed(bytes.substr(at, 1));
        }
        if (!inPieces) {
            terminal.feed(bytes);
        }
    }
};

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

namespace {

std::string png(int width, int height) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = PNG_FORMAT_RGBA;
    const std::string pixels(static_cast<std::size_t>(width * height * 4), 'x');
    png_alloc_size_t size = 0;
    ::png_image_write_to_memory(&image, nullptr, &size, 0, pixels.data(), 0, nullptr);
    std::string out(size, '\0');
    ::png_image_write_to_memory(&image, out.data(), &size, 0, pixels.data(), 0, nullptr);
    return out;
}

/// Decodes "JPEG 4x6" to an image of that size.
class DecodingHost : public RecordingHost {
public:
    ImageRequest request{};
    std::vector<std::uint32_t> bitmaps;
    int changes = 0;
    std::optional<RgbaImage> lie{};

    std::optional<RgbaImage> createImage(Terminal&, Bytes data, const ImageRequest& wanted) override {
        request = wanted;
        const std::string text(data.begin(), data.end());
        int width = 0;
        int height = 0;
        if (std::sscanf(text.c_str(), "JPEG %dx%d", &width, &height) != 2) {
            return lie;
        }
        return RgbaImage{width, height, std::vector<std::uint8_t>(static_cast<std::size_t>(width * height) * 4, 0xFF)};
    }
    void createImageFromBitmap(Terminal&, std::uint32_t id, const std::shared_ptr<const RgbaImage>&) override {
        bitmaps.push_back(id);
    }
    void imagesChanged(Terminal&) override { ++changes; }
};

struct DecodingScreen {
    DecodingHost host;
    Terminal terminal{host, {.cols = cols, .rows = rows}};
    DecodingScreen() { host.cellSize = CellSize{2, 2}; }
};

} // namespace

TEST(Images, OfFilesAreAsLargeAsTheyAreAsked) {
    struct Case {
        const char* label;
        std::string keys;
        std::string data;
        int columns; ///< 0: nothing is shown
        int rows;
        Position cursor;
    };
    const std::string file = png(4, 6);
    const std::string jpeg = "JPEG 4x6";
    for (const Case& test : std::vector<Case>{
             {"as it is", "inline=1", file, 2, 3, {2, 2}},
             {"from the host", "inline=1", jpeg, 2, 3, {2, 2}},
             {"a download", "", file, 0, 0, {0, 0}},
             {"no image", "inline=1", "GIF", 0, 0, {0, 0}},
             {"in cells", "inline=1;width=4;height=2;preserveAspectRatio=0", file, 4, 2, {4, 1}},
             {"in cells, its proportions kept", "inline=1;width=4;height=3", file, 2, 3, {2, 2}},
             {"in cells across", "inline=1;width=4", file, 4, 6, {4, 5}},
             {"in cells down", "inline=1;height=6;width=auto", file, 4, 6, {4, 5}},
             {"in pixels", "inline=1;width=3px", file, 2, 2, {2, 1}},
             {"in per cent", "inline=1;width=50%", file, 4, 6, {4, 5}},
             {"more than all", "inline=1;height=900%", file, 4, 6, {4, 5}},
             {"wider than the screen", "inline=1", png(32, 4), 8, 1, {7, 0}},
             {"without end", "inline=1;width=99999999;height=99999999;preserveAspectRatio=0", file, 0, 0, {7, 5}}}) {
        DecodingScreen screen;
        screen.terminal.feed("\x1B]1337;File=" + test.keys + ":" + encodeBase64(test.data) + "\a");
        const auto& placements = screen.terminal.images().placements();
        const std::string_view label = test.label;
        EXPECT_EQ(placements.size(), test.columns > 0 || label == "without end" ? 1U : 0U) << label;
        if (test.columns > 0 && !placements.empty()) {
            EXPECT_EQ(placements[0].columns, test.columns) << label;
            EXPECT_EQ(placements[0].rows, test.rows) << label;
        }
        EXPECT_EQ(screen.host.bitmaps.size(), placements.size()) << label;
        EXPECT_EQ(screen.host.changes, static_cast<int>(placements.size())) << label;
        const Buffer& b = screen.terminal.buffer();
        EXPECT_EQ((Position{b.x(), b.y()}), test.cursor) << label;
    }
    // In pieces, cut anywhere.
    const std::string encoded = encodeBase64(file);
    for (const bool isWhole : {true, false}) {
        DecodingScreen pieces;
        pieces.terminal.feed(
            "\x1B]1337;MultipartFile=inline=1;width=4\a\x1B]1337;FilePart=" + encoded.substr(0, 5) + "\a");
        pieces.terminal.feed("\x1B]1337;FilePart=" + (isWhole ? encoded.substr(5) : "!") + "\a\x1B]1337;FileEnd\a");
        EXPECT_EQ(pieces.terminal.images().placements().size(), isWhole ? 1U : 0U);
        pieces.terminal.feed("\x1B]1337;FilePart=" + encoded + "\a\x1B]1337;FileEnd\a");
        EXPECT_EQ(pieces.host.bitmaps.size(), isWhole ? 1U : 0U) << "what begins nowhere";
    }
    DecodingScreen screen;
    screen.terminal.feed("\x1B]1337;File=inline=1;width=3;preserveAspectRatio=0:" + encodeBase64("JPEG 1x1") + "\a");
    EXPECT_EQ(screen.host.request.width, 6);
    EXPECT_FALSE(screen.host.request.preservesAspectRatio);
    screen.host.lie = RgbaImage{100, 100, {1, 2, 3}};
    screen.terminal.feed("\x1B]1337;File=inline=1:AAAA\a");
    EXPECT_EQ(screen.host.bitmaps.size(), 1U) << "an image with fewer pixels than it says";
}

TEST(Images, AreTakenApartByPlaceholders) {
    const std::string p = "\xF4\x8E\xBB\xAE";    // U+10EEEE
    const std::string zero = "\xCC\x85";         // U+0305
    const std::string one = "\xCC\x8D";          // U+030D
    const std::string two = "\xCC\x8E";          // U+030E
    const std::string last = "\xF0\x9D\x89\x84"; // U+1D244
    using Runs = std::vector<PlaceholderRun>;
    struct Case {
        const char* label;
        std::string text;
        Runs expected;
    };
    for (const Case& test : std::vector<Case>{
             {"no image at all", "abc", {}},
             {"a row",
              "\x1B[38;5;42m" + p + one + zero + p + one + one + "x" + p + two + two,
              {{42, 0, 0, 2, 1, 0}, {42, 0, 3, 1, 2, 2}}},
             {"only the row is said", "\x1B[38;2;1;2;3m" + p + one + p + one + p + one, {{0x010203, 0, 0, 3, 1, 0}}},
             {"only the first one says it", "\x1B[38;5;1m" + p + two + one + p + p, {{1, 0, 0, 3, 2, 1}}},
             {"nothing is said", "\x1B[38;5;1m" + p + p, {{1, 0, 0, 2, 0, 0}}},
             {"another row", "\x1B[38;5;1m" + p + zero + p + one, {{1, 0, 0, 1, 0, 0}, {1, 0, 1, 1, 1, 0}}},
             {"the upper byte",
              "\x1B[38;5;1m" + p + zero + zero + two + p + zero + one + p,
              {{0x02000001, 0, 0, 3, 0, 0}}},
             {"the last of the marks", "\x1B[38;5;1m" + p + last + one, {{1, 0, 0, 1, 296, 1}}},
             {"marks that are no numbers", "\x1B[38;5;1m" + p + "\xCC\x80", {{1, 0, 0, 1, 0, 0}}},
             {"another placement",
              "\x1B[38;5;1;58:5:7m" + p + "\x1B[58:5:8m" + p,
              {{1, 7, 0, 1, 0, 0}, {1, 8, 1, 1, 0, 0}}},
             {"another image", "\x1B[38;5;1m" + p + "\x1B[38;5;2m" + p, {{1, 0, 0, 1, 0, 0}, {2, 0, 1, 1, 0, 0}}}}) {
        for (const char* mode : {"", "\x1B[?2027l"}) {
            Screen screen;
            screen.terminal.feed(mode + test.text);
            EXPECT_EQ(placeholdersIn(screen.terminal.buffer().line(0), screen.terminal.arena()), test.expected)
                << test.label;
        }
    }
    Screen screen;
    screen.terminal.feed(kitty(",U=1,i=42,p=7,c=4,r=3"));
    EXPECT_EQ(pictureOf(screen.terminal), "......../......../......../......../......../......../");
    const ImageStore& images = screen.terminal.images();
    const PlaceholderRun run{.imageId = 42, .imageRow = 2, .imageColumn = 3};
    ASSERT_NE(placementOf(run, images), nullptr);
    EXPECT_EQ(placementOf(run, images)->columns, 4);
    for (const PlaceholderRun& other :
         {PlaceholderRun{.imageId = 41}, PlaceholderRun{.imageId = 42, .placementId = 8},
          PlaceholderRun{.imageId = 42, .imageRow = 3}, PlaceholderRun{.imageId = 42, .imageColumn = 4}}) {
        EXPECT_EQ(placementOf(other, images), nullptr);
    }
    screen.terminal.feed("\x1B[2J\x1B[6H\n\n\n\n\n\n\n\n\n\n\n\n\n\n\n\n\n\n\n");
    EXPECT_NE(placementOf(run, images), nullptr) << "it is nowhere on the screen, and stays";
}

TEST(Images, AreInTheSnapshotThatARendererDraws) {
    Screen screen;
    screen.terminal.feed(kitty(",i=1,z=5") + "\x1B[2;3H" + kitty(",i=2,z=-1") + kitty(",i=3,U=1,c=2,r=3"));
    screen.terminal.feed("\x1B[6H\n\x1B[6H\x1B[38;5;3m\xF4\x8E\xBB\xAE\x1B[38;5;9m\xF4\x8E\xBB\xAE");
    ScreenSnapshot shot = takeSnapshot(screen.terminal);
    ASSERT_EQ(shot.images.size(), 2U);
    EXPECT_EQ(shot.images[0].placement.imageId, 2U) << "what is lower is drawn first";
    EXPECT_EQ(shot.images[0].row, 0);
    EXPECT_EQ(shot.images[1].row, -1) << "it begins in the history";
    ASSERT_EQ(shot.placeholders.size(), 1U) << "an image that is not there shows nothing";
    EXPECT_EQ(shot.placeholders[0].row, 5);
    EXPECT_EQ(shot.placeholders[0].rows, 3);
    const RgbaImage before = *shot.images[1].pixels;
    screen.terminal.feed("\x1B_Ga=f,i=1,r=1,q=2,s=1,v=1,X=1;AAAAAA==\x1B\\");
    EXPECT_EQ(*shot.images[1].pixels, before) << "a frame that is drawn stays as it was";
    EXPECT_NE(*takeSnapshot(screen.terminal).images[1].pixels, before);
    screen.terminal.buffer().setYDisp(0);
    EXPECT_EQ(takeSnapshot(screen.terminal).images[1].row, 0);
    screen.terminal.feed("\x1B[?47h");
    shot = takeSnapshot(screen.terminal);
    EXPECT_TRUE(shot.images.empty());
    EXPECT_TRUE(shot.placeholders.empty());
}

TEST(Images, TellTheHostWhenAnAnimationWantsToMove) {
    DecodingScreen screen;
    const auto changes = [&](const std::string& command) {
        screen.host.changes = 0;
        screen.terminal.feed("\x1B_G" + command + "\x1B\\");
        return screen.host.changes > 0;
    };
    screen.terminal.feed(kitty(",i=1"));
    EXPECT_FALSE(changes("a=f,i=1,q=2,s=4,v=6;" + kittyPixels)) << "a frame that nobody sees yet";
    EXPECT_FALSE(changes("a=a,i=1,q=2,r=1,z=50")) << "a gap of what stands still";
    EXPECT_TRUE(changes("a=a,i=1,q=2,s=2"));
    EXPECT_EQ(screen.terminal.advanceAnimations(0), 50);
    EXPECT_TRUE(changes("a=a,i=1,q=2,r=1,z=60"));
    EXPECT_EQ(screen.terminal.advanceAnimations(0), 60);
    EXPECT_EQ(screen.terminal.advanceAnimations(60), 40) << "the second frame";
    EXPECT_EQ(screen.terminal.advanceAnimations(100), std::nullopt) << "it waits for a third";
    EXPECT_TRUE(changes("a=f,i=1,q=2,s=4,v=6;" + kittyPixels));
    EXPECT_TRUE(changes("a=a,i=1,q=2,v=3,s=1")) << "stopped, which takes the rounds back too";
    EXPECT_EQ(screen.terminal.images().images().begin()->second.loops, 0U);
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
        "\x1B[2;2;4;5$z"};
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

/// What programs can make up costs little: time, memory, and nothing of it comes back.
TEST(Images, ThatAreHostileCostLittle) {
    const std::string one = encodeBase64("xxxx");
    const auto many = [](int count, const std::function<std::string(int)>& piece) {
        std::string all;
        for (int number = 1; number <= count; ++number) {
            all += piece(number);
        }
        return all;
    };
    const auto numbered = [](int number) { return std::to_string(number); };
    const auto images = [&](const std::string& action) {
        return many(5000, [&](int n) {
            return "\x1B_Gq=2,C=1,s=1,v=1," + action + ",i=" + numbered(n) + ";" + one + "\x1B\\";
        });
    };
    struct Case {
        const char* label;
        std::string before;
        std::string bytes;
    };
    const std::string text = many(1000, [](int n) {
        return "\x1B[" + std::to_string(n % 6 + 1) + ";" + std::to_string(n % 8 + 1) + "H\x1BP0;1q#1@\x1B\\";
    });
    for (const Case& test : std::vector<Case>{
             {"all images at once", images("a=T"), "\x1B_Ga=d,d=A\x1B\\"},
             {"a number that thousands have",
              many(5000, [&](int) { return "\x1B_Gq=2,s=1,v=1,I=5;" + one + "\x1B\\"; }),
              many(300, [](int) { return "\x1B_Ga=p,I=5,q=2\x1B\\"; })},
             {"the screen scrolls below thousands", images("a=T") + "\x1B[?1049h" + images("a=T"),
              std::string(2000, '\n')},
             {"erasing thousands of pictures", text, many(500, [](int) { return "\x1B[1;1H\x1B[X\x1B[2;4H\x1B[2X"; })},
             {"a picture of 10,000 rows", "", "\x1B_Ga=T,q=2,s=1,v=1,r=10000,c=10000;" + one + "\x1B\\"},
             {"a file of 10,000 rows", "",
              "\x1B]1337;File=inline=1;width=10000;height=10000;preserveAspectRatio=0:" + encodeBase64(png(1, 1)) +
                  "\a"},
             {"a sixel of 10,000 rows", "", "\x1BPq\"1;1;10;10000#1!10~" + std::string(1700, '-') + "~\x1B\\"},
             {"frames without end", kitty(",i=1"),
              many(15000, [&](int) { return "\x1B_Ga=f,i=1,q=2,s=1,v=1;" + one + "\x1B\\"; })},
             {"chunks without end", "\x1B_Ga=t,i=1,s=1000,v=1000,m=1;AAAA\x1B\\",
              many(3000, [](int) { return "\x1B_Gm=1;AAAA\x1B\\"; })}}) {
        Screen screen(1000);
        screen.terminal.feed(test.before);
        // Of the processor's time: what else runs on the machine does not count.
        const std::clock_t begin = std::clock();
        screen.terminal.feed(test.bytes);
        EXPECT_LT(std::clock() - begin, CLOCKS_PER_SEC) << test.label; // a tenth of it without sanitizers
        EXPECT_LE(screen.terminal.images().usedBytes(), 10'000'000U) << test.label;
        EXPECT_LE(screen.terminal.images().placements().size(), ImageStore::mostPlacements) << test.label;
        EXPECT_LE(screen.terminal.images().images().size(), ImageStore::mostImages) << test.label;
        EXPECT_EQ(screen.host.replies, "") << test.label;
    }
}

} // namespace term
