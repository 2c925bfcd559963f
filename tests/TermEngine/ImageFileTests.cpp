#include "ImageFixture.h"
#include "TermEngine/Base64.h"
#include "TermEngine/ImagePlaceholders.h"
#include "TermEngine/ScreenSnapshot.h"

#include <ctime>

namespace term {
namespace {

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
    EXPECT_FALSE(screen.host.request.preserveAspectRatio);
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
    EXPECT_FALSE(changes("a=f,i=1,q=2,s=4,v=6;" + kittyPixels())) << "a frame that nobody sees yet";
    EXPECT_FALSE(changes("a=a,i=1,q=2,r=1,z=50")) << "a gap of what stands still";
    EXPECT_TRUE(changes("a=a,i=1,q=2,s=2"));
    EXPECT_EQ(screen.terminal.advanceAnimations(0), 50);
    EXPECT_TRUE(changes("a=a,i=1,q=2,r=1,z=60"));
    EXPECT_EQ(screen.terminal.advanceAnimations(0), 60);
    EXPECT_EQ(screen.terminal.advanceAnimations(60), 40) << "the second frame";
    EXPECT_EQ(screen.terminal.advanceAnimations(100), std::nullopt) << "it waits for a third";
    EXPECT_TRUE(changes("a=f,i=1,q=2,s=4,v=6;" + kittyPixels()));
    EXPECT_TRUE(changes("a=a,i=1,q=2,v=3,s=1")) << "stopped, which takes the rounds back too";
    EXPECT_EQ(screen.terminal.images().images().begin()->second.loops, 0U);
}

/// One feed shows as large a picture as there is room for, but none behind dozens of them; the next one does again.
TEST(Images, OfOneFeedHaveAnAllowanceOfPixels) {
    const auto sixel = [](int height) { return "\x1BPq\"1;1;1500;" + std::to_string(height) + "\x1B\\"; };
    std::string flood;
    for (int count = 0; count < 40; ++count) {
        flood += sixel(1599);
    }
    const std::string file = encodeBase64(png(1500, 1600));
    for (const auto& [label, picture] : std::vector<std::pair<const char*, std::string>>{
             {"sixel", sixel(1600)},
             {"PNG", "\x1B]1337;File=inline=1:" + file + "\a"},
             {"decoded by the host", "\x1B]1337;File=inline=1:" + encodeBase64("JPEG 1500x1600") + "\a"}}) {
        DecodingScreen screen;
        const auto isShownAfter = [&](const std::string& bytes) {
            screen.terminal.feed("\x1B[2J");
            screen.terminal.feed(bytes + picture);
            return std::ranges::any_of(
                screen.terminal.images().images(), [](const auto& image) { return image.second.height() == 1600; });
        };
        EXPECT_TRUE(isShownAfter("")) << label;
        EXPECT_FALSE(isShownAfter(flood)) << label;
        EXPECT_TRUE(isShownAfter("")) << label;
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
