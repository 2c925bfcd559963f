#include "SystemEvents.h"

#include <QCoreApplication>
#include <QFileOpenEvent>

namespace orv {

SystemEvents::SystemEvents(QObject* parent) : QObject(parent) {
    QCoreApplication::instance()->installEventFilter(this);
}

bool SystemEvents::eventFilter(QObject* watched, QEvent* event) {
    if (watched != QCoreApplication::instance()) {
        return false;
    }
    switch (event->type()) {
    case QEvent::FileOpen:
        Q_EMIT addressOpened(static_cast<QFileOpenEvent*>(event)->url());
        return true;
    case QEvent::Quit:
        // Left to Qt it would close the window, which only hides it.
        event->ignore();
        Q_EMIT quitAsked();
        return true;
    default:
        return false;
    }
}

} // namespace orv
