#include "CliGit_p.h"
#include "OrvCore/Settings.h"
#include "OrvUI/NewProject.h"
#include "TextLayout.h"

#include <QFileInfo>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// A project in the making; Ctrl-C gives it up, and nothing is left of it.
class Making : public QObject {
public:
    explicit Making(Invocation& call) : QObject(call.context), m_call(call) {
        m_promise.start();
        connect(&m_signals, &SignalWatcher::stopAsked, &m_project, &NewProject::cancel);
        connect(&m_project, &NewProject::added, this, &Making::added);
        connect(&m_project, &NewProject::cancelled, this, [this] {
            m_call.failure(u"given up."_s);
            end(exitInterrupted);
        });
        connect(&m_project, &NewProject::errorChanged, this, [this] { end(m_call.failure(m_project.error())); });
        connect(&m_project, &NewProject::progressChanged, this, &Making::draw);
    }

    NewProject& project() { return m_project; }
    [[nodiscard]] QFuture<int> future() const { return m_promise.future(); }

private:
    void added(const QString& name, const QString& path, bool cloned) {
        if (m_call.json) {
            printJson(m_call.console.out, QJsonObject{{u"name"_s, name}, {u"path"_s, path}, {u"cloned"_s, cloned}});
        } else {
            m_call.console.out.writeLine((cloned ? u"Cloned "_s : u"Created "_s) + shortPath(path));
        }
        end(exitOk);
    }
    void draw() {
        Stream& err = m_call.console.err;
        if (err.isTerminal()) {
            const QString line = printable(m_project.progressLine());
            err.write(u"\r\x1b[K"_s + (err.width() > 0 ? elided(line, err.width() - 1) : line));
        }
    }
    void end(int exitCode) {
        m_promise.addResult(exitCode);
        m_promise.finish();
    }

    Invocation& m_call;
    QPromise<int> m_promise;
    SignalWatcher m_signals;
    GitOverview m_overview;
    NewProject m_project{m_overview};
};

/// The folder that the option names, or the scanned one; none, with the exit code, where that is not there.
std::expected<QString, int> folderOr(const Invocation& call, const QString& option) {
    if (call.isSet(option)) {
        return absolutePath(call.value(option));
    }
    const QString root = configuredScanRoot();
    if (const QString problem = scanRootProblem(root); !problem.isEmpty()) {
        return std::unexpected(call.failure(problem + u"\nOr say where: --%1 FOLDER"_s.arg(option)));
    }
    return root;
}

QFuture<int> makeFolder(Invocation& call) {
    if (call.isSet(u"no-git"_s) && call.isSet(u"branch"_s)) {
        return QtFuture::makeReadyFuture(call.usageError(u"--no-git has no branch."_s));
    }
    const QString branch = call.isSet(u"no-git"_s)   ? QString()
                           : call.isSet(u"branch"_s) ? call.value(u"branch"_s)
                                                     : SettingsStore().settings().defaultBranch;
    const auto folder = folderOr(call, u"in"_s);
    if (!folder) {
        return QtFuture::makeReadyFuture(int(folder.error()));
    }
    auto* making = new Making(call);
    making->project().createFolder(call.words.first(), *folder, branch);
    return making->future();
}

} // namespace

QFuture<int> gitClone(Invocation& call) {
    const QString word = call.words.first();
    // git runs elsewhere, and takes a path from there.
    const QString url = QFileInfo::exists(word) ? absolutePath(word) : word;
    const QString name = call.words.size() > 1 ? call.words[1] : NewProject::nameOf(url);
    if (name.isEmpty()) {
        return QtFuture::makeReadyFuture(call.usageError(u"the address has no name in it; give one."_s));
    }
    const auto folder = folderOr(call, u"into"_s);
    if (!folder) {
        return QtFuture::makeReadyFuture(int(folder.error()));
    }
    auto* making = new Making(call);
    making->project().clone(url, name, *folder);
    return making->future();
}

Command newCommand() {
    return {
        u"new"_s,
        u"makes a folder for a new project"_s,
        u"Makes the folder in the scanned one, with a git repository in it on the branch that the setting\n"
        "defaultBranch names. 'orvlauncher git clone' makes a project of a remote repository."_s,
        {{{},
          u"NAME"_s,
          1,
          1,
          u"makes the folder"_s,
          {{u"in"_s, u"FOLDER"_s, u"where; the scanned folder without it"_s},
           {u"branch"_s, u"NAME"_s, u"another branch to begin with"_s},
           {u"no-git"_s, {}, u"without a repository"_s}},
          makeFolder}},
        {{u"orvlauncher new ledger"_s, u"the folder ledger among your projects, with a repository"_s},
         {u"cd \"$(orvlauncher new ledger --json | jq -r .path)\""_s, u"makes it and goes there"_s}}};
}

} // namespace orv
