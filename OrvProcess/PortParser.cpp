#include "OrvProcess/PortParser.h"

#include <QRegularExpression>

#include <string>

using namespace Qt::StringLiterals;

namespace orv::PortParser {
namespace {

struct Patterns {
    QRegularExpression ansi{u"\x1b\\[[0-9;?]*[ -/]*[@-~]"_s};
    QRegularExpression address{uR"((?:localhost|127\.0\.0\.1|0\.0\.0\.0|\[::1?\]):(\d{2,5}))"_s};
    QRegularExpression keyword{uR"(port\s+(\d{2,5}))"_s, QRegularExpression::CaseInsensitiveOption};
};

const Patterns& patterns() {
    static const Patterns compiled = [] {
        Patterns made;
        for (const QRegularExpression* pattern : {&made.ansi, &made.address, &made.keyword}) {
            if (!pattern->isValid()) {
                qFatal("port pattern: %s", qPrintable(pattern->errorString()));
            }
            pattern->optimize();
        }
        return made;
    }();
    return compiled;
}

/// Control characters that rewrite a line, so that what is shown may stand nowhere in the bytes in a row.
bool rewrites(QByteArrayView output) {
    const auto* text = reinterpret_cast<const unsigned char*>(output.data());
    unsigned char found = 0;
    for (qsizetype i = 0; i + 1 < output.size(); ++i) {
        const unsigned char a = text[i];
        const bool plain = (a >= ' ') | (a == '\t') | (a == '\n') | (a == 0x1b);
        const bool lineEnd = (a == '\r') & ((text[i + 1] == '\n') | (text[i + 1] == '\r'));
        found |= static_cast<unsigned char>(!(plain | lineEnd) | (a == 0x7f));
    }
    return found != 0;
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

bool mayAnnounce(QByteArrayView output, const OutputBytes& found) {
    if (found.hasCandidate || !found.hasControls) {
        return found.hasCandidate;
    }
    if (rewrites(output)) {
        return true;
    }
    const std::optional<std::string> plain = withoutColours(output);
    return !plain || searchOutput(*plain).hasCandidate;
}

} // namespace orv::PortParser
