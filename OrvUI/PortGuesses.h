#pragma once

#include "OrvProcess/ProcessManager.h"

#include <QHash>

namespace orv {

/// Holds back ports that no output names: what a service opens first may be there for its tools only, and what it
/// serves comes later, or is named later. A value; whoever has it measures the time.
class PortGuesses {
public:
    struct Verdict {
        std::optional<int> port;    ///< where the service can be said to be reached; absent while that is held back
        bool isToBeTrusted = false; ///< a guess that was not there before: `trust` it when it has stood for a while
        bool isCorrection = false;  ///< a guess that was told as the port was wrong

        bool operator==(const Verdict&) const = default;
    };

    /// What is known of an active service's port now.
    [[nodiscard]] Verdict look(const ServiceID& id, std::optional<int> port, bool isGuess);
    /// Unless it is no longer the guess.
    void trust(const ServiceID& id, int port);
    void forget(const ServiceID& id) { m_guesses.remove(id); } ///< it is not active any more

private:
    struct Guess {
        int port = 0;
        bool isTrusted = false;
        std::optional<int> told;
    };
    QHash<ServiceID, Guess> m_guesses;
};

} // namespace orv
