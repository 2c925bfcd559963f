#include "TermEngine/Notifications.h"

#include "TermEngine/Base64.h"
#include "TermEngine/Encoding_p.h"
#include "TermEngine/OscPayloads.h"

#include <algorithm>
#include <utility>

namespace term {
namespace {

constexpr size_t mostUnfinished = 16;
/// More than all keys with their longest values take.
constexpr size_t longestMetadata = 4096;
/// Of base64, that hold as much as a text may keep.
constexpr size_t mostGroups = maximumTextBytes / 3 + 1;

void setActions(NotificationRequest& request, std::string_view actions) {
    while (!actions.empty()) {
        std::string_view action = takeField(actions, ',');
        const bool isOn = !action.starts_with('-');
        action.remove_prefix(isOn ? 0 : 1);
        if (action == "focus") {
            request.focuses = isOn;
        } else if (action == "report") {
            request.reports = isOn;
        }
    }
}

void appendText(std::string& whole, std::string_view piece) {
    whole = cleanText(whole.append(piece.substr(0, maximumTextBytes)));
}

} // namespace

std::optional<NotificationRequest> NotificationAssembler::append(std::string_view payload) {
    const size_t semicolon = payload.find(';');
    if (semicolon == std::string_view::npos || semicolon > longestMetadata) {
        return std::nullopt;
    }
    std::string identifier = "0";
    std::string_view actions;
    bool isDone = true;
    bool isBase64 = false;
    std::string_view kind = "title";
    for (std::string_view rest = payload.substr(0, semicolon); !rest.empty();) {
        std::string_view value = takeField(rest, ':');
        const std::string_view key = takeField(value, '=');
        if (key == "i") {
            identifier = identifierOf(value);
        } else if (key == "a") {
            actions = value;
        } else if (key == "d") {
            isDone = value != "0";
        } else if (key == "e") {
            isBase64 = value == "1";
        } else if (key == "p") {
            kind = value;
        }
    }
    std::string_view text = payload.substr(semicolon + 1);
    std::vector<uint8_t> decoded;
    if (isBase64) {
        // What is no base64 is no text, but may be the last piece; of a long one the front is kept.
        decoded = decodeBase64(text.substr(0, mostGroups * 4), mostGroups * 3).value_or(std::vector<uint8_t>());
        text = {reinterpret_cast<const char*>(decoded.data()), decoded.size()};
    }
    auto request = std::ranges::find(m_unfinished, identifier, &NotificationRequest::identifier);
    if (request == m_unfinished.end()) {
        if (m_unfinished.size() == mostUnfinished) {
            m_unfinished.pop_front();
        }
        request = m_unfinished.insert(m_unfinished.end(), NotificationRequest{.identifier = identifier});
    }
    setActions(*request, actions);
    if (kind == "title") {
        appendText(request->title, text);
    } else if (kind == "body") {
        appendText(request->body, text);
    }
    if (!isDone) {
        return std::nullopt;
    }
    NotificationRequest complete = std::move(*request);
    m_unfinished.erase(request);
    if (complete.title.empty()) {
        std::swap(complete.title, complete.body);
    }
    return complete.title.empty() ? std::nullopt : std::optional(complete);
}

std::optional<NotificationRequest> parseUrxvtNotification(std::string_view payload) {
    if (takeField(payload, ';') != "notify") {
        return std::nullopt;
    }
    const std::string_view title = takeField(payload, ';');
    NotificationRequest request{"0", cleanText(title), cleanText(payload)};
    return request.title.empty() && request.body.empty() ? std::nullopt : std::optional(request);
}

std::optional<NotificationRequest> parseITermNotification(std::string_view payload) {
    const std::string_view number = payload.substr(0, payload.find(';'));
    const bool isNumber = !number.empty() && number.find_first_not_of("0123456789") == std::string_view::npos;
    NotificationRequest request{"0", cleanText(payload), {}};
    return isNumber || request.title.empty() ? std::nullopt : std::optional(request);
}

} // namespace term
