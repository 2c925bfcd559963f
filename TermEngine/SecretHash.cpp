#include "TermEngine/SecretHash.h"

#include <random>

namespace term {
namespace {

std::array<std::uint64_t, 2> drawn() {
    std::random_device device;
    const auto word = [&device] { return std::uint64_t{device()} << 32 | device(); };
    return {word(), word()};
}

} // namespace

const std::array<std::uint64_t, 2> hashSecrets = drawn();

} // namespace term
