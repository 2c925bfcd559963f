#pragma once

#include "TermEngine/RgbaImage.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace term {

/// Inflates a zlib stream (RFC 1950) that has exactly or at most so many bytes when it is whole; nothing where it is
/// broken or longer.
[[nodiscard]] std::optional<std::vector<uint8_t>> inflateZlib(std::span<const uint8_t> data, size_t limitBytes);
/// More than so many bytes never come of them.
[[nodiscard]] size_t mostInflated(size_t bytes);

/// How many pixels a file has, if it is PNG.
[[nodiscard]] size_t pngPixels(std::span<const uint8_t> data);

/// Decodes a PNG file whose pixels take at most `limitBytes` (libpng).
[[nodiscard]] std::optional<RgbaImage> decodePng(std::span<const uint8_t> data, size_t limitBytes);

/// Pixels of 3 or 4 bytes as an image; nothing where there are too few of them.
[[nodiscard]] std::optional<RgbaImage> fromRawPixels(
    std::vector<uint8_t> data, int width, int height, int bytesPerPixel);

} // namespace term
