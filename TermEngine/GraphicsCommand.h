#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace term {

/// One command of kitty's graphics protocol: letters with values, and a payload. Which letter means what depends on the
/// action, so they are asked for by their letter.
class GraphicsCommand {
public:
    /// `body` is what stands behind "G" in the APC string. Nothing where it is malformed.
    [[nodiscard]] static std::optional<GraphicsCommand> parse(std::string_view body);

    [[nodiscard]] bool has(char key) const { return m_present[index(key)]; }
    /// 0 where it is missing; and of a key whose value is a letter, its code.
    [[nodiscard]] uint32_t number(char key) const { return m_values[index(key)]; }
    [[nodiscard]] int32_t signedNumber(char key) const { return static_cast<int32_t>(number(key)); }
    [[nodiscard]] char letter(char key, char missing) const {
        return has(key) ? static_cast<char>(number(key)) : missing;
    }
    /// Bounded, so that sums of a few don't overflow.
    [[nodiscard]] int extent(char key) const;
    /// Whether nothing but these keys is there.
    [[nodiscard]] bool hasOnly(std::string_view keys) const;
    [[nodiscard]] std::string_view payload() const { return m_payload; } ///< part of `body`

    /// The same command without its payload, to be kept beyond `body`.
    [[nodiscard]] GraphicsCommand withoutPayload() const;

private:
    [[nodiscard]] static size_t index(char key) { return static_cast<uint8_t>(key) & 0x7FU; }

    std::array<uint32_t, 128> m_values{};
    std::array<bool, 128> m_present{};
    std::string_view m_payload;
};

} // namespace term
