// The frames of the real window with 2,000 projects: while it scrolls, while five services print 10,000 lines a second
// in all and the folder is scanned over and over, while a page follows their output, and for each key in the palette.
//
//     orv-bench-frames [SECONDS]    of each part, 10 where none are given
//
// A frame is timed from the moment at which something changed, at the 60 times a second of a display, until it was
// handed over; with Qt's software renderer, which does all of that on one thread, that is also what the event loop
// waits for. The beat beside it, due every millisecond, tells of whatever else kept the event loop.
#include "FrameTimes.h"
#include "NamedProjects.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/Screens/Registration.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cstdio>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int projects = 2000;
constexpr int services = 5;
constexpr int linesAtOnce = 200; ///< ten times a second

/// One frame after the other, each of something that was changed for it.
class Frames {
public:
    explicit Frames(QQuickWindow* window) : m_window(window) {
        QObject::connect(window, &QQuickWindow::frameSwapped, window, [this] {
            if (std::exchange(m_isWaiting, false)) {
                times.endFrame();
            }
        });
    }

    /// What changes next, of which the next frame is to be.
    void begin() {
        times.beginFrame();
        m_isWaiting = true;
        m_window->update();
    }
    void wait() const {
        if (!QTest::qWaitFor([this] { return !m_isWaiting; }, 5000)) {
            std::fputs("no frame came\n", stderr);
            std::exit(1);
        }
    }

    orv::bench::FrameTimes times;

private:
    QQuickWindow* m_window;
    bool m_isWaiting = false;
};

/// The one with most to scroll.
QQuickItem* scroller(QQuickItem* below) {
    QQuickItem* best = below->inherits("QQuickFlickable") && below->isVisible() ? below : nullptr;
    for (QQuickItem* child : below->childItems()) {
        QQuickItem* found = child->isVisible() ? scroller(child) : nullptr;
        if (found != nullptr &&
            (best == nullptr || found->property("contentHeight").toReal() > best->property("contentHeight").toReal())) {
            best = found;
        }
    }
    return best;
}

/// To the end and back, a fifth of the page a frame, as a hard flick does.
void scroll(QQuickItem* page, Frames& frames, std::chrono::seconds time) {
    double step = page->height() / 5;
    QElapsedTimer since;
    since.start();
    while (since.elapsed() < time.count() * 1000) {
        QElapsedTimer frame;
        frame.start();
        const double top = page->property("originY").toReal();
        const double bottom = std::max(top, top + page->property("contentHeight").toReal() - page->height());
        const double next = page->property("contentY").toReal() + step;
        if (next < top || next > bottom) {
            step = -step;
        }
        frames.begin();
        page->setProperty("contentY", std::clamp(next, top, bottom));
        frames.wait();
        QTest::qWait(std::max<int>(1, static_cast<int>(16 - frame.elapsed())));
    }
}

/// Something changes at each frame by itself.
void watch(QQuickWindow* window, Frames& frames, std::chrono::seconds time) {
    QElapsedTimer since;
    since.start();
    while (since.elapsed() < time.count() * 1000) {
        frames.begin();
        window->update();
        frames.wait();
        QTest::qWait(10);
    }
}

QString addLoudProject(const QString& root, int number) {
    const QString folder = root + u"/aloud-"_s + QString::number(number);
    QDir().mkpath(folder + u"/node_modules"_s);
    QFile manifest(folder + u"/package.json"_s);
    if (manifest.open(QFile::WriteOnly)) {
        manifest.write(R"({"scripts": {"dev": "vite"}, "dependencies": {"vite": "5"}})");
    }
    QFile lines(folder + u"/lines"_s);
    if (lines.open(QFile::WriteOnly)) {
        for (int line = 0; line < linesAtOnce; ++line) {
            lines.write(
                "10:42:17.318 \033[32mINFO\033[0m request GET /api/orders/48213?page=3 \033[1m200\033[0m in 12 ms\n");
        }
    }
    return folder;
}

} // namespace

int main(int argc, char** argv) {
    const std::chrono::seconds time(argc > 1 ? std::max(1, std::atoi(argv[1])) : 10);
    QGuiApplication application(argc, argv);
    const QTemporaryDir folder;
    const QString root = folder.filePath(u"projects"_s);
    orv::bench::addNamedProjects(root, projects - services);
    QStringList loud;
    for (int number = 0; number < services; ++number) {
        loud.append(addLoudProject(root, number));
    }
    const QString settingsFile = folder.filePath(u"support/settings.json"_s);
    orv::SettingsStore(settingsFile).change([&](orv::AppSettings& settings) {
        settings.scanRoot = root;
        settings.onboardingCompleted = true;
    });
    orv::AppModel::Options options;
    options.settings = std::make_unique<orv::SettingsStore>(settingsFile);
    options.tasksFile = folder.filePath(u"support/tasks.json"_s);
    options.overrides = std::make_shared<orv::OverrideStore>(folder.filePath(u"support/overrides.json"_s));
    for (const QString& project : loud) {
        orv::Override command;
        command.command = u"while :; do cat lines; sleep 0.1; done"_s;
        options.overrides->set(orv::OverrideStore::key(project, orv::ServiceKind::frontend), command);
    }
    options.snapshotDirectory = folder.filePath(u"widgets"_s);
    orv::AppModel model(std::move(options));

    QQmlApplicationEngine engine;
    orv::registerScreens(engine);
    engine.setInitialProperties({{u"model"_s, QVariant::fromValue(&model)}, {u"ownFrame"_s, true}});
    engine.load(QUrl(u"qrc:/qt/qml/OrvLauncher/Screens/Main.qml"_s));
    auto* window = qobject_cast<QQuickWindow*>(engine.rootObjects().value(0));
    if (window == nullptr) {
        return 1;
    }
    window->resize(1280, 832);
    window->show();
    model.refresh();
    const bool isReady = QTest::qWaitForWindowActive(window, 20000) &&
                         QTest::qWaitFor([&] { return model.projects().size() == projects; }, 60000);
    if (!isReady) {
        std::fprintf(stderr, "%lld projects\n", static_cast<long long>(model.projects().size()));
        return 1;
    }
    QTest::qWait(1000);

    Frames frames(window);
    std::puts(orv::bench::FrameTimes::heading);
    QQuickItem* page = scroller(window->contentItem());
    frames.times.start();
    scroll(page, frames, time);
    frames.times.report("2,000 projects scroll");

    QTest::keyClick(window, Qt::Key_K, Qt::ControlModifier);
    QTest::qWait(500);
    frames.times.start();
    for (const QString& text : {u"shop admin"_s, u"stop all"_s, u"new terminal atlas 1750"_s, u"settings"_s}) {
        for (const QChar letter : text) {
            frames.begin();
            QTest::keyClick(window, letter.toLatin1());
            frames.wait();
            QTest::qWait(40);
        }
        QTest::keyClick(window, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(window, Qt::Key_Backspace);
        QTest::qWait(40);
    }
    frames.times.report("keys in the palette");
    QTest::keyClick(window, Qt::Key_Escape);

    for (const QString& project : std::as_const(loud)) {
        model.toggleProject(project);
    }
    const auto printing = [&] {
        return std::ranges::count_if(loud, [&](const QString& id) {
            const orv::Project* project = model.project(id);
            return project != nullptr && !project->targets.isEmpty() &&
                   model.processes().log(orv::ProcessManager::id(project->targets.first(), id)).size() >= 5000;
        });
    };
    if (!QTest::qWaitFor([&] { return printing() == services; }, 60000)) {
        std::fprintf(stderr, "%d of %d services print\n", static_cast<int>(printing()), services);
        return 1;
    }
    int scans = 0;
    QObject::connect(&model, &orv::AppModel::isScanningChanged, &model, [&] {
        if (!model.isScanning()) {
            ++scans;
            QTimer::singleShot(0, &model, [&] { model.refresh(); });
        }
    });
    model.refresh();
    frames.times.start();
    scroll(page, frames, time);
    frames.times.report("the same, with output and scans");
    frames.times.start();
    watch(window, frames, time);
    frames.times.report("home at rest, with output and scans");

    model.setPage({.kind = orv::AppPage::Kind::project, .id = loud.first()});
    model.setDetailTab(orv::DetailTab::logs);
    QTest::qWait(500);
    frames.times.start();
    watch(window, frames, time);
    frames.times.report("a log that is followed, with output and scans");
    std::printf("\n%d scans of %d projects meanwhile.\n", scans, projects);
    QObject::disconnect(&model, &orv::AppModel::isScanningChanged, &model, nullptr);
    model.stopAll();
    return 0;
}
