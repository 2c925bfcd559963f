#include "FrameTimes.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>

using namespace std::chrono_literals;

namespace orv::bench {
namespace {

double threadMilliseconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

struct Summary {
    double median = 0;
    double most = 0; ///< what 99 of 100 keep
    double longest = 0;
    int over = 0; ///< the budget
};

Summary summary(const std::vector<FrameTimes::Frame>& frames, double FrameTimes::Frame::* kind) {
    std::vector<double> times;
    for (const FrameTimes::Frame& frame : frames) {
        times.push_back(frame.*kind);
    }
    std::ranges::sort(times);
    return {
        .median = times[times.size() / 2],
        .most = times[times.size() * 99 / 100],
        .longest = times.back(),
        .over = static_cast<int>(std::ranges::count_if(times, [](double time) { return time > FrameTimes::budget; }))};
}

} // namespace

const char* const FrameTimes::heading =
    "| While | Frames | Median | 99 of 100 within | Longest | Over 16 ms | Own work, median | Longest | Over 16 ms | "
    "Longest stall |\n|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|";

FrameTimes::FrameTimes() {
    m_beat.setTimerType(Qt::PreciseTimer);
    m_beat.setInterval(1ms);
    QObject::connect(&m_beat, &QTimer::timeout, &m_beat, [this] {
        m_stall = std::max(m_stall, static_cast<double>(m_sinceBeat.nsecsElapsed()) / 1e6);
        m_sinceBeat.restart();
    });
}

void FrameTimes::start() {
    m_frames.clear();
    m_stall = 0;
    m_sinceBeat.start();
    m_beat.start();
}

void FrameTimes::beginFrame() {
    m_sinceBegin.start();
    m_ownAtBegin = threadMilliseconds();
}

FrameTimes::Frame FrameTimes::endFrame() {
    return m_frames.emplace_back(
        static_cast<double>(m_sinceBegin.nsecsElapsed()) / 1e6, threadMilliseconds() - m_ownAtBegin);
}

void FrameTimes::report(const char* part) {
    m_beat.stop();
    if (m_frames.empty()) {
        std::fprintf(stderr, "%s: no frame\n", part);
        std::exit(1);
    }
    const Summary wall = summary(m_frames, &Frame::wall);
    const Summary own = summary(m_frames, &Frame::own);
    std::printf(
        "| %s | %zu | %.1f | %.1f | %.1f | %d | %.1f | %.1f | %d | %.1f |\n", part, m_frames.size(), wall.median,
        wall.most, wall.longest, wall.over, own.median, own.longest, own.over, m_stall);
}

} // namespace orv::bench
