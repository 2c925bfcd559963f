#include "SessionFixture.h"
#include "TermEngine/Diagnostics.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>

namespace term {
namespace {

using namespace std::string_literals;

/// A host that does something to the terminal from within calls, and not from within those that come of it.
class Meddler final : public TerminalDelegate {
public:
    std::function<void(Terminal&)> act;
    std::string_view wanted; ///< the call that it acts in; empty: all of them
    std::set<std::string_view> met;

    template <typename Value = std::nullptr_t>
    Value meet(Terminal& source, std::string_view call, Value answer = {}) {
        met.insert(call);
        if (act && !m_isActing && (wanted.empty() || wanted == call)) {
            m_isActing = true;
            act(source);
            m_isActing = false;
        }
        return answer;
    }

    void send(Terminal& t, Bytes) override { meet(t, "send"); }
    void reply(Terminal& t, Bytes) override { meet(t, "reply"); }
    void setTerminalTitle(Terminal& t, const std::string&) override { meet(t, "setTerminalTitle"); }
    void setTerminalIconTitle(Terminal& t, const std::string&) override { meet(t, "setTerminalIconTitle"); }
    void hostCurrentDirectoryUpdated(Terminal& t) override { meet(t, "hostCurrentDirectoryUpdated"); }
    void hostCurrentDocumentUpdated(Terminal& t) override { meet(t, "hostCurrentDocumentUpdated"); }
    void bell(Terminal& t) override { meet(t, "bell"); }
    void notify(Terminal& t, const NotificationRequest&) override { meet(t, "notify"); }
    void progressReport(Terminal& t, const ProgressReport&) override { meet(t, "progressReport"); }
    void programStatusChanged(Terminal& t, const std::vector<std::string>&) override {
        meet(t, "programStatusChanged");
    }
    void sizeChanged(Terminal& t) override { meet(t, "sizeChanged"); }
    void bufferActivated(Terminal& t) override { meet(t, "bufferActivated"); }
    void cursorStyleChanged(Terminal& t, CursorStyle) override { meet(t, "cursorStyleChanged"); }
    void showCursor(Terminal& t) override { meet(t, "showCursor"); }
    void hideCursor(Terminal& t) override { meet(t, "hideCursor"); }
    void mouseModeChanged(Terminal& t) override { meet(t, "mouseModeChanged"); }
    void selectionChanged(Terminal& t) override { meet(t, "selectionChanged"); }
    void textWritten(Terminal& t, const std::string&) override { meet(t, "textWritten"); }
    void pointerShapeChanged(Terminal& t, const std::string&) override { meet(t, "pointerShapeChanged"); }
    void colorChanged(Terminal& t, std::optional<int>) override { meet(t, "colorChanged"); }
    void setForegroundColor(Terminal& t, std::optional<RgbColor>) override { meet(t, "setForegroundColor"); }
    void setBackgroundColor(Terminal& t, std::optional<RgbColor>) override { meet(t, "setBackgroundColor"); }
    void setCursorColor(Terminal& t, std::optional<RgbColor>) override { meet(t, "setCursorColor"); }
    std::optional<BaseColors> getColors(Terminal& t) override {
        return meet<std::optional<BaseColors>>(t, "getColors");
    }
    void imagesChanged(Terminal& t) override { meet(t, "imagesChanged"); }
    void createImageFromBitmap(Terminal& t, std::uint32_t, const std::shared_ptr<const RgbaImage>& pixels) override {
        meet(t, "createImageFromBitmap");
        EXPECT_TRUE(pixels->isValid());
    }
    std::optional<RgbaImage> createImage(Terminal& t, Bytes, const ImageRequest&) override {
        return meet(t, "createImage", std::optional(RgbaImage{1, 1, {1, 2, 3, 255}}));
    }
    void clipboardCopy(Terminal& t, const ClipboardContent&) override { meet(t, "clipboardCopy"); }
    std::optional<std::string> clipboardRead(Terminal& t, std::string_view) override {
        return meet<std::optional<std::string>>(t, "clipboardRead");
    }
    bool clipboardReadRequest(Terminal& t, std::string_view) override { return meet(t, "clipboardReadRequest", false); }
    KittyClipboardCapabilities kittyClipboardCapabilities(Terminal& t) override {
        return meet<KittyClipboardCapabilities>(t, "kittyClipboardCapabilities");
    }
    std::vector<std::string> kittyClipboardAvailableMimeTypes(Terminal& t, ClipboardLocation) override {
        return meet(t, "kittyClipboardAvailableMimeTypes", std::vector<std::string>{"text/plain"});
    }
    std::optional<std::vector<ClipboardData>> kittyClipboardRead(Terminal& t, const KittyClipboardRead&) override {
        return meet(t, "kittyClipboardRead", std::optional(std::vector<ClipboardData>{{"text/plain", {'y'}}}));
    }
    KittyClipboardStatus kittyClipboardWrite(Terminal& t, KittyClipboardWrite) override {
        return meet(t, "kittyClipboardWrite", KittyClipboardStatus::done);
    }
    ClipboardPermission kittyClipboardRequestPermission(Terminal& t, const KittyClipboardRequest& request) override {
        meet(t, "kittyClipboardRequestPermission");
        EXPECT_NE(request.number, 0U);
        return ClipboardPermission::granted;
    }
    bool kittyClipboardSendPasteEvent(Terminal& t, ClipboardLocation) override {
        return meet(t, "kittyClipboardSendPasteEvent", true);
    }
    std::optional<PasteControlBytes> terminalControlBytesForPaste(Terminal& t) override {
        return meet<std::optional<PasteControlBytes>>(t, "terminalControlBytesForPaste");
    }
    std::optional<CellSize> cellSizeInPixels(Terminal& t) override {
        return meet(t, "cellSizeInPixels", std::optional(CellSize{5, 10}));
    }
    std::optional<WindowAnswer> windowCommand(Terminal& t, const WindowCommand&) override {
        return meet(t, "windowCommand", std::optional(WindowAnswer{1, 1}));
    }
    bool allowsTitleReports(Terminal& t) override { return meet(t, "allowsTitleReports", true); }
    bool allowsResize(Terminal& t, int, int) override { return meet(t, "allowsResize", true); }
    std::optional<bool> isProcessTrusted(Terminal& t) override {
        return meet<std::optional<bool>>(t, "isProcessTrusted");
    }
    void scheduleSynchronizedOutputTimeout(Terminal& t, std::chrono::milliseconds) override {
        meet(t, "scheduleSynchronizedOutputTimeout");
    }
    void synchronizedOutputChanged(Terminal& t, bool) override { meet(t, "synchronizedOutputChanged"); }
    [[nodiscard]] bool isLogging() const override { return true; }
    void log(Terminal& t, std::string_view) override { meet(t, "log"); }

private:
    bool m_isActing = false;
};

void select(Terminal& terminal) {
    const auto top = static_cast<std::int64_t>(terminal.buffer().trimmedCount()) + terminal.buffer().yBase();
    terminal.startSelection({top, 0}, TextSelection::Unit::character);
    terminal.extendSelection({top + terminal.rows() - 1, 3});
}

/// What makes a terminal call its host in every way, and in the midst of all that moves or replaces cells.
void provoke(Terminal& terminal) {
    const std::string picture = "\x1B[H\x1BPq#1;2;100;0;0#1!60~-!60~-!60~-!60~\x1B\\";
    terminal.setProgramStatusOsc(7777);
    for (const std::string& bytes :
         {"plain text that is long enough to go on in the next line"s, "\x1B[4hins\x1B[4l\xE6\xBC\xA2\xE5\xAD\x97"s,
          "\x1B[3;5H\xE6\xBC\xA2\x1B[3;6He\u0301\xE2\x9D\xA4\xEF\xB8\x8F\x1B[4h\xE6\xBC\xA2\x1B[4l"s,
          "\x1B[3@\x1B[2P\x1B[4X\x1B[2K\x1B[1J"s, "\x1B[2L\x1B[M\x1B[2S\x1B[T"s, "\x1B[2;4r\x1B[4H\n\n\x1BM\x1B[r"s,
          "\x1B[1;1;9;9$z\x1B[65;1;1;9;99$x\x1B[1;1;4;9;1;2;2;1$v\x1B[1;1;9;99;7$r\x1B[1;1;9;99;1$t"s,
          "\x1B[1;1;9;99${\x1B[2'}\x1B[2'~\x1B[ @\x1B[ A"s, "\x1B[?69h\x1B[3;9s\x1B[2L\x1B[2Mab\x1B[?69l"s,
          "\x1B#6double\x1B#8"s, "\x1B[?1049hfull\x1B[2J\x1B[?1049l\x1B[2J\x1B[3J"s, std::string(40, '\n')}) {
        terminal.feed("some text\r\nand more \xE6\xBC\xA2\x1B[H");
        select(terminal);
        // All in one call, so that what comes of the picture is in the midst of it.
        terminal.feed(picture + "\x1B[2;2H" + bytes + picture + bytes);
        terminal.feed("\x1B[6;1Hlong enough to come to stand on other lines when the width changes");
        select(terminal);
        terminal.resize(terminal.cols() == 20 ? 31 : 20, 6);
    }
    terminal.feed(
        osc("0;a") + osc("6;d") + osc("7;file:///x") + "\a" + osc("9;n") + osc("9;4;1;5") + osc("7777;r;s") +
        osc("22;wait") + osc("4;1;red;2;?") + osc("10;red;blue;green") + osc("21;foreground=?;1=?") + osc("52;c;aGk=") +
        osc("52;c;?") + osc("5522;type=read;dGV4dC9wbGFpbg==") + osc("5522;type=read;Lg==") + osc("5522;type=write") +
        osc("5522;type=wdata:mime=dGV4dC9wbGFpbg==;aGk=") + osc("5522;type=wdata") + osc("1337;File=inline=1:AAAA") +
        "\x1B_Ga=T,f=24,s=1,v=1;AAAA\x1B\\" + "\x1B[c\x1B[14t\x1B[21t\x1B[22t" + osc("2;b") +
        "\x1B[23t\x1B[1t\x1B[?2026h\x1B[?1000h\x1B[?25l\x1B[?25h\x1B[?25l\x1B[4 q\x1B[?2048h\x1B[?40;3h" +
        "\x1B[?9999z\x1BP+q544E;4e4f\x1B\\\x1BP$qm\x1B\\\x1BPZ\x1B\\\x1B[?1;5522;2004hshown");
    terminal.paste("pasted");
    terminal.feed("\x1B[?5522l\x1B[12l");
    terminal.paste("pasted");
    terminal.sendKey({.key = Key::up});
    terminal.themeChanged();
    terminal.feed("\x1B"
                  "c");
}

TEST(Terminal, MayBeResizedResetAndFedFromWithinEveryCall) {
    static std::vector<std::string> messages;
    setDiagnosticSink([](std::string_view message) { messages.emplace_back(message); });
    struct Act {
        const char* label;
        std::function<void(Terminal&)> act;
    };
    const std::vector<Act> acts = {
        {"nothing", {}},
        {"reset", [](Terminal& terminal) { terminal.reset(); }},
        {"a small size", [](Terminal& terminal) { terminal.resize(2, 1); }},
        {"another size", [](Terminal& terminal) { terminal.resize(terminal.cols() == 20 ? 44 : 20, 12); }},
        {"both", [](Terminal& terminal) {
             terminal.resize(3, 2);
             terminal.reset();
             terminal.feed("fed");
         }}};
    const auto run = [](std::string_view call, const Act& act) {
        Meddler host;
        host.act = act.act;
        host.wanted = call;
        Terminal terminal(host, {.cols = 20, .rows = 6, .screenReaderMode = true, .scrollback = 10});
        provoke(terminal);
        const std::string where = std::string(act.label) + " in " + std::string(call);
        host.act = {};
        terminal.feed("\x18\x1B\\\x1B[?1049h\x1B[99;99Hx");
        EXPECT_EQ(terminal.cols(), terminal.normalBuffer().cols()) << where;
        EXPECT_EQ(terminal.rows(), terminal.normalBuffer().rows()) << where;
        terminal.resize(20, 6);
        terminal.feed("\x1B"
                      "cend");
        EXPECT_EQ(terminal.lineText(0), "end") << where;
        return host.met;
    };
    const std::set<std::string_view> calls = run("", acts[0]);
    EXPECT_EQ(calls.size(), 45U) << "a call that no bytes provoke";
    for (const Act& act : acts) {
        run("", act);
        for (const std::string_view call : calls) {
            run(call, act);
        }
    }
    setDiagnosticSink(nullptr);
    EXPECT_EQ(messages, std::vector<std::string>());
}

} // namespace
} // namespace term
