#include "CliSupport.h"
#include "OrvCore/ScratchFolder.h"
#include "OrvLauncher/platform/LoginItem.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/CTA.h"
#include "OrvUI/Suggestions.h"
#include "TextLayout.h"

#include <QJsonArray>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

int print(const Invocation& call, const QList<SuggestionRow>& rows) {
    Stream& out = call.console.out;
    if (call.json) {
        QJsonArray array;
        for (const SuggestionRow& row : rows) {
            array.append(QJsonObject{
                {u"id"_s, row.key}, {u"headline"_s, row.headline}, {u"body"_s, row.body}, {u"button"_s, row.button}});
        }
        printJson(out, array);
    } else if (rows.isEmpty()) {
        call.note(u"Nothing to suggest."_s);
    } else {
        Table table({{u"ID"_s, Style::cyan}, {u"SUGGESTION"_s, Style::bold}, {u"WHY"_s, Style::dim}});
        for (const SuggestionRow& row : rows) {
            table.add({row.key, row.headline, row.body});
        }
        out.write(table.text(out.width(), out.hasColor()));
    }
    return exitOk;
}

QFuture<int> list(Invocation& call) {
    reportBrokenStores(call);
    // The desktop's widgets show what the window runs, which this model does not know.
    const auto widgets = std::make_shared<ScratchFolder>();
    AppModel::Options options;
    options.login = makeLoginItem();
    options.snapshotDirectory = widgets->path();
    auto* model = new AppModel(std::move(options), call.context);
    model->suggestions()->setLimit(static_cast<int>(StoredNames<CTAID>::table.size()));
    auto* progress = new Progress(call.console.err, u"Looking at your projects…"_s, call.context);
    const auto promise = std::make_shared<QPromise<int>>();
    promise->start();
    onFinished(model->refresh(), model, [&call, model, progress, promise, widgets] {
        onFinished(model->refreshGitBadges(), model, [&call, model, progress, promise, widgets] {
            delete progress;
            model->suggestions()->update();
            promise->addResult(print(call, model->suggestions()->rows()));
            promise->finish();
        });
    });
    return promise->future();
}

QFuture<int> change(const Invocation& call, const std::function<void(AppSettings&)>& change, const QString& said) {
    reportBrokenStores(call);
    SettingsStore store;
    if (const StoreResult saved = store.change(change); !saved) {
        return QtFuture::makeReadyFuture(call.failure(saved.error().text()));
    }
    if (call.json) {
        QStringList dismissed = store.settings().dismissedCTAs.values();
        dismissed.sort();
        printJson(call.console.out, QJsonObject{{u"dismissed"_s, QJsonArray::fromStringList(dismissed)}});
    } else {
        call.console.out.writeLine(said);
    }
    return QtFuture::makeReadyFuture(int(exitOk));
}

QFuture<int> dismiss(Invocation& call) {
    const QString id = call.words.first();
    if (!fromRawValue<CTAID>(id)) {
        QStringList known;
        for (const auto& [cta, name] : StoredNames<CTAID>::table) {
            known.append(name);
        }
        return QtFuture::makeReadyFuture(
            call.usageError(u"there is no suggestion '%1'; there are %2."_s.arg(printable(id), known.join(u", "_s))));
    }
    return change(call, [id](AppSettings& settings) { settings.dismissedCTAs.insert(id); }, u"Dismissed "_s + id);
}

QFuture<int> bringBack(Invocation& call) {
    return change(call, [](AppSettings& settings) { settings.dismissedCTAs.clear(); }, u"All suggestions are back."_s);
}

} // namespace

Command suggestionsCommand() {
    return {
        u"suggestions"_s,
        u"says what is worth doing next"_s,
        u"The steps that the window suggests on its home page, the most useful first. What is dismissed is not "
        u"suggested\n"
        "again, there or here."_s,
        {{u"list"_s, {}, 0, 0, u"lists them"_s, {}, list},
         {u"dismiss"_s, u"ID"_s, 1, 1, u"suggests it no more"_s, {}, dismiss},
         {u"restore"_s, {}, 0, 0, u"brings back all that were dismissed"_s, {}, bringBack}},
        {{u"orvlauncher suggestions"_s, u"what to do next"_s},
         {u"orvlauncher suggestions dismiss themes"_s, u"no more of that"_s}}};
}

} // namespace orv
