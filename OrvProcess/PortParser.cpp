#include "OrvProcess/PortParser.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <cstring>
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

/// 16 bytes of characters, or of the answers to a comparison of each: all bits or none. GCC and Clang carry out their
/// operators on any processor.
template <typename Char>
using Vector [[gnu::vector_size(16)]] = Char;

/// Whether five characters in a row stand as they must in an announcement: the end of a host, a colon and two digits,
/// or the end of "port", white space, and then a digit or more of it. A loop over single characters would take five
/// times as long, on every byte of a service that has announced nothing yet.
template <typename Char>
bool hasCandidate(const Char* text, qsizetype size) {
    using V = Vector<Char>;
    constexpr qsizetype width = 16 / sizeof(Char);
    constexpr qsizetype window = 5;
    const auto load = [](const Char* at) {
        V loaded;
        std::memcpy(&loaded, at, sizeof loaded);
        return loaded;
    };
    const auto isDigit = [](V c) { return (c - '0') < 10; };
    const auto isSpace = [](V c) { return (c == ' ') | ((c - '\t') < 5); };
    const auto look = [&](const Char* at) {
        const V a = load(at);
        const V b = load(at + 1);
        const V c = load(at + 2);
        const V d = load(at + 3);
        // "localhost", "127.0.0.1" or "0.0.0.0", "[::]" or "[::1]"
        const auto host = ((a == 's') & (b == 't')) | ((a == '.') & ((b == '0') | (b == '1'))) |
                          (((a == ':') | (a == '1')) & (b == ']'));
        const auto address = host & (c == ':') & isDigit(d) & isDigit(load(at + 4));
        const auto keyword = ((a | 0x20) == 'r') & ((b | 0x20) == 't') & isSpace(c) & (isSpace(d) | isDigit(d));
        return address | keyword;
    };
    const auto isAny = [](const auto& answers) {
        std::array<quint64, 2> halves{};
        std::memcpy(halves.data(), &answers, sizeof answers);
        return (halves[0] | halves[1]) != 0;
    };
    constexpr qsizetype block = width + window - 1;
    qsizetype at = 0;
    for (; at + block <= size; at += width) {
        if (isAny(look(text + at))) {
            return true;
        }
    }
    std::array<Char, 2 * block> rest{};
    std::copy(text + at, text + size, rest.begin());
    return isAny(look(rest.data())) || isAny(look(rest.data() + width));
}

/// Control characters that rewrite a line, so that what is shown may stand nowhere in the bytes in a row.
bool rewrites(const unsigned char* text, qsizetype size) {
    unsigned char found = 0;
    for (qsizetype i = 0; i + 1 < size; ++i) {
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
    if (!hasCandidate(plain.utf16(), plain.size())) {
        return {};
    }
    for (const QRegularExpression* pattern : {&patterns().address, &patterns().keyword}) {
        if (const QRegularExpressionMatch match = pattern->match(plain); match.hasMatch()) {
            return match.capturedView(1).toInt();
        }
    }
    return {};
}

bool mayAnnounce(QByteArrayView output) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(output.data());
    if (rewrites(bytes, output.size())) {
        return true;
    }
    if (!output.contains('\x1b')) {
        return hasCandidate(bytes, output.size());
    }
    const std::optional<std::string> plain = withoutColours(output);
    return !plain ||
           hasCandidate(reinterpret_cast<const unsigned char*>(plain->data()), static_cast<qsizetype>(plain->size()));
}

} // namespace orv::PortParser
