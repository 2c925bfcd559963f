#pragma once

#include "OrvUI/Screens/PaintedPicture.h"

#include <QPointer>

namespace orv {

class Theme;

/// A picture drawn in the colours of the theme. A main-thread item.
///
/// The file names its colours by role ("$plate", "$edge", "$line", "$mid", "$soft", or a colour of the theme as
/// "$accent").
class Illustration : public orv::PaintedPicture {
    Q_OBJECT
    QML_ELEMENT
    /// File name without its ending ("no-projects").
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged FINAL)

public:
    explicit Illustration(QQuickItem* parent = nullptr);

    [[nodiscard]] const QString& name() const { return m_name; }
    void setName(const QString& name);

    /// Of all that there are.
    [[nodiscard]] static QStringList names();
    /// The picture in the theme's colours as they are now; empty where there is none of that name.
    [[nodiscard]] static QByteArray svg(const QString& name, const Theme& theme);

Q_SIGNALS:
    void nameChanged();

protected:
    void paint(QPainter& painter) const override;
    void componentComplete() override;

private:
    void load();

    QPointer<Theme> m_theme;
    QString m_name;
    QByteArray m_svg;
};

} // namespace orv
