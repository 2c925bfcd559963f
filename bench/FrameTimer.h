#pragma once

#include "FrameTimes.h"

#include <QObject>

#include <functional>

class QQuickWindow;

namespace orv::bench {

/// Times frames of a window, each from the moment at which something changed until it was handed over.
class FrameTimer : public QObject {
    Q_OBJECT
public:
    explicit FrameTimer(QQuickWindow* window);

    /// Something is about to change, of which the next frame is to be, or the next one when `isShown`.
    void begin(std::function<bool()> isShown = {});
    /// Ends the process when no such frame comes.
    FrameTimes::Frame wait();

    FrameTimes times;

private:
    void onFrame();

    QQuickWindow* m_window;
    bool m_isWaiting = false;
    std::function<bool()> m_isShown;
    FrameTimes::Frame m_last;
};

} // namespace orv::bench
