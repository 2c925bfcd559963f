#pragma once

#include "OrvCore/Models.h"
#include "OrvCore/Paths.h"
#include "OrvCore/StoredEnum.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonValue>
#include <QMap>
#include <QSet>
#include <QUuid>

#include <cmath>
#include <concepts>
#include <limits>

/// How a record becomes JSON and comes back. A record has one list of its members, a function
/// `visitFields(record, visitor)` beside it, that serves both ways:
///
///     template <json::RecordOf<LastRun> Self, typename Visitor>
///     void visitFields(Self& run, Visitor& visitor) {
///         visitor.required("projectID"_L1, run.projectID);
///         visitor.optional("action"_L1, run.action);
///     }
///
/// `required` is refused when absent; `optional` is a std::optional, left out when absent; `defaulted` keeps the value
/// that the record was made with when absent; `folder` is a required path that stands as a file URL. A null counts as
/// absent.
namespace orv::json {

template <typename T, typename Record>
concept RecordOf = std::same_as<std::remove_const_t<T>, Record>;

[[nodiscard]] inline std::unexpected<DecodingError> mismatch(const QString& expected) {
    return std::unexpected(DecodingError{{}, expected});
}

template <typename Record>
[[nodiscard]] QJsonObject encode(const Record& record);
template <typename Record>
[[nodiscard]] Decoded<Record> decode(const QJsonObject& json, Record record = {});

/// One type of value; what has no specialisation of its own is a record.
template <typename T>
struct Codec {
    static QJsonValue encode(const T& value) { return json::encode(value); }
    static Decoded<T> decode(const QJsonValue& value) {
        if (!value.isObject()) {
            return mismatch(QStringLiteral("an object"));
        }
        return json::decode<T>(value.toObject());
    }
};

template <>
struct Codec<QString> {
    static QJsonValue encode(const QString& value) { return value; }
    static Decoded<QString> decode(const QJsonValue& value) {
        return value.isString() ? Decoded<QString>(value.toString()) : mismatch(QStringLiteral("a string"));
    }
};

template <>
struct Codec<bool> {
    static QJsonValue encode(bool value) { return value; }
    static Decoded<bool> decode(const QJsonValue& value) {
        return value.isBool() ? Decoded<bool>(value.toBool()) : mismatch(QStringLiteral("true or false"));
    }
};

template <>
struct Codec<int> {
    static QJsonValue encode(int value) { return value; }
    static Decoded<int> decode(const QJsonValue& value) {
        const double number = value.toDouble(std::numeric_limits<double>::quiet_NaN());
        using Limits = std::numeric_limits<int>;
        if (std::trunc(number) != number || number < Limits::min() || number > Limits::max()) {
            return mismatch(QStringLiteral("a whole number"));
        }
        return static_cast<int>(number);
    }
};

/// Seconds since 2001-01-01 00:00 UTC, with a fraction.
template <>
struct Codec<QDateTime> {
    static constexpr qint64 epochMilliseconds = 978'307'200'000;
    static constexpr double limitSeconds = 1e11;

    static QJsonValue encode(const QDateTime& value) {
        return static_cast<double>(value.toMSecsSinceEpoch() - epochMilliseconds) / 1000.0;
    }
    static Decoded<QDateTime> decode(const QJsonValue& value) {
        const double seconds = value.toDouble(std::numeric_limits<double>::quiet_NaN());
        if (!(std::abs(seconds) < limitSeconds)) {
            return mismatch(QStringLiteral("a number of seconds"));
        }
        return QDateTime::fromMSecsSinceEpoch(std::llround(seconds * 1000.0) + epochMilliseconds, Qt::UTC);
    }
};

template <>
struct Codec<QUuid> {
    static QJsonValue encode(const QUuid& value) { return value.toString(QUuid::WithoutBraces).toUpper(); }
    static Decoded<QUuid> decode(const QJsonValue& value) {
        const QUuid id = QUuid::fromString(value.toString());
        return id.isNull() ? mismatch(QStringLiteral("a UUID")) : Decoded<QUuid>(id);
    }
};

template <StoredEnum E>
struct Codec<E> {
    static QJsonValue encode(E value) { return rawValue(value); }
    static Decoded<E> decode(const QJsonValue& value) {
        if (const auto known = fromRawValue<E>(value.toString())) {
            return *known;
        }
        QStringList names;
        for (const auto& [enumerator, name] : StoredNames<E>::table) {
            names.append(name);
        }
        return mismatch(QStringLiteral("one of ") + names.join(QStringLiteral(", ")));
    }
};

template <typename T>
struct Codec<QList<T>> {
    static QJsonValue encode(const QList<T>& list) {
        QJsonArray array;
        for (const T& element : list) {
            array.append(Codec<T>::encode(element));
        }
        return array;
    }
    static Decoded<QList<T>> decode(const QJsonValue& value) {
        if (!value.isArray()) {
            return mismatch(QStringLiteral("an array"));
        }
        const QJsonArray array = value.toArray();
        QList<T> list;
        list.reserve(array.size());
        for (const QJsonValue element : array) {
            Decoded<T> decoded = Codec<T>::decode(element);
            if (!decoded) {
                const QString& field = decoded.error().field;
                const QString separator = field.isEmpty() ? QString() : QStringLiteral(".");
                return std::unexpected(DecodingError{
                    QStringLiteral("[%1]").arg(list.size()) + separator + field, decoded.error().expected});
            }
            list.append(*std::move(decoded));
        }
        return list;
    }
};

template <typename T>
struct Codec<QMap<QString, T>> {
    static QJsonValue encode(const QMap<QString, T>& map) {
        QJsonObject members;
        for (auto entry = map.begin(); entry != map.end(); ++entry) {
            members.insert(entry.key(), Codec<T>::encode(*entry));
        }
        return members;
    }
    static Decoded<QMap<QString, T>> decode(const QJsonValue& value) {
        if (!value.isObject()) {
            return mismatch(QStringLiteral("an object"));
        }
        const QJsonObject members = value.toObject();
        QMap<QString, T> map;
        for (auto member = members.begin(); member != members.end(); ++member) {
            Decoded<T> decoded = Codec<T>::decode(member.value());
            if (!decoded) {
                const QString& field = decoded.error().field;
                const bool needsDot = !field.isEmpty() && !field.startsWith(u'[');
                return std::unexpected(DecodingError{
                    member.key() + (needsDot ? QStringLiteral(".") : QString()) + field, decoded.error().expected});
            }
            map.insert(member.key(), *std::move(decoded));
        }
        return map;
    }
};

/// Sorted, so that a file changes only when its content does.
template <>
struct Codec<QSet<QString>> {
    static QJsonValue encode(const QSet<QString>& set) {
        QStringList sorted = set.values();
        sorted.sort();
        return Codec<QStringList>::encode(sorted);
    }
    static Decoded<QSet<QString>> decode(const QJsonValue& value) {
        const Decoded<QStringList> list = Codec<QStringList>::decode(value);
        if (!list) {
            return std::unexpected(list.error());
        }
        return QSet<QString>(list->begin(), list->end());
    }
};

class Writer {
public:
    template <typename T>
    void required(QLatin1StringView key, const T& value) {
        m_json.insert(key, Codec<T>::encode(value));
    }
    template <typename T>
    void optional(QLatin1StringView key, const std::optional<T>& value) {
        if (value) {
            required(key, *value);
        }
    }
    template <typename T>
    void defaulted(QLatin1StringView key, const T& value) {
        required(key, value);
    }
    void folder(QLatin1StringView key, const QString& path) { m_json.insert(key, Paths::fileUrl(path)); }

    [[nodiscard]] QJsonObject take() { return std::move(m_json); }

private:
    QJsonObject m_json;
};

/// Stops at the first member that is wrong.
class Reader {
public:
    explicit Reader(const QJsonObject& json) : m_json(json) {}

    template <typename T>
    void required(QLatin1StringView key, T& value) {
        if (!m_error) {
            take(key, m_json.value(key), value);
        }
    }
    template <typename T>
    void optional(QLatin1StringView key, std::optional<T>& value) {
        if (const QJsonValue found = m_json.value(key); !m_error && !isAbsent(found)) {
            take(key, found, value.emplace());
        }
    }
    template <typename T>
    void defaulted(QLatin1StringView key, T& value) {
        if (const QJsonValue found = m_json.value(key); !m_error && !isAbsent(found)) {
            take(key, found, value);
        }
    }
    void folder(QLatin1StringView key, QString& path) {
        if (m_error) {
            return;
        }
        path = Paths::pathOfFileUrl(m_json.value(key).toString());
        if (path.isEmpty()) {
            m_error = DecodingError{key, QStringLiteral("a file URL")};
        }
    }

    [[nodiscard]] const std::optional<DecodingError>& error() const { return m_error; }

private:
    static bool isAbsent(const QJsonValue& value) { return value.isUndefined() || value.isNull(); }

    template <typename T>
    void take(QLatin1StringView key, const QJsonValue& found, T& value) {
        Decoded<T> decoded = Codec<T>::decode(found);
        if (decoded) {
            value = *std::move(decoded);
            return;
        }
        const QString& inner = decoded.error().field;
        const bool needsDot = !inner.isEmpty() && !inner.startsWith(u'[');
        m_error = DecodingError{key + (needsDot ? QStringLiteral(".") : QString()) + inner, decoded.error().expected};
    }

    const QJsonObject& m_json;
    std::optional<DecodingError> m_error;
};

template <typename Record>
QJsonObject encode(const Record& record) {
    Writer writer;
    visitFields(record, writer);
    return writer.take();
}

template <typename Record>
Decoded<Record> decode(const QJsonObject& json, Record record) {
    Reader reader(json);
    visitFields(record, reader);
    if (reader.error()) {
        return std::unexpected(*reader.error());
    }
    return record;
}

/// Gathers the keys of a record.
class KeyList {
public:
    template <typename T>
    void required(QLatin1StringView key, const T&) {
        m_keys.append(key);
    }
    template <typename T>
    void optional(QLatin1StringView key, const T&) {
        m_keys.append(key);
    }
    template <typename T>
    void defaulted(QLatin1StringView key, const T&) {
        m_keys.append(key);
    }
    void folder(QLatin1StringView key, const QString&) { m_keys.append(key); }

    [[nodiscard]] const QStringList& keys() const { return m_keys; }

private:
    QStringList m_keys;
};

/// Every key that a record may have.
template <typename Record>
[[nodiscard]] QStringList keys() {
    const Record record{};
    KeyList list;
    visitFields(record, list);
    return list.keys();
}

/// The value of a whole file.
[[nodiscard]] inline std::expected<QJsonDocument, QString> parse(const QByteArray& bytes) {
    QJsonParseError error;
    QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError) {
        return std::unexpected(QStringLiteral("%1 at byte %2").arg(error.errorString()).arg(error.offset));
    }
    return document;
}

} // namespace orv::json
