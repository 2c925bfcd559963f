#include "TermEngine/VectorOps.h"

#include "TermEngine/EscapeSequenceParser_p.h"
#include "TermEngine/VectorOps_p.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <vector>

#if defined(__x86_64__)
#include <immintrin.h>
#elif defined(__aarch64__)
#include <arm_neon.h>
#endif

namespace term {

std::size_t detail::decodeBase64Plain(const std::uint8_t* text, std::size_t size, std::uint8_t* out) {
    std::size_t at = 0;
    for (; size - at >= 4; at += 4) {
        std::uint32_t bits = 0;
        std::uint8_t others = 0;
        for (std::size_t i = at; i < at + 4; ++i) {
            const std::uint8_t value = detail::base64Values[text[i]];
            others |= value;
            bits = bits << 6 | value;
        }
        if ((others & detail::noBase64) != 0) {
            break;
        }
        *out++ = static_cast<std::uint8_t>(bits >> 16);
        *out++ = static_cast<std::uint8_t>(bits >> 8);
        *out++ = static_cast<std::uint8_t>(bits);
    }
    return at;
}

namespace {

std::size_t asciiRunPlain(const std::uint8_t* bytes, std::size_t size) {
    std::size_t at = 0;
    while (at < size && bytes[at] >= 0x20 && bytes[at] < 0x7F) {
        ++at;
    }
    return at;
}

void expandAsciiPlain(std::uint64_t* cells, const std::uint8_t* bytes, std::size_t size, std::uint64_t pen) {
    for (std::size_t i = 0; i < size; ++i) {
        cells[i] = (std::uint64_t{bytes[i]} << 2) | pen;
    }
}

DecodedText decodeUtf8Plain(const std::uint8_t* bytes, std::size_t size, char32_t* scalars) {
    const std::uint8_t* p = bytes;
    const std::uint8_t* const end = bytes + size;
    char32_t* to = scalars;
    while (end - p >= 4 && *p >= 0x20 && *p != 0x7F) {
        std::uint32_t word = detail::wordAt(p);
        if ((word & 0x80808080) == 0 && detail::isAsciiFor16(p, end)) {
            break;
        }
        // Three bytes each, which most of the world's larger scripts have.
        if (detail::isThreeByteSequence(word)) {
            do {
                *to++ = detail::threeByteScalar(word);
                p += 3;
                if (end - p < 4) {
                    break;
                }
                word = detail::wordAt(p);
            } while (detail::isThreeByteSequence(word));
            continue;
        }
        const int taken = detail::decodeSequence(p, word, *to);
        if (taken == 0) {
            break;
        }
        ++to;
        p += taken;
    }
    return {static_cast<std::size_t>(p - bytes), static_cast<std::size_t>(to - scalars)};
}

ExpandedText expandScalarsPlain(
    std::uint64_t* cells, const char32_t* scalars, std::size_t size, std::size_t columns, std::uint64_t pen) {
    ExpandedText done;
    for (; done.scalars < size; ++done.scalars) {
        const auto width = static_cast<std::size_t>(detail::commonWidth(scalars[done.scalars]));
        if (width == 0 || done.columns + width > columns) {
            break;
        }
        const bool isWide = width == 2;
        cells[done.columns] = std::uint64_t{scalars[done.scalars]} << 2 | pen | (isWide ? detail::wideBits : 0);
        if (isWide) {
            cells[done.columns + 1] = pen | detail::spacerBits;
            done.hasWide = true;
        }
        done.columns += width;
    }
    return done;
}

constexpr std::uint32_t kindMask = 3;

/// Written so that it takes several cells at once: what is said of a cell's text stands in its lower half.
TextSum sumScalarsPlain(const std::uint64_t* cells, std::size_t size) {
    constexpr auto textMask = static_cast<std::uint32_t>(PackedCell::contentMask | kindMask);
    TextSum sum;
    for (std::size_t i = 0; i < size; ++i) {
        const auto low = static_cast<std::uint32_t>(cells[i]);
        sum.scalars += (low & kindMask) == 0 ? (low & textMask) >> PackedCell::contentShift : 0;
        sum.clusters += (low & kindMask) == static_cast<std::uint32_t>(PackedCell::Kind::cluster) ? 1 : 0;
    }
    return sum;
}

#if defined(__x86_64__)

/// Blocks of 16 characters into 12 bytes each; each block writes 16.
[[gnu::target("ssse3")]] std::size_t decodeBase64Ssse3(const std::uint8_t* text, std::size_t size, std::uint8_t* out) {
    const auto all = [](int byte) { return _mm_set1_epi8(static_cast<char>(byte)); };
    std::size_t at = 0;
    for (; size - at >= 24; at += 16) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + at));
        // Bytes above 0x7F are negative, and in no range.
        const __m128i upper = _mm_and_si128(_mm_cmpgt_epi8(block, all('A' - 1)), _mm_cmplt_epi8(block, all('Z' + 1)));
        const __m128i lower = _mm_and_si128(_mm_cmpgt_epi8(block, all('a' - 1)), _mm_cmplt_epi8(block, all('z' + 1)));
        const __m128i digit = _mm_and_si128(_mm_cmpgt_epi8(block, all('0' - 1)), _mm_cmplt_epi8(block, all('9' + 1)));
        const __m128i plus = _mm_cmpeq_epi8(block, all('+'));
        const __m128i slash = _mm_cmpeq_epi8(block, all('/'));
        const __m128i known = _mm_or_si128(_mm_or_si128(upper, lower), _mm_or_si128(digit, _mm_or_si128(plus, slash)));
        if (_mm_movemask_epi8(known) != 0xFFFF) {
            break;
        }
        const __m128i letters = _mm_or_si128(_mm_and_si128(upper, all(-'A')), _mm_and_si128(lower, all(26 - 'a')));
        const __m128i others = _mm_or_si128(
            _mm_and_si128(digit, all(52 - '0')),
            _mm_or_si128(_mm_and_si128(plus, all(62 - '+')), _mm_and_si128(slash, all(63 - '/'))));
        const __m128i values = _mm_add_epi8(block, _mm_or_si128(letters, others));
        // Six bits each become twelve of two, then twenty-four of four; their bytes are then put in order.
        const __m128i pairs = _mm_maddubs_epi16(values, _mm_set1_epi32(0x01400140));
        const __m128i groups = _mm_madd_epi16(pairs, _mm_set1_epi32(0x00011000));
        const __m128i order = _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + at / 4 * 3), _mm_shuffle_epi8(groups, order));
    }
    return at + detail::decodeBase64Plain(text + at, size - at, out + at / 4 * 3);
}

std::size_t asciiRunSse2(const std::uint8_t* bytes, std::size_t size) {
    std::size_t at = 0;
    for (; at + 16 <= size; at += 16) {
        const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + at));
        // Signed: what is above 0x7F is below 0x20 too.
        const __m128i printable = _mm_cmpgt_epi8(text, _mm_set1_epi8(0x1F));
        const __m128i good = _mm_andnot_si128(_mm_cmpeq_epi8(text, _mm_set1_epi8(0x7F)), printable);
        const auto bad = ~static_cast<unsigned>(_mm_movemask_epi8(good)) & 0xFFFFu;
        if (bad != 0) {
            return at + static_cast<std::size_t>(std::countr_zero(bad));
        }
    }
    return at + asciiRunPlain(bytes + at, size - at);
}

[[gnu::target("avx2")]] std::size_t asciiRunAvx2(const std::uint8_t* bytes, std::size_t size) {
    std::size_t at = 0;
    for (; at + 32 <= size; at += 32) {
        const __m256i text = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes + at));
        const __m256i printable = _mm256_cmpgt_epi8(text, _mm256_set1_epi8(0x1F));
        const __m256i good = _mm256_andnot_si256(_mm256_cmpeq_epi8(text, _mm256_set1_epi8(0x7F)), printable);
        const auto bad = ~static_cast<unsigned>(_mm256_movemask_epi8(good));
        if (bad != 0) {
            return at + static_cast<std::size_t>(std::countr_zero(bad));
        }
    }
    return at + asciiRunSse2(bytes + at, size - at);
}

[[gnu::target("avx2")]] void expandAsciiAvx2(
    std::uint64_t* cells, const std::uint8_t* bytes, std::size_t size, std::uint64_t pen) {
    const __m256i bits = _mm256_set1_epi64x(static_cast<long long>(pen));
    if (size < 4) {
        expandAsciiPlain(cells, bytes, size, pen);
        return;
    }
    // The last four may be written twice.
    for (std::size_t at = 0; at < size; at += 4) {
        const std::size_t from = std::min(at, size - 4);
        int four = 0;
        std::memcpy(&four, bytes + from, 4);
        const __m256i wide = _mm256_cvtepu8_epi64(_mm_cvtsi32_si128(four));
        const __m256i made = _mm256_or_si256(_mm256_slli_epi64(wide, 2), bits);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(cells + from), made);
    }
}

/// The lower halves of eight cells at once.
[[gnu::target("avx2")]] TextSum sumScalarsAvx2(const std::uint64_t* cells, std::size_t size) {
    const __m256i kind = _mm256_set1_epi32(kindMask);
    const __m256i cluster = _mm256_set1_epi32(static_cast<int>(PackedCell::Kind::cluster));
    const __m256i content = _mm256_set1_epi32(static_cast<int>(PackedCell::contentMask));
    __m256i scalars = _mm256_setzero_si256();
    __m256i clusters = _mm256_setzero_si256();
    std::size_t at = 0;
    for (; at + 8 <= size; at += 8) {
        const auto* const from = reinterpret_cast<const float*>(cells + at);
        const __m256i text =
            _mm256_castps_si256(_mm256_shuffle_ps(_mm256_loadu_ps(from), _mm256_loadu_ps(from + 8), 0x88));
        const __m256i kinds = _mm256_and_si256(text, kind);
        const __m256i isScalar = _mm256_cmpeq_epi32(kinds, _mm256_setzero_si256());
        const __m256i found = _mm256_and_si256(_mm256_and_si256(text, content), isScalar);
        scalars = _mm256_add_epi32(scalars, _mm256_srli_epi32(found, PackedCell::contentShift));
        clusters = _mm256_sub_epi32(clusters, _mm256_cmpeq_epi32(kinds, cluster));
    }
    TextSum sum = sumScalarsPlain(cells + at, size - at);
    alignas(32) std::array<std::uint32_t, 16> lanes{};
    _mm256_store_si256(reinterpret_cast<__m256i*>(lanes.data()), scalars);
    _mm256_store_si256(reinterpret_cast<__m256i*>(lanes.data() + 8), clusters);
    for (std::size_t lane = 0; lane < 8; ++lane) {
        sum.scalars += lanes[lane];
        sum.clusters += lanes[lane + 8];
    }
    return sum;
}

#elif defined(__aarch64__)

std::size_t asciiRunNeon(const std::uint8_t* bytes, std::size_t size) {
    std::size_t at = 0;
    for (; at + 16 <= size; at += 16) {
        const uint8x16_t text = vld1q_u8(bytes + at);
        const uint8x16_t good = vcltq_u8(vsubq_u8(text, vdupq_n_u8(0x20)), vdupq_n_u8(0x5F));
        if (vminvq_u8(good) == 0) {
            break;
        }
    }
    return at + asciiRunPlain(bytes + at, size - at);
}

void expandAsciiNeon(std::uint64_t* cells, const std::uint8_t* bytes, std::size_t size, std::uint64_t pen) {
    const uint64x2_t bits = vdupq_n_u64(pen);
    std::size_t at = 0;
    for (; at + 8 <= size; at += 8) {
        const uint16x8_t text = vmovl_u8(vld1_u8(bytes + at));
        const uint32x4_t low = vmovl_u16(vget_low_u16(text));
        const uint32x4_t high = vmovl_u16(vget_high_u16(text));
        vst1q_u64(cells + at, vorrq_u64(vshll_n_u32(vget_low_u32(low), 2), bits));
        vst1q_u64(cells + at + 2, vorrq_u64(vshll_n_u32(vget_high_u32(low), 2), bits));
        vst1q_u64(cells + at + 4, vorrq_u64(vshll_n_u32(vget_low_u32(high), 2), bits));
        vst1q_u64(cells + at + 6, vorrq_u64(vshll_n_u32(vget_high_u32(high), 2), bits));
    }
    expandAsciiPlain(cells + at, bytes + at, size - at, pen);
}

#endif

/// Each set of instructions has what is slower where it has nothing better.
const std::vector<VectorOps>& all() {
    static const std::vector<VectorOps> found = [] {
        std::vector<VectorOps> ops{
            {.name = "plain",
             .asciiRun = asciiRunPlain,
             .expandAscii = expandAsciiPlain,
             .expandAsciiBehind = nullptr,
             .decodeUtf8 = decodeUtf8Plain,
             .expandScalars = expandScalarsPlain,
             .decodeBase64 = detail::decodeBase64Plain,
             .sumScalars = sumScalarsPlain}};
        [[maybe_unused]] const auto next = [&ops](const char* name) -> VectorOps& {
            ops.push_back(ops.back());
            ops.back().name = name;
            return ops.back();
        };
#if defined(__x86_64__)
        VectorOps& sse2 = next("sse2");
        sse2.asciiRun = asciiRunSse2;
        if (__builtin_cpu_supports("ssse3")) {
            next("ssse3").decodeBase64 = decodeBase64Ssse3;
        }
        if (__builtin_cpu_supports("avx2")) {
            VectorOps& avx2 = next("avx2");
            avx2.asciiRun = asciiRunAvx2;
            avx2.expandAscii = expandAsciiAvx2;
            avx2.sumScalars = sumScalarsAvx2;
        }
        if (detail::hasAvx512()) {
            ops.push_back(detail::avx512Ops(ops.back()));
        }
#elif defined(__aarch64__)
        VectorOps& neon = next("neon");
        neon.asciiRun = asciiRunNeon;
        neon.expandAscii = expandAsciiNeon;
#endif
        return ops;
    }();
    return found;
}

} // namespace

std::span<const VectorOps> availableVectorOps() {
    return all();
}

const VectorOps& fastestVectorOps() {
    return all().back();
}

} // namespace term
