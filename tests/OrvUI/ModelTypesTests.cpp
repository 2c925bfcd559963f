#include "OrvUI/AppModel.h"
#include "OrvUI/Tile.h"
#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace orv;

TEST(RunAction, IsOfferedByTheKindsOfAProject) {
    using enum ServiceKind;
    const struct {
        const char* label;
        QList<ServiceKind> kinds;
        QString offered, preferred, from;
    } cases[] = {
        {"nothing to run", {}, u""_s, u"-"_s, u"-"_s},
        {"both", {backend, frontend}, u"Frontend Backend Both"_s, u"Both"_s, u"Both"_s},
        {"all kinds",
         {docker, flutter, app, backend, frontend},
         u"Frontend Backend Both App Flutter Docker"_s,
         u"Both"_s,
         u"Both"_s},
        {"no Both without a front end", {docker, backend}, u"Backend Docker"_s, u"Backend"_s, u"Backend"_s},
        {"app before Flutter", {flutter, app}, u"App Flutter"_s, u"App"_s, u"App"_s},
    };
    const auto label = [](const std::optional<RunAction>& action) { return action ? rawValue(*action) : u"-"_s; };
    for (const auto& [name, kinds, offered, preferred, from] : cases) {
        Project project;
        for (const ServiceKind kind : kinds) {
            project.targets.append({kind, u"/p"_s, {}, {}, {}});
        }
        QStringList labels;
        for (const RunAction action : AppModel::availableActions(project)) {
            labels.append(rawValue(action));
            EXPECT_EQ(runAction(rawValue(action)), action) << name;
        }
        EXPECT_EQ(labels.join(u' '), offered) << name;
        EXPECT_EQ(label(AppModel::defaultAction(project)), preferred) << name;
        EXPECT_EQ(label(runActionFrom(ServiceKinds(kinds.begin(), kinds.end()))), from) << name;
    }
}

TEST(StackLine, NamesEachStackOnce) {
    Project project;
    for (const QString& framework : {u"Node"_s, u"Node"_s, QString(), QString()}) {
        ServiceTarget target{ServiceKind::docker, u"/p"_s, {}, {}, {}};
        if (!framework.isEmpty()) {
            target.framework = framework;
        }
        project.targets.append(target);
    }
    EXPECT_EQ(stackLine(project), u"Node + Docker"_s);
    project.targets.append({ServiceKind::frontend, u"/p"_s, u"Vite"_s, {}, {}});
    EXPECT_EQ(stackLine(project), u"Vite + Node + Docker"_s) << "what is looked at comes first";
}

TEST(Tile, HasTheColourAndLetterOfTheName) {
    const struct {
        QString name;
        int index;
        QString letter;
    } cases[] = {
        {u"shop"_s, 5, u"S"_s},       {u"billing-worker"_s, 7, u"B"_s}, {u"pocket-flutter"_s, 0, u"P"_s},
        {u".dotfiles"_s, -1, u"D"_s}, {u"élan"_s, -1, u"É"_s},          {u"--"_s, -1, u"-"_s},
        {u""_s, -1, u""_s},
    };
    for (const auto& [name, index, letter] : cases) {
        EXPECT_EQ(Tile::letter(name), letter) << name.toStdString();
        if (index >= 0) {
            EXPECT_EQ(Tile::index(name), index) << name.toStdString();
        }
    }
}
