#pragma once

#include <algorithm>
#include <cstddef>

namespace term {

/// How many pixels may still be painted, decoded and copied before the terminal is fed again, so that a few bytes which
/// name large pictures over and over take bounded time. What is beyond it is refused whole, before it costs anything.
///
/// One feed may always make a picture as large as all memory for pictures, several times over, and more of them as it
/// is longer itself: as many as a program draws that does not wait until one is seen.
class PixelAllowance {
public:
    static constexpr size_t leastPixels = size_t{48} << 20U;
    static constexpr size_t pixelsOfByte = 256;
    /// What some things cost, in pixels that are painted.
    static constexpr size_t ofDecodedPixel = 4;
    static constexpr size_t ofInflatedPixel = 3;
    static constexpr size_t ofBlendedPixel = 4;
    static constexpr size_t ofLine = 8; ///< that comes onto the screen

    /// For pictures that take so much together: one that takes all of it is inflated and decoded.
    explicit PixelAllowance(size_t storeBytes)
        : m_basis(std::max(leastPixels, storeBytes / 4 * (ofInflatedPixel + ofDecodedPixel))), m_left(m_basis) {}

    void renew(size_t fedBytes) { m_left = m_basis + fedBytes * pixelsOfByte; }
    [[nodiscard]] size_t left() const { return m_left; }
    /// False, and nothing is taken, where there are not so many.
    [[nodiscard]] bool take(size_t pixels) {
        const bool isEnough = pixels <= m_left;
        m_left -= isEnough ? pixels : 0;
        return isEnough;
    }

private:
    size_t m_basis;
    size_t m_left;
};

} // namespace term
