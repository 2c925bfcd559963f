#pragma once

#include <QElapsedTimer>
#include <QTimer>

#include <vector>

namespace orv::bench {

/// What frames take by the clock and of their thread's own work, which has nothing of what other processes took from
/// it; and for how long the event loop was kept from a beat that is due every millisecond. Main thread.
class FrameTimes {
public:
    struct Frame {
        double wall = 0; ///< milliseconds, as all here
        double own = 0;
    };
    static constexpr double budget = 16;

    FrameTimes();

    /// Forgets what was measured before.
    void start();
    void beginFrame();
    Frame endFrame();
    /// Prints what was measured since the start, in milliseconds, as a row of the table below `heading`; and ends the
    /// program where no frame came.
    void report(const char* part);

    static const char* const heading;

private:
    QElapsedTimer m_sinceBegin;
    double m_ownAtBegin = 0;
    std::vector<Frame> m_frames;
    QTimer m_beat;
    QElapsedTimer m_sinceBeat;
    double m_stall = 0;
};

} // namespace orv::bench
