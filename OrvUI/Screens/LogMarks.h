#pragma once

#include "OrvUI/LogModel.h"
#include "OrvUI/Screens/PaintedPicture.h"

#include <QPointer>
#include <QTimer>

namespace orv {

/// Where in a whole log the reports of errors begin: a mark each, for beside the scroll bar. A main-thread item.
class LogMarks : public orv::PaintedPicture {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(orv::LogModel* lines READ lines WRITE setLines NOTIFY linesChanged FINAL)

public:
    explicit LogMarks(QQuickItem* parent = nullptr);

    [[nodiscard]] LogModel* lines() const { return m_lines; }
    void setLines(LogModel* lines);

Q_SIGNALS:
    void linesChanged();

protected:
    void paint(QPainter& painter) const override;

private:
    void follow();

    QPointer<LogModel> m_lines;
    QList<qreal> m_places; ///< from 0 at the top to 1
    QTimer m_soon;
};

} // namespace orv
