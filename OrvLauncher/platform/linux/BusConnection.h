#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

namespace orv {

/// A connection of its own to a message bus. Lives on the main thread, which waits neither for the bus, to which
/// another thread connects, nor for anybody on it: every call is asynchronous and ends after a while.
class BusConnection : public QObject {
    Q_OBJECT
public:
    /// `address`: of another bus than the session's. `limitMilliseconds`: of a call.
    BusConnection(QString address, int limitMilliseconds, QObject* parent = nullptr);
    ~BusConnection() override;

    /// Tells once whether there is a bus; asked again after that, it tries again.
    void open(std::function<void(bool isOpen)> opened);
    [[nodiscard]] bool isOpen() const { return m_bus.has_value(); }

    /// `taken` gets the reply or the error, on the main thread; nothing is told any more when this has died.
    using Taken = std::function<void(const QDBusMessage& reply)>;
    void call(QDBusMessage message, Taken taken);
    /// Signals of any sender: to be told of one by its name, Qt would wait for the bus to say who that is.
    void listen(
        const QString& path, const QString& interface, const QString& name, QObject* receiver, const char* slot);
    /// The name of this connection on the bus, such as ":1.42"; empty without one.
    [[nodiscard]] QString uniqueName() const { return m_bus ? m_bus->baseService() : QString(); }

private:
    const QString m_address;
    const int m_limitMilliseconds;
    const QString m_name;
    const std::shared_ptr<std::atomic<bool>> m_isWanted = std::make_shared<std::atomic<bool>>(true);
    std::optional<QDBusConnection> m_bus;
};

} // namespace orv
