#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>

namespace orv {

/// A device on which Flutter can run an app.
struct FlutterDevice {
    QString id; ///< what "flutter run -d" takes
    QString name;

    bool operator==(const FlutterDevice&) const = default;
};

/// An iOS simulator.
struct SimulatorDevice {
    QString udid; ///< what "xcrun simctl" takes
    QString name;
    QString runtime; ///< "iOS 17.2"
    bool isBooted = false;

    bool operator==(const SimulatorDevice&) const = default;
};
size_t qHash(const SimulatorDevice& device, size_t seed = 0) noexcept;

/// Turns what the platforms' tools print about devices into values, and orders them for menus. Nothing here starts a
/// program; text that is not what it should be gives no devices. Any thread.
namespace DeviceParsers {

struct RuntimeGroup {
    QString runtime;
    QList<SimulatorDevice> devices;

    bool operator==(const RuntimeGroup&) const = default;
};

/// Of "flutter devices --machine": a JSON array of objects. Those without a text "id" and "name" are passed over.
[[nodiscard]] QList<FlutterDevice> flutterDevices(const QByteArray& listing);

/// Of "xcrun simctl list devices available --json": the iOS ones that are available, by version of their runtime, then
/// name (numbers in it by value), then id.
[[nodiscard]] QList<SimulatorDevice> simulators(const QByteArray& simctlJson);
/// Oldest runtime first; the devices of a group stay in their order.
[[nodiscard]] QList<RuntimeGroup> groupedByRuntime(const QList<SimulatorDevice>& devices);
/// At most `limit` for a short menu: those that run already, then those of the newest runtime, in their order.
[[nodiscard]] QList<SimulatorDevice> shortlist(const QList<SimulatorDevice>& devices, qsizetype limit);

/// The virtual devices of "emulator -list-avds", without the notices that it prints among them.
[[nodiscard]] QStringList avds(const QByteArray& listOutput);
/// "Pixel_7_API_34" as people read it.
[[nodiscard]] QString displayName(const QString& avd);

/// The folder of the Android SDK, known by the "emulator/emulator" in it: ANDROID_HOME or ANDROID_SDK_ROOT of the
/// environment, else where its installers put it below the home folder.
[[nodiscard]] std::optional<QString> androidSDK(const QMap<QString, QString>& environment, const QString& home);

} // namespace DeviceParsers
} // namespace orv
