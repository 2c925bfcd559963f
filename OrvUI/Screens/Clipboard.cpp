#include "Clipboard.h"

#include <QClipboard>
#include <QGuiApplication>

namespace orv {

void Clipboard::copy(const QString& text) {
    QGuiApplication::clipboard()->setText(text);
}

} // namespace orv
