#include "OrvLauncher/platform/macos/MenuBarItem.h"

#import <AppKit/AppKit.h>

@interface OrvMenuBarTarget : NSObject
@property(nonatomic) orv::MenuBarItem::Handlers* handlers; // nil when the item is gone
- (void)clicked:(id)sender;
@end

@implementation OrvMenuBarTarget

- (void)clicked:(id)sender {
    if (self.handlers == nullptr) {
        return;
    }
    NSEvent* event = NSApp.currentEvent;
    const bool wantsMenu =
        event.type == NSEventTypeRightMouseUp || (event.modifierFlags & NSEventModifierFlagControl) != 0;
    wantsMenu ? self.handlers->menuAsked() : self.handlers->clicked();
}

@end

namespace orv {

struct MenuBarItem::Item {
    Handlers handlers;
    NSStatusItem* item = nil;
    OrvMenuBarTarget* target = nil;
};

MenuBarItem::MenuBarItem(Handlers handlers) : m_item(std::make_unique<Item>()) {
    m_item->handlers = std::move(handlers);
    m_item->target = [[OrvMenuBarTarget alloc] init];
    m_item->target.handlers = &m_item->handlers;
    m_item->item = [NSStatusBar.systemStatusBar statusItemWithLength:NSVariableStatusItemLength];
    NSStatusBarButton* button = m_item->item.button;
    button.image = [NSImage imageWithSystemSymbolName:@"bolt.horizontal.circle.fill"
                             accessibilityDescription:@"OrvLauncher"];
    button.imagePosition = NSImageLeading;
    button.target = m_item->target;
    button.action = @selector(clicked:);
    [button sendActionOn:NSEventMaskLeftMouseUp | NSEventMaskRightMouseUp];
}

MenuBarItem::~MenuBarItem() {
    m_item->target.handlers = nullptr;
    [NSStatusBar.systemStatusBar removeStatusItem:m_item->item];
}

void MenuBarItem::setTitle(const QString& title) {
    m_item->item.button.title = title.toNSString();
}

void MenuBarItem::setToolTip(const QString& text) {
    m_item->item.button.toolTip = text.toNSString();
}

QRect MenuBarItem::place() const {
    NSWindow* window = m_item->item.button.window;
    if (window == nil || window.screen == nil || (window.occlusionState & NSWindowOcclusionStateVisible) == 0) {
        return {};
    }
    // AppKit counts from the foot of the first screen, Qt from its top.
    const NSRect frame = window.frame;
    const CGFloat top = NSMaxY(NSScreen.screens.firstObject.frame) - NSMaxY(frame);
    return QRectF(NSMinX(frame), top, NSWidth(frame), NSHeight(frame)).toRect();
}

} // namespace orv
