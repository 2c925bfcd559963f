#pragma once

#include "OrvUI/ModelTypes.h"

#include <QObject>
#include <QPointer>
#include <QVariantList>

Q_MOC_INCLUDE("OrvUI/AppModel.h")

namespace orv {

class AppModel;

/// Where the window is and how it came there. What is shown is the model's `page`, whoever set it; this says it in
/// QML's words and keeps the way back. Lives on the main thread.
class Navigator : public QObject {
    Q_OBJECT
    Q_PROPERTY(orv::AppModel* model READ model WRITE setModel NOTIFY modelChanged FINAL)
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
    Q_PROPERTY(bool canGoBack READ canGoBack NOTIFY moved FINAL)
    Q_PROPERTY(bool canGoForward READ canGoForward NOTIFY moved FINAL)

public:
    /// In the order of AppPage::Kind.
    enum Page { Settings, Collection, Project, Folder, Home, Tasks, Ai };
    Q_ENUM(Page)

    using QObject::QObject;

    [[nodiscard]] AppModel* model() const;
    void setModel(AppModel* model);
    [[nodiscard]] Page page() const { return static_cast<Page>(m_current.kind); }
    [[nodiscard]] const QString& pageID() const { return m_current.id; }
    [[nodiscard]] int section() const { return static_cast<int>(m_current.section); }
    [[nodiscard]] int tab() const;
    void setTab(int tab);
    [[nodiscard]] QVariantList crumbs() const;
    [[nodiscard]] QString sheet() const;
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
    Q_INVOKABLE void openCrumb(int index);
    Q_INVOKABLE void addProject(bool clones);
    Q_INVOKABLE void closeSheet();
    Q_INVOKABLE void back();
    Q_INVOKABLE void forward();

Q_SIGNALS:
    void modelChanged();
    void moved();
    void tabChanged();
    void crumbsChanged();
    void sheetChanged();

private:
    struct Crumb {
        QString title;
        AppPage page;
    };

    void follow();
    void leaveWhatIsGone();
    void travel(QList<AppPage>& from, QList<AppPage>& to);
    [[nodiscard]] bool exists(const AppPage& page) const;
    [[nodiscard]] QList<Crumb> trail() const;

    QPointer<AppModel> m_model;
    AppPage m_current;
    SettingsSection m_lastSection = SettingsSection::profile;
    QList<AppPage> m_behind;
    QList<AppPage> m_ahead;
    bool m_isTravelling = false;
};

} // namespace orv
