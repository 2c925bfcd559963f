#include "TermEngine/Base64.h"

#include <algorithm>
#include <array>
#include <utility>

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
    for (const auto* stop = at + groups * 4; at != stop; at += 4) {
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
