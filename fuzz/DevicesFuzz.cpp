#include "FuzzInput.h"
#include "OrvCore/Devices.h"

using namespace orv;

/// The listing of simulators ("S"), Flutter devices ("F") or Android devices (any other).
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input(data, size);
    const uint8_t kind = input.byte();
    const std::string_view rest = input.take(size);
    const QByteArray listing(rest.data(), static_cast<qsizetype>(rest.size()));
    if (kind == 'F') {
        static_cast<void>(DeviceParsers::flutterDevices(listing));
    } else if (kind != 'S') {
        for (const QString& name : DeviceParsers::avds(listing)) {
            require(!name.isEmpty() && !name.contains(QChar(u' ')) && !name.contains(QChar(u'|')));
            require(DeviceParsers::displayName(name).size() == name.size());
        }
    } else {
        const auto devices = DeviceParsers::simulators(listing);
        qsizetype count = 0;
        for (const auto& group : DeviceParsers::groupedByRuntime(devices)) {
            require(group.runtime.startsWith(QLatin1StringView("iOS ")));
            // They come sorted, so that a group is a piece of the list.
            require(devices.sliced(devices.indexOf(group.devices.first()), group.devices.size()) == group.devices);
            count += group.devices.size();
        }
        require(count == devices.size());
        require(DeviceParsers::shortlist(devices, 3).size() == std::min<qsizetype>(3, count));
    }
    return 0;
}
