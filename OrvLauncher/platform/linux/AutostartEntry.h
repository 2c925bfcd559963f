#pragma once

#include "OrvUI/LaunchAtLogin.h"

#include <QCoreApplication>

namespace orv {

/// "orvlauncher.desktop" in the autostart folder that freedesktop.org's desktops read. It names the executable
/// that runs, with the wish to stay in the tray. One that names another counts as enabled while that one is there, and
/// is put right by `setEnabled(true)`; one whose program has been moved away starts nothing, and counts as what it is.
class AutostartEntry : public LoginItemController {
    Q_DECLARE_TR_FUNCTIONS(AutostartEntry)
public:
    /// `configFolder` as $XDG_CONFIG_HOME has it; `executable` an absolute path.
    AutostartEntry(const QString& configFolder, QString executable);

    [[nodiscard]] bool isEnabled() const override;
    [[nodiscard]] std::expected<void, QString> setEnabled(bool isEnabled) override;
    [[nodiscard]] const QString& filePath() const { return m_path; }

    /// The program as the value of "Exec" (freedesktop.org, desktop entries, The Exec key); none for a path that can't
    /// stand there.
    [[nodiscard]] static std::optional<QString> execValue(const QString& executable);

private:
    QString m_path;
    QString m_executable;
};

} // namespace orv
