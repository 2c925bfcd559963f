#include "OrvTerminal/View/DrawnGlyphs.h"

#include <QPainter>
#include <QPainterPath>

#include <array>

namespace orv {
namespace {

/// How the four arms of a box drawing character look, as digits: left, right, up, down; 0 none, 1 light, 2 heavy,
/// 3 double. Characters of another make are 0 here. From U+2500 on (the names of the characters say it).
constexpr std::array<unsigned short, 128> arms{
    1100, 2200, 11,   22,   0,    0,    0,    0,    0,    0,    0,    0,    101,  201,  102,  202,  // 2500
    1001, 2001, 1002, 2002, 110,  210,  120,  220,  1010, 2010, 1020, 2020, 111,  211,  121,  112,  // 2510
    122,  221,  212,  222,  1011, 2011, 1021, 1012, 1022, 2021, 2012, 2022, 1101, 2101, 1201, 2201, // 2520
    1102, 2102, 1202, 2202, 1110, 2110, 1210, 2210, 1120, 2120, 1220, 2220, 1111, 2111, 1211, 2211, // 2530
    1121, 1112, 1122, 2121, 1221, 2112, 1212, 2221, 2212, 2122, 1222, 2222, 0,    0,    0,    0,    // 2540
    3300, 33,   301,  103,  303,  3001, 1003, 3003, 310,  130,  330,  3010, 1030, 3030, 311,  133,  // 2550
    333,  3011, 1033, 3033, 3301, 1103, 3303, 3310, 1130, 3330, 3311, 1133, 3333, 0,    0,    0,    // 2560
    0,    0,    0,    0,    1000, 10,   100,  1,    2000, 20,   200,  2,    1200, 12,   2100, 21,   // 2570
};

struct Arms {
    int left, right, up, down;
};

/// One axis of a box: along it lie the arm before the middle and the one behind it, across it the two others.
class BoxAxis {
public:
    BoxAxis(QPainter& painter, QSize cell, int thickness, Qt::Orientation orientation)
        : m_painter(painter),
          m_isVertical(orientation == Qt::Vertical),
          m_length(m_isVertical ? cell.height() : cell.width()),
          m_breadth(m_isVertical ? cell.width() : cell.height()),
          m_light(thickness) {}

    void draw(int before, int behind, int crossBefore, int crossBehind) {
        const int cross = std::max(crossBefore, crossBehind);
        if (before == 3 || behind == 3) {
            for (const bool isSecond : {false, true}) {
                const int rail = low(m_breadth, 3 * m_light) + (isSecond ? 2 * m_light : 0);
                const int same = isSecond ? crossBehind : crossBefore;
                const int other = isSecond ? crossBefore : crossBehind;
                const Reach reach = same == 3 ? Reach::near : other == 3 ? Reach::far : Reach::middle;
                stroke(before == 3, behind == 3, rail, m_light, reach, m_light);
            }
        }
        for (const int weight : {1, 2}) {
            if (before != weight && behind != weight) {
                continue;
            }
            const int width = weight * m_light;
            Reach reach = Reach::middle;
            if (cross == 3) {
                const bool isThrough = before != 0 && behind != 0;
                reach = crossBefore == 3 && crossBehind == 3 && !isThrough ? Reach::near : Reach::far;
            }
            stroke(
                before == weight, behind == weight, low(m_breadth, width), width, reach,
                std::clamp(cross, 0, 2) * m_light);
        }
    }

private:
    /// How far an arm goes: up to the nearer rail of a double line across, over the line in the middle, or over both.
    enum class Reach { near, middle, far };

    [[nodiscard]] static int low(int extent, int width) { return (extent - width) / 2; }

    void stroke(bool hasBefore, bool hasBehind, int at, int width, Reach reach, int middle) {
        const int rails = low(m_length, 3 * m_light);
        const int end = reach == Reach::near  ? rails + m_light
                        : reach == Reach::far ? rails + 3 * m_light
                                              : low(m_length, middle) + middle;
        const int start = reach == Reach::near  ? rails + 2 * m_light
                          : reach == Reach::far ? rails
                                                : low(m_length, middle);
        if (hasBefore) {
            fill(0, end, at, width);
        }
        if (hasBehind) {
            fill(start, m_length, at, width);
        }
    }

    void fill(int from, int to, int at, int width) {
        const QRect rect(from, at, to - from, width);
        m_painter.fillRect(m_isVertical ? QRect(at, from, width, to - from) : rect, Qt::white);
    }

    QPainter& m_painter;
    bool m_isVertical;
    int m_length;
    int m_breadth;
    int m_light;
};

void drawDashes(QPainter& painter, int count, int width, Qt::Orientation orientation, QSize cell) {
    const bool isVertical = orientation == Qt::Vertical;
    const int length = isVertical ? cell.height() : cell.width();
    const int at = ((isVertical ? cell.width() : cell.height()) - width) / 2;
    for (int dash = 0; dash < count; ++dash) {
        const int from = length * dash / count;
        const int gap = std::max(1, length / count * 2 / 5);
        const int size = std::max(1, length * (dash + 1) / count - from - gap);
        const int start = from + gap / 2;
        painter.fillRect(isVertical ? QRect(at, start, width, size) : QRect(start, at, size, width), Qt::white);
    }
}

void drawStroke(QPainter& painter, const QPainterPath& path, int thickness) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.strokePath(path, QPen(Qt::white, thickness, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
}

/// A quarter of a circle between two sides, in the order of the characters: down and right, down and left, up and left,
/// up and right.
void drawArc(QPainter& painter, int kind, QSize cell, int thickness) {
    const bool isRight = kind == 0 || kind == 3;
    const bool isDown = kind < 2;
    const qreal x = (cell.width() - thickness) / 2 + thickness / 2.0;
    const qreal y = (cell.height() - thickness) / 2 + thickness / 2.0;
    const qreal endX = isRight ? cell.width() : 0;
    const qreal endY = isDown ? cell.height() : 0;
    const qreal radius = std::min(std::abs(endX - x), std::abs(endY - y));
    const qreal bend = radius * 0.4477; // what is left of the control arm of a quarter circle, 1 - 0.5523
    const qreal towardsX = isRight ? 1 : -1;
    const qreal towardsY = isDown ? 1 : -1;
    QPainterPath path(QPointF(x, endY));
    path.lineTo(x, y + towardsY * radius);
    path.cubicTo(x, y + towardsY * bend, x + towardsX * bend, y, x + towardsX * radius, y);
    path.lineTo(endX, y);
    drawStroke(painter, path, thickness);
}

void drawDiagonals(QPainter& painter, int kind, QSize cell, int thickness) {
    // Past the corners, so that the ends fill them.
    const qreal dx = cell.width() * 0.25;
    const qreal dy = cell.height() * 0.25;
    QPainterPath path;
    if (kind != 1) {
        path.moveTo(-dx, cell.height() + dy);
        path.lineTo(cell.width() + dx, -dy);
    }
    if (kind != 0) {
        path.moveTo(-dx, -dy);
        path.lineTo(cell.width() + dx, cell.height() + dy);
    }
    drawStroke(painter, path, thickness);
}

void drawBox(QPainter& painter, char32_t scalar, QSize cell, int thickness) {
    const int code = static_cast<int>(scalar - 0x2500);
    const int digits = arms[static_cast<size_t>(code)];
    if (digits != 0) {
        const Arms arm{digits / 1000, digits / 100 % 10, digits / 10 % 10, digits % 10};
        BoxAxis(painter, cell, thickness, Qt::Horizontal).draw(arm.left, arm.right, arm.up, arm.down);
        BoxAxis(painter, cell, thickness, Qt::Vertical).draw(arm.up, arm.down, arm.left, arm.right);
    } else if (code >= 0x6D && code <= 0x70) {
        drawArc(painter, code - 0x6D, cell, thickness);
    } else if (code >= 0x71 && code <= 0x73) {
        drawDiagonals(painter, code - 0x71, cell, thickness);
    } else {
        const int count = code < 0x08 ? 3 : code < 0x0C ? 4 : 2;
        const auto orientation = (code & 2) != 0 ? Qt::Vertical : Qt::Horizontal;
        drawDashes(painter, count, (code & 1) != 0 ? 2 * thickness : thickness, orientation, cell);
    }
}

/// Fills from eighth to eighth of the cell.
void fillEighths(QPainter& painter, QSize cell, int left, int top, int right, int bottom) {
    const auto at = [](int extent, int eighths) { return (extent * eighths + 4) / 8; };
    const QPoint corner(at(cell.width(), left), at(cell.height(), top));
    QRect rect(corner, QPoint(at(cell.width(), right) - 1, at(cell.height(), bottom) - 1));
    rect.setWidth(std::max(rect.width(), 1));
    rect.setHeight(std::max(rect.height(), 1));
    painter.fillRect(rect, Qt::white);
}

void drawBlock(QPainter& painter, char32_t scalar, QSize cell) {
    const int code = static_cast<int>(scalar - 0x2580);
    if (code == 0) {
        fillEighths(painter, cell, 0, 0, 8, 4);
    } else if (code <= 8) {
        fillEighths(painter, cell, 0, 8 - code, 8, 8);
    } else if (code <= 0x0F) {
        fillEighths(painter, cell, 0, 0, 0x10 - code, 8);
    } else if (code == 0x10) {
        fillEighths(painter, cell, 4, 0, 8, 8);
    } else if (code <= 0x13) {
        painter.setOpacity((code - 0x10) / 4.0);
        fillEighths(painter, cell, 0, 0, 8, 8);
    } else if (code == 0x14) {
        fillEighths(painter, cell, 0, 0, 8, 1);
    } else if (code == 0x15) {
        fillEighths(painter, cell, 7, 0, 8, 8);
    } else {
        // Bits: upper left, upper right, lower left, lower right.
        constexpr std::array quarters{4, 8, 1, 13, 9, 7, 11, 2, 6, 14};
        const int bits = quarters[static_cast<size_t>(code - 0x16)];
        for (int quarter = 0; quarter < 4; ++quarter) {
            if ((bits >> quarter & 1) != 0) {
                const int x = quarter % 2 * 4;
                const int y = quarter / 2 * 4;
                fillEighths(painter, cell, x, y, x + 4, y + 4);
            }
        }
    }
}

void drawBraille(QPainter& painter, char32_t scalar, QSize cell) {
    // The place of each bit: column, row.
    constexpr std::array<QPoint, 8> places{QPoint(0, 0), QPoint(0, 1), QPoint(0, 2), QPoint(1, 0),
                                           QPoint(1, 1), QPoint(1, 2), QPoint(0, 3), QPoint(1, 3)};
    const unsigned bits = scalar - 0x2800;
    const int size = std::max(1, std::min(cell.width() / 4, cell.height() / 8));
    for (size_t dot = 0; dot < places.size(); ++dot) {
        if ((bits >> dot & 1U) != 0) {
            const int x = (cell.width() * (2 * places[dot].x() + 1) / 2 - size) / 2;
            const int y = (cell.height() * (2 * places[dot].y() + 1) / 4 - size) / 2;
            painter.fillRect(x, y, size, size, Qt::white);
        }
    }
}

/// Two by three parts of the cell; the ones that block elements have are left out of the numbers.
void drawSextant(QPainter& painter, char32_t scalar, QSize cell) {
    int bits = static_cast<int>(scalar - 0x1FB00) + 1;
    bits += bits >= 21 ? 1 : 0;
    bits += bits >= 42 ? 1 : 0;
    const auto part = [](int extent, int index, int count) { return extent * index / count; };
    for (int at = 0; at < 6; ++at) {
        if ((bits >> at & 1) != 0) {
            const int left = part(cell.width(), at % 2, 2);
            const int top = part(cell.height(), at / 2, 3);
            painter.fillRect(
                left, top, part(cell.width(), at % 2 + 1, 2) - left, part(cell.height(), at / 2 + 1, 3) - top,
                Qt::white);
        }
    }
}

/// U+1FB70 to U+1FB8B: single eighths, and blocks from the top and from the right.
void drawEighths(QPainter& painter, char32_t scalar, QSize cell) {
    const int code = static_cast<int>(scalar - 0x1FB70);
    constexpr std::array parts{2, 3, 5, 6, 7};
    if (code < 6) {
        fillEighths(painter, cell, code + 1, 0, code + 2, 8);
    } else if (code < 12) {
        fillEighths(painter, cell, 0, code - 5, 8, code - 4);
    } else if (code >= 0x12 && code < 0x17) {
        fillEighths(painter, cell, 0, 0, 8, parts[static_cast<size_t>(code - 0x12)]);
    } else if (code >= 0x17) {
        fillEighths(painter, cell, 8 - parts[static_cast<size_t>(code - 0x17)], 0, 8, 8);
    }
}

/// U+E0B0 to U+E0BF: separators, each filled and as a line.
void drawSeparator(QPainter& painter, char32_t scalar, QSize cell, int thickness) {
    const int code = static_cast<int>(scalar - 0xE0B0);
    const bool isLine = (code & 1) != 0;
    const qreal width = cell.width();
    const qreal height = cell.height();
    QPainterPath path;
    if (code < 8) {
        // Round or pointed, to the right or, mirrored, to the left.
        const bool isLeft = (code & 2) != 0;
        const qreal base = isLeft ? width : 0;
        const qreal tip = isLeft ? 0 : width;
        path.moveTo(base, 0);
        if (code < 4) {
            path.lineTo(tip, height / 2);
            path.lineTo(base, height);
        } else {
            const qreal bend = base + (tip - base) * 1.3;
            path.cubicTo(bend, 0, bend, height, base, height);
        }
    } else {
        // The corner that is filled: lower left, lower right, upper left, upper right.
        const int corner = (code - 8) / 2;
        const bool rises = corner == 1 || corner == 2;
        path.moveTo(0, rises ? height : 0);
        path.lineTo(width, rises ? 0 : height);
        if (!isLine) {
            path.lineTo(corner % 2 == 0 ? 0 : width, corner < 2 ? height : 0);
        }
    }
    if (isLine) {
        drawStroke(painter, path, thickness);
    } else {
        painter.setRenderHint(QPainter::Antialiasing);
        path.closeSubpath();
        painter.fillPath(path, Qt::white);
    }
}

} // namespace

bool isDrawnGlyph(char32_t scalar) {
    return (scalar >= 0x2500 && scalar <= 0x259F) || (scalar >= 0x2800 && scalar <= 0x28FF) ||
           (scalar >= 0x1FB00 && scalar <= 0x1FB3B) || (scalar >= 0x1FB70 && scalar <= 0x1FB7B) ||
           (scalar >= 0x1FB82 && scalar <= 0x1FB8B) || (scalar >= 0xE0B0 && scalar <= 0xE0BF);
}

void drawGlyph(QPainter& painter, char32_t scalar, QSize cell, int thickness) {
    painter.save();
    painter.setClipRect(QRect(QPoint(), cell));
    if (scalar < 0x2580) {
        drawBox(painter, scalar, cell, thickness);
    } else if (scalar < 0x2800) {
        drawBlock(painter, scalar, cell);
    } else if (scalar < 0x2900) {
        drawBraille(painter, scalar, cell);
    } else if (scalar < 0xE0C0) {
        drawSeparator(painter, scalar, cell, thickness);
    } else if (scalar < 0x1FB40) {
        drawSextant(painter, scalar, cell);
    } else {
        drawEighths(painter, scalar, cell);
    }
    painter.restore();
}

} // namespace orv
