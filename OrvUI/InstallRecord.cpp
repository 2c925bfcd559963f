#include "OrvUI/InstallRecord.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>

#include <algorithm>
#include <array>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

/// What an install reads: after a change of one of them it has to run again.
constexpr std::array manifests{
    u"package.json", u"requirements.txt",  u"pyproject.toml", u"Gemfile",        u"composer.json", u"mix.exs",
    u"pubspec.yaml", u"package-lock.json", u"yarn.lock",      u"pnpm-lock.yaml", u"poetry.lock",   u"uv.lock",
};

using Commands = QMap<QString, qint64>;

std::expected<Commands, QString> commands(const QJsonValue& value) {
    if (!value.isObject()) {
        return std::unexpected(u"an object"_s);
    }
    const QJsonObject json = value.toObject();
    Commands found;
    for (auto entry = json.begin(); entry != json.end(); ++entry) {
        if (!entry->isDouble()) {
            return std::unexpected(u"a number"_s);
        }
        found.insert(entry.key(), entry->toInteger());
    }
    return found;
}

QByteArray encode(const QMap<QString, Commands>& values) {
    QJsonObject json;
    for (auto folder = values.begin(); folder != values.end(); ++folder) {
        QJsonObject ends;
        for (auto command = folder->begin(); command != folder->end(); ++command) {
            ends.insert(command.key(), command.value());
        }
        json.insert(folder.key(), ends);
    }
    return QJsonDocument(json).toJson();
}

std::expected<QMap<QString, Commands>, QString> decode(const QByteArray& bytes) {
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    if (!document.isObject()) {
        return std::unexpected(u"an object"_s);
    }
    const QJsonObject json = document.object();
    QMap<QString, Commands> values;
    for (auto entry = json.begin(); entry != json.end(); ++entry) {
        auto found = commands(*entry);
        if (!found) {
            return std::unexpected(found.error());
        }
        values.insert(entry.key(), *found);
    }
    return values;
}

} // namespace

InstallRecord::InstallRecord(const QString& filePath)
    : m_file(filePath, {.encode = encode, .decode = decode, .fallback = [] { return Values(); }}) {}

bool InstallRecord::covers(const QString& directory, const QString& installCommand) {
    m_file.reload();
    const qint64 never = -1;
    const qint64 ended =
        m_file.read([&](const Values& values) { return values.value(directory).value(installCommand, never); });
    if (ended == never) {
        return false;
    }
    return std::ranges::none_of(manifests, [&](const char16_t* name) {
        const QFileInfo manifest(directory + u'/' + QString::fromUtf16(name));
        return manifest.exists() && manifest.lastModified().toMSecsSinceEpoch() > ended;
    });
}

StoreResult InstallRecord::remember(const QString& directory, const QString& installCommand, const QDateTime& at) {
    return m_file.change([directory, installCommand, ended = at.toMSecsSinceEpoch()](Values& values) {
        values.removeIf([](const auto& folder) { return !QDir(folder.key()).exists(); });
        values[directory].insert(installCommand, ended);
    });
}

StoreResult InstallRecord::forget(const QString& directory, const QString& installCommand) {
    const auto holds = [&](const Values& values) { return values.value(directory).contains(installCommand); };
    if (!m_file.read(holds)) {
        return {};
    }
    return m_file.change([directory, installCommand](Values& values) {
        values[directory].remove(installCommand);
        values.removeIf([](const auto& folder) { return folder.value().isEmpty(); });
    });
}

} // namespace orv
