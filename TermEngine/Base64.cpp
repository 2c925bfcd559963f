#include "TermEngine/Base64.h"

#include "TermEngine/VectorOps.h"

#include <algorithm>
#include <array>
#include <utility>

namespace term {
namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr uint32_t invalid = 0x80000000;

uint32_t valueOf(char character) {
    const size_t value = alphabet.find(character);
    return value == std::string_view::npos ? invalid : static_cast<uint32_t>(value);
}

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
    const size_t taken = fastestVectorOps().decodeBase64(at, groups * 4, out);
    at += taken;
    m_bytes.resize(before + taken / 4 * 3);
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
    const uint32_t value = valueOf(character);
    if (value == invalid) {
        return Error::invalid;
    }
    m_bits |= value << (18 - 6 * m_count);
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
