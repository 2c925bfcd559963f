#include "OrvLauncher/platform/macos/MacDesktop.h"

#import <AppKit/AppKit.h>

/// WidgetCenter.swift: WidgetKit has no interface but Swift's.
extern "C" void orvReloadWidgets();

namespace orv {

void setActivationPolicy(ActivationPolicy policy) {
    const bool isRegular = policy == ActivationPolicy::regular;
    [NSApp
        setActivationPolicy:isRegular ? NSApplicationActivationPolicyRegular : NSApplicationActivationPolicyAccessory];
}

void reloadWidgets() {
    orvReloadWidgets();
}

} // namespace orv
