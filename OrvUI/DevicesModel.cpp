#include "OrvUI/DevicesModel.h"

#include "OrvCore/Async.h"
#include "OrvUI/Pool_p.h"

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

enum Tool : size_t { flutterTool, simulatorTool, emulatorTool };

const QString flutterKey = u"flutter:"_s;
const QString simulatorKey = u"simulator:"_s;
const QString emulatorKey = u"avd:"_s;

struct KnownDevice {
    QStringView start; ///< of its id
    const char* detail;
};
/// Of the ids that Flutter gives.
constexpr std::array knownDevices{
    KnownDevice{u"linux", QT_TRANSLATE_NOOP("orv::DevicesModel", "Desktop")},
    KnownDevice{u"macos", QT_TRANSLATE_NOOP("orv::DevicesModel", "Desktop")},
    KnownDevice{u"windows", QT_TRANSLATE_NOOP("orv::DevicesModel", "Desktop")},
    KnownDevice{u"chrome", QT_TRANSLATE_NOOP("orv::DevicesModel", "Web")},
    KnownDevice{u"edge", QT_TRANSLATE_NOOP("orv::DevicesModel", "Web")},
    KnownDevice{u"web-server", QT_TRANSLATE_NOOP("orv::DevicesModel", "Web")},
    KnownDevice{u"mac-designed-for-ipad", QT_TRANSLATE_NOOP("orv::DevicesModel", "Desktop")},
    KnownDevice{u"emulator-", QT_TRANSLATE_NOOP("orv::DevicesModel", "Emulator")},
};

QString detailOf(const QString& id) {
    const auto found =
        std::ranges::find_if(knownDevices, [&](const KnownDevice& known) { return id.startsWith(known.start); });
    return found == knownDevices.end() ? DevicesModel::tr("Device") : DevicesModel::tr(found->detail);
}

template <typename T>
QFuture<T> readyFuture(T value) {
    QPromise<T> promise;
    promise.start();
    promise.addResult(std::move(value));
    promise.finish();
    return promise.future();
}

} // namespace

const std::vector<RowRole<DeviceRow>>& DeviceRow::roles() {
    static const std::vector<RowRole<DeviceRow>> table{
        memberRole<&DeviceRow::key, DeviceRow>("key"),
        memberRole<&DeviceRow::title, DeviceRow>("title"),
        memberRole<&DeviceRow::detail, DeviceRow>("detail"),
        {"glyph", [](const DeviceRow& row) { return QVariant(row.glyph()); }},
        memberRole<&DeviceRow::section, DeviceRow>("section"),
        memberRole<&DeviceRow::isBooted, DeviceRow>("isBooted"),
        memberRole<&DeviceRow::isChosen, DeviceRow>("isChosen"),
    };
    return table;
}

QString DeviceRow::glyph() const {
    if (detail == u"Desktop") {
        return u"monitor"_s;
    }
    if (detail == u"Web") {
        return u"globe"_s;
    }
    const bool isTablet = title.contains(u"ipad", Qt::CaseInsensitive) || title.contains(u"tab", Qt::CaseInsensitive);
    return isTablet ? u"tablet"_s : u"smartphone"_s;
}

DevicesModel::DevicesModel(DeviceTools tools, RunChoices& choices, QObject* parent)
    : QObject(parent), m_tools(std::move(tools)), m_choices(choices), m_refresh(finishedFuture()) {
    m_pool.setObjectName(u"orv-devices"_s);
    m_pool.setMaxThreadCount(4);
}

DevicesModel::~DevicesModel() {
    m_isEnding = true;
    m_pool.waitForDone();
}

template <typename Devices>
void DevicesModel::take(
    QFuture<void>& all, DeviceTools::Listing<Devices> (DeviceTools::*list)(const std::atomic<bool>&) const,
    Devices DevicesModel::* devices, size_t hint) {
    const Completion completion;
    ++m_pending;
    const auto work = [this, list] { return (m_tools.*list)(m_isEnding); };
    onFinished(
        runIn(m_pool, work), this, [this, devices, hint, completion](const DeviceTools::Listing<Devices>& listing) {
            this->*devices = listing.devices;
            m_hints[hint] = listing.hint;
            --m_pending;
            update();
            Q_EMIT hintsChanged();
            if (m_pending == 0) {
                Q_EMIT loadingChanged();
            }
            completion.finish();
        });
    all = whenAll({all, completion.future()}, this);
}

QFuture<void> DevicesModel::refresh() {
    ORV_ASSERT_MAIN_THREAD();
    if (m_pending > 0) {
        return m_refresh;
    }
    QFuture<void> all = finishedFuture();
    take(all, &DeviceTools::flutterDevices, &DevicesModel::m_flutter, flutterTool);
    take(all, &DeviceTools::simulators, &DevicesModel::m_simulators, simulatorTool);
    take(all, &DeviceTools::emulators, &DevicesModel::m_emulators, emulatorTool);
    m_refresh = all;
    update();
    Q_EMIT loadingChanged();
    return all;
}

void DevicesModel::ask(const QString& projectID) {
    setProjectID(projectID);
    setSearchText({});
    refresh();
    if (!std::exchange(m_isAsking, true)) {
        Q_EMIT askingChanged();
    }
}

void DevicesModel::endAsking() {
    if (std::exchange(m_isAsking, false)) {
        Q_EMIT askingChanged();
    }
}

QFuture<QList<FlutterDevice>> DevicesModel::listFlutter() {
    ORV_ASSERT_MAIN_THREAD();
    return runIn(m_pool, [this] {
        const auto listing = m_tools.flutterDevices(m_isEnding);
        return listing.hint.isEmpty() ? listing.devices : QList<FlutterDevice>();
    });
}

QStringList DevicesModel::hints() const {
    QStringList found(m_hints.begin(), m_hints.end());
    found.removeAll(QString());
    return found;
}

void DevicesModel::setProjectID(const QString& projectID) {
    ORV_ASSERT_MAIN_THREAD();
    if (projectID != m_projectID) {
        m_projectID = projectID;
        update();
        Q_EMIT projectIDChanged();
        Q_EMIT chosenChanged();
    }
}

void DevicesModel::setSearchText(const QString& text) {
    ORV_ASSERT_MAIN_THREAD();
    if (text != m_searchText) {
        m_searchText = text;
        update();
        Q_EMIT searchTextChanged();
    }
}

void DevicesModel::update() {
    QList<DeviceRow> rows;
    const QString connected = tr("Connected");
    const auto isListedBelow = [this](const FlutterDevice& device) {
        return std::ranges::find(m_simulators, device.id, &SimulatorDevice::udid) != m_simulators.end() ||
               std::ranges::find(m_emulators, device.id, &DeviceTools::Emulator::serial) != m_emulators.end();
    };
    for (const FlutterDevice& device : std::as_const(m_flutter)) {
        if (!isListedBelow(device)) {
            rows.append({flutterKey + device.id, device.name, detailOf(device.id), connected});
        }
    }
    const QList<DeviceParsers::RuntimeGroup> groups = DeviceParsers::groupedByRuntime(m_simulators);
    for (auto group = groups.crbegin(); group != groups.crend(); ++group) {
        for (const SimulatorDevice& device : group->devices) {
            rows.append({simulatorKey + device.udid, device.name, tr("Simulator"), group->runtime, device.isBooted});
        }
    }
    for (const DeviceTools::Emulator& emulator : std::as_const(m_emulators)) {
        rows.append(
            {emulatorKey + emulator.avd, DeviceParsers::displayName(emulator.avd), tr("Emulator"), u"Android"_s,
             !emulator.serial.isEmpty()});
    }
    rows.removeIf([this](const DeviceRow& row) { return !row.title.contains(m_searchText, Qt::CaseInsensitive); });
    const std::optional<QString> choice = chosen(m_projectID);
    for (DeviceRow& row : rows) {
        row.isChosen = row.key == choice;
    }
    m_rows.setRows(rows);
}

std::optional<QString> DevicesModel::chosen(const QString& projectID) const {
    return m_choices.of(projectID).device;
}

StoreResult DevicesModel::choose(const QString& projectID, const QString& key) {
    ORV_ASSERT_MAIN_THREAD();
    StoreResult result = m_choices.setDevice(projectID, key.isEmpty() ? std::nullopt : std::optional(key));
    takeInChoices();
    return result;
}

void DevicesModel::takeInChoices() {
    ORV_ASSERT_MAIN_THREAD();
    update();
    Q_EMIT chosenChanged();
}

bool DevicesModel::needsBoot(const QString& key) {
    return key.startsWith(emulatorKey) || key.startsWith(simulatorKey);
}

QString DevicesModel::deviceID(const QString& key) {
    return needsBoot(key) || key.startsWith(flutterKey) ? key.section(u':', 1) : key;
}

QFuture<DeviceTools::Booted> DevicesModel::ready(const QString& key) {
    ORV_ASSERT_MAIN_THREAD();
    const QString id = deviceID(key);
    if (needsBoot(key)) {
        const auto boot = key.startsWith(emulatorKey) ? &DeviceTools::bootEmulator : &DeviceTools::bootSimulator;
        QFuture<DeviceTools::Booted>& last = m_boots[key];
        if (!last.isValid() || last.isFinished()) {
            last = runIn(m_pool, [this, boot, id] { return (m_tools.*boot)(id, m_isEnding); });
        }
        return last;
    }
    return readyFuture(DeviceTools::Booted(id));
}

void DevicesModel::await(const QString& projectID) {
    ORV_ASSERT_MAIN_THREAD();
    m_awaited.insert(projectID);
    Q_EMIT awaitedChanged();
}

void DevicesModel::endAwaiting(const QString& projectID) {
    ORV_ASSERT_MAIN_THREAD();
    if (m_awaited.remove(projectID)) {
        Q_EMIT awaitedChanged();
    }
}

} // namespace orv
