#include "tests/Screens/MainWindow.h"

namespace orv {
namespace {

using namespace Qt::StringLiterals;

using SettingsWindow = test::MainWindow;

TEST_F(SettingsWindow, FindsASettingInWhateverSectionItIs) {
    addInstalled(u"harbor"_s, "vite", "");
    scan();
    open(QSize(1280, 832));
    const auto titles = [this](const QByteArray& component, const char* property) {
        QStringList found;
        for (const QQuickItem* each : items(component, item("SettingsPage"))) {
            found.append(each->property(property).toString());
        }
        return found;
    };
    const auto seen = [&] {
        return QStringList{
            titles("SidebarRow", "text").join(u','),
            (titles("SettingRow", "title") + titles("SettingSwitch", "title")).join(u','),
            titles("SwatchCard", "text").join(u','), titles("OverrideItem", "project").join(u',')};
    };
    model->setPage({.kind = AppPage::Kind::settings, .id = {}, .section = SettingsSection::profile});
    ASSERT_TRUE(test::waitFor([&] { return seen().at(1) == u"Name,Colour"; })) << seen().join(u'|').toStdString();
    const QStringList before = seen();
    press(Qt::Key_F, Qt::ControlModifier);
    const std::pair<QString, QStringList> cases[] = {
        {u"CLIPB"_s, {u"General"_s, u"Programs may copy"_s, {}, {}}},
        {u"at  login"_s, {u"General"_s, u"Start at login"_s, {}, {}}},
        {u"may copy"_s, {u"General"_s, u"Programs may copy"_s, {}, {}}},
        {u"graphite"_s, {u"Appearance"_s, {}, u"Ember,Ocean,Forest,Violet,Graphite"_s, {}}},
        {u"repositories"_s, {u"Git"_s, u"Default branch,Pull"_s, {}, {}}},
        {u"harb"_s, {u"Projects"_s, {}, {}, u"harbor"_s}},
        {u"nothing such"_s, {{}, {}, {}, {}}},
    };
    for (const auto& [typed, expected] : cases) {
        press(Qt::Key_A, Qt::ControlModifier);
        type(typed);
        EXPECT_TRUE(test::waitFor([&, wanted = expected] { return seen() == wanted; }))
            << typed.toStdString() << ": " << seen().join(u'|').toStdString() << ' ' << focus();
    }
    press(Qt::Key_Escape);
    EXPECT_TRUE(test::waitFor([&] { return seen() == before; })) << seen().join(u'|').toStdString();
    press(Qt::Key_F, Qt::ControlModifier);
    type(u"login"_s);
    ASSERT_TRUE(test::waitFor([&] { return seen().at(0) == u"General"; })) << seen().join(u'|').toStdString();
    click(items("SidebarRow", item("SettingsPage")).first());
    EXPECT_TRUE(test::waitFor([&] { return seen().at(1).contains(u"Welcome tour"_s); }))
        << "all of the section: " << seen().join(u'|').toStdString();
    EXPECT_EQ(seen().at(0), before.at(0));
}

TEST_F(SettingsWindow, GoesThroughTheSettingsThatItFoundByKeys) {
    scan();
    open(QSize(1280, 600));
    model->setPage({.kind = AppPage::Kind::settings, .id = {}, .section = SettingsSection::profile});
    const auto focused = [this](const char* property) {
        const QQuickItem* at = window->activeFocusItem();
        return at != nullptr ? at->property(property).toString() : QString();
    };
    const auto crumb = [this] { return items("Breadcrumbs").first()->property("crumbs").toList().last().toMap(); };
    const auto isInField = [&] { return focused("placeholderText") == u"Find a setting"; };
    press(Qt::Key_F, Qt::ControlModifier);
    type(u"e-mail"_s);
    EXPECT_EQ(crumb()[u"title"_s], u"Search"_s);
    press(Qt::Key_Tab);
    EXPECT_EQ(focused("name"), u"E-mail"_s) << focus();
    press(Qt::Key_Escape);
    ASSERT_TRUE(isInField()) << focus();
    type(u"name"_s);
    const std::pair<Qt::Key, QString> steps[] = {
        {Qt::Key_Down, u"Name"_s},         {Qt::Key_Up, {}},
        {Qt::Key_Return, u"Name"_s},       {Qt::Key_Down, u"Name"_s},
        {Qt::Key_Down, u"Welcome tour"_s}, {Qt::Key_Up, u"Name"_s},
        {Qt::Key_Down, u"Welcome tour"_s}, {Qt::Key_Tab, {}},
        {Qt::Key_Down, u"Diagnostics"_s},  {Qt::Key_Down, u"Diagnostics"_s},
    };
    for (const auto& [key, name] : steps) {
        press(key);
        EXPECT_EQ(focused("name"), name) << key << ' ' << focus();
        EXPECT_TRUE(!name.isEmpty() || key == Qt::Key_Tab || isInField()) << focus();
    }
    press(Qt::Key_Return);
    EXPECT_EQ(model->page().section, SettingsSection::general);
    EXPECT_TRUE(test::waitFor([&] { return focused("text") == u"Copy diagnostics"; })) << focus();
    EXPECT_EQ(crumb()[u"title"_s], u"General"_s);
    const QQuickItem* at = window->activeFocusItem();
    EXPECT_TRUE(QRectF(QPointF(), window->size()).contains(at->mapRectToScene(at->boundingRect()))) << "out of sight";
    press(Qt::Key_F, Qt::ControlModifier);
    type(u"service is ready"_s);
    EXPECT_TRUE(test::waitFor([&] {
        press(Qt::Key_Down);
        return focused("text") == u"Notifications";
    })) << "it can't be changed now, so its section: "
        << focus();
    press(Qt::Key_F, Qt::ControlModifier);
    press(Qt::Key_Escape);
    EXPECT_EQ(crumb()[u"title"_s], u"General"_s);
}

} // namespace
} // namespace orv
