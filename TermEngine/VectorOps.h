#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace term {

/// How much of a text was taken, and what it gave.
struct DecodedText {
    std::size_t bytes = 0;
    std::size_t scalars = 0;
};
struct ExpandedText {
    std::size_t scalars = 0;
    std::size_t columns = 0;
    bool hasWide = false;
};

struct TextSum {
    std::uint32_t scalars = 0;
    std::uint32_t clusters = 0; ///< how many cells have one
};

/// The loops over the bytes of a text and over cells that use vector instructions, for one set of instructions.
struct VectorOps {
    /// Scalars that `decodeUtf8` may write behind those that it reports.
    static constexpr std::size_t decodeSlack = 16;

    const char* name;
    /// How many bytes at the front are printable ASCII, 0x20 to 0x7E.
    std::size_t (*asciiRun)(const std::uint8_t* bytes, std::size_t size);
    /// cells[i] = bytes[i] << 2 | pen
    void (*expandAscii)(std::uint64_t* cells, const std::uint8_t* bytes, std::size_t size, std::uint64_t pen);
    /// The same, and the `gap` cells in front of `cells` become `blank`, none if that is negative. Null where it is
    /// faster to fill the gap first.
    void (*expandAsciiBehind)(
        std::uint64_t* cells, std::ptrdiff_t gap, std::uint64_t blank, const std::uint8_t* bytes, std::size_t size,
        std::uint64_t pen);
    /// Whole sequences at the front, ASCII among them; never a control, or what is no UTF-8. It may stop anywhere
    /// between two of them, and does before much ASCII. `scalars` has room for `size` and the slack.
    DecodedText (*decodeUtf8)(const std::uint8_t* bytes, std::size_t size, char32_t* scalars);
    /// Cells of scalars at the front that `commonWidth` knows, as many as fit into the columns, and the spacers behind
    /// wide ones. Not always all of them; no other cell is written.
    ExpandedText (*expandScalars)(
        std::uint64_t* cells, const char32_t* scalars, std::size_t size, std::size_t columns, std::uint64_t pen);
    /// Base64 (RFC 4648) in whole groups of four characters, up to the first group with another character in it, into
    /// three bytes each; how many characters. `out` has room for all groups.
    std::size_t (*decodeBase64)(const std::uint8_t* text, std::size_t size, std::uint8_t* out);
    /// Of the cells that have one scalar.
    TextSum (*sumScalars)(const std::uint64_t* cells, std::size_t size);
};

/// All that this processor can carry out, the plain one first, the fastest last.
[[nodiscard]] std::span<const VectorOps> availableVectorOps();

[[nodiscard]] const VectorOps& fastestVectorOps();

} // namespace term
