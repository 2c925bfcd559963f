#include "TermEngine/Base64.h"

#include <algorithm>
#include <array>
#include <utility>

#ifdef __x86_64__
#include <tmmintrin.h>
#endif

namespace term {
namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr uint32_t invalid = 0x80000000;

/// The bits of a character in each of the four places of a group.
constexpr auto places = [] {
    std::array<std::array<uint32_t, 256>, 4> table{};
    for (size_t place = 0; place < table.size(); ++place) {
        table[place].fill(invalid);
        for (uint32_t value = 0; value < alphabet.size(); ++value) {
            table[place][static_cast<uint8_t>(alphabet[value])] = value << (18 - 6 * place);
        }
    }
    return table;
}();

#ifdef __x86_64__

/// Decodes blocks of 16 characters into 12 bytes each, up to the first block with another character in it or to where
/// fewer than 24 are left: each block writes 16 bytes. The characters that were decoded.
__attribute__((target("ssse3"))) size_t decodeBlocks(const uint8_t* in, size_t size, uint8_t* out) {
    const auto all = [](int byte) { return _mm_set1_epi8(static_cast<char>(byte)); };
    size_t done = 0;
    for (; size - done >= 24; done += 16, out += 12) {
        const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + done));
        // Bytes above 0x7F are negative, and in no range.
        const auto within = [&](char first, char last) {
            return _mm_and_si128(_mm_cmpgt_epi8(text, all(first - 1)), _mm_cmplt_epi8(text, all(last + 1)));
        };
        const __m128i upper = within('A', 'Z');
        const __m128i lower = within('a', 'z');
        const __m128i digit = within('0', '9');
        const __m128i plus = _mm_cmpeq_epi8(text, all('+'));
        const __m128i slash = _mm_cmpeq_epi8(text, all('/'));
        const __m128i known = _mm_or_si128(_mm_or_si128(upper, lower), _mm_or_si128(digit, _mm_or_si128(plus, slash)));
        if (_mm_movemask_epi8(known) != 0xFFFF) {
            break;
        }
        const __m128i letters = _mm_or_si128(_mm_and_si128(upper, all(-'A')), _mm_and_si128(lower, all(26 - 'a')));
        const __m128i others = _mm_or_si128(
            _mm_and_si128(digit, all(52 - '0')),
            _mm_or_si128(_mm_and_si128(plus, all(62 - '+')), _mm_and_si128(slash, all(63 - '/'))));
        const __m128i values = _mm_add_epi8(text, _mm_or_si128(letters, others));
        // Six bits each become twelve of two, then twenty-four of four; their bytes are then put in order.
        const __m128i pairs = _mm_maddubs_epi16(values, _mm_set1_epi32(0x01400140));
        const __m128i groups = _mm_madd_epi16(pairs, _mm_set1_epi32(0x00011000));
        const __m128i order = _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_shuffle_epi8(groups, order));
    }
    return done;
}

size_t decodeQuickly(const uint8_t* in, size_t size, uint8_t* out) {
    static const bool isSupported = __builtin_cpu_supports("ssse3") != 0;
    return isSupported ? decodeBlocks(in, size, out) : 0;
}

#else

size_t decodeQuickly(const uint8_t*, size_t, uint8_t*) {
    return 0;
}

#endif

} // namespace

Base64Decoder::Error Base64Decoder::append(std::string_view encoded) {
    while (m_error == Error::none && m_count != 0 && !encoded.empty()) {
        m_error = appendOne(encoded.front());
        encoded.remove_prefix(1);
    }
    if (m_error != Error::none || encoded.empty()) {
        return m_error;
    }
    const auto* at = reinterpret_cast<const uint8_t*>(encoded.data());
    const auto* end = at + encoded.size();
    const size_t before = m_bytes.size();
    const size_t groups = std::min(encoded.size() / 4, (m_limitBytes - before) / 3);
    m_bytes.resize(before + groups * 3);
    uint8_t* out = m_bytes.data() + before;
    const auto* stop = at + groups * 4;
    const size_t quick = decodeQuickly(at, groups * 4, out);
    at += quick;
    out += quick / 4 * 3;
    for (; at != stop; at += 4) {
        const uint32_t bits = places[0][at[0]] | places[1][at[1]] | places[2][at[2]] | places[3][at[3]];
        if ((bits & invalid) != 0) {
            break; // padding, or an error
        }
        *out++ = static_cast<uint8_t>(bits >> 16U);
        *out++ = static_cast<uint8_t>(bits >> 8U);
        *out++ = static_cast<uint8_t>(bits);
    }
    m_bytes.resize(static_cast<size_t>(out - m_bytes.data()));
    // The rest of a piece, or what begins with padding.
    while (at != end && m_error == Error::none) {
        m_error = appendOne(static_cast<char>(*at++));
    }
    return m_error;
}

Base64Decoder::Error Base64Decoder::appendOne(char character) {
    if (character == '=') {
        return m_count == 1 ? Error::invalid : flush();
    }
    const uint32_t bits = places[static_cast<size_t>(m_count)][static_cast<uint8_t>(character)];
    if (bits == invalid) {
        return Error::invalid;
    }
    m_bits |= bits;
    return ++m_count == 4 ? flush() : Error::none;
}

/// Two characters are a byte, three are two, four are three.
Base64Decoder::Error Base64Decoder::flush() {
    const int count = std::exchange(m_count, 0);
    uint32_t bits = std::exchange(m_bits, 0);
    for (int byte = 1; byte < count; ++byte) {
        if (m_bytes.size() >= m_limitBytes) {
            return Error::tooLong;
        }
        m_bytes.push_back(static_cast<uint8_t>(bits >> 16U));
        bits <<= 8U;
    }
    return Error::none;
}

std::optional<std::vector<uint8_t>> Base64Decoder::finish() {
    if (m_error == Error::none) {
        m_error = m_count == 1 ? Error::invalid : flush();
    }
    const bool isGood = std::exchange(m_error, Error::none) == Error::none;
    m_bits = 0;
    m_count = 0;
    auto bytes = std::exchange(m_bytes, {});
    return isGood ? std::optional(std::move(bytes)) : std::nullopt;
}

std::optional<std::vector<uint8_t>> decodeBase64(std::string_view encoded, size_t limitBytes) {
    Base64Decoder decoder(limitBytes);
    decoder.append(encoded);
    return decoder.finish();
}

std::string encodeBase64(std::span<const uint8_t> bytes) {
    std::string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    for (; !bytes.empty(); bytes = bytes.subspan(std::min<size_t>(3, bytes.size()))) {
        const auto at = [bytes](size_t index) { return index < bytes.size() ? uint32_t{bytes[index]} : 0U; };
        const uint32_t group = at(0) << 16U | at(1) << 8U | at(2);
        for (size_t place = 0; place < 4; ++place) {
            out.push_back(place <= bytes.size() ? alphabet[group >> (18 - 6 * place) & 0x3FU] : '=');
        }
    }
    return out;
}

std::string encodeBase64(std::string_view bytes) {
    return encodeBase64(std::span(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()));
}

} // namespace term
