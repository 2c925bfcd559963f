#include "OrvUI/Screens/RunWords.h"

#include <QCoreApplication>

namespace orv {

QString RunWords::of(const QString& action) {
    return QCoreApplication::translate("RunAction", action.toUtf8().constData());
}

} // namespace orv
