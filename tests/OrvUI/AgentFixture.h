#pragma once

#include "tests/OrvUI/ModelFixture.h"

#include <QFile>

namespace orv::test {

/// A model with a `claude` and a `codex` that play what tests/agents/agent plays, and git in a home of its own.
class AgentFixture : public ModelFixture {
protected:
    AgentFixture();

    /// A project that is a repository with "a.txt" and "b.txt" in it.
    void addRepository(const QString& name);
    /// What the next agents print and do.
    void play(const QByteArray& then, const QString& stream = {});
    AgentRun* start(const QString& projectName, const QString& task = QStringLiteral("Fix it"));
    [[nodiscard]] bool settles(const AgentRun* run);
    [[nodiscard]] static QStringList shown(const AgentRun& run);

    ScopedEnvironment home;
    ScopedEnvironment zdotdir;
    ScopedEnvironment note;
    ScopedEnvironment config;
};

/// What git says, trimmed.
QString git(const QString& folder, const QStringList& words);

} // namespace orv::test
