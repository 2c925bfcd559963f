#include "TermEngine/Terminal.h"

#include <algorithm>
#include <array>

namespace term {
namespace {

std::string numbers(std::initializer_list<int> values) {
    std::string text;
    for (const int value : values) {
        text += (text.empty() ? "" : ";") + std::to_string(value);
    }
    return text;
}

std::string hexOf(std::string_view text) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string hex;
    for (const char c : text) {
        hex += digits[static_cast<std::uint8_t>(c) >> 4];
        hex += digits[static_cast<std::uint8_t>(c) & 15];
    }
    return hex;
}

} // namespace

/// A short DCS string that is answered when it is whole.
class Terminal::StringRequest final : public DcsHandler {
public:
    using Answer = void (Terminal::*)(const std::string&);
    StringRequest(Terminal& terminal, Answer answer) : m_terminal(terminal), m_answer(answer) {}
    void put(Bytes data) override {
        const std::size_t room = maximumTextBytes - m_request.size();
        m_request.append(reinterpret_cast<const char*>(data.data()), std::min(data.size(), room));
    }
    void unhook() override { (m_terminal.*m_answer)(m_request); }

private:
    Terminal& m_terminal;
    Answer m_answer;
    std::string m_request;
};

std::unique_ptr<DcsHandler> Terminal::dcsHandler(
    char final, const CsiParameters& parameters, std::string_view collected) {
    if (final == 'q' && collected.empty()) {
        return sixelHandler(parameters);
    }
    if (final == 'q' && collected == "$") {
        return std::make_unique<StringRequest>(*this, &Terminal::requestStatusString);
    }
    if (final == 'q' && collected == "+") {
        return std::make_unique<StringRequest>(*this, &Terminal::requestTermcap);
    }
    if (final == 't' && collected == "$" && parameters.at(0) == 1) {
        return std::make_unique<StringRequest>(*this, &Terminal::restoreCursorInformation);
    }
    if (final == 't' && collected == "$" && parameters.at(0) == 2) {
        return std::make_unique<StringRequest>(*this, &Terminal::restoreTabStops);
    }
    return nullptr;
}

void Terminal::reply(std::string_view text) {
    m_delegate.reply(*this, Bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

void Terminal::sendCsi(std::string_view body) {
    reply(std::string(m_modes.eightBitControls ? "\x9B" : "\x1B[").append(body));
}

void Terminal::sendDcs(std::string_view body) {
    const bool eight = m_modes.eightBitControls;
    reply(std::string(eight ? "\x90" : "\x1BP").append(body).append(eight ? "\x9C" : "\x1B\\"));
}

std::string Terminal::oscString(std::string_view body, StringEnd end) const {
    const bool eight = m_modes.eightBitControls;
    const char* terminator = end == StringEnd::bell ? "\x07" : eight ? "\x9C" : "\x1B\\";
    return std::string(eight ? "\x9D" : "\x1B]").append(body).append(terminator);
}

/// The answer ends as the question did.
void Terminal::sendOsc(std::string_view body, StringEnd end) {
    reply(oscString(body, end));
}

/// DA1, DA2 and DA3, by what was collected.
void Terminal::cmdSendDeviceAttributes(std::string_view collected, const CsiParameters& parameters) {
    const bool isPlain = parameters.count == 1 && parameters.at(0) == 0;
    if ((!isPlain || !collected.empty()) && isLogging()) {
        std::string message = "SendDeviceAttributes got ";
        for (int i = 0; i < parameters.count; ++i) {
            message += (i == 0 ? "" : ",") + std::to_string(parameters.at(i));
        }
        log(message.append(" and ").append(collected));
    }
    if (collected == ">") {
        sendSecondaryAttributes(parameters);
    } else if (collected == "=" && parameters.at(0) == 0) {
        sendDcs("!|00000000");
    } else if (collected.empty() && isPlain) {
        sendPrimaryAttributes();
    }
}

void Terminal::sendPrimaryAttributes() {
    const std::string_view name = m_options.termName;
    if (name.starts_with("xterm")) {
        sendCsi(m_options.enableSixelReported ? "?65;4;1;2;6;21;22;17;28c" : "?65;1;2;6;21;22;17;28c");
    } else if (name.starts_with("screen") || name.starts_with("rxvt-unicode")) {
        sendCsi("?1;2c");
    } else if (name.starts_with("linux")) {
        sendCsi("?6c");
    }
}

void Terminal::sendSecondaryAttributes(const CsiParameters& parameters) {
    if (parameters.count > 1 || parameters.at(0) != 0) {
        if (isLogging()) {
            log("Info: Got a CSI > c with an unknown set of argument");
        }
        return;
    }
    const std::string_view name = m_options.termName;
    if (name.starts_with("xterm")) {
        sendCsi(">0;276;0c");
    } else if (name.starts_with("rxvt-unicode")) {
        sendCsi(">85;95;0c");
    } else if (name.starts_with("screen")) {
        sendCsi(">83;40003;0c");
    } else if (name.starts_with("linux")) {
        sendCsi(std::to_string(parameters.at(0)) + "c");
    }
}

void Terminal::cmdDeviceStatus(const CsiParameters& parameters) {
    if (parameters.at(0) == 5) {
        sendCsi("0n");
    } else if (parameters.at(0) == 6) {
        reportCursor(false);
    }
}

void Terminal::reportCursor(bool isPrivate) {
    const Buffer& b = *m_buffer;
    int row = b.y() + 1;
    int col = b.x() + 1;
    if (m_modes.origin) {
        row -= b.scrollTop();
        col -= b.marginLeft();
    }
    const std::string place = numbers({std::max(row, 1), std::max(col, 1)});
    sendCsi(isPrivate ? "?" + place + ";1R" : place + "R");
}

void Terminal::privateDeviceStatus(const CsiParameters& parameters) {
    struct Fixed {
        int request;
        const char* reply;
    };
    static constexpr std::array fixed = std::to_array<Fixed>({
        {15, "?10n"},
        {25, "?21n"},
        {26, "?27;1;0;0n"},
        {55, "?53n"},
        {56, "?57;1n"},
        {62, "0*{"},
        {75, "?70n"},
        {85, "?83n"},
    });
    const int request = parameters.at(0);
    if (const auto found = std::ranges::find(fixed, request, &Fixed::request); found != fixed.end()) {
        sendCsi(found->reply);
    } else if (request == 6) {
        reportCursor(true);
    } else if (request == 63) {
        sendDcs(std::to_string(parameters.at(1)) + "!~0000");
    } else if (request == 996) {
        reportColorScheme();
    } else if (request == 998) {
        reportTerminalVisibility();
    }
}

void Terminal::reportColorScheme() {
    sendCsi("?997;" + std::to_string(static_cast<int>(m_colorScheme)) + "n");
}

void Terminal::reportTerminalVisibility() {
    sendCsi("?999;" + std::to_string(static_cast<int>(m_visibility)) + "n");
}

void Terminal::cmdXTVERSION() {
    sendDcs(">|" + (m_xtVersionIdentity.empty() ? "unknown" : m_xtVersionIdentity) + "(v1.99.1)");
}

/// DECRQM: 0 not known, 1 set, 2 reset, 3 and 4 the same for good.
void Terminal::reportMode(int mode, bool isPrivate) {
    const std::optional<bool> state = isPrivate ? decPrivateMode(mode) : ansiMode(mode);
    const int value = !state ? 0 : *state ? 1 : 2;
    sendCsi((isPrivate ? "?" : "") + numbers({mode, value}) + "$y");
}

/// XTQMODKEYS: modifyKeyboard, modifyCursorKeys and modifyFunctionKeys are always what they are at first.
void Terminal::reportKeyModifiers(int resource) {
    const std::array<int, 5> values = {0, 2, 2, -1, m_modes.modifyOtherKeys};
    if (resource < static_cast<int>(values.size()) && values[static_cast<std::size_t>(resource)] >= 0) {
        sendCsi(">" + numbers({resource, values[static_cast<std::size_t>(resource)]}) + "m");
    }
}

/// Mode 2048.
void Terminal::reportSize() {
    const CellSize cell = m_delegate.cellSizeInPixels(*this).value_or(CellSize{});
    sendCsi(numbers({48, rows(), cols(), rows() * cell.height, cols() * cell.width}) + "t");
}

/// XTSMGRAPHICS: colour registers and the size of a sixel picture can be read, and not changed.
void Terminal::reportGraphics(const CsiParameters& parameters) {
    const int item = parameters.at(0);
    const int action = parameters.at(1);
    if (item != 1 && item != 2) {
        sendCsi("?" + numbers({item, 1, 0}) + "S");
    } else if (action != 1 && action != 2 && action != 4) {
        sendCsi("?" + numbers({item, action == 3 ? 3 : 2, 0}) + "S");
    } else if (item == 1) {
        sendCsi("?1;0;1024S");
    } else {
        const std::optional<CellSize> cell = m_delegate.cellSizeInPixels(*this);
        const bool isLimit = action == 4 || !cell;
        sendCsi(
            "?" + numbers({2, 0, isLimit ? 10000 : cols() * cell->width, isLimit ? 10000 : rows() * cell->height}) +
            "S");
    }
}

void Terminal::requestStatusString(const std::string& request) {
    const Buffer& b = *m_buffer;
    const auto answer = [&](const std::string& value) { sendDcs("1$r" + value + request); };
    // What is sent back of the request has been compared with a fixed text.
    if (request == "m") {
        answer(attribute().toSgr());
    } else if (request == "r") {
        answer(numbers({b.scrollTop() + 1, b.scrollBottom() + 1}));
    } else if (request == "s") {
        answer(numbers({b.marginLeft() + 1, b.marginRight() + 1}));
    } else if (request == "t" || request == "*|") {
        answer(std::to_string(b.rows()));
    } else if (request == "$|") {
        answer(std::to_string(b.cols()));
    } else if (request == "\"p") {
        answer(numbers({m_conformance, m_modes.eightBitControls ? 0 : 1}));
    } else if (request == "\"q") {
        answer(m_isProtected ? "1" : "0");
    } else if (request == " q") {
        answer(std::to_string(static_cast<int>(m_cursorStyle) + 1));
    } else if (request == "*x") {
        answer(m_changesRectangles ? "2" : "1");
    } else {
        if (isLogging()) {
            log("TermEngine: Unknown DCS + $q" + request);
        }
        sendDcs("0$r");
    }
}

/// XTGETTCAP
void Terminal::requestTermcap(const std::string& request) {
    for (const std::string& answer : answerTermcapRequest(request, m_options.termName)) {
        sendDcs(answer);
    }
}

void Terminal::cmdWindowOptions(const CsiParameters& parameters) {
    using Kind = WindowCommand::Kind;
    const int function = parameters.at(0);
    const auto ask = [&](Kind kind, int first = 0, int second = 0) {
        m_delegate.windowCommand(*this, {kind, first, second});
    };
    const auto pick = [&](std::initializer_list<Kind> kinds) {
        if (const int index = parameters.at(1); index >= 0 && index < static_cast<int>(kinds.size())) {
            ask(kinds.begin()[index]);
        }
    };
    const auto sizeOf = [&](int index) { return index < parameters.count ? parameters.at(index) : -1; };
    switch (function) {
    case 1:
        ask(Kind::deiconify);
        break;
    case 2:
        ask(Kind::iconify);
        break;
    case 3:
        ask(Kind::move, parameters.at(1), parameters.at(2));
        break;
    case 4:
        ask(Kind::resizePixels, sizeOf(1), sizeOf(2));
        break;
    case 5:
        ask(Kind::raise);
        break;
    case 6:
        ask(Kind::lower);
        break;
    case 7:
        ask(Kind::refresh);
        break;
    case 8:
        ask(Kind::resizeCells, sizeOf(1), sizeOf(2));
        break;
    case 9:
        pick({Kind::restoreMaximized, Kind::maximize, Kind::maximizeVertically, Kind::maximizeHorizontally});
        break;
    case 10:
        pick({Kind::leaveFullScreen, Kind::enterFullScreen, Kind::toggleFullScreen});
        break;
    case 22:
        pushTitle(parameters.at(1));
        break;
    case 23:
        popTitle(parameters.at(1));
        break;
    default:
        if (function >= 24) { // DECSLPP
            ask(Kind::resizeCells, function, -1);
        } else {
            reportWindow(function);
        }
        break;
    }
}

void Terminal::reportWindow(int function) {
    using Kind = WindowCommand::Kind;
    const auto ask = [&](Kind kind) { return m_delegate.windowCommand(*this, {kind, 0, 0}); };
    const auto report = [&](Kind kind, int code) {
        if (const std::optional<WindowAnswer> answer = ask(kind)) {
            sendCsi(numbers({code, answer->first, answer->second}) + "t");
        }
    };
    switch (function) {
    case 11:
        if (const std::optional<WindowAnswer> answer = ask(Kind::reportState)) {
            sendCsi(answer->first == 2 ? "2t" : "1t");
        }
        break;
    case 13:
        report(Kind::reportPosition, 3);
        break;
    case 14:
        if (const std::optional<WindowAnswer> answer = ask(Kind::reportPixelSize)) {
            sendCsi(numbers({4, answer->first, answer->second}) + "t");
        } else if (const std::optional<CellSize> cell = m_delegate.cellSizeInPixels(*this)) {
            sendCsi(numbers({4, rows() * cell->height, cols() * cell->width}) + "t");
        }
        break;
    case 15:
        report(Kind::reportScreenPixels, 5);
        break;
    case 16:
        if (const std::optional<CellSize> cell = m_delegate.cellSizeInPixels(*this)) {
            sendCsi(numbers({6, cell->height, cell->width}) + "t");
        }
        break;
    case 18:
        sendCsi(numbers({8, rows(), cols()}) + "t");
        break;
    case 19:
        report(Kind::reportScreenCells, 9);
        break;
    case 20:
        reportTitle('L', m_iconTitle);
        break;
    case 21:
        reportTitle('l', m_title);
        break;
    default:
        break;
    }
}

void Terminal::reportTitle(char kind, const std::string& title) {
    if (m_delegate.allowsTitleReports(*this)) {
        sendOsc(kind + (m_titleModes[1] ? hexOf(title) : title), StringEnd::stringTerminator);
    }
}

} // namespace term
