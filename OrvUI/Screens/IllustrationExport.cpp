#include "OrvUI/Screens/IllustrationExport.h"

#include "OrvUI/Screens/Illustration.h"
#include "OrvUI/Screens/Theme.h"

#include <QDir>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

using namespace Qt::StringLiterals;

namespace orv {

std::expected<int, QString> IllustrationExport::run(Theme& colors) const {
    if (!QDir().mkpath(folder)) {
        return std::unexpected(u"the folder %1 can't be made"_s.arg(folder));
    }
    int count = 0;
    const QSize pixels = (QSizeF(points, points) * scale).toSize();
    for (const bool isDark : {false, true}) {
        colors.setTheme(theme);
        colors.setDark(isDark);
        for (const QString& name : Illustration::names()) {
            QSvgRenderer picture(Illustration::svg(name, colors));
            QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
            image.fill(Qt::transparent);
            QPainter painter(&image);
            painter.setRenderHint(QPainter::Antialiasing);
            QSizeF size = picture.defaultSize();
            size.scale(pixels, Qt::KeepAspectRatio);
            picture.render(
                &painter, {QPointF((pixels.width() - size.width()) / 2, (pixels.height() - size.height()) / 2), size});
            painter.end();
            const QString file = u"%1/%2-%3.png"_s.arg(folder, name, isDark ? u"dark"_s : u"light"_s);
            if (!image.save(file)) {
                return std::unexpected(u"%1 can't be written"_s.arg(file));
            }
            ++count;
        }
    }
    return count;
}

} // namespace orv
