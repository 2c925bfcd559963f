#pragma once

#include "TerminalFixture.h"

#include <gtest/gtest.h>

#include <span>
#include <string>
#include <string_view>

namespace term {

constexpr int cols = 8;
constexpr int rows = 6;

/// The pixels of a picture of 2 by 3 cells of 2 by 2 pixels, in base64.
[[nodiscard]] const std::string& kittyPixels();
/// That picture by kitty's protocol, with further keys (",i=1").
[[nodiscard]] std::string kitty(const std::string& keys = "");
/// A file of that size.
[[nodiscard]] std::string png(int width, int height);

/// The screen with digits where an image is: the row of the picture, of two pixels each, that a cell shows.
[[nodiscard]] std::string pictureOf(const Terminal& terminal);
/// How many images lie over each cell that is still there.
[[nodiscard]] std::string coverOf(const Terminal& terminal);

struct Screen {
    RecordingHost host;
    Terminal terminal;

    explicit Screen(int scrollback = 10);
    void feed(std::string_view bytes, bool inPieces);
};

} // namespace term
