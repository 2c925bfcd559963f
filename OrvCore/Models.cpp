#include "OrvCore/Models.h"

#include "OrvCore/JsonRecord_p.h"

#include <QCoreApplication>
#include <QHashFunctions>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

template <json::RecordOf<ServiceTarget> Self, typename Visitor>
void visitFields(Self& target, Visitor& visitor) {
    visitor.required("kind"_L1, target.kind);
    visitor.folder("directory"_L1, target.directory);
    visitor.optional("framework"_L1, target.framework);
    visitor.required("command"_L1, target.command);
    visitor.optional("port"_L1, target.port);
}

template <json::RecordOf<Project> Self, typename Visitor>
void visitFields(Self& project, Visitor& visitor) {
    visitor.required("id"_L1, project.id);
    visitor.required("name"_L1, project.name);
    visitor.folder("root"_L1, project.root);
    visitor.required("targets"_L1, project.targets);
}

template <json::RecordOf<ProjectNode> Self, typename Visitor>
void visitFields(Self& node, Visitor& visitor) {
    visitor.required("path"_L1, node.path);
    visitor.required("name"_L1, node.name);
    visitor.optional("project"_L1, node.project);
    visitor.required("children"_L1, node.children);
}

namespace {

void appendApps(const ProjectNode& node, QList<Project>& apps) {
    if (node.project) {
        apps.append(*node.project);
    }
    for (const ProjectNode& child : node.children) {
        appendApps(child, apps);
    }
}

} // namespace

QString DecodingError::text() const {
    return field.isEmpty() ? u"must be %1"_s.arg(expected) : u"\"%1\" must be %2"_s.arg(field, expected);
}

QString title(ServiceKind kind) {
    static constexpr std::array titles{
        QT_TRANSLATE_NOOP("ServiceKind", "Frontend"), QT_TRANSLATE_NOOP("ServiceKind", "Backend"),
        QT_TRANSLATE_NOOP("ServiceKind", "Flutter"), QT_TRANSLATE_NOOP("ServiceKind", "Docker"),
        QT_TRANSLATE_NOOP("ServiceKind", "App")};
    static_assert(titles.size() == allServiceKinds.size());
    return QCoreApplication::translate("ServiceKind", titles[static_cast<size_t>(kind)]);
}

size_t qHash(ServiceKind kind, size_t seed) noexcept {
    return ::qHash(static_cast<int>(kind), seed);
}

size_t qHash(const ServiceTarget& target, size_t seed) noexcept {
    return qHashMulti(
        seed, target.kind, target.directory, target.framework.value_or(QString()), target.command,
        target.port.value_or(-1));
}

QJsonObject ServiceTarget::toJson() const {
    return json::encode(*this);
}
Decoded<ServiceTarget> ServiceTarget::fromJson(const QJsonObject& json) {
    return json::decode<ServiceTarget>(json);
}

bool Project::isFullStack() const {
    const auto has = [this](ServiceKind kind) {
        return std::ranges::find(targets, kind, &ServiceTarget::kind) != targets.end();
    };
    return has(ServiceKind::frontend) && has(ServiceKind::backend);
}

size_t qHash(const Project& project, size_t seed) noexcept {
    const size_t fields = qHashMulti(seed, project.id, project.name, project.root);
    return qHashRange(project.targets.begin(), project.targets.end(), fields);
}

QJsonObject Project::toJson() const {
    return json::encode(*this);
}
Decoded<Project> Project::fromJson(const QJsonObject& json) {
    return json::decode<Project>(json);
}

bool ProjectNode::operator==(const ProjectNode& other) const {
    return path == other.path && name == other.name && project == other.project && children == other.children;
}

QList<Project> ProjectNode::apps() const {
    QList<Project> apps;
    appendApps(*this, apps);
    return apps;
}

QJsonObject ProjectNode::toJson() const {
    return json::encode(*this);
}

QString Greeter::greeting(const QDateTime& date, const QString& name, const QTimeZone& zone) {
    struct Part {
        int firstHour;
        const char* text;
    };
    static constexpr std::array parts{
        Part{22, QT_TRANSLATE_NOOP("Greeter", "Good night, %1")},
        Part{18, QT_TRANSLATE_NOOP("Greeter", "Good evening, %1")},
        Part{12, QT_TRANSLATE_NOOP("Greeter", "Good afternoon, %1")},
        Part{5, QT_TRANSLATE_NOOP("Greeter", "Good morning, %1")},
        Part{0, QT_TRANSLATE_NOOP("Greeter", "Good night, %1")}};
    const int hour = date.toTimeZone(zone).time().hour();
    const auto part = std::ranges::find_if(parts, [hour](const Part& row) { return hour >= row.firstHour; });
    return QCoreApplication::translate("Greeter", part->text).arg(name);
}

} // namespace orv
