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
/// The port that a line says a debugger listens on: one that a browser has no use for.
[[nodiscard]] std::optional<int> debuggerPort(const QString& line);
/// Whether debuggers, inspectors and reloaders of pages listen there when they are told nothing else.
[[nodiscard]] bool isDebuggerDefault(int port);
/// `port`, but not of a line by which a debugger says where it listens.
[[nodiscard]] std::optional<int> servicePort(const QString& line);
/// False only for output in which no line announces a port: a cheap test before `port`, for whole lines of any number,
/// as they came from the process. `found` is what was found in them.
[[nodiscard]] bool mayAnnounce(QByteArrayView output, const OutputBytes& found);

} // namespace orv::PortParser
