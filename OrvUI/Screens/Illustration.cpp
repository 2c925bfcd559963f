#include "OrvUI/Screens/Illustration.h"

#include "OrvUI/Screens/Theme.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>

using namespace Qt::StringLiterals;

namespace orv {

Illustration::Illustration(QQuickItem* parent) : PaintedPicture(parent) {}

void Illustration::setName(const QString& name) {
    if (name == m_name) {
        return;
    }
    m_name = name;
    load();
    Q_EMIT nameChanged();
}

void Illustration::componentComplete() {
    PaintedPicture::componentComplete();
    m_theme = Theme::instance();
    connect(m_theme, &Theme::colorsChanged, this, &Illustration::load);
    load();
}

void Illustration::load() {
    if (m_theme == nullptr || m_name.isEmpty()) {
        return;
    }
    QFile file(u":/qt/qml/OrvLauncher/Screens/illustrations/%1.svg"_s.arg(m_name));
    if (!file.open(QIODevice::ReadOnly)) {
        qWarning("there is no illustration \"%s\"", qUtf8Printable(m_name));
        return;
    }
    m_svg = file.readAll();
    const struct {
        const char* role;
        QColor color;
    } roles[] = {
        {"$plate", m_theme->raised()},      {"$edge", m_theme->borderStrong()}, {"$line", m_theme->ilLine()},
        {"$mid", m_theme->ilMid()},         {"$soft", m_theme->selection()},    {"$accent", m_theme->accent()},
        {"$onAccent", m_theme->onAccent()}, {"$success", m_theme->success()},   {"$danger", m_theme->danger()},
        {"$surface", m_theme->surface()},
    };
    for (const auto& [role, color] : roles) {
        m_svg.replace('"' + QByteArray(role) + '"', '"' + color.name().toLatin1() + '"');
    }
    const QSizeF natural = QSvgRenderer(m_svg).defaultSize();
    setImplicitSize(natural.width(), natural.height());
    repaint();
}

void Illustration::paint(QPainter& painter) const {
    QSvgRenderer(m_svg).render(&painter, boundingRect());
}

} // namespace orv
