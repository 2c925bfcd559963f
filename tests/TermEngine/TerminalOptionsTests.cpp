#include "TermEngine/TerminalEnvironment.h"
#include "TermEngine/TerminalOptions.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace term {

TEST(TerminalOptions, StoresNoLimitBelowItsMinimum) {
    TerminalOptions options{.maximumBidiParagraphRows = 0, .kittyClipboardWriteLimitBytes = 1};
    EXPECT_EQ(options.maximumBidiParagraphRows, 1);
    EXPECT_EQ(options.kittyClipboardWriteLimitBytes, TerminalOptions::minimumKittyClipboardWriteLimitBytes);
    options.maximumBidiParagraphRows = -7;
    EXPECT_EQ(options.maximumBidiParagraphRows, 1);
    options.maximumBidiParagraphRows = 12;
    EXPECT_EQ(options.maximumBidiParagraphRows, 12);
    EXPECT_EQ(TerminalOptions::defaults().maximumBidiParagraphRows, 500);
}

TEST(TerminalOptions, TakesALimitForImagesInPlaceOfGraphicsSettings) {
    const auto options = TerminalOptions::withImageCacheLimit(
        42, {.cols = 100, .kittyGraphics = {.storageFolder = "/tmp", .allowsLocalMedia = true}, .maximumOscBytes = 1});
    EXPECT_EQ(options.kittyGraphics, KittyGraphicsConfiguration{.imageCacheLimitBytes = 42});
    EXPECT_EQ(options.cols, 100);
    EXPECT_EQ(options.maximumOscBytes, 68'157'440U);
}

TEST(TerminalEnvironment, HoldsTheUsersNameTwice) {
    ::setenv("USER", "ada", 1);
    ::setenv("HOME", "/home/ada", 1);
    for (const char* name : {"LOGNAME", "DISPLAY", "LC_TYPE"}) {
        ::unsetenv(name);
    }
    using Variables = std::vector<std::string>;
    EXPECT_EQ(
        getEnvironmentVariables(std::nullopt, TrueColor::yes),
        (Variables{
            "TERM=xterm-256color", "COLORTERM=truecolor", "LANG=en_US.UTF-8", "USER=ada", "USER=ada",
            "HOME=/home/ada"}));
    EXPECT_EQ(
        getEnvironmentVariables("vt220", TrueColor::no),
        (Variables{"TERM=vt220", "LANG=en_US.UTF-8", "USER=ada", "USER=ada", "HOME=/home/ada"}));
}

} // namespace term
