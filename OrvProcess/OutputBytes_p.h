#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace orv::detail {

/// One kind of announcement: which bytes may stand at each of four places in a row.
using Window = std::array<std::string_view, 4>;
inline constexpr std::string_view digits = "0123456789";
/// All that a pattern calls white space, but for the blank and the line feed, which is in no line.
inline constexpr std::string_view rareSpace = "\t\v\f\r";
inline constexpr std::string_view anySpace = " \t\v\f\r";

/// The end of "localhost", "127.0.0.1" or "0.0.0.0", "[::]" or "[::1]", then a colon and a digit; or the end of "port",
/// white space, and then a digit or more of it.
inline constexpr std::array<Window, 8> windows{{
    {"s", "t", ":", digits},
    {".", "01", ":", digits},
    {":1", "]", ":", digits},
    {"rR", "tT", " ", " "},
    {"rR", "tT", " ", rareSpace},
    {"rR", "tT", " ", digits},
    {"rR", "tT", rareSpace, digits},
    {"rR", "tT", rareSpace, anySpace},
}};
inline constexpr size_t windowLength = std::tuple_size_v<Window>;

/// A set of eight sets of bytes, as two tables for the instructions that look 16 or 32 bytes up at once: a byte is in
/// those sets whose bits both halves of it have. A set that is no product of halves gets a little larger thereby.
struct NibbleTables {
    std::array<uint8_t, 16> low{};
    std::array<uint8_t, 16> high{};

    constexpr void add(unsigned char byte, size_t set) {
        low.at(byte & 0x0fU) |= static_cast<uint8_t>(1U << set);
        high.at(byte >> 4U) |= static_cast<uint8_t>(1U << set);
    }
    [[nodiscard]] constexpr uint8_t at(unsigned char byte) const { return low.at(byte & 0x0fU) & high.at(byte >> 4U); }
};

/// For each place of a window: in which windows a byte may stand there.
inline constexpr std::array<NibbleTables, windowLength> placeTables = [] {
    std::array<NibbleTables, windowLength> tables;
    for (size_t window = 0; window < windows.size(); ++window) {
        for (size_t place = 0; place < windowLength; ++place) {
            for (const char byte : windows.at(window).at(place)) {
                tables.at(place).add(static_cast<unsigned char>(byte), window);
            }
        }
    }
    return tables;
}();

/// Sets of `controlTables`. A carriage return rewrites a line where no line feed follows.
enum ControlSet : uint8_t { lowControls, highControls, deleteControl, escapeControl, carriageReturn };
inline constexpr uint8_t rewriting = 1U << lowControls | 1U << highControls | 1U << deleteControl;
inline constexpr uint8_t escapes = 1U << escapeControl;
inline constexpr uint8_t returns = 1U << carriageReturn;

inline constexpr NibbleTables controlTables = [] {
    NibbleTables tables;
    for (unsigned char byte = 0; byte < 0x10; ++byte) {
        if (byte != '\t' && byte != '\n' && byte != '\r') {
            tables.add(byte, lowControls);
        }
        if (byte != 0x0b) {
            tables.add(static_cast<unsigned char>(0x10 + byte), highControls);
        }
    }
    tables.add(0x1b, escapeControl);
    tables.add(0x7f, deleteControl);
    tables.add('\r', carriageReturn);
    return tables;
}();

struct BytesFound {
    size_t lineFeeds = 0;
    bool hasEscapes = false;
    bool hasRewrites = false;
    bool hasCandidate = false;
};

/// On any processor, a byte at a time.
BytesFound searchBytes(const unsigned char* text, size_t size);

// An application for two architectures is compiled for both at once, which leaves no place for instructions that only
// some processors of one have.
#if defined(__x86_64__) && !defined(__APPLE__)
#define ORV_SEARCHES_WITH_AVX2
/// 32 bytes at a time. For processors with AVX2 only.
BytesFound searchBytesAvx2(const unsigned char* text, size_t size);
#elif defined(__aarch64__)
#define ORV_SEARCHES_WITH_NEON
/// 16 bytes at a time.
BytesFound searchBytesNeon(const unsigned char* text, size_t size);
#endif

} // namespace orv::detail
