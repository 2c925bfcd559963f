#pragma once

#include "OrvProcess/DeliveryTurns.h"

#include <QFuture>
#include <QObject>

#include <chrono>

namespace orv {

/// Runs a command line under the login shell, its output unread by anyone, and finishes when it has ended. What runs
/// longer than `limit` is killed with its whole group. `owner` takes it along when it dies. Main thread.
QFuture<void> runLimited(
    const QString& command, const QString& directory, std::chrono::milliseconds limit, DeliveryTurns& turns,
    QObject* owner);

} // namespace orv
