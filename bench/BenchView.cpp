// The terminal in a real window, for bench/view.py:
//
//     orv-bench-view run COMMAND          carries the command out in a terminal and ends with it
//     orv-bench-view tabs COUNT           memory and time of so many terminals with idle shells
//     orv-bench-view flood NAME COMMAND...
//                                         what frames take while each of the commands floods the terminal
//     orv-bench-view interrupt COMMAND    how long a flood goes on after Ctrl-C, some times
//     orv-bench-view scroll               frames a second while each of them shows another part of the history, and
//                                         what 99 of 100 of them take at most
//
// Floods print a table; the others print figures, separated by blanks, on one line.

#include "FrameTimes.h"
#include "OrvTerminal/TerminalTabs.h"
#include "OrvTerminal/View/TerminalHostView.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QResizeEvent>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace orv;

namespace {

/// Time for a shell to be at its prompt, and for memory to be given back.
constexpr auto settling = 2000ms;

class Window : public QQuickWindow {
public:
    Window() {
        m_host.setParentItem(contentItem());
        m_host.setStyle(&m_style);
        resize(1000, 640);
        m_host.setSize(QSizeF(size()));
        QQuickWindow::show();
    }
    TerminalSession& open() {
        TerminalSession* session = m_tabs.open(QUrl::fromLocalFile(QDir::tempPath()));
        m_host.setSession(session);
        return *session;
    }
    [[nodiscard]] TerminalView& view() const { return *m_host.view(); }
    /// Of the frames from now on, each from its request until it was handed over.
    void measure(bench::FrameTimes& times) {
        times.start();
        m_times = &times;
    }

protected:
    bool event(QEvent* event) override {
        if (event->type() != QEvent::UpdateRequest || m_times == nullptr) {
            return QQuickWindow::event(event);
        }
        m_times->beginFrame();
        const bool isHandled = QQuickWindow::event(event);
        m_times->endFrame();
        return isHandled;
    }
    void resizeEvent(QResizeEvent* event) override {
        QQuickWindow::resizeEvent(event);
        m_host.setSize(QSizeF(event->size()));
    }

private:
    TerminalStyle m_style;
    TerminalTabs m_tabs;
    TerminalHostView m_host;
    bench::FrameTimes* m_times = nullptr;
};

void after(std::chrono::milliseconds time, std::function<void()> task) {
    QTimer::singleShot(time, qApp, std::move(task));
}

void run(Window& window, const QString& command) {
    TerminalSession& session = window.open();
    QObject::connect(&session, &TerminalSession::isAliveChanged, qApp, &QCoreApplication::quit);
    after(settling, [&session, command] { session.send(u"exec "_s + command + u'\n'); });
}

/// One after the other: names and commands.
void flood(Window& window, TerminalSession& session, QStringList floods, bench::FrameTimes& times) {
    if (floods.isEmpty()) {
        QCoreApplication::quit();
        return;
    }
    const QByteArray name = floods.takeFirst().toUtf8();
    session.send(floods.takeFirst() + u'\n');
    after(1s, [&window, &times] { window.measure(times); });
    after(11s, [=, &window, &session, &times] {
        times.report(name.constData());
        session.send(u"\x03"_s);
        after(settling, [=, &window, &session, &times] { flood(window, session, floods, times); });
    });
}

struct Cost {
    qint64 kilobytes = 0; ///< of this process alone and its part of what is shared
    double seconds = 0;   ///< of the processor
};

Cost cost() {
    Cost now;
    QFile file(u"/proc/self/smaps_rollup"_s);
    if (file.open(QIODevice::ReadOnly)) {
        for (const QByteArray& line : file.readAll().split('\n')) {
            if (line.startsWith("Pss:")) {
                now.kilobytes = line.simplified().split(' ').value(1).toLongLong();
            }
        }
    }
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    now.seconds = static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
    return now;
}

/// One terminal is there before, so that what all of them share is.
void measureTabs(Window& window, int count) {
    window.open();
    after(settling, [&window, count] {
        const Cost before = cost();
        for (int opened = 0; opened < count; ++opened) {
            window.open();
        }
        after(settling + 100ms * count, [before, count] {
            const Cost opened = cost();
            // Past the last blink of the cursor.
            after(15s, [before, opened, count] {
                const Cost idle = cost();
                after(10s, [before, opened, idle, count] {
                    std::printf(
                        "%lld %.3f\n", (opened.kilobytes - before.kilobytes) / count,
                        (cost().seconds - idle.seconds) * 1000);
                    QCoreApplication::quit();
                });
            });
        });
    });
}

void interrupt(Window& window, const QString& command) {
    constexpr size_t rounds = 20;
    TerminalSession& session = window.open();
    auto* times = new std::vector<double>;
    auto* time = new QElapsedTimer;
    auto* flood = new std::function<void()>;
    *flood = [=, &session] {
        session.send(command + u'\n');
        after(1s, [time, &session] {
            time->start();
            session.send(u"\x03printf '\\033]0;ended\\007'\n"_s);
        });
    };
    QObject::connect(&session, &TerminalSession::titleChanged, &window, [=, &session] {
        if (session.title() != u"ended" || !time->isValid()) {
            return;
        }
        times->push_back(static_cast<double>(time->nsecsElapsed()) / 1e6);
        time->invalidate();
        if (times->size() < rounds) {
            session.send(u"printf '\\033]0;again\\007'\n"_s);
            after(300ms, *flood);
            return;
        }
        std::ranges::sort(*times);
        std::printf("%.1f %.1f\n", times->at(rounds / 2), times->back());
        QCoreApplication::quit();
    });
    after(settling, *flood);
}

/// Each frame shows lines of which none was shown before it.
void scroll(Window& window) {
    constexpr int historyLines = 10'000;
    static constexpr std::chrono::seconds length{5};
    TerminalSession& session = window.open();
    auto* times = new std::vector<double>;
    auto* time = new QElapsedTimer;
    after(settling, [=, &session, &window] {
        for (int line = 0; line < historyLines; ++line) {
            session.terminal().feed(
                "\x1b[32m" + std::to_string(line) +
                "\x1b[m some words of \x1b[1;34mmany colours\x1b[m, \x1b[7mlike\x1b[m a "
                "build that \x1b[4mprints\x1b[m what it does: \x1b[33mwarning\x1b[m of something in "
                "src/main.cpp:12:5\r\n");
        }
        time->start();
        QObject::connect(&window, &QQuickWindow::frameSwapped, &session, [=, &window, step = -1]() mutable {
            times->push_back(static_cast<double>(time->nsecsElapsed()) / 1e6);
            time->start();
            TerminalView& view = window.view();
            const int next = view.topLine() + step * view.rows();
            if (next < 0 || next > view.historyLines()) {
                step = -step;
            }
            view.scrollTo(view.topLine() + step * view.rows());
        });
        window.view().scrollTo(0);
    });
    after(settling + length, [times] {
        std::ranges::sort(*times);
        const double count = static_cast<double>(times->size());
        std::printf("%.0f %.1f\n", count / static_cast<double>(length.count()), times->at(times->size() * 99 / 100));
        QCoreApplication::quit();
    });
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_UPDATE_IDLE_TIME", "0"); // as the application has it
    const QGuiApplication application(argc, argv);
    const QStringList words = QGuiApplication::arguments();
    const QDir fonts(QStringLiteral(ORV_FONTS));
    for (const QString& file : fonts.entryList({u"JetBrainsMono-*.ttf"_s})) {
        QFontDatabase::addApplicationFont(fonts.filePath(file));
    }
    Window window;
    bench::FrameTimes times;
    if (words.value(1) == u"run" && words.size() == 3) {
        run(window, words.at(2));
    } else if (words.value(1) == u"flood" && words.size() >= 4 && words.size() % 2 == 0) {
        std::puts(bench::FrameTimes::heading);
        TerminalSession& session = window.open();
        after(settling, [&, floods = words.sliced(2)] { flood(window, session, floods, times); });
    } else if (words.value(1) == u"tabs" && words.size() == 3) {
        measureTabs(window, std::max(1, words.at(2).toInt()));
    } else if (words.value(1) == u"interrupt" && words.size() == 3) {
        interrupt(window, words.at(2));
    } else if (words.value(1) == u"scroll") {
        scroll(window);
    } else {
        std::fputs(
            "orv-bench-view run COMMAND | tabs COUNT | flood NAME COMMAND... | interrupt COMMAND | scroll\n", stderr);
        return 2;
    }
    return QGuiApplication::exec();
}
