#pragma once

#include "OrvUI/LogModel.h"

#include <QColor>
#include <QTextLayout>

#include <algorithm>

class QPainter;

namespace orv {

/// A line of output in the font of the console: where each of its characters stands, and how it is drawn, in the
/// colours of the theme. Coordinates begin at the top left of the text. Of the main thread, or of another one while
/// that waits.
class LogLayout {
public:
    /// `wrapWidth` 0: in one row, of which only the characters up to about that far are laid out.
    struct Room {
        qreal wrapWidth = 0;
        qreal shownWidth = 0;

        bool operator==(const Room&) const = default;
    };
    /// A piece of the text that is drawn otherwise; the end is excluded.
    struct Mark {
        qsizetype start = 0;
        qsizetype end = 0;
    };

    void set(const LogText& content, const Room& room);

    [[nodiscard]] int rows() const { return std::max(1, m_layout.lineCount()); }
    [[nodiscard]] qreal height() const;
    /// Of the widest row; of what is not laid out as if all letters were of one width.
    [[nodiscard]] qreal width() const;
    /// Where these characters stand, a rectangle a row.
    [[nodiscard]] QList<QRectF> areas(qsizetype start, qsizetype end) const;
    /// The same to be filled: what lies side by side has no seam.
    [[nodiscard]] QList<QRectF> fills(qsizetype start, qsizetype end) const;
    /// The gap between two characters that is nearest.
    [[nodiscard]] qsizetype offsetAt(QPointF place) const;
    /// The character at that place; -1: none.
    [[nodiscard]] qsizetype characterAt(QPointF place) const;

    void drawBackgrounds(QPainter& painter) const;
    /// `bright` stands on the colour of the current hit; `link` is underlined.
    void drawText(QPainter& painter, QRectF clip, const QList<Mark>& bright, const Mark& link) const;

    [[nodiscard]] static qreal rowHeight();
    /// Of a letter.
    [[nodiscard]] static qreal advance();
    /// Below the top of a row.
    [[nodiscard]] static qreal baseline();

private:
    struct Background {
        Mark place;
        QColor color;
    };

    QTextLayout m_layout;
    QColor m_plain;
    QList<Background> m_backgrounds;
    qsizetype m_left = 0; ///< characters that are not laid out
};

} // namespace orv
