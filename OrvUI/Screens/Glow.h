#pragma once

#include "OrvUI/Screens/PaintedPicture.h"

#include <QColor>

namespace orv {

/// A round light that fades to its edge. A main-thread item.
class Glow : public orv::PaintedPicture {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY colorChanged FINAL)

public:
    explicit Glow(QQuickItem* parent = nullptr);

Q_SIGNALS:
    void colorChanged();

protected:
    void paint(QPainter& painter) const override;

private:
    QColor m_color;
};

} // namespace orv
