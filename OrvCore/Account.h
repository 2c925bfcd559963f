#pragma once

#include <QString>

namespace orv {

/// What the system knows of the user who runs this process (passwd(5)). Every member may be empty.
struct Account {
    QString fullName; ///< the comment field up to its first comma
    QString home;
    QString shell;

    bool operator==(const Account&) const = default;
    [[nodiscard]] static Account current();
};

} // namespace orv
