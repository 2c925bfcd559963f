#pragma once

#include "TermEngine/Terminal.h"

#include <string>
#include <string_view>
#include <vector>

namespace term {

/// A host that keeps what it is told.
class RecordingHost : public TerminalDelegate {
public:
    std::string replies;
    std::vector<std::string> calls;
    bool allowsTitles = false;
    bool allowsSizes = false;
    bool logs = false;
    std::optional<CellSize> cellSize{};
    std::vector<std::string> messages;

    [[nodiscard]] std::string takeReplies() { return std::exchange(replies, {}); }

    void send(Terminal&, Bytes data) override { replies.append(data.begin(), data.end()); }
    void setTerminalTitle(Terminal&, const std::string& title) override { calls.push_back("title " + title); }
    void setTerminalIconTitle(Terminal&, const std::string& title) override { calls.push_back("icon " + title); }
    void bell(Terminal&) override { calls.emplace_back("bell"); }
    void notify(Terminal&, const NotificationRequest& request) override {
        calls.push_back("notify " + request.title + ": " + request.body);
    }
    void progressReport(Terminal&, const ProgressReport& report) override {
        calls.push_back(
            "progress " + std::to_string(static_cast<int>(report.state)) + " " +
            std::to_string(report.percent.value_or(-1)));
    }
    void pointerShapeChanged(Terminal&, const std::string& name) override { calls.push_back("pointer [" + name + "]"); }
    void hostCurrentDirectoryUpdated(Terminal& source) override {
        calls.push_back("directory " + source.hostCurrentDirectory());
    }
    void clipboardCopy(Terminal&, const ClipboardContent& content) override {
        calls.push_back("copy " + content.selections + " " + std::string(content.data.begin(), content.data.end()));
    }
    void setForegroundColor(Terminal&, std::optional<RgbColor> color) override {
        calls.push_back("foreground " + (color ? formatColorSpec(*color) : "of the theme"));
    }
    void bufferActivated(Terminal& source) override {
        calls.emplace_back(source.isAlternateActive() ? "alternate" : "normal");
    }
    void showCursor(Terminal&) override { calls.emplace_back("show"); }
    void hideCursor(Terminal&) override { calls.emplace_back("hide"); }
    void mouseModeChanged(Terminal&) override { calls.emplace_back("mouse"); }
    void synchronizedOutputChanged(Terminal&, bool active) override { calls.emplace_back(active ? "hold" : "release"); }
    void scheduleSynchronizedOutputTimeout(Terminal&, std::chrono::milliseconds) override {
        calls.emplace_back("watchdog");
    }
    std::optional<CellSize> cellSizeInPixels(Terminal&) override { return cellSize; }
    std::optional<WindowAnswer> windowCommand(Terminal&, const WindowCommand& command) override {
        calls.push_back(
            "window " + std::to_string(static_cast<int>(command.kind)) + " " + std::to_string(command.first) + " " +
            std::to_string(command.second));
        return {};
    }
    bool allowsTitleReports(Terminal&) override { return allowsTitles; }
    bool allowsResize(Terminal&, int, int) override { return allowsSizes; }
    [[nodiscard]] bool isLogging() const override { return logs; }
    void log(Terminal&, std::string_view message) override { messages.emplace_back(message); }
};

/// Bytes as a person writes them: \e, \n, \r, \t, \a, \b, \\ and \xNN.
[[nodiscard]] std::string unescaped(std::string_view text);
[[nodiscard]] std::string escaped(std::string_view bytes);

/// The screen as lines: each row between bars with a letter for what is special of it (w: goes on with the row above;
/// d, t, b: double width, top and bottom of double height), the attributes that are not the default ones, the cursor.
[[nodiscard]] std::string describe(const Terminal& terminal, bool withHistory = false);

} // namespace term
