#pragma once

#include <QDBusArgument>
#include <QVariantMap>

namespace orv {

/// One shortcut as org.freedesktop.portal.GlobalShortcuts lists it: (sa{sv}).
struct PortalEntry {
    QString id;
    QVariantMap values; ///< "description", "preferred_trigger"; of one that is bound "trigger_description"
};

inline QDBusArgument& operator<<(QDBusArgument& argument, const PortalEntry& entry) {
    argument.beginStructure();
    argument << entry.id << entry.values;
    argument.endStructure();
    return argument;
}

inline const QDBusArgument& operator>>(const QDBusArgument& argument, PortalEntry& entry) {
    argument.beginStructure();
    argument >> entry.id >> entry.values;
    argument.endStructure();
    return argument;
}

} // namespace orv

Q_DECLARE_METATYPE(orv::PortalEntry)
