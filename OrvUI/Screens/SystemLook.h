#pragma once

#include <QDBusVariant>
#include <QObject>

namespace orv {

/// What the desktop asks of an application's looks. Lives on the main thread.
///
/// Linux: the settings portal (org.freedesktop.portal.Settings), asked once the window is up; until it answers, and
/// where there is none, the lightness of the platform's palette. macOS: the palette.
class SystemLook : public QObject {
    Q_OBJECT
public:
    explicit SystemLook(QObject* parent = nullptr);

    [[nodiscard]] bool isDark() const { return m_isDark; }
    /// The desktop said so; not merely a light palette.
    [[nodiscard]] bool prefersLight() const { return m_portalKnows && !m_isDark; }
    [[nodiscard]] bool reducedMotion() const { return m_reducedMotion; }
    [[nodiscard]] bool higherContrast() const { return m_portalContrast || m_gnomeContrast; }
    /// What it was at the last start, which is the better guess than the palette.
    void assume(bool isDark);
    /// Asks the desktop, and listens from then on.
    void start();

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void portalChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void take(const QString& group, const QString& key, const QVariant& value);
    void takePalette();
    bool eventFilter(QObject* watched, QEvent* event) override;

    bool m_isDark;
    bool m_reducedMotion = false;
    bool m_portalContrast = false; ///< higher
    bool m_gnomeContrast = false;
    bool m_portalKnows = false;
};

} // namespace orv
