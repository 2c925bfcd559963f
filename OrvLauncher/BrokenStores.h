#pragma once

#include <QStringList>

namespace orv {

/// Which stores can't be understood, why, and what becomes of them: a sentence or two of each.
[[nodiscard]] QStringList brokenStores();

} // namespace orv
