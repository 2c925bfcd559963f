#pragma once

#include <QByteArrayView>

namespace orv {

/// What one pass over the bytes of whole lines finds in them. Any thread.
struct OutputBytes {
    qsizetype lineFeeds = 0;
    bool hasControls = false;  ///< other than tabs and the ends of lines
    bool hasCandidate = false; ///< characters in a row that stand so in every announcement of a port
};
[[nodiscard]] OutputBytes searchOutput(QByteArrayView output);

} // namespace orv
