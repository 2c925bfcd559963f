#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <functional>
#include <vector>

class QQuickWindow;

namespace orv::bench {

/// Times frames of a window: each from the moment at which something changed until it was handed over, by the clock and
/// in the time that the processor gave to this thread. What other processes took from it is not in the latter.
///
/// The beat beside it, due every millisecond, tells of whatever else kept the event loop.
class FrameTimer : public QObject {
    Q_OBJECT
public:
    struct Frame {
        double wall = 0; ///< milliseconds, as all here
        double own = 0;
    };
    static constexpr double budget = 16;

    explicit FrameTimer(QQuickWindow* window);

    /// Something is about to change, of which the next frame is to be, or the next one when `isShown`.
    void begin(std::function<bool()> isShown = {});
    /// Ends the process when no such frame comes.
    Frame wait();

    void startPart();
    void report(const char* part);
    static void printHeader();

private:
    void onFrame();

    QQuickWindow* m_window;
    QElapsedTimer m_since;
    double m_own = 0;
    bool m_isWaiting = false;
    std::function<bool()> m_isShown;
    std::vector<Frame> m_frames;
    QTimer m_beat;
    QElapsedTimer m_sinceBeat;
    double m_stall = 0;
};

} // namespace orv::bench
