#include "OrvLauncher/platform/linux/BusConnection.h"

#include "OrvCore/Async.h"

#include <QDBusPendingCallWatcher>
#include <QUuid>

#include <thread>

namespace orv {

using namespace Qt::StringLiterals;

BusConnection::BusConnection(QString address, int limitMilliseconds, QObject* parent)
    : QObject(parent),
      m_address(std::move(address)),
      m_limitMilliseconds(limitMilliseconds),
      m_name(u"orv-"_s + QUuid::createUuid().toString(QUuid::WithoutBraces)) {}

BusConnection::~BusConnection() {
    *m_isWanted = false;
    if (m_bus) {
        QDBusConnection::disconnectFromBus(m_name);
    }
}

/// The thread may hang as long as the bus does; nobody waits for it.
void BusConnection::open(std::function<void(bool isOpen)> opened) {
    ORV_ASSERT_MAIN_THREAD();
    const auto promise = std::make_shared<QPromise<QDBusConnection>>();
    promise->start();
    onFinished(promise->future(), this, [this, opened = std::move(opened)](const QDBusConnection& bus) {
        if (bus.isConnected()) {
            m_bus = bus;
        } else {
            QDBusConnection::disconnectFromBus(m_name);
        }
        opened(bus.isConnected());
    });
    std::thread([promise, name = m_name, address = m_address, isWanted = m_isWanted] {
        promise->addResult(
            address.isEmpty() ? QDBusConnection::connectToBus(QDBusConnection::SessionBus, name)
                              : QDBusConnection::connectToBus(address, name));
        promise->finish();
        if (!*isWanted) {
            QDBusConnection::disconnectFromBus(name);
        }
    }).detach();
}

void BusConnection::call(QDBusMessage message, Taken taken) {
    ORV_ASSERT_MAIN_THREAD();
    if (!m_bus) {
        return;
    }
    auto* watcher = new QDBusPendingCallWatcher(m_bus->asyncCall(message, m_limitMilliseconds), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, taken = std::move(taken)] {
        watcher->deleteLater();
        taken(watcher->reply());
    });
}

void BusConnection::listen(
    const QString& path, const QString& interface, const QString& name, QObject* receiver, const char* slot) {
    ORV_ASSERT_MAIN_THREAD();
    if (m_bus) {
        m_bus->connect({}, path, interface, name, receiver, slot);
    }
}

} // namespace orv
