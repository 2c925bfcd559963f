#pragma once

#include <cstddef>
#include <cstdint>
#include <expected>
#include <string>
#include <string_view>
#include <vector>

namespace term {

/// Where a program on this machine put the data of an image (kitty's graphics protocol, "The transmission medium").
enum class LocalMedium : char { file = 'f', temporaryFile = 't', sharedMemory = 's' };

/// Reads `size` bytes from `offset` (0: all the rest), at most `limitBytes`. Only regular files, and none of the
/// system's; a temporary file and shared memory are removed as the protocol says.
[[nodiscard]] std::expected<std::vector<uint8_t>, std::string_view> readLocalMedium(
    LocalMedium medium, const std::string& name, size_t offset, size_t size, size_t limitBytes);

} // namespace term
