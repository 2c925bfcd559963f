#include "OrvUI/TerminalTyping.h"

#include "OrvCore/Async.h"
#include "OrvTerminal/TerminalSession.h"

#include <QTimer>

#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

class Typing : public QObject {
public:
    Typing(TerminalSession* session, QString line) : QObject(session), m_session(*session), m_line(std::move(line)) {
        connect(session, &TerminalSession::outputReceived, this, &Typing::look);
        connect(session, &TerminalSession::isAliveChanged, this, &Typing::deleteLater);
        m_quiet.setSingleShot(true);
        m_patience.setSingleShot(true);
        connect(&m_quiet, &QTimer::timeout, this, &Typing::type);
        connect(&m_patience, &QTimer::timeout, this, &Typing::type);
        m_patience.start(10s);
    }

private:
    void look() {
        if (m_session.terminal().modes().bracketedPaste) {
            type();
        } else {
            m_quiet.start(1500ms);
        }
    }

    void type() {
        disconnect(&m_session, nullptr, this, nullptr);
        m_quiet.stop();
        m_patience.stop();
        m_session.terminal().paste(m_line.toStdString());
        m_session.send(u"\n"_s);
        deleteLater();
    }

    TerminalSession& m_session;
    const QString m_line;
    QTimer m_quiet;
    QTimer m_patience;
};

} // namespace

void typeWhenReady(TerminalSession* session, const QString& line) {
    ORV_ASSERT_MAIN_THREAD();
    new Typing(session, line);
}

} // namespace orv
