// How fast the model of a log takes in a burst of lines, and what a search and a filter over a full one cost.
#include "OrvUI/LogModel.h"

#include <QCoreApplication>

#include <cstdio>
#include <ctime>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype capacity = 5000;
constexpr int burst = 500; ///< lines that are handed over at once
constexpr int lines = 1'000'000;

/// Of this process's own time: what else the machine does is no matter.
double secondsSince(std::clock_t start) {
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

/// Lines a second, in the given state of the model.
double measure(orv::LogModel& model, orv::LogBuffer& log, const QStringList& texts) {
    const std::clock_t start = std::clock();
    for (int count = 0; count < lines; count += burst) {
        qsizetype dropped = 0;
        for (int i = 0; i < burst; ++i) {
            dropped += log.append(texts[(count + i) % texts.size()]);
        }
        model.noteAppended(dropped);
    }
    return lines / secondsSince(start);
}

double milliseconds(auto work) {
    const std::clock_t start = std::clock();
    work();
    return secondsSince(start) * 1e3;
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QStringList plain{
        u"10:42:17.318 INFO  request 00001234 GET /api/orders/48213?page=3 200 in 12 ms, 2841 bytes"_s};
    const QStringList coloured{
        u"\x1b[90m10:42:17.318\x1b[0m \x1b[32mINFO\x1b[0m  request 00001234 GET /api/orders/48213 \x1b[1;32m200\x1b[0m in 12 ms"_s};
    std::puts("| Lines | Taken in | while searched | while filtered | Search in 5000 | Filter 5000 | Looks of 5000 |\n"
              "|---|---|---|---|---|---|---|");
    for (const auto& [name, texts] : {std::pair{"plain", plain}, {"coloured", coloured}}) {
        orv::LogBuffer log(capacity);
        orv::LogModel model;
        model.setLog(&log);
        const double alone = measure(model, log, texts);
        model.setSearchText(u"orders"_s);
        const double searched = measure(model, log, texts);
        model.setSearchText({});
        model.setFilterText(u"orders"_s);
        const double filtered = measure(model, log, texts);
        model.setFilterText({});
        const double search = milliseconds([&] { model.setSearchText(u"orders"_s); });
        const double filter = milliseconds([&] { model.setFilterText(u"no such thing"_s); });
        model.setFilterText({});
        const double looks = milliseconds([&] {
            for (int row = 0; row < model.rowCount(); ++row) {
                static_cast<void>(model.index(row).data(orv::LogModel::ContentRole));
            }
        });
        std::printf(
            "| %s | %.2f M/s | %.2f M/s | %.2f M/s | %.1f ms | %.1f ms | %.1f ms |\n", name, alone / 1e6,
            searched / 1e6, filtered / 1e6, search, filter, looks);
    }
    return 0;
}
