#pragma once

#include <QByteArrayView>

namespace orv {

/// What one pass over the bytes of whole lines finds in them. Any thread.
struct OutputBytes {
    qsizetype lineFeeds = 0;
    bool hasEscapes = false;   ///< colours, or what moves the cursor
    bool hasRewrites = false;  ///< controls other than tabs, the ends of lines and those
    bool hasCandidate = false; ///< characters in a row that stand so in every announcement of a port
};
[[nodiscard]] OutputBytes searchOutput(QByteArrayView output);

} // namespace orv
