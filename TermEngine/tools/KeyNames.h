#pragma once

#include "TermEngine/KeyEvent.h"

#include <optional>
#include <string_view>

namespace term {

/// A key as people write it: "a", "enter", "kp7", "ctrl+up". Its text is a part of the name. Nothing for a name that is
/// none.
[[nodiscard]] std::optional<KeyEvent> keyNamed(std::string_view name);

} // namespace term
