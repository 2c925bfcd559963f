#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace term {

/// No image has more pixels in a row or a column.
constexpr int maximumImageSide = 10'000;

/// Pixels in rows from the top, four bytes each: red, green, blue and alpha, which is not multiplied into the others.
struct RgbaImage {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> pixels{};

    /// Whether it has pixels, and as many as it says.
    [[nodiscard]] bool isValid() const {
        return width > 0 && height > 0 && width <= maximumImageSide && height <= maximumImageSide &&
               pixels.size() == static_cast<size_t>(height) * rowBytes();
    }
    [[nodiscard]] bool isOpaque() const {
        for (size_t at = 3; at < pixels.size(); at += 4) {
            if (pixels[at] != 0xFF) {
                return false;
            }
        }
        return true;
    }
    [[nodiscard]] size_t rowBytes() const { return static_cast<size_t>(width) * 4; }
    bool operator==(const RgbaImage&) const = default;
};

} // namespace term
