#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace term::bidi {

/// Bidi_Class. The order is that of scripts/unicode-tables.
enum class Class : std::uint8_t {
    l,
    r,
    al,
    en,
    es,
    et,
    an,
    cs,
    b,
    s,
    ws,
    on,
    nsm,
    bn,
    lre,
    rle,
    lro,
    rlo,
    pdf,
    lri,
    rli,
    fsi,
    pdi
};

/// From a scalar on, up to the next run.
struct ClassRun {
    char32_t first;
    Class value;
};
enum class Bracket : std::uint8_t { none, opening, closing };
/// What a scalar looks like from right to left, and whether the two are brackets.
struct Mirror {
    char32_t scalar;
    char32_t mirrored;
    Bracket bracket;
};
inline constexpr std::size_t classRunCount = 1199;
inline constexpr std::size_t mirrorCount = 428;
extern const std::array<ClassRun, classRunCount> classRuns;
extern const std::array<Mirror, mirrorCount> mirrors;

} // namespace term::bidi
