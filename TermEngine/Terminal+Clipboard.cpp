#include "TermEngine/Base64.h"
#include "TermEngine/OscPayloads.h"
#include "TermEngine/Terminal.h"

#include <algorithm>

namespace term {
namespace {

constexpr std::size_t mostQuestions = 8;

bool mayWrite(KittyClipboardPolicy policy) {
    return policy != KittyClipboardPolicy::deny;
}
bool mayRead(KittyClipboardPolicy policy) {
    return mayWrite(policy) && policy != KittyClipboardPolicy::writeOnly;
}

} // namespace

/// OSC 52
void Terminal::clipboard(std::string_view payload, StringEnd end) {
    const auto limit = static_cast<std::size_t>(std::int64_t{m_options.kittyClipboardWriteLimitBytes});
    const std::optional<ClipboardReport> report = parseClipboard(payload, limit);
    if (!report) {
        return;
    }
    if (report->kind != ClipboardReport::Kind::query) {
        if (mayWrite(m_options.kittyClipboardPolicy)) {
            m_delegate.clipboardCopy(*this, {report->selections, report->data});
        }
        return;
    }
    if (!mayRead(m_options.kittyClipboardPolicy) || m_clipboardQuestions.size() == mostQuestions) {
        return;
    }
    if (const std::optional<std::string> content = m_delegate.clipboardRead(*this, report->selections)) {
        sendOsc("52;" + report->selections + ";" + encodeBase64(*content), end);
        return;
    }
    const std::uint64_t number = ++m_questionNumber;
    m_clipboardQuestions.push_back({number, report->selections, end});
    if (!m_delegate.clipboardReadRequest(*this, report->selections)) {
        // It may be gone, with a reset or an answer.
        std::erase_if(m_clipboardQuestions, [number](const auto& question) { return question.number == number; });
    }
}

void Terminal::answerClipboardRead(const std::optional<std::string>& content) {
    if (m_clipboardQuestions.empty()) {
        return;
    }
    const ClipboardQuestion question = m_clipboardQuestions.front();
    m_clipboardQuestions.erase(m_clipboardQuestions.begin());
    if (content) {
        sendOsc("52;" + question.selections + ";" + encodeBase64(*content), question.end);
    }
}

/// OSC 5522
void Terminal::kittyClipboard(std::string_view payload, StringEnd end) {
    KittyClipboard::Outcome outcome = m_kittyClipboard.handle(payload);
    sendAll(outcome.replies, end);
    KittyClipboardRequest request;
    if (outcome.read) {
        request.action = std::move(*outcome.read);
    } else if (outcome.write) {
        request.action = std::move(*outcome.write);
    } else {
        return;
    }
    const KittyClipboardCapabilities host = m_delegate.kittyClipboardCapabilities(*this);
    if (!(request.isWrite() ? host.writes : host.reads) ||
        (request.location() == ClipboardLocation::primary && !host.hasPrimary)) {
        refuse(request, KittyClipboardStatus::notSupported, end);
    } else if (!request.needsPermission() || m_delegate.isProcessTrusted(*this) == true) {
        grant(std::move(request), end);
    } else if (
        m_permissions.size() == mostQuestions ||
        (request.isWrite() &&
         std::ranges::any_of(m_permissions, [](const auto& some) { return some.second->request.isWrite(); }))) {
        refuse(request, KittyClipboardStatus::busy, end);
    } else {
        request.number = ++m_permissionNumber;
        const std::uint64_t number = request.number;
        // A reset may forget it while the host has it.
        const auto kept = std::make_shared<PendingPermission>(PendingPermission{std::move(request), end});
        m_permissions.emplace(number, kept);
        switch (m_delegate.kittyClipboardRequestPermission(*this, kept->request)) {
        case ClipboardPermission::denied:
            resolveKittyClipboardPermission(number, ClipboardPermission::denied);
            break;
        case ClipboardPermission::granted:
            resolveKittyClipboardPermission(number, ClipboardPermission::granted);
            break;
        case ClipboardPermission::later:
            break;
        }
    }
}

void Terminal::resolveKittyClipboardPermission(std::uint64_t number, ClipboardPermission permission) {
    if (permission == ClipboardPermission::later) {
        return;
    }
    auto pending = m_permissions.extract(number);
    if (pending.empty()) {
        return;
    }
    PendingPermission& asked = *pending.mapped();
    if (permission == ClipboardPermission::granted) {
        grant(std::move(asked.request), asked.end);
    } else {
        refuse(asked.request, KittyClipboardStatus::notPermitted, asked.end);
    }
}

void Terminal::grant(KittyClipboardRequest request, StringEnd end) {
    if (auto* write = std::get_if<KittyClipboardWrite>(&request.action)) {
        const KittyClipboardWrite head{.id = write->id};
        const KittyClipboardStatus status = m_delegate.kittyClipboardWrite(*this, std::move(*write));
        sendOsc(KittyClipboard::answer(head, status), end);
        return;
    }
    const auto& read = std::get<KittyClipboardRead>(request.action);
    const std::vector<std::string> types = read.wantsTypes
                                               ? m_delegate.kittyClipboardAvailableMimeTypes(*this, read.location)
                                               : std::vector<std::string>();
    std::vector<ClipboardData> data;
    if (!read.mimeTypes.empty()) {
        auto found = m_delegate.kittyClipboardRead(*this, read);
        if (!found) {
            refuse(request, KittyClipboardStatus::notPermitted, end);
            return;
        }
        data = std::move(*found);
    }
    sendAll(KittyClipboard::answer(read, types, data), end);
}

void Terminal::refuse(const KittyClipboardRequest& request, KittyClipboardStatus status, StringEnd end) {
    if (const auto* write = std::get_if<KittyClipboardWrite>(&request.action)) {
        sendOsc(KittyClipboard::answer(*write, status), end);
    } else {
        sendOsc(KittyClipboard::refuse(std::get<KittyClipboardRead>(request.action), status), end);
    }
}

void Terminal::sendAll(const std::vector<std::string>& bodies, StringEnd end) {
    for (const std::string& body : bodies) {
        sendOsc(body, end);
    }
}

bool Terminal::announcePaste(ClipboardLocation location) {
    if (!m_modes.pasteEvents || !mayRead(m_options.kittyClipboardPolicy) ||
        !m_delegate.kittyClipboardSendPasteEvent(*this, location)) {
        return false;
    }
    for (const std::string& body :
         KittyClipboard::pasteEvent(location, m_delegate.kittyClipboardAvailableMimeTypes(*this, location))) {
        send(oscString(body, StringEnd::stringTerminator));
    }
    return true;
}

} // namespace term
