#include "OrvLauncher/platform/UserDefaults.h"

#import <Foundation/Foundation.h>

namespace orv {

QString userDefault(const QString& key) {
    return QString::fromNSString([NSUserDefaults.standardUserDefaults stringForKey:key.toNSString()]);
}

} // namespace orv
