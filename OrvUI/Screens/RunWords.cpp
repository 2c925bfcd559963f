#include "OrvUI/Screens/RunWords.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <utility>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

constexpr std::array stateWords{
    std::pair{"running"_L1, QT_TRANSLATE_NOOP("RunWords", "Running")},
    std::pair{"starting"_L1, QT_TRANSLATE_NOOP("RunWords", "Starting…")},
    std::pair{"stopping"_L1, QT_TRANSLATE_NOOP("RunWords", "Stopping…")},
    std::pair{"installing"_L1, QT_TRANSLATE_NOOP("RunWords", "Installing…")},
    std::pair{"orphaned"_L1, QT_TRANSLATE_NOOP("RunWords", "Running from last time")},
    std::pair{"failed"_L1, QT_TRANSLATE_NOOP("RunWords", "Failed")},
};

} // namespace

QString RunWords::of(const QString& action) {
    return QCoreApplication::translate("RunAction", action.toUtf8().constData());
}

QString RunWords::ofState(const QString& state) {
    const auto found = std::ranges::find(stateWords, state, &decltype(stateWords)::value_type::first);
    return found == stateWords.end() ? QString() : tr(found->second);
}

} // namespace orv
