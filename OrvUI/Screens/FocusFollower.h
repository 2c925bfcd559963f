#pragma once

#include <QPointer>
#include <QQmlParserStatus>
#include <QQuickItem>
#include <QQuickWindow>

namespace orv {

/// Scrolls a Flickable to what the keyboard has come to in it, or writes in, and by pages with Page Up and Page Down
/// from whatever stands beside it. The pointer's own focus moves nothing: what is pressed stays below it. Lives on the
/// main thread.
class FocusFollower : public QObject, public QQmlParserStatus {
    Q_OBJECT
    QML_ELEMENT
    Q_INTERFACES(QQmlParserStatus)
    Q_PROPERTY(QQuickItem* view MEMBER m_view REQUIRED FINAL)
    /// Points that stay free above and below what has the focus.
    Q_PROPERTY(double margin MEMBER m_margin FINAL)

public:
    using QObject::QObject;

    void classBegin() override {}
    void componentComplete() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    [[nodiscard]] QQuickItem* focused() const; ///< null where that is not in the view
    void setWindow(QQuickWindow* window);
    void follow();
    void scrollTo(double y);

    QPointer<QQuickItem> m_view;
    double m_margin = 0;
    QPointer<QQuickWindow> m_window;
    QMetaObject::Connection m_focus;
};

} // namespace orv
