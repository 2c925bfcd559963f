#include "CliHelp.h"
#include "CliSupport.h"
#include "TextLayout.h"

#include <QDir>
#include <QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

constexpr int largestPort = 65535;

std::shared_ptr<OverrideStore> openStore() {
    return std::make_shared<OverrideStore>();
}

QString kindNames() {
    QStringList names;
    for (const ServiceKind kind : allServiceKinds) {
        names.append(rawValue(kind));
    }
    return names.join(u", "_s);
}

/// The services as they were detected, for a message.
QString servicesIn(const Project& project) {
    QStringList names;
    for (const ServiceTarget& target : project.targets) {
        const QString where = pathWithin(project.root, target.directory);
        names.append(rawValue(target.kind) + (where == u"."_s ? QString() : u" in "_s + printable(where)));
    }
    return names.join(u", "_s);
}

/// The key of the one service that a project, a kind and perhaps --dir mean.
std::expected<QString, NoProject> keyIn(const Project& project, ServiceKind kind, const QString& subfolder) {
    QStringList keys;
    for (const ServiceTarget& target : project.targets) {
        const bool isThere =
            subfolder.isEmpty() || QDir::cleanPath(QDir(project.root).absoluteFilePath(subfolder)) == target.directory;
        if (target.kind == kind && isThere) {
            keys.append(OverrideStore::key(target.directory, kind));
        }
    }
    keys.removeDuplicates();
    if (keys.size() == 1) {
        return keys.first();
    }
    if (keys.isEmpty()) {
        return std::unexpected(NoProject{
            exitFailed, u"%1 has no such service; it has: %2."_s.arg(printable(project.name), servicesIn(project))});
    }
    return std::unexpected(NoProject{
        exitUsage, u"%1 has several; say which with --dir: %2."_s.arg(printable(project.name), servicesIn(project))});
}

QJsonObject toJson(const OverrideStore::Values& values) {
    QJsonObject json;
    for (auto entry = values.begin(); entry != values.end(); ++entry) {
        json[entry.key()] = entry.value().toJson();
    }
    return json;
}

QFuture<int> list(Invocation& call) {
    reportBrokenStores(call);
    const OverrideStore::Values values = openStore()->values();
    if (call.json) {
        printJson(call.console.out, toJson(values));
        return QtFuture::makeReadyFuture(int(exitOk));
    }
    if (values.isEmpty()) {
        call.note(u"No overrides."_s);
        return QtFuture::makeReadyFuture(int(exitOk));
    }
    QStringList keys = values.keys();
    std::sort(keys.begin(), keys.end());
    Table table(
        {{u"SERVICE"_s, Style::cyan},
         {u"RUNS AS"_s},
         {u"PORT"_s},
         {u"COMMAND"_s},
         {u"FOLDER"_s, Style::dim, Elide::middle}});
    for (const QString& key : std::as_const(keys)) {
        const Override value = values[key];
        const qsizetype bar = key.lastIndexOf(u'|');
        table.add(
            {key.sliced(bar + 1), value.kind ? rawValue(*value.kind) : QString(),
             value.port ? QString::number(*value.port) : QString(), value.command.value_or(QString()),
             shortPath(key.first(std::max<qsizetype>(bar, 0)))});
    }
    call.console.out.write(table.text(call.console.out.width(), call.console.out.hasColor()));
    return QtFuture::makeReadyFuture(int(exitOk));
}

int save(const Invocation& call, OverrideStore& store, const QString& key, const std::optional<Override>& value) {
    if (const StoreResult saved = store.set(key, value); !saved) {
        return call.failure(saved.error().text());
    }
    if (call.json) {
        printJson(call.console.out, toJson(value ? OverrideStore::Values{{key, *value}} : OverrideStore::Values{}));
    }
    return exitOk;
}

/// Finds the service, then hands its key on.
template <typename Action>
QFuture<int> withService(Invocation& call, const Action& action) {
    reportBrokenStores(call);
    const std::optional<ServiceKind> kind = serviceKind(call.words[1]);
    if (!kind) {
        return QtFuture::makeReadyFuture(
            call.usageError(u"'%1' is no kind; the kinds are %2."_s.arg(printable(call.words[1]), kindNames())));
    }
    const auto onKey = [&call, kind = *kind, action](const FoundProject& project) -> int {
        if (!project) {
            return refusal(call, project.error());
        }
        const auto key = keyIn(*project, kind, call.value(u"dir"_s));
        return key ? action(*key) : refusal(call, key.error());
    };
    return exitCodeOf(findProject(call, call.words[0], ProjectUse::services), call.context, onKey);
}

/// What the options change in an override; an empty value takes a part of it away.
std::expected<void, QString> applyOptions(const Invocation& call, Override& value) {
    if (call.isSet(u"command"_s)) {
        const QString command = call.value(u"command"_s);
        value.command = command.isEmpty() ? std::nullopt : std::optional(command);
    }
    if (call.isSet(u"port"_s)) {
        bool isNumber = false;
        const int port = call.value(u"port"_s).toInt(&isNumber);
        if (!call.value(u"port"_s).isEmpty() && (!isNumber || port < 1 || port > largestPort)) {
            return std::unexpected(
                u"'%1' is no port; ports go from 1 to 65535."_s.arg(printable(call.value(u"port"_s))));
        }
        value.port = isNumber ? std::optional(port) : std::nullopt;
    }
    if (call.isSet(u"kind"_s)) {
        value.kind = serviceKind(call.value(u"kind"_s));
        if (!value.kind && !call.value(u"kind"_s).isEmpty()) {
            return std::unexpected(
                u"'%1' is no kind; the kinds are %2."_s.arg(printable(call.value(u"kind"_s)), kindNames()));
        }
    }
    return {};
}

QFuture<int> set(Invocation& call) {
    Override probe;
    if (const auto valid = applyOptions(call, probe); !valid) {
        return QtFuture::makeReadyFuture(call.usageError(valid.error()));
    }
    if (!call.isSet(u"command"_s) && !call.isSet(u"port"_s) && !call.isSet(u"kind"_s)) {
        return QtFuture::makeReadyFuture(call.usageError(u"say what to change: --command, --port or --kind."_s));
    }
    return withService(call, [&call](const QString& key) {
        const auto store = openStore();
        Override value = store->override(key).value_or(Override{});
        if (const auto applied = applyOptions(call, value); !applied) {
            return call.usageError(applied.error());
        }
        return save(call, *store, key, value == Override{} ? std::nullopt : std::optional(value));
    });
}

QFuture<int> clear(Invocation& call) {
    // A service whose folder is gone can only be named by its key.
    if (call.words.size() == 1) {
        const auto store = openStore();
        const QString key = call.words.first();
        if (!store->override(key)) {
            return QtFuture::makeReadyFuture(
                call.failure(u"there is no override with the key '%1'; 'override list --json' shows the keys."_s.arg(
                    printable(key))));
        }
        return QtFuture::makeReadyFuture(save(call, *store, key, std::nullopt));
    }
    return withService(call, [&call](const QString& key) { return save(call, *openStore(), key, std::nullopt); });
}

} // namespace

Command overrideCommand() {
    const CommandOption directory{
        u"dir"_s, u"SUB"_s, u"the service's folder in the project, where one kind stands twice"_s};
    return {
        u"override"_s,
        u"corrects what was detected for a service"_s,
        u"An override gives one service another start command, a fixed port, or another kind. It belongs to the\n"
        "service's folder and its detected KIND: "_s +
            kindNames() + u".\nAn empty value takes that part of the override away again."_s,
        {{u"list"_s, {}, 0, 0, u"lists the overrides"_s, {}, list},
         {u"set"_s,
          u"PROJECT KIND"_s,
          2,
          2,
          u"changes a service"_s,
          {{u"command"_s, u"COMMAND"_s, u"the shell line that starts the service"_s},
           {u"port"_s, u"PORT"_s, u"the port that it is known to use"_s},
           {u"kind"_s, u"KIND"_s, u"run it as this kind"_s},
           directory},
          set},
         {u"clear"_s, u"PROJECT KIND | KEY"_s, 1, 2, u"goes back to what was detected"_s, {directory}, clear}},
        {{u"orvlauncher override set shop backend --port 8001"_s, u"the back end of shop is on port 8001"_s},
         {u"orvlauncher override set . app --command 'cd /srv/shop && make serve'"_s,
          u"starts with a command of your own"_s},
         {u"orvlauncher override clear shop backend"_s, u"forgets it"_s}}};
}

} // namespace orv
