#include "tests/OrvUI/AgentFixture.h"

#include <QProcess>

namespace orv::test {

using namespace Qt::StringLiterals;

AgentFixture::AgentFixture()
    : home("HOME", tree.path(u"home"_s).toUtf8().constData()),
      zdotdir("ZDOTDIR", tree.path(u"home"_s).toUtf8().constData()),
      note("REPLAY_NOTE", tree.path(u"note"_s).toUtf8().constData()),
      config("GIT_CONFIG_NOSYSTEM", "1") {
    tree.add(u"home/.gitconfig"_s, "[user]\n\tname = Ada\n\temail = ada@example.org\n[init]\n\tdefaultBranch = main\n");
    for (const QString& profile : {u".zprofile"_s, u".profile"_s}) {
        tree.add(
            u"home/"_s + profile, "export PATH=\"" + tree.path(u"bin"_s).toUtf8() + ":$PATH\" REPLAY_NOTE=\"" +
                                      tree.path(u"note"_s).toUtf8() + "\"\n");
    }
    for (const QString& agent : {u"claude"_s, u"codex"_s}) {
        EXPECT_TRUE(QFile::link(sourcePath(u"tests/agents/agent"_s), tree.path(u"bin/"_s + agent)));
    }
    play("true");
}

void AgentFixture::addRepository(const QString& name) {
    addNode(name, "express", "exec sleep 100\n");
    tree.add(u"projects/"_s + name + u"/a.txt"_s, "1\n2\n");
    tree.add(u"projects/"_s + name + u"/b.txt"_s, "b\n");
    const QString folder = root + u'/' + name;
    git(folder, {u"init"_s, u"-q"_s});
    git(folder, {u"add"_s, u"-A"_s});
    git(folder, {u"commit"_s, u"-q"_s, u"-m"_s, u"First"_s});
}

void AgentFixture::play(const QByteArray& then, const QString& stream) {
    qputenv("REPLAY_THEN", then);
    qputenv(
        "REPLAY_STREAM",
        stream.isEmpty() ? QByteArray("/dev/null") : sourcePath(u"tests/agents/streams/"_s + stream).toUtf8());
}

AgentRun* AgentFixture::start(const QString& projectName, const QString& task) {
    AgentRun* run = model->startAgent(AgentKind::claude, task, project(projectName));
    EXPECT_NE(run, nullptr) << model->agentError().value_or(QString()).toStdString();
    return run;
}

bool AgentFixture::settles(const AgentRun* run) {
    const QFuture<void> end = model->agentRunner().settled(run);
    return waitFor([&end] { return end.isFinished(); }, std::chrono::seconds(60));
}

QStringList AgentFixture::shown(const AgentRun& run) {
    QStringList lines{rawValue(run.status().kind)};
    if (run.changes()) {
        for (const AgentFileChange& file : run.changes()->files) {
            lines.append(u"%1 %2 +%3-%4"_s.arg(rawValue(file.kind), file.path).arg(file.added).arg(file.removed));
        }
    }
    return lines;
}

QString git(const QString& folder, const QStringList& words) {
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(u"git"_s, words);
    EXPECT_TRUE(process.waitForFinished(60000) && process.exitCode() == 0)
        << process.readAllStandardError().constData();
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

} // namespace orv::test
