#include "SingleInstance.h"

#include "OrvCore/Async.h"
#include "OrvCore/Paths.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>
#include <QThread>
#include <QTimer>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {

namespace {

constexpr auto again = 20ms;
/// A caller that sends nothing, or no end of it, is let go.
constexpr auto patience = 5s;
constexpr qsizetype longestMessage = 64 * 1024;
constexpr QByteArrayView taken("ok\n");
constexpr QByteArrayView leaving("leaving\n");
constexpr int waitingCallers = 16;

/// The folder is the user's and nobody else may write there, or it is made so.
bool isOurs(const QString& folder) {
    const QByteArray path = QFile::encodeName(folder);
    ::mkdir(path.constData(), S_IRWXU);
    struct stat info{};
    return ::lstat(path.constData(), &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == ::getuid() &&
           (info.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

bool setAddress(sockaddr_un& address, const QString& path) {
    const QByteArray bytes = QFile::encodeName(path);
    address.sun_family = AF_UNIX;
    if (bytes.isEmpty() || bytes.size() >= static_cast<qsizetype>(sizeof address.sun_path)) {
        return false;
    }
    std::memcpy(address.sun_path, bytes.constData(), static_cast<size_t>(bytes.size()) + 1);
    return true;
}

UniqueFd makeSocket() {
    UniqueFd made(::socket(AF_UNIX, SOCK_STREAM, 0));
    ::fcntl(made.get(), F_SETFD, FD_CLOEXEC);
    return made;
}

bool writeAll(int fd, QByteArrayView bytes) {
    while (!bytes.isEmpty()) {
#ifdef MSG_NOSIGNAL
        const ssize_t written = ::send(fd, bytes.data(), static_cast<size_t>(bytes.size()), MSG_NOSIGNAL);
#else
        const ssize_t written = ::write(fd, bytes.data(), static_cast<size_t>(bytes.size()));
#endif
        if (written <= 0 && errno != EINTR) {
            return false;
        }
        bytes = bytes.sliced(std::max<ssize_t>(written, 0));
    }
    return true;
}

/// What the first one answers; empty where nobody listens.
QByteArray handOver(const QString& path, const QByteArray& message, std::chrono::milliseconds limit) {
    sockaddr_un address{};
    const UniqueFd socket = makeSocket();
    if (!setAddress(address, path)) {
        return {};
    }
    const timeval time{
        static_cast<time_t>(limit / 1s), static_cast<suseconds_t>(std::chrono::microseconds(limit % 1s).count())};
    ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &time, sizeof time);
    ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &time, sizeof time);
    if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        !writeAll(socket.get(), message + '\n')) {
        return {};
    }
    QByteArray answer;
    std::array<char, 16> bytes{};
    while (!answer.endsWith('\n')) {
        const ssize_t count = ::recv(socket.get(), bytes.data(), bytes.size(), 0);
        if (count <= 0 && errno != EINTR) {
            return {};
        }
        answer.append(bytes.data(), std::max<ssize_t>(count, 0));
    }
    return answer;
}

} // namespace

/// One that has connected, until its message is there.
class SingleInstance::Caller : public QObject {
public:
    Caller(SingleInstance& instance, UniqueFd socket)
        : QObject(&instance),
          m_instance(instance),
          m_socket(std::move(socket)),
          m_notifier(m_socket.get(), QSocketNotifier::Read) {
        connect(&m_notifier, &QSocketNotifier::activated, this, &Caller::read);
        QTimer::singleShot(patience, this, &QObject::deleteLater);
    }

private:
    void read() {
        std::array<char, 4096> bytes{};
        const ssize_t count = ::recv(m_socket.get(), bytes.data(), bytes.size(), 0);
        if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
            return;
        }
        m_message.append(bytes.data(), std::max<ssize_t>(count, 0));
        const qsizetype end = m_message.indexOf('\n');
        if (end < 0 && count > 0 && m_message.size() < longestMessage) {
            return;
        }
        m_notifier.setEnabled(false);
        if (end >= 0) {
            if (!m_instance.m_isLeaving) {
                Q_EMIT m_instance.called(m_message.first(end));
            }
            writeAll(m_socket.get(), m_instance.m_isLeaving ? leaving : taken);
        }
        deleteLater();
    }

    SingleInstance& m_instance;
    UniqueFd m_socket;
    QSocketNotifier m_notifier;
    QByteArray m_message;
};

SingleInstance::Place SingleInstance::Place::in(const QString& folder, const QString& supportFolder) {
    constexpr qsizetype length = 16;
    const QByteArray hash = QCryptographicHash::hash(supportFolder.toUtf8(), QCryptographicHash::Sha256).toHex();
    const QString name = folder + u"/orvlauncher-"_s + QString::fromLatin1(hash.first(length));
    return {name + u".lock"_s, name + u".socket"_s};
}

SingleInstance::Place SingleInstance::Place::ofThisUser() {
    // By its real name: a folder that is reached in two ways is one.
    const QString support = Paths::supportDirectory();
    const QString real = QFileInfo(support).canonicalFilePath();
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    const QString own = QDir::tempPath() + u"/orvlauncher-%1"_s.arg(::getuid());
    for (const QString& folder : {runtime, own}) {
        if (!folder.isEmpty() && isOurs(folder)) {
            return in(folder, real.isEmpty() ? support : real);
        }
    }
    return {};
}

SingleInstance::SingleInstance(Place place, QObject* parent) : QObject(parent), m_place(std::move(place)) {}

SingleInstance::~SingleInstance() {
    end();
}

bool SingleInstance::takeLock() {
    UniqueFd lock(::open(QFile::encodeName(m_place.lock).constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!lock.isValid() || ::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        return false;
    }
    // Runtime folders may be cleaned of what is old; this bit asks to leave it.
    ::fchmod(lock.get(), S_IRUSR | S_IWUSR | S_ISVTX);
    m_lock = std::move(lock);
    return true;
}

SingleInstance::Role SingleInstance::begin(
    const QByteArray& message, std::chrono::milliseconds limit, const std::function<void()>& waits) {
    if (m_place.lock.isEmpty()) {
        return Role::first;
    }
    QDeadlineTimer deadline(limit);
    bool isAwaited = false;
    while (true) {
        if (takeLock()) {
            return Role::first;
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline.remainingTimeAsDuration());
        const QByteArray answer = handOver(m_place.socket, message, std::max(left, again));
        if (answer == taken) {
            return Role::handedOver;
        }
        if (answer == leaving) {
            deadline.setRemainingTime(limit);
            if (!std::exchange(isAwaited, true) && waits) {
                waits();
            }
        }
        if (deadline.hasExpired()) {
            return Role::unanswered;
        }
        QThread::msleep(again.count()); // it has not begun to listen yet, or is about to end
    }
}

void SingleInstance::listen() {
    ORV_ASSERT_MAIN_THREAD();
    sockaddr_un address{};
    if (!m_lock.isValid() || !setAddress(address, m_place.socket)) {
        return;
    }
    ::unlink(address.sun_path); // of one that was killed
    UniqueFd socket = makeSocket();
    ::fcntl(socket.get(), F_SETFL, O_NONBLOCK);
    if (::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(socket.get(), waitingCallers) != 0) {
        qWarning("%s: %s", address.sun_path, std::strerror(errno));
        return;
    }
    m_socket = std::move(socket);
    m_notifier = std::make_unique<QSocketNotifier>(m_socket.get(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &SingleInstance::accept);
}

void SingleInstance::accept() {
    UniqueFd socket(::accept(m_socket.get(), nullptr, nullptr));
    if (socket.isValid()) {
        ::fcntl(socket.get(), F_SETFD, FD_CLOEXEC);
        ::fcntl(socket.get(), F_SETFL, O_NONBLOCK);
        new Caller(*this, std::move(socket));
    }
}

void SingleInstance::end() {
    m_notifier.reset();
    if (m_socket.isValid()) {
        ::unlink(QFile::encodeName(m_place.socket).constData());
        m_socket.reset();
    }
    m_lock.reset(); // last: who gets it may make the socket again
}

bool SingleInstance::isRunning(const Place& place) {
    const UniqueFd lock(::open(QFile::encodeName(place.lock).constData(), O_RDWR | O_CLOEXEC | O_NOFOLLOW));
    return lock.isValid() && ::flock(lock.get(), LOCK_SH | LOCK_NB) != 0;
}

} // namespace orv
