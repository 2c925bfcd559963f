#pragma once

#include "Cli.h"

namespace orv {

/// The overview of all commands.
[[nodiscard]] QString overview(bool hasColor);
/// Everything about one command, with examples; about one form of it only, where that is given.
[[nodiscard]] QString help(const Command& command, const Action* form, bool hasColor);
/// "orvlauncher tasks add PROJECT TITLE".
[[nodiscard]] QString usage(const Command& command, const Action& action);

/// The candidate that `word` was likely meant to be; empty when none is near.
[[nodiscard]] QString closest(const QString& word, const QStringList& candidates);
/// " Did you mean 'scan'?", or nothing.
[[nodiscard]] QString didYouMean(const QString& word, const QStringList& candidates);

} // namespace orv
