#include "CliSupport.h"
#include "OrvCore/Settings.h"
#include "TextLayout.h"
#include "WidgetUpdate.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

QJsonObject toJson(const QString& id, bool isPinned) {
    return {{u"id"_s, id}, {u"name"_s, QFileInfo(id).fileName()}, {u"pinned"_s, isPinned}};
}

int report(const Invocation& call, const StoreResult& saved, const QString& id, bool isPinned) {
    if (!saved) {
        return call.failure(saved.error().text());
    }
    WidgetUpdate::writeStores();
    if (call.json) {
        printJson(call.console.out, toJson(id, isPinned));
    } else {
        call.console.out.writeLine((isPinned ? u"Pinned "_s : u"Unpinned "_s) + printable(QFileInfo(id).fileName()));
    }
    return exitOk;
}

QFuture<int> list(Invocation& call) {
    reportBrokenStores(call);
    const QStringList pins = SettingsStore().settings().pinnedProjectIDs;
    if (call.json) {
        QJsonArray array;
        for (const QString& id : pins) {
            array.append(toJson(id, true));
        }
        printJson(call.console.out, array);
    } else if (pins.isEmpty()) {
        call.note(u"Nothing is pinned."_s);
    } else {
        Table table({{u"PROJECT"_s, Style::cyan}, {u"FOLDER"_s, Style::dim, Elide::middle}});
        for (const QString& id : pins) {
            table.add({QFileInfo(id).fileName(), shortPath(id)});
        }
        call.console.out.write(table.text(call.console.out.width(), call.console.out.hasColor()));
    }
    return QtFuture::makeReadyFuture(int(exitOk));
}

QFuture<int> add(Invocation& call) {
    reportBrokenStores(call);
    return exitCodeOf(
        findProject(call, call.words.first(), ProjectUse::folder), call.context,
        [&call](const FoundProject& project) -> int {
            if (!project) {
                return refusal(call, project.error());
            }
            const QString& id = project->id;
            if (const QString root = QFileInfo(configuredScanRoot()).canonicalFilePath();
                !id.startsWith(root + u'/') || root.isEmpty()) {
                call.note(u"The window shows it when it lies in the scanned folder, which it does not."_s);
            } else if (project->targets.isEmpty()) {
                call.note(u"It is shown as soon as there is something to run in it."_s);
            }
            const StoreResult saved = SettingsStore().change([id](AppSettings& settings) {
                if (!settings.pinnedProjectIDs.contains(id)) {
                    settings.pinnedProjectIDs.append(id);
                }
            });
            return report(call, saved, id, true);
        });
}

/// A project that is gone can still be taken off: nothing is scanned.
QFuture<int> remove(Invocation& call) {
    reportBrokenStores(call);
    const QString word = call.words.first();
    SettingsStore store;
    QStringList meant = store.settings().pinnedProjectIDs;
    meant.removeIf([&](const QString& id) {
        return id != word && id != absolutePath(word) &&
               QFileInfo(id).fileName().compare(word, Qt::CaseInsensitive) != 0;
    });
    if (meant.isEmpty()) {
        return QtFuture::makeReadyFuture(call.failure(u"'%1' is not pinned."_s.arg(printable(word))));
    }
    if (meant.size() > 1) {
        return QtFuture::makeReadyFuture(
            call.usageError(u"%1 pinned projects are called '%2'; name the folder."_s.arg(meant.size()).arg(word)));
    }
    const QString id = meant.first();
    const StoreResult saved = store.change([id](AppSettings& settings) { settings.pinnedProjectIDs.removeAll(id); });
    return QtFuture::makeReadyFuture(report(call, saved, id, false));
}

} // namespace

Command pinCommand() {
    return {
        u"pin"_s,
        u"keeps projects where they are at hand"_s,
        u"Pinned projects stand first in the window and in its menus. PROJECT is a folder, an id, or a project's name."_s,
        {{u"list"_s, {}, 0, 0, u"lists the pinned projects in their order"_s, {}, list},
         {u"add"_s, u"PROJECT"_s, 1, 1, u"pins one, behind the others"_s, {}, add},
         {u"remove"_s, u"PROJECT"_s, 1, 1, u"takes one off"_s, {}, remove}},
        {{u"orvlauncher pin add shop"_s, u"pins the project shop"_s},
         {u"orvlauncher pin list --json | jq -r '.[].id'"_s, u"the folders of all pinned projects"_s}}};
}

} // namespace orv
