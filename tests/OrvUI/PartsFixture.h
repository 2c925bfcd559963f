#pragma once

#include "tests/OrvUI/ModelFixture.h"

#include <QAbstractItemModel>
#include <QFile>

namespace orv::test {

using namespace Qt::StringLiterals;

/// The rows with the values of these roles: "shop|running; blog|idle".
inline QString text(const QAbstractItemModel& model, const QList<QByteArray>& roles) {
    QStringList rows;
    for (int row = 0; row < model.rowCount(); ++row) {
        QStringList values;
        for (const QByteArray& role : roles) {
            values.append(model.index(row, 0).data(model.roleNames().key(role, -1)).toString());
        }
        rows.append(values.join(u'|'));
    }
    return rows.join(u"; "_s);
}

/// Keeps what is posted.
struct Recorder : Notifying {
    QStringList& posted;
    explicit Recorder(QStringList& list) : posted(list) {}
    void post(const NotificationRequest& request) override {
        posted.append(request.title + u" / "_s + request.body + u" / "_s + request.openURL.value_or(QString()));
    }
    void findStatus(Ask ask, std::function<void(const NotificationStatus&)> answer) override {
        answer({NotificationStatus::Kind::allowed, ask == Ask::userToo ? u"asked"_s : u"looked"_s});
    }
};

struct Switch : LoginItemController {
    bool& isOn;
    explicit Switch(bool& state) : isOn(state) {}
    [[nodiscard]] bool isEnabled() const override { return isOn; }
    std::expected<void, QString> setEnabled(bool isEnabled) override {
        isOn = isEnabled;
        return {};
    }
};

class PartsTest : public ModelFixture {
protected:
    PartsTest()
        : gitConfig(tree.add(u"gitconfig"_s, "[user]\n\tname = Old\n\temail = old@example.org\n")),
          global("GIT_CONFIG_GLOBAL", qPrintable(gitConfig)),
          system("GIT_CONFIG_NOSYSTEM", "1") {
        makeModel();
    }

    void addTo(AppModel::Options& options) override {
        auto recorder = std::make_unique<Recorder>(posted);
        notifier = recorder.get();
        options.notifier = std::move(recorder);
        options.login = std::make_unique<Switch>(startsAtLogin);
        options.appIsActive = [this] { return isActive; };
        options.deviceTools = {
            .environment = {{u"ANDROID_HOME"_s, tree.path(u"sdk"_s)}},
            .home = tree.path(),
            .xcrun = tree.path(u"tools/xcrun"_s),
            .flutterLimit = std::chrono::milliseconds(flutterLimit),
            .bootLimit = std::chrono::seconds(20)};
    }
    void addTool(const QString& file, const QByteArray& script) {
        QFile::setPermissions(
            tree.add(file, "#!/bin/sh\n" + script), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    void becomes(const QAbstractItemModel& list, const QList<QByteArray>& roles, const QString& expected) {
        EXPECT_TRUE(waitFor([&] { return text(list, roles) == expected; }, std::chrono::seconds(5)))
            << "is " << text(list, roles).toStdString() << "\nnot " << expected.toStdString();
    }

    const QString gitConfig;
    const ScopedEnvironment global;
    const ScopedEnvironment system;
    QStringList posted;
    Notifying* notifier = nullptr;
    bool startsAtLogin = false;
    bool isActive = false;
    int flutterLimit = 20'000;
};

} // namespace orv::test
