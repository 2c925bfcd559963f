#pragma once

#include "tests/support/TestSupport.h"

#include <QByteArray>
#include <QProcess>
#include <QStringList>

#include <memory>

namespace orv::test {

struct Ended {
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

/// A running command line; killed with the object.
class Running {
public:
    Running(
        const QString& program, const QStringList& words, const QProcessEnvironment& environment,
        const QByteArray& input);
    ~Running();

    /// Until stderr has the text; false when it ends without.
    [[nodiscard]] bool waitFor(const QByteArray& text, std::chrono::milliseconds limit = std::chrono::minutes(3));
    void signal(int number);
    [[nodiscard]] Ended end(std::chrono::milliseconds limit = std::chrono::minutes(3));
    /// The ports in "NAME is up at http://localhost:PORT", by name.
    [[nodiscard]] QMap<QString, int> addresses();

private:
    void read();

    QProcess m_process;
    QByteArray m_out;
    QByteArray m_err;
};

/// A place to run the command line in: support folder and projects of its own. Every process that is started in it can
/// be found by a mark in its environment.
class Launcher {
public:
    Launcher();

    TemporaryTree tree;
    QProcessEnvironment environment;

    [[nodiscard]] Ended call(const QStringList& words, const QByteArray& input = {}) const;
    [[nodiscard]] std::unique_ptr<Running> start(const QStringList& words, const QByteArray& input = {}) const;
    /// A line for the shell, in which "$ORV" is the command line.
    [[nodiscard]] Ended shell(const QString& line) const;
    /// The command lines of all processes that came from here and still live.
    [[nodiscard]] QStringList leftBehind() const;

private:
    QByteArray m_mark;
};

/// What a server on this machine answers to GET /; empty when none does.
[[nodiscard]] QByteArray httpGet(int port);
/// A port on which nothing listens.
[[nodiscard]] int freePort();

} // namespace orv::test
