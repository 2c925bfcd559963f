#include "tests/OrvGit/GitFixture.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QProcess>

#include <poll.h>

using namespace Qt::StringLiterals;

namespace orv::test {

GitHome::GitHome()
    : m_home("HOME", m_tree.path(u"home"_s).toUtf8().constData()),
      m_config("XDG_CONFIG_HOME", m_tree.path(u"home/.config"_s).toUtf8().constData()),
      m_system("GIT_CONFIG_NOSYSTEM", "1"),
      m_global("GIT_CONFIG_GLOBAL", nullptr) {
    m_tree.add(
        u"home/.gitconfig"_s,
        "[user]\n\tname = Ada\n\temail = ada@example.org\n[init]\n\tdefaultBranch = main\n[protocol \"file\"]\n"
        "\tallow = always\n[gc]\n\tauto = 0\n");
}

QString GitHome::makeRepository(const QString& name, const QList<std::pair<QString, QByteArray>>& files) {
    const QString folder = m_tree.add(name + u'/');
    git(folder, {u"init"_s, u"-q"_s});
    for (const auto& [file, content] : files) {
        m_tree.add(name + u'/' + file, content);
    }
    if (!files.isEmpty()) {
        git(folder, {u"add"_s, u"-A"_s});
        git(folder, {u"commit"_s, u"-q"_s, u"-m"_s, u"First"_s});
    }
    return folder;
}

QByteArray git(const QString& folder, const QStringList& words, int expected, const QByteArray& input) {
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(GitRunner::executable(), words);
    process.write(input);
    process.closeWriteChannel();
    EXPECT_TRUE(process.waitForFinished(60000)) << qPrintable(words.join(u' '));
    EXPECT_TRUE(expected == anyCode || process.exitCode() == expected)
        << qPrintable(words.join(u' ')) << process.readAllStandardError().constData();
    return process.readAllStandardOutput();
}

QString gitText(const QString& folder, const QStringList& words, int expected) {
    return QString::fromUtf8(git(folder, words, expected)).trimmed();
}

int processesWith(const QByteArray& text) {
    int found = 0;
    for (const QString& pid : QDir(u"/proc"_s).entryList(QDir::Dirs)) {
        found += readFile(u"/proc/%1/cmdline"_s.arg(pid)).contains(text) ? 1 : 0;
    }
    return found;
}

bool comesTrue(const std::function<bool()>& condition) {
    const QDeadlineTimer deadline(std::chrono::seconds(20));
    while (!condition()) {
        if (deadline.hasExpired()) {
            return false;
        }
        ::poll(nullptr, 0, 5);
    }
    return true;
}

} // namespace orv::test
