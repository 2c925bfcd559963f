#include "OrvProcess/OutputBytes.h"

#include "OrvProcess/OutputBytes_p.h"

#include <algorithm>

#if defined(ORV_SEARCHES_WITH_AVX2)
#include <immintrin.h>
#elif defined(ORV_SEARCHES_WITH_NEON)
#include <arm_neon.h>
#endif

namespace orv {
namespace detail {
namespace {

/// What `searchBytes` asks about one byte: in the lowest four bytes the windows that it fits at each place, the last
/// place lowest, and above them its sets of controls.
constexpr size_t placeBits = 8;
constexpr auto byteTable = [] {
    std::array<uint64_t, 256> table{};
    for (size_t byte = 0; byte < table.size(); ++byte) {
        const auto code = static_cast<unsigned char>(byte);
        for (const NibbleTables& place : placeTables) {
            table.at(byte) = table.at(byte) << placeBits | place.at(code);
        }
        table.at(byte) |= static_cast<uint64_t>(controlTables.at(code)) << (windowLength * placeBits);
    }
    return table;
}();

[[nodiscard]] bool isLineEnd(unsigned char byte) {
    return byte == '\n';
}

/// What the vectors leave over: the end of the text, from `at` on.
void searchRest(const unsigned char* text, size_t size, size_t at, BytesFound& found) {
    const BytesFound rest = searchBytes(text + at, size - at);
    found.lineFeeds += rest.lineFeeds;
    found.hasEscapes = found.hasEscapes || rest.hasEscapes;
    found.hasRewrites = found.hasRewrites || rest.hasRewrites;
    found.hasCandidate = found.hasCandidate || rest.hasCandidate;
}

} // namespace

BytesFound searchBytes(const unsigned char* text, size_t size) {
    constexpr uint64_t everyPlace = (uint64_t{1} << (windowLength * placeBits)) - 1;
    constexpr uint64_t lastPlace = (uint64_t{1} << placeBits) - 1;
    BytesFound found;
    uint64_t open = 0; // windows that fit so far, by the number of places
    for (size_t at = 0; at < size; ++at) {
        const uint64_t byte = byteTable[text[at]];
        // The place that the byte before had moves on by one; a window can begin at any byte.
        open = (open >> placeBits | uint64_t{0xff} << ((windowLength - 1) * placeBits)) & byte & everyPlace;
        found.hasCandidate = found.hasCandidate || (open & lastPlace) != 0;
        const uint64_t controls = byte >> (windowLength * placeBits);
        const bool endsLine = at + 1 < size && isLineEnd(text[at + 1]);
        found.hasEscapes = found.hasEscapes || (controls & escapes) != 0;
        found.hasRewrites =
            found.hasRewrites || (controls & rewriting) != 0 || ((controls & returns) != 0 && !endsLine);
        found.lineFeeds += isLineEnd(text[at]) ? 1 : 0;
    }
    return found;
}

#if defined(ORV_SEARCHES_WITH_AVX2)
namespace {

[[gnu::target("avx2"), gnu::always_inline]] inline __m256i tableOf(const std::array<uint8_t, 16>& half) {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(half.data())));
}

[[gnu::target("avx2"), gnu::always_inline]] inline __m256i loadBytes(const unsigned char* at) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at));
}

/// The low halves need no mask: the instruction looks at no more of a byte, and gives zero for one above 0x7f, which is
/// in no set.
[[gnu::target("avx2"), gnu::always_inline]] inline __m256i highHalves(__m256i bytes) {
    return _mm256_and_si256(_mm256_srli_epi16(bytes, 4), _mm256_set1_epi8(0x0f));
}

[[gnu::target("avx2"), gnu::always_inline]] inline __m256i setsOf(__m256i bytes, __m256i low, __m256i high) {
    return _mm256_and_si256(_mm256_shuffle_epi8(low, bytes), _mm256_shuffle_epi8(high, highHalves(bytes)));
}

} // namespace

[[gnu::target("avx2")]] BytesFound searchBytesAvx2(const unsigned char* text, size_t size) {
    constexpr size_t width = 32;
    constexpr size_t longestRun = 255; // what a lane of 8 bits can count
    __m256i low[windowLength];         // NOLINT(*-avoid-c-arrays): std::array would lose the type's alignment
    __m256i high[windowLength];        // NOLINT(*-avoid-c-arrays)
    for (size_t place = 0; place < windowLength; ++place) {
        low[place] = tableOf(placeTables[place].low);
        high[place] = tableOf(placeTables[place].high);
    }
    const __m256i lowControl = tableOf(controlTables.low);
    const __m256i highControl = tableOf(controlTables.high);
    const __m256i zero = _mm256_setzero_si256();

    BytesFound found;
    __m256i candidates = zero;
    __m256i controls = zero;
    __m256i notEnds = zero;
    __m256i sums = zero;
    size_t at = 0;
    while (size - at >= width + windowLength - 1) {
        __m256i feeds = zero;
        for (size_t run = 0; run < longestRun && size - at >= width + windowLength - 1; ++run, at += width) {
            const __m256i first = loadBytes(text + at);
            const __m256i second = loadBytes(text + at + 1);
            const __m256i third = loadBytes(text + at + 2);
            const __m256i fourth = loadBytes(text + at + 3);
            const __m256i begin = _mm256_and_si256(setsOf(first, low[0], high[0]), setsOf(second, low[1], high[1]));
            const __m256i end = _mm256_and_si256(setsOf(third, low[2], high[2]), setsOf(fourth, low[3], high[3]));
            candidates = _mm256_or_si256(candidates, _mm256_and_si256(begin, end));
            const __m256i control = setsOf(first, lowControl, highControl);
            controls = _mm256_or_si256(controls, control);
            const __m256i lineEnd = _mm256_set1_epi8('\n');
            notEnds = _mm256_or_si256(notEnds, _mm256_andnot_si256(_mm256_cmpeq_epi8(second, lineEnd), control));
            feeds = _mm256_sub_epi8(feeds, _mm256_cmpeq_epi8(first, lineEnd));
        }
        sums = _mm256_add_epi64(sums, _mm256_sad_epu8(feeds, zero));
    }
    found.lineFeeds = static_cast<size_t>(
        _mm256_extract_epi64(sums, 0) + _mm256_extract_epi64(sums, 1) + _mm256_extract_epi64(sums, 2) +
        _mm256_extract_epi64(sums, 3));
    found.hasCandidate = _mm256_testz_si256(candidates, candidates) == 0;
    found.hasEscapes = _mm256_testz_si256(controls, _mm256_set1_epi8(escapes)) == 0;
    found.hasRewrites = _mm256_testz_si256(controls, _mm256_set1_epi8(rewriting)) == 0 ||
                        _mm256_testz_si256(notEnds, _mm256_set1_epi8(returns)) == 0;
    searchRest(text, size, at, found);
    return found;
}
#endif

#if defined(ORV_SEARCHES_WITH_NEON)
namespace {

uint8x16_t setsOf(uint8x16_t bytes, const NibbleTables& tables) {
    const uint8x16_t low = vqtbl1q_u8(vld1q_u8(tables.low.data()), vandq_u8(bytes, vdupq_n_u8(0x0f)));
    return vandq_u8(low, vqtbl1q_u8(vld1q_u8(tables.high.data()), vshrq_n_u8(bytes, 4)));
}

} // namespace

BytesFound searchBytesNeon(const unsigned char* text, size_t size) {
    constexpr size_t width = 16;
    BytesFound found;
    uint8x16_t candidates = vdupq_n_u8(0);
    uint8x16_t controls = vdupq_n_u8(0);
    uint8x16_t notEnds = vdupq_n_u8(0);
    size_t at = 0;
    for (; size - at >= width + windowLength - 1; at += width) {
        uint8x16_t window = vdupq_n_u8(0xff);
        for (size_t place = 0; place < windowLength; ++place) {
            window = vandq_u8(window, setsOf(vld1q_u8(text + at + place), placeTables[place]));
        }
        candidates = vorrq_u8(candidates, window);
        const uint8x16_t first = vld1q_u8(text + at);
        const uint8x16_t control = setsOf(first, controlTables);
        const uint8x16_t lineEnd = vdupq_n_u8('\n');
        controls = vorrq_u8(controls, control);
        notEnds = vorrq_u8(notEnds, vbicq_u8(control, vceqq_u8(vld1q_u8(text + at + 1), lineEnd)));
        found.lineFeeds += vaddvq_u8(vandq_u8(vceqq_u8(first, lineEnd), vdupq_n_u8(1)));
    }
    found.hasCandidate = vmaxvq_u8(candidates) != 0;
    found.hasEscapes = vmaxvq_u8(vandq_u8(controls, vdupq_n_u8(escapes))) != 0;
    found.hasRewrites = vmaxvq_u8(vandq_u8(controls, vdupq_n_u8(rewriting))) != 0 ||
                        vmaxvq_u8(vandq_u8(notEnds, vdupq_n_u8(returns))) != 0;
    searchRest(text, size, at, found);
    return found;
}
#endif

} // namespace detail

OutputBytes searchOutput(QByteArrayView output) {
    static const auto search = [] {
#if defined(ORV_SEARCHES_WITH_AVX2)
        return __builtin_cpu_supports("avx2") ? &detail::searchBytesAvx2 : &detail::searchBytes;
#elif defined(ORV_SEARCHES_WITH_NEON)
        return &detail::searchBytesNeon;
#else
        return &detail::searchBytes;
#endif
    }();
    const detail::BytesFound found =
        search(reinterpret_cast<const unsigned char*>(output.data()), static_cast<size_t>(output.size()));
    return {static_cast<qsizetype>(found.lineFeeds), found.hasEscapes, found.hasRewrites, found.hasCandidate};
}

} // namespace orv
