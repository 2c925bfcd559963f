#include "Launcher.h"

#include "OrvCore/UniqueFd.h"

#include <QDir>
#include <QRegularExpression>
#include <QUuid>

#include <gtest/gtest.h>

#include <netdb.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace orv::test {

using namespace Qt::StringLiterals;

Running::Running(
    const QString& program, const QStringList& words, const QProcessEnvironment& environment, const QByteArray& input) {
    m_process.setProcessEnvironment(environment);
    m_process.start(program, words);
    m_process.write(input);
    m_process.closeWriteChannel();
}

Running::~Running() {
    if (m_process.state() != QProcess::NotRunning) {
        m_process.terminate();
        m_process.waitForFinished();
    }
}

void Running::read() {
    m_out += m_process.readAllStandardOutput();
    m_err += m_process.readAllStandardError();
}

bool Running::waitFor(const QByteArray& text, std::chrono::milliseconds limit) {
    const auto isThere = [&] {
        read();
        return m_err.contains(text) || m_process.state() == QProcess::NotRunning;
    };
    return test::waitFor(isThere, limit) && m_err.contains(text);
}

void Running::signal(int number) {
    ::kill(static_cast<pid_t>(m_process.processId()), number);
}

Ended Running::end(std::chrono::milliseconds limit) {
    const bool hasEnded = test::waitFor([&] { return m_process.state() == QProcess::NotRunning; }, limit);
    read();
    EXPECT_TRUE(hasEnded) << "still running after " << m_out.toStdString() << m_err.toStdString();
    const bool isNormal = hasEnded && m_process.exitStatus() == QProcess::NormalExit;
    return {isNormal ? m_process.exitCode() : -1, m_out, m_err};
}

QMap<QString, int> Running::addresses() {
    read();
    static const QRegularExpression said(
        u"^(.*) is up at http://localhost:(\\d+)"_s, QRegularExpression::MultilineOption);
    QMap<QString, int> ports;
    for (auto match = said.globalMatch(QString::fromUtf8(m_err)); match.hasNext();) {
        const QRegularExpressionMatch next = match.next();
        ports[next.captured(1)] = next.captured(2).toInt();
    }
    return ports;
}

Launcher::Launcher() : m_mark("ORV_TEST_MARK=" + QUuid::createUuid().toByteArray()) {
    environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"ORV_SUPPORT_DIR"_s, tree.path(u"support"_s));
    environment.insert(u"ORV_TEST_MARK"_s, QString::fromUtf8(m_mark.mid(m_mark.indexOf('=') + 1)));
    environment.insert(u"ORV"_s, QStringLiteral(ORV_LAUNCHER));
    environment.remove(u"PYTHONUNBUFFERED"_s);
    tree.add(u"projects/"_s);
    EXPECT_EQ(call({u"settings"_s, u"set"_s, u"scanRoot"_s, tree.path(u"projects"_s)}).exitCode, 0);
}

Ended Launcher::call(const QStringList& words, const QByteArray& input) const {
    return start(words, input)->end();
}

std::unique_ptr<Running> Launcher::start(const QStringList& words, const QByteArray& input) const {
    return std::make_unique<Running>(QStringLiteral(ORV_LAUNCHER), words, environment, input);
}

Ended Launcher::shell(const QString& line) const {
    return Running(u"/bin/sh"_s, {u"-c"_s, line}, environment, {}).end();
}

QStringList Launcher::leftBehind() const {
    QStringList found;
    const QStringList processes = QDir(u"/proc"_s).entryList({u"[1-9]*"_s}, QDir::Dirs);
    for (const QString& process : processes) {
        if (readFile(u"/proc/"_s + process + u"/environ"_s).split('\0').contains(m_mark)) {
            found.append(QString::fromUtf8(readFile(u"/proc/"_s + process + u"/cmdline"_s).replace('\0', ' ')));
        }
    }
    return found;
}

QByteArray httpGet(int port) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (::getaddrinfo("localhost", std::to_string(port).c_str(), &hints, &found) != 0) {
        return {};
    }
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> addresses(found, ::freeaddrinfo);
    QByteArray answer;
    for (const addrinfo* address = found; address != nullptr && answer.isEmpty(); address = address->ai_next) {
        const UniqueFd socket(::socket(address->ai_family, address->ai_socktype | SOCK_CLOEXEC, address->ai_protocol));
        const timeval limit{10, 0};
        ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        if (::connect(socket.get(), address->ai_addr, address->ai_addrlen) != 0) {
            continue;
        }
        const QByteArray request = "GET / HTTP/1.0\r\nHost: localhost\r\n\r\n";
        if (::send(socket.get(), request.constData(), static_cast<size_t>(request.size()), MSG_NOSIGNAL) < 0) {
            continue;
        }
        std::array<char, 4096> bytes{};
        for (ssize_t count = 1; count > 0;) {
            count = ::recv(socket.get(), bytes.data(), bytes.size(), 0);
            answer.append(bytes.data(), std::max<ssize_t>(count, 0));
        }
    }
    return answer;
}

int freePort() {
    const UniqueFd socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    socklen_t size = sizeof address;
    EXPECT_EQ(::bind(socket.get(), reinterpret_cast<sockaddr*>(&address), size), 0);
    EXPECT_EQ(::getsockname(socket.get(), reinterpret_cast<sockaddr*>(&address), &size), 0);
    return ntohs(address.sin_port);
}

} // namespace orv::test
