#include "ImageFixture.h"

#include "TermEngine/Base64.h"

#include <algorithm>
#include <map>

#include <png.h>

namespace term {

const std::string& kittyPixels() {
    static const std::string pixels = encodeBase64(std::string(4 * 6 * 4, 'x'));
    return pixels;
}

std::string kitty(const std::string& keys) {
    return "\x1B_Ga=T,q=2,C=1,s=4,v=6" + keys + ";" + kittyPixels() + "\x1B\\";
}

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

Screen::Screen(int scrollback) : terminal(host, {.cols = cols, .rows = rows, .scrollback = scrollback}) {
    host.cellSize = CellSize{2, 2};
}

void Screen::feed(std::string_view bytes, bool inPieces) {
    for (std::size_t at = 0; inPieces && at < bytes.size(); ++at) {
        terminal.feed(bytes.substr(at, 1));
    }
    if (!inPieces) {
        terminal.feed(bytes);
    }
}

} // namespace term
