#pragma once

#include "OrvUI/AppModel.h"
#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

namespace orv::test {

/// Prints an address, then stays.
[[nodiscard]] QByteArray up(int port);

/// A model over a folder of its own, and a PATH whose first folder holds an `npm` and a `flutter` that do what the
/// scripts in the current folder say ("npm-install.sh", "npm-run.sh", "flutter-run.sh", ...).
class ModelFixture : public ::testing::Test {
protected:
    ModelFixture();

    /// A new one over the same files; the old one is gone before.
    void makeModel();
    /// What else the model is made with.
    virtual void addTo(AppModel::Options&) {}
    /// A folder below the scanned root that is a Node project with this dependency.
    void addNode(const QString& folder, const QByteArray& dependency, const QByteArray& runScript);
    /// The same, already installed.
    void addInstalled(const QString& folder, const QByteArray& dependency, const QByteArray& runScript);
    void addScript(const QString& folder, const QString& name, const QByteArray& script);
    void scan();
    [[nodiscard]] Project project(const QString& name) const;
    [[nodiscard]] ServiceID id(const Project& project, ServiceKind kind) const;
    [[nodiscard]] ServiceState state(const Project& project, ServiceKind kind) const;
    [[nodiscard]] bool waitForPhase(const Project& project, ServiceKind kind, ServiceState::Phase phase) const;
    [[nodiscard]] QString logText(const ServiceID& id) const;
    [[nodiscard]] std::optional<WidgetSnapshot> snapshot();

    TemporaryTree tree;
    const QString root;
    ScopedEnvironment path;
    std::unique_ptr<AppModel> model;
};

/// True when the operation came to its end.
[[nodiscard]] bool finishes(const QFuture<void>& future);

} // namespace orv::test
