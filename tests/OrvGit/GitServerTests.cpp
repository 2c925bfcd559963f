#include "tests/OrvGit/GitFixture.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <netinet/in.h>
#include <pwd.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orv::test {
namespace {

/// Longer than any refusal takes, and much shorter than any time limit of ours.
constexpr qint64 atOnceMs = 60'000;

class GitServers : public ::testing::Test {
protected:
    GitServers() { git(home.path(), {u"clone"_s, u"-q"_s, u"--bare"_s, seed, home.path(u"origin.git"_s)}); }

    [[nodiscard]] std::string clone(const QString& url, const QString& name) const {
        return failure(service.clone(url, home.path(), name, [](const QString&) {}));
    }
    /// Clones, commits there and pushes.
    void useWith(const QString& url) {
        ASSERT_EQ(clone(url, u"used"_s), "");
        const QString used = home.path(u"used"_s);
        EXPECT_EQ(readFile(used + u"/a"_s), "one\n");
        git(used, {u"commit"_s, u"-q"_s, u"--allow-empty"_s, u"-m"_s, u"Pushed"_s});
        EXPECT_EQ(failure(service.push(used)), "");
        EXPECT_EQ(gitText(home.path(u"origin.git"_s), {u"log"_s, u"-1"_s, u"--format=%s"_s, u"main"_s}), u"Pushed"_s);
    }

    GitHome home;
    GitService service;
    const QString seed = home.makeRepository(u"seed"_s, {{u"a"_s, "one\n"}});
};

int freePort() {
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    EXPECT_EQ(::bind(socket, reinterpret_cast<sockaddr*>(&address), size), 0);
    EXPECT_EQ(::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size), 0);
    ::close(socket);
    return ntohs(address.sin_port);
}

/// An sshd of the test's own on the loopback address, which lets the key "right" in.
class SshServer {
public:
    explicit SshServer(GitHome& home) : m_home(home) {
        m_home.add(u"ssh/"_s, {});
        for (const QString& name : {u"host"_s, u"right"_s, u"wrong"_s}) {
            makeKey(name, {});
        }
        makeKey(u"locked"_s, u"a passphrase"_s);
        m_home.add(u"ssh/authorized"_s, readFile(path(u"right.pub"_s)) + readFile(path(u"locked.pub"_s)));
        m_home.add(u"ssh/known"_s, "[127.0.0.1]:" + QByteArray::number(m_port) + ' ' + readFile(path(u"host.pub"_s)));
        m_home.add(
            u"ssh/config"_s, "Port " + QByteArray::number(m_port) + "\nListenAddress 127.0.0.1\nHostKey " +
                                 path(u"host"_s).toUtf8() + "\nAuthorizedKeysFile " + path(u"authorized"_s).toUtf8() +
                                 "\nStrictModes no\nUsePAM no\nPasswordAuthentication no\n"
                                 "KbdInteractiveAuthentication no\nPermitRootLogin prohibit-password\n"
                                 "PermitUserRC no\nPidFile none\nPrintMotd no\n"
                                 // In a shell that seems to lie in another one, bash reads no start file of the user's.
                                 "SetEnv SHLVL=2\n");
        if (::geteuid() == 0) {
            // What the system's own service makes before it starts sshd.
            QDir().mkpath(u"/run/sshd"_s);
        }
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        QStringList words{u"-f"_s, path(u"config"_s)};
        // Newer ones shut out for a while whoever was refused.
        const QStringList lenient{u"-o"_s, u"PerSourcePenalties=no"_s};
        if (QProcess::execute(sshd, QStringList{u"-q"_s, u"-t"_s} + words + lenient) == 0) {
            words += lenient;
        }
        m_process.start(sshd, QStringList{u"-D"_s, u"-e"_s} + words);
    }
    ~SshServer() {
        m_process.terminate();
        m_process.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(SshServer)

    [[nodiscard]] bool isUp() {
        QByteArray said;
        while (!said.contains("Server listening")) {
            if (!m_process.waitForReadyRead(30000)) {
                ADD_FAILURE() << said.constData() << qPrintable(m_process.errorString());
                return false;
            }
            said += m_process.readAll();
        }
        return true;
    }
    [[nodiscard]] QString url(const QString& repository) const {
        return u"ssh://%1@127.0.0.1:%2%3"_s.arg(QString::fromLocal8Bit(::getpwuid(::getuid())->pw_name))
            .arg(m_port)
            .arg(repository);
    }
    /// How ssh is called: with a key, and the hosts that it knows.
    [[nodiscard]] QString command(const QString& key, const QString& knownHosts) const {
        return u"ssh -F /dev/null -o IdentitiesOnly=yes -o IdentityAgent=none -o StrictHostKeyChecking=ask -i '%1' "
               "-o UserKnownHostsFile='%2'"_s.arg(path(key), path(knownHosts));
    }

private:
    [[nodiscard]] QString path(const QString& name) const { return m_home.path(u"ssh/"_s + name); }
    void makeKey(const QString& name, const QString& passphrase) {
        QProcess process;
        process.start(u"ssh-keygen"_s, {u"-q"_s, u"-t"_s, u"ed25519"_s, u"-N"_s, passphrase, u"-f"_s, path(name)});
        EXPECT_TRUE(process.waitForFinished(60000) && process.exitCode() == 0);
    }

    const QString sshd = u"/usr/sbin/sshd"_s;
    GitHome& m_home;
    const int m_port = freePort();
    QProcess m_process;
};

TEST_F(GitServers, OverSshTakeAKeyAndAskForNothing) {
    SshServer server(home);
    ASSERT_TRUE(server.isUp());
    const QString url = server.url(home.path(u"origin.git"_s));
    service.runner.extraEnvironment = {{u"GIT_SSH_COMMAND"_s, server.command(u"right"_s, u"known"_s)}};
    useWith(url);

    QElapsedTimer timer;
    timer.start();
    const struct {
        const char* label;
        QString key;
        QString knownHosts;
        std::string text;
    } refused[]{
        {"a key that is not let in", u"wrong"_s, u"known"_s, "Permission denied (publickey)."},
        {"a key with a passphrase", u"locked"_s, u"known"_s, "Permission denied (publickey)."},
        {"a host that is not known", u"right"_s, u"nobody"_s, "Host key verification failed."},
    };
    for (const auto& each : refused) {
        service.runner.extraEnvironment = {{u"GIT_SSH_COMMAND"_s, server.command(each.key, each.knownHosts)}};
        const bool isKey = each.text.starts_with("Permission");
        const std::string text = clone(url, u"refused"_s);
        EXPECT_TRUE(text.contains(each.text)) << each.label << ": " << text;
        EXPECT_EQ(text.starts_with("Authentication failed. "), isKey) << each.label << ": " << text;
        EXPECT_FALSE(QFileInfo::exists(home.path(u"refused"_s)));
        EXPECT_TRUE(failure(service.fetch(home.path(u"used"_s))).contains(each.text)) << each.label;
    }
    service.runner.purpose = GitPurpose::background;
    EXPECT_TRUE(clone(url, u"refused"_s).contains("transport 'ssh' not allowed")) << "nobody asked for it";
    EXPECT_LT(timer.elapsed(), atOnceMs);
}

TEST_F(GitServers, OverHttpTakeAPasswordAndAskForNone) {
    QProcess server;
    server.start(u"python3"_s, {sourcePath(u"tests/OrvGit/GitHttpServer.py"_s), home.path()});
    ASSERT_TRUE(server.waitForReadyRead(30000));
    const QString port = QString::fromUtf8(server.readLine().trimmed());
    const auto url = [&port](const QString& user) {
        return u"http://"_s + user + u"127.0.0.1:"_s + port + u"/origin.git"_s;
    };
    useWith(url(u"ada:secret@"_s));

    QElapsedTimer timer;
    timer.start();
    const struct {
        QString user;
        const char* text;
    } refused[]{
        {{}, "Authentication failed. fatal: could not read Username for"},
        {u"ada@"_s, "Authentication failed. fatal: could not read Password for"},
        {u"ada:wrong@"_s, "Authentication failed. fatal: Authentication failed for"},
    };
    const QString used = home.path(u"used"_s);
    for (const auto& each : refused) {
        const std::string text = clone(url(each.user), u"refused"_s);
        EXPECT_TRUE(text.starts_with(each.text)) << text;
        EXPECT_FALSE(QFileInfo::exists(home.path(u"refused"_s)));
        git(used, {u"remote"_s, u"set-url"_s, u"origin"_s, url(each.user)});
        for (const GitOutcome<void>& done :
             {service.fetch(used), service.pull(used, PullStrategy::merge), service.push(used)}) {
            EXPECT_TRUE(failure(done).starts_with(each.text)) << failure(done);
        }
    }
    EXPECT_LT(timer.elapsed(), atOnceMs);
    server.closeWriteChannel();
    EXPECT_TRUE(server.waitForFinished());
}

} // namespace
} // namespace orv::test
