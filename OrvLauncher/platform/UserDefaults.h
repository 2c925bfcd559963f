#pragma once

#include <QString>

namespace orv {

/// A text that the user has set for the application outside its settings: on macOS by `defaults write`, elsewhere in
/// "defaults.ini" of the support folder. Empty when it is not set.
[[nodiscard]] QString userDefault(const QString& key);

} // namespace orv
