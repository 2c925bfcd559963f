#include "OrvUI/AgentModels.h"
#include "OrvUI/DraftKeeper.h"
#include "OrvUI/GitOverview.h"
#include "OrvUI/TaskLists.h"
#include "tests/OrvUI/ModelFixture.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

class Drafts : public test::ModelFixture {
protected:
    Drafts() { keeper.emplace(*model); }
    ~Drafts() override { keeper.reset(); }

    /// The application ends and starts again.
    void startAgain() {
        keeper.reset();
        makeModel();
        keeper.emplace(*model);
    }
    [[nodiscard]] QByteArray stored() const {
        QFile written(file);
        return written.open(QFile::ReadOnly) ? written.readAll() : QByteArray();
    }

    const QString shop = root + u"/shop"_s;
    const QString file = tree.path(u"support/drafts.json"_s);
    std::optional<DraftKeeper> keeper;
};

TEST_F(Drafts, AreThereAfterARestartUntilTheyAreDoneWith) {
    const CommitMessage message{u"Totals"_s, u"Rounded late,\n\"half even\"."_s};
    model->gitOverview().keepDraft(shop, message);
    model->agentModels()->keepWords(shop, u"Fix the totals\n"_s);
    model->agentModels()->keepWords({}, u"On the page"_s);
    model->agentModels()->setPageProjectID(shop);
    model->taskLists()->keepWords({}, u"A task"_s, shop);
    model->projectTasks()->keepWords(shop, u"One of its own"_s, {});
    for (const char* label : {"once", "twice"}) {
        startAgain();
        EXPECT_EQ(model->gitOverview().draft(shop), message) << label;
        EXPECT_EQ(model->agentModels()->words(shop), u"Fix the totals\n"_s) << label;
        EXPECT_EQ(model->agentModels()->words({}), u"On the page"_s) << label;
        EXPECT_EQ(model->agentModels()->pageProjectID(), shop) << label;
        EXPECT_EQ(model->taskLists()->words({}), u"A task"_s) << label;
        EXPECT_EQ(model->taskLists()->wordsProjectID({}), shop) << label;
        EXPECT_EQ(model->projectTasks()->words(shop), u"One of its own"_s) << label;
    }
    model->gitOverview().dropDraft(shop, message);
    model->agentModels()->keepWords(shop, {});
    model->agentModels()->keepWords({}, {});
    model->taskLists()->keepWords({}, {}, shop);
    model->projectTasks()->keepWords(shop, {}, {});
    startAgain();
    EXPECT_EQ(stored().trimmed(), "[\n]");
    EXPECT_EQ(model->gitOverview().draft(shop), CommitMessage());
}

TEST_F(Drafts, OfAgentsAreTheirTasksStill) {
    addNode(u"shop"_s, "vite", "true\n");
    scan();
    const QUuid task = model->addTask(u"Totals"_s, u"Rounded"_s, *model->project(shop));
    model->draftAgentTaskFor(task.toString());
    model->agentModels()->keepWords({}, u"The totals, late"_s);
    startAgain();
    for (const QString& place : {shop, QString()}) {
        const std::optional<AgentDraft> draft = model->agentModels()->draftAt(place);
        EXPECT_EQ(draft, (AgentDraft{shop, u"Totals\n\nRounded"_s, task})) << place.toStdString();
    }
    EXPECT_EQ(model->agentModels()->pageTask(), u"Totals"_s);
    model->agentModels()->unlinkTask(shop);
    model->agentModels()->keepWords({}, u"Else"_s);
    startAgain();
    EXPECT_EQ(model->agentModels()->words({}), u"Else"_s);
    EXPECT_FALSE(model->agentModels()->draftAt({}) || model->agentModels()->draftAt(shop));
    // What was made of it in the other place stays there, and is of no task any more.
    model->agentModels()->keepWords({}, {});
    model->agentModels()->keepWords(shop, {});
    scan();
    model->draftAgentTaskFor(task.toString());
    model->agentModels()->keepWords({}, u"The totals, late"_s);
    model->agentModels()->forgetDraft(shop);
    startAgain();
    EXPECT_EQ(model->agentModels()->words({}), u"The totals, late"_s);
    EXPECT_FALSE(model->agentModels()->draftAt({}) || model->agentModels()->draftAt(shop));
}

TEST_F(Drafts, AreWrittenWhileTheApplicationRuns) {
    model->agentModels()->keepWords(shop, u"half a thought"_s);
    EXPECT_TRUE(test::waitFor([this] { return stored().contains("half a thought"); }));
}

TEST_F(Drafts, AreTheNewestAndNotEndless) {
    const QString place = u"/repository/%1"_s;
    const CommitMessage old{u"old"_s, {}};
    for (qsizetype number = 0; number < DraftKeeper::limit; ++number) {
        model->gitOverview().keepDraft(place.arg(number), old);
    }
    model->gitOverview().keepDraft(place.arg(0), {u"changed"_s, {}});
    const QString pair = u"\U0001F600"_s;
    model->agentModels()->keepWords(shop, QString(DraftKeeper::longest - 1, u'a') + pair);
    startAgain();
    EXPECT_EQ(model->gitOverview().draft(place.arg(0)).summary, u"changed"_s);
    EXPECT_EQ(model->gitOverview().draft(place.arg(1)), CommitMessage()) << "the one that was changed first";
    EXPECT_EQ(model->gitOverview().draft(place.arg(2)), old);
    EXPECT_EQ(model->agentModels()->words(shop), QString(DraftKeeper::longest - 1, u'a')) << "no half of a letter";
}

TEST_F(Drafts, OfWhichTheFileIsBroken) {
    for (const QByteArray& broken :
         {QByteArray("["), QByteArray(R"([{"kind": 1, "text": "x"}])"),
          QByteArray(R"([{"kind": "agent", "text": 1}])")}) {
        keeper.reset();
        tree.add(u"support/drafts.json"_s, broken);
        startAgain();
        model->agentModels()->keepWords(shop, u"new"_s);
        startAgain();
        EXPECT_EQ(model->agentModels()->words(shop), u"new"_s) << broken.data();
    }
    EXPECT_TRUE(QFile::exists(file + u".corrupt"_s));
    keeper.reset();
    tree.add(u"support/drafts.json"_s, R"([{"kind": "poem"}, {"kind": "agent", "text": "still"}])");
    startAgain();
    EXPECT_EQ(model->agentModels()->words({}), u"still"_s) << "beside a kind that is not known";
}

} // namespace
} // namespace orv
