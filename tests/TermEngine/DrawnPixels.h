#pragma once

#include "TermEngine/ImageCodec.h"

#include <string>

namespace term {

/// Pixels as letters, a line a row: the fixed colours of these tests, "." for transparent, "?" for any other.
inline std::string drawn(const RgbaImage& image) {
    std::string out;
    for (size_t at = 0; at + 3 < image.pixels.size(); at += 4) {
        const uint8_t* p = image.pixels.data() + at;
        const uint32_t rgba = uint32_t{p[0]} << 24U | uint32_t{p[1]} << 16U | uint32_t{p[2]} << 8U | p[3];
        out.push_back(
            p[3] == 0            ? '.'
            : rgba == 0xFF0000FF ? 'r'
            : rgba == 0x00FF00FF ? 'g'
            : rgba == 0x0000FFFF ? 'b'
            : rgba == 0x000000FF ? 'k'
                                 : '?');
        if ((at / 4 + 1) % static_cast<size_t>(image.width) == 0) {
            out.push_back('\n');
        }
    }
    return out;
}

} // namespace term
