#pragma once

#include "OrvCore/StoredEnum.h"

#include <QDateTime>
#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTimeZone>

#include <array>
#include <expected>
#include <optional>

namespace orv {

/// Why a JSON value is not the record it was taken for.
struct DecodingError {
    QString field;    ///< the way to what is missing or wrong ("targets[1].port"); empty for the value itself
    QString expected; ///< what should have stood there, as a noun ("a string", "one of frontend, backend")

    bool operator==(const DecodingError&) const = default;
    /// "\"targets[1].port\" must be a whole number".
    [[nodiscard]] QString text() const;
};

template <typename T>
using Decoded = std::expected<T, DecodingError>;

/// What sort of service a target is. The order is the one in which kinds are listed everywhere.
enum class ServiceKind { frontend, backend, flutter, docker, app };

inline constexpr std::array allServiceKinds{
    ServiceKind::frontend, ServiceKind::backend, ServiceKind::flutter, ServiceKind::docker, ServiceKind::app};

template <>
struct StoredNames<ServiceKind> {
    static constexpr std::array table{
        std::pair{ServiceKind::frontend, QLatin1StringView("frontend")},
        std::pair{ServiceKind::backend, QLatin1StringView("backend")},
        std::pair{ServiceKind::flutter, QLatin1StringView("flutter")},
        std::pair{ServiceKind::docker, QLatin1StringView("docker")},
        std::pair{ServiceKind::app, QLatin1StringView("app")},
    };
};

/// The kind of exactly that spelling (case-sensitive).
[[nodiscard]] inline std::optional<ServiceKind> serviceKind(QStringView raw) {
    return fromRawValue<ServiceKind>(raw);
}
/// The word people read: "Frontend", "Backend", "Flutter", "Docker", "App".
[[nodiscard]] QString title(ServiceKind kind);
size_t qHash(ServiceKind kind, size_t seed = 0) noexcept;

/// One runnable service inside a project.
///
/// Folders are absolute paths without a trailing slash; in JSON they stand as file URLs.
struct ServiceTarget {
    ServiceKind kind = ServiceKind::app;
    QString directory;                ///< where the command runs
    std::optional<QString> framework; ///< display name of what was detected ("FastAPI")
    QString command;                  ///< the whole shell line
    std::optional<int> port;          ///< the port that the service is known to use

    bool operator==(const ServiceTarget&) const = default;
    [[nodiscard]] QJsonObject toJson() const;
    [[nodiscard]] static Decoded<ServiceTarget> fromJson(const QJsonObject& json);
};
size_t qHash(const ServiceTarget& target, size_t seed = 0) noexcept;

/// One folder that holds something runnable. Every per-project record elsewhere is keyed by `id`.
struct Project {
    QString id;   ///< the full path of the root folder
    QString name; ///< the root folder's last path component
    QString root; ///< the root folder, an absolute path
    QList<ServiceTarget> targets;

    bool operator==(const Project&) const = default;
    [[nodiscard]] bool isFullStack() const;
    [[nodiscard]] QJsonObject toJson() const;
    [[nodiscard]] static Decoded<Project> fromJson(const QJsonObject& json);
};
size_t qHash(const Project& project, size_t seed = 0) noexcept;

/// A folder of the scanned tree: a project, or a collection of what lies below it.
///
/// A project has children when folders below it are projects of their own.
struct ProjectNode {
    QString path;
    QString name;
    std::optional<Project> project; ///< absent for a collection
    QList<ProjectNode> children;    ///< in listing order

    /// Not defaulted: while the record is incomplete, QList takes it for one without equality, and the operator is
    /// deleted.
    bool operator==(const ProjectNode& other) const;
    /// Every project of this branch in tree order, this node's own first.
    [[nodiscard]] QList<Project> apps() const;
    [[nodiscard]] QJsonObject toJson() const;
};

namespace Greeter {
/// "Good evening, Sam": morning from 5, afternoon from 12, evening from 18, night from 22 o'clock in `zone`.
[[nodiscard]] QString greeting(
    const QDateTime& date, const QString& name, const QTimeZone& zone = QTimeZone::systemTimeZone());
} // namespace Greeter

} // namespace orv
