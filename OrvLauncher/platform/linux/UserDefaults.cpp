#include "OrvLauncher/platform/UserDefaults.h"

#include "OrvCore/Paths.h"

#include <QFileInfo>
#include <QSettings>

using namespace Qt::StringLiterals;

namespace orv {

QString userDefault(const QString& key) {
    const QString file = Paths::supportDirectory() + u"/defaults.ini"_s;
    // A value with commas that stands in no quotes is read as a list.
    return QFileInfo::exists(file) ? QSettings(file, QSettings::IniFormat).value(key).toStringList().join(u", "_s)
                                   : QString();
}

} // namespace orv
