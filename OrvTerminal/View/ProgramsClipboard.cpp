#include "OrvTerminal/View/ProgramsClipboard.h"

#include <QClipboard>
#include <QGuiApplication>

namespace orv {

void putOnClipboard(const QString& text, bool isPrimary) {
    QClipboard* clipboard = QGuiApplication::clipboard();
    if (!isPrimary || clipboard->supportsSelection()) {
        clipboard->setText(text, isPrimary ? QClipboard::Selection : QClipboard::Clipboard);
    }
}

} // namespace orv
