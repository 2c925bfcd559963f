#include "OrvUI/FlutterDevices.h"

#include "OrvCore/LoginShell.h"

#include <QDeadlineTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>

#include <csignal>

#include <unistd.h>

namespace orv::FlutterDevices {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

QList<FlutterDevice> parse(const QByteArray& listing) {
    QList<FlutterDevice> devices;
    const QJsonArray entries = QJsonDocument::fromJson(listing).array();
    for (const QJsonValue entry : entries) {
        const QJsonValue id = entry[u"id"];
        const QJsonValue name = entry[u"name"];
        if (id.isString() && name.isString()) {
            devices.append({id.toString(), name.toString()});
        }
    }
    return devices;
}

QList<FlutterDevice> list(std::chrono::milliseconds limit, const std::atomic<bool>& isCancelled) {
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.setChildProcessModifier([] { ::setsid(); });
    process.start(loginShell(), {u"-lc"_s, u"flutter devices --machine"_s});
    if (!process.waitForStarted()) {
        return {};
    }
    const auto group = static_cast<pid_t>(process.processId());
    const QDeadlineTimer deadline(limit);
    while (!process.waitForFinished(100)) {
        if (process.state() == QProcess::NotRunning) {
            break;
        }
        if (deadline.hasExpired() || isCancelled) {
            ::kill(-group, SIGKILL);
            process.waitForFinished();
            return {};
        }
    }
    return parse(process.readAllStandardOutput());
}

} // namespace orv::FlutterDevices
