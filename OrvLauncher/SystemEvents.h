#pragma once

#include <QObject>
#include <QUrl>

namespace orv {

/// What the system asks of the running application by events instead of by a second start: addresses to open
/// (QFileOpenEvent), and to quit (QEvent::Quit: the Dock, a log-out). It does not quit by itself then. Main thread;
/// needs the application object.
class SystemEvents : public QObject {
    Q_OBJECT
public:
    explicit SystemEvents(QObject* parent = nullptr);

Q_SIGNALS:
    void addressOpened(const QUrl& url);
    void quitAsked();

private:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace orv
