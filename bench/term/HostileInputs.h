#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

/// What every string that a hostile input sends has in it, and no reply may have.
inline constexpr const char* hostileMark = "xyzzy";

struct HostileInput {
    std::string name;
    std::string before; ///< that the screen is prepared with, which does not count
    std::string bytes;
};

/// What a program could write at once, each at another extreme.
[[nodiscard]] std::vector<HostileInput> hostileInputs();

/// Pieces of 64 KiB, full of what costs most for its length: rectangles and repeats, then pictures.
[[nodiscard]] std::vector<HostileInput> hostileCellFloods();
[[nodiscard]] std::vector<HostileInput> hostilePictureFloods();

// Texts to make them of.
[[nodiscard]] std::string times(int count, const std::function<std::string(int)>& one);
[[nodiscard]] std::string repeated(int count, const std::string& text);
/// As often as it fits into a piece.
[[nodiscard]] std::string piecesOf(const std::string& text);
/// A colour, a link, a cluster of that number, with a character.
[[nodiscard]] std::string color(int i);
[[nodiscard]] std::string link(int i);
[[nodiscard]] std::string cluster(int i);

} // namespace bench
