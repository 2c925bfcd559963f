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

/// The next eight bytes, the first one lowest.
inline std::uint64_t longWordAt(const std::uint8_t* p) {
    std::uint64_t word = 0;
    std::memcpy(&word, p, sizeof word);
    return std::endian::native == std::endian::little ? word : __builtin_bswap64(word);
}

/// A byte eight times.
constexpr std::uint64_t everyByte(std::uint8_t byte) {
    return byte * std::uint64_t{0x0101010101010101};
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

/// From the ESC on, with a marker; the last number is read four bytes at a look.
inline constexpr int sequenceRoom = 2 + 1 + sequenceSize + 4;

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
inline std::size_t asciiRun16Plain(const std::uint8_t* p) {
    std::size_t at = 0;
    while (at < 16 && p[at] >= 0x20 && p[at] < 0x7F) {
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

inline std::size_t asciiRun16(const std::uint8_t* p) {
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

inline std::size_t asciiRun16(const std::uint8_t* p) {
    const uint8x16_t bad = vcgeq_u8(vsubq_u8(vld1q_u8(p), vdupq_n_u8(0x20)), vdupq_n_u8(0x5F));
    return static_cast<std::size_t>(std::countr_zero(bitsOfNeon(bad) | 0x10000U));
}

#else

inline SequenceShape sequenceShape16(const std::uint8_t* p) {
    const SequenceShape shape = sequenceShapePlain(p);
    return {shape.others & 0xFFFF, shape.semicolons & 0xFFFF};
}

inline std::size_t asciiRun16(const std::uint8_t* p) {
    return asciiRun16Plain(p);
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

/// Whether "ESC [" stands there.
inline bool beginsCsi(const std::uint8_t* p) {
    return p[0] == 0x1B && p[1] == '[';
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

/// Of the four digits in either half, the last one highest.
inline std::uint64_t sumOfDigits(std::uint64_t digits) {
    digits = (digits * 10 + (digits >> 8)) & 0x00FF00FF00FF00FF;
    return (digits * 100 + (digits >> 16)) & 0x0000FFFF0000FFFF;
}

/// Of a control sequence, from behind "ESC [": at most two numbers of up to four digits each, and the final byte.
struct ShortSequence {
    int size = 0;           ///< with the final byte
    std::uint8_t final = 0; ///< what is none, where the sequence is none or longer
    std::int32_t first = 0;
    std::int32_t second = 0; ///< -1 where there is none

    bool operator==(const ShortSequence&) const = default;
};

/// Whether all before the final byte is so, of the eight bytes at `p`. As one number these show within few steps where
/// the sequence ends, on which all that follows has to wait; and there is no branch on how many digits there are.
inline bool readShortSequence(const std::uint8_t* p, ShortSequence& sequence) {
    const std::uint64_t word = longWordAt(p);
    // Of a sequence the final byte alone has this bit; the last byte ends the search. Places are counted in bits.
    const int end = std::countr_zero((word & everyByte(0x40)) | std::uint64_t{1} << 63) & ~7;
    sequence.size = (end >> 3) + 1;
    sequence.final = static_cast<std::uint8_t>(word >> end);
    const std::uint64_t endBit = std::uint64_t{1} << end;
    const std::uint64_t text = (word ^ everyByte('0')) & (endBit - 1);
    const std::uint64_t others = (text + everyByte(0x76)) & everyByte(0x80); // no digits, of bytes below 16
    if (((others & (others - 1)) | (text & everyByte(0xF0))) != 0) {
        return false;
    }
    const int separator = std::countr_zero(others | endBit) & ~7;
    constexpr unsigned nothingOrSemicolon = 1U | 1U << (';' - '0');
    if (separator > 32 || end - separator > 40 || (nothingOrSemicolon >> (text >> separator & 0xF) & 1) == 0) {
        return false;
    }
    // Either number's last digit comes to stand highest in its half, with zeros in front.
    const auto low = static_cast<std::uint32_t>(text << (32 - separator));
    const std::uint64_t high = text >> separator >> 8 << (40 - end + separator);
    const std::uint64_t both = sumOfDigits(low | high << 32);
    sequence.first = static_cast<std::int32_t>(both & 0xFFFF);
    sequence.second = static_cast<std::int32_t>(both >> 32) | -static_cast<std::int32_t>(separator == end);
    return true;
}

/// The number that up to four digits are; there are four bytes to read.
inline std::int32_t numberAt(const std::uint8_t* p, int count) {
    // The digits move to the top, with zeros in front; then pairs and all four are added up.
    auto word = static_cast<std::uint32_t>(std::uint64_t{wordAt(p) ^ 0x30303030} << (32 - 8 * count));
    word = (word * 10 + (word >> 8)) & 0x00FF00FF;
    return static_cast<std::int32_t>((word * 100 + (word >> 16)) & 0xFFFF);
}

} // namespace term::detail
