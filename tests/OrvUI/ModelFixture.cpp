#include "tests/OrvUI/ModelFixture.h"

#include <QDir>
#include <QFile>

namespace orv::test {

using namespace Qt::StringLiterals;

QByteArray up(int port) {
    return "echo Local: http://localhost:" + QByteArray::number(port) + "/; exec sleep 100\n";
}

bool finishes(const QFuture<void>& future) {
    return waitFor([&] { return future.isFinished(); }) && !future.isCanceled();
}

ModelFixture::ModelFixture()
    : root(tree.add(u"projects/"_s)), path("PATH", (tree.path(u"bin:"_s).toUtf8() + qgetenv("PATH")).constData()) {
    for (const QString& tool : {u"npm"_s, u"flutter"_s}) {
        const QString file = tree.add(u"bin/"_s + tool, "#!/bin/sh\n. \"./$(basename $0)-$1.sh\"\n");
        QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    SettingsStore(tree.path(u"support/settings.json"_s)).change([this](AppSettings& settings) {
        settings.scanRoot = root;
    });
    makeModel();
}

void ModelFixture::makeModel() {
    model.reset();
    AppModel::Options options;
    options.settings = std::make_unique<SettingsStore>(tree.path(u"support/settings.json"_s));
    options.overrides = std::make_shared<OverrideStore>(tree.path(u"support/overrides.json"_s));
    options.processes = std::make_unique<ProcessManager>(std::chrono::milliseconds(500));
    options.tasksFile = tree.path(u"support/tasks.json"_s);
    options.snapshotDirectory = tree.path(u"widgets"_s);
    options.reportTime = std::chrono::milliseconds(60);
    addTo(options);
    model = std::make_unique<AppModel>(std::move(options));
}

void ModelFixture::addNode(const QString& folder, const QByteArray& dependency, const QByteArray& runScript) {
    tree.add(
        u"projects/"_s + folder + u"/package.json"_s,
        R"({"scripts": {"dev": "x"}, "dependencies": {")" + dependency + R"(": "1"}})");
    addScript(folder, u"npm-run.sh"_s, runScript);
    addScript(folder, u"npm-install.sh"_s, "echo installing >>installed.txt; mkdir -p node_modules\n");
}

void ModelFixture::addInstalled(const QString& folder, const QByteArray& dependency, const QByteArray& runScript) {
    addNode(folder, dependency, runScript);
    tree.add(u"projects/"_s + folder + u"/node_modules/"_s);
}

void ModelFixture::addScript(const QString& folder, const QString& name, const QByteArray& script) {
    tree.add(u"projects/"_s + folder + u'/' + name, script);
}

void ModelFixture::scan() {
    // One that runs already may have passed what was added since.
    ASSERT_TRUE(waitFor([&] { return !model->isScanning(); }));
    ASSERT_TRUE(finishes(model->refresh()));
}

Project ModelFixture::project(const QString& name) const {
    const Project* found = model->project(root + u'/' + name);
    EXPECT_NE(found, nullptr) << name.toStdString();
    return found != nullptr ? *found : Project{};
}

ServiceID ModelFixture::id(const Project& project, ServiceKind kind) const {
    for (const ServiceTarget& target : project.targets) {
        if (target.kind == kind) {
            return ProcessManager::id(target, project.id);
        }
    }
    ADD_FAILURE() << "no such target in " << project.name.toStdString();
    return {};
}

ServiceState ModelFixture::state(const Project& project, ServiceKind kind) const {
    return model->processes().state(id(project, kind));
}

bool ModelFixture::waitForPhase(const Project& project, ServiceKind kind, ServiceState::Phase phase) const {
    return waitFor([&] { return state(project, kind).phase == phase; });
}

QString ModelFixture::logText(const ServiceID& id) const {
    QStringList lines;
    for (const QString& line : model->processes().log(id)) {
        lines.append(line);
    }
    return lines.join(u'\n');
}

std::optional<WidgetSnapshot> ModelFixture::snapshot() {
    model->flushSnapshot();
    return SharedContainer::read(tree.path(u"widgets"_s));
}

} // namespace orv::test
