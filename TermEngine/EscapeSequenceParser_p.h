#pragma once

#include "TermEngine/Diagnostics.h"
#include "TermEngine/EscapeSequenceParser.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string>

#if defined(__SSE2__)
#include <emmintrin.h>
#elif defined(__aarch64__)
#include <arm_neon.h>
#endif

namespace term::detail {

inline const std::string logPrefix = std::string(engineName) + ": ";

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

/// The next four bytes, the first one lowest.
inline std::uint32_t wordAt(const std::uint8_t* p) {
    std::uint32_t word = 0;
    std::memcpy(&word, p, sizeof word);
    return std::endian::native == std::endian::little ? word : __builtin_bswap32(word);
}

/// Neither too long an encoding nor a surrogate.
inline bool isThreeByteSequence(std::uint32_t word) {
    const std::uint32_t top = (word & 0x0F) << 1 | (word >> 13 & 1); // the scalar's upper five bits
    return (word & 0xC0C0F0) == 0x8080E0 && top != 0 && top != 0x1B;
}

inline char32_t threeByteScalar(std::uint32_t word) {
    return (word & 0x0F) << 12 | (word >> 2 & 0xFC0) | (word >> 16 & 0x3F);
}

/// By the upper five bits of a lead byte.
struct SequenceKind {
    std::uint8_t size = 0; ///< 0: no sequence begins so
    std::uint8_t leadMask = 0;
    std::uint8_t shift = 0;  ///< by which the bits of four bytes are too far up
    std::uint32_t tails = 0; ///< mask of the upper two bits of the bytes that follow
    std::uint32_t least = 1;
};

inline constexpr auto sequenceKinds = [] {
    std::array<SequenceKind, 32> kinds{};
    const auto set = [&kinds](std::size_t first, std::size_t last, const SequenceKind& kind) {
        for (std::size_t i = first; i <= last; ++i) {
            kinds[i] = kind;
        }
    };
    set(0, 15, {1, 0x7F, 18, 0, 0});
    set(24, 27, {2, 0x1F, 12, 0xC000, 0x80});
    set(28, 29, {3, 0x0F, 6, 0xC0C000, 0x800});
    set(30, 30, {4, 0x07, 0, 0xC0C0C000, 0x10000});
    return kinds;
}();

/// The sequence that stands at `p`, ASCII included, and its size; 0 when none stands there. Without a branch on the
/// size, which nobody can foretell in mixed text. `word` is wordAt(p).
inline int decodeSequence(const std::uint8_t* p, std::uint32_t word, char32_t& scalar) {
    const SequenceKind& kind = sequenceKinds[p[0] >> 3];
    const std::uint32_t bits =
        (word & kind.leadMask) << 18 | (word & 0x3F00) << 4 | (word >> 10 & 0xFC0) | (word >> 24 & 0x3F);
    scalar = bits >> kind.shift;
    const bool isGood = (word & kind.tails) == (kind.tails & 0x80808080) && scalar >= kind.least &&
                        scalar >> 11 != 0x1B && scalar <= 0x10FFFF;
    return isGood ? kind.size : 0;
}

inline constexpr int sequenceSize = 32;

/// Of the bytes of a control sequence, a bit each, the first one lowest. Those behind its end may be left out.
struct SequenceShape {
    std::uint32_t others = 0; ///< no digits
    std::uint32_t semicolons = 0;
};

inline SequenceShape sequenceShapePlain(const std::uint8_t* p) {
    SequenceShape shape;
    for (unsigned i = 0; i < sequenceSize; ++i) {
        shape.others |= static_cast<std::uint32_t>(p[i] < '0' || p[i] > '9') << i;
        shape.semicolons |= static_cast<std::uint32_t>(p[i] == ';') << i;
    }
    return shape;
}

/// How many bytes at the front are printable ASCII, of sixteen at most.
inline std::size_t asciiRun16Plain(const std::uint8_t* p, std::size_t size) {
    std::size_t at = 0;
    while (at < 16 && at < size && p[at] >= 0x20 && p[at] < 0x7F) {
        ++at;
    }
    return at;
}

// Short enough to stand where they are used: with the vectors that every processor of its kind has.
#if defined(__SSE2__)

inline SequenceShape sequenceShape16(const std::uint8_t* p) {
    const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i above = _mm_subs_epu8(_mm_xor_si128(text, _mm_set1_epi8('0')), _mm_set1_epi8(9));
    const __m128i digits = _mm_cmpeq_epi8(above, _mm_setzero_si128());
    const __m128i semicolons = _mm_cmpeq_epi8(text, _mm_set1_epi8(';'));
    return {
        static_cast<std::uint32_t>(_mm_movemask_epi8(digits)) ^ 0xFFFFU,
        static_cast<std::uint32_t>(_mm_movemask_epi8(semicolons))};
}

inline std::size_t asciiRun16(const std::uint8_t* p, std::size_t size) {
    if (size < 16) [[unlikely]] {
        return asciiRun16Plain(p, size);
    }
    const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    // Signed: what is above 0x7F is below 0x20 too.
    const __m128i bad =
        _mm_or_si128(_mm_cmplt_epi8(text, _mm_set1_epi8(0x20)), _mm_cmpeq_epi8(text, _mm_set1_epi8(0x7F)));
    return static_cast<std::size_t>(std::countr_zero(static_cast<unsigned>(_mm_movemask_epi8(bad)) | 0x10000U));
}

#elif defined(__aarch64__)

inline std::uint32_t bitsOfNeon(uint8x16_t mask) {
    static constexpr std::uint8_t places[16] = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};
    const uint8x16_t bits = vandq_u8(mask, vld1q_u8(places));
    return vaddv_u8(vget_low_u8(bits)) | std::uint32_t{vaddv_u8(vget_high_u8(bits))} << 8;
}

inline SequenceShape sequenceShape16(const std::uint8_t* p) {
    const uint8x16_t text = vld1q_u8(p);
    return {
        bitsOfNeon(vcgtq_u8(vsubq_u8(text, vdupq_n_u8('0')), vdupq_n_u8(9))),
        bitsOfNeon(vceqq_u8(text, vdupq_n_u8(';')))};
}

inline std::size_t asciiRun16(const std::uint8_t* p, std::size_t size) {
    if (size < 16) {
        return asciiRun16Plain(p, size);
    }
    const uint8x16_t bad = vcgeq_u8(vsubq_u8(vld1q_u8(p), vdupq_n_u8(0x20)), vdupq_n_u8(0x5F));
    return static_cast<std::size_t>(std::countr_zero(bitsOfNeon(bad) | 0x10000U));
}

#else

inline SequenceShape sequenceShape16(const std::uint8_t* p) {
    const SequenceShape shape = sequenceShapePlain(p);
    return {shape.others & 0xFFFF, shape.semicolons & 0xFFFF};
}

inline std::size_t asciiRun16(const std::uint8_t* p, std::size_t size) {
    return asciiRun16Plain(p, size);
}

#endif

inline SequenceShape sequenceShape(const std::uint8_t* p) {
    SequenceShape shape = sequenceShape16(p);
    if (shape.others == shape.semicolons) [[unlikely]] {
        const SequenceShape rest = sequenceShape16(p + 16);
        shape = {shape.others | rest.others << 16, shape.semicolons | rest.semicolons << 16};
    }
    return shape;
}

/// Whether "38;2;" or "48;2;" stands there.
inline bool beginsTrueColor(const std::uint8_t* p) {
    return p[0] - unsigned{'3'} < 2 && wordAt(p + 1) == 0x3B323B38;
}

/// Whether "38;5;" or "48;5;" stands there.
inline bool beginsPaletteColor(const std::uint8_t* p) {
    return p[0] - unsigned{'3'} < 2 && wordAt(p + 1) == 0x3B353B38;
}

/// There are sixteen bytes to read.
inline SequenceText sequenceText(const std::uint8_t* p, int size) {
    SequenceText text;
    std::memcpy(&text.low, p, sizeof text.low);
    std::memcpy(&text.high, p + 8, sizeof text.high);
    static constexpr auto masks = [] {
        std::array<SequenceText, 16> made{};
        for (unsigned bytes = 0; bytes < 16; ++bytes) {
            made[bytes].low = bytes < 8 ? (std::uint64_t{1} << 8 * bytes) - 1 : ~std::uint64_t{0};
            made[bytes].high = bytes < 8 ? 0 : (std::uint64_t{1} << 8 * (bytes - 8)) - 1;
        }
        return made;
    }();
    const SequenceText& mask = masks[static_cast<unsigned>(size)];
    if constexpr (std::endian::native == std::endian::big) {
        text = {__builtin_bswap64(text.low), __builtin_bswap64(text.high)};
    }
    text.low &= mask.low;
    text.high &= mask.high;
    return text;
}

/// Two numbers of up to four digits each; there are four bytes to read at either. The first one is in the lower half.
inline std::uint64_t numbersAt(const std::uint8_t* first, int firstCount, const std::uint8_t* second, int secondCount) {
    const std::uint64_t low = std::uint64_t{wordAt(first) ^ 0x30303030} << (32 - 8 * firstCount);
    const std::uint64_t high = std::uint64_t{wordAt(second) ^ 0x30303030} << (32 - 8 * secondCount);
    std::uint64_t word = (low & 0xFFFFFFFF) | high << 32;
    word = (word * 10 + (word >> 8)) & 0x00FF00FF00FF00FF;
    return (word * 100 + (word >> 16)) & 0x0000FFFF0000FFFF;
}

/// The number that up to four digits are; there are four bytes to read.
inline std::int32_t numberAt(const std::uint8_t* p, int count) {
    // The digits move to the top, with zeros in front; then pairs and all four are added up.
    auto word = static_cast<std::uint32_t>(std::uint64_t{wordAt(p) ^ 0x30303030} << (32 - 8 * count));
    word = (word * 10 + (word >> 8)) & 0x00FF00FF;
    return static_cast<std::int32_t>((word * 100 + (word >> 16)) & 0xFFFF);
}

} // namespace term::detail
