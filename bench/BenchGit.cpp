#include "OrvGit/GitBadges.h"
#include "OrvGit/GitParsing.h"
#include "OrvGit/GitService.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFutureWatcher>
#include <QTimer>

#include <algorithm>
#include <cstdio>

#include <sys/resource.h>

using namespace Qt::StringLiterals;

namespace {

constexpr const char* usage =
    R"(usage: orv-bench-git status REPOSITORY   prints the number of changes, and the milliseconds of CPU
                                         that git took and the parser
       orv-bench-git log REPOSITORY      the same of commits
       orv-bench-git badges FOLDER [N]   reads the badges of the repositories in the folder, N at once; prints their number,
                                         their changes, the milliseconds, the longest stall of the event loop
)";

double milliseconds(const QElapsedTimer& timer) {
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

double cpuMilliseconds(int who) {
    rusage used{};
    ::getrusage(who, &used);
    return static_cast<double>(used.ru_utime.tv_sec + used.ru_stime.tv_sec) * 1e3 +
           static_cast<double>(used.ru_utime.tv_usec + used.ru_stime.tv_usec) / 1e3;
}

template <typename Parse>
int timeParser(const orv::GitArguments& arguments, const QString& repository, Parse parse) {
    const auto output = orv::GitRunner().run(arguments, repository, orv::GitRunner::noLimit);
    if (!output) {
        std::fprintf(stderr, "%s\n", qPrintable(output.error().text()));
        return 1;
    }
    const double before = cpuMilliseconds(RUSAGE_SELF);
    const qsizetype count = parse(*output);
    std::printf(
        "%lld %.3f %.3f\n", static_cast<long long>(count), cpuMilliseconds(RUSAGE_CHILDREN),
        cpuMilliseconds(RUSAGE_SELF) - before);
    return 0;
}

int badges(const QString& folder, int threads) {
    QElapsedTimer timer;
    timer.start();
    double stall = 0;
    double last = 0;
    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout, &tick, [&] {
        const double now = milliseconds(timer);
        stall = std::max(stall, now - last);
        last = now;
    });
    tick.setTimerType(Qt::PreciseTimer);
    tick.start(1);
    orv::GitBadges pool(threads);
    qsizetype left = 0;
    int changes = 0;
    const QStringList names = QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& name : names) {
        auto* watcher = new QFutureWatcher<orv::GitBadge>(&tick);
        QObject::connect(watcher, &QFutureWatcherBase::finished, &tick, [&, watcher] {
            changes += watcher->result().changes;
            if (--left == 0) {
                QCoreApplication::quit();
            }
        });
        watcher->setFuture(pool.read(folder + u'/' + name));
        ++left;
    }
    QCoreApplication::exec();
    std::printf("%lld %d %.3f %.3f\n", static_cast<long long>(names.size()), changes, milliseconds(timer), stall);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments().mid(1);
    if (words.size() == 2 && words[0] == "status"_L1) {
        return timeParser(
            {"status", "--porcelain=v2", "--branch", "-z", "--untracked-files=all"}, words[1],
            [](const QByteArray& output) { return orv::GitParsing::status(output).changes.size(); });
    }
    if (words.size() == 2 && words[0] == "log"_L1) {
        return timeParser({"log", "--format=%H%x1f%s%x1f%an%x1f%at"}, words[1], [](const QByteArray& output) {
            return orv::GitParsing::log(output).size();
        });
    }
    if ((words.size() == 2 || words.size() == 3) && words[0] == "badges"_L1) {
        return badges(words[1], words.value(2).toInt());
    }
    std::fputs(usage, stderr);
    return 2;
}
