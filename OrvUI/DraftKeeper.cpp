#include "OrvUI/DraftKeeper.h"

#include "OrvCore/Async.h"
#include "OrvUI/AgentModels.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/GitOverview.h"
#include "OrvUI/TaskLists.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <ranges>

namespace orv {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// What a crash may cost of what was typed.
constexpr auto delay = 2s;

constexpr std::array kinds{
    std::pair{Draft::Kind::commit, "commit"_L1}, std::pair{Draft::Kind::agent, "agent"_L1},
    std::pair{Draft::Kind::task, "task"_L1}};

struct Member {
    QLatin1StringView name;
    QString Draft::* value;
};
constexpr std::array members{
    Member{"place"_L1, &Draft::place},
    Member{"text"_L1, &Draft::text},
    Member{"description"_L1, &Draft::description},
    Member{"project"_L1, &Draft::projectID},
    Member{"task"_L1, &Draft::taskID},
    Member{"handed"_L1, &Draft::handed}};

QByteArray encode(const QList<Draft>& drafts) {
    QJsonArray array;
    for (const Draft& draft : drafts) {
        QJsonObject json{
            {u"kind"_s, std::ranges::find(kinds, draft.kind, &decltype(kinds)::value_type::first)->second}};
        for (const auto& [name, value] : members) {
            if (!(draft.*value).isEmpty()) {
                json.insert(name, draft.*value);
            }
        }
        array.append(json);
    }
    return QJsonDocument(array).toJson();
}

QString noString(const QString& member) {
    return DraftKeeper::tr("%1: a string was expected").arg(member);
}

std::expected<QList<Draft>, QString> decode(const QByteArray& bytes) {
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    if (!document.isArray()) {
        return std::unexpected(DraftKeeper::tr("a list was expected"));
    }
    QList<Draft> drafts;
    for (const QJsonValue json : document.array()) {
        if (!json["kind"_L1].isString()) {
            return std::unexpected(noString(u"kind"_s));
        }
        const auto kind = std::ranges::find(kinds, json["kind"_L1].toString(), &decltype(kinds)::value_type::second);
        if (kind == kinds.end()) {
            continue; // of another version; the others are read still
        }
        Draft draft{.kind = kind->first};
        for (const auto& [name, value] : members) {
            if (!json[name].isString() && !json[name].isUndefined()) {
                return std::unexpected(noString(name));
            }
            draft.*value = json[name].toString();
        }
        drafts.append(std::move(draft));
    }
    return drafts;
}

void cut(QString& text) {
    if (text.size() > DraftKeeper::longest) {
        text.truncate(DraftKeeper::longest);
        if (text.back().isHighSurrogate()) {
            text.chop(1);
        }
    }
}

} // namespace

DraftKeeper::DraftKeeper(AppModel& model, QObject* parent)
    : QObject(parent),
      m_file(
          filePath(model.settings().filePath()),
          {.encode = encode, .decode = decode, .fallback = [] { return QList<Draft>(); }}),
      m_drafts(m_file.record()) {
    ORV_ASSERT_MAIN_THREAD();
    m_pool.setObjectName(u"orv-drafts"_s);
    m_pool.setMaxThreadCount(1);
    m_due.setSingleShot(true);
    connect(&m_due, &QTimer::timeout, this, &DraftKeeper::write);
    restore(model);
    follow(model);
}

DraftKeeper::~DraftKeeper() {
    flush();
    if (const StoreResult saved = m_file.flush(); !saved) {
        qWarning("%s", qUtf8Printable(saved.error().text()));
    }
}

QString DraftKeeper::filePath(const QString& settingsPath) {
    return QFileInfo(settingsPath).path() + u"/drafts.json"_s;
}

QString DraftKeeper::problem(const QByteArray& bytes) {
    const std::expected<QList<Draft>, QString> drafts = decode(bytes);
    return drafts ? QString() : drafts.error();
}

void DraftKeeper::restore(AppModel& model) const {
    for (const Draft& draft : m_drafts) {
        switch (draft.kind) {
        case Draft::Kind::commit:
            model.gitOverview().keepDraft(draft.place, {draft.text, draft.description});
            break;
        case Draft::Kind::agent:
            model.agentModels()->keepWords(draft.place, draft.text);
            if (draft.place.isEmpty()) {
                model.agentModels()->setPageProjectID(draft.projectID);
            }
            if (const QUuid task(draft.taskID); !task.isNull()) {
                model.agentModels()->keepDraft(
                    draft.place, {draft.place.isEmpty() ? draft.projectID : draft.place, draft.handed, task});
            }
            break;
        case Draft::Kind::task:
            (draft.place.isEmpty() ? model.taskLists() : model.projectTasks())
                ->keepWords(draft.place, draft.text, draft.projectID);
            break;
        }
    }
}

void DraftKeeper::follow(AppModel& model) {
    GitOverview& git = model.gitOverview();
    connect(&git, &GitOverview::draftChanged, this, [this, &git](const QString& repository) {
        const CommitMessage message = git.draft(repository);
        note(
            {.kind = Draft::Kind::commit,
             .place = repository,
             .text = message.summary,
             .description = message.description});
    });
    AgentModels& agents = *model.agentModels();
    connect(&agents, &AgentModels::wordsChanged, this, [this, &agents](const QString& place) {
        const std::optional<AgentDraft> from = agents.draftAt(place);
        // What was sent once is one's own: as a task that was handed over it would make way for the next.
        const bool isTask = from && from->taskID && !from->sent;
        note(
            {.kind = Draft::Kind::agent,
             .place = place,
             .text = agents.words(place),
             .projectID = place.isEmpty() ? agents.pageProjectID() : QString(),
             .taskID = isTask ? from->taskID->toString(QUuid::WithoutBraces) : QString(),
             .handed = isTask ? from->text : QString()});
    });
    follow(*model.taskLists());
    follow(*model.projectTasks());
}

void DraftKeeper::follow(TaskLists& lists) {
    connect(&lists, &TaskLists::wordsChanged, this, [this, &lists](const QString& place) {
        note(
            {.kind = Draft::Kind::task,
             .place = place,
             .text = lists.words(place),
             .projectID = lists.wordsProjectID(place)});
    });
}

void DraftKeeper::note(Draft draft) {
    m_drafts.removeIf([&draft](const Draft& known) { return known.kind == draft.kind && known.place == draft.place; });
    if (!draft.text.isEmpty() || !draft.description.isEmpty()) {
        cut(draft.text);
        cut(draft.description);
        cut(draft.handed);
        m_drafts.prepend(std::move(draft));
        m_drafts.resize(std::min(m_drafts.size(), limit));
    }
    // Not started anew by each letter: whoever types on and on is kept, too.
    if (!m_due.isActive()) {
        m_due.start(delay);
    }
}

void DraftKeeper::write() {
    m_pool.start([this, drafts = m_drafts] {
        // What can't be written now is with the next change, or said at the end.
        std::ignore = m_file.change([drafts](QList<Draft>& stored) { stored = drafts; });
    });
}

void DraftKeeper::flush() {
    ORV_ASSERT_MAIN_THREAD();
    if (m_due.isActive()) {
        m_due.stop();
        write();
    }
    m_pool.waitForDone();
}

} // namespace orv
