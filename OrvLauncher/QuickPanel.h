#pragma once

#include <QDeadlineTimer>
#include <QObject>
#include <QRect>

#include <memory>

class QQmlEngine;
class QQuickView;

namespace orv {

class AppModel;

/// The small window under the tray's icon: what runs, what is pinned, what is to do. It goes when it is no longer the
/// active one. Main thread.
class QuickPanel : public QObject {
    Q_OBJECT
public:
    QuickPanel(AppModel& model, QQmlEngine& engine, QObject* parent = nullptr);
    ~QuickPanel() override;

    /// Shows it beside `icon`, or at the top right of the screen where that is null; hides it when it is shown.
    void toggle(const QRect& icon);
    Q_SLOT void hide();
    [[nodiscard]] bool isShown() const;
    /// Where a panel of that size stands: beside the icon, inside the screen.
    [[nodiscard]] static QPoint position(QSize panel, const QRect& icon, const QRect& screen);

Q_SIGNALS:
    void windowAsked();
    void settingsAsked();
    void quitAsked();

private:
    void make();
    void activeChanged();

    AppModel& m_model;
    QQmlEngine& m_engine;
    std::unique_ptr<QQuickView> m_view;
    QRect m_icon;
    QDeadlineTimer m_opening;
};

} // namespace orv
