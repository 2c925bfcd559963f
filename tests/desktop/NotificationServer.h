#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QStringList>

namespace orv::test {

/// Takes what a desktop's programs post, in the place of a daemon that would show it.
class NotificationServer : public QDBusVirtualObject {
public:
    struct Shown {
        uint id = 0;
        QString title;
        QString body;
        QStringList actions; ///< a key and a text each
    };

    /// `sessionBus` is the address of the desktop's bus.
    explicit NotificationServer(const QString& sessionBus);
    ~NotificationServer() override;

    [[nodiscard]] bool isThere() const { return m_isThere; }
    [[nodiscard]] const QList<Shown>& shown() const { return m_shown; }
    /// What a click on the notification, or on one of its buttons, says.
    void invoke(uint id, const QString& action);

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;
    [[nodiscard]] QString introspect(const QString& path) const override;

private:
    const QString m_name;
    QDBusConnection m_bus;
    bool m_isThere = false;
    QList<Shown> m_shown;
};

} // namespace orv::test
