#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace term {

/// The loops over the bytes of a text that use vector instructions, for one set of instructions.
struct VectorOps {
    const char* name;
    /// How many bytes at the front are printable ASCII, 0x20 to 0x7E.
    std::size_t (*asciiRun)(const std::uint8_t* bytes, std::size_t size);
    /// cells[i] = bytes[i] << 2 | pen
    void (*expandAscii)(std::uint64_t* cells, const std::uint8_t* bytes, std::size_t size, std::uint64_t pen);
};

/// All that this processor can carry out, the plain one first, the fastest last.
[[nodiscard]] std::span<const VectorOps> availableVectorOps();

[[nodiscard]] const VectorOps& fastestVectorOps();

} // namespace term
