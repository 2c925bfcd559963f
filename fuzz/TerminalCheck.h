#pragma once

#include "FuzzInput.h"
#include "TermEngine/ScreenSnapshot.h"
#include "TermEngine/Terminal.h"

#include <algorithm>
#include <array>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

/// A host that answers what it is asked, resizes and feeds when a program makes it to, and keeps what it was told.
class FuzzHost final : public term::TerminalDelegate {
public:
    enum class Answers : uint8_t { plain, fromWithin };

    explicit FuzzHost(Answers answers) : m_answers(answers) {}
    std::string replies;
    std::string calls;

    void send(term::Terminal&, term::Bytes data) override { replies.append(data.begin(), data.end()); }
    void setTerminalTitle(term::Terminal& source, const std::string& title) override {
        calls += "title " + title + "\n";
        if (m_answers == Answers::fromWithin) {
            source.feed(title);
        }
    }
    void bell(term::Terminal& source) override {
        calls += "bell\n";
        if (m_answers == Answers::fromWithin) {
            source.reset();
        }
    }
    void imagesChanged(term::Terminal& source) override {
        if (m_answers == Answers::fromWithin) {
            source.resize(1 + (source.cols() + 7) % 60, source.rows());
        }
    }
    void bufferActivated(term::Terminal&) override { calls += "buffer\n"; }
    void mouseModeChanged(term::Terminal&) override { calls += "mouse\n"; }
    void clipboardCopy(term::Terminal&, const term::ClipboardContent& content) override {
        calls.append(content.data.begin(), content.data.end());
    }
    void notify(term::Terminal&, const term::NotificationRequest& request) override {
        calls += request.title + request.body + "\n";
    }
    std::optional<term::CellSize> cellSizeInPixels(term::Terminal&) override { return term::CellSize{5, 10}; }
    bool allowsTitleReports(term::Terminal&) override { return m_answers == Answers::fromWithin; }
    bool allowsResize(term::Terminal&, int, int) override { return true; }
    std::optional<term::WindowAnswer> windowCommand(
        term::Terminal& source, const term::WindowCommand& command) override {
        if (command.kind == term::WindowCommand::Kind::resizeCells) {
            source.resize(1 + command.second % 100, 1 + command.first % 30);
        }
        return term::WindowAnswer{command.first, command.second};
    }
    void textWritten(term::Terminal&, const std::string& text) override {
        require(text.size() <= term::Terminal::maximumAnnouncementBytes + 4);
    }
    [[nodiscard]] bool isLogging() const override { return true; }
    void log(term::Terminal&, std::string_view message) override { calls.append(message) += '\n'; }

private:
    Answers m_answers;
};

/// Size, limits and tastes of a terminal, from eight bytes.
inline term::TerminalOptions takeOptions(FuzzInput& input) {
    constexpr std::array names = {"xterm-256color", "linux", "screen", "vt100"};
    term::TerminalOptions options;
    const int cols = input.byte();
    const int rows = input.byte();
    options.cols = 1 + (cols >= 0xF0 ? 16 * (cols - 0xE0) : cols % 48);
    options.rows = 1 + rows % 12;
    options.scrollback = input.byte() % 24;
    options.tabStopWidth = input.byte() % 10;
    const uint8_t flags = input.byte();
    options.convertEol = (flags & 1U) != 0;
    options.enableSixelReported = (flags & 2U) != 0;
    options.regionalIndicatorWidth =
        (flags & 4U) != 0 ? term::RegionalIndicatorWidth::narrow : term::RegionalIndicatorWidth::wide;
    options.termName = names[(flags >> 3U) % names.size()];
    options.ansi256PaletteStrategy = static_cast<term::Ansi256PaletteStrategy>((flags >> 5U) % 3);
    options.maximumOscBytes = 16U << (input.byte() % 12U);
    options.kittyGraphics.imageCacheLimitBytes = 50'000;
    options.kittyClipboardPolicy = static_cast<term::KittyClipboardPolicy>(input.byte() % 4);
    const uint8_t style = input.byte();
    options.cursorStyle = static_cast<term::CursorStyle>(style % 6);
    options.screenReaderMode = style >= 0x80;
    return options;
}

/// What holds of a line whatever was written: it is as wide as the screen, and no wide character is cut.
inline void requireSoundLine(const term::Buffer& buffer, const term::BufferLine& line) {
    require(line.size() == buffer.cols() && line.usedLength() <= line.size());
    require(line.tailBlankCell().isBlank() && line.tailBlankCell().hasValidEncoding());
    for (int col = 0; col < line.size(); ++col) {
        const term::PackedCell cell = line[col];
        require(cell.hasValidEncoding());
        require(!cell.isWide() || (line.hasWide() && col + 1 < line.size() && line[col + 1].isSpacer()));
        require(!cell.isSpacer() || (col > 0 && line[col - 1].isWide()));
        static_cast<void>(buffer.cellArena().attributeOf(cell));
    }
}

inline void requireSoundBuffer(const term::Buffer& buffer, int scrollback) {
    require(buffer.lineCount() == buffer.yBase() + buffer.rows());
    require(buffer.yBase() <= (buffer.hasScrollback() ? scrollback : 0));
    require(buffer.yDisp() >= 0 && buffer.yDisp() <= buffer.yBase());
    require(buffer.x() >= 0 && buffer.x() < buffer.cols() && buffer.y() >= 0 && buffer.y() < buffer.rows());
    require(buffer.scrollTop() >= 0 && buffer.scrollTop() <= buffer.scrollBottom());
    require(buffer.scrollBottom() < buffer.rows());
    require(buffer.marginLeft() >= 0 && buffer.marginLeft() <= buffer.marginRight());
    require(buffer.marginRight() < buffer.cols());
    for (int index = 0; index < buffer.lineCount(); ++index) {
        requireSoundLine(buffer, buffer.lineAt(index));
    }
}

/// Replies are made of printable ASCII between their introducers and ends.
inline void requireSoundReplies(const std::string& replies) {
    require(std::ranges::all_of(replies, [](char letter) {
        const auto code = static_cast<uint8_t>(letter);
        return (code >= 0x20 && code < 0x7F) || code == 0x1B || code == '\a' || code == 0x90 || code == 0x9B ||
               code == 0x9C || code == 0x9D || code == 0x9F;
    }));
}

/// What a renderer relies on: a line with an identity and a generation that were there before has the same cells.
class DrawnLines {
public:
    void require(const term::Terminal& terminal) {
        auto& known = terminal.isAlternateActive() ? m_alternate : m_normal;
        Lines now;
        const term::Buffer& buffer = terminal.buffer();
        for (int row = 0; row < buffer.rows(); ++row) {
            const term::BufferLine& line = buffer.line(row);
            Line drawn{line.generation(), {}};
            for (int col = 0; col < line.size(); ++col) {
                drawn.text += textOf(terminal, line[col]);
            }
            drawn.text += static_cast<char>(line.renderMode());
            if (const auto before = known.find(line.renderIdentity()); before != known.end()) {
                ::require(before->second.generation != drawn.generation || before->second.text == drawn.text);
            }
            ::require(now.emplace(line.renderIdentity(), std::move(drawn)).second);
        }
        known = std::move(now);
    }

private:
    struct Line {
        uint64_t generation;
        std::string text;
    };
    using Lines = std::unordered_map<uint64_t, Line>;
    static std::string textOf(const term::Terminal& terminal, term::PackedCell cell) {
        const auto key = terminal.arena().attributeOf(cell).packed();
        std::string text(reinterpret_cast<const char*>(&key), sizeof key);
        terminal.arena().appendText(text, cell);
        return text += static_cast<char>(cell.widthState());
    }

    Lines m_normal;
    Lines m_alternate;
};

inline bool sameCell(const term::Terminal& a, term::PackedCell x, const term::Terminal& b, term::PackedCell y) {
    char32_t first = 0;
    char32_t second = 0;
    return a.arena().scalarValues(x, first) == b.arena().scalarValues(y, second) &&
           a.arena().attributeOf(x) == b.arena().attributeOf(y) && x.widthState() == y.widthState() &&
           x.isProtected() == y.isProtected() && x.semanticCode() == y.semanticCode() &&
           a.linkUrl(x.payload()) == b.linkUrl(y.payload());
}

inline bool sameLine(
    const term::Terminal& a, const term::BufferLine& x, const term::Terminal& b, const term::BufferLine& y) {
    for (int col = 0; col < x.size(); ++col) {
        if (!sameCell(a, x[col], b, y[col])) {
            return false;
        }
    }
    return x.size() == y.size() && x.isWrapped() == y.isWrapped() && x.renderMode() == y.renderMode() &&
           x.semanticMarks() == y.semanticMarks();
}

/// What a cell shows of a picture.
struct ShownPicture {
    size_t picture = 0;          ///< the hash of its pixels
    std::array<int, 6> source{}; ///< where in it, how much of it, and where in the cell
    int z = 0;
    bool operator==(const ShownPicture&) const = default;
};

/// By line and column of the active screen, from the lowest picture to the highest. A picture may lie there in one part
/// or in many.
inline std::map<std::pair<int64_t, int>, std::vector<ShownPicture>> shownPictures(const term::Terminal& terminal) {
    const term::Buffer& buffer = terminal.buffer();
    const auto screen = terminal.isAlternateActive() ? term::ScreenId::alternate : term::ScreenId::normal;
    const auto top = static_cast<int64_t>(buffer.trimmedCount());
    const term::CellArea all{top, top + buffer.lineCount(), 0, buffer.cols()};
    std::vector<term::ImagePlacement> placements = terminal.images().placements();
    std::ranges::sort(placements, term::isDrawnBefore);
    std::map<std::pair<int64_t, int>, std::vector<ShownPicture>> shown;
    for (const term::ImagePlacement& placement : placements) {
        const term::CellArea area = placement.area();
        if (placement.isVirtual || placement.screen != screen) {
            continue;
        }
        const auto& pixels = terminal.images().images().at(placement.imageId).frames.front().pixels->pixels;
        const size_t picture =
            std::hash<std::string_view>()({reinterpret_cast<const char*>(pixels.data()), pixels.size()});
        for (int64_t row = std::max(area.top, all.top); row < std::min(area.bottom, all.bottom); ++row) {
            for (int col = std::max(area.left, all.left); col < std::min(area.right, all.right); ++col) {
                if (const auto part = term::partOf(placement, {row, row + 1, col, col + 1})) {
                    shown[{row, col}].push_back(
                        {picture,
                         {part->sourceX, part->sourceY, part->sourceWidth, part->sourceHeight, part->offsetX,
                          part->offsetY},
                         part->z});
                }
            }
        }
    }
    return shown;
}

/// Whether two terminals show the same, and will go on in the same way.
inline bool sameScreen(const term::Terminal& a, const term::Terminal& b) {
    const term::Buffer& x = a.buffer();
    const term::Buffer& y = b.buffer();
    if (x.lineCount() != y.lineCount() || x.x() != y.x() || x.y() != y.y() || x.pendingWrap() != y.pendingWrap() ||
        x.scrollTop() != y.scrollTop() || x.scrollBottom() != y.scrollBottom() || x.marginLeft() != y.marginLeft() ||
        x.marginRight() != y.marginRight() || x.lastScalar() != y.lastScalar() || a.modes() != b.modes() ||
        a.attribute() != b.attribute() || a.isAlternateActive() != b.isAlternateActive() || a.title() != b.title() ||
        shownPictures(a) != shownPictures(b)) {
        return false;
    }
    for (int index = 0; index < x.lineCount(); ++index) {
        if (!sameLine(a, x.lineAt(index), b, y.lineAt(index))) {
            return false;
        }
    }
    return true;
}
