#pragma once

// Written by scripts/theme-tokens from theme/tokens.json.

#include <QColor>
#include <QObject>
#include <QtQmlIntegration>

#include <span>

namespace orv {

/// One part of a shadow; lengths in logical pixels, the colour with its opacity.
struct ShadowLayer {
    int y = 0;
    int blur = 0; ///< two standard deviations
    QRgb color = 0;
};

/// The colours of the theme in use.
class ThemeColors : public QObject {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(QColor window READ window NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor sidebar READ sidebar NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor surface READ surface NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor raised READ raised NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor sunken READ sunken NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor border READ border NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor borderStrong READ borderStrong NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor control READ control NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor text READ text NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor text2 READ text2 NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor text3 READ text3 NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor disabled READ disabled NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor accent READ accent NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor onAccent READ onAccent NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor accentHover READ accentHover NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor accentPressed READ accentPressed NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor accentText READ accentText NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor success READ success NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor warning READ warning NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor danger READ danger NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor info READ info NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor onStatus READ onStatus NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor selection READ selection NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor focus READ focus NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor textSelection READ textSelection NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor scrim READ scrim NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor controlHover READ controlHover NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor controlPressed READ controlPressed NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor surfaceHover READ surfaceHover NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor dangerHover READ dangerHover NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor dangerPressed READ dangerPressed NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor segOn READ segOn NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor tipBg READ tipBg NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor tipFg READ tipFg NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor ilLine READ ilLine NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor ilMid READ ilMid NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor mid READ mid NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor field READ field NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor hover READ hover NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor pressed READ pressed NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor buttonEdge READ buttonEdge NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor kbd READ kbd NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor skeleton READ skeleton NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor focusSoft READ focusSoft NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor accentSoft READ accentSoft NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor ctaGlow READ ctaGlow NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor searchHit READ searchHit NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor successSoft READ successSoft NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor warningSoft READ warningSoft NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor dangerSoft READ dangerSoft NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor infoSoft READ infoSoft NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor terminalBackground READ terminalBackground NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor terminalForeground READ terminalForeground NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor terminalCursor READ terminalCursor NOTIFY colorsChanged FINAL)
    Q_PROPERTY(QColor terminalSelection READ terminalSelection NOTIFY colorsChanged FINAL)

public:
    static constexpr int colorCount = 55;
    static constexpr int themeCount = 5;

    using QObject::QObject;

    [[nodiscard]] QColor window() const { return at(0); }
    [[nodiscard]] QColor sidebar() const { return at(1); }
    [[nodiscard]] QColor surface() const { return at(2); }
    [[nodiscard]] QColor raised() const { return at(3); }
    [[nodiscard]] QColor sunken() const { return at(4); }
    [[nodiscard]] QColor border() const { return at(5); }
    [[nodiscard]] QColor borderStrong() const { return at(6); }
    [[nodiscard]] QColor control() const { return at(7); }
    [[nodiscard]] QColor text() const { return at(8); }
    [[nodiscard]] QColor text2() const { return at(9); }
    [[nodiscard]] QColor text3() const { return at(10); }
    [[nodiscard]] QColor disabled() const { return at(11); }
    [[nodiscard]] QColor accent() const { return at(12); }
    [[nodiscard]] QColor onAccent() const { return at(13); }
    [[nodiscard]] QColor accentHover() const { return at(14); }
    [[nodiscard]] QColor accentPressed() const { return at(15); }
    [[nodiscard]] QColor accentText() const { return at(16); }
    [[nodiscard]] QColor success() const { return at(17); }
    [[nodiscard]] QColor warning() const { return at(18); }
    [[nodiscard]] QColor danger() const { return at(19); }
    [[nodiscard]] QColor info() const { return at(20); }
    [[nodiscard]] QColor onStatus() const { return at(21); }
    [[nodiscard]] QColor selection() const { return at(22); }
    [[nodiscard]] QColor focus() const { return at(23); }
    [[nodiscard]] QColor textSelection() const { return at(24); }
    [[nodiscard]] QColor scrim() const { return at(25); }
    [[nodiscard]] QColor controlHover() const { return at(26); }
    [[nodiscard]] QColor controlPressed() const { return at(27); }
    [[nodiscard]] QColor surfaceHover() const { return at(28); }
    [[nodiscard]] QColor dangerHover() const { return at(29); }
    [[nodiscard]] QColor dangerPressed() const { return at(30); }
    [[nodiscard]] QColor segOn() const { return at(31); }
    [[nodiscard]] QColor tipBg() const { return at(32); }
    [[nodiscard]] QColor tipFg() const { return at(33); }
    [[nodiscard]] QColor ilLine() const { return at(34); }
    [[nodiscard]] QColor ilMid() const { return at(35); }
    [[nodiscard]] QColor mid() const { return at(36); }
    [[nodiscard]] QColor field() const { return at(37); }
    [[nodiscard]] QColor hover() const { return at(38); }
    [[nodiscard]] QColor pressed() const { return at(39); }
    [[nodiscard]] QColor buttonEdge() const { return at(40); }
    [[nodiscard]] QColor kbd() const { return at(41); }
    [[nodiscard]] QColor skeleton() const { return at(42); }
    [[nodiscard]] QColor focusSoft() const { return at(43); }
    [[nodiscard]] QColor accentSoft() const { return at(44); }
    [[nodiscard]] QColor ctaGlow() const { return at(45); }
    [[nodiscard]] QColor searchHit() const { return at(46); }
    [[nodiscard]] QColor successSoft() const { return at(47); }
    [[nodiscard]] QColor warningSoft() const { return at(48); }
    [[nodiscard]] QColor dangerSoft() const { return at(49); }
    [[nodiscard]] QColor infoSoft() const { return at(50); }
    [[nodiscard]] QColor terminalBackground() const { return at(51); }
    [[nodiscard]] QColor terminalForeground() const { return at(52); }
    [[nodiscard]] QColor terminalCursor() const { return at(53); }
    [[nodiscard]] QColor terminalSelection() const { return at(54); }
    /// One of the sixteen colours of a terminal.
    [[nodiscard]] QColor ansi(int index) const;
    /// What casts the shadow of a level from 1 to 4.
    [[nodiscard]] std::span<const ShadowLayer> shadow(int level) const;
    /// A project's tile: 0 to 7.
    [[nodiscard]] QColor tileFillAt(int index) const;
    [[nodiscard]] QColor tileLetterAt(int index) const;
    [[nodiscard]] bool isDark() const { return m_dark; }
    /// A colour of any theme, for previews.
    [[nodiscard]] static QColor colorOf(int theme, bool dark, int color);

Q_SIGNALS:
    void colorsChanged();

protected:
    void use(int theme, bool dark);
    [[nodiscard]] int theme() const { return m_theme; }

private:
    [[nodiscard]] QColor at(int color) const { return colorOf(m_theme, m_dark, color); }

    int m_theme = 0;
    bool m_dark = true;
};

} // namespace orv
