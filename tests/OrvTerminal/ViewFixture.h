#pragma once

#include "OrvTerminal/MainThreadQueue.h"
#include "OrvTerminal/TerminalSession.h"
#include "OrvTerminal/View/TerminalHostView.h"
#include "tests/support/TestSupport.h"

#include <QImage>
#include <QQuickWindow>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace orv {

/// How many pixels of a part are of a colour.
[[nodiscard]] inline int pixelsOf(const QImage& image, const QRect& part, QRgb color) {
    int found = 0;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x) {
            found += image.pixel(x, y) == color ? 1 : 0;
        }
    }
    return found;
}

[[nodiscard]] inline int areaOf(const QRect& rect) {
    return rect.width() * rect.height();
}

/// A terminal in a window that nobody sees. Its shell is not started unless a test does: then what it shows is what the
/// test feeds.
class TerminalViews : public ::testing::Test {
protected:
    TerminalViews() {
        for (const char* name : {".zshrc", ".profile"}) {
            home.add(QString::fromLatin1(name), "PS1='ready> '\n");
        }
        TerminalColors colors;
        colors.base.background = {16, 16, 16};
        colors.base.foreground = {240, 240, 240};
        colors.base.ansi[1] = {200, 0, 0};
        colors.cursor = qRgb(250, 130, 60);
        colors.selection = qRgb(0, 0, 120);
        colors.currentMatch = qRgb(250, 250, 0);
        colors.match = qRgba(0, 250, 0, 255);
        style.setColors(colors);
        host.setParentItem(window.contentItem());
        host.setStyle(&style);
        host.setPadding({0, 0});
        window.resize(400, 200);
        host.setSize({400, 200});
        host.setSession(session.get());
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        EXPECT_TRUE(test::waitFor([this] { return view().hasActiveFocus() && !session->cellPixels().isEmpty(); }));
    }

    ~TerminalViews() override { session.reset(); }

    [[nodiscard]] TerminalView& view() const { return *qobject_cast<TerminalView*>(session->terminalView()); }
    [[nodiscard]] term::Terminal& terminal() const { return session->terminal(); }

    void feed(std::string_view bytes) {
        terminal().feed(bytes);
        Q_EMIT session->outputReceived();
        shown();
    }
    /// Waits for a frame that has all there is.
    QImage shown() {
        EXPECT_TRUE(test::waitFor([this] { return !view().isWaiting(); }));
        return window.grabWindow();
    }
    [[nodiscard]] QRect cellRect(int column, int row, int columns = 1) const {
        const CellGeometry& cell = view().cell();
        return {column * cell.width, row * cell.height, columns * cell.width, cell.height};
    }
    [[nodiscard]] QPoint middleOf(int column, int row) const { return cellRect(column, row).center(); }
    void startShell() {
        session->start();
        ASSERT_TRUE(test::waitFor([this] { return session->outputForTesting().contains(QLatin1String("ready>")); }));
    }

    test::TemporaryTree home;
    test::ScopedEnvironment homeSetting{"HOME", home.path().toUtf8().constData()};
    test::ScopedEnvironment zshFolder{"ZDOTDIR", nullptr};
    test::ScopedEnvironment language{"LANG", "C.UTF-8"};
    TerminalStyle style;
    std::shared_ptr<MainThreadQueue> queue = std::make_shared<MainThreadQueue>();
    std::unique_ptr<TerminalSession> session =
        std::make_unique<TerminalSession>(QUrl::fromLocalFile(home.path()), queue);
    QQuickWindow window;
    TerminalHostView host;
};

} // namespace orv
