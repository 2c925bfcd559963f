#include "TermEngine/VectorOps.h"

#include <bit>
#include <cstring>
#include <vector>

#if defined(__x86_64__)
#include <immintrin.h>
#elif defined(__aarch64__)
#include <arm_neon.h>
#endif

namespace term {
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

#if defined(__x86_64__)

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
    std::size_t at = 0;
    for (; at + 4 <= size; at += 4) {
        int four = 0;
        std::memcpy(&four, bytes + at, 4);
        const __m256i wide = _mm256_cvtepu8_epi64(_mm_cvtsi32_si128(four));
        const __m256i made = _mm256_or_si256(_mm256_slli_epi64(wide, 2), bits);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(cells + at), made);
    }
    expandAsciiPlain(cells + at, bytes + at, size - at, pen);
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

const std::vector<VectorOps>& all() {
    static const std::vector<VectorOps> found = [] {
        std::vector<VectorOps> ops{{"plain", asciiRunPlain, expandAsciiPlain}};
#if defined(__x86_64__)
        ops.push_back({"sse2", asciiRunSse2, expandAsciiPlain});
        if (__builtin_cpu_supports("avx2")) {
            ops.push_back({"avx2", asciiRunAvx2, expandAsciiAvx2});
        }
#elif defined(__aarch64__)
        ops.push_back({"neon", asciiRunNeon, expandAsciiNeon});
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
