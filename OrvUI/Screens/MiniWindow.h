#pragma once

#include "OrvUI/Screens/PaintedPicture.h"

namespace orv {

/// The application's window as small as a swatch, in the colours of any theme. A main-thread item.
class MiniWindow : public orv::PaintedPicture {
    Q_OBJECT
    QML_ELEMENT
    /// Index of ThemeID.
    Q_PROPERTY(int theme MEMBER m_theme NOTIFY lookChanged FINAL)
    Q_PROPERTY(bool dark MEMBER m_dark NOTIFY lookChanged FINAL)
    /// Light at the left of a slanting cut, whatever `dark` says of the rest.
    Q_PROPERTY(bool cut MEMBER m_cut NOTIFY lookChanged FINAL)

public:
    explicit MiniWindow(QQuickItem* parent = nullptr);

Q_SIGNALS:
    void lookChanged();

protected:
    void paint(QPainter& painter) const override;

private:
    void paintLook(QPainter& painter, bool dark) const;

    int m_theme = 0;
    bool m_dark = true;
    bool m_cut = false;
};

} // namespace orv
