#include "CliSupport.h"
#include "OrvCore/ScratchFolder.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/DevicesModel.h"
#include "TextLayout.h"

#include <QJsonArray>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

QJsonObject toJson(const DeviceRow& device) {
    return {{u"key"_s, device.key},         {u"title"_s, device.title},       {u"detail"_s, device.detail},
            {u"section"_s, device.section}, {u"isBooted"_s, device.isBooted}, {u"isChosen"_s, device.isChosen}};
}

int print(const Invocation& call, const DevicesModel& devices) {
    Stream& out = call.console.out;
    if (call.json) {
        QJsonArray array;
        for (const DeviceRow& device : devices.rows()) {
            array.append(toJson(device));
        }
        printJson(out, array);
    } else if (devices.rows().isEmpty()) {
        call.note(u"No devices."_s);
    } else {
        Table table(
            {{u"DEVICE"_s, Style::bold},
             {u"KIND"_s},
             {u"WHERE"_s, Style::dim},
             {u"STATE"_s, Style::green},
             {u"KEY"_s, Style::cyan}});
        for (const DeviceRow& device : devices.rows()) {
            QStringList state;
            if (device.isBooted) {
                state << u"booted"_s;
            }
            if (device.isChosen) {
                state << u"chosen"_s;
            }
            table.add({device.title, device.detail, device.section, state.join(u", "_s), device.key});
        }
        out.write(table.text(out.width(), out.hasColor()));
    }
    for (const QString& hint : devices.hints()) {
        call.note(hint);
    }
    return exitOk;
}

/// The desktop's widgets show what the window runs, which such a model does not know.
AppModel::Options besideTheWidgets(const ScratchFolder& widgets) {
    AppModel::Options options;
    options.snapshotDirectory = widgets.path();
    return options;
}

/// Lists them for a project, whose choice is marked; an empty id: for none.
QFuture<int> listFor(Invocation& call, const QString& projectID) {
    const auto widgets = std::make_shared<ScratchFolder>();
    auto* model = new AppModel(besideTheWidgets(*widgets), call.context);
    auto* progress = new Progress(call.console.err, u"Asking for devices…"_s, call.context);
    model->devices()->setProjectID(projectID);
    const auto promise = std::make_shared<QPromise<int>>();
    promise->start();
    onFinished(model->devices()->refresh(), model, [&call, model, progress, promise, widgets] {
        delete progress;
        promise->addResult(print(call, *model->devices()));
        promise->finish();
    });
    return promise->future();
}

/// Goes on with the project that a word means.
template <typename Then>
QFuture<int> withProject(Invocation& call, const QString& word, const Then& then) {
    const auto promise = std::make_shared<QPromise<int>>();
    promise->start();
    const auto finish = [promise](int code) {
        promise->addResult(code);
        promise->finish();
    };
    onFinished(
        findProject(call, word, ProjectUse::services), call.context,
        [&call, then, finish](const FoundProject& project) {
            if (!project) {
                finish(refusal(call, project.error()));
                return;
            }
            onFinished(then(*project), call.context, finish);
        });
    return promise->future();
}

QFuture<int> list(Invocation& call) {
    reportBrokenStores(call);
    if (call.words.isEmpty()) {
        return listFor(call, {});
    }
    return withProject(call, call.words.first(), [&call](const Project& project) { return listFor(call, project.id); });
}

int chooseDevice(const Invocation& call, const Project& project, const QString& key) {
    const ScratchFolder widgets;
    const AppModel model(besideTheWidgets(widgets));
    if (const StoreResult saved = model.devices()->choose(project.id, key); !saved) {
        return call.failure(saved.error().text());
    }
    if (call.json) {
        const QJsonValue device = key.isEmpty() ? QJsonValue() : QJsonValue(key);
        printJson(call.console.out, QJsonObject{{u"project"_s, project.id}, {u"device"_s, device}});
    } else {
        call.console.out.writeLine(
            key.isEmpty() ? u"%1 runs where Flutter wants."_s.arg(printable(project.name))
                          : u"%1 runs on %2."_s.arg(printable(project.name), printable(key)));
    }
    return exitOk;
}

bool isKey(const QString& word) {
    return word.contains(u':');
}

QFuture<int> noKey(const Invocation& call, const QString& word) {
    return QtFuture::makeReadyFuture(
        call.usageError(u"'%1' is no key of a device; 'orvlauncher devices' lists them."_s.arg(printable(word))));
}

QFuture<int> choose(Invocation& call) {
    reportBrokenStores(call);
    const QString key = call.words.value(1);
    if (!key.isEmpty() && !isKey(key)) {
        return noKey(call, key);
    }
    return withProject(call, call.words.first(), [&call, key](const Project& project) {
        return QtFuture::makeReadyFuture(chooseDevice(call, project, key));
    });
}

QFuture<int> boot(Invocation& call) {
    if (!isKey(call.words.first())) {
        return noKey(call, call.words.first());
    }
    const auto widgets = std::make_shared<ScratchFolder>();
    auto* model = new AppModel(besideTheWidgets(*widgets), call.context);
    auto* progress = new Progress(call.console.err, u"Starting it…"_s, call.context);
    const auto promise = std::make_shared<QPromise<int>>();
    promise->start();
    onFinished(
        model->devices()->ready(call.words.first()), model,
        [&call, progress, promise, widgets](const DeviceTools::Booted& device) {
            delete progress;
            int code = exitOk;
            if (!device) {
                code = call.failure(device.error());
            } else if (call.json) {
                printJson(call.console.out, QJsonObject{{u"key"_s, call.words.first()}, {u"id"_s, *device}});
            } else {
                call.console.out.writeLine(*device);
            }
            promise->addResult(code);
            promise->finish();
        });
    return promise->future();
}

} // namespace

Command devicesCommand() {
    return {
        u"devices"_s,
        u"lists what a Flutter app can run on, and keeps the choice"_s,
        u"What Flutter finds, the simulators and the Android emulators of this machine. PROJECT is a folder, an id, or "
        u"a\n"
        "project's name; KEY is what the list gives. What is missing is said beside the list."_s,
        {{u"list"_s, u"[PROJECT]"_s, 0, 1, u"lists them, a project's choice marked"_s, {}, list},
         {u"choose"_s,
          u"PROJECT [KEY]"_s,
          1,
          2,
          u"runs the project there from now on; without KEY where Flutter wants"_s,
          {},
          choose},
         {u"boot"_s, u"KEY"_s, 1, 1, u"starts a simulator or emulator, and prints what Flutter calls it"_s, {}, boot}},
        {{u"orvlauncher devices"_s, u"everything that can be had here"_s},
         {u"orvlauncher devices choose pocket avd:Pixel_9"_s,
          u"the emulator is started with the project, where it has to be"_s},
         {u"flutter run -d \"$(orvlauncher devices boot avd:Pixel_9)\""_s, u"an emulator for a run of your own"_s}}};
}

} // namespace orv
