#pragma once

#include <QCoreApplication>

namespace orv {

/// The texts of this module for the user, in his language. Any thread.
struct GitWords {
    Q_DECLARE_TR_FUNCTIONS(Git)
};

} // namespace orv
