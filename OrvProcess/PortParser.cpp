#include "OrvProcess/PortParser.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <string>

using namespace Qt::StringLiterals;

namespace orv::PortParser {
namespace {

struct Patterns {
    QRegularExpression ansi{u"\x1b\\[[0-9;?]*[ -/]*[@-~]|\x1b\\]8;[^\x1b]*\x1b\\\\"_s};
    QRegularExpression address{uR"((?:localhost|127\.0\.0\.1|0\.0\.0\.0|\[::1?\]):(\d{2,5}))"_s};
    QRegularExpression keyword{uR"(port\s+(\d{2,5}))"_s, QRegularExpression::CaseInsensitiveOption};
    /// Node and browsers; Dart; the Java debug wire protocol; Delve.
    QRegularExpression debugger{
        uR"((?:\b(?:debugger|inspector|devtools|vm service|observatory)\b.*?\b(?:on|at)\b.*?:)"
        uR"(|\bdt_socket at address: (?:\S*:)?|^API server listening at: [\d.:\[\]]*:)(\d{2,5})\b)"_s,
        QRegularExpression::CaseInsensitiveOption};
};

const Patterns& patterns() {
    static const Patterns compiled = [] {
        Patterns made;
        for (const QRegularExpression* pattern : {&made.ansi, &made.address, &made.keyword, &made.debugger}) {
            if (!pattern->isValid()) {
                qFatal("port pattern: %s", qPrintable(pattern->errorString()));
            }
            pattern->optimize();
        }
        return made;
    }();
    return compiled;
}

/// The bytes without colours. Empty when a sequence is another one, which may move the cursor.
std::optional<std::string> withoutColours(QByteArrayView output) {
    std::string plain;
    plain.reserve(static_cast<size_t>(output.size()));
    qsizetype at = 0;
    while (at < output.size()) {
        const qsizetype escape = output.indexOf('\x1b', at);
        const qsizetype end = escape < 0 ? output.size() : escape;
        plain.append(output.data() + at, static_cast<size_t>(end - at));
        if (escape < 0) {
            break;
        }
        at = escape + 1;
        if (at >= output.size() || output[at] != '[') {
            return {};
        }
        do {
            ++at;
        } while (at < output.size() && ((output[at] >= '0' && output[at] <= '9') || output[at] == ';'));
        if (at >= output.size() || output[at] != 'm') {
            return {};
        }
        ++at;
    }
    return plain;
}

} // namespace

QString stripANSI(const QString& line) {
    return line.contains(QChar(0x1b)) ? QString(line).remove(patterns().ansi) : line;
}

std::optional<int> port(const QString& line) {
    const QString plain = stripANSI(line);
    for (const QRegularExpression* pattern : {&patterns().address, &patterns().keyword}) {
        if (const QRegularExpressionMatch match = pattern->match(plain); match.hasMatch()) {
            return match.capturedView(1).toInt();
        }
    }
    return {};
}

std::optional<int> debuggerPort(const QString& line) {
    const QRegularExpressionMatch match = patterns().debugger.match(stripANSI(line));
    return match.hasMatch() ? std::optional(match.capturedView(1).toInt()) : std::nullopt;
}

bool isDebuggerDefault(int port) {
    constexpr std::array defaults{
        9229,  // Node
        5005,  // Java
        5678,  // debugpy
        2345,  // Delve
        5858,  // Node before 8
        24678, // Vite tells pages of changes there
        35729, // LiveReload
        6499,  // Bun
    };
    return std::ranges::find(defaults, port) != defaults.end();
}

std::optional<int> servicePort(const QString& line) {
    const std::optional<int> found = port(line);
    return found && debuggerPort(line) == found ? std::nullopt : found;
}

bool mayAnnounce(QByteArrayView output, const OutputBytes& found) {
    // What is shown of a line that rewrites itself may stand nowhere in its bytes in a row.
    if (found.hasCandidate || found.hasRewrites || !found.hasEscapes) {
        return found.hasCandidate || found.hasRewrites;
    }
    const std::optional<std::string> plain = withoutColours(output);
    return !plain || searchOutput(*plain).hasCandidate;
}

} // namespace orv::PortParser
