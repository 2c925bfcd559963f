#include "CliSupport.h"
#include "OrvCore/ScratchFolder.h"
#include "RunSession.h"
#include "WidgetUpdate.h"

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// What a run in the terminal lives on; gone when the command has ended.
class TerminalRun : public QObject {
public:
    explicit TerminalRun(QObject* parent) : QObject(parent) {
        AppModel::Options options;
        options.snapshotDirectory = m_snapshots.path();
        m_model = std::make_unique<AppModel>(std::move(options));
        m_model->setReloadWidgets([this] {
            if (const auto snapshot = SharedContainer::read(m_snapshots.path())) {
                m_widgets.write(snapshot->running);
            }
        });
    }

    QFuture<int> start(Console& console, const Project& project, const RunSession::Options& options) {
        m_session = std::make_unique<RunSession>(*m_model, console, project, options, nullptr);
        return m_session->start();
    }

private:
    ScratchFolder m_snapshots; ///< of this run alone
    WidgetUpdate m_widgets;
    std::unique_ptr<AppModel> m_model;
    std::unique_ptr<RunSession> m_session;
};

QString kindsOf(const Project& project) {
    QStringList names;
    for (const ServiceKind kind : allServiceKinds) {
        for (const ServiceTarget& target : project.targets) {
            if (target.kind == kind && !names.contains(rawValue(kind))) {
                names.append(rawValue(kind));
            }
        }
    }
    return names.join(u", "_s);
}

/// The kinds to start: those asked for, else what a run button without a choice starts.
std::expected<ServiceKinds, QString> kindsToRun(const Invocation& call, const Project& project) {
    ServiceKinds wanted;
    const QStringList words = call.parser.values(u"only"_s);
    for (const QString& word : words) {
        const std::optional<ServiceKind> kind = serviceKind(word);
        const bool isThere =
            kind && std::any_of(project.targets.begin(), project.targets.end(), [&](const ServiceTarget& target) {
                return target.kind == *kind;
            });
        if (!isThere) {
            return std::unexpected(
                u"%1 has no '%2'; it has %3."_s.arg(printable(project.name), printable(word), kindsOf(project)));
        }
        wanted.insert(*kind);
    }
    if (wanted.empty()) {
        if (const std::optional<RunAction> action = AppModel::defaultAction(project)) {
            wanted = kinds(*action);
        }
    }
    return wanted;
}

QFuture<int> run(Invocation& call) {
    reportBrokenStores(call);
    const auto overrides = std::make_shared<OverrideStore>();
    auto promise = std::make_shared<QPromise<int>>();
    promise->start();
    const auto finish = [promise](int exitCode) {
        promise->addResult(exitCode);
        promise->finish();
    };
    onFinished(
        findProject(call, call.words.first(), ProjectUse::services, overrides), call.context,
        [&call, finish](const FoundProject& project) {
            if (!project) {
                finish(refusal(call, project.error()));
                return;
            }
            const auto kinds = kindsToRun(call, *project);
            if (!kinds) {
                finish(call.usageError(kinds.error()));
                return;
            }
            RunSession::Options options{*kinds, {}, call.isSet(u"install"_s), call.json};
            if (call.isSet(u"device"_s)) {
                if (!kinds->contains(ServiceKind::flutter)) {
                    finish(call.usageError(
                        u"--device is for Flutter apps; none of %1 is run."_s.arg(printable(project->name))));
                    return;
                }
                options.device = call.value(u"device"_s);
            }
            auto* terminalRun = new TerminalRun(call.context);
            onFinished(terminalRun->start(call.console, *project, options), call.context, finish);
        });
    return promise->future();
}

} // namespace

Command runCommand() {
    return {
        u"run"_s,
        u"runs a project's services here, until they end or Ctrl-C"_s,
        u"PROJECT is a folder, an id, or a project's name below the scan root. The services' output comes line by "
        u"line\n"
        "with a label each; where a service is up is said as soon as it listens. Ctrl-C stops everything and waits "
        "for\n"
        "it; a second one kills at once. The exit code is 1 when a service failed, 130 when it "
        "was\n"
        "interrupted before the services started.\n"
        "A project with a front end and a back end starts both; --only picks."_s,
        {{{},
          u"PROJECT"_s,
          1,
          1,
          u"runs it"_s,
          {{u"only"_s, u"KIND"_s, u"start services of this kind only; may be given several times"_s},
           {u"install"_s, {}, u"install missing dependencies first, without asking"_s},
           {u"device"_s, u"D"_s, u"the device on which a Flutter app runs"_s}},
          run}},
        {{u"orvlauncher run ."_s, u"the project in this folder"_s},
         {u"orvlauncher run shop --only backend --install"_s, u"the back end of shop, dependencies first"_s},
         {u"orvlauncher run shop --json | jq -r 'select(.event == \"address\").url'"_s,
          u"each address as it comes up; every event is one line of JSON"_s}}};
}

} // namespace orv
