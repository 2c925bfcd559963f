// What the view of a terminal costs, in a real window:
//
//     orv-bench-view FILE     `cat` of the file, and keys one after another
//
// Prints the time that `cat` took, the frames meanwhile, and how long it takes from a byte of a program to the frame
// that shows it, and from a key through a pty to its echo.

#include "OrvTerminal/MainThreadQueue.h"
#include "OrvTerminal/TerminalSession.h"
#include "OrvTerminal/View/TerminalHost.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

using namespace Qt::StringLiterals;
using namespace orv;

namespace {

class Bench : public QObject {
public:
    explicit Bench(const QString& file) : m_file(file) {
        m_host.setParentItem(m_window.contentItem());
        m_host.setStyle(&m_style);
        m_window.resize(1000, 640);
        m_host.setSize(QSizeF(m_window.size()));
        m_host.setSession(&m_session);
        connect(&m_window, &QQuickWindow::frameSwapped, this, &Bench::frame, Qt::QueuedConnection);
        connect(&m_session, &TerminalSession::outputReceived, this, &Bench::output);
        connect(&m_session, &TerminalSession::titleChanged, this, &Bench::title);
        m_window.show();
        QTimer::singleShot(1000, this, [this] {
            m_session.start();
            QTimer::singleShot(1500, this, &Bench::flood);
        });
    }

private:
    void flood() {
        m_frames = m_host.view()->frames();
        m_time.start();
        m_session.send(u"clear; cat '%1'; printf '\\033]0;done\\007'\n"_s.arg(m_file));
    }

    void title() {
        if (m_session.title() != u"done") {
            return;
        }
        const qint64 bytes = QFile(m_file).size();
        const double seconds = static_cast<double>(m_time.nsecsElapsed()) / 1e9;
        std::printf(
            "cat: %.2f s, %.0f MB/s, %.0f frames/s\n", seconds, static_cast<double>(bytes) / 1e6 / seconds,
            static_cast<double>(m_host.view()->frames() - m_frames) / seconds);
        m_session.send(u"clear; stty -icanon; cat >/dev/null\n"_s);
        QTimer::singleShot(1000, this, &Bench::next);
    }

    /// First bytes that come from nowhere, then keys.
    void next() {
        if (m_times.size() == rounds) {
            print(m_isKeyed ? "key to frame" : "byte to frame");
            if (std::exchange(m_isKeyed, true)) {
                QGuiApplication::quit();
                return;
            }
        }
        m_isWaiting = true;
        m_hasOutput = false;
        m_time.start();
        if (m_isKeyed) {
            m_session.send(u"x"_s);
        } else {
            m_session.terminal().feed("x");
            Q_EMIT m_session.outputReceived();
        }
    }

    void output() { m_hasOutput = true; }

    void frame() {
        if (m_isWaiting && m_hasOutput && !m_host.view()->isWaiting()) {
            m_isWaiting = false;
            m_times.push_back(static_cast<double>(m_time.nsecsElapsed()) / 1e6);
            QTimer::singleShot(30, this, &Bench::next);
        }
    }

    void print(const char* label) {
        std::ranges::sort(m_times);
        std::printf(
            "%s: median %.2f ms, 95 of 100 within %.2f ms\n", label, m_times[m_times.size() / 2],
            m_times[m_times.size() * 95 / 100]);
        m_times.clear();
    }

    static constexpr size_t rounds = 200;
    QString m_file;
    TerminalStyle m_style;
    TerminalSession m_session{QUrl::fromLocalFile(QDir::tempPath()), std::make_shared<MainThreadQueue>()};
    QQuickWindow m_window;
    TerminalHost m_host;
    QElapsedTimer m_time;
    std::uint64_t m_frames = 0;
    std::vector<double> m_times;
    bool m_isKeyed = false;
    bool m_isWaiting = false;
    bool m_hasOutput = false;
};

} // namespace

int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    if (argc != 2) {
        std::fputs("orv-bench-view FILE\n", stderr);
        return 2;
    }
    const QDir fonts(QStringLiteral(ORV_FONTS));
    for (const QString& file : fonts.entryList({u"JetBrainsMono-*.ttf"_s})) {
        QFontDatabase::addApplicationFont(fonts.filePath(file));
    }
    const Bench bench(QString::fromLocal8Bit(argv[1]));
    return QGuiApplication::exec();
}
