#include "TermEngine/OscPayloads.h"

#include "TermEngine/Base64.h"
#include "TermEngine/Encoding_p.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace term {
namespace {

std::optional<int> decimal(std::string_view text) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isWhole = error == std::errc() && end == text.data() + text.size() && value >= 0;
    return isWhole ? std::optional(value) : std::nullopt;
}

int hexadecimalDigit(char digit) {
    constexpr std::string_view digits = "0123456789abcdef";
    const size_t value = digits.find(digit >= 'A' && digit <= 'F' ? static_cast<char>(digit + 0x20) : digit);
    return value == std::string_view::npos ? -1 : static_cast<int>(value);
}

/// Bytes of pairs of digits from `text`; nothing where it is not made of them.
std::optional<std::string> fromHexadecimal(std::string_view text) {
    std::string bytes;
    for (; text.size() >= 2; text.remove_prefix(2)) {
        const int high = hexadecimalDigit(text[0]);
        const int low = hexadecimalDigit(text[1]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        bytes.push_back(static_cast<char>(high * 16 + low));
    }
    return text.empty() ? std::optional(bytes) : std::nullopt;
}

std::string toHexadecimal(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string out;
    for (const char byte : bytes) {
        out.push_back(digits[static_cast<uint8_t>(byte) >> 4U]);
        out.push_back(digits[static_cast<uint8_t>(byte) & 0xFU]);
    }
    return out;
}

std::string withoutPercentEscapes(std::string_view text) {
    std::string out;
    while (!text.empty()) {
        const auto byte = text[0] == '%' && text.size() > 2 ? fromHexadecimal(text.substr(1, 2)) : std::nullopt;
        out += byte ? *byte : std::string(text.substr(0, 1));
        text.remove_prefix(byte ? 3 : 1);
    }
    return out;
}

ITermCommand::File::Extent parseExtent(std::string_view text) {
    using enum ITermCommand::File::Extent::Unit;
    constexpr int largest = 10'000;
    const bool isPixels = text.ends_with("px");
    const bool isPercent = text.ends_with('%');
    const auto number = decimal(text.substr(0, text.size() - (isPixels ? 2 : isPercent ? 1 : 0)));
    if (!number || *number == 0) {
        return {};
    }
    return {isPixels ? pixels : isPercent ? percent : cells, std::min(*number, largest)};
}

/// More than a name in base64 and a few numbers take.
constexpr size_t longestArguments = 4 * maximumTextBytes;

ITermCommand::File parseFileArguments(std::string_view arguments) {
    ITermCommand::File file;
    while (!arguments.empty()) {
        std::string_view value = takeField(arguments, ';');
        const std::string_view key = takeField(value, '=');
        if (key == "name") {
            const auto name = decodeBase64(value, maximumTextBytes).value_or(std::vector<uint8_t>());
            file.name = cleanText({reinterpret_cast<const char*>(name.data()), name.size()});
        } else if (key == "width") {
            file.width = parseExtent(value);
        } else if (key == "height") {
            file.height = parseExtent(value);
        } else if (key == "preserveAspectRatio") {
            file.preservesAspectRatio = value != "0";
        } else if (key == "inline") {
            file.isInline = value == "1";
        }
    }
    return file;
}

std::optional<ITermCommand> parseFile(std::string_view payload, size_t limitBytes) {
    const size_t colon = payload.substr(0, longestArguments + 1).find(':');
    if (colon == std::string_view::npos) {
        return std::nullopt;
    }
    auto data = decodeBase64(payload.substr(colon + 1), limitBytes);
    if (!data) {
        return std::nullopt;
    }
    ITermCommand command{.kind = ITermCommand::Kind::file, .file = parseFileArguments(payload.substr(0, colon))};
    command.file.data = std::move(*data);
    return command;
}

} // namespace

std::string cleanText(std::string_view text, size_t limitBytes) {
    // One of nothing but control characters would be looked at to its end.
    constexpr size_t looked = 16;
    text = text.substr(0, looked * limitBytes);
    std::string out;
    while (!text.empty()) {
        const char32_t scalar = takeUtf8(text);
        const bool isControl = scalar < 0x20 || (scalar >= 0x7F && scalar < 0xA0);
        const size_t size = out.size();
        if (!isControl) {
            appendUtf8(out, scalar);
        }
        if (out.size() > limitBytes) {
            out.resize(size);
            break;
        }
    }
    return out;
}

std::string wholeText(std::string_view text) {
    constexpr size_t replacementBytes = 3; // what a byte that is no UTF-8 becomes
    return cleanText(text, replacementBytes * text.size());
}

std::optional<DirectoryReport> parseDirectoryReport(std::string_view payload) {
    constexpr std::string_view scheme = "file://";
    if (!payload.starts_with(scheme) || payload.size() > 3 * maximumTextBytes) {
        return std::nullopt;
    }
    payload.remove_prefix(scheme.size());
    const size_t slash = payload.find('/');
    if (slash == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string path = withoutPercentEscapes(payload.substr(slash));
    DirectoryReport report{cleanText(payload.substr(0, slash)), cleanText(path)};
    // A path that had to be changed is another folder's; a name that is cut is another machine's.
    return report.path == path && slash <= maximumTextBytes ? std::optional(report) : std::nullopt;
}

std::optional<HyperlinkReport> parseHyperlink(std::string_view payload) {
    const size_t semicolon = payload.find(';');
    if (semicolon == std::string_view::npos || semicolon > maximumTextBytes) {
        return std::nullopt;
    }
    HyperlinkReport link;
    const std::string_view uri = payload.substr(semicolon + 1);
    const auto isPlain = [](char letter) { return letter >= 0x20 && letter < 0x7F; };
    if (uri.size() > maximumTextBytes || !std::ranges::all_of(uri, isPlain)) {
        return std::nullopt;
    }
    link.uri = uri;
    for (std::string_view rest = payload.substr(0, semicolon); !rest.empty();) {
        std::string_view value = takeField(rest, ':');
        if (takeField(value, '=') == "id") {
            link.id = cleanText(value, 256);
        }
    }
    return link;
}

std::optional<ProgressReport> parseProgress(std::string_view payload) {
    if (takeField(payload, ';') != "4") {
        return std::nullopt;
    }
    const auto state = decimal(takeField(payload, ';'));
    if (!state || *state > static_cast<int>(ProgressReport::State::pause)) {
        return std::nullopt;
    }
    ProgressReport report{static_cast<ProgressReport::State>(*state), {}};
    const bool hasPercent =
        report.state != ProgressReport::State::remove && report.state != ProgressReport::State::indeterminate;
    if (const auto percent = decimal(takeField(payload, ';')); percent && hasPercent) {
        report.percent = std::min(*percent, 100);
    } else if (report.state == ProgressReport::State::set) {
        report.percent = 0;
    }
    return report;
}

std::optional<ClipboardReport> parseClipboard(std::string_view payload, size_t limitBytes) {
    const size_t semicolon = payload.find(';');
    if (semicolon == std::string_view::npos) {
        return std::nullopt;
    }
    ClipboardReport report;
    constexpr std::string_view known = "cpqs01234567";
    for (const char selection : known) {
        if (payload.substr(0, semicolon).find(selection) != std::string_view::npos) {
            report.selections.push_back(selection);
        }
    }
    if (report.selections.empty()) {
        report.selections = "s0";
    }
    const std::string_view encoded = payload.substr(semicolon + 1);
    if (encoded == "?") {
        report.kind = ClipboardReport::Kind::query;
        return report;
    }
    // Only the end of what is not padded shows its last bytes.
    constexpr size_t mostBytesOfEnd = 2;
    Base64Decoder decoder(limitBytes + mostBytesOfEnd);
    if (decoder.append(encoded) == Base64Decoder::Error::tooLong || decoder.size() > limitBytes) {
        return std::nullopt;
    }
    auto data = decoder.finish();
    if (data && data->size() > limitBytes) {
        return std::nullopt;
    }
    if (data && !data->empty()) {
        report.kind = ClipboardReport::Kind::write;
        report.data = std::move(*data);
    }
    return report;
}

std::optional<ITermCommand> parseITermCommand(std::string_view payload, size_t fileLimitBytes) {
    using Kind = ITermCommand::Kind;
    struct Entry {
        std::string_view key;
        Kind kind;
    };
    static constexpr std::array entries{
        Entry{"CurrentDir", Kind::currentDirectory},
        Entry{"RemoteHost", Kind::remoteHost},
        Entry{"SetMark", Kind::setMark},
        Entry{"ClearScrollback", Kind::clearScrollback},
        Entry{"CursorShape", Kind::cursorShape},
        Entry{"SetUserVar", Kind::setUserVariable},
        Entry{"ReportCellSize", Kind::reportCellSize},
        Entry{"Capabilities", Kind::reportCapabilities},
        Entry{"File", Kind::file},
        Entry{"MultipartFile", Kind::fileBegin},
        Entry{"FilePart", Kind::filePart},
        Entry{"FileEnd", Kind::fileEnd}};
    const std::string_view key = takeField(payload, '=');
    const auto* entry = std::ranges::find(entries, key, &Entry::key);
    if (entry == entries.end()) {
        return std::nullopt;
    }
    ITermCommand command{.kind = entry->kind};
    switch (entry->kind) {
    case Kind::file:
        return parseFile(payload, fileLimitBytes);
    case Kind::fileBegin:
        command.file = parseFileArguments(payload.substr(0, longestArguments));
        return command;
    case Kind::filePart:
        command.encoded = payload;
        return command;
    case Kind::setUserVariable: {
        command.name = cleanText(takeField(payload, '='), 256);
        const auto value = decodeBase64(payload, maximumTextBytes);
        if (command.name.empty() || !value) {
            return std::nullopt;
        }
        command.value = cleanText({reinterpret_cast<const char*>(value->data()), value->size()});
        return command;
    }
    case Kind::currentDirectory:
        // Cut, it would be another folder.
        if (payload.size() > maximumTextBytes) {
            return std::nullopt;
        }
        command.value = wholeText(payload);
        return command.value.size() <= maximumTextBytes ? std::optional(command) : std::nullopt;
    case Kind::cursorShape:
        if (payload != "0" && payload != "1" && payload != "2") {
            return std::nullopt;
        }
        break;
    default:
        break;
    }
    command.value = cleanText(payload);
    return command;
}

std::vector<std::string> answerTermcapRequest(std::string_view payload, std::string_view termName) {
    struct Capability {
        std::string_view name;
        std::string_view value;
    };
    const std::array capabilities{
        Capability{"Co", "256"}, Capability{"colors", "256"}, Capability{"TN", termName}, Capability{"name", termName},
        Capability{"RGB", "8/8/8"}};
    constexpr size_t mostAnswers = 64;
    std::vector<std::string> answers;
    while (!payload.empty() && answers.size() < mostAnswers) {
        const auto name = fromHexadecimal(takeField(payload, ';'));
        const auto* found = std::ranges::find(capabilities, name.value_or(""), &Capability::name);
        answers.push_back(
            found == capabilities.end() ? "0+r"
                                        : "1+r" + toHexadecimal(found->name) + '=' + toHexadecimal(found->value));
    }
    return answers;
}

} // namespace term
