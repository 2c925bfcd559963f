#pragma once

#include "OrvTerminal/View/TerminalColors.h"

#include <QObject>
#include <QString>

namespace orv {

/// The font and the colours that terminals are shown in; shared by all of them. Main thread.
class TerminalStyle : public QObject {
    Q_OBJECT
    Q_PROPERTY(qreal fontSize READ fontSize WRITE setFontSize NOTIFY fontChanged FINAL)
public:
    static constexpr qreal usualSize = 13;
    static constexpr qreal smallestSize = 6;
    static constexpr qreal largestSize = 48;

    explicit TerminalStyle(QObject* parent = nullptr);

    [[nodiscard]] QString family() const { return m_family; }
    void setFamily(const QString& family);
    /// In logical pixels.
    [[nodiscard]] qreal fontSize() const { return m_size; }
    void setFontSize(qreal size);
    /// A step up or down; 0: back to the usual size.
    void zoom(int direction);
    [[nodiscard]] const TerminalColors& colors() const { return m_colors; }
    void setColors(const TerminalColors& colors);

Q_SIGNALS:
    void fontChanged();
    void colorsChanged();

private:
    QString m_family;
    qreal m_size = usualSize;
    TerminalColors m_colors;
};

} // namespace orv
