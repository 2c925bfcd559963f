#pragma once

#include "OrvCore/Models.h"
#include "OrvCore/StoreFile.h"

namespace orv {

/// What the desktop widgets show.
struct WidgetSnapshot {
    struct Running {
        QString projectName;
        ServiceKind kind = ServiceKind::app;
        std::optional<int> port;
        bool operator==(const Running&) const = default;
    };
    struct PinnedProject {
        QString id;
        QString name;
        bool operator==(const PinnedProject&) const = default;
    };
    struct TaskSummary {
        QString title;
        QString projectName;
        bool done = false;
        bool operator==(const TaskSummary&) const = default;
    };

    QList<Running> running;
    QList<PinnedProject> pinned; ///< in pin order
    QList<TaskSummary> tasks;
    int openTaskCount = 0;

    bool operator==(const WidgetSnapshot&) const = default;
    [[nodiscard]] QJsonObject toJson() const;
    [[nodiscard]] static Decoded<WidgetSnapshot> fromJson(const QJsonObject& json);
};

/// The folder that the application shares with its widgets, and "widget-snapshot.json" in it. Blocking; any thread.
namespace SharedContainer {
[[nodiscard]] QString defaultDirectory();
StoreResult write(const WidgetSnapshot& snapshot, const QString& directory);
[[nodiscard]] std::optional<WidgetSnapshot> read(const QString& directory);
} // namespace SharedContainer

} // namespace orv
