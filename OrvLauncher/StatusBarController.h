#pragma once

#include "OrvLauncher/platform/HotKey.h"
#include "QuickPanel.h"
#include "StatusItem.h"

#include <QObject>

#include <optional>

class QQmlEngine;

namespace orv {

class AppModel;

/// The application beside its window: the icon in the tray, the quick panel that it opens, and the key that does so
/// from anywhere. Main thread.
class StatusBarController : public QObject {
    Q_OBJECT
public:
    StatusBarController(AppModel& model, QQmlEngine& engine, QObject* parent = nullptr);
    ~StatusBarController() override;

    /// Opens the panel beside the icon, or closes it.
    void togglePanel();
    /// Takes the panel's key anew, or lets go of it. Whether that was done: a desktop that takes its time to give the
    /// key has not, until the model is told otherwise.
    bool setShortcut(bool isOn);
    /// Why the key is not to be had; empty where it is, or is not wanted.
    [[nodiscard]] QString shortcutNote() const;
    /// What the desktop gives in its place; empty where it is the usual one.
    [[nodiscard]] QString shortcutTrigger() const;
    /// Of a desktop's panel that is light, the icon is dark.
    void setPanelDark(bool isDark) { m_item.setPanelDark(isDark); }

Q_SIGNALS:
    void windowAsked();
    void settingsAsked();
    void quitAsked();
    void shortcutChanged(); ///< its note or its trigger

private:
    AppModel& m_model;
    QuickPanel m_panel;
    StatusItem m_item;
    std::optional<HotKey> m_hotKey;
};

} // namespace orv
