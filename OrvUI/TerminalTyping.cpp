#include "OrvUI/TerminalTyping.h"

#include "OrvCore/Async.h"
#include "OrvTerminal/TerminalTabs.h"
#include "OrvUI/AppModel.h"

#include <QTimer>

#include <algorithm>
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

TerminalSession* openTerminal(AppModel& model, const QString& folder) {
    ORV_ASSERT_MAIN_THREAD();
    const QList<Project>& projects = model.projects();
    const std::optional<QString> around = innermostProject(folder, projects);
    const bool isOnOne = model.page().kind == AppPage::Kind::project && model.project(model.page().id) != nullptr;
    if (around) {
        model.setPage({.kind = AppPage::Kind::project, .id = *around});
    } else if (!isOnOne && !projects.isEmpty()) {
        const auto isBelow = [&folder](const Project& one) { return one.root.startsWith(folder + u'/'); };
        const auto below = std::ranges::find_if(projects, isBelow);
        model.setPage(
            {.kind = AppPage::Kind::project, .id = below != projects.cend() ? below->id : projects.constFirst().id});
    }
    model.setDetailTab(DetailTab::terminal);
    return model.terminals().open(QUrl::fromLocalFile(folder));
}

void typeWhenReady(TerminalSession* session, const QString& line) {
    ORV_ASSERT_MAIN_THREAD();
    new Typing(session, line);
}

} // namespace orv
