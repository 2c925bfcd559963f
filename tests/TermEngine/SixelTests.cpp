#include "DrawnPixels.h"
#include "TermEngine/SixelDecoder.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace term {
namespace {

std::optional<RgbaImage> sixel(
    std::string_view data, SixelDecoder::Background background = SixelDecoder::Background::transparent,
    size_t limitBytes = 1'000'000) {
    PixelAllowance allowance(limitBytes);
    allowance.renew(data.size());
    SixelDecoder decoder(allowance, limitBytes, background);
    decoder.append(data);
    return decoder.finish();
}

TEST(SixelDecoder, DrawsWhatTheDataSay) {
    const std::string colors = "#1;2;100;0;0#2;2;0;100;0#3;1;0;50;100";
    struct Row {
        const char* label;
        std::string data;
        std::string expected; ///< empty: no image
    };
    const std::vector<Row> rows{
        {"nothing", "", ""},
        {"a column", "#1~", "r\nr\nr\nr\nr\nr\n"},
        {"the lowest bit is the top", "#1@", "r\n"},
        {"each bit", "#1@#2A", "r.\n.g\n"},
        {"hue counts from blue", "#3@", "b\n"},
        {"repeat", "#1!3@", "rrr\n"},
        {"repeat of nothing is one", "#1!0@!@", "rr\n"},
        {"back to the left, over it", "#1!3@$#2@", "grr\n"},
        {"next band", "#1@-#2@", "r\n.\n.\n.\n.\n.\ng\n"},
        {"announced size", "\"1;1;2;3#1@", "r.\n..\n..\n"},
        {"blanks and controls are read over", "#1 \n@\r", "r\n"},
        {"empty sixels draw nothing", "#1??@", "..r\n"},
        {"a register out of range wraps", "#1025@", "r\n"},
    };
    for (const Row& row : rows) {
        const std::string data = (row.data.starts_with('"') ? "" : colors) + row.data;
        const std::string whole =
            row.data.starts_with('"') ? row.data.substr(0, 8) + colors + row.data.substr(8) : data;
        const auto image = sixel(whole);
        EXPECT_EQ(image ? drawn(*image) : "", row.expected) << row.label;
        PixelAllowance allowance(1'000'000);
        SixelDecoder decoder(allowance, 1'000'000, SixelDecoder::Background::transparent);
        for (const char byte : whole) {
            decoder.append(std::string_view(&byte, 1));
        }
        EXPECT_EQ(decoder.finish(), image) << row.label << ", byte by byte";
    }
    EXPECT_EQ(drawn(*sixel(colors + "#1?A", SixelDecoder::Background::filled)), "kk\nkr\n");
}

TEST(SixelDecoder, BoundsWhatAnImageCosts) {
    struct Row {
        const char* label;
        std::string data;
    };
    std::string painter;
    for (int count = 0; count < 500'000; ++count) {
        painter += "!99999~$";
    }
    std::string wider = "!1?-!1?-!1?-!1?-!1?-!1?-";
    for (int count = 0; count < 200'000; ++count) {
        wider += "~";
    }
    std::string deeper;
    for (int count = 0; count < 300'000; ++count) {
        deeper += "~-";
    }
    for (const Row& row :
         {Row{"paints over and over", painter}, Row{"grows to the right", wider}, Row{"grows downwards", deeper},
          Row{"announces much", "\"1;1;10000;250@" + deeper}, Row{"announces more", "\"1;1;999999999999;99999999@~"},
          Row{"parameters without end", "#" + std::string(1'000'000, ';') + "1~"}}) {
        const auto begin = std::chrono::steady_clock::now();
        const auto image = sixel(row.data, SixelDecoder::Background::transparent, 10'000'000);
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
        ASSERT_TRUE(image) << row.label;
        EXPECT_LE(image->width, maximumImageSide) << row.label;
        EXPECT_LE(image->height, maximumImageSide) << row.label;
        EXPECT_LE(image->pixels.size(), 10'000'000U) << row.label;
        EXPECT_LT(time.count(), 3) << row.label; // under sanitizers on a busy machine
    }
}

TEST(SixelDecoder, DrawsAllThatAProgramSendsAtOnce) {
    struct Row {
        int count;
        int width;
        int height;
    };
    for (const Row& row : {Row{8, 1920, 1080}, Row{12, 1200, 900}, Row{40, 640, 480}}) {
        const auto number = [](int value) { return std::to_string(value); };
        std::string data = "\"1;1;" + number(row.width) + ";" + number(row.height) + "#1;2;9;9;9";
        for (int y = 0; y < row.height; y += 6) {
            data +=
                "#1!" + number(row.width / 2) + "~$#2!" + number(row.width / 2) + "?!" + number(row.width / 2) + "~-";
        }
        PixelAllowance allowance(10'000'000);
        allowance.renew(static_cast<size_t>(row.count) * data.size());
        for (int i = 0; i < row.count; ++i) {
            SixelDecoder decoder(allowance, 10'000'000, SixelDecoder::Background::transparent);
            decoder.append(data);
            EXPECT_TRUE(decoder.finish()) << i << " of " << row.width;
        }
    }
}

} // namespace
} // namespace term
