#pragma once

#include <array>
#include <cstdint>

namespace term::unicode {

inline constexpr std::size_t blockSize = 128;
inline constexpr std::size_t blockCount = 179;
extern const std::array<std::uint8_t, 0x110000 / blockSize> blockOfScalar;
extern const std::array<std::uint8_t, blockCount * blockSize> blockProperties;

} // namespace term::unicode
