#pragma once

#include <cstdint>
#include <cstring>
#include <string>

namespace term::detail {

inline const std::string engineName = "TermEngine: ";

/// Whether the next 16 bytes are all below 0x80, so that the loop for ASCII pays.
inline bool isAsciiFor16(const std::uint8_t* p, const std::uint8_t* end) {
    if (end - p < 16) {
        return false;
    }
    std::uint64_t low = 0;
    std::uint64_t high = 0;
    std::memcpy(&low, p, 8);
    std::memcpy(&high, p + 8, 8);
    return ((low | high) & 0x8080808080808080ULL) == 0;
}

/// The sequence of two to four bytes that stands at `p`, and its size; 0 when what stands there is none, or not all
/// of one.
inline int decodeSequence(const std::uint8_t* p, const std::uint8_t* end, char32_t& scalar) {
    const auto tail = [p](int i) { return p[i] & 0x3Fu; };
    const auto isTail = [p](int i) { return (p[i] & 0xC0) == 0x80; };
    const std::uint8_t lead = p[0];
    if (lead < 0xE0) {
        if (lead < 0xC2 || end - p < 2 || !isTail(1)) {
            return 0;
        }
        scalar = (lead & 0x1Fu) << 6 | tail(1);
        return 2;
    }
    if (lead < 0xF0) {
        if (end - p < 3 || !isTail(1) || !isTail(2)) {
            return 0;
        }
        scalar = (lead & 0x0Fu) << 12 | tail(1) << 6 | tail(2);
        return scalar < 0x800 || (scalar >= 0xD800 && scalar < 0xE000) ? 0 : 3;
    }
    if (lead > 0xF4 || end - p < 4 || !isTail(1) || !isTail(2) || !isTail(3)) {
        return 0;
    }
    scalar = (lead & 0x07u) << 18 | tail(1) << 12 | tail(2) << 6 | tail(3);
    return scalar < 0x10000 || scalar > 0x10FFFF ? 0 : 4;
}

} // namespace term::detail
