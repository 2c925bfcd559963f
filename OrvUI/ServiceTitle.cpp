#include "OrvUI/ServiceTitle.h"

#include "OrvCore/Models.h"

#include <QFileInfo>

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;

QString serviceTitle(const ServiceID& id, const Project* project) {
    const bool isOneOfSeveral =
        project != nullptr && std::ranges::count(project->targets, id.kind, &ServiceTarget::kind) > 1;
    return isOneOfSeveral ? title(id.kind) + u" · "_s + QFileInfo(id.directory).fileName() : title(id.kind);
}

} // namespace orv
