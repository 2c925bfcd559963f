#pragma once

#include "OrvProcess/ProcessManager.h"

namespace orv {

/// Calls `handler(true)` once none of the services is active any more: at once when that is so already, else after the
/// change of state that makes it so; `handler(false)` when that takes longer than any stop can. Main thread; when the
/// context dies first, the handler is never called.
void whenEnded(
    ProcessManager& processes, const QList<ServiceID>& ids, QObject* context, std::function<void(bool)> handler);

} // namespace orv
