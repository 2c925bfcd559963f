#include "OrvTerminal/TerminalTabs.h"
#include "OrvUI/Collection.h"
#include "OrvUI/Navigator.h"
#include "OrvUI/OverrideRows.h"
#include "OrvUI/ProjectDetail.h"
#include "OrvUI/SettingsForm.h"
#include "tests/OrvUI/ModelFixture.h"

#include <QDir>
#include <QSignalSpy>
#include <QSysInfo>

using namespace Qt::StringLiterals;
using namespace orv;
using namespace orv::test;

namespace {

using Page = Navigator::Page;

class PagesTest : public ModelFixture {
protected:
    PagesTest() {
        addInstalled(u"client/harbor"_s, "vite", up(4100));
        addInstalled(u"client/wharf"_s, "vite", up(4101));
        // Each a repository, so that the folder is a collection and no project of several packages.
        tree.add(u"projects/client/harbor/.git/HEAD"_s, "ref: refs/heads/main\n");
        tree.add(u"projects/client/wharf/.git/HEAD"_s, "ref: refs/heads/main\n");
        addInstalled(u"shop/web"_s, "vite", up(4102));
        addInstalled(u"shop/api"_s, "express", "echo starting; exec sleep 100\n");
    }

    [[nodiscard]] QString titles(const Navigator& nav) const {
        QStringList titles;
        for (const QVariant& crumb : nav.crumbs()) {
            titles.append(crumb.toMap()[u"title"_s].toString());
        }
        return titles.join(u" > "_s);
    }

    [[nodiscard]] static QVariant at(QAbstractItemModel* rows, int row, const QByteArray& role) {
        return rows->data(rows->index(row, 0), rows->roleNames().key(role));
    }
};

} // namespace

TEST_F(PagesTest, FollowsLinksOfProgramsToWhatTheyName) {
    scan();
    Navigator nav;
    nav.setModel(model.get());
    QList<QUrl> opened;
    model->openUrl = [&](const QUrl& url) {
        opened.append(url);
        return true;
    };
    const QString file = tree.add(u"projects/a#b c.txt"_s, "x");
    const QString encoded = QString::fromLatin1(QUrl::toPercentEncoding(file, "/"));
    const struct {
        QString link;
        QUrl target; ///< empty: it is refused
    } cases[] = {
        {u"https://a.example/x?y#z"_s, QUrl(u"https://a.example/x?y#z"_s)},
        {u"mailto:a@b.example"_s, QUrl(u"mailto:a@b.example"_s)},
        {u"file://"_s + encoded, QUrl::fromLocalFile(file)},
        {u"file://"_s + QSysInfo::machineHostName() + encoded, QUrl::fromLocalFile(file)},
        {u"file://"_s + QString::fromLatin1(QUrl::toPercentEncoding(root, "/")), QUrl::fromLocalFile(root)},
        {u"file://elsewhere.example"_s + encoded, {}},
        {u"javascript:alert(1)"_s, {}},
        {u"orvlauncher://stop-all"_s, {}},
    };
    for (const auto& it : cases) {
        opened.clear();
        model->dismissStatus();
        nav.followLink(QUrl(it.link));
        EXPECT_EQ(opened, it.target.isEmpty() ? QList<QUrl>() : QList<QUrl>{it.target}) << it.link.toStdString();
        EXPECT_EQ(model->statusIsError(), it.target.isEmpty()) << it.link.toStdString();
    }
}

TEST_F(PagesTest, GoesToAPageAndBack) {
    scan();
    Navigator nav;
    nav.setModel(model.get());
    const QString client = root + u"/client"_s;
    const QString harbor = root + u"/client/harbor"_s;
    struct Step {
        const char* label;
        std::function<void()> go;
        Page page;
        QString id;
        QString crumbs;
    };
    const Step steps[] = {
        {"a folder", [&] { nav.collection(client); }, Page::Collection, client, u"Home > client"_s},
        {"no such folder", [&] { nav.collection(root + u"/none"_s); }, Page::Collection, client, u"Home > client"_s},
        {"a project in it", [&] { nav.project(harbor, 3); }, Page::Project, harbor, u"Home > client > harbor"_s},
        {"no such project", [&] { nav.project(u"/none"_s); }, Page::Project, harbor, u"Home > client > harbor"_s},
        {"a section", [&] { nav.settings(5); }, Page::Settings, QString(), u"Home > Settings > General"_s},
        {"back", [&] { nav.back(); }, Page::Project, harbor, u"Home > client > harbor"_s},
        {"back again", [&] { nav.back(); }, Page::Collection, client, u"Home > client"_s},
        {"forward", [&] { nav.forward(); }, Page::Project, harbor, u"Home > client > harbor"_s},
        {"by the way's first part", [&] { nav.openCrumb(0); }, Page::Home, QString(), u"Home"_s},
        {"the last section", [&] { nav.settings(); }, Page::Settings, QString(), u"Home > Settings > General"_s},
    };
    for (const Step& step : steps) {
        step.go();
        EXPECT_EQ(nav.page(), step.page) << step.label;
        EXPECT_EQ(nav.pageID(), step.id) << step.label;
        EXPECT_EQ(titles(nav), step.crumbs) << step.label;
    }
    EXPECT_FALSE(nav.canGoForward()) << "a new way leaves the old one";
    EXPECT_EQ(nav.tab(), 3);
}

TEST_F(PagesTest, LeavesThePageOfWhatIsGone) {
    scan();
    Navigator nav;
    nav.setModel(model.get());
    nav.project(root + u"/client/harbor"_s);
    nav.settings(0);
    nav.project(root + u"/client/wharf"_s);
    ASSERT_TRUE(QDir(root + u"/client"_s).removeRecursively());
    scan();
    EXPECT_EQ(nav.page(), Page::Home);
    nav.back();
    EXPECT_EQ(nav.page(), Page::Settings) << "nor does the way back lead there";
    nav.back();
    EXPECT_EQ(nav.page(), Page::Home);
}

TEST_F(PagesTest, ShowsAProjectsServicesAndStartsThemOneByOne) {
    scan();
    ProjectDetail detail;
    detail.setModel(model.get());
    detail.setProjectID(root + u"/shop"_s);
    ASSERT_TRUE(detail.found());
    QAbstractItemModel* rows = detail.services();
    ASSERT_EQ(rows->rowCount(), 2);
    constexpr int web = 0;
    constexpr int api = 1;
    EXPECT_EQ(at(rows, web, "command"), u"npm run dev"_s) << "without the way to its folder";
    EXPECT_EQ(at(rows, web, "folder"), u"web"_s);
    EXPECT_EQ(detail.actions().size(), 3);

    detail.startService(at(rows, web, "key").toString());
    ASSERT_TRUE(waitFor([&] { return at(rows, web, "address") == u"localhost:4102"_s; }));
    EXPECT_EQ(at(rows, api, "serviceState"), u"idle"_s) << "only the one that was asked for";
    EXPECT_EQ(detail.runningCount(), 1);
    const auto stateOf = [&](int action) { return detail.actions()[action].toMap()[u"state"_s].toString(); };
    EXPECT_EQ(stateOf(0), u"running"_s);
    EXPECT_EQ(stateOf(2), u"idle"_s) << "both is not up while one is not";
    EXPECT_FALSE(detail.startable().contains(u"Frontend"_s));

    detail.stopAction(u"Frontend"_s);
    EXPECT_TRUE(waitFor([&] { return !detail.busy(); }));
    EXPECT_EQ(at(rows, web, "address"), QString());
}

TEST_F(PagesTest, ShowsWhatLiesDirectlyInAFolder) {
    for (const QString& deep : {u"client/old/one"_s, u"client/old/two"_s}) {
        addInstalled(deep, "vite", up(4103));
        tree.add(u"projects/"_s + deep + u"/.git/HEAD"_s, "ref: refs/heads/main\n");
    }
    scan();
    Navigator nav;
    nav.setModel(model.get());
    nav.folder(root + u"/none"_s);
    EXPECT_EQ(nav.page(), Page::Home);
    nav.folder(root + u"/client/old"_s);
    EXPECT_EQ(nav.page(), Page::Folder);
    EXPECT_EQ(titles(nav), u"Home > client > old"_s);
    Collection folder;
    folder.setModel(model.get());
    folder.setNested(true);
    folder.setPath(root + u"/client"_s);
    const auto names = [&] {
        QStringList found;
        for (int row = 0; row < folder.cards()->rowCount(); ++row) {
            const bool isFolder = at(folder.cards(), row, "isCollection").toBool();
            found.append(at(folder.cards(), row, "name").toString() + (isFolder ? u"/"_s : QString()));
        }
        return found.join(u' ');
    };
    EXPECT_EQ(names(), u"old/ harbor wharf"_s);
    folder.setSearchText(u"two"_s);
    EXPECT_EQ(names(), u"two"_s) << "a search finds what lies deeper";
    folder.setSearchText({});
    folder.setNested(false);
    EXPECT_EQ(folder.count(), 4);
}

TEST_F(PagesTest, ShowsTheProjectsOfAFolder) {
    scan();
    Collection folder;
    folder.setModel(model.get());
    folder.setPath(root + u"/client"_s);
    EXPECT_EQ(folder.count(), 2);
    folder.setSearchText(u"HARB"_s);
    ASSERT_EQ(folder.count(), 1);
    EXPECT_EQ(at(folder.cards(), 0, "name"), u"harbor"_s);
}

TEST_F(PagesTest, CorrectsAService) {
    scan();
    OverrideRows rows;
    rows.setModel(model.get());
    const auto find = [&](const QString& project, const QString& kind) {
        for (int row = 0; row < rows.rowCount(); ++row) {
            if (at(&rows, row, "project") == project && at(&rows, row, "kindLabel") == kind) {
                return row;
            }
        }
        return -1;
    };
    const int row = find(u"shop"_s, u"Backend"_s);
    ASSERT_GE(row, 0);
    const QString key = at(&rows, row, "key").toString();
    struct Case {
        const char* label;
        QString port;
        bool isTaken;
    };
    const Case cases[] = {
        {"no number", u"http"_s, false},
        {"too small", u"0"_s, false},
        {"too large", u"65536"_s, false},
        {"spaces around", u" 8123 "_s, true},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(rows.save(key, u"make serve"_s, c.port, 4).isEmpty(), c.isTaken) << c.label;
    }
    ASSERT_TRUE(waitFor([&] { return find(u"shop"_s, u"App"_s) >= 0; })) << "scanned again with another kind";
    const int corrected = find(u"shop"_s, u"App"_s);
    EXPECT_EQ(at(&rows, corrected, "key"), key) << "it stays under what was detected";
    EXPECT_EQ(at(&rows, corrected, "command"), u"make serve"_s);
    EXPECT_EQ(at(&rows, corrected, "port"), u"8123"_s);
    EXPECT_TRUE(at(&rows, corrected, "isChanged").toBool());
    rows.setFilter(u"express"_s);
    EXPECT_EQ(rows.rowCount(), 1);
    rows.setFilter(QString());
    rows.reset(key);
    EXPECT_TRUE(waitFor([&] { return find(u"shop"_s, u"Backend"_s) >= 0; }));
    EXPECT_TRUE(model->overrides().values().isEmpty());
}

TEST_F(PagesTest, TellsServicesOfOneKindApartWhereTheyAreCorrected) {
    for (const QString& part : {u"mall/web"_s, u"mall/services/orders"_s, u"mall/services/search"_s}) {
        addInstalled(part, part.endsWith(u"web") ? "vite" : "express", test::up(4310));
    }
    scan();
    OverrideRows rows;
    rows.setModel(model.get());
    const auto shown = [&] {
        QStringList list;
        for (int row = 0; row < rows.rowCount(); ++row) {
            if (at(&rows, row, "project") == u"mall"_s) {
                list.append(at(&rows, row, "kindLabel").toString() + u", "_s + at(&rows, row, "folder").toString());
            }
        }
        return list;
    };
    const QString search = u"Backend · search, services/search"_s;
    EXPECT_EQ(shown(), (QStringList{u"Backend · orders, services/orders"_s, search, u"Frontend, web"_s}));
    rows.setFilter(u"services/sea"_s);
    EXPECT_EQ(shown(), QStringList{search});
}

TEST_F(PagesTest, SavesWhatTheSettingsPageChanges) {
    SettingsForm form;
    form.setModel(model.get());
    form.setDisplayName(u"  Ada  "_s);
    form.setDisplayName(u"   "_s);
    form.setPullStrategy(2);
    form.setPullStrategy(3);
    form.setAutonomy(0);
    TerminalSession* opened = model->terminals().open(QUrl(u"file:///"_s));
    const QSignalSpy copied(&model->terminals(), &TerminalTabs::clipboardWriteRequested);
    for (const int choice : {int(ClipboardWrite::on), int(ClipboardWrite::off)}) {
        form.setTerminalClipboard(int(ClipboardWrite::ask));
        opened->terminal().feed("\x1B]52;c;QQ==\a");
        ASSERT_TRUE(test::waitFor([&] { return opened->programsCopy() == u"A"; }));
        form.setTerminalClipboard(choice);
        EXPECT_TRUE(opened->programsCopy().isEmpty()) << "the question is answered";
    }
    EXPECT_EQ(copied.count(), 1);
    form.setTerminalClipboard(3);
    form.setNotifyCrash(false);
    form.setAvatarPhoto(u"file:///tmp/me%20too.png"_s);
    const AppSettings stored = SettingsStore(model->settings().filePath()).settings();
    EXPECT_EQ(stored.displayName, u"Ada"_s) << "a name of spaces is none";
    EXPECT_EQ(stored.defaultPullStrategy, PullPreference::rebase) << "there is no fourth";
    EXPECT_EQ(stored.agentAutonomy, AgentAutonomy::plan);
    EXPECT_EQ(stored.terminalClipboard, ClipboardWrite::off);
    for (TerminalSession* session : {opened, model->terminals().open(QUrl(u"file:///"_s))}) {
        session->terminal().feed("\x1B]52;c;QQ==\a");
        EXPECT_TRUE(session->programsCopy().isEmpty()) << "in terminals that are open, and in new ones";
    }
    EXPECT_EQ(copied.count(), 1);
    EXPECT_FALSE(stored.notifyCrash);
    EXPECT_EQ(stored.avatarPhotoPath, u"/tmp/me too.png"_s);
    EXPECT_EQ(form.displayName(), u"Ada"_s);
}
