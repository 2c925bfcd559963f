#include "OrvUI/HomeModels.h"
#include "OrvUI/OutlineModel.h"
#include "tests/OrvUI/ModelFixture.h"

#include <QAbstractItemModelTester>
#include <QDir>

using namespace Qt::StringLiterals;
using namespace orv;
using namespace orv::test;

namespace {

QVariant value(const QAbstractItemModel& model, int row, const QByteArray& role) {
    return model.index(row, 0).data(model.roleNames().key(role, -1));
}

/// The rows with the values of these roles: "shop|running; blog|idle".
QString text(const QAbstractItemModel& model, const QList<QByteArray>& roles) {
    QStringList rows;
    for (int row = 0; row < model.rowCount(); ++row) {
        QStringList values;
        for (const QByteArray& role : roles) {
            const QVariant found = value(model, row, role);
            EXPECT_TRUE(found.isValid()) << role.constData();
            values.append(
                found.typeId() == QMetaType::QStringList ? found.toStringList().join(u'+') : found.toString());
        }
        rows.append(values.join(u'|'));
    }
    return rows.join(u"; "_s);
}

class HomeModelsTest : public ModelFixture {
protected:
    /// Checks every list at every change, and that none is ever reset.
    void watch() {
        for (QAbstractItemModel* list : QList<QAbstractItemModel*>{
                 model->cards(), model->homeCards(), &model->home().folderRows, model->running(), model->pinned(),
                 model->sidebarFilters(), model->setupSteps(), model->outline()}) {
            new QAbstractItemModelTester(list, QAbstractItemModelTester::FailureReportingMode::Fatal, list);
            QObject::connect(list, &QAbstractItemModel::modelReset, list, [] { ADD_FAILURE() << "reset"; });
        }
    }
    [[nodiscard]] bool cardsBecome(const QString& expected) const {
        const auto now = [&] { return text(*model->cards(), {"name", "cardState", "message"}); };
        return waitFor([&] { return now() == expected; }) || (ADD_FAILURE() << now().toStdString(), false);
    }
};

} // namespace

TEST_F(HomeModelsTest, FollowAProjectThroughItsLife) {
    watch();
    addNode(
        u"shop/web"_s, "vite",
        "echo Local: http://localhost:3000; while [ ! -e stop ]; do sleep 0.1; done; echo broken; exit 4\n");
    addInstalled(u"shop/api"_s, "express", "exec sleep 100\n");
    addScript(u"shop/web"_s, u"npm-install.sh"_s, "while [ ! -e go ]; do sleep 0.1; done; mkdir node_modules\n");
    addInstalled(u"blog"_s, "astro", up(4321));
    EXPECT_EQ(model->summaryLine(), u"Looking for projects…"_s);
    scan();
    ASSERT_TRUE(cardsBecome(u"blog|idle|; shop|idle|"_s));
    EXPECT_EQ(model->summaryLine(), u"2 projects"_s);
    EXPECT_EQ(
        text(*model->cards(), {"stackLine", "actions", "defaultAction", "tileLetter", "isFlutter"}),
        u"Astro|Frontend|Frontend|B|false; Vite + Express|Frontend+Backend+Both|Both|S|false"_s);

    const QString shopID = project(u"shop"_s).id;
    model->togglePinFor(shopID);
    model->addTask(u"open"_s, {}, project(u"shop"_s));
    model->runAction(shopID, u"Both"_s);
    ASSERT_TRUE(waitFor([&] { return model->setupSteps()->rowCount() == 1; }));
    EXPECT_EQ(text(*model->setupSteps(), {"title", "command", "status"}), u"Frontend|cd web && npm install|pending"_s);
    model->confirmSetup();
    ASSERT_TRUE(cardsBecome(u"blog|idle|; shop|installing|"_s));
    tree.add(u"projects/shop/web/go"_s);
    ASSERT_TRUE(cardsBecome(u"blog|idle|; shop|running|"_s));

    const QVariantList services = value(*model->cards(), 1, "services").toList();
    ASSERT_EQ(services.size(), 2) << "one of them is starting";
    const QVariantMap web = services[1].toMap();
    EXPECT_EQ(web[u"address"_s], u"localhost:3000"_s);
    EXPECT_EQ(text(*model->running(), {"name", "kindLabel", "address"}), u"shop|Frontend|localhost:3000"_s);
    EXPECT_EQ(text(*model->pinned(), {"name", "cardState"}), u"shop|running"_s);
    EXPECT_EQ(
        text(*model->sidebarFilters(), {"title", "icon", "count"}),
        u"All Projects|layout-grid|2; Pinned|pin|1; Running|circle-play|1; Full-stack|layers-2|1; Flutter|smartphone|0"_s);
    EXPECT_EQ(model->summaryLine(), u"1 service running · 1 open task"_s);
    QList<QUrl> opened;
    model->openUrl = [&](const QUrl& url) {
        opened.append(url);
        return true;
    };
    model->openServiceByKey(web[u"key"_s].toString());
    EXPECT_TRUE(waitFor([&] { return !opened.isEmpty(); }));

    tree.add(u"projects/shop/web/stop"_s);
    const QString failed = u"Exited with code 4: broken"_s;
    ASSERT_TRUE(cardsBecome(u"blog|idle|; shop|starting|"_s + failed)) << "its back end is still there";
    EXPECT_EQ(text(*model->cards(), {"actions", "defaultAction"}), u"Frontend|Frontend; Frontend|Frontend"_s)
        << "what failed can be run again";
    const QVariantMap broken = value(*model->cards(), 1, "failedServices").toList().value(0).toMap();
    EXPECT_EQ(broken[u"message"_s], failed);
    EXPECT_EQ(broken[u"action"_s], u"Frontend"_s);
    EXPECT_EQ(value(*model->cards(), 1, "services").toList().size(), 1);
    model->stopProject(shopID);
    ASSERT_TRUE(cardsBecome(u"blog|idle|; shop|failed|"_s + failed));
    EXPECT_EQ(model->running()->rowCount(), 0);
}

TEST_F(HomeModelsTest, OutlineOpensFolders) {
    for (const QString& folder : {u"alone"_s, u"clients/one"_s, u"clients/two"_s}) {
        addInstalled(folder, "vite", up(4001));
    }
    tree.add(u"projects/clients/one/.git/"_s);
    tree.add(u"projects/clients/two/.git/"_s);
    watch();
    scan();
    OutlineModel& outline = *model->outline();
    const QString closed = u"clients|0|true|true|false; alone|0|false|false|false"_s;
    const auto becomes = [&](const QString& expected) {
        const auto now = [&] { return text(outline, {"name", "depth", "isFolder", "hasChildren", "expanded"}); };
        return waitFor([&] { return now() == expected; }) || (ADD_FAILURE() << now().toStdString(), false);
    };
    ASSERT_TRUE(becomes(closed)) << "folders come first";
    const QString opened =
        u"clients|0|true|true|true; one|1|false|false|false; two|1|false|false|false; alone|0|false|false|false"_s;
    outline.toggleExpanded(0);
    ASSERT_TRUE(becomes(opened));
    QDir(root + u"/alone"_s).removeRecursively();
    scan();
    ASSERT_TRUE(becomes(opened.section(u"; "_s, 0, 2))) << "what was opened stays open";
    outline.toggleExpanded(1);
    outline.toggleExpanded(-1);
    outline.toggleExpanded(0);
    EXPECT_TRUE(becomes(closed.section(u"; "_s, 0, 0)));
}

TEST_F(HomeModelsTest, ShowProjectsInTheirFolders) {
    for (const QString& folder : {u"alone"_s, u"clients/one"_s, u"clients/two"_s, u"old/three"_s, u"old/four"_s}) {
        addInstalled(folder, folder.endsWith(u"two") ? "express" : "vite", up(4001));
        tree.add(u"projects/"_s + folder + u"/.git/HEAD"_s, "ref: refs/heads/main\n");
    }
    watch();
    scan();
    const auto becomes = [&](const char* label, const QString& expected, int shown) {
        const auto now = [&] { return text(model->home().folderRows, {"name", "depth", "expanded"}); };
        EXPECT_TRUE(waitFor([&] { return now() == expected && model->shownCount() == shown; }))
            << label << " is " << now().toStdString() << ", " << model->shownCount() << " shown";
    };
    becomes("while cards are shown", {}, 5);
    model->changeSettings([](AppSettings& settings) { settings.viewMode = ViewMode::folders; });
    becomes("closed at first", u"clients|0|false; old|0|false; alone|0|false"_s, 5);
    model->home().setFolderOpen(root + u"/clients"_s, true);
    const QString open = u"clients|0|true; one|1|false; two|1|false; old|0|false; alone|0|false"_s;
    becomes("one opened", open, 5);
    scan();
    becomes("it stays open", open, 5);
    model->setSearchText(u"T"_s);
    becomes(
        "a search opens the folders of what it found", u"clients|0|true; two|1|false; old|0|true; three|1|false"_s, 2);
    model->home().setFolderOpen(root + u"/old"_s, false);
    becomes("one may be closed all the same", u"clients|0|true; two|1|false; old|0|false"_s, 2);
    model->setSearchText({});
    ProjectFilterSet filters;
    filters.collections = CollectionMode::hide;
    model->setFilters(filters);
    becomes("folders left out", u"alone|0|false"_s, 1);
    filters.collections = CollectionMode::only;
    model->setFilters(filters);
    becomes("nothing but folders", open.section(u"; "_s, 0, 3), 4);
    filters.collections = CollectionMode::show;
    filters.frameworks = {u"Express"_s};
    model->setFilters(filters);
    becomes("one framework", u"clients|0|true; two|1|false"_s, 1);
}

TEST_F(HomeModelsTest, SayWhichOfSeveralServicesOfAKindIsMeant) {
    tree.add(u"projects/garden/package.json"_s, R"({"workspaces": ["packages/*"]})");
    tree.add(u"projects/garden/node_modules/"_s);
    addInstalled(u"garden/packages/site"_s, "vite", up(4005));
    addInstalled(u"garden/packages/admin"_s, "vite", up(4006));
    addInstalled(u"shop"_s, "vite", up(4007));
    scan();
    model->runAction(root + u"/garden"_s, u"Frontend"_s);
    model->runAction(root + u"/shop"_s, u"Frontend"_s);
    const auto running = [&] { return text(*model->running(), {"name", "kindLabel", "address"}); };
    const QString expected =
        u"garden|Frontend · admin|localhost:4006; garden|Frontend · site|localhost:4005; shop|Frontend|localhost:4007"_s;
    EXPECT_TRUE(waitFor([&] { return running() == expected; })) << running().toStdString();
}
