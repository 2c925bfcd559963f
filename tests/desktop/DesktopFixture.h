#pragma once

#include "tests/OrvLauncher/Launcher.h"
#include "tests/desktop/AccessibleTree.h"
#include "tests/desktop/VirtualDesktop.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace orv::test {

using namespace Qt::StringLiterals;

/// The application on a screen of its own, with one static site in its folder of projects.
class Desktop : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(desktop.problem(), QString());
        accessible.emplace(desktop.busAddress());
        launcher.tree.add(u"projects/site/index.html"_s, "<p>hello from the site</p>");
        const QString site = launcher.tree.path(u"projects/site"_s);
        const QString command = u"cd '%1' && exec python3 -m http.server %2"_s.arg(site).arg(port);
        ASSERT_EQ(launcher.call({u"settings"_s, u"set"_s, u"onboardingCompleted"_s, u"true"_s}).exitCode, 0);
        ASSERT_EQ(launcher.call({u"override"_s, u"set"_s, site, u"frontend"_s, u"--command"_s, command}).exitCode, 0);
    }

    void TearDown() override {
        if (application.state() != QProcess::NotRunning) {
            application.kill();
            application.waitForFinished();
        }
    }

    enum class Drawing { software, openGL };

    void open(Drawing drawing) {
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
        application.start(QStringLiteral(ORV_LAUNCHER), QStringList());
        ASSERT_TRUE(shows(u"Run Frontend in site"_s)) << seen().toStdString();
    }

    /// Ends the application as a person does, and looks at what is left.
    void close() {
        desktop.key(u"ctrl+q"_s);
        // With something that runs it asks; without a tray there is nowhere to live on.
        EXPECT_TRUE(waitFor([this] {
            return application.state() == QProcess::NotRunning ||
                   accessible->find(u"OrvLauncher"_s, u"Stop and Quit"_s).has_value();
        }));
        if (application.state() != QProcess::NotRunning) {
            click(u"Stop and Quit"_s);
        }
        EXPECT_TRUE(waitFor([this] { return application.state() == QProcess::NotRunning; }));
        EXPECT_EQ(application.exitCode(), 0);
        EXPECT_TRUE(waitFor([this] { return launcher.leftBehind().isEmpty(); }))
            << launcher.leftBehind().join(u'\n').toStdString();
        const QString said = QString::fromUtf8(application.readAllStandardError());
        static const QRegularExpression fault(u"qrc:|file:|QML|TypeError|ReferenceError|runtime error|ERROR: "_s);
        EXPECT_FALSE(said.contains(fault)) << said.toStdString();
    }

    [[nodiscard]] bool shows(const QString& name) {
        return waitFor([&] { return accessible->find(u"OrvLauncher"_s, name).has_value(); });
    }

    [[nodiscard]] bool hides(const QString& name) {
        return waitFor([&] { return !accessible->find(u"OrvLauncher"_s, name).has_value(); });
    }

    void click(const QString& name) {
        const auto item = accessible->find(u"OrvLauncher"_s, name);
        ASSERT_TRUE(item.has_value()) << name.toStdString() << " is not there:\n" << seen().toStdString();
        desktop.click(item->place.center());
    }

    [[nodiscard]] bool clickShows(const QString& name, const QString& expected) {
        click(name);
        return shows(expected);
    }

    /// The names of everything on the screen.
    [[nodiscard]] QString seen() const {
        QString names;
        for (const AccessibleTree::Item& item : accessible->items(u"OrvLauncher"_s)) {
            names += item.role + u": "_s + item.name + u'\n';
        }
        return names + QString::fromUtf8(readFile(launcher.tree.path(u"support/settings.json"_s)));
    }

    /// Controls without a name, by their role and what stands before them.
    [[nodiscard]] QStringList unnamed() const {
        static const QStringList controls{u"push button"_s, u"check box"_s, u"radio button"_s, u"link"_s,
                                          u"page tab"_s,    u"list item"_s, u"menu item"_s,    u"text"_s};
        QStringList found;
        QString before;
        int shown = 0;
        for (const AccessibleTree::Item& item : accessible->items(u"OrvLauncher"_s)) {
            if (item.isShowing && item.name.trimmed().isEmpty() && controls.contains(item.role)) {
                found.append(item.role + u" after "_s + before);
            }
            before = item.name;
            shown += item.isShowing ? 1 : 0;
        }
        EXPECT_GT(shown, 10) << "of what is showing";
        return found;
    }

    [[nodiscard]] QStringList pins() const {
        const QByteArray file = readFile(launcher.tree.path(u"support/settings.json"_s));
        return QJsonDocument::fromJson(file)[u"pinnedProjectIDs"].toVariant().toStringList();
    }

    const int port = freePort();
    const QString address = u"Open localhost:%1 in your browser"_s.arg(port);
    VirtualDesktop desktop;
    Launcher launcher;
    std::optional<AccessibleTree> accessible;
    QProcess application;
};

} // namespace orv::test
