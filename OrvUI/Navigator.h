#pragma once

#include "OrvUI/ModelPart.h"
#include "OrvUI/ModelTypes.h"

#include <QObject>
#include <QUrl>
#include <QVariantList>

namespace orv {

/// Where the window is and how it came there. What is shown is the model's `page`, whoever set it; this says it in
/// QML's words and keeps the way back. Lives on the main thread.
class Navigator : public orv::ModelPart {
    Q_OBJECT
    Q_PROPERTY(Page page READ page NOTIFY moved FINAL)
    /// Of a project its id, of a collection or folder its path.
    Q_PROPERTY(QString pageID READ pageID NOTIFY moved FINAL)
    /// Index of SettingsSection.
    Q_PROPERTY(int section READ section NOTIFY moved FINAL)
    /// Index of DetailTab.
    Q_PROPERTY(int tab READ tab WRITE setTab NOTIFY tabChanged FINAL)
    /// From the home page to this one, of maps with a "title".
    Q_PROPERTY(QVariantList crumbs READ crumbs NOTIFY crumbsChanged FINAL)
    /// "addProject", "clone", "widgetsHowTo"; empty: none is open.
    Q_PROPERTY(QString sheet READ sheet NOTIFY sheetChanged FINAL)
    /// Whether the agent panel of the project that is shown is open.
    Q_PROPERTY(bool agentPanel READ agentPanel WRITE setAgentPanel NOTIFY agentPanelChanged FINAL)
    Q_PROPERTY(bool canGoBack READ canGoBack NOTIFY moved FINAL)
    Q_PROPERTY(bool canGoForward READ canGoForward NOTIFY moved FINAL)

public:
    /// In the order of AppPage::Kind.
    enum Page { Settings, Collection, Project, Folder, Home, Tasks, Ai };
    Q_ENUM(Page)

    using ModelPart::ModelPart;

    [[nodiscard]] Page page() const { return static_cast<Page>(m_current.kind); }
    [[nodiscard]] const QString& pageID() const { return m_current.id; }
    [[nodiscard]] int section() const { return static_cast<int>(m_current.section); }
    [[nodiscard]] int tab() const;
    void setTab(int tab);
    [[nodiscard]] QVariantList crumbs() const;
    [[nodiscard]] QString sheet() const;
    [[nodiscard]] bool agentPanel() const;
    void setAgentPanel(bool isOpen);
    [[nodiscard]] bool canGoBack() const { return !m_behind.isEmpty(); }
    [[nodiscard]] bool canGoForward() const { return !m_ahead.isEmpty(); }

    Q_INVOKABLE void home();
    Q_INVOKABLE void tasks();
    Q_INVOKABLE void ai();
    /// The section that was looked at last, or the one of that index.
    Q_INVOKABLE void settings(int section = -1);
    /// The overview, or the tab of that index.
    Q_INVOKABLE void project(const QString& projectID, int tab = 0);
    /// A folder of the tree that groups projects.
    Q_INVOKABLE void collection(const QString& path);
    /// The same folder with what lies directly in it.
    Q_INVOKABLE void folder(const QString& path);
    Q_INVOKABLE void openCrumb(int index);
    Q_INVOKABLE void addProject(bool clones);
    /// Goes to that tab of the project, which is then to do what it calls `wish`.
    Q_INVOKABLE void wishFor(const QString& projectID, int tab, const QString& wish);
    /// The tasks, at the field for a new one.
    Q_INVOKABLE void newTask();
    /// Whether that is wished for; it is not any more then.
    Q_INVOKABLE bool take(const QString& wish);
    /// A link that a program printed: a file of this machine in the editor, an address in the browser; others are
    /// refused, with a word.
    Q_INVOKABLE void followLink(const QUrl& link);
    /// Asks where the shown log is to be kept.
    Q_INVOKABLE void saveLogs() { Q_EMIT logsSaveAsked(); }
    Q_INVOKABLE void closeSheet();
    Q_INVOKABLE void back();
    Q_INVOKABLE void forward();

Q_SIGNALS:
    void moved();
    void tabChanged();
    void crumbsChanged();
    void sheetChanged();
    void agentPanelChanged();
    void wishChanged();
    void logsSaveAsked();

private:
    void takeModel() override;
    struct Crumb {
        QString title;
        AppPage page;
    };

    void follow();
    void setWish(const QString& wish);
    void leaveWhatIsGone();
    void travel(QList<AppPage>& from, QList<AppPage>& to);
    [[nodiscard]] bool exists(const AppPage& page) const;
    [[nodiscard]] QList<Crumb> trail() const;

    AppPage m_current;
    SettingsSection m_lastSection = SettingsSection::profile;
    QList<AppPage> m_behind;
    QList<AppPage> m_ahead;
    bool m_isTravelling = false;
    QString m_wish; ///< of the page that is shown
};

} // namespace orv
