#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace term {

/// Drawn once for the process, so that no program can choose values that all come to stand in one place of a table.
extern const std::array<std::uint64_t, 2> hashSecrets;

/// All bits of the result depend on all of both: the two halves of their product, taken together.
[[nodiscard]] inline std::uint64_t mixedHash(std::uint64_t first, std::uint64_t second) {
    __extension__ typedef unsigned __int128 Product; // NOLINT(modernize-use-using): only so is it an extension
    const Product product = static_cast<Product>(first ^ hashSecrets[0]) * (second ^ hashSecrets[1]);
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

/// Of a text, by which a table of values that programs choose finds them.
struct SecretHash {
    template <typename Text>
    [[nodiscard]] std::size_t operator()(const Text& text) const {
        const char* at = reinterpret_cast<const char*>(text.data());
        std::size_t left = text.size() * sizeof(text[0]);
        std::uint64_t hash = left;
        while (left > 0) {
            std::uint64_t word = 0;
            const std::size_t taken = left < sizeof(word) ? left : sizeof(word);
            std::memcpy(&word, at, taken);
            hash = mixedHash(hash, word);
            at += taken;
            left -= taken;
        }
        return static_cast<std::size_t>(hash);
    }
};

} // namespace term
