#include "TermEngine/EscapeSequenceParser_p.h"
#include "TermEngine/VectorOps_p.h"

#if defined(__x86_64__)

#include <bit>

#include <immintrin.h>

#define TERM_AVX512 [[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,bmi,bmi2,lzcnt,popcnt")]]

namespace term::detail {
namespace {

TERM_AVX512 inline std::uint64_t below(std::size_t count) {
    return _bzhi_u64(~std::uint64_t{0}, static_cast<unsigned>(count));
}

/// The bytes of the text from `p` on that are there; zeros behind them.
TERM_AVX512 inline __m512i load(const std::uint8_t* p, std::size_t left) {
    return left >= 64 ? _mm512_loadu_si512(p) : _mm512_maskz_loadu_epi8(below(left), p);
}

TERM_AVX512 inline std::uint64_t controlsOf(__m512i text) {
    return _mm512_cmplt_epu8_mask(text, _mm512_set1_epi8(0x20)) | _mm512_cmpeq_epi8_mask(text, _mm512_set1_epi8(0x7F));
}

TERM_AVX512 std::size_t asciiRun(const std::uint8_t* bytes, std::size_t size) {
    for (std::size_t at = 0; at < size; at += 64) {
        const __m512i text = load(bytes + at, size - at);
        if (const std::uint64_t others = controlsOf(text) | _mm512_movepi8_mask(text); others != 0) {
            return at + static_cast<std::size_t>(std::countr_zero(others));
        }
    }
    return size;
}

TERM_AVX512 inline void putEight(std::uint64_t* cells, __m128i text, __m512i pen, std::uint32_t which) {
    const __m512i wide = _mm512_slli_epi64(_mm512_cvtepu8_epi64(text), PackedCell::contentShift);
    _mm512_mask_storeu_epi64(cells, static_cast<__mmask8>(which), _mm512_or_si512(wide, pen));
}

TERM_AVX512 void expandAscii(std::uint64_t* cells, const std::uint8_t* bytes, std::size_t size, std::uint64_t pen) {
    const __m512i bits = _mm512_set1_epi64(static_cast<long long>(pen));
    for (std::size_t at = 0; at < size; at += 16) {
        const auto some = static_cast<std::uint32_t>(below(size - at < 16 ? size - at : 16));
        const __m128i text = _mm_maskz_loadu_epi8(static_cast<__mmask16>(some), bytes + at);
        putEight(cells + at, text, bits, some);
        putEight(cells + at + 8, _mm_srli_si128(text, 8), bits, some >> 8);
    }
}

/// Whether there is a gap, and how long it is, nobody can foretell: for up to 64 cells there is no branch on it.
TERM_AVX512 void expandAsciiBehind(
    std::uint64_t* cells, std::ptrdiff_t gap, std::uint64_t blank, const std::uint8_t* bytes, std::size_t size,
    std::uint64_t pen) {
    const __m512i blanks = _mm512_set1_epi64(static_cast<long long>(blank));
    const std::size_t count = gap < 0 ? 0 : static_cast<std::size_t>(gap);
    std::uint64_t* const from = cells - count;
    const std::uint64_t which = below(count < 64 ? count : 64);
#pragma GCC unroll 8
    for (unsigned at = 0; at < 64; at += 8) {
        _mm512_mask_storeu_epi64(from + at, static_cast<__mmask8>(which >> at), blanks);
    }
    for (std::size_t at = 64; at < count; at += 8) {
        const auto some = static_cast<__mmask8>(below(count - at < 8 ? count - at : 8));
        _mm512_mask_storeu_epi64(from + at, some, blanks);
    }
    expandAscii(cells, bytes, size, pen);
}

/// A column of the table of sequences, by the upper five bits of a lead byte.
template <typename Field>
constexpr std::array<std::uint32_t, 32> column(Field field) {
    std::array<std::uint32_t, 32> made{};
    for (std::size_t i = 0; i < made.size(); ++i) {
        made[i] = field(sequenceKinds[i]);
    }
    return made;
}

/// The bits of a sequence that are its scalar's, its first byte highest.
alignas(64) constexpr auto scalarBits = column([](const SequenceKind& kind) {
    return std::uint32_t{kind.leadMask} << 24 | 0x3F3F3FU;
});
alignas(64) constexpr auto shifts = column([](const SequenceKind& kind) { return std::uint32_t{kind.shift}; });
/// Of a lead byte that there is not, no scalar is large enough.
alignas(64) constexpr auto leastScalars = column([](const SequenceKind& kind) {
    return kind.size == 0 ? 0xFFFFFFFFU : kind.least;
});

TERM_AVX512 inline __m512i lookUp(const std::array<std::uint32_t, 32>& table, __m512i index) {
    return _mm512_permutex2var_epi32(_mm512_load_si512(table.data()), index, _mm512_load_si512(table.data() + 16));
}

struct Scalars {
    __m512i values;
    std::uint32_t bad; ///< lanes whose sequence is none
};

/// The sequences of `text` that begin at the first sixteen of the positions.
TERM_AVX512 inline Scalars scalarsAt(__m512i text, __m128i positions) {
    const __m512i four = _mm512_shuffle_epi8(
        _mm512_cvtepu8_epi32(positions), _mm512_set4_epi32(0x0C0C0C0C, 0x08080808, 0x04040404, 0x00000000));
    // The first byte comes to stand highest.
    const __m512i each = _mm512_permutexvar_epi8(_mm512_add_epi8(four, _mm512_set1_epi32(0x00010203)), text);
    const __m512i lead = _mm512_srli_epi32(each, 27);
    const __m512i bits = _mm512_and_si512(each, lookUp(scalarBits, lead));
    const __m512i pairs = _mm512_maddubs_epi16(bits, _mm512_set1_epi16(0x4001));
    const __m512i whole = _mm512_madd_epi16(pairs, _mm512_set1_epi32(0x10000001));
    const __m512i values = _mm512_srlv_epi32(whole, lookUp(shifts, lead));
    const std::uint32_t bad = static_cast<std::uint32_t>(_mm512_cmplt_epu32_mask(values, lookUp(leastScalars, lead))) |
                              _mm512_cmpgt_epu32_mask(values, _mm512_set1_epi32(0x10FFFF)) |
                              _mm512_cmpeq_epi32_mask(_mm512_srli_epi32(values, 11), _mm512_set1_epi32(0x1B));
    return {values, bad};
}

/// Where the next 64 bytes have to be left: before a control, before ASCII of 16 bytes in a row, where the bytes that
/// continue a sequence are not as its first byte says. And where sequences begin, as far as they are whole.
struct Extent {
    std::uint64_t starts;
    std::size_t bytes;
    bool ends;
};

TERM_AVX512 inline std::uint64_t atLeast(__m512i text, unsigned byte) {
    return _mm512_cmpge_epu8_mask(text, _mm512_set1_epi8(static_cast<char>(byte)));
}

TERM_AVX512 inline Extent extentOf(__m512i text) {
    const std::uint64_t above = _mm512_movepi8_mask(text);
    const std::uint64_t two = atLeast(text, 0xC0);
    const std::uint64_t three = atLeast(text, 0xE0);
    const std::uint64_t four = atLeast(text, 0xF0);
    const std::uint64_t tails = above & ~two;
    std::uint64_t ascii = ~above;
    for (const int step : {1, 2, 4, 8}) {
        ascii &= ascii >> step;
    }
    const std::uint64_t stops = ((two << 1 | three << 2 | four << 3) ^ tails) | controlsOf(text) | ascii;
    Extent extent{
        .starts = 0, .bytes = stops == 0 ? 64 : static_cast<std::size_t>(std::countr_zero(stops)), .ends = stops != 0};
    extent.starts = ~tails & below(extent.bytes);
    if (extent.starts != 0) {
        const auto last = static_cast<std::size_t>(63 - std::countl_zero(extent.starts));
        if (last + 1 + (two >> last & 1) + (three >> last & 1) + (four >> last & 1) > extent.bytes) {
            extent.starts &= below(last);
            extent.bytes = last;
        }
    }
    return extent;
}

TERM_AVX512 DecodedText decodeUtf8(const std::uint8_t* bytes, std::size_t size, char32_t* scalars) {
    DecodedText done;
    while (done.bytes < size) {
        const __m512i text = load(bytes + done.bytes, size - done.bytes);
        const Extent extent = extentOf(text);
        __m512i positions = _mm512_maskz_compress_epi8(
            extent.starts, _mm512_set_epi8(
                               63, 62, 61, 60, 59, 58, 57, 56, 55, 54, 53, 52, 51, 50, 49, 48, 47, 46, 45, 44, 43, 42,
                               41, 40, 39, 38, 37, 36, 35, 34, 33, 32, 31, 30, 29, 28, 27, 26, 25, 24, 23, 22, 21, 20,
                               19, 18, 17, 16, 15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0));
        const auto count = static_cast<std::size_t>(std::popcount(extent.starts));
        for (std::size_t at = 0; at < count; at += 16) {
            const Scalars found = scalarsAt(text, _mm512_castsi512_si128(positions));
            positions = _mm512_shuffle_i64x2(positions, positions, _MM_SHUFFLE(3, 3, 2, 1));
            _mm512_storeu_si512(scalars + done.scalars, found.values);
            const std::size_t lanes = count - at < 16 ? count - at : 16;
            if (const std::uint64_t bad = found.bad & below(lanes); bad != 0) {
                const auto good = static_cast<std::size_t>(std::countr_zero(bad));
                done.scalars += good;
                done.bytes += static_cast<std::size_t>(
                    std::countr_zero(_pdep_u64(std::uint64_t{1} << (at + good), extent.starts)));
                return done;
            }
            done.scalars += lanes;
        }
        done.bytes += extent.bytes;
        if (extent.ends || extent.bytes == 0) {
            break;
        }
    }
    return done;
}

/// By which of eight scalars are wide: the columns, of up to sixteen, in which a character begins.
constexpr auto columnsOfEight = [] {
    std::array<std::uint16_t, 256> made{};
    for (std::size_t wide = 0; wide < made.size(); ++wide) {
        unsigned column = 0;
        for (unsigned i = 0; i < 8; ++i) {
            made[wide] = static_cast<std::uint16_t>(made[wide] | 1U << column);
            column += (wide >> i & 1) != 0 ? 2 : 1;
        }
    }
    return made;
}();

template <std::size_t Count>
TERM_AVX512 inline std::uint32_t lanesWithin(__m512i text, const std::array<ScalarRange, Count>& ranges) {
    std::uint32_t lanes = 0;
    for (const auto& [first, last] : ranges) {
        const __m512i above = _mm512_sub_epi32(text, _mm512_set1_epi32(static_cast<int>(first)));
        lanes |= _mm512_cmple_epu32_mask(above, _mm512_set1_epi32(static_cast<int>(last - first)));
    }
    return lanes;
}

TERM_AVX512 ExpandedText
expandScalars(std::uint64_t* cells, const char32_t* scalars, std::size_t size, std::size_t columns, std::uint64_t pen) {
    ExpandedText done;
    const __m512i bits = _mm512_set1_epi64(static_cast<long long>(pen));
    const __m512i spacer = _mm512_set1_epi64(static_cast<long long>(pen | spacerBits));
    const __m512i wideMark = _mm512_set1_epi64(static_cast<long long>(wideBits));
    while (done.scalars < size) {
        const std::size_t left = size - done.scalars;
        const __m512i text =
            _mm512_maskz_loadu_epi32(static_cast<__mmask16>(below(left < 16 ? left : 16)), scalars + done.scalars);
        const std::uint32_t wides = lanesWithin(text, wideRanges);
        const std::uint32_t others = ~(wides | lanesWithin(text, narrowRanges));
        auto count = static_cast<std::size_t>(std::countr_zero(others | 0x10000U));
        const bool ends = count < 16;
        for (std::size_t half = 0; half < 16 && count > 0; half += 8) {
            const std::size_t here = count < 8 ? count : 8;
            const auto wide = static_cast<std::uint32_t>(wides >> half & below(here));
            const std::size_t width = here + static_cast<std::size_t>(std::popcount(wide));
            if (done.columns + width > columns) {
                return done;
            }
            const __m256i eight = half == 0 ? _mm512_castsi512_si256(text) : _mm512_extracti64x4_epi64(text, 1);
            const __m512i narrow = _mm512_or_si512(_mm512_slli_epi64(_mm512_cvtepu32_epi64(eight), 2), bits);
            const __m512i made = _mm512_mask_or_epi64(narrow, static_cast<__mmask8>(wide), narrow, wideMark);
            const std::uint32_t begins = columnsOfEight[wide];
            const auto inFront = static_cast<int>(std::popcount(begins & 0xFF));
            const __m512i rest = _mm512_permutexvar_epi64(
                _mm512_add_epi64(_mm512_set_epi64(7, 6, 5, 4, 3, 2, 1, 0), _mm512_set1_epi64(inFront)), made);
            const auto used = static_cast<std::uint32_t>(below(width));
            std::uint64_t* const to = cells + done.columns;
            _mm512_mask_storeu_epi64(
                to, static_cast<__mmask8>(used), _mm512_mask_expand_epi64(spacer, static_cast<__mmask8>(begins), made));
            _mm512_mask_storeu_epi64(
                to + 8, static_cast<__mmask8>(used >> 8),
                _mm512_mask_expand_epi64(spacer, static_cast<__mmask8>(begins >> 8), rest));
            done.scalars += here;
            done.columns += width;
            done.hasWide = done.hasWide || wide != 0;
            count -= here;
        }
        if (ends) {
            break;
        }
    }
    return done;
}

/// Of each group of four, the bytes 2, 1 and 0 of what it became.
alignas(64) constexpr auto groupOrder = [] {
    std::array<std::uint8_t, 64> order{};
    for (std::size_t i = 0; i < 48; ++i) {
        order[i] = static_cast<std::uint8_t>(i / 3 * 4 + 2 - i % 3);
    }
    return order;
}();

/// 64 characters into 48 bytes at a time; the rest as others do it.
TERM_AVX512 std::size_t decodeBase64(const std::uint8_t* text, std::size_t size, std::uint8_t* out) {
    const __m512i low = _mm512_load_si512(base64Values.data());
    const __m512i high = _mm512_load_si512(base64Values.data() + 64);
    const __m512i order = _mm512_load_si512(groupOrder.data());
    std::size_t at = 0;
    for (; size - at >= 64; at += 64) {
        const __m512i block = _mm512_loadu_si512(text + at);
        const __m512i values = _mm512_permutex2var_epi8(low, block, high);
        if (_mm512_movepi8_mask(_mm512_or_si512(block, values)) != 0) {
            break;
        }
        // Six bits each become twelve of two, then twenty-four of four.
        const __m512i pairs = _mm512_maddubs_epi16(values, _mm512_set1_epi32(0x01400140));
        const __m512i groups = _mm512_madd_epi16(pairs, _mm512_set1_epi32(0x00011000));
        _mm512_mask_storeu_epi8(out + at / 4 * 3, below(48), _mm512_permutexvar_epi8(order, groups));
    }
    return at + decodeBase64Plain(text + at, size - at, out + at / 4 * 3);
}

} // namespace

bool hasAvx512() {
    return __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl") &&
           __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vbmi2") &&
           __builtin_cpu_supports("bmi2");
}

VectorOps avx512Ops(const VectorOps& slower) {
    return {
        .name = "avx512",
        .asciiRun = asciiRun,
        .expandAscii = expandAscii,
        .expandAsciiBehind = expandAsciiBehind,
        .decodeUtf8 = decodeUtf8,
        .expandScalars = expandScalars,
        .decodeBase64 = decodeBase64,
        .sumScalars = slower.sumScalars};
}

} // namespace term::detail

#endif
