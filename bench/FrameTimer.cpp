#include "FrameTimer.h"

#include <QQuickWindow>
#include <QTest>

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

Summary summary(std::vector<double> times) {
    std::ranges::sort(times);
    return {
        .median = times[times.size() / 2],
        .most = times[times.size() * 99 / 100],
        .longest = times.back(),
        .over = static_cast<int>(std::ranges::count_if(times, [](double time) { return time > FrameTimer::budget; }))};
}

} // namespace

FrameTimer::FrameTimer(QQuickWindow* window) : m_window(window) {
    connect(window, &QQuickWindow::frameSwapped, this, &FrameTimer::onFrame);
    m_beat.setTimerType(Qt::PreciseTimer);
    m_beat.setInterval(1ms);
    connect(&m_beat, &QTimer::timeout, this, [this] {
        m_stall = std::max(m_stall, static_cast<double>(m_sinceBeat.nsecsElapsed()) / 1e6);
        m_sinceBeat.restart();
    });
}

void FrameTimer::begin(std::function<bool()> isShown) {
    m_isShown = std::move(isShown);
    m_since.start();
    m_own = threadMilliseconds();
    m_isWaiting = true;
    m_window->update();
}

FrameTimer::Frame FrameTimer::wait() {
    if (!QTest::qWaitFor([this] { return !m_isWaiting; }, 5000)) {
        std::fputs("no frame came\n", stderr);
        std::exit(1);
    }
    return m_frames.back();
}

void FrameTimer::startPart() {
    m_frames.clear();
    m_stall = 0;
    m_sinceBeat.start();
    m_beat.start();
}

void FrameTimer::printHeader() {
    std::puts("| While | Frames | Median | 99 of 100 within | Longest | Over 16 ms | Own work, median | Longest | Over "
              "16 ms | Longest stall |\n|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|");
}

void FrameTimer::report(const char* part) {
    m_beat.stop();
    if (m_frames.empty()) {
        std::fprintf(stderr, "%s: no frame\n", part);
        std::exit(1);
    }
    std::vector<double> walls;
    std::vector<double> owns;
    for (const Frame& frame : m_frames) {
        walls.push_back(frame.wall);
        owns.push_back(frame.own);
    }
    const Summary wall = summary(std::move(walls));
    const Summary own = summary(std::move(owns));
    std::printf(
        "| %s | %zu | %.1f | %.1f | %.1f | %d | %.1f | %.1f | %d | %.1f |\n", part, m_frames.size(), wall.median,
        wall.most, wall.longest, wall.over, own.median, own.longest, own.over, m_stall);
}

void FrameTimer::onFrame() {
    if (!m_isWaiting) {
        return;
    }
    if (m_isShown && !m_isShown()) {
        m_window->update();
        return;
    }
    m_isWaiting = false;
    m_frames.push_back({static_cast<double>(m_since.nsecsElapsed()) / 1e6, threadMilliseconds() - m_own});
}

} // namespace orv::bench
