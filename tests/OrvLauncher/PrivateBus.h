#pragma once

#include <QProcess>

#include <gtest/gtest.h>

namespace orv::test {

/// A bus of its own; gone with the object.
class PrivateBus {
public:
    PrivateBus() {
        m_daemon.start(
            QStringLiteral("dbus-daemon"),
            {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
        EXPECT_TRUE(m_daemon.waitForReadyRead());
        address = QString::fromUtf8(m_daemon.readLine()).trimmed();
    }
    ~PrivateBus() {
        m_daemon.kill();
        m_daemon.waitForFinished();
    }
    QString address;

private:
    QProcess m_daemon;
};

} // namespace orv::test
