#pragma once

#include <QSize>

class QPainter;

namespace orv {

/// Whether a character is one that has to join its neighbours, which fonts do badly at whole cells: box drawing, block
/// elements, braille, sextants, eighths and powerline separators.
[[nodiscard]] bool isDrawnGlyph(char32_t scalar);

/// Draws such a character in white over a cell of the given pixels whose corner is the painter's origin.
void drawGlyph(QPainter& painter, char32_t scalar, QSize cell, int thickness);

} // namespace orv
