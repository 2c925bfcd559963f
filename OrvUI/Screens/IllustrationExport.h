#pragma once

#include <QString>

#include <expected>

namespace orv {

class Theme;

/// The illustrations as files: each in light and in dark colours of a theme.
struct IllustrationExport {
    QString folder; ///< made when it is missing
    int theme = 0;  ///< index of ThemeID
    int points = 240;
    qreal scale = 2;

    /// How many files were written, or why one could not be. The colours of `theme` are others afterwards. Main thread.
    [[nodiscard]] std::expected<int, QString> run(Theme& colors) const;
};

} // namespace orv
