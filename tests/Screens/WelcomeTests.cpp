#include "OrvUI/DevicesModel.h"
#include "OrvUI/OnboardingModel.h"
#include "tests/Screens/MainWindow.h"

#include <QFile>

#include <algorithm>

namespace orv {
namespace {

using namespace Qt::StringLiterals;

/// Keeps what is posted, and says that the user allowed it.
struct Desk : Notifying {
    QStringList& posted;
    explicit Desk(QStringList& list) : posted(list) {}
    void post(const NotificationRequest& request) override { posted.append(request.title); }
    void findStatus(Ask, std::function<void(const NotificationStatus&)> answer) override {
        answer({NotificationStatus::Kind::allowed, u"a desk"_s});
    }
};

struct LoginList : LoginItemController {
    bool& isOn;
    explicit LoginList(bool& state) : isOn(state) {}
    [[nodiscard]] bool isEnabled() const override { return isOn; }
    std::expected<void, QString> setEnabled(bool isEnabled) override {
        isOn = isEnabled;
        return {};
    }
};

class WelcomeWindow : public test::MainWindow {
protected:
    WelcomeWindow()
        : gitConfig(tree.add(u"gitconfig"_s, "")),
          global("GIT_CONFIG_GLOBAL", qPrintable(gitConfig)),
          system("GIT_CONFIG_NOSYSTEM", "1") {
        makeModel();
        addInstalled(u"shop"_s, "vite", test::up(4310));
    }

    void addTo(AppModel::Options& options) override {
        options.notifier = std::make_unique<Desk>(posted);
        options.login = std::make_unique<LoginList>(startsAtLogin);
        options.deviceTools = {
            .environment = {},
            .home = tree.path(),
            .xcrun = tree.path(u"none"_s),
            .flutterLimit = std::chrono::seconds(20),
            .bootLimit = std::chrono::seconds(20)};
    }

    void shows(const QByteArray& component) const {
        EXPECT_TRUE(test::waitFor([&] { return !items(component).isEmpty(); }))
            << component.toStdString() << ", focus: " << focus();
    }

    [[nodiscard]] QString focused(const char* property) const {
        return window->activeFocusItem() != nullptr ? window->activeFocusItem()->property(property).toString()
                                                    : QString();
    }

    const QString gitConfig;
    const test::ScopedEnvironment global;
    const test::ScopedEnvironment system;
    QStringList posted;
    bool startsAtLogin = false;
};

TEST_F(WelcomeWindow, GoesThroughItsPagesByKeyboardAndSetsWhatWasChosen) {
    model->startOnboarding();
    open(QSize(1280, 832));
    shows("WelcomeStart");
    press(Qt::Key_Return);
    shows("WelcomeName");
    ASSERT_TRUE(test::waitFor([this] { return focused("placeholderText") == u"Name"_s; }));
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_Space);
    press(Qt::Key_Return);
    EXPECT_EQ(model->onboarding()->step(), 1) << "nobody has no name";
    type(u"Kim"_s);
    press(Qt::Key_Return);
    EXPECT_EQ(model->onboarding()->step(), 2) << "one page a key";
    shows("WelcomeProjects");
    const auto finds = [this](std::optional<int> count) {
        return test::waitFor([&] { return model->onboarding()->detectedCount() == count; });
    };
    EXPECT_TRUE(finds(1));
    ASSERT_TRUE(test::waitFor([this] { return focused("placeholderText") == u"Projects folder"_s; }));
    press(Qt::Key_End);
    type(u"/x"_s);
    EXPECT_TRUE(finds({}));
    press(Qt::Key_Backspace);
    press(Qt::Key_Backspace);
    EXPECT_TRUE(finds(1)) << "while the field is still typed in";
    press(Qt::Key_Left, Qt::AltModifier);
    shows("WelcomeName");
    press(Qt::Key_Return);
    shows("WelcomeProjects");
    press(Qt::Key_Return);
    shows("WelcomeGit");
    ASSERT_TRUE(test::waitFor([this] { return focused("placeholderText") == u"Name for commits"_s; }));
    type(u"Kim Doe"_s);
    press(Qt::Key_Return);
    shows("WelcomeLook");
    named("SwatchCard", u"Violet"_s)->forceActiveFocus();
    press(Qt::Key_Space);
    press(Qt::Key_Return);
    shows("WelcomeAi");
    ASSERT_TRUE(test::waitFor([this] { return focused("text") == u"Claude Code"_s; })) << focus();
    named("Button", u"Back"_s)->forceActiveFocus();
    press(Qt::Key_Return);
    shows("WelcomeLook");
    press(Qt::Key_Return);
    shows("WelcomeAi");
    press(Qt::Key_Return);
    shows("WelcomeExtras");
    for (QQuickItem* item : items("Switch")) {
        item->forceActiveFocus();
        press(Qt::Key_Space);
    }
    EXPECT_EQ(model->settings().settings().theme, ThemeID::ember) << "nothing is written before the end";
    press(Qt::Key_Return);
    EXPECT_TRUE(test::waitFor([this] { return items("WelcomeExtras").isEmpty(); }));
    const AppSettings& settings = model->settings().settings();
    EXPECT_EQ(settings.displayName, u"Kim"_s);
    EXPECT_EQ(settings.theme, ThemeID::violet);
    EXPECT_TRUE(settings.notificationsEnabled);
    EXPECT_TRUE(startsAtLogin);
    EXPECT_FALSE(model->needsOnboarding());
    EXPECT_TRUE(test::waitFor([this] { return test::readFile(gitConfig).contains("name = Kim Doe"); }));
    EXPECT_TRUE(test::waitFor([this] { return !items("ProjectCard").isEmpty(); }));
}

TEST_F(WelcomeWindow, CanBeSkippedAndFitsEveryWindow) {
    model->startOnboarding();
    open(QSize(1280, 832));
    shows("WelcomeStart");
    press(Qt::Key_K, Qt::ControlModifier);
    EXPECT_TRUE(items("PaletteItem").isEmpty()) << "what lies below does not hear of keys";
    for (int step = 0; step < model->onboarding()->stepCount(); ++step) {
        for (const QSize size : {QSize(760, 560), QSize(900, 832), QSize(1720, 1000)}) {
            window->resize(size);
            QString outside;
            const auto fits = [&] {
                outside.clear();
                for (QQuickItem* item : items("Button") + items("Segmented") + items("Field")) {
                    const QRectF place = item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
                    if (place.left() < 0 || place.right() > size.width()) {
                        outside = item->property("text").toString();
                    }
                }
                return outside.isNull();
            };
            EXPECT_TRUE(test::waitFor(fits))
                << "page " << step << " at " << size.width() << ": " << outside.toStdString();
        }
        model->onboarding()->next();
    }
    const AppSettings before = model->settings().settings();
    while (model->onboarding()->step() > 0) {
        model->onboarding()->back();
    }
    ASSERT_TRUE(test::waitFor([this] { return !items("WelcomeStart").isEmpty(); }));
    click(named("Button", u"Skip"_s));
    EXPECT_TRUE(test::waitFor([this] { return items("WelcomeStart").isEmpty(); }));
    AppSettings expected = before;
    expected.onboardingCompleted = true;
    EXPECT_EQ(model->settings().settings(), expected);
}

TEST_F(WelcomeWindow, EverySwitchOfTheSettingsTakesEffect) {
    model->skipOnboarding();
    open(QSize(1280, 832));
    model->setPage({AppPage::Kind::settings, {}, SettingsSection::general});
    shows("SettingsGeneral");
    click(named("Switch", u"Start at login"_s));
    EXPECT_TRUE(startsAtLogin);
    const auto settings = [this]() -> const AppSettings& { return model->settings().settings(); };
    click(named("Switch", u"Quick panel shortcut"_s));
    EXPECT_FALSE(settings().quickPanelShortcutEnabled);
    EXPECT_TRUE(items("SettingNote").isEmpty());
    window->setProperty("shortcutNote", u"No keys here."_s);
    shows("SettingNote");
    model->setPage({AppPage::Kind::settings, {}, SettingsSection::notifications});
    shows("SettingsNotifications");
    EXPECT_FALSE(named("Switch", u"A service is ready"_s)->isEnabled()) << "while all are off";
    click(named("Switch", u"Notifications"_s));
    EXPECT_TRUE(settings().notificationsEnabled);
    EXPECT_TRUE(test::waitFor([this] { return model->notificationStatusText() == u"Shown by a desk"_s; }));
    click(named("Button", u"Send a test"_s));
    EXPECT_EQ(posted, QStringList(u"Notifications work"_s));
    const struct {
        QString title;
        bool AppSettings::* member;
    } switches[] = {
        {u"A service is ready"_s, &AppSettings::notifyReady},
        {u"A service stops unexpectedly"_s, &AppSettings::notifyCrash},
        {u"A project was added"_s, &AppSettings::notifyAdded},
        {u"An AI agent finishes"_s, &AppSettings::notifyAgents},
        {u"Only while OrvLauncher is in the background"_s, &AppSettings::notifyOnlyInBackground},
    };
    for (const auto& it : switches) {
        const bool before = settings().*it.member;
        click(named("Switch", it.title));
        EXPECT_EQ(settings().*it.member, !before) << it.title.toStdString();
        EXPECT_EQ(named("Switch", it.title)->property("checked").toBool(), !before) << it.title.toStdString();
    }
    model->setPage({AppPage::Kind::settings, {}, SettingsSection::general});
    shows("SettingsGeneral");
    click(named("Button", u"Start"_s));
    shows("WelcomeStart");
}

TEST_F(WelcomeWindow, AsksOnWhichDeviceToRun) {
    model->skipOnboarding();
    tree.add(u"projects/pocket/pubspec.yaml"_s, "name: pocket\ndependencies:\n  flutter:\n    sdk: flutter\n");
    tree.add(u"projects/pocket/.dart_tool/"_s);
    QFile::remove(tree.path(u"bin/flutter"_s));
    QFile::setPermissions(
        tree.add(
            u"bin/flutter"_s,
            "#!/bin/sh\nif [ \"$1\" = devices ]; then echo '[{\"id\": \"linux\", \"name\": \"Linux\"}, "
            "{\"id\": \"chrome\", \"name\": \"Chrome\"}]'; "
            "else echo \"on $3\"; exec sleep 100; fi\n"),
        QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    scan();
    open(QSize(1280, 832));
    const Project pocket = project(u"pocket"_s);
    model->devices()->ask(pocket.id);
    ASSERT_TRUE(test::waitFor([this] { return items("DeviceItem").size() == 2; }));
    ASSERT_TRUE(test::waitFor([this] { return focused("placeholderText") == u"Find a device"_s; }));
    press(Qt::Key_Down);
    EXPECT_NE(named("Button", u"Run on Chrome"_s), nullptr);
    type(u"lin"_s);
    EXPECT_TRUE(test::waitFor([this] { return items("DeviceItem").size() == 1; }));
    EXPECT_NE(named("Button", u"Run on Linux"_s), nullptr);
    named("CheckBox", u"Remember"_s)->forceActiveFocus();
    press(Qt::Key_Return);
    EXPECT_FALSE(model->devices()->isAsking());
    EXPECT_EQ(model->devices()->chosen(pocket.id), u"flutter:linux"_s);
    EXPECT_TRUE(test::waitFor([&] { return logText(id(pocket, ServiceKind::flutter)) == u"on linux"_s; }))
        << logText(id(pocket, ServiceKind::flutter)).toStdString();
    model->devices()->ask(pocket.id);
    ASSERT_TRUE(test::waitFor([this] { return items("DeviceItem").size() == 2; }));
    press(Qt::Key_Escape);
    EXPECT_TRUE(test::waitFor([this] { return items("DeviceItem").isEmpty(); }));
}

} // namespace
} // namespace orv
