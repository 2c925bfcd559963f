#pragma once

#include "OrvCore/UniqueFd.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>

class QSocketNotifier;

namespace orv {

/// The one window of a user and a support folder: who is first keeps a lock and listens on a socket; whoever starts
/// later hands over what it was started for. The kernel lets go of the lock when its holder dies, so that nothing stale
/// is ever in the way. Main thread.
class SingleInstance : public QObject {
    Q_OBJECT
public:
    /// Where the lock and the socket stand: in the user's runtime folder, named after the support folder.
    struct Place {
        QString lock;
        QString socket;

        /// Empty paths where the user has no folder that is his alone.
        [[nodiscard]] static Place ofThisUser();
        [[nodiscard]] static Place in(const QString& folder, const QString& supportFolder);
    };
    enum class Role {
        first,      ///< nobody else runs; `listen` comes next
        handedOver, ///< the other one has taken the message
        unanswered, ///< another one runs and does not answer
    };

    explicit SingleInstance(Place place = Place::ofThisUser(), QObject* parent = nullptr);
    ~SingleInstance() override;

    /// Blocks, at most `limit`, while another one starts or does not answer, and for as long as one says that it is
    /// leaving, which `waits` is told of once. Needs no event loop.
    [[nodiscard]] Role begin(
        const QByteArray& message, std::chrono::milliseconds limit, const std::function<void()>& waits = {});
    /// From now on messages come. Needs an event loop; what was sent since `begin` is not lost.
    void listen();
    /// From now on no messages come; whoever starts waits for the end.
    void leave() { m_isLeaving = true; }
    /// The next start is a first one.
    void end();

    /// Whether some process is the first one now.
    [[nodiscard]] static bool isRunning(const Place& place = Place::ofThisUser());

Q_SIGNALS:
    void called(const QByteArray& message);

private:
    class Caller;

    [[nodiscard]] bool takeLock();
    void accept();

    const Place m_place;
    UniqueFd m_lock;
    UniqueFd m_socket;
    bool m_isLeaving = false;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace orv
