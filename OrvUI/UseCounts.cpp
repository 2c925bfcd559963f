#include "OrvUI/UseCounts.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

using Uses = QMap<QString, UseCounts::Use>;

constexpr double halfLifeDays = 14;

double worth(const UseCounts::Use& use, const QDateTime& now) {
    constexpr double millisecondsADay = 24.0 * 60 * 60 * 1000;
    // A clock that was set back makes nothing worth more.
    const double days = std::max(0.0, static_cast<double>(use.at.msecsTo(now)) / millisecondsADay);
    return use.count * std::exp2(-days / halfLifeDays);
}

QByteArray encode(const Uses& uses) {
    QJsonObject json;
    for (auto entry = uses.begin(); entry != uses.end(); ++entry) {
        json.insert(
            entry.key(), QJsonObject{{u"count"_s, entry->count}, {u"at"_s, entry->at.toString(Qt::ISODateWithMs)}});
    }
    return QJsonDocument(json).toJson();
}

std::expected<Uses, QString> decode(const QByteArray& bytes) {
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    if (!document.isObject()) {
        return std::unexpected(u"an object was expected"_s);
    }
    const QJsonObject json = document.object();
    Uses uses;
    for (auto entry = json.begin(); entry != json.end(); ++entry) {
        const QJsonValue count = entry.value()["count"_L1];
        const QDateTime at = QDateTime::fromString(entry.value()["at"_L1].toString(), Qt::ISODateWithMs);
        if (!count.isDouble() || count.toDouble() < 0 || !at.isValid()) {
            return std::unexpected(entry.key() + u": a count and a time were expected"_s);
        }
        uses.insert(entry.key(), {count.toDouble(), at});
    }
    return uses;
}

} // namespace

UseCounts::UseCounts(const QString& filePath)
    : m_file(filePath, {.encode = encode, .decode = decode, .fallback = [] { return Uses(); }}) {}

double UseCounts::of(const QString& key, const QDateTime& now) const {
    return m_file.read([&](const Uses& uses) {
        const auto found = uses.find(key);
        return found == uses.end() ? 0.0 : worth(*found, now);
    });
}

QMap<QString, double> UseCounts::all(const QDateTime& now) const {
    return m_file.read([&](const Uses& uses) {
        QMap<QString, double> counts;
        for (auto entry = uses.begin(); entry != uses.end(); ++entry) {
            counts.insert(entry.key(), worth(*entry, now));
        }
        return counts;
    });
}

StoreResult UseCounts::note(const QString& key, const QDateTime& now) {
    return m_file.change([key, now](Uses& uses) {
        Use& use = uses[key];
        use = {worth(use, now) + 1, now.toUTC()};
        while (uses.size() > limit) {
            const auto worse = [&](const Use& one, const Use& other) { return worth(one, now) < worth(other, now); };
            uses.erase(std::min_element(uses.begin(), uses.end(), worse));
        }
    });
}

} // namespace orv
