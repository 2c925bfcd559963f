#include "CliSupport.h"
#include "OrvLauncher/platform/SystemNotifier.h"
#include "SignalWatcher.h"

#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

const NotificationRequest testRequest{
    u"OrvLauncher can reach you"_s, u"Services that are ready look like this & have a button."_s, std::nullopt,
    u"http://localhost"_s};

/// One call, until it is known what became of it.
class NotifyRun : public QObject {
public:
    explicit NotifyRun(Invocation& call) : QObject(call.context), m_call(call), m_notifier(makeSystemNotifier()) {
        m_promise.start();
    }

    QFuture<int> start() {
        if (!m_notifier) {
            end({});
            return m_promise.future();
        }
        const bool isTest = m_call.isSet(u"test"_s);
        if (isTest) {
            m_notifier->projectClicked = [this](const QString&, const NotificationPart&) { clicked(u"open"_s); };
            m_notifier->addressClicked = [this](const QUrl&) { clicked(u"open-browser"_s); };
            m_notifier->post(testRequest);
        }
        // The first answer may come before the test was sent, the second one comes after it.
        m_notifier->findStatus(Notifying::Ask::userToo, [this, isTest](const NotificationStatus& status) {
            if (isTest && status.kind == NotificationStatus::Kind::allowed) {
                m_notifier->findStatus(
                    Notifying::Ask::systemOnly, [this](const NotificationStatus& sent) { end(sent); });
            } else {
                end(status);
            }
        });
        return m_promise.future();
    }

private:
    void end(const NotificationStatus& status) {
        const bool isAllowed = status.kind == NotificationStatus::Kind::allowed;
        if (m_call.json) {
            printJson(
                m_call.console.out, QJsonObject{
                                        {u"allowed"_s, isAllowed},
                                        {u"server"_s, status.server},
                                        {u"sent"_s, isAllowed && m_call.isSet(u"test"_s)}});
        } else if (isAllowed) {
            m_call.console.out.writeLine(status.text());
        }
        if (!isAllowed) {
            finish(m_call.failure(status.text() + u'.'));
        } else if (!m_call.isSet(u"wait"_s)) {
            finish(exitOk);
        } else {
            connect(new SignalWatcher(this), &SignalWatcher::stopAsked, this, [this] { finish(exitOk); });
        }
    }
    void clicked(const QString& what) {
        m_call.note(u"Clicked: "_s + what);
        finish(exitOk);
    }
    void finish(int code) {
        if (!std::exchange(m_isOver, true)) {
            m_promise.addResult(code);
            m_promise.finish();
        }
    }

    Invocation& m_call;
    std::unique_ptr<Notifying> m_notifier;
    QPromise<int> m_promise;
    bool m_isOver = false;
};

QFuture<int> notify(Invocation& call) {
    if (call.isSet(u"wait"_s) && !call.isSet(u"test"_s)) {
        return QtFuture::makeReadyFuture(call.usageError(u"there is nothing to wait for without --test."_s));
    }
    return (new NotifyRun(call))->start();
}

} // namespace

Command notifyCommand() {
    return {
        u"notify"_s,
        u"says whether this desktop shows notifications"_s,
        u"Whether OrvLauncher's notifications would be seen, and by what. Which ones it posts is set by 'settings'."_s,
        {{{},
          {},
          0,
          0,
          u"asks what shows them"_s,
          {{u"test"_s, {}, u"post one, to see it"_s}, {u"wait"_s, {}, u"stay until it is clicked, and say where"_s}},
          notify}},
        {{u"orvlauncher notify --test"_s, u"shows a notification like those of the window"_s},
         {u"orvlauncher settings set notificationsEnabled true"_s, u"turns them on"_s}}};
}

} // namespace orv
