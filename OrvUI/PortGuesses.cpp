#include "OrvUI/PortGuesses.h"

namespace orv {

PortGuesses::Verdict PortGuesses::look(const ServiceID& id, std::optional<int> port, bool isGuess) {
    if (!port) {
        return {};
    }
    const Guess before = m_guesses.value(id);
    if (!isGuess) {
        m_guesses.remove(id);
        return {.port = port, .isCorrection = before.told && before.told != port};
    }
    const bool isNew = before.port != *port;
    Guess guess{.port = *port, .isTrusted = !isNew && before.isTrusted, .told = before.told};
    if (guess.isTrusted && !guess.told) {
        guess.told = port;
    }
    m_guesses.insert(id, guess);
    return {.port = guess.told ? port : std::nullopt, .isToBeTrusted = isNew};
}

void PortGuesses::trust(const ServiceID& id, int port) {
    if (const auto guess = m_guesses.find(id); guess != m_guesses.end() && guess->port == port) {
        guess->isTrusted = true;
    }
}

} // namespace orv
