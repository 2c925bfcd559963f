#include "OrvCore/BackgroundThread.h"

#include <QtGlobal>

#ifdef Q_OS_MACOS
#include <pthread.h>
#else
#include <sys/resource.h>
#endif

namespace orv {

void becomeBackgroundThread() {
#ifdef Q_OS_MACOS
    pthread_set_qos_class_self_np(QOS_CLASS_UTILITY, 0);
#else
    // Of the calling thread alone, see setpriority(2), "C library/kernel differences". It still gets a third of what
    // each other thread gets, so that a busy machine does not starve it.
    constexpr int niceness = 5;
    setpriority(PRIO_PROCESS, 0, niceness);
#endif
}

} // namespace orv
