#include "OrvUI/RunChoices.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

using Values = QMap<QString, RunChoice>;

struct Member {
    QLatin1StringView name;
    std::optional<QString> RunChoice::* value;
};
constexpr std::array members{Member{"action"_L1, &RunChoice::action}, Member{"device"_L1, &RunChoice::device}};

QByteArray encode(const Values& values) {
    QJsonObject json;
    for (auto entry = values.begin(); entry != values.end(); ++entry) {
        QJsonObject choice;
        for (const auto& [name, value] : members) {
            if (const auto& chosen = *entry.*value) {
                choice.insert(name, *chosen);
            }
        }
        json.insert(entry.key(), choice);
    }
    return QJsonDocument(json).toJson();
}

std::expected<Values, QString> decode(const QByteArray& bytes) {
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    if (!document.isObject()) {
        return std::unexpected(u"an object was expected"_s);
    }
    const QJsonObject json = document.object();
    Values values;
    for (auto entry = json.begin(); entry != json.end(); ++entry) {
        RunChoice choice;
        for (const auto& [name, value] : members) {
            const QJsonValue found = entry.value()[name];
            if (!found.isString() && !found.isUndefined()) {
                return std::unexpected(entry.key() + u": a string was expected"_s);
            }
            choice.*value = found.isString() ? std::optional(found.toString()) : std::nullopt;
        }
        values.insert(entry.key(), choice);
    }
    return values;
}

/// By project.
bool collide(const Values& base, const Values& mine, const Values& theirs) {
    const QStringList projects = base.keys() + mine.keys();
    return std::ranges::any_of(projects, [&](const QString& id) {
        return mine.value(id) != base.value(id) && theirs.value(id) != base.value(id);
    });
}

} // namespace

RunChoices::RunChoices(const QString& filePath)
    : m_file(filePath, {.encode = encode, .decode = decode, .fallback = [] { return Values(); }, .collide = collide}) {}

RunChoice RunChoices::of(const QString& projectID) const {
    return m_file.read([&](const Values& values) { return values.value(projectID); });
}

StoreResult RunChoices::setAction(const QString& projectID, const QString& label) {
    return change(projectID, [label](RunChoice& choice) { choice.action = label; });
}

StoreResult RunChoices::setDevice(const QString& projectID, const std::optional<QString>& device) {
    return change(projectID, [device](RunChoice& choice) { choice.device = device; });
}

StoreResult RunChoices::change(const QString& projectID, const std::function<void(RunChoice&)>& change) {
    return m_file.change([projectID, change](Values& values) {
        RunChoice& choice = values[projectID];
        change(choice);
        if (!choice.action && !choice.device) {
            values.remove(projectID);
        }
    });
}

bool RunChoices::reload() {
    return m_file.reload();
}

StoreResult RunChoices::flush() {
    return m_file.flush();
}

} // namespace orv
