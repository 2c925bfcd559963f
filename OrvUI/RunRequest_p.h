#pragma once

#include "OrvUI/ModelTypes.h"
#include "OrvUI/Stops_p.h"

#include <QSet>

namespace orv {

/// A run on its way from the wish to the start.
struct RunRequest {
    PendingInstall wanted;
    QString deviceToBoot = {};  ///< its key; empty when none has to be booted, or no longer
    Stops::Moment since = 0;    ///< a stop that comes later takes out what it stops
    QList<ServiceID> only = {}; ///< of the kinds; empty: every one
    /// Installs that have just ended well, by their own ids: nothing is asked about them.
    QSet<ServiceID> installed = {};
    bool isSetup = false; ///< the session on the screen is for it, and ends with its start

    /// What is to be started, in the project's order.
    [[nodiscard]] QList<ServiceTarget> targets() const;
};

} // namespace orv
