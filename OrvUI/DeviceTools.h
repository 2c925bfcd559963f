#pragma once

#include "OrvCore/Devices.h"

#include <QMap>

#include <atomic>
#include <chrono>
#include <expected>

namespace orv {

/// Where the tools for devices are looked for. A value; the functions block, on any thread but the main one, and end
/// early when `isCancelled`.
struct DeviceTools {
    QMap<QString, QString> environment;
    QString home;
    QString xcrun; ///< its path; empty where there are no simulators
    std::chrono::milliseconds flutterLimit = std::chrono::seconds(60);
    std::chrono::milliseconds bootLimit = std::chrono::minutes(3);

    [[nodiscard]] static DeviceTools ofThisMachine();

    template <typename Devices>
    struct Listing {
        Devices devices;
        QString hint; ///< a sentence that says what to install or what went wrong; empty: all is well
    };
    struct Emulator {
        QString avd;
        QString serial; ///< what adb and Flutter call it; empty while it does not run

        bool operator==(const Emulator&) const = default;
    };

    [[nodiscard]] Listing<QList<FlutterDevice>> flutterDevices(const std::atomic<bool>& isCancelled) const;
    [[nodiscard]] Listing<QList<SimulatorDevice>> simulators(const std::atomic<bool>& isCancelled) const;
    [[nodiscard]] Listing<QList<Emulator>> emulators(const std::atomic<bool>& isCancelled) const;

    /// What Flutter calls the device once it is up, or why it is not.
    using Booted = std::expected<QString, QString>;
    /// One that runs already is waited for, not started. An emulator that was started outlives this process.
    [[nodiscard]] Booted bootEmulator(const QString& avd, const std::atomic<bool>& isCancelled) const;
    [[nodiscard]] Booted bootSimulator(const QString& udid, const std::atomic<bool>& isCancelled) const;

private:
    struct Running {
        QString serial;
        bool isOnline = false; ///< adb can reach what runs in it
    };
    [[nodiscard]] static QMap<QString, Running> runningEmulators(
        const QString& sdk, const std::atomic<bool>& isCancelled);
};

} // namespace orv
