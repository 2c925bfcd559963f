#pragma once

#include "OrvProcess/OutputBytes.h"

#include <QByteArrayView>
#include <QString>

#include <optional>

namespace orv::PortParser {

/// The line without ANSI control sequences.
[[nodiscard]] QString stripANSI(const QString& line);
/// The port that a line of output announces. The digits stand as they are: 99999 is possible.
[[nodiscard]] std::optional<int> port(const QString& line);
/// False only for output in which no line announces a port: a cheap test before `port`, for whole lines of any number,
/// as they came from the process. `found` is what was found in them.
[[nodiscard]] bool mayAnnounce(QByteArrayView output, const OutputBytes& found);

} // namespace orv::PortParser
