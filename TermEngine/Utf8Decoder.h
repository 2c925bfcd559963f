#pragma once

#include <cstdint>

namespace term {

/// UTF-8 a byte at a time. What is no UTF-8 becomes one U+FFFD for each maximal part (Unicode 15.0, 3.9, "U+FFFD
/// Substitution of Maximal Subparts").
class Utf8Decoder {
public:
    template <typename Sink>
    void put(std::uint8_t byte, Sink&& sink) {
        if (m_missing > 0) {
            if (byte >= m_lowest && byte <= m_highest) {
                m_value = (m_value << 6) | (byte & 0x3Fu);
                m_lowest = 0x80;
                m_highest = 0xBF;
                if (--m_missing == 0) {
                    sink(m_value);
                }
                return;
            }
            m_missing = 0;
            sink(char32_t{0xFFFD});
        }
        begin(byte, sink);
    }

    /// The text ends here: a sequence that was begun is none.
    template <typename Sink>
    void finish(Sink&& sink) {
        if (m_missing > 0) {
            m_missing = 0;
            sink(char32_t{0xFFFD});
        }
    }

    /// Whether a sequence is begun and not ended.
    [[nodiscard]] bool isPending() const { return m_missing > 0; }
    void reset() { m_missing = 0; }

private:
    template <typename Sink>
    void begin(std::uint8_t byte, Sink& sink) {
        m_lowest = 0x80;
        m_highest = 0xBF;
        if (byte < 0x80) {
            sink(char32_t{byte});
        } else if (byte >= 0xC2 && byte <= 0xDF) {
            m_missing = 1;
            m_value = byte & 0x1Fu;
        } else if (byte >= 0xE0 && byte <= 0xEF) {
            m_missing = 2;
            m_value = byte & 0x0Fu;
            m_lowest = byte == 0xE0 ? 0xA0 : 0x80;
            m_highest = byte == 0xED ? 0x9F : 0xBF;
        } else if (byte >= 0xF0 && byte <= 0xF4) {
            m_missing = 3;
            m_value = byte & 0x07u;
            m_lowest = byte == 0xF0 ? 0x90 : 0x80;
            m_highest = byte == 0xF4 ? 0x8F : 0xBF;
        } else {
            sink(char32_t{0xFFFD});
        }
    }

    char32_t m_value = 0;
    std::uint8_t m_missing = 0;
    std::uint8_t m_lowest = 0x80;
    std::uint8_t m_highest = 0xBF;
};

} // namespace term
