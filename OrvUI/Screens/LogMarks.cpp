#include "LogMarks.h"

#include "OrvUI/Screens/Theme.h"

#include <QPainter>

#include <chrono>
#include <utility>

namespace orv {

using namespace std::chrono_literals;

LogMarks::LogMarks(QQuickItem* parent) : PaintedPicture(parent) {
    // Output may come at any rate; nobody reads marks at that.
    m_soon.setSingleShot(true);
    m_soon.setInterval(200ms);
    connect(&m_soon, &QTimer::timeout, this, &LogMarks::follow);
    connect(Theme::instance(), &Theme::colorsChanged, this, &LogMarks::repaint);
}

void LogMarks::setLines(LogModel* lines) {
    if (lines == m_lines) {
        return;
    }
    if (m_lines != nullptr) {
        m_lines->disconnect(this);
    }
    m_lines = lines;
    if (lines != nullptr) {
        const auto start = [this] {
            if (!m_soon.isActive()) {
                m_soon.start();
            }
        };
        connect(lines, &QAbstractItemModel::rowsInserted, this, start);
        connect(lines, &QAbstractItemModel::rowsRemoved, this, start);
    }
    follow();
    Q_EMIT linesChanged();
}

void LogMarks::follow() {
    QList<qreal> places;
    if (m_lines != nullptr) {
        const int rows = m_lines->rowCount();
        for (const int row : m_lines->errorRows()) {
            places.append((row + 0.5) / rows);
        }
    }
    if (places != m_places) {
        m_places = std::move(places);
        repaint();
    }
}

void LogMarks::paint(QPainter& painter) const {
    for (const qreal place : m_places) {
        painter.fillRect(
            QRectF(0, qRound(place * (height() - Theme::space2)), width(), Theme::space2), Theme::instance()->danger());
    }
}

} // namespace orv
