#pragma once

#include <QObject>
#include <QString>

#include <expected>
#include <memory>

namespace orv {

/// The system's own list of what starts when the user logs in, as far as this application is concerned.
class LoginItemController {
public:
    virtual ~LoginItemController() = default;
    [[nodiscard]] virtual bool isEnabled() const = 0;
    /// What went wrong, as a sentence.
    [[nodiscard]] virtual std::expected<void, QString> setEnabled(bool isEnabled) = 0;
};

/// The switch "Start at login". Without a controller there is none, and it stays off. Lives on the main thread.
class LaunchAtLogin : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool available READ isAvailable CONSTANT)
    Q_PROPERTY(bool enabled READ isEnabled WRITE setEnabled NOTIFY changed)
    Q_PROPERTY(QString error READ error NOTIFY changed)

public:
    explicit LaunchAtLogin(std::unique_ptr<LoginItemController> controller, QObject* parent = nullptr);
    ~LaunchAtLogin() override;

    [[nodiscard]] bool isAvailable() const { return m_controller != nullptr; }
    [[nodiscard]] bool isEnabled() const { return m_isEnabled; }
    /// Of the last change; empty when it went well.
    [[nodiscard]] const QString& error() const { return m_error; }
    void setEnabled(bool isEnabled);
    /// The user may have changed it in the system's settings.
    Q_INVOKABLE void refresh();

Q_SIGNALS:
    void changed();

private:
    std::unique_ptr<LoginItemController> m_controller;
    bool m_isEnabled = false;
    QString m_error;
};

} // namespace orv
