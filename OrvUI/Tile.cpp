#include "OrvUI/Tile.h"

#include <QList>

namespace orv::Tile {

int index(const QString& name) {
    quint32 hash = 7;
    for (const char32_t codePoint : name.toUcs4()) {
        hash = hash * 131 + codePoint;
    }
    return static_cast<int>((hash >> 8) % colourCount);
}

QString letter(const QString& name) {
    const QList<uint> codePoints = name.toUcs4();
    for (const char32_t codePoint : codePoints) {
        if (QChar::isLetterOrNumber(codePoint)) {
            return QString::fromUcs4(&codePoint, 1).toUpper();
        }
    }
    return codePoints.isEmpty() ? QString()
                                : QString::fromUcs4(reinterpret_cast<const char32_t*>(codePoints.data()), 1);
}

} // namespace orv::Tile
