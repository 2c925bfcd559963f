#pragma once

#include "TermEngine/RgbaImage.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <vector>

namespace term {

struct PixelArea {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    [[nodiscard]] bool isWithin(int wholeWidth, int wholeHeight) const {
        return x >= 0 && y >= 0 && width > 0 && height > 0 && width <= wholeWidth - x && height <= wholeHeight - y;
    }
    [[nodiscard]] bool intersects(const PixelArea& other) const {
        return x < other.x + other.width && other.x < x + width && y < other.y + other.height && other.y < y + height;
    }
};

enum class BlendMode : uint8_t { over, replace };

/// All pixels of `image` in the colour 0xRRGGBBAA.
inline void fill(RgbaImage& image, uint32_t rgba) {
    const auto part = [rgba](unsigned shift) { return static_cast<uint8_t>(rgba >> shift); };
    const std::vector<uint32_t> row(
        static_cast<size_t>(image.width), std::bit_cast<uint32_t>(std::array{part(24), part(16), part(8), part(0)}));
    image.pixels.clear();
    image.reserveRows();
    for (int count = 0; count < image.height; ++count) {
        image.appendRow(row);
    }
}

/// One pixel over another one, with alpha that is not multiplied into the colours.
inline void blendPixel(uint8_t* onto, const uint8_t* from) {
    const unsigned alpha = from[3];
    if (alpha == 255) {
        std::memcpy(onto, from, 4);
        return;
    }
    if (alpha == 0) {
        return;
    }
    const unsigned below = onto[3] * (255 - alpha); // of 255 * 255
    const unsigned whole = alpha * 255 + below;
    if (whole == 0) {
        return;
    }
    for (int part = 0; part < 3; ++part) {
        onto[part] = static_cast<uint8_t>((from[part] * alpha * 255 + onto[part] * below + whole / 2) / whole);
    }
    onto[3] = static_cast<uint8_t>((whole + 127) / 255);
}

/// Pixels of `from`, beginning at the given ones, onto an area that lies within `image`.
inline void blend(RgbaImage& image, PixelArea area, const RgbaImage& from, int fromX, int fromY, BlendMode mode) {
    for (int row = 0; row < area.height; ++row) {
        uint8_t* to = image.pixels.data() + static_cast<size_t>(area.y + row) * image.rowBytes() +
                      static_cast<size_t>(area.x) * 4;
        const uint8_t* source =
            from.pixels.data() + static_cast<size_t>(fromY + row) * from.rowBytes() + static_cast<size_t>(fromX) * 4;
        if (mode == BlendMode::replace) {
            std::memmove(to, source, static_cast<size_t>(area.width) * 4);
            continue;
        }
        for (int column = 0; column < area.width; ++column, to += 4, source += 4) {
            blendPixel(to, source);
        }
    }
}

} // namespace term
