#pragma once

#include <QObject>

#include <memory>

class QMenu;
class QSystemTrayIcon;

namespace orv {

class AppModel;
class MenuBarItem;

/// The application's icon in the tray, with the number of running services on it, or beside it in a menu bar. Its click
/// opens the quick panel; its menu lists the pinned projects, for desktops that report no click. Main thread; needs a
/// QApplication.
class StatusItem : public QObject {
    Q_OBJECT
public:
    explicit StatusItem(AppModel& model, QObject* parent = nullptr);
    ~StatusItem() override;

    /// The desktop has a place for it now.
    [[nodiscard]] static bool isAvailable();
    /// Where it stands on the screen; null when the desktop does not say.
    [[nodiscard]] QRect place() const;
    /// Of a panel that is light, the icon is dark.
    void setPanelDark(bool isDark);

Q_SIGNALS:
    void panelAsked();
    void windowAsked();
    void quitAsked();

private:
    void update();
    void showCount(int count);
    void showToolTip(const QString& text);
    void tellOfQuitting();
    void fillMenu();
    void addPinned(QMenu& menu);

    AppModel& m_model;
    std::unique_ptr<QMenu> m_menu;
    std::unique_ptr<QMenu> m_dockMenu; ///< where there is a Dock
#ifdef Q_OS_MACOS
    std::unique_ptr<MenuBarItem> m_menuBarItem;
#else
    std::unique_ptr<QSystemTrayIcon> m_icon;
#endif
    bool m_isPanelDark = true;
    int m_shownCount = -1;
    int m_shownLeft = 0; ///< of them
};

} // namespace orv
