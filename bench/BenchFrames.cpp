// The frames of the real window with 2,000 projects: while it scrolls, while it is resized, for each key in the palette
// and each page, while five services print 10,000 lines a second in all and the folder is scanned over and over, and
// while a page follows their output.
//
//     orv-bench-frames [SECONDS [PART]]    of each part, 10 where none are given; of the parts whose names have PART in
//                                          them
//
// A frame is timed from the moment at which something changed, at the 60 times a second of a display, until it was
// handed over; with Qt's software renderer, which does all of that on one thread, that is also what the event loop
// waits for.
#include "FrameTimer.h"
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
#include <QTimer>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using orv::bench::FrameTimer;
using orv::bench::FrameTimes;

namespace {

constexpr int projects = 2000;
constexpr int services = 5;
constexpr int linesAtOnce = 200; ///< ten times a second
constexpr QSize usualSize(1280, 832);

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

/// The folder with the projects, and what the window is made of.
class Bench {
public:
    Bench(std::chrono::seconds time, QString only);

    [[nodiscard]] bool open();
    bool run();

private:
    [[nodiscard]] orv::AppModel::Options modelOptions();
    [[nodiscard]] bool isWanted(const char* part) const { return QString::fromLatin1(part).contains(m_only); }
    template <typename Run>
    void part(const char* name, Run run);
    void scroll();
    void watch();
    void resize();
    void typeIntoPalette();
    void openPages();
    [[nodiscard]] bool startServices();
    void scanForever();
    [[nodiscard]] bool runUnderLoad();

    const std::chrono::seconds m_time;
    const QString m_only;
    const QTemporaryDir m_folder;
    const QString m_root = m_folder.filePath(u"projects"_s);
    QStringList m_loud;
    orv::AppModel m_model;
    QQmlApplicationEngine m_engine;
    QQuickWindow* m_window = nullptr;
    QQuickItem* m_page = nullptr;
    std::unique_ptr<FrameTimer> m_frames;
    int m_scans = 0;
};

Bench::Bench(std::chrono::seconds time, QString only)
    : m_time(time), m_only(std::move(only)), m_model(modelOptions()) {}

orv::AppModel::Options Bench::modelOptions() {
    orv::bench::addNamedProjects(m_root, projects - services);
    for (int number = 0; number < services; ++number) {
        m_loud.append(addLoudProject(m_root, number));
    }
    const QString settingsFile = m_folder.filePath(u"support/settings.json"_s);
    orv::SettingsStore(settingsFile).change([&](orv::AppSettings& settings) {
        settings.scanRoot = m_root;
        settings.onboardingCompleted = true;
    });
    orv::AppModel::Options options;
    options.settings = std::make_unique<orv::SettingsStore>(settingsFile);
    options.tasksFile = m_folder.filePath(u"support/tasks.json"_s);
    options.overrides = std::make_shared<orv::OverrideStore>(m_folder.filePath(u"support/overrides.json"_s));
    for (const QString& project : std::as_const(m_loud)) {
        orv::Override command;
        command.command = u"while :; do cat lines; sleep 0.1; done"_s;
        options.overrides->set(orv::OverrideStore::key(project, orv::ServiceKind::frontend), command);
    }
    options.snapshotDirectory = m_folder.filePath(u"widgets"_s);
    return options;
}

bool Bench::open() {
    orv::registerScreens(m_engine);
    m_engine.setInitialProperties({{u"model"_s, QVariant::fromValue(&m_model)}, {u"ownFrame"_s, true}});
    m_engine.load(QUrl(u"qrc:/qt/qml/OrvLauncher/Screens/Main.qml"_s));
    m_window = qobject_cast<QQuickWindow*>(m_engine.rootObjects().value(0));
    if (m_window == nullptr) {
        return false;
    }
    m_window->resize(usualSize);
    m_window->show();
    m_model.refresh();
    const bool isReady = QTest::qWaitForWindowActive(m_window, 20000) &&
                         QTest::qWaitFor([&] { return m_model.projects().size() == projects; }, 60000);
    if (!isReady) {
        std::fprintf(stderr, "%lld projects\n", static_cast<long long>(m_model.projects().size()));
        return false;
    }
    QTest::qWait(1000);
    m_frames = std::make_unique<FrameTimer>(m_window);
    m_page = scroller(m_window->contentItem());
    return true;
}

template <typename Run>
void Bench::part(const char* name, Run run) {
    if (isWanted(name)) {
        m_frames->times.start();
        run();
        m_frames->times.report(name);
    }
}

/// To the end and back, a fifth of the page a frame, as a hard flick does.
void Bench::scroll() {
    double step = m_page->height() / 5;
    QElapsedTimer since;
    since.start();
    while (since.elapsed() < m_time.count() * 1000) {
        QElapsedTimer frame;
        frame.start();
        const double top = m_page->property("originY").toReal();
        const double bottom = std::max(top, top + m_page->property("contentHeight").toReal() - m_page->height());
        const double next = m_page->property("contentY").toReal() + step;
        if (next < top || next > bottom) {
            step = -step;
        }
        m_frames->begin();
        m_page->setProperty("contentY", std::clamp(next, top, bottom));
        m_frames->wait();
        QTest::qWait(std::max<int>(1, static_cast<int>(16 - frame.elapsed())));
    }
}

/// Something changes at each frame by itself.
void Bench::watch() {
    QElapsedTimer since;
    since.start();
    while (since.elapsed() < m_time.count() * 1000) {
        m_frames->begin();
        m_frames->wait();
        QTest::qWait(10);
    }
}

/// By its edge, to and fro, through all the widths at which it is laid out differently.
void Bench::resize() {
    constexpr int step = 12;
    int by = step;
    QElapsedTimer since;
    since.start();
    while (since.elapsed() < m_time.count() * 1000) {
        const QSize wanted(m_window->width() + by, m_window->height());
        if (wanted.width() + by > usualSize.width() + 100 || wanted.width() + by < m_window->minimumWidth()) {
            by = -by;
        }
        m_frames->begin([this, wanted] { return m_window->size() == wanted; });
        m_window->resize(wanted);
        m_frames->wait();
        QTest::qWait(5);
    }
    m_window->resize(usualSize);
    QTest::qWait(500);
}

void Bench::typeIntoPalette() {
    QTest::keyClick(m_window, Qt::Key_K, Qt::ControlModifier);
    QTest::qWait(500);
    m_frames->times.start();
    for (const QString& text : {u"shop admin"_s, u"stop all"_s, u"new terminal atlas 1750"_s, u"settings"_s}) {
        for (const QChar letter : text) {
            m_frames->begin();
            QTest::keyClick(m_window, letter.toLatin1());
            m_frames->wait();
            QTest::qWait(40);
        }
        QTest::keyClick(m_window, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(m_window, Qt::Key_Backspace);
        QTest::qWait(40);
    }
    QTest::keyClick(m_window, Qt::Key_Escape);
}

/// Counted is the second frame: in the first one a page begins to fade in and is not seen yet.
void Bench::openPages() {
    using Kind = orv::AppPage::Kind;
    using orv::DetailTab;
    using orv::SettingsSection;
    const struct {
        const char* name;
        orv::AppPage page;
        DetailTab tab = DetailTab::overview;
    } pages[] = {
        {"project", {Kind::project, m_loud[1]}},
        {"its tasks", {Kind::project, m_loud[1]}, DetailTab::tasks},
        {"its output", {Kind::project, m_loud[1]}, DetailTab::logs},
        {"its files", {Kind::project, m_loud[1]}, DetailTab::files},
        {"its repositories", {Kind::project, m_loud[1]}, DetailTab::git},
        {"its terminals", {Kind::project, m_loud[1]}, DetailTab::terminal},
        {"tasks", {Kind::tasks, {}}},
        {"AI", {Kind::ai, {}}},
        {"settings", {Kind::settings, {}}},
        {"settings, AI", {Kind::settings, {}, SettingsSection::ai}},
        {"settings, appearance", {Kind::settings, {}, SettingsSection::appearance}},
        {"settings, general", {Kind::settings, {}, SettingsSection::general}},
        {"home", {}},
    };
    constexpr int times = 4;
    std::array<std::array<FrameTimes::Frame, times>, std::size(pages)> taken{};
    m_frames->times.start();
    for (size_t time = 0; time < times; ++time) {
        for (size_t page = 0; page < std::size(pages); ++page) {
            m_frames->begin([frame = 0]() mutable { return ++frame == 2; });
            m_model.setPage(pages[page].page);
            m_model.setDetailTab(pages[page].tab);
            taken[page][time] = m_frames->wait();
            QTest::qWait(400);
        }
    }
    std::puts("\n| Page | The first time | Own work | Later | Own work |\n|---|---:|---:|---:|---:|");
    for (size_t page = 0; page < std::size(pages); ++page) {
        auto& [first, second, third, last] = taken[page];
        std::printf(
            "| %s | %.1f | %.1f | %.1f | %.1f |\n", pages[page].name, first.wall, first.own,
            (second.wall + third.wall + last.wall) / 3, (second.own + third.own + last.own) / 3);
    }
}

bool Bench::startServices() {
    for (const QString& project : std::as_const(m_loud)) {
        m_model.toggleProject(project);
    }
    const auto printing = [&] {
        return std::ranges::count_if(m_loud, [&](const QString& id) {
            const orv::Project* project = m_model.project(id);
            return project != nullptr && !project->targets.isEmpty() &&
                   m_model.processes().log(orv::ProcessManager::id(project->targets.first(), id)).size() >= 5000;
        });
    };
    if (!QTest::qWaitFor([&] { return printing() == services; }, 60000)) {
        std::fprintf(stderr, "%d of %d services print\n", static_cast<int>(printing()), services);
        return false;
    }
    return true;
}

void Bench::scanForever() {
    QObject::connect(&m_model, &orv::AppModel::isScanningChanged, &m_model, [this] {
        if (!m_model.isScanning()) {
            ++m_scans;
            QTimer::singleShot(0, &m_model, [this] { m_model.refresh(); });
        }
    });
    m_model.refresh();
}

bool Bench::runUnderLoad() {
    constexpr std::array parts{
        "scrolling, with output and scans", "home at rest, with output and scans",
        "a log that is followed, with output and scans"};
    if (std::ranges::none_of(parts, [this](const char* name) { return isWanted(name); })) {
        return true;
    }
    if (!startServices()) {
        return false;
    }
    scanForever();
    part(parts[0], [this] { scroll(); });
    part(parts[1], [this] { watch(); });
    m_model.setPage({.kind = orv::AppPage::Kind::project, .id = m_loud.first()});
    m_model.setDetailTab(orv::DetailTab::logs);
    QTest::qWait(500);
    part(parts[2], [this] { watch(); });
    std::printf("\n%d scans of %d projects meanwhile.\n", m_scans, projects);
    QObject::disconnect(&m_model, &orv::AppModel::isScanningChanged, &m_model, nullptr);
    m_model.stopAll();
    m_model.setPage({});
    QTest::qWait(1000);
    return true;
}

bool Bench::run() {
    std::puts(FrameTimes::heading);
    part("2,000 projects scroll", [this] { scroll(); });
    part("the window is resized", [this] { resize(); });
    part("keys in the palette", [this] { typeIntoPalette(); });
    if (!runUnderLoad()) {
        return false;
    }
    if (isWanted("pages")) {
        openPages();
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    const std::chrono::seconds time(argc > 1 ? std::max(1, std::atoi(argv[1])) : 10);
    qputenv("QT_QPA_UPDATE_IDLE_TIME", "0"); // as the application has it
    QGuiApplication application(argc, argv);
    Bench bench(time, argc > 2 ? QString::fromLocal8Bit(argv[2]) : QString());
    return bench.open() && bench.run() ? 0 : 1;
}
