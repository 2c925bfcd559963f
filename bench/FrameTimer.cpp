#include "FrameTimer.h"

#include <QQuickWindow>
#include <QTest>

#include <cstdio>
#include <cstdlib>

namespace orv::bench {

FrameTimer::FrameTimer(QQuickWindow* window) : m_window(window) {
    connect(window, &QQuickWindow::frameSwapped, this, &FrameTimer::onFrame);
}

void FrameTimer::begin(std::function<bool()> isShown) {
    m_isShown = std::move(isShown);
    times.beginFrame();
    m_isWaiting = true;
    m_window->update();
}

FrameTimes::Frame FrameTimer::wait() {
    if (!QTest::qWaitFor([this] { return !m_isWaiting; }, 5000)) {
        std::fputs("no frame came\n", stderr);
        std::exit(1);
    }
    return m_last;
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
    m_last = times.endFrame();
}

} // namespace orv::bench
