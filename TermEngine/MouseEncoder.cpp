#include "TermEngine/MouseEncoder.h"

#include "TermEngine/Encoding_p.h"

#include <algorithm>

namespace term {
namespace {

bool isWheel(MouseButton button) {
    return button >= MouseButton::wheelUp && button <= MouseButton::wheelRight;
}

bool isReported(const MouseEvent& event, MouseTracking tracking) {
    const bool hasButton = event.button != MouseButton::none;
    if (isWheel(event.button) && event.type != MouseEventType::press) {
        return false;
    }
    switch (tracking) {
    case MouseTracking::none:
        return false;
    case MouseTracking::x10:
        return event.type == MouseEventType::press && event.button <= MouseButton::right;
    case MouseTracking::normal:
        return event.type != MouseEventType::motion && hasButton;
    case MouseTracking::buttonEvent:
        return hasButton;
    case MouseTracking::anyEvent:
        return hasButton || event.type == MouseEventType::motion;
    }
    return false;
}

int buttonCode(const MouseEvent& event, MouseTracking tracking, bool namesReleasedButton) {
    const bool isAnonymous = event.type == MouseEventType::release && !namesReleasedButton;
    int code = static_cast<int>(isAnonymous ? MouseButton::none : event.button);
    if (tracking != MouseTracking::x10) {
        const auto add = [&](bool condition, int bit) { code += condition ? bit : 0; };
        add(event.modifiers.has(KeyModifiers::shift), 4);
        add(event.modifiers.hasAny(KeyModifiers::alt | KeyModifiers::meta), 8);
        add(event.modifiers.has(KeyModifiers::ctrl), 16);
        add(event.type == MouseEventType::motion, 32);
    }
    return code;
}

/// CSI code ; x ; y final
std::string parameters(std::string introducer, int code, int x, int y, char final) {
    std::string out = std::move(introducer);
    appendNumber(out, code);
    out.push_back(';');
    appendNumber(out, x);
    out.push_back(';');
    appendNumber(out, y);
    out.push_back(final);
    return out;
}

} // namespace

std::string encodeMouse(const MouseEvent& event, MouseTracking tracking, MouseEncoding encoding, ControlBits controls) {
    if (!isReported(event, tracking)) {
        return {};
    }
    static constexpr int largestCoordinate = 1'000'000;
    const auto fromOne = [](int coordinate) { return std::clamp(coordinate, 0, largestCoordinate) + 1; };
    const int column = fromOne(event.column);
    const int row = fromOne(event.row);
    const char final = event.type == MouseEventType::release ? 'm' : 'M';
    const std::string csi(csiOf(controls));
    switch (encoding) {
    case MouseEncoding::sgr:
        return parameters(csi + '<', buttonCode(event, tracking, true), column, row, final);
    case MouseEncoding::sgrPixels:
        return parameters(csi + '<', buttonCode(event, tracking, true), fromOne(event.x), fromOne(event.y), final);
    case MouseEncoding::urxvt:
        return parameters(csi, buttonCode(event, tracking, false) + 32, column, row, 'M');
    case MouseEncoding::standard:
    case MouseEncoding::utf8:
        break;
    }
    const bool isUtf8 = encoding == MouseEncoding::utf8;
    if (std::max(column, row) > (isUtf8 ? 2015 : 223)) {
        return {};
    }
    std::string out = csi + 'M';
    for (const int value : {buttonCode(event, tracking, false), column, row}) {
        const auto shown = static_cast<char32_t>(value + 32);
        isUtf8 ? appendUtf8(out, shown) : out.push_back(static_cast<char>(shown));
    }
    return out;
}

} // namespace term
