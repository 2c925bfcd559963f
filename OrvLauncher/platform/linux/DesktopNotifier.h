#pragma once

#include "OrvUI/Notifications.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

#include <atomic>
#include <chrono>
#include <deque>
#include <memory>
#include <optional>

namespace orv {

/// A client of org.freedesktop.Notifications (freedesktop.org, desktop notifications 1.2). Lives on the main thread,
/// which waits neither for the bus, to which another thread connects, nor for the server: every call is asynchronous
/// and ends after a while. What is posted before the server has said what it can do waits, the newest of it.
class DesktopNotifier : public QObject, public Notifying {
    Q_OBJECT
public:
    /// `busAddress`: of another bus than the session's.
    explicit DesktopNotifier(
        QString busAddress = {}, std::chrono::milliseconds limit = std::chrono::seconds(5), QObject* parent = nullptr);
    ~DesktopNotifier() override;

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
    using Answer = std::function<void(const NotificationStatus&)>;
    using Taken = std::function<void(const QDBusMessage& reply)>;

    void connectToBus();
    void takeBus(const QDBusConnection& bus);
    void askServer();
    void askCapabilities();
    void call(const QString& method, const QVariantList& arguments, Taken taken);
    void settle(const std::optional<Server>& server);
    void send(const NotificationRequest& request);
    void afterReplies(std::function<void()> work);
    void act(uint id, const QString& action, const QDBusMessage& message);
    [[nodiscard]] std::deque<Shown>::iterator shown(uint id, const QDBusMessage& message);

    const QString m_busAddress;
    const int m_limitMilliseconds;
    const QString m_busName;
    const std::shared_ptr<std::atomic<bool>> m_isWanted = std::make_shared<std::atomic<bool>>(true);
    std::optional<QDBusConnection> m_bus;
    bool m_isAsking = false; ///< the bus, or the server
    std::optional<Server> m_server;
    std::deque<NotificationRequest> m_waiting;
    std::deque<Answer> m_answers;
    std::deque<Shown> m_shown;
};

} // namespace orv
