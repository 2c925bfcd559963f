#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace term {

/// Decodes base64 (RFC 4648) that comes in pieces. Padding may be missing, and each of several encoded strings in a row
/// may end in its own.
class Base64Decoder {
public:
    enum class Error : uint8_t { none, invalid, tooLong };

    /// Keeps at most `limitBytes` decoded bytes.
    explicit Base64Decoder(size_t limitBytes) : m_limitBytes(limitBytes) {}

    /// After an error, nothing more is taken.
    Error append(std::string_view encoded);
    /// What was decoded; nothing after an error. The decoder is as new.
    [[nodiscard]] std::optional<std::vector<uint8_t>> finish();
    [[nodiscard]] size_t size() const { return m_bytes.size(); }
    [[nodiscard]] Error error() const { return m_error; }

private:
    Error appendOne(char character);
    Error flush();

    size_t m_limitBytes;
    std::vector<uint8_t> m_bytes;
    uint32_t m_bits = 0; ///< of an unfinished group of four
    int m_count = 0;     ///< characters of it
    Error m_error = Error::none;
};

[[nodiscard]] std::optional<std::vector<uint8_t>> decodeBase64(std::string_view encoded, size_t limitBytes);
[[nodiscard]] std::string encodeBase64(std::span<const uint8_t> bytes);
[[nodiscard]] std::string encodeBase64(std::string_view bytes);

} // namespace term
