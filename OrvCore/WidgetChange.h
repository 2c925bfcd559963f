#pragma once

#include "OrvCore/Tasks.h"
#include "OrvCore/WidgetSnapshot.h"

namespace orv {

/// The tasks that widgets list, and how many are open.
void takeTasks(WidgetSnapshot& snapshot, const TaskStore& store);

namespace SharedContainer {
/// Changes what stands there; no other process writes in between. Blocking; any thread.
StoreResult change(const QString& directory, const std::function<void(WidgetSnapshot&)>& change);
} // namespace SharedContainer

} // namespace orv
