#include "OrvUI/DeviceTools.h"

#include "OrvCore/DesktopDevice.h"
#include "OrvCore/Paths.h"
#include "OrvProcess/ShellRunner.h"

#include <QDeadlineTimer>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QThread>

#include <algorithm>
#include <csignal>

namespace orv {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

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
    const ShellRunner::Result result = ShellRunner::run(words, {.time = flutterLimit}, isCancelled);
    if (!result && result.error() == ShellRunner::Failure::tooLate) {
        return {{desktopDevice}, u"Flutter did not answer in time. Try 'flutter devices' in a terminal."_s};
    }
    if (result && result->exitCode == notFound) {
        return {
            {},
            u"Flutter was not found. Install it from https://docs.flutter.dev/get-started so that your login shell finds it."_s};
    }
    if (!result || result->exitCode != 0) {
        return {{desktopDevice}, u"Flutter could not list its devices. Try 'flutter doctor' in a terminal."_s};
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
        return {{}, u"No simulators were found. Install Xcode from the App Store and open it once."_s};
    }
    return {DeviceParsers::simulators(result->text), {}};
}

DeviceTools::Listing<QList<DeviceTools::Emulator>> DeviceTools::emulators(const std::atomic<bool>& isCancelled) const {
    const std::optional<QString> sdk = DeviceParsers::androidSDK(environment, home);
    if (!sdk) {
        return {{}, u"No Android SDK was found. Install Android Studio, or set ANDROID_HOME to where the SDK is."_s};
    }
    const QString tool = *sdk + u"/emulator/emulator"_s;
    const ShellRunner::Result listing = ShellRunner::run({tool, u"-list-avds"_s}, {}, isCancelled);
    if (!listing || listing->exitCode != 0) {
        return {{}, u"The Android emulators could not be listed. Try '%1 -list-avds' in a terminal."_s.arg(tool)};
    }
    const QMap<QString, QString> running = runningEmulators(*sdk, isCancelled);
    QList<Emulator> found;
    for (const QString& avd : DeviceParsers::avds(listing->text)) {
        found.append({avd, running.value(avd)});
    }
    return {
        found, found.isEmpty() ? u"There is no Android emulator yet. Android Studio's Device Manager makes one."_s
                               : QString()};
}

/// From the name of the virtual device to its serial.
QMap<QString, QString> DeviceTools::runningEmulators(const QString& sdk, const std::atomic<bool>& isCancelled) const {
    QMap<QString, QString> running;
    const QString adb = adbOf(sdk);
    if (adb.isEmpty()) {
        return running;
    }
    for (const QByteArray& line : output({adb, u"devices"_s}, isCancelled).split('\n')) {
        const QString serial = QString::fromUtf8(line.left(line.indexOf('\t')));
        if (!line.startsWith("emulator-") || !line.trimmed().endsWith("\tdevice")) {
            continue;
        }
        const QByteArray answer = output({adb, u"-s"_s, serial, u"emu"_s, u"avd"_s, u"name"_s}, isCancelled);
        if (const QByteArray name = answer.left(answer.indexOf('\n')).trimmed(); !name.isEmpty()) {
            running.insert(QString::fromUtf8(name), serial);
        }
    }
    return running;
}

DeviceTools::Booted DeviceTools::bootEmulator(const QString& avd, const std::atomic<bool>& isCancelled) const {
    const QString shown = DeviceParsers::displayName(avd);
    const std::optional<QString> sdk = DeviceParsers::androidSDK(environment, home);
    if (!sdk) {
        return std::unexpected(u"No Android SDK was found to start "_s + shown + u'.');
    }
    if (const QString serial = runningEmulators(*sdk, isCancelled).value(avd); !serial.isEmpty()) {
        return serial;
    }
    const QString adb = adbOf(*sdk);
    if (adb.isEmpty()) {
        return std::unexpected(u"The Android SDK has no adb. Install its platform tools in Android Studio."_s);
    }
    QProcess emulator;
    emulator.setProgram(*sdk + u"/emulator/emulator"_s);
    emulator.setArguments({u"-avd"_s, avd});
    emulator.setStandardInputFile(QProcess::nullDevice());
    emulator.setStandardOutputFile(QProcess::nullDevice());
    emulator.setStandardErrorFile(QProcess::nullDevice());
    qint64 pid = 0;
    if (!emulator.startDetached(&pid)) {
        return std::unexpected(shown + u" could not be started: "_s + emulator.errorString());
    }
    for (const QDeadlineTimer deadline(bootLimit); !deadline.hasExpired() && !isCancelled;) {
        const QString serial = runningEmulators(*sdk, isCancelled).value(avd);
        const QStringList question{adb, u"-s"_s, serial, u"shell"_s, u"getprop"_s, u"sys.boot_completed"_s};
        if (!serial.isEmpty() && output(question, isCancelled).trimmed() == "1") {
            return serial;
        }
        if (::kill(static_cast<pid_t>(pid), 0) != 0) {
            return std::unexpected(shown + u" ended while it started. Try it in Android Studio's Device Manager."_s);
        }
        QThread::msleep(bootLook.count());
    }
    return std::unexpected(shown + u" did not come up in time."_s);
}

DeviceTools::Booted DeviceTools::bootSimulator(const QString& udid, const std::atomic<bool>& isCancelled) const {
    const ShellRunner::Result result =
        ShellRunner::run({xcrun, u"simctl"_s, u"boot"_s, udid}, {.time = bootLimit}, isCancelled);
    if (!result || (result->exitCode != 0 && result->exitCode != isBootedAlready)) {
        return std::unexpected(u"The simulator could not be started."_s);
    }
    const auto shown = ShellRunner::run({u"/usr/bin/open"_s, u"-a"_s, u"Simulator"_s}, {}, isCancelled);
    Q_UNUSED(shown) // it runs without its window too
    return udid;
}

} // namespace orv
