#pragma once

#include "OrvTerminal/View/TerminalColors.h"

#include <QFont>
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
    /// Whether letters are moved onto whole pixels, which each machine does in its own way.
    [[nodiscard]] QFont::HintingPreference hinting() const { return m_hinting; }
    void setHinting(QFont::HintingPreference hinting);
    /// In logical pixels.
    [[nodiscard]] qreal fontSize() const { return m_size; }
    void setFontSize(qreal size);
    /// A step up or down; 0: back to the usual size.
    void zoom(int direction);
    [[nodiscard]] const TerminalColors& colors() const { return m_colors; }
    void setColors(const TerminalColors& colors);
    /// Whether text may blink that a program wants to; else it stands still.
    [[nodiscard]] bool blinksText() const { return m_blinksText; }
    void setBlinksText(bool blinks);

Q_SIGNALS:
    void fontChanged();
    void colorsChanged();
    void blinksTextChanged();

private:
    QString m_family;
    QFont::HintingPreference m_hinting = QFont::PreferVerticalHinting;
    qreal m_size = usualSize;
    TerminalColors m_colors;
    bool m_blinksText = true;
};

} // namespace orv
