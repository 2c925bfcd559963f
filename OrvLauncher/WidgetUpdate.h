#pragma once

#include "OrvCore/WidgetSnapshot.h"

namespace orv {

/// What the desktop's widgets show, kept true by the command line while there is no window that would do so. Blocking;
/// main thread.
class WidgetUpdate {
public:
    /// Takes back what it said to run.
    ~WidgetUpdate();

    /// Says what the stores hold of pins and tasks now, and of what runs: what this command runs beside what others do.
    void write(const QList<WidgetSnapshot::Running>& running);
    /// Pins and tasks alone.
    static void writeStores() { WidgetUpdate().write({}); }

private:
    QList<WidgetSnapshot::Running> m_running; ///< that stand in the file by this command
};

} // namespace orv
