#include "OrvCore/WidgetSnapshot.h"

#include "OrvCore/JsonRecord_p.h"
#include "OrvCore/Paths.h"
#include "OrvCore/WidgetChange.h"

using namespace Qt::StringLiterals;

namespace orv {

template <json::RecordOf<WidgetSnapshot::Running> Self, typename Visitor>
void visitFields(Self& running, Visitor& visitor) {
    visitor.required("projectName"_L1, running.projectName);
    visitor.required("kind"_L1, running.kind);
    visitor.optional("port"_L1, running.port);
}

template <json::RecordOf<WidgetSnapshot::PinnedProject> Self, typename Visitor>
void visitFields(Self& pinned, Visitor& visitor) {
    visitor.required("id"_L1, pinned.id);
    visitor.required("name"_L1, pinned.name);
}

template <json::RecordOf<WidgetSnapshot::TaskSummary> Self, typename Visitor>
void visitFields(Self& task, Visitor& visitor) {
    visitor.required("title"_L1, task.title);
    visitor.required("projectName"_L1, task.projectName);
    visitor.required("done"_L1, task.done);
}

template <json::RecordOf<WidgetSnapshot> Self, typename Visitor>
void visitFields(Self& snapshot, Visitor& visitor) {
    visitor.required("running"_L1, snapshot.running);
    visitor.required("pinned"_L1, snapshot.pinned);
    visitor.required("tasks"_L1, snapshot.tasks);
    visitor.required("openTaskCount"_L1, snapshot.openTaskCount);
}

namespace {

/// Tasks that the widgets list.
constexpr int taskLimit = 5;

QString fileIn(const QString& directory) {
    return directory + u"/widget-snapshot.json"_s;
}

std::optional<WidgetSnapshot> decoded(const StoredBytes& stored) {
    const auto document = json::parse(stored.bytes);
    if (stored.state != StoredBytes::State::present || !document) {
        return std::nullopt;
    }
    const Decoded<WidgetSnapshot> snapshot = WidgetSnapshot::fromJson(document->object());
    return snapshot ? std::optional(*snapshot) : std::nullopt;
}

} // namespace

QJsonObject WidgetSnapshot::toJson() const {
    return json::encode(*this);
}
Decoded<WidgetSnapshot> WidgetSnapshot::fromJson(const QJsonObject& json) {
    return json::decode<WidgetSnapshot>(json);
}

QString SharedContainer::defaultDirectory() {
#ifdef Q_OS_MACOS
    if (qEnvironmentVariableIsEmpty("ORV_SUPPORT_DIR")) {
        return Paths::realHome() + u"/Library/Group Containers/group.orvlauncher.shared"_s;
    }
#endif
    return Paths::supportDirectory() + u"/widgets"_s;
}

void takeTasks(WidgetSnapshot& snapshot, const TaskStore& store) {
    snapshot.tasks.clear();
    for (const ProjectTask& task : store.recentlyDone(taskLimit)) {
        snapshot.tasks.append({task.title, task.projectName, task.isDone()});
    }
    snapshot.openTaskCount = store.openCount();
}

StoreResult SharedContainer::write(const WidgetSnapshot& snapshot, const QString& directory) {
    return change(directory, [&snapshot](WidgetSnapshot& standing) { standing = snapshot; });
}

StoreResult SharedContainer::change(const QString& directory, const std::function<void(WidgetSnapshot&)>& change) {
    const QString path = fileIn(directory);
    return StoreIO::withLock(path, [&]() -> StoreResult {
        const StoredBytes stored = StoreIO::read(path);
        const std::optional<WidgetSnapshot> standing = decoded(stored);
        WidgetSnapshot snapshot = standing.value_or(WidgetSnapshot());
        change(snapshot);
        if (standing == snapshot) {
            return {};
        }
        if (!standing && stored.state != StoredBytes::State::absent) {
            if (StoreResult moved = StoreIO::setAside(path); !moved) {
                return moved;
            }
        }
        return StoreIO::write(path, QJsonDocument(snapshot.toJson()).toJson(QJsonDocument::Compact));
    });
}

std::optional<WidgetSnapshot> SharedContainer::read(const QString& directory) {
    return decoded(StoreIO::read(fileIn(directory)));
}

} // namespace orv
