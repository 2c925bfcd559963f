#pragma once

class QQmlEngine;

namespace orv {

/// Lets an engine import OrvLauncher.Screens. To be called once an engine, before it loads: the module lies in a static
/// library, whose registration the linker leaves out unless something names it.
void registerScreens(QQmlEngine& engine);

} // namespace orv
