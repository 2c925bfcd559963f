#include "OrvLauncher/platform/linux/DesktopNotifier.h"

#include "OrvCore/Async.h"
#include "OrvLauncher/platform/ActivationToken.h"
#include "OrvLauncher/platform/SystemNotifier.h"

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

const QString service = u"org.freedesktop.Notifications"_s;
const QString path = u"/org/freedesktop/Notifications"_s;

const QString openAction = u"default"_s; ///< a click on the notification itself
const QString browserAction = u"open-browser"_s;

constexpr qsizetype longestBody = 600;

} // namespace

DesktopNotifier::DesktopNotifier(QString busAddress, std::chrono::milliseconds limit, QObject* parent)
    : QObject(parent), m_bus(std::move(busAddress), static_cast<int>(limit.count())) {}

void DesktopNotifier::post(const NotificationRequest& request) {
    ORV_ASSERT_MAIN_THREAD();
    if (m_server && !m_isAsking) {
        send(request);
        return;
    }
    m_waiting.push_back(request);
    if (m_waiting.size() > waitingLimit) {
        m_waiting.pop_front();
    }
    askServer();
}

/// There is nothing to ask the user here: who runs a server wants its notifications.
void DesktopNotifier::findStatus(Ask, Answer answer) {
    ORV_ASSERT_MAIN_THREAD();
    m_answers.push_back(std::move(answer));
    askServer();
}

void DesktopNotifier::takeBus(bool isOpen) {
    if (!isOpen) {
        settle({});
        return;
    }
    m_bus.listen(path, service, u"ActivationToken"_s, this, SLOT(activationToken(uint, QString, QDBusMessage)));
    m_bus.listen(path, service, u"ActionInvoked"_s, this, SLOT(actionInvoked(uint, QString, QDBusMessage)));
    m_bus.listen(path, service, u"NotificationClosed"_s, this, SLOT(notificationClosed(uint, uint, QDBusMessage)));
    askCapabilities();
}

void DesktopNotifier::askServer() {
    if (std::exchange(m_isAsking, true)) {
        return;
    }
    if (m_bus.isOpen()) {
        askCapabilities();
    } else {
        m_bus.open([this](bool isOpen) { takeBus(isOpen); });
    }
}

void DesktopNotifier::askCapabilities() {
    call(u"GetCapabilities"_s, {}, [this](const QDBusMessage& capabilities) {
        if (capabilities.type() != QDBusMessage::ReplyMessage) {
            settle({});
            return;
        }
        const QStringList words = capabilities.arguments().value(0).toStringList();
        const Server server{capabilities.service(), {}, words.contains(u"body-markup"), words.contains(u"actions")};
        call(u"GetServerInformation"_s, {}, [this, server](const QDBusMessage& information) {
            Server known = server;
            known.name = information.arguments().value(0).toString();
            settle(known);
        });
    });
}

void DesktopNotifier::call(const QString& method, const QVariantList& arguments, BusConnection::Taken taken) {
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, service, method);
    message.setArguments(arguments);
    m_bus.call(message, std::move(taken));
}

/// The server, or none, is known now.
void DesktopNotifier::settle(const std::optional<Server>& server) {
    m_isAsking = false;
    m_server = server;
    const auto waiting = std::exchange(m_waiting, {});
    if (m_server) {
        for (const NotificationRequest& request : waiting) {
            send(request);
        }
    }
    using enum NotificationStatus::Kind;
    const NotificationStatus status{server ? allowed : unavailable, server ? server->name : QString()};
    for (const Answer& answer : std::exchange(m_answers, {})) {
        answer(status);
    }
}

/// 0, which replaces none, when what it would take the place of is not shown any more.
uint DesktopNotifier::replacedBy(const NotificationRequest& request) const {
    const auto isMeant = [&](const Shown& one) {
        return one.owner == m_server->owner && one.request.subject == request.subject;
    };
    const auto found = std::find_if(m_shown.rbegin(), m_shown.rend(), isMeant);
    return request.replaces && found != m_shown.rend() ? found->id : 0;
}

void DesktopNotifier::send(const NotificationRequest& request) {
    if (const auto sent = m_sent.find(request.subject); request.replaces && sent != m_sent.end()) {
        sent->next = request;
        return;
    }
    const int number = ++m_lastSent;
    if (!request.subject.isEmpty()) {
        m_sent.insert(request.subject, {number, std::nullopt});
    }
    QStringList actions;
    if (m_server->hasActions) {
        actions << openAction << tr("Open OrvLauncher");
        if (request.openURL) {
            actions << browserAction << tr("Open in browser");
        }
    }
    const int asLongAsUsual = -1;
    const QVariantMap hints{{u"desktop-entry"_s, u"orvlauncher"_s}};
    const QVariantList arguments{
        u"OrvLauncher"_s,
        replacedBy(request),
        u"orvlauncher"_s,
        bodyText(request.title, false),
        bodyText(request.body, m_server->readsMarkup),
        actions,
        hints,
        asLongAsUsual};
    call(u"Notify"_s, arguments, [this, request, number](const QDBusMessage& reply) {
        if (reply.type() != QDBusMessage::ReplyMessage || !m_server || reply.service() != m_server->owner) {
            m_server.reset(); // gone, or another one has come: the next time it is asked again
        }
        if (reply.type() == QDBusMessage::ReplyMessage) {
            takeSent(reply.arguments().value(0).toUInt(), reply.service(), request);
        }
        if (m_sent.value(request.subject).number == number) {
            if (const auto next = m_sent.take(request.subject).next) {
                post(*next);
            }
        }
    });
}

void DesktopNotifier::takeSent(uint id, const QString& owner, const NotificationRequest& request) {
    std::erase_if(m_shown, [&](const Shown& one) { return one.id == id && one.owner == owner; });
    m_shown.push_back({id, owner, request, {}});
    if (m_shown.size() > shownLimit) {
        m_shown.pop_front();
    }
}

std::deque<DesktopNotifier::Shown>::iterator DesktopNotifier::shown(uint id, const QDBusMessage& message) {
    return std::ranges::find_if(
        m_shown, [&](const Shown& one) { return one.id == id && one.owner == message.service(); });
}

/// Comes just before the action that it is for.
void DesktopNotifier::activationToken(uint id, const QString& token, const QDBusMessage& message) {
    afterReplies([this, id, token, message] {
        if (const auto found = shown(id, message); found != m_shown.end()) {
            found->activation = token;
        }
    });
}

void DesktopNotifier::actionInvoked(uint id, const QString& action, const QDBusMessage& message) {
    afterReplies([this, id, action, message] { act(id, action, message); });
}

/// A reply that came before a signal may be told of after it, when it was there before anybody waited for it.
void DesktopNotifier::afterReplies(std::function<void()> work) {
    QMetaObject::invokeMethod(this, std::move(work), Qt::QueuedConnection);
}

void DesktopNotifier::act(uint id, const QString& action, const QDBusMessage& message) {
    const auto found = shown(id, message);
    if (found == m_shown.end()) {
        return;
    }
    const NotificationRequest request = found->request;
    const ActivationToken token(std::exchange(found->activation, {}));
    if (action == browserAction && request.openURL && addressClicked) {
        addressClicked(QUrl(*request.openURL));
    } else if (action == openAction && projectClicked) {
        projectClicked(request.projectID.value_or(QString()), request.part);
    }
}

void DesktopNotifier::notificationClosed(uint id, uint, const QDBusMessage& message) {
    afterReplies([this, id, message] {
        if (const auto found = shown(id, message); found != m_shown.end()) {
            m_shown.erase(found);
        }
    });
}

QString DesktopNotifier::bodyText(const QString& body, bool readsMarkup) {
    QString text;
    for (const QChar character : body.first(std::min(body.size(), longestBody))) {
        text += character.category() == QChar::Other_Control && character != u'\n' ? QChar(u' ') : character;
    }
    if (!text.isEmpty() && text.back().isHighSurrogate()) {
        text.chop(1);
    }
    if (body.size() > longestBody) {
        text += u'…';
    }
    return readsMarkup ? text.toHtmlEscaped() : text;
}

std::unique_ptr<Notifying> makeSystemNotifier() {
    return std::make_unique<DesktopNotifier>();
}

} // namespace orv
