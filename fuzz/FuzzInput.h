#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Takes values off a fuzzer's bytes; zeros once they are used up.
class FuzzInput {
public:
    FuzzInput(const uint8_t* data, size_t size) : m_bytes(reinterpret_cast<const char*>(data), size) {}

    [[nodiscard]] bool isEmpty() const { return m_bytes.empty(); }
    uint8_t byte() {
        const std::string_view one = take(1);
        return one.empty() ? 0 : static_cast<uint8_t>(one[0]);
    }
    uint32_t number() {
        uint32_t value = 0;
        for (const char part : take(4)) {
            value = value << 8U | static_cast<uint8_t>(part);
        }
        return value;
    }
    /// At most `size` bytes.
    std::string_view take(size_t size) {
        const std::string_view taken = m_bytes.substr(0, size);
        m_bytes.remove_prefix(taken.size());
        return taken;
    }
    /// Up to the next line feed, which is gone too.
    std::string_view line() {
        const std::string_view taken = take(std::min(m_bytes.find('\n'), m_bytes.size()));
        take(1);
        return taken;
    }

private:
    std::string_view m_bytes;
};

/// Ends the program, so that the fuzzer keeps the input.
inline void require(bool condition) {
    if (!condition) {
        __builtin_trap();
    }
}
