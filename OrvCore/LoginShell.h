#pragma once

#include <QString>

namespace orv {

/// The one place that decides which shell runs a command line: "/bin/zsh"; where that is missing, the user's own shell
/// (from the account record), then "/bin/sh". It is used as a login shell, so that the user's PATH applies.
[[nodiscard]] QString loginShell();

} // namespace orv
