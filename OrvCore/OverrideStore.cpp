#include "OrvCore/OverrideStore.h"

#include "OrvCore/JsonRecord_p.h"
#include "OrvCore/Paths.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

template <json::RecordOf<Override> Self, typename Visitor>
void visitFields(Self& override, Visitor& visitor) {
    visitor.optional("kind"_L1, override.kind);
    visitor.optional("command"_L1, override.command);
    visitor.optional("port"_L1, override.port);
}

namespace {

QByteArray encodeValues(const OverrideStore::Values& values) {
    QJsonObject members;
    for (auto value = values.begin(); value != values.end(); ++value) {
        members.insert(value.key(), value->toJson());
    }
    return QJsonDocument(members).toJson();
}

std::expected<OverrideStore::Values, QString> decodeValues(const QByteArray& bytes) {
    const auto document = json::parse(bytes);
    if (!document) {
        return std::unexpected(document.error());
    }
    if (!document->isObject()) {
        return std::unexpected(u"must be an object"_s);
    }
    const QJsonObject members = document->object();
    OverrideStore::Values values;
    for (auto member = members.begin(); member != members.end(); ++member) {
        const Decoded<Override> value = json::Codec<Override>::decode(member.value());
        if (!value) {
            return std::unexpected(value.error().text());
        }
        values.insert(member.key(), *value);
    }
    return values;
}

/// By service.
bool collide(
    const OverrideStore::Values& base, const OverrideStore::Values& mine, const OverrideStore::Values& theirs) {
    const auto isOther = [&base](const OverrideStore::Values& values, const QString& key) {
        return values.contains(key) != base.contains(key) || values.value(key) != base.value(key);
    };
    const QStringList keys = base.keys() + mine.keys();
    return std::ranges::any_of(keys, [&](const QString& key) { return isOther(mine, key) && isOther(theirs, key); });
}

} // namespace

QJsonObject Override::toJson() const {
    return json::encode(*this);
}
Decoded<Override> Override::fromJson(const QJsonObject& json) {
    return json::decode<Override>(json);
}

OverrideStore::OverrideStore(const QString& filePath)
    : m_file(filePath, {encodeValues, decodeValues, [] { return Values(); }, collide}) {}

QString OverrideStore::defaultPath() {
    return Paths::supportDirectory() + u"/overrides.json"_s;
}

QString OverrideStore::key(const QString& directory, ServiceKind detectedKind) {
    return directory + u'|' + rawValue(detectedKind);
}

std::optional<Override> OverrideStore::override(const QString& key) const {
    return m_file.read([&key](const Values& values) {
        const auto found = values.constFind(key);
        return found == values.cend() ? std::nullopt : std::optional(*found);
    });
}

OverrideStore::Values OverrideStore::values() const {
    return m_file.record();
}

StoreResult OverrideStore::set(const QString& key, const std::optional<Override>& value) {
    return m_file.change([key, value](Values& values) {
        if (value) {
            values.insert(key, *value);
        } else {
            values.remove(key);
        }
    });
}

StoreResult OverrideStore::flush() {
    return m_file.flush();
}
quint64 OverrideStore::generation() const {
    return m_file.generation();
}
bool OverrideStore::reload() {
    return m_file.reload();
}
QString OverrideStore::filePath() const {
    return m_file.path();
}

} // namespace orv
