#pragma once

#include "tests/OrvLauncher/Launcher.h"
#include "tests/desktop/AccessibleTree.h"
#include "tests/desktop/VirtualDesktop.h"

#include <QJsonDocument>
#include <QProcess>

#include <gtest/gtest.h>

namespace orv::test {

using namespace Qt::StringLiterals;

/// The application on a screen of its own, with one static site in its folder of projects.
class Desktop : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    enum class Drawing { software, openGL };

    /// Starts the application on its home page.
    void open(Drawing drawing = Drawing::software);
    /// Starts it with these words, as another start before did where there was one.
    void start(const QStringList& words, Drawing drawing = Drawing::software);
    /// A further start while it runs, which ends at once.
    void startAgain(const QStringList& words);
    /// Ends the application as a person does, and looks at what is left.
    void close();
    /// After it was asked to end: nothing of it is left.
    void hasEnded();

    /// The command lines of all processes that came from the application or are in the test's folders.
    [[nodiscard]] QStringList living() const;

    /// Sets something by the command line.
    void tell(const QStringList& words);
    /// What the command line says with --json.
    [[nodiscard]] QJsonDocument json(const QStringList& words) const;
    /// A project of one service, which runs this line of shell; gives its folder.
    QString addProject(const QString& name, const QByteArray& line);

    [[nodiscard]] bool shows(const QString& name);
    [[nodiscard]] bool hides(const QString& name);
    /// When it is there, and moves no more.
    void click(const QString& name);
    [[nodiscard]] bool clickShows(const QString& name, const QString& expected);
    /// From the page of a project, whose name is that of its folder: a new terminal there, in which one can type.
    void openTerminal(const QString& project);
    /// The window that can be seen on the screen.
    [[nodiscard]] bool hasWindow() const { return !desktop.windows(u"OrvLauncher$"_s).isEmpty(); }
    [[nodiscard]] bool hasPanel() const { return !desktop.windows(u"Quick panel"_s).isEmpty(); }
    /// The keys go to the application, as far as it knows.
    [[nodiscard]] bool isActive() const { return accessible->isActive(u"OrvLauncher"_s); }
    /// Controls and texts without a name, by their role and what stands before them.
    [[nodiscard]] QStringList unnamed() const;
    /// The names of everything on the screen, and the settings: what a failure is explained by.
    [[nodiscard]] std::string seen() const;

    const int port = freePort();
    const QString address = u"Open localhost:%1 in your browser"_s.arg(port);
    VirtualDesktop desktop;
    Launcher launcher;
    std::optional<AccessibleTree> accessible;
    QProcess application;
};

} // namespace orv::test
