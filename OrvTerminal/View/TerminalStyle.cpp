#include "OrvTerminal/View/TerminalStyle.h"

#include "OrvCore/Async.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

TerminalStyle::TerminalStyle(QObject* parent) : QObject(parent), m_family(u"JetBrains Mono"_s) {
    ORV_ASSERT_MAIN_THREAD();
}

void TerminalStyle::setFamily(const QString& family) {
    if (family != m_family) {
        m_family = family;
        Q_EMIT fontChanged();
    }
}

void TerminalStyle::setHinting(QFont::HintingPreference hinting) {
    if (hinting != m_hinting) {
        m_hinting = hinting;
        Q_EMIT fontChanged();
    }
}

void TerminalStyle::setFontSize(qreal size) {
    size = std::clamp(size, smallestSize, largestSize);
    if (size != m_size) {
        m_size = size;
        Q_EMIT fontChanged();
    }
}

void TerminalStyle::zoom(int direction) {
    setFontSize(direction == 0 ? usualSize : m_size + direction);
}

void TerminalStyle::setColors(const TerminalColors& colors) {
    if (colors != m_colors) {
        m_colors = colors;
        Q_EMIT colorsChanged();
    }
}

void TerminalStyle::setBlinksText(bool blinks) {
    if (blinks != m_blinksText) {
        m_blinksText = blinks;
        Q_EMIT blinksTextChanged();
    }
}

} // namespace orv
