#pragma once

#include "OrvTerminal/TerminalTabs.h"
#include "OrvTerminal/View/TerminalHostView.h"
#include "OrvTerminal/View/TerminalView.h"

#include <QtQml/qqml.h>

// The terminals know nothing of the names that QML calls them by.

namespace orv {

struct TerminalSessionElement {
    Q_GADGET
    QML_FOREIGN(orv::TerminalSession)
    QML_NAMED_ELEMENT(TerminalSession)
    QML_UNCREATABLE("Tabs open them")
};

struct TerminalTabsElement {
    Q_GADGET
    QML_FOREIGN(orv::TerminalTabs)
    QML_NAMED_ELEMENT(TerminalTabs)
    QML_UNCREATABLE("There is one, made by the application")
};

struct TerminalStyleElement {
    Q_GADGET
    QML_FOREIGN(orv::TerminalStyle)
    QML_NAMED_ELEMENT(TerminalStyle)
    QML_UNCREATABLE("See TerminalLook")
};

struct TerminalFindElement {
    Q_GADGET
    QML_FOREIGN(orv::TerminalFind)
    QML_NAMED_ELEMENT(TerminalFind)
    QML_UNCREATABLE("Belongs to a view")
};

struct KeyboardSelectionElement {
    Q_GADGET
    QML_FOREIGN(orv::KeyboardSelection)
    QML_NAMED_ELEMENT(KeyboardSelection)
    QML_UNCREATABLE("Belongs to a view")
};

struct TerminalViewElement {
    Q_GADGET
    QML_FOREIGN(orv::TerminalView)
    QML_NAMED_ELEMENT(TerminalView)
    QML_UNCREATABLE("See TerminalHostView")
};

struct TerminalHostElement {
    Q_GADGET
    QML_FOREIGN(orv::TerminalHostView)
    QML_NAMED_ELEMENT(TerminalHostView)
};

} // namespace orv
