#include "OrvUI/Screens/Illustration.h"

#include "OrvUI/Screens/Theme.h"

#include <QDir>
#include <QFile>
#include <QPainter>
#include <QSvgRenderer>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

const QString pictures = u":/qt/qml/OrvLauncher/Screens/illustrations"_s;

} // namespace

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

QStringList Illustration::names() {
    QStringList names = QDir(pictures).entryList({u"*.svg"_s}, QDir::Files, QDir::Name);
    return names.replaceInStrings(u".svg"_s, QString());
}

QByteArray Illustration::svg(const QString& name, const Theme& theme) {
    QFile file(pictures + u'/' + name + u".svg"_s);
    if (!file.open(QIODevice::ReadOnly)) {
        qWarning("there is no illustration \"%s\"", qUtf8Printable(name));
        return {};
    }
    QByteArray svg = file.readAll();
    const struct {
        const char* role;
        QColor color;
    } roles[] = {
        {"$plate", theme.raised()},      {"$edge", theme.borderStrong()}, {"$line", theme.ilLine()},
        {"$mid", theme.ilMid()},         {"$soft", theme.selection()},    {"$accent", theme.accent()},
        {"$onAccent", theme.onAccent()}, {"$success", theme.success()},   {"$danger", theme.danger()},
        {"$surface", theme.surface()},
    };
    // Pictures know no colour with an opacity in it.
    const QColor soft = theme.accentSoft();
    svg.replace(
        "\"$accent24\"",
        '"' + soft.name().toLatin1() + "\" fill-opacity=\"" + QByteArray::number(soft.alphaF(), 'f', 2) + '"');
    for (const auto& [role, color] : roles) {
        svg.replace('"' + QByteArray(role) + '"', '"' + color.name().toLatin1() + '"');
    }
    return svg;
}

void Illustration::load() {
    if (m_theme == nullptr || m_name.isEmpty()) {
        return;
    }
    m_svg = svg(m_name, *m_theme);
    const QSizeF natural = QSvgRenderer(m_svg).defaultSize();
    setImplicitSize(natural.width(), natural.height());
    repaint();
}

void Illustration::paint(QPainter& painter) const {
    QSvgRenderer(m_svg).render(&painter, boundingRect());
}

} // namespace orv
