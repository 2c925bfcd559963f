#pragma once

#include <QString>

namespace orv {

/// What becomes of `clipboardWriteRequested` of a session or of all of them, whether somebody looks at them or not. A
/// platform without a primary selection leaves what is meant for that.
void putOnClipboard(const QString& text, bool isPrimary);

} // namespace orv
