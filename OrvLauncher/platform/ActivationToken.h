#pragma once

#include <QString>
#include <QtGlobal>

namespace orv {

/// By which the desktop lets a window come to the front, where Qt and what it opens look for it: in the environment, as
/// long as this lives, so that no service gets it.
class ActivationToken {
public:
    explicit ActivationToken(const QString& token) : m_isSet(!token.isEmpty()) {
        if (m_isSet) {
            qputenv(name, token.toUtf8());
        }
    }
    ~ActivationToken() {
        if (m_isSet) {
            qunsetenv(name);
        }
    }
    ActivationToken(const ActivationToken&) = delete;
    ActivationToken& operator=(const ActivationToken&) = delete;

private:
    static constexpr auto name = "XDG_ACTIVATION_TOKEN";

    const bool m_isSet;
};

} // namespace orv
