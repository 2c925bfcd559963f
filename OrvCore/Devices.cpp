#include "OrvCore/Devices.h"

#include <QCollator>
#include <QFileInfo>
#include <QHashFunctions>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <tuple>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

size_t qHash(const SimulatorDevice& device, size_t seed) noexcept {
    return qHashMulti(seed, device.udid, device.name, device.runtime, device.isBooted);
}

namespace DeviceParsers {

namespace {

/// "iOS 17.2" of "com.apple.CoreSimulator.SimRuntime.iOS-17-2"; null for the other platforms.
QString iosRuntime(const QString& identifier) {
    const QStringView component = QStringView(identifier).sliced(identifier.lastIndexOf(u'.') + 1);
    constexpr QStringView platform = u"iOS-";
    if (!component.startsWith(platform)) {
        return {};
    }
    return "iOS "_L1 + component.sliced(platform.size()).toString().replace(u'-', u'.');
}

/// 17 and 2 of "iOS 17.2".
QList<int> version(const QString& runtime) {
    QList<int> numbers;
    for (const QString& part : runtime.section(u' ', 1).split(u'.')) {
        bool isNumber = false;
        const int number = part.toInt(&isNumber);
        if (isNumber) {
            numbers.append(number);
        }
    }
    return numbers;
}

/// Two runtimes of one version are told apart by their names.
std::pair<QList<int>, QString> age(const QString& runtime) {
    return {version(runtime), runtime};
}

std::optional<SimulatorDevice> simulator(const QJsonValue& entry, const QString& runtime) {
    const QJsonValue udid = entry["udid"_L1];
    const QJsonValue name = entry["name"_L1];
    const bool isAvailable = entry["isAvailable"_L1].toBool(true);
    if (!isAvailable || !udid.isString() || !name.isString()) {
        return {};
    }
    return SimulatorDevice{udid.toString(), name.toString(), runtime, entry["state"_L1] == "Booted"_L1};
}

void sortForLists(QList<SimulatorDevice>& devices) {
    QCollator collator{QLocale(QLocale::English)};
    collator.setNumericMode(true);
    std::ranges::stable_sort(devices, [&collator](const SimulatorDevice& device, const SimulatorDevice& other) {
        if (device.runtime != other.runtime) {
            return age(device.runtime) < age(other.runtime);
        }
        const int order = collator.compare(device.name, other.name);
        return order != 0 ? order < 0 : std::tie(device.udid, device.name) < std::tie(other.udid, other.name);
    });
}

} // namespace

QList<FlutterDevice> flutterDevices(const QByteArray& listing) {
    QList<FlutterDevice> devices;
    const QJsonArray entries = QJsonDocument::fromJson(listing).array();
    for (const QJsonValue entry : entries) {
        const QJsonValue id = entry["id"_L1];
        const QJsonValue name = entry["name"_L1];
        if (id.isString() && name.isString()) {
            devices.append({id.toString(), name.toString()});
        }
    }
    return devices;
}

QList<SimulatorDevice> simulators(const QByteArray& simctlJson) {
    const QJsonObject runtimes = QJsonDocument::fromJson(simctlJson)["devices"_L1].toObject();
    if (!std::ranges::all_of(runtimes, [](const QJsonValue& entries) { return entries.isArray(); })) {
        return {};
    }
    QList<SimulatorDevice> devices;
    for (auto entries = runtimes.begin(); entries != runtimes.end(); ++entries) {
        const QString runtime = iosRuntime(entries.key());
        const QJsonArray ofRuntime = runtime.isNull() ? QJsonArray() : entries.value().toArray();
        for (const QJsonValue entry : ofRuntime) {
            if (auto device = simulator(entry, runtime)) {
                devices.append(*std::move(device));
            }
        }
    }
    sortForLists(devices);
    return devices;
}

QList<RuntimeGroup> groupedByRuntime(const QList<SimulatorDevice>& devices) {
    QList<RuntimeGroup> groups;
    for (const SimulatorDevice& device : devices) {
        auto group = std::ranges::find(groups, device.runtime, &RuntimeGroup::runtime);
        if (group == groups.end()) {
            group = groups.insert(groups.end(), {device.runtime, {}});
        }
        group->devices.append(device);
    }
    std::ranges::sort(groups, {}, [](const RuntimeGroup& group) { return age(group.runtime); });
    return groups;
}

QList<SimulatorDevice> shortlist(const QList<SimulatorDevice>& devices, qsizetype limit) {
    QList<SimulatorDevice> sorted;
    for (const bool isBooted : {true, false}) {
        QList<SimulatorDevice> some = devices;
        some.removeIf([isBooted](const SimulatorDevice& device) { return device.isBooted != isBooted; });
        const QList<RuntimeGroup> groups = groupedByRuntime(some);
        for (auto group = groups.crbegin(); group != groups.crend(); ++group) {
            sorted += group->devices;
        }
    }
    return sorted.first(std::clamp<qsizetype>(limit, 0, sorted.size()));
}

QStringList avds(const QByteArray& listOutput) {
    QStringList names;
    for (const QByteArray& line : listOutput.split('\n')) {
        const QByteArray name = line.trimmed();
        if (!name.isEmpty() && !name.contains('|') && !name.contains(' ')) {
            names.append(QString::fromUtf8(name));
        }
    }
    return names;
}

QString displayName(const QString& avd) {
    return QString(avd).replace(u'_', u' ');
}

std::optional<QString> androidSDK(const QMap<QString, QString>& environment, const QString& home) {
    const QStringList candidates{
        environment.value(u"ANDROID_HOME"_s), environment.value(u"ANDROID_SDK_ROOT"_s),
        home + u"/Library/Android/sdk"_s, home + u"/Android/Sdk"_s};
    const auto holdsEmulator = [](const QString& folder) {
        return !folder.isEmpty() && QFileInfo(folder + u"/emulator/emulator"_s).isFile();
    };
    const auto found = std::ranges::find_if(candidates, holdsEmulator);
    return found != candidates.end() ? std::optional(*found) : std::nullopt;
}

} // namespace DeviceParsers
} // namespace orv
