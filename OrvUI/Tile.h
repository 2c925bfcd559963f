#pragma once

#include <QString>

namespace orv::Tile {

inline constexpr int colourCount = 8;

/// Which of the tile colours a project has; the same name always has the same one.
[[nodiscard]] int index(const QString& name);
/// The letter on the tile: the first letter or digit of the name, in capitals.
[[nodiscard]] QString letter(const QString& name);

} // namespace orv::Tile
