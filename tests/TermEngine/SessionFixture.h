#pragma once

#include "TerminalFixture.h"

#include <string>
#include <string_view>
#include <vector>

namespace term {

/// A host with clipboards.
class ClipboardHost : public RecordingHost {
public:
    std::optional<std::string> content;
    bool answersLater = false;
    KittyClipboardCapabilities capabilities{};
    std::optional<std::vector<ClipboardData>> data{};
    KittyClipboardStatus written = KittyClipboardStatus::done;
    ClipboardPermission permission = ClipboardPermission::denied;
    std::optional<bool> trusts{};
    std::vector<KittyClipboardRequest> requests;
    std::optional<PasteControlBytes> pasteControls{};
    bool announces = true;

    std::optional<std::string> clipboardRead(Terminal&, std::string_view selections) override {
        calls.push_back("read " + std::string(selections));
        return content;
    }
    bool clipboardReadRequest(Terminal&, std::string_view selections) override {
        calls.push_back("request " + std::string(selections));
        return answersLater;
    }
    KittyClipboardCapabilities kittyClipboardCapabilities(Terminal&) override { return capabilities; }
    std::vector<std::string> kittyClipboardAvailableMimeTypes(Terminal&, ClipboardLocation) override {
        return {"text/plain"};
    }
    std::optional<std::vector<ClipboardData>> kittyClipboardRead(Terminal&, const KittyClipboardRead&) override {
        return data;
    }
    KittyClipboardStatus kittyClipboardWrite(Terminal&, KittyClipboardWrite write) override {
        calls.push_back("write " + std::string(write.data.at(0).bytes.begin(), write.data.at(0).bytes.end()));
        return written;
    }
    ClipboardPermission kittyClipboardRequestPermission(Terminal&, const KittyClipboardRequest& request) override {
        requests.push_back(request);
        return permission;
    }
    bool kittyClipboardSendPasteEvent(Terminal&, ClipboardLocation) override { return announces; }
    std::optional<bool> isProcessTrusted(Terminal&) override { return trusts; }
    std::optional<PasteControlBytes> terminalControlBytesForPaste(Terminal&) override { return pasteControls; }
    void selectionChanged(Terminal& source) override {
        calls.push_back("selection " + source.selection().text(source.buffer()));
    }
    void programStatusChanged(Terminal&, const std::vector<std::string>& records) override {
        std::string all = "status";
        for (const std::string& record : records) {
            all += " [" + record + "]";
        }
        calls.push_back(all);
    }
};

[[nodiscard]] inline std::string osc(const std::string& body) {
    return "\x1B]" + body + "\x1B\\";
}

struct Session {
    ClipboardHost host;
    Terminal terminal;
    explicit Session(TerminalOptions options = {}) : terminal(host, std::move(options)) {}
    std::string ask(std::string_view bytes) {
        terminal.feed(bytes);
        return host.takeReplies();
    }
    std::vector<std::string> calls(std::string_view bytes) {
        terminal.feed(bytes);
        return std::exchange(host.calls, {});
    }
};

using Calls = std::vector<std::string>;

} // namespace term
