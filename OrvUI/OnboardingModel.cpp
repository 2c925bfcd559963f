#include "OrvUI/OnboardingModel.h"

#include "OrvCore/Async.h"
#include "OrvCore/BackgroundThread.h"
#include "OrvCore/Paths.h"
#include "OrvCore/ProjectScanner.h"
#include "OrvGit/GitService.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/LaunchAtLogin.h"
#include "OrvUI/Pool_p.h"
#include "OrvUI/Tile.h"

#include <QDir>
#include <QFileInfo>
#include <QUrl>

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

std::optional<QString> entered(const QString& text) {
    const QString trimmed = text.trimmed();
    return trimmed.isEmpty() ? std::nullopt : std::optional(trimmed);
}

} // namespace

const std::vector<RowRole<FoundProjectRow>>& FoundProjectRow::roles() {
    static const std::vector<RowRole<FoundProjectRow>> table{
        memberRole<&FoundProjectRow::key, FoundProjectRow>("key"),
        memberRole<&FoundProjectRow::name, FoundProjectRow>("name"),
        memberRole<&FoundProjectRow::stackLine, FoundProjectRow>("stackLine"),
        memberRole<&FoundProjectRow::tileIndex, FoundProjectRow>("tileIndex"),
        memberRole<&FoundProjectRow::tileLetter, FoundProjectRow>("tileLetter"),
    };
    return table;
}

OnboardingModel::OnboardingModel(AppModel& model, QObject* parent)
    : QObject(parent), m_model(model), m_form(OnboardingForm::from(model.settings().settings())) {
    m_pool.setObjectName(u"orv-look"_s);
    m_pool.setMaxThreadCount(1);
}

OnboardingModel::~OnboardingModel() {
    cancelScan();
}

QFuture<void> OnboardingModel::loadExisting() {
    ORV_ASSERT_MAIN_THREAD();
    m_form = OnboardingForm::from(m_model.settings().settings());
    m_model.login()->refresh();
    m_form.launchAtLogin = m_model.login()->isEnabled();
    forgetFound();
    Q_EMIT changed();
    const Completion completion;
    const auto ask = [] { return GitService().identity(Paths::realHome(), GitScope::global); };
    onFinished(runIn(m_model.workPool(), ask), this, [this, completion](const GitOutcome<GitIdentity>& identity) {
        m_knownToGit = identity.value_or(GitIdentity());
        if (m_form.gitName.isEmpty()) {
            m_form.gitName = m_knownToGit.name.value_or(QString());
        }
        if (m_form.gitEmail.isEmpty()) {
            m_form.gitEmail = m_knownToGit.email.value_or(QString());
        }
        Q_EMIT changed();
        completion.finish();
    });
    return completion.future();
}

void OnboardingModel::setFolder(const QString& folder) {
    ORV_ASSERT_MAIN_THREAD();
    const QUrl url(folder);
    QString path = url.isLocalFile() ? url.toLocalFile() : folder.trimmed();
    if (path == u"~" || path.startsWith(u"~/")) {
        path = Paths::realHome() + path.sliced(1);
    }
    path = path.isEmpty() ? path : QDir::cleanPath(path);
    if (path != m_form.folder) {
        forgetFound();
        set(m_form.folder, path);
    }
}

QString OnboardingModel::folderText() const {
    const QString home = Paths::realHome();
    const bool isInHome = !home.isEmpty() && (m_form.folder == home || m_form.folder.startsWith(home + u'/'));
    return isInHome ? u'~' + m_form.folder.sliced(home.size()) : m_form.folder;
}

void OnboardingModel::next() {
    const OnboardingStep before = m_form.step;
    m_form.next();
    if (before != m_form.step) {
        Q_EMIT changed();
    }
}

void OnboardingModel::back() {
    const OnboardingStep before = m_form.step;
    m_form.back();
    if (before != m_form.step) {
        Q_EMIT changed();
    }
}

bool OnboardingModel::canMakeFolder() const {
    return QDir::isAbsolutePath(m_form.folder) && !QFileInfo::exists(m_form.folder);
}

void OnboardingModel::makeFolder() {
    ORV_ASSERT_MAIN_THREAD();
    if (canMakeFolder() && !QDir().mkpath(m_form.folder)) {
        m_model.report(tr("“%1” could not be made.").arg(m_form.folder), true);
    }
    Q_EMIT changed();
    scanFolder();
}

QFuture<void> OnboardingModel::scanFolder() {
    ORV_ASSERT_MAIN_THREAD();
    const Completion completion;
    if (!m_form.folderExists()) {
        forgetFound();
        completion.finish();
        return completion.future();
    }
    cancelScan();
    m_scan = std::make_shared<ScanCancellation>();
    Q_EMIT detectedChanged();
    const auto scan = [folder = m_form.folder, cancellation = m_scan] {
        becomeBackgroundThread(); // its pool is for these alone
        return ProjectScanner().scanTree(folder, cancellation.get());
    };
    const auto take = [this, completion, cancellation = m_scan](const ScanResult<QList<ProjectNode>>& tree) {
        if (cancellation == m_scan) {
            m_scan.reset();
            takeFound(tree ? *tree : QList<ProjectNode>());
            Q_EMIT detectedChanged();
        }
        completion.finish();
    };
    onFinished(runIn(m_pool, scan), this, take);
    return completion.future();
}

void OnboardingModel::takeFound(const QList<ProjectNode>& tree) {
    QList<FoundProjectRow> rows;
    int count = 0;
    m_detectedFolders = 0;
    for (const ProjectNode& node : tree) {
        m_detectedFolders += node.project ? 0 : 1;
        for (const Project& project : node.apps()) {
            if (++count <= foundLimit) {
                rows.append(
                    {project.id, project.name, stackLine(project), Tile::index(project.name),
                     Tile::letter(project.name)});
            }
        }
    }
    m_detectedCount = count;
    m_found.setRows(rows);
}

void OnboardingModel::cancelScan() {
    if (m_scan) {
        m_scan->cancel();
        m_scan.reset();
    }
}

void OnboardingModel::forgetFound() {
    cancelScan();
    m_detectedCount.reset();
    m_detectedFolders = 0;
    m_found.setRows({});
    Q_EMIT detectedChanged();
}

QFuture<void> OnboardingModel::finish() {
    ORV_ASSERT_MAIN_THREAD();
    const Completion completion;
    if (std::exchange(m_isFinishing, true)) {
        completion.finish();
        return completion.future();
    }
    Q_EMIT isFinishingChanged();
    m_model.changeSettings([form = m_form](AppSettings& settings) { form.applyTo(settings); });
    if (m_form.launchAtLogin != m_model.login()->isEnabled()) {
        m_model.login()->setEnabled(m_form.launchAtLogin);
        if (const QString& error = m_model.login()->error(); !error.isEmpty()) {
            m_model.report(error, true);
        }
    }
    const QFuture<void> notified = m_form.notifications ? m_model.setNotificationsEnabled(true) : finishedFuture();
    Q_UNUSED(notified) // the user may take his time over the system's question
    // One after the other: the refresh looks at the identity too.
    onFinished(tellGit(), this, [this, completion] {
        onFinished(m_model.refresh(), this, [this, completion] {
            m_isFinishing = false;
            Q_EMIT isFinishingChanged();
            completion.finish();
        });
    });
    return completion.future();
}

QFuture<void> OnboardingModel::tellGit() {
    // What git has already is not written again: the file may be kept by other means.
    GitIdentity identity{entered(m_form.gitName), entered(m_form.gitEmail)};
    if (identity.name == m_knownToGit.name) {
        identity.name.reset();
    }
    if (identity.email == m_knownToGit.email) {
        identity.email.reset();
    }
    if (!identity.name && !identity.email) {
        return finishedFuture();
    }
    const Completion completion;
    const auto tell = [identity] { return GitService().setIdentity(identity, Paths::realHome(), GitScope::global); };
    onFinished(runIn(m_model.workPool(), tell), this, [this, completion](const GitOutcome<void>& result) {
        if (!result) {
            m_model.report(result.error().text(), true);
        }
        onFinished(m_model.refreshGitIdentity(), this, [completion] { completion.finish(); });
    });
    return completion.future();
}

} // namespace orv
