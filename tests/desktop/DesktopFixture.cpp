#include "tests/desktop/DesktopFixture.h"

#include <QDir>
#include <QRegularExpression>

#include <utility>

namespace orv::test {

void Desktop::SetUp() {
    ASSERT_EQ(desktop.problem(), QString());
    accessible.emplace(desktop.busAddress());
    launcher.tree.add(u"projects/site/index.html"_s, "<p>hello from the site</p>\n");
    const QString site = launcher.tree.path(u"projects/site"_s);
    tell({u"settings"_s, u"set"_s, u"onboardingCompleted"_s, u"true"_s});
    tell(
        {u"override"_s, u"set"_s, site, u"frontend"_s, u"--command"_s,
         u"cd '%1' && exec python3 -m http.server %2"_s.arg(site).arg(port)});
}

void Desktop::TearDown() {
    if (application.state() != QProcess::NotRunning) {
        application.kill();
        application.waitForFinished();
    }
}

void Desktop::open(Drawing drawing) {
    start({}, drawing);
    ASSERT_TRUE(shows(u"Run Frontend in site"_s)) << seen();
    ASSERT_TRUE(waitFor([this] { return isActive(); })) << "to hear the keys";
}

void Desktop::start(const QStringList& words, Drawing drawing) {
    QProcessEnvironment environment = desktop.environment();
    if (drawing == Drawing::software) {
        environment.insert(u"QT_QUICK_BACKEND"_s, u"software"_s);
    } else {
        environment.insert(u"QSG_RHI_BACKEND"_s, u"opengl"_s);
        // Mesa unloads its driver before leaks are looked for, and what the driver kept has no name then.
        environment.insert(u"ASAN_OPTIONS"_s, environment.value(u"ASAN_OPTIONS"_s) + u":detect_leaks=0"_s);
    }
    for (const QString& name : {u"ORV_SUPPORT_DIR"_s, u"ORV_TEST_MARK"_s}) {
        environment.insert(name, launcher.environment.value(name));
    }
    environment.remove(u"PYTHONUNBUFFERED"_s);
    application.setProcessEnvironment(environment);
    application.start(QStringLiteral(ORV_LAUNCHER), words);
}

void Desktop::startAgain(const QStringList& words) {
    QProcess second;
    second.setProcessEnvironment(application.processEnvironment());
    second.start(QStringLiteral(ORV_LAUNCHER), words);
    EXPECT_TRUE(waitFor([&] { return second.state() == QProcess::NotRunning; })) << words.join(u' ').toStdString();
    EXPECT_EQ(second.exitCode(), 0) << second.readAllStandardError().toStdString();
}

void Desktop::close() {
    desktop.key(u"ctrl+q"_s);
    // With something that runs it asks.
    EXPECT_TRUE(waitFor([this] {
        return application.state() == QProcess::NotRunning ||
               accessible->find(u"OrvLauncher"_s, u"Stop and Quit"_s).has_value();
    })) << seen();
    if (application.state() != QProcess::NotRunning) {
        click(u"Stop and Quit"_s);
    }
    hasEnded();
}

void Desktop::hasEnded() {
    EXPECT_TRUE(waitFor([this] { return application.state() == QProcess::NotRunning; })) << seen();
    EXPECT_EQ(application.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(application.exitCode(), 0);
    EXPECT_TRUE(waitFor([this] { return living().isEmpty(); })) << living().join(u'\n').toStdString();
    const QString said = QString::fromUtf8(application.readAllStandardError());
    static const QRegularExpression fault(
        u"qrc:|file:|QML|DelegateModel|TypeError|ReferenceError|runtime error|ERROR: "_s);
    EXPECT_FALSE(said.contains(fault)) << said.toStdString();
}

QStringList Desktop::living() const {
    QStringList found = launcher.leftBehind();
    // A terminal's shell gets an environment of its own.
    const QStringList processes = QDir(u"/proc"_s).entryList({u"[1-9]*"_s}, QDir::Dirs);
    for (const QString& process : processes) {
        const QString line = QString::fromUtf8(readFile(u"/proc/%1/cmdline"_s.arg(process)).replace('\0', ' '));
        const QString folder = QFile::symLinkTarget(u"/proc/%1/cwd"_s.arg(process));
        if (folder.startsWith(launcher.tree.path()) && !found.contains(line)) {
            found.append(line);
        }
    }
    return found;
}

void Desktop::tell(const QStringList& words) {
    const Ended ended = launcher.call(words);
    EXPECT_EQ(ended.exitCode, 0) << words.join(u' ').toStdString() << ": " << ended.err.toStdString();
}

QJsonDocument Desktop::json(const QStringList& words) const {
    return QJsonDocument::fromJson(launcher.call(words + QStringList{u"--json"_s}).out);
}

QString Desktop::addProject(const QString& name, const QByteArray& line) {
    launcher.tree.add(u"projects/%1/index.html"_s.arg(name), "");
    const QString folder = launcher.tree.path(u"projects/"_s + name);
    tell({u"override"_s, u"set"_s, folder, u"frontend"_s, u"--command"_s, QString::fromUtf8(line)});
    return folder;
}

bool Desktop::shows(const QString& name) {
    return waitFor([&] { return accessible->find(u"OrvLauncher"_s, name).has_value(); });
}

bool Desktop::hides(const QString& name) {
    return waitFor([&] { return !accessible->find(u"OrvLauncher"_s, name).has_value(); });
}

void Desktop::click(const QString& name) {
    std::optional<AccessibleTree::Item> item;
    const auto isAtRest = [&] {
        const auto before = std::exchange(item, accessible->find(u"OrvLauncher"_s, name));
        return before && item && before->place == item->place;
    };
    ASSERT_TRUE(waitFor(isAtRest)) << name.toStdString() << " is not there:\n" << seen();
    desktop.click(item->place.center());
}

void Desktop::openTerminal(const QString& project) {
    desktop.key(u"alt+3"_s);
    ASSERT_TRUE(shows(u"New terminal in "_s + project)) << seen();
    desktop.key(u"ctrl+shift+t"_s);
    ASSERT_TRUE(hides(u"Run things by hand"_s)) << seen();
}

bool Desktop::clickShows(const QString& name, const QString& expected) {
    click(name);
    return shows(expected);
}

QStringList Desktop::unnamed() const {
    static const QStringList controls{u"push button"_s, u"check box"_s, u"radio button"_s, u"link"_s, u"page tab"_s,
                                      u"list item"_s,   u"menu item"_s, u"text"_s,         u"label"_s};
    QStringList found;
    QString before;
    int shown = 0;
    int texts = 0;
    for (const AccessibleTree::Item& item : accessible->items(u"OrvLauncher"_s)) {
        if (item.isShowing && item.name.trimmed().isEmpty() && controls.contains(item.role)) {
            found.append(item.role + u" after "_s + before);
        }
        before = item.name;
        shown += item.isShowing ? 1 : 0;
        texts += item.isShowing && item.role == u"label" ? 1 : 0;
    }
    EXPECT_GT(texts, 2) << "of what is showing";
    EXPECT_GT(shown, 10) << "of what is showing";
    return found;
}

std::string Desktop::seen() const {
    QString names;
    for (const AccessibleTree::Item& item : accessible->items(u"OrvLauncher"_s)) {
        names += item.role + u": "_s + item.name + u'\n';
    }
    return names.toStdString() + readFile(launcher.tree.path(u"support/settings.json"_s)).toStdString();
}

} // namespace orv::test
