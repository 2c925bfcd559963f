#pragma once

#include "OrvLauncher/platform/linux/BusConnection.h"
#include "OrvUI/Notifications.h"

#include <QDBusMessage>
#include <QHash>
#include <QObject>

#include <chrono>
#include <deque>
#include <optional>

namespace orv {

/// A client of org.freedesktop.Notifications (freedesktop.org, desktop notifications 1.2). Lives on the main thread,
/// which waits neither for the bus nor for the server. What is posted before the server has said what it can do waits,
/// the newest of it.
class DesktopNotifier : public QObject, public Notifying {
    Q_OBJECT
public:
    /// `busAddress`: of another bus than the session's.
    explicit DesktopNotifier(
        QString busAddress = {}, std::chrono::milliseconds limit = std::chrono::seconds(5), QObject* parent = nullptr);

    static constexpr size_t waitingLimit = 20;
    static constexpr size_t shownLimit = 100;

    void post(const NotificationRequest& request) override;
    void findStatus(Ask ask, std::function<void(const NotificationStatus&)> answer) override;

    /// A text for a server that reads markup in it, or for one that does not; without controls, and no longer than
    /// anyone reads.
    [[nodiscard]] static QString bodyText(const QString& body, bool readsMarkup);

private Q_SLOTS:
    void activationToken(uint id, const QString& token, const QDBusMessage& message);
    void actionInvoked(uint id, const QString& action, const QDBusMessage& message);
    void notificationClosed(uint id, uint reason, const QDBusMessage& message);

private:
    struct Server {
        QString owner; ///< its unique name on the bus
        QString name;  ///< "dunst"
        bool readsMarkup = false;
        bool hasActions = false;
    };
    struct Shown {
        uint id = 0;
        QString owner;
        NotificationRequest request;
        QString activation; ///< of the click that is about to be told of
    };
    struct Sent {
        int number = 0;
        std::optional<NotificationRequest> next; ///< takes its place once that is known
    };
    using Answer = std::function<void(const NotificationStatus&)>;

    void takeBus(bool isOpen);
    void askServer();
    void askCapabilities();
    void call(const QString& method, const QVariantList& arguments, BusConnection::Taken taken);
    void settle(const std::optional<Server>& server);
    void send(const NotificationRequest& request);
    void afterReplies(std::function<void()> work);
    void act(uint id, const QString& action, const QDBusMessage& message);
    void takeSent(uint id, const QString& owner, const NotificationRequest& request);
    [[nodiscard]] uint replacedBy(const NotificationRequest& request) const;
    [[nodiscard]] std::deque<Shown>::iterator shown(uint id, const QDBusMessage& message);

    BusConnection m_bus;
    bool m_isAsking = false; ///< the bus, or the server
    std::optional<Server> m_server;
    std::deque<NotificationRequest> m_waiting;
    std::deque<Answer> m_answers;
    std::deque<Shown> m_shown;
    /// By their subjects the last ones that the server has not answered to yet.
    QHash<QString, Sent> m_sent;
    int m_lastSent = 0;
};

} // namespace orv
