#include "OrvLauncher/platform/macos/MacDesktop.h"

#include "OrvLauncher/platform/Compositing.h"

#import <AppKit/AppKit.h>

/// WidgetCenter.swift: WidgetKit has no interface but Swift's.
extern "C" void orvReloadWidgets();

namespace orv {

void setActivationPolicy(ActivationPolicy policy) {
    const bool isRegular = policy == ActivationPolicy::regular;
    [NSApp
        setActivationPolicy:isRegular ? NSApplicationActivationPolicyRegular : NSApplicationActivationPolicyAccessory];
}

bool hasCompositor() {
    return true;
}

void reloadWidgets() {
    orvReloadWidgets();
}

} // namespace orv
