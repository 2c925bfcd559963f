#include "BenchTree.h"
#include "OrvCore/ProjectScanner.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr const char* usage = R"(usage: orv-bench-scan make ROOT PROJECTS FOLDERS SKIPPED_PER_PROJECT
       orv-bench-scan scan ROOT       prints the number of projects and the milliseconds that the scan took
       orv-bench-scan skipped-names   prints the names of the folders that a scan does not enter
)";

int make(const QStringList& words) {
    const orv::bench::TreeShape shape{words[1].toInt(), words[2].toInt(), words[3].toInt()};
    return orv::bench::makeTree(words[0].toStdString(), shape) ? 0 : 1;
}

int scan(const QStringList& words) {
    const orv::ProjectScanner scanner;
    QElapsedTimer timer;
    timer.start();
    const auto projects = scanner.scan(words[0]);
    const double milliseconds = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    if (!projects) {
        std::fprintf(stderr, "%s\n", qPrintable(projects.error().text()));
        return 1;
    }
    std::printf("%lld %.3f\n", static_cast<long long>(projects->size()), milliseconds);
    return 0;
}

int skippedNames(const QStringList&) {
    QStringList names = orv::ProjectScanner::defaultSkips().values();
    names.sort();
    std::printf("%s\n", qPrintable(names.join(u'\n')));
    return 0;
}

struct Command {
    QString name;
    qsizetype words;
    int (*run)(const QStringList& words);
};

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const std::array commands{
        Command{u"make"_s, 4, make}, Command{u"scan"_s, 1, scan}, Command{u"skipped-names"_s, 0, skippedNames}};
    QStringList words = QCoreApplication::arguments().mid(1);
    const QString name = words.isEmpty() ? QString() : words.takeFirst();
    const auto command = std::ranges::find_if(
        commands, [&](const Command& one) { return one.name == name && one.words == words.size(); });
    if (command == commands.end()) {
        std::fputs(usage, stderr);
        return 2;
    }
    return command->run(words);
}
