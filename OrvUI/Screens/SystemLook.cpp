#include "OrvUI/Screens/SystemLook.h"

#include <QEvent>
#include <QGuiApplication>
#include <QPalette>
#ifdef Q_OS_LINUX
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#endif

using namespace Qt::StringLiterals;

namespace orv {
namespace {

bool paletteIsDark() {
    const QPalette palette = QGuiApplication::palette();
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

const QString appearanceGroup = u"org.freedesktop.appearance"_s;
const QString gnomeGroup = u"org.gnome.desktop.interface"_s;
const QString gnomeAccessGroup = u"org.gnome.desktop.a11y.interface"_s;

} // namespace

SystemLook::SystemLook(QObject* parent) : QObject(parent), m_isDark(paletteIsDark()) {
    QGuiApplication::instance()->installEventFilter(this);
}

void SystemLook::assume(bool isDark) {
    m_isDark = isDark;
}

bool SystemLook::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ApplicationPaletteChange && watched == QGuiApplication::instance()) {
        takePalette();
    }
    return QObject::eventFilter(watched, event);
}

void SystemLook::takePalette() {
    const bool isDark = paletteIsDark();
    if (!m_portalKnows && isDark != m_isDark) {
        m_isDark = isDark;
        Q_EMIT changed();
    }
}

void SystemLook::take(const QString& group, const QString& key, const QVariant& value) {
    const bool wasDark = m_isDark;
    const bool wasReduced = m_reducedMotion;
    const bool wasHigher = higherContrast();
    if (group == appearanceGroup && key == u"color-scheme"_s) {
        // 0 no preference, 1 dark, 2 light (org.freedesktop.portal.Settings)
        const uint scheme = value.toUInt();
        m_portalKnows = scheme == 1 || scheme == 2;
        m_isDark = m_portalKnows ? scheme == 1 : paletteIsDark();
    } else if (group == appearanceGroup && key == u"contrast"_s) {
        m_portalContrast = value.toUInt() == 1; // 0 no preference, 1 higher
    } else if (group == gnomeAccessGroup && key == u"high-contrast"_s) {
        m_gnomeContrast = value.toBool();
    } else if (group == gnomeGroup && key == u"enable-animations"_s) {
        m_reducedMotion = !value.toBool();
    }
    if (wasDark != m_isDark || wasReduced != m_reducedMotion || wasHigher != higherContrast()) {
        Q_EMIT changed();
    }
}

#ifdef Q_OS_LINUX

using SettingGroups = QMap<QString, QVariantMap>;

void SystemLook::start() {
    takePalette();
    qDBusRegisterMetaType<SettingGroups>();
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return;
    }
    const QString service = u"org.freedesktop.portal.Desktop"_s;
    const QString path = u"/org/freedesktop/portal/desktop"_s;
    const QString interface = u"org.freedesktop.portal.Settings"_s;
    bus.connect(
        service, path, interface, u"SettingChanged"_s, this, SLOT(portalChanged(QString, QString, QDBusVariant)));
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, u"ReadAll"_s);
    message << QStringList{appearanceGroup, gnomeGroup, gnomeAccessGroup};
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<SettingGroups> reply = *watcher;
        if (reply.isError()) {
            return; // no portal: the palette stays in charge
        }
        const SettingGroups groups = reply.value();
        for (auto group = groups.begin(); group != groups.end(); ++group) {
            for (auto entry = group->begin(); entry != group->end(); ++entry) {
                take(group.key(), entry.key(), entry.value());
            }
        }
    });
}

void SystemLook::portalChanged(const QString& group, const QString& key, const QDBusVariant& value) {
    take(group, key, value.variant());
}

#else

void SystemLook::start() {
    takePalette();
}

#endif

} // namespace orv
