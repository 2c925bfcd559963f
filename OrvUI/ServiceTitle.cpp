#include "OrvUI/ServiceTitle.h"

#include "OrvCore/Models.h"

#include <QFileInfo>

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

/// Of one of several of its kind.
std::optional<QString> folderName(const ServiceID& id, const Project* project) {
    const bool isOneOfSeveral =
        project != nullptr && std::ranges::count(project->targets, id.kind, &ServiceTarget::kind) > 1;
    return isOneOfSeveral ? std::optional(QFileInfo(id.directory).fileName()) : std::nullopt;
}

} // namespace

QString serviceTitle(const ServiceID& id, const Project* project) {
    const std::optional<QString> folder = folderName(id, project);
    return folder ? title(id.kind) + u" · "_s + *folder : title(id.kind);
}

QString shortServiceTitle(const ServiceID& id, const Project* project) {
    return folderName(id, project).value_or(title(id.kind));
}

} // namespace orv
