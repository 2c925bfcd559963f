#include "OrvLauncher/platform/UserDefaults.h"

#include "OrvCore/Paths.h"

#include <QFileInfo>
#include <QSettings>

using namespace Qt::StringLiterals;

namespace orv {

QString userDefault(const QString& key) {
    const QString file = Paths::supportDirectory() + u"/defaults.ini"_s;
    return QFileInfo::exists(file) ? QSettings(file, QSettings::IniFormat).value(key).toString() : QString();
}

} // namespace orv
