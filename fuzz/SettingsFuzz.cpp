#include "FuzzInput.h"
#include "OrvCore/OverrideStore.h"
#include "OrvCore/Settings.h"
#include "OrvCore/Tasks.h"
#include "OrvCore/WidgetSnapshot.h"

#include <QJsonDocument>

using namespace orv;

/// What decodes is what encodes to itself; what does not says where.
template <typename Record>
static void roundTrip(const QJsonObject& json) {
    const Decoded<Record> record = Record::fromJson(json);
    if (!record) {
        require(!record.error().text().isEmpty());
        return;
    }
    const QByteArray written = QJsonDocument(record->toJson()).toJson();
    require(Record::fromJson(QJsonDocument::fromJson(written).object()) == record);
}

/// A file of settings ("S"), an override ("O"), a task ("T") or a snapshot for the widgets (any other).
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input(data, size);
    const uint8_t kind = input.byte();
    const std::string_view rest = input.take(size);
    const QByteArray bytes(rest.data(), static_cast<qsizetype>(rest.size()));
    const QJsonObject json = QJsonDocument::fromJson(bytes).object();
    if (kind == 'S') {
        roundTrip<AppSettings>(json);
    } else if (kind == 'O') {
        roundTrip<Override>(json);
    } else if (kind == 'T') {
        roundTrip<ProjectTask>(json);
    } else {
        roundTrip<WidgetSnapshot>(json);
    }
    return 0;
}
