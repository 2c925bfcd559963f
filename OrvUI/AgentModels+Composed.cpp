#include "OrvUI/AgentModels_p.h"
#include "OrvUI/AgentRuns.h"
#include "OrvUI/AppModel.h"

#include <QRegularExpression>
#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// Between a task that came into a composer and what was typed there before.
constexpr QLatin1String gap("\n\n");

bool isAhead(const QString& task, const QString& words) {
    return words == task || words.startsWith(task + gap);
}

QString withAhead(const QString& task, const QString& words) {
    return words.isEmpty() ? task : isAhead(task, words) ? words : task + gap + words;
}

/// What was typed beside a task that is as it came; all of the words where it is not.
QString besides(const QString& task, const QString& words) {
    return isAhead(task, words) ? words.sliced(std::min(task.size() + gap.size(), words.size())) : words;
}

/// Of each word as much as is the same in its other forms.
QSet<QString> stems(const QString& text, qsizetype shortest) {
    constexpr qsizetype length = 4;
    static const QRegularExpression word(u"[\\p{L}\\p{M}\\p{N}]+"_s, QRegularExpression::UseUnicodePropertiesOption);
    QSet<QString> found;
    for (const QRegularExpressionMatch& match : word.globalMatch(text.toCaseFolded())) {
        if (match.capturedLength() >= shortest) {
            found.insert(match.captured().left(length));
        }
    }
    return found;
}

/// Whether any word of a task is left in what was made of it. Little ones ("the") stand in every text: they count where
/// it has no others.
bool hasSomethingOf(const QString& task, const QString& words) {
    if (isAhead(task, words)) {
        return true;
    }
    constexpr qsizetype telling = 4;
    const QSet<QString> own = stems(task, telling);
    return (own.isEmpty() ? stems(task, 1) : own).intersects(stems(words, 1));
}

} // namespace

std::optional<AgentDraft> AgentModels::draftAt(const QString& place) const {
    const auto composed = m_composed.constFind(place);
    const bool isThere = composed != m_composed.constEnd() && composed->draft &&
                         (!place.isEmpty() || composed->draft->projectID == composed->projectID);
    if (!isThere) {
        return {};
    }
    std::optional<AgentDraft> draft = composed->draft;
    if (!hasSomethingOf(draft->text, composed->words)) {
        draft->taskID.reset();
        return draft->sent ? draft : std::nullopt;
    }
    return draft;
}

void AgentModels::keepDraft(const QString& place, const AgentDraft& draft) {
    m_composed[place].draft = draft;
    Q_EMIT wordsChanged(place);
    Q_EMIT updated();
}

QString AgentModels::linkedTitle(const QString& place) const {
    const std::optional<AgentDraft> draft = draftAt(place);
    const QList<ProjectTask>& tasks = m_model.tasks();
    const auto task = draft && draft->taskID ? std::ranges::find(tasks, *draft->taskID, &ProjectTask::id) : tasks.end();
    return task != tasks.end() ? task->title : QString();
}

QString AgentModels::panelTask() const {
    return m_model.aiPanelProjectID() ? linkedTitle(panelProjectID()) : QString();
}
QString AgentModels::pageTask() const {
    return linkedTitle({});
}

void AgentModels::unlinkTask(const QString& place) {
    if (const auto composed = m_composed.find(place); composed != m_composed.end() && composed->draft) {
        composed->draft->taskID.reset(); // still work of its own, not a reply
        Q_EMIT wordsChanged(place);
        Q_EMIT updated();
    }
}

/// The run that it went on with when it was sent, and can go on with still.
const AgentRun* AgentModels::parentOf(const AgentDraft& draft) const {
    const AgentRun* parent =
        draft.sent && draft.sent->parentID ? m_model.agentRunner().run(*draft.sent->parentID) : nullptr;
    return parent != nullptr && !parent->isRunning() ? parent : nullptr;
}

bool AgentModels::start(int agent, const QString& task, const QString& projectID, int autonomy) {
    return startAt({}, agent, task, projectID, autonomy);
}

bool AgentModels::startAt(
    const QString& place, int agent, const QString& task, const QString& projectID, int autonomy) {
    const auto kind = at(allAgentKinds, agent);
    const Project* project = m_model.project(projectID);
    if (!kind || project == nullptr || refusesMissing(*kind)) {
        return false;
    }
    std::optional<AgentDraft> draft = draftAt(place);
    if (draft && draft->projectID != projectID) {
        draft.reset();
    }
    const AgentRun* parent = draft ? parentOf(*draft) : nullptr;
    const auto freedom = at(allAgentAutonomies, autonomy);
    const AgentRun* started =
        parent != nullptr && parent->facts().agent == kind
            ? m_model.continueAgent(*parent, task, freedom)
            : m_model.startAgent(*kind, task, *project, draft ? draft->taskID : std::nullopt, freedom);
    if (started != nullptr && draft) {
        settle(*draft);
    }
    return started != nullptr;
}

bool AgentModels::startInTerminal(int agent, const QString& task, const QString& projectID) {
    const auto kind = at(allAgentKinds, agent);
    const Project* project = m_model.project(projectID);
    // A terminal's shell may find what the one that was asked does not (an alias, a path set for interactive ones).
    if (!kind || project == nullptr) {
        return false;
    }
    m_model.startAgentInTerminal(*kind, task, *project);
    if (!error().isEmpty()) {
        return false;
    }
    for (const QString& place : {projectID, QString()}) {
        const std::optional<AgentDraft> draft = draftAt(place);
        if (draft && draft->projectID == projectID && hasSomethingOf(draft->text, task)) {
            settle(*draft);
        }
    }
    return true;
}

/// It is done with: nothing of it waits anywhere.
void AgentModels::settle(const AgentDraft& draft) {
    if (m_model.agentDraft() && m_model.agentDraft()->projectID == draft.projectID) {
        m_model.setAgentDraft({});
    }
    for (const QString& place : {draft.projectID, QString()}) {
        const auto composed = m_composed.find(place);
        if (composed == m_composed.end() || !composed->draft || composed->draft->text != draft.text ||
            composed->draft->projectID != draft.projectID) {
            continue;
        }
        composed->draft.reset();
        const QString left = besides(draft.text, composed->words);
        if (left == composed->words) {
            Q_EMIT wordsChanged(place); // they stay, without what they came from
        } else {
            setWords(place, left);
            Q_EMIT wordsCame(place);
        }
    }
    Q_EMIT updated();
}

void AgentModels::forgetDraft(const QString& place) {
    const auto composed = m_composed.find(place);
    const std::optional<AgentDraft> draft = composed != m_composed.end() ? composed->draft : std::nullopt;
    if (!draft) {
        return;
    }
    // On the page what came back, or is for another project by now, is only taken away there: its panel has it still.
    if (place.isEmpty() && (draft->sent || draft->projectID != composed->projectID)) {
        composed->draft.reset();
        Q_EMIT updated();
        return;
    }
    settle(*draft);
}

void AgentModels::takeDraft() {
    const std::optional<AgentDraft> draft = m_model.agentDraft();
    if (draft && !draft->text.isEmpty()) {
        if (!draft->sent) {
            m_model.setAgentError({}); // said of what stood there before
        }
        takeDraftAt(draft->projectID, *draft);
        if (makesRoomOnPage(*draft)) {
            m_composed[QString()].projectID = draft->projectID;
            takeDraftAt({}, *draft);
        }
    } else if (draft) {
        Q_EMIT wordsCame(draft->projectID); // none, but they are about to be typed
    }
    Q_EMIT updated();
}

void AgentModels::takeDraftAt(const QString& place, const AgentDraft& draft) {
    Composed& composed = m_composed[place];
    // One that was handed over and is as it came makes way. What was sent once is one's own.
    const bool isAsItCame = composed.draft && !composed.draft->sent;
    const QString own = isAsItCame ? besides(composed.draft->text, composed.words) : composed.words;
    composed.draft = draft;
    composed.words = withAhead(draft.text, own);
    Q_EMIT wordsChanged(place);
    Q_EMIT wordsCame(place);
}

/// Words for another project go to the panel of that one. False: they stay, and what came back waits in its panel.
bool AgentModels::makesRoomOnPage(const AgentDraft& draft) {
    const Composed page = m_composed.value(QString());
    if (page.words.isEmpty() || page.projectID.isEmpty() || page.projectID == draft.projectID) {
        return true;
    }
    if (draft.sent) {
        return false;
    }
    const bool isHanded = page.draft && !page.draft->sent;
    if (!isHanded || !besides(page.draft->text, page.words).isEmpty()) {
        moveToPanel(page);
    }
    m_composed[QString()].words.clear();
    return true;
}

void AgentModels::moveToPanel(const Composed& page) {
    Composed& panel = m_composed[page.projectID];
    const bool isSame = page.draft && panel.draft && page.draft->text == panel.draft->text;
    const QString there = isSame ? besides(panel.draft->text, panel.words) : panel.words;
    if (!panel.draft) {
        panel.draft = page.draft;
    }
    panel.words = there.isEmpty() || page.words.contains(there) ? page.words : page.words + gap + there;
    Q_EMIT wordsChanged(page.projectID);
    Q_EMIT wordsCame(page.projectID);
    if (const Project* project = m_model.project(page.projectID)) {
        m_model.report(tr("What you wrote for %1 is in its AI panel now.").arg(project->name), false);
    }
}

QString AgentModels::words(const QString& place) const {
    return m_composed.value(place).words;
}

void AgentModels::setWords(const QString& place, const QString& words) {
    if (words == this->words(place)) {
        return;
    }
    const std::optional<AgentDraft> before = draftAt(place);
    m_composed[place].words = words;
    Q_EMIT wordsChanged(place);
    if (draftAt(place) != before) {
        Q_EMIT updated();
    }
}

void AgentModels::keepWords(const QString& place, const QString& words) {
    if (words != this->words(place)) {
        m_model.setAgentError({}); // it was said of what stood there
        setWords(place, words);
    }
    if (words.isEmpty()) {
        forgetDraft(place);
    }
}

QString AgentModels::panelProjectID() const {
    return m_model.aiPanelProjectID().value_or(QString());
}

/// Of the conversation in the agent panel that is not left alone.
const AgentRun* AgentModels::newestOfPanel() const {
    for (const AgentRun* run : m_model.agentRuns()) {
        if (run->facts().projectID == m_model.aiPanelProjectID()) {
            return run->facts().id == m_leftAlone ? nullptr : run;
        }
    }
    return nullptr;
}

const AgentRun* AgentModels::repliedTo() const {
    const AgentRun* run = newestOfPanel();
    // A to-do item is work of its own, not an answer.
    if (const auto draft = draftAt(panelProjectID())) {
        run = parentOf(*draft);
    }
    const bool isOpen = run != nullptr && !run->isRunning();
    return isOpen && static_cast<int>(run->facts().agent) == panelAgent() ? run : nullptr;
}

int AgentModels::panelAgent() const {
    if (const auto chosen = m_composed.value(panelProjectID()).agent) {
        return static_cast<int>(*chosen);
    }
    if (const auto draft = draftAt(panelProjectID()); draft && draft->sent) {
        return static_cast<int>(draft->sent->agent);
    }
    const AgentRun* newest = newestOfPanel();
    return newest != nullptr ? static_cast<int>(newest->facts().agent) : defaultAgent();
}

int AgentModels::panelAutonomy() const {
    if (const auto chosen = m_composed.value(panelProjectID()).autonomy) {
        return static_cast<int>(*chosen);
    }
    if (const auto draft = draftAt(panelProjectID()); draft && draft->sent) {
        return static_cast<int>(draft->sent->autonomy);
    }
    const AgentRun* run = repliedTo();
    return run != nullptr ? static_cast<int>(run->facts().autonomy) : autonomy();
}

void AgentModels::setPanelAgent(int index) {
    if (const auto kind = at(allAgentKinds, index)) {
        m_composed[panelProjectID()].agent = kind;
        m_model.setAgentError({}); // it may have been said of the other one
        Q_EMIT updated();
    }
}

void AgentModels::setPanelAutonomy(int index) {
    if (const auto autonomy = at(allAgentAutonomies, index)) {
        m_composed[panelProjectID()].autonomy = autonomy;
        Q_EMIT updated();
    }
}

int AgentModels::pageAgent() const {
    const Composed page = m_composed.value(QString());
    const auto draft = draftAt({});
    return page.agent             ? static_cast<int>(*page.agent)
           : draft && draft->sent ? static_cast<int>(draft->sent->agent)
                                  : defaultAgent();
}

int AgentModels::pageAutonomy() const {
    const Composed page = m_composed.value(QString());
    const auto draft = draftAt({});
    return page.autonomy          ? static_cast<int>(*page.autonomy)
           : draft && draft->sent ? static_cast<int>(draft->sent->autonomy)
                                  : autonomy();
}

QString AgentModels::pageProjectID() const {
    return m_composed.value(QString()).projectID;
}

void AgentModels::setPageAgent(int index) {
    if (const auto kind = at(allAgentKinds, index)) {
        m_composed[QString()].agent = kind;
        m_model.setAgentError({});
        Q_EMIT updated();
    }
}

void AgentModels::setPageAutonomy(int index) {
    if (const auto autonomy = at(allAgentAutonomies, index)) {
        m_composed[QString()].autonomy = autonomy;
        Q_EMIT updated();
    }
}

void AgentModels::setPageProjectID(const QString& projectID) {
    if (projectID != pageProjectID()) {
        m_composed[QString()].projectID = projectID;
        Q_EMIT wordsChanged({});
        Q_EMIT updated();
    }
}

bool AgentModels::say(const QString& text) {
    const QString projectID = panelProjectID();
    const AgentRun* run = draftAt(projectID) ? nullptr : repliedTo();
    if (run != nullptr && refusesMissing(run->facts().agent)) {
        return false;
    }
    const bool isSaid = run != nullptr
                            ? m_model.continueAgent(*run, text, at(allAgentAutonomies, panelAutonomy())) != nullptr
                            : startAt(projectID, panelAgent(), text, projectID, panelAutonomy());
    if (isSaid) {
        m_composed.remove(projectID);
        Q_EMIT wordsChanged(projectID);
        Q_EMIT updated();
    }
    return isSaid;
}

void AgentModels::beginAnew() {
    if (const AgentRun* newest = repliedTo()) {
        m_leftAlone = newest->facts().id;
        m_composed[panelProjectID()].agent.reset();
        m_composed[panelProjectID()].autonomy.reset();
        Q_EMIT updated();
    }
}

} // namespace orv
