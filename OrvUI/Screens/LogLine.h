#pragma once

#include "OrvUI/LogSelection.h"
#include "OrvUI/Screens/LogLayout.h"
#include "OrvUI/Screens/PaintedPicture.h"

#include <QPointer>
#include <QVariant>

namespace orv {

/// A line of output: its number, when it came, its text in its colours, what a search found in it and what of it is
/// selected, and whether it reports an error. A main-thread item.
class LogLine : public orv::PaintedPicture {
    Q_OBJECT
    QML_ELEMENT
    /// LogText.
    Q_PROPERTY(QVariant content READ content WRITE setContent NOTIFY contentChanged FINAL)
    Q_PROPERTY(qlonglong number MEMBER m_number NOTIFY lookChanged FINAL)
    Q_PROPERTY(QString time MEMBER m_time NOTIFY lookChanged FINAL)
    Q_PROPERTY(QString text READ text NOTIFY contentChanged FINAL)
    Q_PROPERTY(bool wrap MEMBER m_wrap NOTIFY lookChanged FINAL)
    Q_PROPERTY(bool numbered MEMBER m_isNumbered NOTIFY lookChanged FINAL)
    Q_PROPERTY(bool timed MEMBER m_isTimed NOTIFY lookChanged FINAL)
    /// How far the text is moved to the left.
    Q_PROPERTY(int offset MEMBER m_offset NOTIFY lookChanged FINAL)
    Q_PROPERTY(orv::LogSelection* selection READ selection WRITE setSelection NOTIFY selectionChanged FINAL)

public:
    explicit LogLine(QQuickItem* parent = nullptr);

    [[nodiscard]] QVariant content() const { return QVariant::fromValue(m_content); }
    void setContent(const QVariant& content);
    [[nodiscard]] const LogText& line() const { return m_content; }
    [[nodiscard]] const QString& text() const { return m_content.text; }
    [[nodiscard]] LogSelection* selection() const { return m_selection; }
    void setSelection(LogSelection* selection);
    /// Underlines these characters.
    void setLink(const LogLayout::Mark& link);

    /// Where the text begins, as long as it is not moved.
    [[nodiscard]] int inset() const;
    /// What there is for a row of text.
    [[nodiscard]] qreal room() const;
    [[nodiscard]] const LogLayout& layout() const;
    /// In the coordinates of the text.
    [[nodiscard]] QPointF inText(QPointF place) const { return place - QPointF(inset() - shift(), 0); }

Q_SIGNALS:
    void contentChanged();
    void lookChanged();
    void selectionChanged();

protected:
    void paint(QPainter& painter) const override;
    [[nodiscard]] QRectF paintedArea() const override;
    void geometryChange(const QRectF& now, const QRectF& before) override;
    void componentComplete() override;
    void updatePolish() override { static_cast<void>(layout()); }

private:
    [[nodiscard]] int shift() const { return m_wrap ? 0 : m_offset; }
    void changed();
    void fit();
    void followView();
    void followSelection();
    void paintMargin(QPainter& painter) const;
    void paintMarks(QPainter& painter) const;

    LogText m_content;
    qlonglong m_number = 0;
    QString m_time;
    bool m_wrap = false;
    bool m_isNumbered = true;
    bool m_isTimed = false;
    bool m_isTall = false;
    int m_offset = 0;
    QMetaObject::Connection m_viewMoves;
    QPointer<LogSelection> m_selection;
    LogSelection::Range m_selected;
    LogLayout::Mark m_link;
    mutable LogLayout m_layout;
    mutable LogLayout::Room m_layoutRoom;
    mutable bool m_isLaidOut = false;
};

} // namespace orv
