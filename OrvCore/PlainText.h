#pragma once

#include <QString>

namespace orv {

/// The text without what sets colours (ECMA-48 8.3.117); a sequence that has no end takes the rest with it.
[[nodiscard]] QString withoutColours(const QString& text);

} // namespace orv
