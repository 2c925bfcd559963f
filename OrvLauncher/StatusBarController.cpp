#include "StatusBarController.h"

#include "HotKeyNote.h"
#include "OrvUI/AppModel.h"

namespace orv {

StatusBarController::StatusBarController(AppModel& model, QQmlEngine& engine, QObject* parent)
    : QObject(parent), m_model(model), m_panel(model, engine), m_item(model) {
    connect(&m_item, &StatusItem::panelAsked, this, &StatusBarController::togglePanel);
    connect(&m_item, &StatusItem::windowAsked, this, &StatusBarController::windowAsked);
    connect(&m_item, &StatusItem::quitAsked, this, &StatusBarController::quitAsked);
    connect(&m_panel, &QuickPanel::windowAsked, this, &StatusBarController::windowAsked);
    connect(&m_panel, &QuickPanel::settingsAsked, this, &StatusBarController::settingsAsked);
    connect(&m_panel, &QuickPanel::quitAsked, this, &StatusBarController::quitAsked);
    m_model.setApplyQuickPanelShortcut([this](bool isOn) { return setShortcut(isOn); });
}

StatusBarController::~StatusBarController() {
    m_model.setApplyQuickPanelShortcut({});
}

void StatusBarController::togglePanel() {
    m_panel.toggle(m_item.place());
}

bool StatusBarController::setShortcut(bool isOn) {
    m_hotKey.reset();
    if (isOn) {
        const auto stateChanged = [this] {
            // It may be told before it is there.
            m_model.noteQuickPanelShortcut(m_hotKey && m_hotKey->isRegistered());
            Q_EMIT shortcutChanged();
        };
        m_hotKey.emplace([this] { togglePanel(); }, stateChanged);
    }
    Q_EMIT shortcutChanged();
    return !isOn || m_hotKey->isRegistered();
}

QString StatusBarController::shortcutNote() const {
    return m_hotKey ? HotKeyNote::of(m_hotKey->state()) : QString();
}

QString StatusBarController::shortcutTrigger() const {
    return m_hotKey ? m_hotKey->trigger() : QString();
}

} // namespace orv
