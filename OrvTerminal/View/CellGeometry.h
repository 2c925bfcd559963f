#pragma once

#include <QSize>

#include <algorithm>
#include <cmath>

namespace orv {

/// The cells of a terminal, in pixels of the screen: whole ones, so that neighbours join without a seam.
struct CellGeometry {
    int width = 8;
    int height = 20;
    int baseline = 15;          ///< below the top
    int thickness = 1;          ///< of a thin line
    int underline = 17;         ///< top of a plain underline
    int strike = 10;            ///< top of the line through the text
    qreal pixelSize = 13;       ///< of the font
    qreal devicePixelRatio = 1; ///< pixels a logical pixel

    [[nodiscard]] QSize size() const { return {width, height}; }
    [[nodiscard]] qreal logicalWidth() const { return width / devicePixelRatio; }
    [[nodiscard]] qreal logicalHeight() const { return height / devicePixelRatio; }
    bool operator==(const CellGeometry&) const = default;
};

} // namespace orv
