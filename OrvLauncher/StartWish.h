#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace orv {

/// What the window was started for.
struct StartWish {
    bool togglesPanel = false; ///< the quick panel, and no window
    bool staysInTray = false;  ///< no window where there is a tray, as at login
    QString url{};             ///< "orvlauncher://run?project=..."
    QString page{};            ///< to open at once ("ai", "project:shop"); see StartPage
    QString illustrations{};   ///< the folder into which they are exported, instead of any window
    QString activation{};      ///< by which the desktop lets this start bring a window to the front

    bool operator==(const StartWish&) const = default;

    /// Of the words of a command line, without the program's: "toggle", an address, "-OrvStartPage VALUE",
    /// "-OrvExportIllustrations FOLDER", "-OrvInTray". None where they are those of a command, which needs no window.
    [[nodiscard]] static std::optional<StartWish> of(const QStringList& words);
    /// Of one that finds no application running: there is no panel to toggle, and none may stay without a window that
    /// nobody has asked for.
    [[nodiscard]] StartWish asFirst() const;
    /// One line, and back; what is no message is a wish for the window.
    [[nodiscard]] QByteArray toMessage() const;
    [[nodiscard]] static StartWish ofMessage(const QByteArray& message);
};

} // namespace orv
