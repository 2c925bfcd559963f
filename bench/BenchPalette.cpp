// How long the command palette takes from a key to its results, with 2,000 projects and what can be done with them.
#include "NamedProjects.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/Palette.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr int projects = 2000;
constexpr int rounds = 20;

double milliseconds(auto work) {
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

void report(const char* what, std::vector<double> times) {
    std::ranges::sort(times);
    std::printf("| %s | %.2f ms | %.2f ms |\n", what, times[times.size() / 2], times.back());
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    const QString root = folder.filePath(u"projects"_s);
    orv::bench::addNamedProjects(root, projects);
    const QString settingsFile = folder.filePath(u"support/settings.json"_s);
    orv::SettingsStore(settingsFile).change([&](orv::AppSettings& settings) { settings.scanRoot = root; });
    orv::AppModel::Options options;
    options.settings = std::make_unique<orv::SettingsStore>(settingsFile);
    options.tasksFile = folder.filePath(u"support/tasks.json"_s);
    options.overrides = std::make_shared<orv::OverrideStore>(folder.filePath(u"support/overrides.json"_s));
    options.snapshotDirectory = folder.filePath(u"widgets"_s);
    orv::AppModel model(std::move(options));
    QEventLoop loop;
    QObject::connect(&model, &orv::AppModel::hasScannedChanged, &loop, &QEventLoop::quit);
    model.refresh();
    loop.exec();
    if (model.projects().size() != projects) {
        std::fprintf(stderr, "%lld projects\n", static_cast<long long>(model.projects().size()));
        return 1;
    }

    orv::Palette palette;
    palette.setModel(&model);
    std::vector<double> opening;
    std::vector<double> first;
    std::vector<double> later;
    const QStringList queries{
        u"shop admin web"_s, u"stop all services"_s, u"new terminal atlas 1750"_s, u"settings"_s, u"pktmlwkr"_s};
    for (int round = 0; round < rounds; ++round) {
        for (const QString& query : queries) {
            opening.push_back(milliseconds([&] { palette.open(); }));
            for (int length = 1; length <= query.size(); ++length) {
                const double time = milliseconds([&] { palette.setQuery(query.first(length)); });
                (length == 1 ? first : later).push_back(time);
            }
            palette.close();
        }
    }
    std::puts("| Step | Median | Longest |\n|---|---|---|");
    report("opened", opening);
    report("first letter", first);
    report("each letter after it", later);
    return 0;
}
