#pragma once

#include "OrvGit/GitService.h"
#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

namespace orv::test {

/// A home of its own with a name, an e-mail and a default branch "main", in which git knows no other configuration.
class GitHome {
public:
    GitHome();
    [[nodiscard]] QString path(const QString& relative = {}) const { return m_tree.path(relative); }
    QString add(const QString& relative, const QByteArray& content) { return m_tree.add(relative, content); }
    /// A new repository with the files of the pairs committed, when there are any.
    QString makeRepository(const QString& name, const QList<std::pair<QString, QByteArray>>& files = {});

private:
    TemporaryTree m_tree;
    ScopedEnvironment m_home;
    ScopedEnvironment m_config;
    ScopedEnvironment m_system;
    ScopedEnvironment m_global;
};

inline constexpr int anyCode = -1;
/// What git itself says; the test fails when it exits with anything but `expected`.
QByteArray git(const QString& folder, const QStringList& words, int expected = 0, const QByteArray& input = {});
QString gitText(const QString& folder, const QStringList& words, int expected = 0);

/// How many processes there are whose command line contains the text.
int processesWith(const QByteArray& text);

/// As `waitFor`, on a thread without an event loop.
[[nodiscard]] bool comesTrue(const std::function<bool()>& condition);

/// By value, so that a loop may run over it.
template <typename T>
T value(GitOutcome<T> outcome) {
    EXPECT_TRUE(outcome);
    return outcome ? *std::move(outcome) : T();
}

template <typename T>
std::string failure(const GitOutcome<T>& outcome) {
    return outcome ? std::string() : outcome.error().text().toStdString();
}

} // namespace orv::test
