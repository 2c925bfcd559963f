#include "OrvUI/DeviceTools.h"

#include "OrvCore/DesktopDevice.h"
#include "OrvCore/Paths.h"
#include "OrvProcess/ShellRunner.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFileInfo>
#include <QJsonDocument>
#include <QProcess>
#include <QProcessEnvironment>
#include <QThread>

#include <algorithm>
#include <csignal>

namespace orv {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(DeviceTools)
};

constexpr int notFound = 127;        ///< of a shell that knows no such command
constexpr int isBootedAlready = 149; ///< of "simctl boot"
constexpr auto adbLimit = 5s;
constexpr auto bootLook = 500ms;

/// What a tool printed, for as long as it is asked on a machine where it may hang.
QByteArray output(const QStringList& words, const std::atomic<bool>& isCancelled) {
    const ShellRunner::Result result = ShellRunner::run(words, {.time = adbLimit}, isCancelled);
    return result && result->exitCode == 0 ? result->text : QByteArray();
}

QString adbOf(const QString& sdk) {
    const QString adb = sdk + u"/platform-tools/adb"_s;
    return QFileInfo(adb).isExecutable() ? adb : QString();
}

} // namespace

DeviceTools DeviceTools::ofThisMachine() {
    DeviceTools tools;
    const QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString& name : environment.keys()) {
        tools.environment.insert(name, environment.value(name));
    }
    tools.home = Paths::realHome();
#ifdef Q_OS_MACOS
    tools.xcrun = u"/usr/bin/xcrun"_s;
#endif
    return tools;
}

/// A Flutter that is there has the desktop, though it could not list anything.
DeviceTools::Listing<QList<FlutterDevice>> DeviceTools::flutterDevices(const std::atomic<bool>& isCancelled) const {
    const auto words = ShellRunner::shellWords(u"flutter devices --machine"_s);
    const ShellRunner::Result result = ShellRunner::runLine(words, {.time = flutterLimit}, isCancelled);
    if (!result && result.error() == ShellRunner::Failure::tooLate) {
        return {{desktopDevice}, Words::tr("Flutter did not answer in time. Try 'flutter devices' in a terminal.")};
    }
    if (result && result->exitCode == notFound) {
        return {
            {},
            Words::tr("Flutter was not found. Install it from https://docs.flutter.dev/get-started so that your login "
                      "shell finds it.")};
    }
    if (!result || result->exitCode != 0) {
        return {{desktopDevice}, Words::tr("Flutter could not list its devices. Try 'flutter doctor' in a terminal.")};
    }
    if (!QJsonDocument::fromJson(result->text).isArray()) {
        return {
            {desktopDevice},
            Words::tr("What Flutter says about its devices is not understood. Try 'flutter devices --machine' in a "
                      "terminal.")};
    }
    return {DeviceParsers::flutterDevices(result->text), {}};
}

DeviceTools::Listing<QList<SimulatorDevice>> DeviceTools::simulators(const std::atomic<bool>& isCancelled) const {
    if (xcrun.isEmpty()) {
        return {};
    }
    const QStringList words{xcrun, u"simctl"_s, u"list"_s, u"devices"_s, u"available"_s, u"--json"_s};
    const ShellRunner::Result result = ShellRunner::run(words, {}, isCancelled);
    if (!result || result->exitCode != 0) {
        return {{}, Words::tr("No simulators were found. Install Xcode from the App Store and open it once.")};
    }
    return {DeviceParsers::simulators(result->text), {}};
}

DeviceTools::Listing<QList<DeviceTools::Emulator>> DeviceTools::emulators(const std::atomic<bool>& isCancelled) const {
    const std::optional<QString> sdk = DeviceParsers::androidSDK(environment, home);
    if (!sdk) {
        return {
            {},
            Words::tr("No Android SDK was found. Install Android Studio, or set ANDROID_HOME to where the SDK is.")};
    }
    const QString tool = *sdk + u"/emulator/emulator"_s;
    const ShellRunner::Result listing = ShellRunner::run({tool, u"-list-avds"_s}, {}, isCancelled);
    if (!listing || listing->exitCode != 0) {
        return {
            {}, Words::tr("The Android emulators could not be listed. Try '%1 -list-avds' in a terminal.").arg(tool)};
    }
    const QMap<QString, Running> running = runningEmulators(*sdk, isCancelled);
    QList<Emulator> found;
    for (const QString& avd : DeviceParsers::avds(listing->text)) {
        const Running each = running.value(avd);
        found.append({avd, each.isOnline ? each.serial : QString()});
    }
    return {
        found, found.isEmpty()
                   ? Words::tr("There is no Android emulator yet. Android Studio's Device Manager makes one.")
                   : QString()};
}

/// By the name of the virtual device. One that has just begun to boot is not reached yet, but says its name.
QMap<QString, DeviceTools::Running> DeviceTools::runningEmulators(
    const QString& sdk, const std::atomic<bool>& isCancelled) {
    QMap<QString, Running> running;
    const QString adb = adbOf(sdk);
    if (adb.isEmpty()) {
        return running;
    }
    for (const QByteArray& line : output({adb, u"devices"_s}, isCancelled).split('\n')) {
        const qsizetype tab = line.indexOf('\t');
        if (!line.startsWith("emulator-") || tab < 0) {
            continue;
        }
        const QString serial = QString::fromUtf8(line.first(tab));
        const QByteArray answer = output({adb, u"-s"_s, serial, u"emu"_s, u"avd"_s, u"name"_s}, isCancelled);
        if (const QByteArray name = answer.left(answer.indexOf('\n')).trimmed(); !name.isEmpty()) {
            running.insert(QString::fromUtf8(name), {serial, line.sliced(tab).trimmed() == "device"});
        }
    }
    return running;
}

DeviceTools::Booted DeviceTools::bootEmulator(const QString& avd, const std::atomic<bool>& isCancelled) const {
    const QString shown = DeviceParsers::displayName(avd);
    const std::optional<QString> sdk = DeviceParsers::androidSDK(environment, home);
    if (!sdk) {
        return std::unexpected(Words::tr("No Android SDK was found to start %1.").arg(shown));
    }
    const QString adb = adbOf(*sdk);
    if (adb.isEmpty()) {
        return std::unexpected(Words::tr("The Android SDK has no adb. Install its platform tools in Android Studio."));
    }
    qint64 pid = 0; // of the one that is started here
    for (const QDeadlineTimer deadline(bootLimit); !deadline.hasExpired() && !isCancelled;) {
        const Running found = runningEmulators(*sdk, isCancelled).value(avd);
        const QStringList question{adb, u"-s"_s, found.serial, u"shell"_s, u"getprop"_s, u"sys.boot_completed"_s};
        if (found.isOnline && output(question, isCancelled).trimmed() == "1") {
            return found.serial;
        }
        if (pid == 0 && found.serial.isEmpty()) {
            QProcess emulator;
            emulator.setProgram(*sdk + u"/emulator/emulator"_s);
            emulator.setArguments({u"-avd"_s, avd});
            emulator.setStandardInputFile(QProcess::nullDevice());
            emulator.setStandardOutputFile(QProcess::nullDevice());
            emulator.setStandardErrorFile(QProcess::nullDevice());
            if (!emulator.startDetached(&pid)) {
                return std::unexpected(Words::tr("%1 could not be started: %2").arg(shown, emulator.errorString()));
            }
        } else if (pid != 0 && ::kill(static_cast<pid_t>(pid), 0) != 0) {
            return std::unexpected(
                Words::tr("%1 ended while it started. Try it in Android Studio's Device Manager.").arg(shown));
        }
        QThread::msleep(bootLook.count());
    }
    return std::unexpected(Words::tr("%1 did not come up in time.").arg(shown));
}

DeviceTools::Booted DeviceTools::bootSimulator(const QString& udid, const std::atomic<bool>& isCancelled) const {
    const ShellRunner::Result result =
        ShellRunner::run({xcrun, u"simctl"_s, u"boot"_s, udid}, {.time = bootLimit}, isCancelled);
    if (!result || (result->exitCode != 0 && result->exitCode != isBootedAlready)) {
        return std::unexpected(Words::tr("The simulator could not be started."));
    }
    const auto shown = ShellRunner::run({u"/usr/bin/open"_s, u"-a"_s, u"Simulator"_s}, {}, isCancelled);
    Q_UNUSED(shown) // it runs without its window too
    return udid;
}

} // namespace orv
