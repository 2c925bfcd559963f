#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace term {

// What stands behind the number and the semicolon of an OSC string, as values. Nothing here fails: what can't be read
// gives nothing, and every text is valid UTF-8 without control characters and of bounded length.

/// What a title, a folder, a link or a notification may keep.
constexpr size_t maximumTextBytes = 4096;

/// `text` without control characters, with U+FFFD for what is no UTF-8, cut after at most `limitBytes`.
[[nodiscard]] std::string cleanText(std::string_view text, size_t limitBytes = maximumTextBytes);

/// The same, and not cut.
[[nodiscard]] std::string wholeText(std::string_view text);

/// OSC 7: file://host/path
struct DirectoryReport {
    std::string host; ///< empty: this machine
    std::string path; ///< begins with "/"; percent escapes are resolved
    bool operator==(const DirectoryReport&) const = default;
};
[[nodiscard]] std::optional<DirectoryReport> parseDirectoryReport(std::string_view payload);

/// OSC 8: parameters ; uri. An empty uri ends the link.
struct HyperlinkReport {
    std::string id;
    std::string uri;
    bool operator==(const HyperlinkReport&) const = default;
};
[[nodiscard]] std::optional<HyperlinkReport> parseHyperlink(std::string_view payload);

/// OSC 9;4: state ; percent
struct ProgressReport {
    enum class State : uint8_t { remove, set, error, indeterminate, pause };
    State state = State::remove;
    std::optional<int> percent; ///< 0 to 100
    bool operator==(const ProgressReport&) const = default;
};
/// `payload` begins behind "9;".
[[nodiscard]] std::optional<ProgressReport> parseProgress(std::string_view payload);

/// OSC 52: selections ; base64, or "?" for a question.
struct ClipboardReport {
    enum class Kind : uint8_t { write, clear, query };
    std::string selections; ///< of "cpqs01234567", each once; "s0" where none was named
    Kind kind = Kind::clear;
    std::vector<uint8_t> data;
    bool operator==(const ClipboardReport&) const = default;
};
/// What is no base64 clears the selections (XTerm Control Sequences). More than `limitBytes` are no report.
[[nodiscard]] std::optional<ClipboardReport> parseClipboard(std::string_view payload, size_t limitBytes);

/// OSC 1337 in the forms that do no harm: name, or name=value.
struct ITermCommand {
    enum class Kind : uint8_t {
        currentDirectory, ///< value: a path
        remoteHost,       ///< value: user@host
        setMark,
        clearScrollback,
        cursorShape,     ///< value: 0 (block), 1 (bar) or 2 (underline)
        setUserVariable, ///< name and value
        reportCellSize,
        reportCapabilities,
        file,      ///< an image to show
        fileBegin, ///< an image whose data come in pieces
        filePart,  ///< encoded: a piece
        fileEnd,
    };
    struct File {
        /// Of an image: "auto", or a number of cells, of pixels or of per cent of the screen.
        struct Extent {
            enum class Unit : uint8_t { automatic, cells, pixels, percent };
            Unit unit = Unit::automatic;
            int number = 0;
            bool operator==(const Extent&) const = default;
        };
        std::string name{};
        Extent width{};
        Extent height{};
        bool preservesAspectRatio = true;
        bool isInline = false; ///< else it is a download, which nobody asked for
        std::vector<uint8_t> data{};
        bool operator==(const File&) const = default;
    };
    Kind kind = Kind::setMark;
    std::string name{};
    std::string value{};
    File file{};
    std::string_view encoded{}; ///< base64; a part of the payload
    bool operator==(const ITermCommand&) const = default;
};
[[nodiscard]] std::optional<ITermCommand> parseITermCommand(std::string_view payload, size_t fileLimitBytes);

/// XTGETTCAP (DCS + q): the body of one answer for each asked capability, without the frame of the DCS: "1+r", name and
/// value in hexadecimal, or "0+r". Names that are not ours are never repeated. At most 64 are answered.
[[nodiscard]] std::vector<std::string> answerTermcapRequest(std::string_view payload, std::string_view termName);

} // namespace term
