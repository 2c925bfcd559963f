#pragma once

#include "OrvGit/GitModels.h"
#include "OrvUI/OnboardingForm.h"
#include "OrvUI/RowModel.h"

#include <QFuture>
#include <QObject>
#include <QThreadPool>

#include <memory>

namespace orv {

class AppModel;
class ScanCancellation;
struct ProjectNode;

/// A project that was found in the folder, as a foretaste.
struct FoundProjectRow {
    QString key;
    QString name;
    QString stackLine;
    int tileIndex = 0;
    QString tileLetter;

    bool operator==(const FoundProjectRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<FoundProjectRow>>& roles();
};

/// The pages of the first start. Nothing is written before `finish`. Lives on the main thread.
class OnboardingModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(int step READ step NOTIFY changed)
    Q_PROPERTY(int stepCount READ stepCount CONSTANT)
    Q_PROPERTY(bool canAdvance READ canAdvance NOTIFY changed)
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY changed)
    Q_PROPERTY(QString folder READ folder WRITE setFolder NOTIFY changed)
    Q_PROPERTY(QString folderText READ folderText NOTIFY changed)
    Q_PROPERTY(bool folderExists READ folderExists NOTIFY changed)
    Q_PROPERTY(bool canMakeFolder READ canMakeFolder NOTIFY changed)
    Q_PROPERTY(QString gitName READ gitName WRITE setGitName NOTIFY changed)
    Q_PROPERTY(QString gitEmail READ gitEmail WRITE setGitEmail NOTIFY changed)
    Q_PROPERTY(int theme READ theme WRITE setTheme NOTIFY changed)
    Q_PROPERTY(int appearance READ appearance WRITE setAppearance NOTIFY changed)
    Q_PROPERTY(bool notifications READ notifications WRITE setNotifications NOTIFY changed)
    Q_PROPERTY(bool launchAtLogin READ launchAtLogin WRITE setLaunchAtLogin NOTIFY changed)
    Q_PROPERTY(int defaultAgent READ defaultAgent WRITE setDefaultAgent NOTIFY changed)
    Q_PROPERTY(int autonomy READ autonomy WRITE setAutonomy NOTIFY changed)
    Q_PROPERTY(int detectedCount READ detectedCountOrNone NOTIFY detectedChanged)
    Q_PROPERTY(int detectedFolders READ detectedFolders NOTIFY detectedChanged)
    Q_PROPERTY(bool isScanning READ isScanning NOTIFY detectedChanged)
    Q_PROPERTY(bool isFinishing READ isFinishing NOTIFY isFinishingChanged)
    Q_PROPERTY(QAbstractListModel* found READ found CONSTANT)

public:
    static constexpr int foundLimit = 6;

    explicit OnboardingModel(AppModel& model, QObject* parent = nullptr);
    ~OnboardingModel() override;

    [[nodiscard]] const OnboardingForm& form() const { return m_form; }
    [[nodiscard]] int step() const { return static_cast<int>(m_form.step); }
    [[nodiscard]] static int stepCount() { return static_cast<int>(allOnboardingSteps.size()); }
    [[nodiscard]] bool canAdvance() const { return m_form.canAdvance(); }
    [[nodiscard]] const QString& name() const { return m_form.name; }
    void setName(const QString& name) { set(m_form.name, name); }
    [[nodiscard]] const QString& folder() const { return m_form.folder; }
    /// A path, one with "~", or a file URL as a folder dialog gives it.
    void setFolder(const QString& folder);
    [[nodiscard]] QString folderText() const; ///< with "~" for the home folder
    [[nodiscard]] bool folderExists() const { return m_form.folderExists(); }
    [[nodiscard]] bool canMakeFolder() const; ///< nothing stands at its place
    /// Makes the folder that was entered, at once, and looks into it.
    Q_INVOKABLE void makeFolder();
    [[nodiscard]] const QString& gitName() const { return m_form.gitName; }
    void setGitName(const QString& name) { set(m_form.gitName, name); }
    [[nodiscard]] const QString& gitEmail() const { return m_form.gitEmail; }
    void setGitEmail(const QString& email) { set(m_form.gitEmail, email); }
    // Enumerations as their places in declaration order; any other number changes nothing.
    [[nodiscard]] int theme() const { return static_cast<int>(m_form.theme); }
    void setTheme(int place) { setPlace(m_form.theme, place); }
    [[nodiscard]] int appearance() const { return static_cast<int>(m_form.appearance); }
    void setAppearance(int place) { setPlace(m_form.appearance, place); }
    [[nodiscard]] int defaultAgent() const { return static_cast<int>(m_form.defaultAgent); }
    void setDefaultAgent(int place) { setPlace(m_form.defaultAgent, place); }
    [[nodiscard]] int autonomy() const { return static_cast<int>(m_form.autonomy); }
    void setAutonomy(int place) { setPlace(m_form.autonomy, place); }
    [[nodiscard]] bool notifications() const { return m_form.notifications; }
    void setNotifications(bool isOn) { set(m_form.notifications, isOn); }
    [[nodiscard]] bool launchAtLogin() const { return m_form.launchAtLogin; }
    void setLaunchAtLogin(bool isOn) { set(m_form.launchAtLogin, isOn); }

    /// How many projects the last scan found in the folder; none until one ended, and since the folder is another one.
    [[nodiscard]] const std::optional<int>& detectedCount() const { return m_detectedCount; }
    [[nodiscard]] int detectedCountOrNone() const { return m_detectedCount.value_or(-1); }
    [[nodiscard]] int detectedFolders() const { return m_detectedFolders; } ///< that hold several projects
    [[nodiscard]] bool isScanning() const { return m_scan != nullptr; }
    [[nodiscard]] bool isFinishing() const { return m_isFinishing; }
    [[nodiscard]] QAbstractListModel* found() { return &m_found; } ///< the first `foundLimit`

    /// Begins anew, with what is set already; git's identity comes when git has told it, into fields that are still as
    /// they were.
    Q_INVOKABLE QFuture<void> loadExisting();
    Q_INVOKABLE void next();
    Q_INVOKABLE void back();
    /// Takes the place of a look that is under way.
    Q_INVOKABLE QFuture<void> scanFolder();
    /// Writes everything. What goes wrong is said in the status line, and the rest is done.
    Q_INVOKABLE QFuture<void> finish();

Q_SIGNALS:
    void changed();
    void detectedChanged();
    void isFinishingChanged();

private:
    template <typename T>
    void set(T& field, const T& value) {
        if (field != value) {
            field = value;
            Q_EMIT changed();
        }
    }
    template <typename E>
    void setPlace(E& field, int place) {
        if (place >= 0 && place < static_cast<int>(StoredNames<E>::table.size())) {
            set(field, static_cast<E>(place));
        }
    }
    void takeFound(const QList<ProjectNode>& tree);
    void forgetFound();
    void cancelScan();
    [[nodiscard]] QFuture<void> tellGit();

    AppModel& m_model;
    OnboardingForm m_form;
    GitIdentity m_knownToGit;
    std::optional<int> m_detectedCount;
    int m_detectedFolders = 0;
    std::shared_ptr<ScanCancellation> m_scan; ///< of the look that is under way
    bool m_isFinishing = false;
    RowModel<FoundProjectRow> m_found;
    QThreadPool m_pool; ///< of its own: a huge folder, or one that answers slowly, holds up nothing else
};

} // namespace orv
