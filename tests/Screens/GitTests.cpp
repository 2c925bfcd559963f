#include "OrvUI/CommitForm.h"
#include "OrvUI/GitModel.h"
#include "OrvUI/ProjectDetail.h"
#include "OrvUI/ProjectFiles.h"
#include "tests/OrvGit/GitFixture.h"
#include "tests/Screens/MainWindow.h"

#include <QQmlEngine>
#include <QQmlIncubationController>
#include <QTest>

#include <tuple>

using namespace Qt::StringLiterals;

namespace orv::test {
namespace {

/// The window on a project with a repository.
class GitWindow : public MainWindow {
protected:
    void openTab(DetailTab tab, QSize size = QSize(1280, 832)) {
        addInstalled(u"shop"_s, "vite", up(4100));
        folder = root + u"/shop"_s;
        git(folder, {u"init"_s, u"-q"_s});
        tree.add(u"projects/shop/.gitignore"_s, "node_modules\n");
        tree.add(u"projects/shop/src/a.ts"_s, numbered);
        git(folder, {u"add"_s, u"-A"_s});
        git(folder, {u"commit"_s, u"-qm"_s, u"First"_s});
        tree.add(u"projects/shop/src/a.ts"_s, "const x = 0;\n" + numbered + "const z = 1;\nlast();\n");
        tree.add(u"projects/shop/b.txt"_s, "new\n");
        scan();
        open(size);
        AppPage page{.kind = AppPage::Kind::project, .id = folder};
        model->setPage(page);
        model->setDetailTab(tab);
    }
    void openGit(QSize size = QSize(1280, 832)) {
        openTab(DetailTab::git, size);
        ASSERT_TRUE(waitFor([this] { return items("GitFileItem").size() == 3; }));
        pageModel = model->gitModel();
        ASSERT_NE(pageModel, nullptr);
    }
    [[nodiscard]] QString index() const { return gitText(folder, {u"diff"_s, u"--cached"_s, u"--numstat"_s}); }
    bool staged(const QString& numstat) {
        return waitFor([&] { return !pageModel->isBusy() && index() == numstat; });
    }
    void press(QQuickItem* target, Qt::KeyboardModifiers keys = {}) {
        ASSERT_NE(target, nullptr);
        QTest::mouseClick(
            window, Qt::LeftButton, keys,
            target->mapToScene(QPointF(target->width() / 2, target->height() / 2)).toPoint());
    }
    void type(const QString& text) {
        for (const QChar letter : text) {
            QTest::keyClick(window, letter.toLatin1());
        }
    }
    /// Of the field that has the focus.
    [[nodiscard]] QString focusedHint() const {
        const QQuickItem* focused = window->activeFocusItem();
        return focused != nullptr ? focused->property("placeholderText").toString() : QString();
    }
    [[nodiscard]] ProjectFiles* files() const {
        return item("ProjectPage")->property("detail").value<ProjectDetail*>()->files();
    }
    /// While something is done in the repository, nothing else is begun.
    [[nodiscard]] bool isIdle() const {
        return waitFor([this] { return !pageModel->isBusy(); });
    }
    /// The item of the component whose property has that value.
    [[nodiscard]] QQuickItem* itemWith(const QByteArray& component, const char* property, const QVariant& value) const {
        for (QQuickItem* each : items(component)) {
            if (each->property(property) == value) {
                return each;
            }
        }
        return nullptr;
    }

    GitHome home;
    const QByteArray numbered = "1;\n2;\n3;\n4;\n5;\n6;\n7;\n8;\n9;\n";
    QString folder;
    GitModel* pageModel = nullptr;
};

TEST_F(GitWindow, IsWorkedWithTheKeyboardAlone) {
    openGit();
    item("GitChanges")->forceActiveFocus();
    EXPECT_TRUE(waitFor([this] { return pageModel->selectedPath() == u"src/a.ts"; })) << "the first file";
    QTest::keyClick(window, Qt::Key_Down);
    EXPECT_EQ(pageModel->selectedPath(), u"b.txt"_s);
    QTest::keyClick(window, Qt::Key_Up);
    EXPECT_EQ(pageModel->selectedPath(), u"src/a.ts"_s);
    ASSERT_TRUE(isIdle());
    QTest::keyClick(window, Qt::Key_Space);
    EXPECT_TRUE(staged(u"3\t0\tsrc/a.ts"_s)) << index().toStdString();
    QTest::keyClick(window, Qt::Key_A, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_TRUE(waitFor([this] { return pageModel->stagedCount() == 2; }));
    item("CommitBox")->findChild<QQuickItem*>(u"summary"_s)->forceActiveFocus();
    type(u"Second"_s);
    QTest::keyClick(window, Qt::Key_Enter, Qt::ControlModifier | Qt::KeypadModifier);
    EXPECT_TRUE(waitFor([this] { return pageModel->headSummary() == u"Second"; })) << pageModel->error().toStdString();
    EXPECT_FALSE(model->isRunning(project(u"shop"_s))) << "the same keys run the project elsewhere";
    QTest::keyClick(window, Qt::Key_B, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_TRUE(waitFor([this] { return focusedHint() == u"Name of the new branch"; }));
    type(u"topic"_s);
    QTest::keyClick(window, Qt::Key_Return);
    EXPECT_TRUE(waitFor([this] { return pageModel->branch() == u"topic"; }));
    ASSERT_TRUE(isIdle());
    ASSERT_TRUE(waitFor([this] { return focusedHint() == u"Summary"; })) << "where it was before";
    QTest::keyClick(window, Qt::Key_B, Qt::ControlModifier);
    EXPECT_TRUE(waitFor([this] { return items("BranchItem").size() == 2; }));
    type(u"mai"_s);
    EXPECT_TRUE(waitFor([this] { return items("BranchItem").size() == 1; }));
    QTest::keyClick(window, Qt::Key_Return);
    EXPECT_TRUE(waitFor([this] { return pageModel->branch() == u"main"; }));
}

TEST_F(GitWindow, ChoosesWhatABranchFollows) {
    openTab(DetailTab::git);
    const QString origin = home.path(u"origin.git"_s);
    git(home.path(), {u"clone"_s, u"-q"_s, u"--bare"_s, folder, origin});
    git(folder, {u"remote"_s, u"add"_s, u"origin"_s, origin});
    git(folder, {u"fetch"_s, u"-q"_s});
    ASSERT_TRUE(waitFor([this] {
        pageModel = model->gitModel();
        return pageModel != nullptr && pageModel->branches()->rowCount() == 2 && items("GitFileItem").size() == 3;
    }));
    QTest::keyClick(window, Qt::Key_B, Qt::ControlModifier);
    ASSERT_TRUE(
        waitFor([this] { return items("BranchItem").size() == 1 && focusedHint() == u"Find or create a branch"; }));
    QTest::keyClick(window, Qt::Key_Right);
    ASSERT_TRUE(waitFor([this] { return focusedHint() == u"Find what main follows"; }));
    type(u"main"_s);
    ASSERT_TRUE(waitFor([this] { return itemWith("BranchItem", "name", u"origin/main"_s) != nullptr; }));
    QTest::keyClick(window, Qt::Key_Return);
    EXPECT_TRUE(waitFor([this] { return pageModel->upstream() == u"origin/main"; }))
        << pageModel->error().toStdString();
}

TEST_F(GitWindow, StagesHunksAndChosenLines) {
    openGit();
    press(itemWith("GitFileItem", "path", u"src/a.ts"_s));
    ASSERT_TRUE(waitFor([this] { return items("DiffLine").size() > 6; }));
    QQuickItem* added = itemWith("DiffLine", "text", u"last();"_s);
    press(added);
    EXPECT_TRUE(pageModel->diff()->hasSelection());
    QTest::keyClick(window, Qt::Key_Space);
    EXPECT_TRUE(staged(u"1\t0\tsrc/a.ts"_s)) << index().toStdString();
    EXPECT_TRUE(waitFor([this] { return pageModel->diff()->added() == 2 && !pageModel->isLoadingDiff(); }));
    item("DiffView")->forceActiveFocus();
    QTest::keyClick(window, Qt::Key_Home);
    QTest::keyClick(window, Qt::Key_Space);
    EXPECT_TRUE(staged(u"2\t0\tsrc/a.ts"_s))
        << index().toStdString() << ": the first hunk; " << pageModel->error().toStdString() << ' ' << focus();
    // Shift and the arrows choose; nothing is discarded without a question.
    EXPECT_TRUE(waitFor([this] { return pageModel->diff()->added() == 1 && !pageModel->isLoadingDiff(); }));
    QTest::keyClick(window, Qt::Key_End);
    QTest::keyClick(window, Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_TRUE(pageModel->diff()->hasSelection());
    QTest::keyClick(window, Qt::Key_Delete, Qt::ControlModifier);
    EXPECT_TRUE(waitFor([this] { return itemWith("Button", "text", u"Discard"_s) != nullptr; }));
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_TRUE(waitFor([this] { return itemWith("Button", "text", u"Discard"_s) == nullptr; }));
    EXPECT_EQ(pageModel->diff()->added(), 1);
}

TEST_F(GitWindow, AsksForTheIdentityAndShowsCommits) {
    openGit(QSize(900, 832));
    home.add(u"home/.gitconfig"_s, "[user]\n\tname = Sam\n");
    pageModel->refreshNow();
    ASSERT_TRUE(waitFor([this] { return pageModel->identityEmail().isEmpty(); }));
    pageModel->stageAll();
    ASSERT_TRUE(waitFor([this] { return pageModel->commitForm()->isReady(); }));
    pageModel->commitForm()->setSummary(u"Second"_s);
    pageModel->commitForm()->submit();
    ASSERT_TRUE(waitFor([this] { return itemWith("Button", "text", u"Save"_s) != nullptr; }));
    EXPECT_FALSE(itemWith("Button", "text", u"Save"_s)->isEnabled()) << "there is no e-mail yet";
    ASSERT_TRUE(waitFor([this] { return focusedHint() == u"you@example.com"; }));
    const auto doubt = [this] { return itemWith("FormField", "label", u"E-mail"_s)->property("caution").toString(); };
    type(u"sam@"_s);
    EXPECT_EQ(doubt(), QString()) << "not to the end yet";
    QTest::keyClick(window, Qt::Key_Return);
    EXPECT_TRUE(doubt().contains(u"no @ between two parts")) << doubt().toStdString();
    EXPECT_FALSE(pageModel->isBusy());
    type(u"example.com"_s);
    EXPECT_EQ(doubt(), QString());
    QTest::keyClick(window, Qt::Key_Return);
    EXPECT_TRUE(waitFor([this] { return pageModel->headSummary() == u"Second"; })) << pageModel->error().toStdString();
    EXPECT_EQ(gitText(folder, {u"config"_s, u"--global"_s, u"user.email"_s}), u"sam@example.com"_s);

    ASSERT_TRUE(waitFor([this] { return items("HistoryItem").size() == 2 && pageModel->files()->rowCount() == 0; }));
    ASSERT_TRUE(isIdle());
    // A sheet that fades away takes the clicks until it is gone.
    ASSERT_TRUE(waitFor([this] { return itemWith("Button", "text", u"Save"_s) == nullptr; }));
    press(itemWith("HistoryItem", "subject", u"Second"_s));
    EXPECT_TRUE(
        waitFor([this] { return pageModel->commitFiles()->rowCount() == 2 && !items("CommitDetails").isEmpty(); }));
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_TRUE(waitFor([this] { return items("CommitDetails").isEmpty(); }));
}

TEST_F(GitWindow, FindsAndReadsFiles) {
    QList<QUrl> opened;
    model->openUrl = [&](const QUrl& url) {
        opened.append(url);
        return true;
    };
    openTab(DetailTab::files, QSize(900, 832));
    ASSERT_TRUE(waitFor([this] { return items("FileTreeItem").size() == 6; })) << items("FileTreeItem").size();
    QTest::keyClick(window, Qt::Key_P, Qt::ControlModifier);
    type(u"ats"_s);
    // Faster than the search.
    QTest::keyClick(window, Qt::Key_Return);
    EXPECT_TRUE(waitFor([this] { return files()->lines()->rowCount() == 12 && files()->tree()->rowCount() == 7; }));
    QTest::keyClick(window, Qt::Key_E, Qt::ControlModifier);
    EXPECT_EQ(opened, QList<QUrl>{QUrl::fromLocalFile(folder + u"/src/a.ts"_s)});
    QTest::keyClick(window, Qt::Key_Left);
    QTest::keyClick(window, Qt::Key_Left);
    EXPECT_TRUE(waitFor([this] {
        const QQuickItem* source = itemWith("FileTreeItem", "path", u"src"_s);
        return source != nullptr && !source->property("expanded").toBool();
    })) << "the folder is closed";

    addInstalled(u"site"_s, "vite", "");
    scan();
    for (const auto& [id, count] : {std::pair(root + u"/site"_s, 3), {folder, 6}}) {
        model->setPage({.kind = AppPage::Kind::project, .id = id});
        EXPECT_TRUE(waitFor([&, rows = count] {
            return files()->tree()->rowCount() == rows && files()->countText() == u"%1 files"_s.arg(rows);
        })) << id.toStdString()
            << ' ' << files()->tree()->rowCount() << ' ' << files()->countText().toStdString();
    }
}

TEST_F(GitWindow, LosesRowsThatWouldStillBeMade) {
    const auto file = [](int number) { return u"projects/shop/long/%1.txt"_s.arg(number); };
    constexpr int many = 100;
    const auto write = [&](const QByteArray& text) {
        for (int number = 0; number < many; ++number) {
            tree.add(file(number), text);
        }
    };
    write("old\n");
    openTab(DetailTab::overview);
    write("new\n");
    // Nothing that is made in the background comes to its end, as in a window that is hidden.
    static QQmlIncubationController idle;
    qmlEngine(window)->setIncubationController(&idle);
    model->setDetailTab(DetailTab::git);
    const auto count = [this] {
        const QList<QQuickItem*> lists = items("GitChanges");
        return lists.isEmpty() ? 0 : lists.first()->property("count").toInt();
    };
    ASSERT_TRUE(waitFor([&] { return count() > many; }));
    item("GitChanges")->setProperty("contentY", 1000);
    std::ignore = window->grabWindow(); // which makes the rows that are in view then
    write("old\n");
    ASSERT_TRUE(finishes(model->gitModel()->refresh()));
    EXPECT_TRUE(waitFor([&] { return count() < many; }));
}

} // namespace
} // namespace orv::test
