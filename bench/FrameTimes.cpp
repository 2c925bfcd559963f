#include "FrameTimes.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>

using namespace std::chrono_literals;

namespace orv::bench {
namespace {

constexpr double budget = 16; ///< milliseconds

double cpuMilliseconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
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
    m_wall.clear();
    m_cpu.clear();
    m_stall = 0;
    m_sinceBeat.start();
    m_beat.start();
}

void FrameTimes::beginFrame() {
    m_sinceBegin.start();
    m_cpuAtBegin = cpuMilliseconds();
}

void FrameTimes::endFrame() {
    m_wall.push_back(static_cast<double>(m_sinceBegin.nsecsElapsed()) / 1e6);
    m_cpu.push_back(cpuMilliseconds() - m_cpuAtBegin);
}

void FrameTimes::report(const char* part) {
    m_beat.stop();
    if (m_wall.empty()) {
        std::fprintf(stderr, "%s: no frame\n", part);
        std::exit(1);
    }
    const auto isOver = [](double time) { return time > budget; };
    const auto late = std::ranges::count_if(m_wall, isOver);
    const auto busy = std::ranges::count_if(m_cpu, isOver);
    std::ranges::sort(m_wall);
    std::ranges::sort(m_cpu);
    std::printf(
        "| %s | %zu | %.1f | %.1f | %.1f | %d | %.1f | %.1f | %d | %.1f |\n", part, m_wall.size(),
        m_wall[m_wall.size() / 2], m_wall[m_wall.size() * 99 / 100], m_wall.back(), static_cast<int>(late),
        m_cpu[m_cpu.size() / 2], m_cpu.back(), static_cast<int>(busy), m_stall);
}

} // namespace orv::bench
