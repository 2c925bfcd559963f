#pragma once

namespace orv {

/// Whether what is transparent in a window shows what lies under it, now. Main thread.
[[nodiscard]] bool hasCompositor();

} // namespace orv
