#pragma once

#include "OrvLauncher/platform/HotKey.h"

#include <QCoreApplication>

namespace orv {

/// What the settings say of the quick panel's key.
class HotKeyNote {
    Q_DECLARE_TR_FUNCTIONS(HotKeyNote)
public:
    /// Why it is not to be had; empty where it is, or may be still.
    [[nodiscard]] static QString of(HotKey::State state);
};

} // namespace orv
