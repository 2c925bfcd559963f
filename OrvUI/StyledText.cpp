#include "OrvUI/StyledText.h"

#include <array>
#include <optional>

namespace orv::StyledText {

namespace {

constexpr char16_t escape = u'\x1b';

/// The end of the control sequence that begins at `at`; `final` is null for anything but a whole CSI.
struct Sequence {
    QStringView parameters;
    char16_t final = 0;
    qsizetype end = 0;
};

/// A link or its end, as `TerminalLine` leaves them: final ']', the address as the parameters.
Sequence linkAt(QStringView line, qsizetype at) {
    constexpr QStringView introducer = u"]8;;";
    constexpr QStringView terminator = u"\x1b\\";
    const qsizetype first = at + 1 + introducer.size();
    const qsizetype end = line.indexOf(terminator, at + 1);
    if (!line.sliced(at + 1).startsWith(introducer) || end < first) {
        return {{}, 0, at + 1};
    }
    return {line.sliced(first, end - first), u']', end + terminator.size()};
}

Sequence sequenceAt(QStringView line, qsizetype at) {
    qsizetype end = at + 1;
    if (end < line.size() && line[end] == u']') {
        return linkAt(line, at);
    }
    if (end >= line.size() || line[end] != u'[') {
        return {{}, 0, end};
    }
    const qsizetype first = ++end;
    while (end < line.size() && line[end] >= u' ' && line[end] <= u'?') {
        ++end;
    }
    const bool isWhole = end < line.size() && line[end] >= u'@' && line[end] <= u'~';
    return {line.sliced(first, end - first), isWhole ? line[end].unicode() : char16_t(0), isWhole ? end + 1 : end};
}

/// The numbers of an SGR sequence with what parted them: ";" or ":".
class Parameters {
public:
    explicit Parameters(QStringView text) : m_text(text) {}

    [[nodiscard]] bool isAtEnd() const { return m_at > m_text.size(); }
    /// An empty one is 0; one that is no number is -1.
    int take() {
        qsizetype end = m_at;
        while (end < m_text.size() && m_text[end] != u';' && m_text[end] != u':') {
            ++end;
        }
        const QStringView digits = m_text.sliced(m_at, end - m_at);
        bool isNumber = true;
        const int value = digits.isEmpty() ? 0 : digits.toInt(&isNumber);
        m_isSub = end < m_text.size() && m_text[end] == u':';
        m_at = end + 1;
        return isNumber ? value : -1;
    }
    /// Whether the next one belongs to the one that was taken last ("4:3").
    [[nodiscard]] bool hasSub() const { return m_isSub && !isAtEnd(); }
    [[nodiscard]] qsizetype subsLeft() const {
        qsizetype count = 0;
        for (qsizetype at = m_at; m_isSub && at <= m_text.size(); ++at) {
            if (at == m_text.size() || m_text[at] == u':' || m_text[at] == u';') {
                ++count;
                if (at == m_text.size() || m_text[at] == u';') {
                    break;
                }
            }
        }
        return count;
    }

private:
    QStringView m_text;
    qsizetype m_at = 0;
    bool m_isSub = false;
};

std::optional<int32_t> paletteColour(int index) {
    return index >= 0 && index <= 255 ? std::optional<int32_t>(index) : std::nullopt;
}

std::optional<int32_t> directColour(int red, int green, int blue) {
    for (const int part : {red, green, blue}) {
        if (part < 0 || part > 255) {
            return {};
        }
    }
    return TextPen::direct | (red << 16) | (green << 8) | blue;
}

/// What stands behind 38 or 48: "5;n", "2;r;g;b", "5:n", "2:r:g:b", "2:space:r:g:b".
std::optional<int32_t> extendedColour(Parameters& parameters) {
    if (parameters.isAtEnd()) {
        return {};
    }
    const int kind = parameters.take();
    if (kind == 5 && !parameters.isAtEnd()) {
        return paletteColour(parameters.take());
    }
    if (kind != 2) {
        return {};
    }
    if (parameters.subsLeft() > 3) {
        parameters.take(); // the colour space
    }
    std::array<int, 3> parts{-1, -1, -1};
    for (int& part : parts) {
        part = parameters.isAtEnd() ? -1 : parameters.take();
    }
    return directColour(parts[0], parts[1], parts[2]);
}

struct AttributeCode {
    int set;
    uint8_t attribute;
};
constexpr std::array attributeCodes{
    AttributeCode{1, TextPen::bold},       AttributeCode{2, TextPen::faint},  AttributeCode{3, TextPen::italic},
    AttributeCode{7, TextPen::inverse},    AttributeCode{8, TextPen::hidden}, AttributeCode{9, TextPen::struck},
    AttributeCode{21, TextPen::underline},
};
struct ResetCode {
    int code;
    int attributes;
};
constexpr std::array resetCodes{
    ResetCode{22, TextPen::bold | TextPen::faint},
    ResetCode{23, TextPen::italic},
    ResetCode{24, TextPen::underline},
    ResetCode{27, TextPen::inverse},
    ResetCode{28, TextPen::hidden},
    ResetCode{29, TextPen::struck},
};

/// 30 to 37 and 90 to 97 count from `base`.
bool applyBasicColour(int code, int base, int32_t& colour) {
    if (code >= base && code < base + 8) {
        colour = code - base;
    } else if (code >= base + 60 && code < base + 68) {
        colour = code - base - 60 + 8;
    } else if (code == base + 9) {
        colour = TextPen::defaultColour;
    } else {
        return false;
    }
    return true;
}

void apply(QStringView text, TextPen& pen) {
    if (!text.isEmpty() && text.front() >= u'<') {
        return; // a private sequence of the same letter
    }
    Parameters parameters(text);
    while (!parameters.isAtEnd()) {
        const int code = parameters.take();
        if (code == 0) {
            pen = {};
        } else if (code == 38 || code == 48) {
            if (const auto colour = extendedColour(parameters)) {
                (code == 38 ? pen.foreground : pen.background) = *colour;
            }
        } else if (code == 4) {
            const bool isOff = parameters.hasSub() && parameters.take() == 0;
            pen.attributes = static_cast<uint8_t>(
                isOff ? pen.attributes & ~TextPen::underline : pen.attributes | TextPen::underline);
        } else if (!applyBasicColour(code, 30, pen.foreground) && !applyBasicColour(code, 40, pen.background)) {
            for (const auto& [set, attribute] : attributeCodes) {
                pen.attributes = static_cast<uint8_t>(code == set ? pen.attributes | attribute : pen.attributes);
            }
            for (const auto& [reset, attributes] : resetCodes) {
                pen.attributes = static_cast<uint8_t>(code == reset ? pen.attributes & ~attributes : pen.attributes);
            }
        }
        while (parameters.hasSub()) {
            parameters.take();
        }
    }
}

/// Calls `onText` with every stretch between the sequences, `onSgr` with the parameters of each SGR and `onLink` with
/// the address of each link, which is empty where one ends.
template <typename OnText, typename OnSgr, typename OnLink>
void walk(QStringView line, OnText onText, OnSgr onSgr, OnLink onLink) {
    qsizetype at = 0;
    while (at < line.size()) {
        qsizetype next = line.indexOf(escape, at);
        next = next < 0 ? line.size() : next;
        if (next > at) {
            onText(line.sliced(at, next - at));
        }
        if (next == line.size()) {
            return;
        }
        const Sequence sequence = sequenceAt(line, next);
        if (sequence.final == u'm') {
            onSgr(sequence.parameters);
        } else if (sequence.final == u']') {
            onLink(sequence.parameters);
        }
        at = sequence.end;
    }
}

} // namespace

Line parse(const QString& line, const TextPen& pen) {
    Line result{{}, {}, {}, pen};
    QString url;
    result.text.reserve(line.size());
    walk(
        line,
        [&](QStringView text) {
            const qsizetype start = result.text.size();
            result.text += text;
            if (!url.isEmpty()) {
                if (!result.links.isEmpty() && result.links.last().url == url &&
                    result.links.last().start + result.links.last().length == start) {
                    result.links.last().length += text.size();
                } else {
                    result.links.append({start, text.size(), url});
                }
            }
            if (result.end == TextPen()) {
                return;
            }
            if (!result.runs.isEmpty() && result.runs.last().pen == result.end &&
                result.runs.last().start + result.runs.last().length == start) {
                result.runs.last().length += text.size();
            } else {
                result.runs.append({start, text.size(), result.end});
            }
        },
        [&](QStringView parameters) { apply(parameters, result.end); },
        [&](QStringView address) { url = address.toString(); });
    return result;
}

QString plain(const QString& line, TextPen& pen) {
    if (!line.contains(escape)) {
        return line;
    }
    QString text;
    text.reserve(line.size());
    walk(
        line, [&](QStringView stretch) { text += stretch; }, [&](QStringView parameters) { apply(parameters, pen); },
        [](QStringView /*address*/) {});
    return text;
}

QString plain(const QString& line) {
    TextPen any;
    return plain(line, any);
}

} // namespace orv::StyledText
