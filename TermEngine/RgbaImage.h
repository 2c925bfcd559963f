#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
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
        constexpr size_t block = 4096;
        for (size_t begin = 0; begin < pixels.size(); begin += block) {
            const size_t end = std::min(begin + block, pixels.size());
            uint8_t all = 0xFF;
            for (size_t at = begin + 3; at < end; at += 4) {
                all &= pixels[at];
            }
            if (all != 0xFF) {
                return false;
            }
        }
        return true;
    }
    /// Before rows are appended to an image without any: so nothing is written twice.
    void reserveRows() { pixels.reserve(static_cast<size_t>(height) * rowBytes()); }
    /// Each pixel with its four bytes in order.
    void appendRow(std::span<const uint32_t> row) {
        const auto* const bytes = reinterpret_cast<const uint8_t*>(row.data());
        pixels.insert(pixels.end(), bytes, bytes + row.size_bytes());
    }
    [[nodiscard]] size_t rowBytes() const { return static_cast<size_t>(width) * 4; }
    bool operator==(const RgbaImage&) const = default;
};

} // namespace term
