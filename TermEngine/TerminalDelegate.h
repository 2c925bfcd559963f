#pragma once

#include "TermEngine/CharData.h"
#include "TermEngine/EscapeSequenceParser.h"
#include "TermEngine/InputEncoder.h"
#include "TermEngine/KittyClipboard.h"
#include "TermEngine/Notifications.h"
#include "TermEngine/OscPayloads.h"
#include "TermEngine/Palette.h"
#include "TermEngine/RgbaImage.h"
#include "TermEngine/TerminalOptions.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace term {

class Terminal;

/// CSI t: what a program asks of the window that shows the terminal.
struct WindowCommand {
    enum class Kind : std::uint8_t {
        deiconify,
        iconify,
        move,         ///< first: x, second: y, in pixels
        resizePixels, ///< first: height, second: width; 0: as big as the screen, negative: as it is
        raise,
        lower,
        refresh,
        resizeCells, ///< first: rows, second: columns; 0: as big as the screen, negative: as it is
        restoreMaximized,
        maximize,
        maximizeVertically,
        maximizeHorizontally,
        leaveFullScreen,
        enterFullScreen,
        toggleFullScreen,
        reportState,        ///< answer: 1 shown or 2 iconified
        reportPosition,     ///< answer: x and y
        reportPixelSize,    ///< answer: height and width
        reportScreenPixels, ///< answer: height and width
        reportScreenCells,  ///< answer: rows and columns
    };
    Kind kind = Kind::refresh;
    int first = 0;
    int second = 0;
    bool operator==(const WindowCommand&) const = default;
};

struct WindowAnswer {
    int first = 0;
    int second = 0;
};

struct CellSize {
    int width = 0;
    int height = 0;
};

struct ClipboardContent {
    std::string selections;         ///< letters of OSC 52: c, p, q, s, 0 to 7
    std::vector<std::uint8_t> data; ///< empty: the selections are cleared
};

/// What the clipboards of a host can do under kitty's clipboard protocol.
struct KittyClipboardCapabilities {
    bool reads = true;
    bool writes = true;
    bool hasPrimary = false;
};

/// What a program asks of the clipboard that the user may be asked about.
struct KittyClipboardRequest {
    std::uint64_t number = 0; ///< for `Terminal::resolveKittyClipboardPermission`
    std::variant<KittyClipboardRead, KittyClipboardWrite> action{};

    [[nodiscard]] bool isWrite() const { return std::holds_alternative<KittyClipboardWrite>(action); }
    [[nodiscard]] ClipboardLocation location() const {
        return std::visit([](const auto& some) { return some.location; }, action);
    }
    [[nodiscard]] bool needsPermission() const {
        return std::visit([](const auto& some) { return some.needsPermission; }, action);
    }
};

enum class ClipboardPermission : std::uint8_t { denied, granted, later };

/// How large an image is to be shown, in pixels; 0: as large as it is.
struct ImageRequest {
    int width = 0;
    int height = 0;
    bool preserveAspectRatio = true;
    std::size_t limitBytes = 0; ///< of the pixels: a larger one is not kept
};

enum class TerminalVisibility : std::uint8_t { potentiallyVisible = 1, notVisible = 2 };
enum class ColorScheme : std::uint8_t { dark = 1, light = 2 };

/// The host of a terminal. All calls come within `Terminal::feed` or another call of the host, on its thread. A host
/// may resize, reset and feed the terminal from within a call.
class TerminalDelegate {
public:
    virtual ~TerminalDelegate() = default;
    /// Bytes for the child: of keys, the mouse and pastes, and all else that the user does.
    virtual void send(Terminal& source, Bytes data) = 0;
    /// An answer to what the child asked. As it may ask without end and not read, a host may drop some of these.
    virtual void reply(Terminal& source, Bytes data) { send(source, data); }

    virtual void setTerminalTitle(Terminal&, const std::string& /*title*/) {}
    virtual void setTerminalIconTitle(Terminal&, const std::string& /*title*/) {}
    virtual void hostCurrentDirectoryUpdated(Terminal&) {}
    virtual void hostCurrentDocumentUpdated(Terminal&) {}
    virtual void bell(Terminal&) {}
    virtual void notify(Terminal&, const NotificationRequest&) {}
    virtual void progressReport(Terminal&, const ProgressReport&) {}
    /// The string that `Terminal::setProgramStatusOsc` chose has come with other records.
    virtual void programStatusChanged(Terminal&, const std::vector<std::string>& /*records*/) {}
    virtual void sizeChanged(Terminal&) {}
    virtual void bufferActivated(Terminal&) {}
    virtual void cursorStyleChanged(Terminal&, CursorStyle /*newStyle*/) {}
    virtual void showCursor(Terminal&) {}
    virtual void hideCursor(Terminal&) {}
    virtual void mouseModeChanged(Terminal&) {}
    virtual void selectionChanged(Terminal&) {}
    /// In the options' screen reader mode: the text that a call of `Terminal::feed` has written, UTF-8, without
    /// controls and without attributes. It begins with a line feed or a blank where it goes on elsewhere than the text
    /// before ended; of a flood of output, only the beginning comes.
    virtual void textWritten(Terminal&, const std::string& /*text*/) {}
    virtual void pointerShapeChanged(Terminal&, const std::string& /*name*/) {}

    /// Without an index, any colours may have changed.
    virtual void colorChanged(Terminal&, std::optional<int> /*idx*/) {}
    /// Nothing: the program gave up its own colour.
    virtual void setForegroundColor(Terminal&, std::optional<RgbColor>) {}
    virtual void setBackgroundColor(Terminal&, std::optional<RgbColor>) {}
    virtual void setCursorColor(Terminal&, std::optional<RgbColor>) {}
    /// The colours of the theme; nothing: those of xterm. Asked when colours are asked for the first time, and after
    /// `Terminal::themeChanged`.
    virtual std::optional<BaseColors> getColors(Terminal&) { return {}; }

    /// Other images are shown, or elsewhere, other than by scrolling; or an animation has begun.
    virtual void imagesChanged(Terminal&) {}
    /// The pixels of a new image have come, which `Terminal::images` names by its id: a host that draws from textures
    /// may make one.
    virtual void createImageFromBitmap(
        Terminal&, std::uint32_t /*imageId*/, const std::shared_ptr<const RgbaImage>& /*pixels*/) {}

    /// An image file that the engine can't decode itself (it can PNG); nothing: it is not shown.
    virtual std::optional<RgbaImage> createImage(Terminal&, Bytes /*data*/, const ImageRequest&) { return {}; }

    // OSC 52. Whatever the policy of the options refuses is not asked for.
    virtual void clipboardCopy(Terminal&, const ClipboardContent&) {}
    /// What a program gets that asks for the clipboard; nothing: see below.
    virtual std::optional<std::string> clipboardRead(Terminal&, std::string_view /*selections*/) { return {}; }
    /// Whether the host will call `Terminal::answerClipboardRead`; else there is no answer at all.
    virtual bool clipboardReadRequest(Terminal&, std::string_view /*selections*/) { return false; }

    // kitty's clipboard protocol.
    virtual KittyClipboardCapabilities kittyClipboardCapabilities(Terminal&) { return {}; }
    virtual std::vector<std::string> kittyClipboardAvailableMimeTypes(Terminal&, ClipboardLocation) { return {}; }
    /// What there is of the types; nothing: the program may not have it.
    virtual std::optional<std::vector<ClipboardData>> kittyClipboardRead(Terminal&, const KittyClipboardRead&) {
        return {};
    }
    virtual KittyClipboardStatus kittyClipboardWrite(Terminal&, KittyClipboardWrite) {
        return KittyClipboardStatus::notPermitted;
    }
    /// Where the policy is to ask. For `later`, the host calls `Terminal::resolveKittyClipboardPermission`.
    virtual ClipboardPermission kittyClipboardRequestPermission(Terminal&, const KittyClipboardRequest&) {
        return ClipboardPermission::denied;
    }
    /// Whether a program that wants to (mode 5522) is told of a paste and asks for what it needs of it; else it gets
    /// the text.
    virtual bool kittyClipboardSendPasteEvent(Terminal&, ClipboardLocation) { return true; }

    /// What frames a paste, and what of it would act upon the line discipline; nothing: as usual.
    virtual std::optional<PasteControlBytes> terminalControlBytesForPaste(Terminal&) { return {}; }

    virtual std::optional<CellSize> cellSizeInPixels(Terminal&) { return {}; }
    /// The answer, to a command that reports.
    virtual std::optional<WindowAnswer> windowCommand(Terminal&, const WindowCommand&) { return {}; }
    /// Whether a program may read back the titles, which any program, and any file that was shown, can have set.
    virtual bool allowsTitleReports(Terminal&) { return false; }
    /// Whether lines of 132 columns and other sizes may be asked for.
    virtual bool allowsResize(Terminal&, int /*cols*/, int /*rows*/) { return false; }
    /// Whether the user trusts the program that runs: then it needs no permission for the clipboard. One that is
    /// distrusted can't name files. Nothing: unknown.
    virtual std::optional<bool> isProcessTrusted(Terminal&) { return {}; }

    /// The host calls `Terminal::synchronizedOutputTimedOut` then, unless the output ended before.
    virtual void scheduleSynchronizedOutputTimeout(Terminal&, std::chrono::milliseconds /*afterMilliseconds*/) {}
    virtual void synchronizedOutputChanged(Terminal&, bool /*active*/) {}

    [[nodiscard]] virtual bool isLogging() const { return false; }
    virtual void log(Terminal&, std::string_view /*message*/) {}
};

} // namespace term
