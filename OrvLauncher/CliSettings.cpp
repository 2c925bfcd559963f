#include "CliHelp.h"
#include "CliSupport.h"
#include "OrvCore/Paths.h"
#include "OrvCore/Settings.h"
#include "TextLayout.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// Every key with a value of its type, those that are usually absent too.
QJsonObject everyKey() {
    AppSettings settings = AppSettings::defaults();
    settings.avatarColorHex = QString();
    settings.avatarPhotoPath = QString();
    settings.lastRun = LastRun{};
    return settings.toJson();
}

bool isFolder(const QString& key) {
    return key == u"scanRoot"_s;
}

/// The value as people write it: a string without quotes, a folder as a path.
QString readable(const QString& key, const QJsonValue& value) {
    if (value.isUndefined()) {
        return {};
    }
    if (value.isString()) {
        return isFolder(key) ? Paths::pathOfFileUrl(value.toString()) : value.toString();
    }
    return QString::fromUtf8(compactJson(value));
}

/// The value that a word means for a key of that type; undefined when it means none.
QJsonValue parsed(const QString& key, QJsonValue::Type type, const QString& word) {
    if (isFolder(key)) {
        return Paths::fileUrl(absolutePath(word));
    }
    if (type == QJsonValue::String) {
        return word;
    }
    if (type == QJsonValue::Bool) {
        const QString lower = word.toLower();
        const bool isTrue = QStringList{u"true"_s, u"yes"_s, u"on"_s, u"1"_s}.contains(lower);
        const bool isFalse = QStringList{u"false"_s, u"no"_s, u"off"_s, u"0"_s}.contains(lower);
        return isTrue || isFalse ? QJsonValue(isTrue) : QJsonValue(QJsonValue::Undefined);
    }
    const QJsonDocument json = QJsonDocument::fromJson(word.toUtf8());
    if (type == QJsonValue::Array && json.isArray()) {
        return json.array();
    }
    return type == QJsonValue::Object && json.isObject() ? QJsonValue(json.object())
                                                         : QJsonValue(QJsonValue::Undefined);
}

QString nameOf(QJsonValue::Type type) {
    switch (type) {
    case QJsonValue::Bool:
        return u"true or false"_s;
    case QJsonValue::Array:
        return u"a JSON list"_s;
    case QJsonValue::Object:
        return u"a JSON object"_s;
    default:
        return u"a text"_s;
    }
}

std::optional<int> unknownKey(const Invocation& call) {
    const QString key = call.words.first();
    const QStringList keys = everyKey().keys();
    if (keys.contains(key)) {
        return {};
    }
    return call.usageError(u"there is no setting '%1'."_s.arg(printable(key)) + didYouMean(key, keys));
}

void printSetting(const Invocation& call, const QString& key, const QJsonObject& settings) {
    const QJsonValue value = settings[key];
    if (call.json) {
        printJson(call.console.out, value.isUndefined() ? QJsonValue() : value);
    } else {
        call.console.out.writeLine(printable(readable(key, value)));
    }
}

QFuture<int> list(Invocation& call) {
    reportBrokenStores(call);
    const QJsonObject settings = SettingsStore().settings().toJson();
    if (call.json) {
        printJson(call.console.out, settings);
        return QtFuture::makeReadyFuture(int(exitOk));
    }
    const QJsonObject defaults = AppSettings::defaults().toJson();
    Table table({{u"SETTING"_s, Style::bold}, {u"VALUE"_s}, {u"DEFAULT"_s, Style::dim}});
    const QStringList keys = everyKey().keys();
    for (const QString& key : keys) {
        const bool isDefault = settings[key] == defaults[key];
        table.add({key, readable(key, settings[key]), isDefault ? QString() : readable(key, defaults[key])});
    }
    call.console.out.write(table.text(call.console.out.width(), call.console.out.hasColor()));
    return QtFuture::makeReadyFuture(int(exitOk));
}

QFuture<int> get(Invocation& call) {
    if (const auto wrong = unknownKey(call)) {
        return QtFuture::makeReadyFuture(int(*wrong));
    }
    reportBrokenStores(call);
    printSetting(call, call.words.first(), SettingsStore().settings().toJson());
    return QtFuture::makeReadyFuture(int(exitOk));
}

/// Gives the setting that value (undefined: takes it away), unless the record then makes no sense.
int store(const Invocation& call, const QJsonValue& value) {
    reportBrokenStores(call);
    const QString key = call.words.first();
    const auto changed = [key, value](const AppSettings& settings) {
        QJsonObject json = settings.toJson();
        value.isUndefined() ? json.remove(key) : void(json[key] = value);
        return AppSettings::fromJson(json);
    };
    SettingsStore settings;
    if (const auto record = changed(settings.settings()); !record) {
        return call.usageError(record.error().text());
    }
    const StoreResult saved = settings.change([changed](AppSettings& current) {
        if (auto record = changed(current)) {
            current = std::move(*record);
        }
    });
    if (!saved) {
        return call.failure(saved.error().text());
    }
    if (call.json) {
        printSetting(call, key, settings.settings().toJson());
    }
    return exitOk;
}

QFuture<int> set(Invocation& call) {
    if (const auto wrong = unknownKey(call)) {
        return QtFuture::makeReadyFuture(int(*wrong));
    }
    const QString key = call.words.first();
    if (isFolder(key)) {
        const QString problem =
            call.words[1].isEmpty() ? u"the folder's name is empty."_s : folderProblem(absolutePath(call.words[1]));
        if (!problem.isEmpty()) {
            return QtFuture::makeReadyFuture(call.usageError(problem));
        }
    }
    const QJsonValue::Type type = everyKey()[key].type();
    const QJsonValue value = parsed(key, type, call.words[1]);
    if (value.isUndefined()) {
        return QtFuture::makeReadyFuture(
            call.usageError(u"%1 takes %2, not '%3'."_s.arg(key, nameOf(type), printable(call.words[1]))));
    }
    return QtFuture::makeReadyFuture(store(call, value));
}

QFuture<int> reset(Invocation& call) {
    if (const auto wrong = unknownKey(call)) {
        return QtFuture::makeReadyFuture(int(*wrong));
    }
    return QtFuture::makeReadyFuture(store(call, AppSettings::defaults().toJson()[call.words.first()]));
}

} // namespace

Command settingsCommand() {
    return {
        u"settings"_s,
        u"shows and changes the settings"_s,
        u"The settings are shared with the window, which notices a change at once. A list is written as JSON; a "
        u"folder\n"
        "as a path."_s,
        {{u"list"_s, {}, 0, 0, u"prints every setting"_s, {}, list},
         {u"get"_s, u"KEY"_s, 1, 1, u"prints one"_s, {}, get},
         {u"set"_s, u"KEY VALUE"_s, 2, 2, u"changes one"_s, {}, set},
         {u"reset"_s, u"KEY"_s, 1, 1, u"goes back to its default"_s, {}, reset}},
        {{u"orvlauncher settings"_s, u"all of them, with the default where it differs"_s},
         {u"orvlauncher settings set scanRoot ~/Projects"_s, u"the folder to look for projects in"_s},
         {u"orvlauncher settings set theme ocean"_s, u"another theme, in the open window too"_s}}};
}

} // namespace orv
