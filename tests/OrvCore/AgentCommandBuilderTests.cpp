#include "OrvCore/AgentCommandBuilder.h"
#include "tests/support/TestSupport.h"

#include <QFile>
#include <QProcess>

#include <gtest/gtest.h>

using namespace orv;
using namespace Qt::StringLiterals;

namespace {

/// What a shell could take for its own, in 100 kB; it begins like an option.
QString hostileTask() {
    QString task =
        u"--help 'it''s' \"$HOME\" $(id) `id` ${x:?} \\ \\\\ !! # ; & | > < * ? [a] {b} ~ \t\n\nü \U0001F600 '\\''"_s;
    while (task.size() < 100'000) {
        task += u"\n$(exit 3) \"quoted\" 100 %s"_s;
    }
    return task + u"\n"_s;
}

/// A home with programs called like the agents, first on the PATH of a login shell, that note how they were called.
class AgentHome {
public:
    AgentHome() {
        for (const QString& name : {u"claude"_s, u"codex"_s, u"gemini"_s, u"agy"_s, u"mytool"_s}) {
            const QString program = m_tree.add(
                (name == "agy"_L1 ? u".local/bin/"_s : u"bin/"_s) + name,
                "#!/bin/sh\nprintf '%s\\0' \"${0##*/}\" \"$@\" >\"$HOME/called\"\n");
            QFile::setPermissions(program, QFile::permissions(program) | QFile::ExeOwner);
        }
        const QByteArray profile = "PATH=\"$HOME/bin:$PATH\"\n";
        m_tree.add(u".zprofile"_s, profile);
        m_tree.add(u".profile"_s, profile);
    }

    /// The words with which an agent was called. Text that is typed goes to the shell's input.
    QStringList words(const QStringList& shell, const QByteArray& typed, const QString& task) {
        QFile::remove(m_tree.path(u"called"_s));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"HOME"_s, m_tree.path());
        environment.insert(u"ZDOTDIR"_s, m_tree.path());
        environment.insert(AgentCommandBuilder::taskVariable, task);
        QProcess process;
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(m_tree.path());
        process.start(shell.first(), shell.sliced(1));
        process.write(typed);
        process.closeWriteChannel();
        EXPECT_TRUE(process.waitForFinished()) << process.errorString().toStdString();
        QStringList words = QString::fromUtf8(test::readFile(m_tree.path(u"called"_s))).split(QChar(u'\0'));
        words.removeLast();
        return words;
    }

private:
    test::TemporaryTree m_tree;
};

void expectEqual(const QStringList& words, const QStringList& expected, const std::string& label) {
    ASSERT_EQ(words.size(), expected.size()) << label << ": " << words.join(u'|').first(200).toStdString();
    for (qsizetype index = 0; index < words.size(); ++index) {
        EXPECT_TRUE(words[index] == expected[index]) << label << ", word " << index;
    }
}

} // namespace

TEST(AgentCommandBuilder, HandsTheTaskOverUnchangedInEveryLine) {
    using enum AgentKind;
    using enum AgentAutonomy;
    const QString task = hostileTask();
    struct Case {
        AgentKind kind;
        AgentAutonomy autonomy;
        std::optional<QString> customTemplate, session;
        QString line;
        QString words; ///< with "|" between them and "@" for the task
    };
    const QString claudeStart = u"claude -p --output-format stream-json --verbose "_s;
    const QString claudeWords = u"claude|-p|--output-format|stream-json|--verbose|"_s;
    const QString agy = u"PATH=\"$HOME/.local/bin:$PATH\" agy "_s;
    const std::vector<Case> cases{
        {claude,
         plan,
         u"x"_s,
         {},
         claudeStart + u"--permission-mode plan --permission-prompts none -- \"$ORV_TASK\""_s,
         claudeWords + u"--permission-mode|plan|--permission-prompts|none|--|@"_s},
        {claude,
         edit,
         {},
         u"ab'c"_s,
         claudeStart +
             u"--permission-mode acceptEdits --permission-prompts none --resume 'ab'\\''c' -- \"$ORV_TASK\""_s,
         claudeWords + u"--permission-mode|acceptEdits|--permission-prompts|none|--resume|ab'c|--|@"_s},
        {claude,
         full,
         {},
         {},
         claudeStart + u"--dangerously-skip-permissions -- \"$ORV_TASK\""_s,
         claudeWords + u"--dangerously-skip-permissions|--|@"_s},
        {codex,
         plan,
         {},
         u"s"_s,
         u"codex exec --skip-git-repo-check --sandbox read-only -- \"$ORV_TASK\""_s,
         u"codex|exec|--skip-git-repo-check|--sandbox|read-only|--|@"_s},
        {codex,
         edit,
         {},
         {},
         u"codex exec --skip-git-repo-check --full-auto -- \"$ORV_TASK\""_s,
         u"codex|exec|--skip-git-repo-check|--full-auto|--|@"_s},
        {codex,
         full,
         {},
         {},
         u"codex exec --skip-git-repo-check --dangerously-bypass-approvals-and-sandbox -- \"$ORV_TASK\""_s,
         u"codex|exec|--skip-git-repo-check|--dangerously-bypass-approvals-and-sandbox|--|@"_s},
        {gemini, plan, {}, u"s"_s, u"gemini --prompt=\"$ORV_TASK\""_s, u"gemini|--prompt=@"_s},
        {gemini,
         edit,
         {},
         {},
         u"gemini --approval-mode auto_edit --prompt=\"$ORV_TASK\""_s,
         u"gemini|--approval-mode|auto_edit|--prompt=@"_s},
        {gemini, full, {}, {}, u"gemini --yolo --prompt=\"$ORV_TASK\""_s, u"gemini|--yolo|--prompt=@"_s},
        {antigravity, plan, {}, u"s"_s, agy + u"--mode plan -p \"$ORV_TASK\""_s, u"agy|--mode|plan|-p|@"_s},
        {antigravity, edit, {}, {}, agy + u"--mode accept-edits -p \"$ORV_TASK\""_s, u"agy|--mode|accept-edits|-p|@"_s},
        {antigravity,
         full,
         {},
         {},
         agy + u"--dangerously-skip-permissions -p \"$ORV_TASK\""_s,
         u"agy|--dangerously-skip-permissions|-p|@"_s},
        {custom, full, u" \n mytool run\t\n"_s, u"s"_s, u"mytool run \"$ORV_TASK\""_s, u"mytool|run|@"_s},
        {custom,
         plan,
         u"mytool --ask \"$ORV_TASK\" --fast"_s,
         {},
         u"mytool --ask \"$ORV_TASK\" --fast"_s,
         u"mytool|--ask|@|--fast"_s},
    };
    AgentHome home;
    for (const Case& row : cases) {
        const auto line = AgentCommandBuilder::command(row.kind, row.autonomy, row.customTemplate, row.session);
        ASSERT_EQ(line, row.line);
        QStringList expected = row.words.split(u'|');
        for (QString& word : expected) {
            word.replace(u'@', task);
        }
        for (const QString& shell : {u"/bin/zsh"_s, u"/bin/sh"_s}) {
            expectEqual(
                home.words({shell, u"-lc"_s, *line}, {}, task), expected, (shell + u' ' + row.line).toStdString());
        }
    }
    EXPECT_EQ(AgentCommandBuilder::command(custom, edit, u" \n\t "_s, {}), std::nullopt);
    EXPECT_EQ(AgentCommandBuilder::command(custom, edit, {}, {}), std::nullopt);
}

TEST(AgentCommandBuilder, TypesTheTaskIntoATerminal) {
    const struct {
        AgentKind kind;
        QString start;
        QStringList words;
    } cases[] = {
        {AgentKind::claude, u"claude -- "_s, {u"claude"_s, u"--"_s}},
        {AgentKind::codex, u"codex -- "_s, {u"codex"_s, u"--"_s}},
        {AgentKind::gemini, u"gemini -- "_s, {u"gemini"_s, u"--"_s}},
        {AgentKind::antigravity, u"PATH=\"$HOME/.local/bin:$PATH\" agy -i "_s, {u"agy"_s, u"-i"_s}},
    };
    AgentHome home;
    const QString task = hostileTask();
    for (const auto& [kind, start, words] : cases) {
        EXPECT_EQ(
            AgentCommandBuilder::interactiveCommand(kind, u"fix the 'login' page"_s),
            start + u"'fix the '\\''login'\\'' page'"_s);
        const auto line = AgentCommandBuilder::interactiveCommand(kind, task);
        ASSERT_TRUE(line);
        expectEqual(
            home.words({u"/bin/zsh"_s, u"-l"_s}, line->toUtf8() + '\n', {}), words + QStringList{task},
            start.toStdString());
    }
    EXPECT_EQ(AgentCommandBuilder::interactiveCommand(AgentKind::custom, task), std::nullopt);
}

TEST(AgentCommandBuilder, TellsAFollowUpWhatWentBefore) {
    EXPECT_EQ(
        AgentCommandBuilder::followUpTask(u"Add it"_s, u"Added"_s, u"Remove it"_s),
        u"Earlier in this project you were asked:\n\nAdd it\n\nYou answered:\n\nAdded\n\nFollow-up:\n\nRemove it"_s);
    EXPECT_EQ(
        AgentCommandBuilder::followUpTask(u"Add it"_s, {}, u"Remove it"_s),
        u"Earlier in this project you were asked:\n\nAdd it\n\nFollow-up:\n\nRemove it"_s);
    const QString second = AgentCommandBuilder::followUpTask(
        AgentCommandBuilder::followUpTask(u"Add it"_s, {}, u"Remove it"_s), u"Done"_s, u"And\n\nnow?"_s);
    EXPECT_EQ(AgentCommandBuilder::followUpMessage(second), u"And\n\nnow?"_s);
    // Of a long conversation the oldest is forgotten.
    QString long_ = u"First of all"_s;
    for (int turn = 0; turn < 40; ++turn) {
        long_ = AgentCommandBuilder::followUpTask(long_, QString(4000, u'\u00e9'), u"Turn %1 \U0001F600"_s.arg(turn));
        EXPECT_LE(long_.toUtf8().size(), AgentCommandBuilder::longestFollowUpBytes);
        EXPECT_EQ(AgentCommandBuilder::followUpMessage(long_), u"Turn %1 \U0001F600"_s.arg(turn));
        EXPECT_FALSE(long_.contains(QChar::ReplacementCharacter)) << turn;
    }
    EXPECT_TRUE(long_.startsWith(u"Earlier in this project you were asked:\n\n(What came before this was cut.)\n\n"_s));
    EXPECT_TRUE(!long_.contains(u"First of all"_s) && long_.contains(u"Turn 30 "_s));
    EXPECT_EQ(long_.count(u"was cut"_s), 1);
    EXPECT_TRUE(AgentCommandBuilder::followUpTask(u"Add it"_s, {}, QString(200'000, u'x')).endsWith(u"x"_s));
    EXPECT_EQ(AgentCommandBuilder::followUpMessage(u"See\n\nFollow-up:\n\nx"_s), u"See\n\nFollow-up:\n\nx"_s);
}
