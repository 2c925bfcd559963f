#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QMutex>
#include <QStringList>
#include <QThread>

namespace orv::test {

/// Shows nothing, but is the tray to programs that tell one of their icon by the bus, and takes their menu from them as
/// a tray would (org.kde.StatusNotifierWatcher, com.canonical.dbusmenu). It answers on a thread of its own: a program
/// that asks for the tray waits, and would wait for a test that waits for it.
class TrayHost : public QDBusVirtualObject {
public:
    /// `sessionBus` is the address of the desktop's bus.
    explicit TrayHost(const QString& sessionBus);
    ~TrayHost() override;

    [[nodiscard]] bool isThere() const { return m_isThere; }
    /// The texts of the menu as it would be opened now; a line is "-", what can't be chosen stands in brackets.
    [[nodiscard]] QStringList menu();
    /// As a click on the entry of that text; false where there is none.
    [[nodiscard]] bool choose(const QString& entry);
    /// As a click on the icon.
    void activate();

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;
    [[nodiscard]] QString introspect(const QString& path) const override;

private:
    struct Entry {
        int id = 0;
        QString text;
    };
    [[nodiscard]] QList<Entry> entries();
    [[nodiscard]] QString program();
    QDBusMessage call(const QString& path, const QString& interface, const QString& member, const QVariantList& words);

    const QString m_name;
    QDBusConnection m_bus;
    QThread m_thread;
    bool m_isThere = false;
    QMutex m_lock;
    QString m_program; ///< its name on the bus, once it has told of its icon
};

} // namespace orv::test
