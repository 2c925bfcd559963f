// How fast an agent's stream becomes events, beside a bare parse of the same lines by Qt's JSON.
#include "OrvProcess/AgentStream.h"

#include <QFile>
#include <QJsonDocument>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <vector>

namespace {

/// The median of some rounds, in megabytes a second of processor time.
double speed(qsizetype bytes, const std::function<void()>& work) {
    std::vector<double> rounds;
    for (int round = 0; round < 9; ++round) {
        const std::clock_t start = std::clock();
        work();
        const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        rounds.push_back(static_cast<double>(bytes) / 1e6 / seconds);
    }
    std::ranges::nth_element(rounds, rounds.begin() + 4);
    return rounds[4];
}

void parseBare(QByteArrayView output) {
    for (qsizetype end = output.indexOf('\n'); end >= 0; end = output.indexOf('\n')) {
        const auto document = QJsonDocument::fromJson(QByteArray::fromRawData(output.data(), end));
        if (!document.isObject()) {
            std::puts("not an object");
        }
        output = output.sliced(end + 1);
    }
}

void parseStream(QByteArrayView output) {
    constexpr qsizetype pieceBytes = 32 * 1024;
    orv::AgentStream stream(orv::AgentKind::claude);
    qsizetype lines = 0;
    for (; !output.isEmpty(); output = output.sliced(std::min(pieceBytes, output.size()))) {
        lines += stream.append(output.first(std::min(pieceBytes, output.size()))).size();
    }
    if (lines == 0) {
        std::puts("no lines");
    }
}

} // namespace

int main(int argc, char** argv) {
    QFile file(QString::fromLocal8Bit(argc > 1 ? argv[1] : ""));
    if (!file.open(QIODevice::ReadOnly)) {
        std::fputs("usage: orv-bench-agents STREAM.jsonl\n", stderr);
        return 2;
    }
    const QByteArray recorded = file.readAll();
    const QByteArray picture =
        R"({"type":"user","message":{"content":[{"data":")" + QByteArray(2'000'000, 'A') + "\"}]}}\n";
    std::puts("| | bare parse | events | time beside it |\n|---|---:|---:|---:|");
    for (const auto& [name, output] :
         {std::pair{"recorded lines", recorded.repeated(40'000'000 / recorded.size())},
          std::pair{"lines of 2 MB", picture.repeated(20)}}) {
        const double bare = speed(output.size(), [&output = output] { parseBare(output); });
        const double stream = speed(output.size(), [&output = output] { parseStream(output); });
        std::printf("| %s | %.0f MB/s | %.0f MB/s | %.2f |\n", name, bare, stream, bare / stream);
    }
    return 0;
}
