#pragma once

#include <QString>

#include <functional>

namespace orv {

/// The one place that decides which shell runs a command line: "/bin/zsh"; where that is missing, the user's own shell
/// (from the account record), then "/bin/sh". It is used as a login shell, so that the user's PATH applies.
///
/// Command lines are POSIX shell text: an account's shell of another language (fish, tcsh), or one that runs nothing
/// (nologin), is passed over.
[[nodiscard]] QString loginShell();

/// The same decision from its facts alone.
[[nodiscard]] QString loginShell(const QString& accountShell, const std::function<bool(const QString&)>& isExecutable);

} // namespace orv
